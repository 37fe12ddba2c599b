// zatgen: reads a definitions file and writes it back in the canonical layout or as generated
// source, without a display; lists the file's problems (--check) or compares it with an older
// version (--compare). Exit status: 0 success, 1 bad input, 2 bad usage, 3 an output could not be
// written, 4 --check-outputs found an output file that is not up to date, 5 --compare found a
// change that breaks programs built from the older version.

#include "compatibility.h"
#include "item.h"
#include "parser.h"
#include "problems.h"
#include "writercpp.h"
#include "writercpplut.h"
#include "writercs.h"
#include "writerheader.h"
#include "writerlua.h"
#include "writerxml.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>

#include <cstdio>
#include <functional>
#include <memory>

namespace {

enum ExitStatus {
    Success = 0,
    BadInput = 1,
    BadUsage = 2,
    WriteFailed = 3,
    OutOfDate = 4,
    Breaking = 5,
};

void printErr(const QString &text)
{
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
    std::fflush(stderr);
}

void printOut(const QString &text)
{
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

// Reads one definitions file, printing its warnings and, on failure, its error; null on failure.
std::unique_ptr<ZAT16::Item> readDefinitions(const QString &path, bool *warned)
{
    ZAT16::Parser parser;
    const bool ok = parser.parse(path);
    printErr(parser.warnings);
    if (!parser.warnings.isEmpty())
        *warned = true;
    if (!ok) {
        printErr(parser.formatError() + QLatin1Char('\n'));
        return nullptr;
    }
    return std::unique_ptr<ZAT16::Item>(parser.takeRoot());
}

// One line per problem: "<path>: problem: <message>" or "<path>: warning: <message>".
int printProblems(const QString &path, const ZAT16::Item *root)
{
    const QList<ZAT16::Problems::Problem> problems = ZAT16::Problems::find(root);
    QString text;
    for (const ZAT16::Problems::Problem &problem : problems) {
        text += path + (problem.isWarning() ? QStringLiteral(": warning: ") : QStringLiteral(": problem: "))
            + problem.message + QLatin1Char('\n');
    }
    printErr(text);
    return int(problems.size());
}

enum class OutputResult {
    Written,
    Unchanged, ///< the file already had this content and was left untouched
    OutOfDate, ///< only comparing: the file differs or is missing
    Failed,
};

// One kind of output: the option that asks for it and the writer that produces it. With
// `checkOnly` nothing is written; the output is only compared with the file.
struct OutputKind {
    QString option;
    QString description;
    std::function<OutputResult(const ZAT16::Item *, const QString &, bool checkOnly, QString *)> produce;
};

bool fileHasContent(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() != bytes.size())
        return false;
    return file.readAll() == bytes;
}

// A file whose content would not change is not written at all, so that its modification time
// stays and a build does not redo what depends on it.
OutputResult produce(ZAT16::Writer &writer, const ZAT16::Item *root, const QString &path, bool checkOnly,
                     QString *error)
{
    const bool toStdout = path == QLatin1String("-");
    if (!toStdout) {
        if (fileHasContent(path, writer.encode(root)))
            return OutputResult::Unchanged;
        if (checkOnly)
            return OutputResult::OutOfDate;
    } else if (checkOnly) {
        return OutputResult::Unchanged; // standard output has nothing to compare with
    }
    if (writer.write(root, path))
        return OutputResult::Written;
    *error = writer.formatError();
    return OutputResult::Failed;
}

template<typename W>
OutputResult produceWith(const ZAT16::Item *root, const QString &path, bool checkOnly, QString *error)
{
    W writer;
    return produce(writer, root, path, checkOnly, error);
}

QList<OutputKind> outputKinds()
{
    return {
        {QStringLiteral("xml"),
         QStringLiteral("Save the definitions in the canonical layout to <path> (- for standard output)."),
         produceWith<ZAT16::WriterXml>},
        {QStringLiteral("header"),
         QStringLiteral("Generate the C header of #define macros to <path> (- for standard output)."),
         produceWith<ZAT16::WriterHeader>},
        {QStringLiteral("lua"),
         QStringLiteral("Generate the Lua lookup tables under zat16 to <path> (- for standard output)."),
         produceWith<ZAT16::WriterLua>},
        {QStringLiteral("cpp"),
         QStringLiteral("Generate the C++ header of enumerations to <path> (- for standard output)."),
         produceWith<ZAT16::WriterCpp>},
        {QStringLiteral("cpp-lut"),
         QStringLiteral("Generate the C++ header of name lookup tables to <path> (- for standard output)."),
         produceWith<ZAT16::WriterCppLut>},
        {QStringLiteral("cs"),
         QStringLiteral("Generate the C# enumerations to <path> (- for standard output)."),
         produceWith<ZAT16::WriterCs>},
    };
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("zatgen"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ZAT16_VERSION));

    QCommandLineParser cmd;
    cmd.setApplicationDescription(QStringLiteral("Reads a ZAT16 definitions file and generates source code from it."));
    cmd.addHelpOption();
    cmd.addVersionOption();
    const QCommandLineOption checkOption(
        QStringLiteral("check"),
        QStringLiteral("Write nothing; after the warnings of reading, list the entries that zatedit marks in red and the "
                       "names that are keywords of C, C++, C# or Lua on standard error, one line each: "
                       "\"<input>: problem: <message>\" or \"<input>: warning: <message>\"."));
    const QCommandLineOption compareOption(
        QStringLiteral("compare"),
        QStringLiteral("Compare the input with <old>, an older version of it, and print on standard output what would "
                       "break programs built from <old> and what was added; exit with status 5 if anything breaks. "
                       "No output is written."),
        QStringLiteral("old"));
    const QCommandLineOption werrorOption(
        QStringLiteral("werror"), QStringLiteral("Treat warnings as errors; with --check, the problems too."));
    const QCommandLineOption checkOutputsOption(
        QStringLiteral("check-outputs"),
        QStringLiteral("Write nothing; name every output file whose content differs from what would be generated, "
                       "and exit with status 4 if there is one. Output files that are up to date are never rewritten, "
                       "so their modification time stays."));
    cmd.addOption(checkOption);
    cmd.addOption(werrorOption);
    cmd.addOption(checkOutputsOption);
    cmd.addOption(compareOption);
    const QList<OutputKind> kinds = outputKinds();
    for (const OutputKind &kind : kinds)
        cmd.addOption(QCommandLineOption(kind.option, kind.description, QStringLiteral("path")));
    cmd.addPositionalArgument(QStringLiteral("input"),
                              QStringLiteral("The definitions file (.zatdef); with --compare, its new version."));

    if (!cmd.parse(app.arguments())) {
        printErr(QStringLiteral("zatgen: %1\n").arg(cmd.errorText()));
        return BadUsage;
    }
    if (cmd.isSet(QStringLiteral("help")))
        cmd.showHelp(Success);
    if (cmd.isSet(QStringLiteral("version")))
        cmd.showVersion();
    const QStringList inputs = cmd.positionalArguments();
    if (inputs.size() != 1) {
        printErr(inputs.isEmpty() ? QStringLiteral("zatgen: no input file given\n")
                                  : QStringLiteral("zatgen: only one input file is allowed\n"));
        printErr(cmd.helpText());
        return BadUsage;
    }

    const QString input = inputs.first();

    if (cmd.isSet(compareOption)) {
        bool outputs = cmd.isSet(checkOption) || cmd.isSet(checkOutputsOption);
        for (const OutputKind &kind : kinds)
            outputs = outputs || cmd.isSet(kind.option);
        if (outputs) {
            printErr(QStringLiteral("zatgen: --compare cannot be combined with --check, --check-outputs or an output\n"));
            return BadUsage;
        }
        const QString old = cmd.value(compareOption);
        bool warned = false;
        const std::unique_ptr<ZAT16::Item> oldRoot = readDefinitions(old, &warned);
        if (!oldRoot)
            return BadInput;
        const std::unique_ptr<ZAT16::Item> newRoot = readDefinitions(input, &warned);
        if (!newRoot)
            return BadInput;
        if (cmd.isSet(werrorOption) && warned)
            return BadInput;
        const ZAT16::CompatibilityReport report(oldRoot.get(), newRoot.get());
        printOut(report.text(old, input));
        return report.isBreaking() ? Breaking : Success;
    }

    bool warned = false;
    const std::unique_ptr<ZAT16::Item> root = readDefinitions(input, &warned);
    if (!root)
        return BadInput;
    if (cmd.isSet(checkOption)) {
        const int problems = printProblems(input, root.get());
        return cmd.isSet(werrorOption) && (warned || problems > 0) ? BadInput : Success;
    }
    if (cmd.isSet(werrorOption) && warned)
        return BadInput;

    const bool checkOnly = cmd.isSet(checkOutputsOption);
    bool outOfDate = false;
    for (const OutputKind &kind : kinds) {
        const QStringList paths = cmd.values(kind.option);
        for (const QString &path : paths) {
            QString error;
            switch (kind.produce(root.get(), path, checkOnly, &error)) {
            case OutputResult::Written:
            case OutputResult::Unchanged:
                break;
            case OutputResult::OutOfDate:
                printErr(QStringLiteral("zatgen: out of date: %1\n").arg(path));
                outOfDate = true;
                break;
            case OutputResult::Failed:
                printErr(error + QLatin1Char('\n'));
                return WriteFailed;
            }
        }
    }
    return outOfDate ? OutOfDate : Success;
}
