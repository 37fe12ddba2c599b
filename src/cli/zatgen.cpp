// zatgen: reads a definitions file and writes it back in the canonical layout or as generated
// source, without a display; lists the file's problems and those of the generated outputs
// (--check, --check-output) or compares it with an older version (--compare). Exit status: 0
// success, 1 bad input, 2 bad usage, 3 an output could not be written, 4 --check-outputs found an
// output file that is not up to date, 5 --compare found a change that breaks programs built from
// the older version, 6 a plugin failed.

#include "codewriter.h"
#include "compatibility.h"
#include "item.h"
#include "localfile.h"
#include "outputproblems.h"
#include "outputs.h"
#include "parser.h"
#include "plugin.h"
#include "problems.h"
#include "readbackcheck.h"
#include "savesequence.h"
#include "writerjson.h"
#include "writerpluginfile.h"
#include "writerxml.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace {

enum ExitStatus {
    Success = 0,
    BadInput = 1,
    BadUsage = 2,
    WriteFailed = 3,
    OutOfDate = 4,
    Breaking = 5,
    PluginFailed = 6,
};

// Messages quote file names; those come out as the bytes the file system has.
void printErr(const QString &text)
{
    const QByteArray bytes = ZAT16::LocalFile::encodeName(text);
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
    std::fflush(stderr);
}

void printOut(const QString &text)
{
    const QByteArray bytes = ZAT16::LocalFile::encodeName(text);
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
    // Reading stops at text between elements, keeping what came before. An output made from
    // that would silently lack the rest of the file.
    if (parser.stoppedAtLine != 0) {
        printErr(QStringLiteral("Error: %1, Line %2:\n  Reading stopped at text that is not allowed here; the rest of "
                                "the file was not read\n")
                     .arg(path)
                     .arg(parser.stoppedAtLine));
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

// One line per problem of the generated outputs in `outputs`, as printProblems() writes them.
int printOutputProblems(const QString &path, const ZAT16::Item *root, ZAT16::OutputProblems::OutputSet outputs)
{
    if (!outputs)
        return 0;
    const QList<ZAT16::OutputProblems::Problem> problems = ZAT16::OutputProblems::find(root, outputs);
    QString text;
    for (const ZAT16::OutputProblems::Problem &problem : problems)
        text += path + QStringLiteral(": problem: ") + problem.message + QLatin1Char('\n');
    printErr(text);
    return int(problems.size());
}

// The outputs named by --check-output: an output's option without the dashes, or "all". False
// with a message for a name that is neither.
bool checkedOutputs(const QStringList &names, ZAT16::OutputProblems::OutputSet *outputs)
{
    *outputs = 0;
    for (const QString &name : names) {
        if (name == QLatin1String("all")) {
            *outputs |= ZAT16::OutputProblems::AllOutputs;
            continue;
        }
        int kind = 0;
        while (kind < ZAT16::Outputs::KindCount
               && name != QLatin1String(ZAT16::Outputs::output(ZAT16::Outputs::Kind(kind)).option))
            ++kind;
        if (kind == ZAT16::Outputs::KindCount) {
            printErr(QStringLiteral("zatgen: unknown output for --check-output: %1\n").arg(name));
            return false;
        }
        *outputs |= 1u << kind;
    }
    return true;
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

// What an output path names: a file (or nothing yet, or a link to a file), or something that
// takes a stream of bytes and is written directly (a pipe, a device).
enum class OutputTarget { File, Stream };

OutputTarget outputTarget(const QString &path)
{
    struct stat st;
    if (::stat(ZAT16::LocalFile::encodeName(path).constData(), &st) == 0
        && (S_ISFIFO(st.st_mode) || S_ISCHR(st.st_mode) || S_ISBLK(st.st_mode)))
        return OutputTarget::Stream;
    return OutputTarget::File;
}

bool fileHasContent(const QString &path, const QByteArray &bytes)
{
    QString reason;
    const int fd = ZAT16::LocalFile::openForReading(path, &reason);
    if (fd < 0)
        return false;
    QFile file;
    const bool same = file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle) && file.size() == bytes.size()
        && file.readAll() == bytes;
    if (!file.isOpen())
        ::close(fd);
    return same;
}

bool writeStream(const QString &path, const QByteArray &bytes, QString *error)
{
    const int fd = ::open(ZAT16::LocalFile::encodeName(path).constData(), O_WRONLY | O_NOCTTY | O_CLOEXEC);
    const char *p = bytes.constData();
    qsizetype left = bytes.size();
    while (fd >= 0 && left > 0) {
        const ssize_t n = ::write(fd, p, size_t(left));
        if (n < 0 && errno == EINTR)
            continue;
        if (n == 0)
            errno = EIO;
        if (n <= 0)
            break;
        p += n;
        left -= n;
    }
    const int failure = errno;
    if (fd >= 0)
        ::close(fd);
    if (fd >= 0 && left == 0)
        return true;
    *error = QStringLiteral("Error writing %1:\n  %2").arg(path, ZAT16::LocalFile::errorText(failure));
    return false;
}

// A file whose content would not change is not written at all, so that its modification time
// stays and a build does not redo what depends on it. Files are replaced whole, never truncated
// and rewritten: an output that is also the input survives a full disk, and a build never sees
// a half-written header. Definitions must read back as the tree before they replace the file.
OutputResult produce(ZAT16::Writer &writer,
                     bool definitions,
                     const ZAT16::Item *root,
                     const QString &path,
                     bool checkOnly,
                     QString *error)
{
    const bool toStdout = path == QLatin1String("-");
    const bool stream = toStdout || outputTarget(path) == OutputTarget::Stream;
    if (stream && checkOnly)
        return OutputResult::Unchanged; // a stream has nothing to compare with
    const QByteArray bytes = writer.encode(root);
    // Definitions written anywhere must read back as the tree; the save sequence checks what it
    // writes to a file, a stream is checked here.
    if (stream && definitions) {
        const QString refused = ZAT16::ReadBackCheck::check(root, bytes);
        if (!refused.isEmpty()) {
            *error = QStringLiteral("The definitions were not written to %1: %2.").arg(path, refused);
            return OutputResult::Failed;
        }
    }
    if (toStdout) {
        if (writer.write(root, path))
            return OutputResult::Written;
        *error = writer.formatError();
        return OutputResult::Failed;
    }
    // A pipe or a device is only written to; reading it to compare would take its data or wait
    // for a writer.
    if (stream)
        return writeStream(path, bytes, error) ? OutputResult::Written : OutputResult::Failed;
    if (!bytes.isEmpty() && fileHasContent(path, bytes))
        return OutputResult::Unchanged;
    if (checkOnly)
        return OutputResult::OutOfDate;
    ZAT16::SaveSequence sequence(path);
    const bool saved = definitions ? sequence.run(root, ZAT16::SaveSequence::NoBackup) : sequence.replaceWith(bytes);
    if (saved)
        return OutputResult::Written;
    *error = sequence.errorMessage();
    return OutputResult::Failed;
}

// The definitions in the canonical layout, then the generated outputs.
QList<OutputKind> outputKinds()
{
    QList<OutputKind> kinds = {
        { QStringLiteral("xml"),
          QStringLiteral("Save the definitions in the canonical layout to <path> (- for standard output)."),
          [](const ZAT16::Item *root, const QString &path, bool checkOnly, QString *error) {
              ZAT16::WriterXml writer;
              return produce(writer, true, root, path, checkOnly, error);
          } },
        { QStringLiteral("json"),
          QStringLiteral("Write the definitions as a JSON document, the model that plugins read, to <path> (- for "
                         "standard output)."),
          [](const ZAT16::Item *root, const QString &path, bool checkOnly, QString *error) {
              ZAT16::WriterJson writer;
              return produce(writer, false, root, path, checkOnly, error);
          } },
    };
    for (int kind = 0; kind < ZAT16::Outputs::KindCount; ++kind) {
        const ZAT16::Outputs::Output &output = ZAT16::Outputs::output(ZAT16::Outputs::Kind(kind));
        kinds.append({ QLatin1String(output.option),
                       QLatin1String(output.description),
                       [&output](const ZAT16::Item *root, const QString &path, bool checkOnly, QString *error) {
                           const std::unique_ptr<ZAT16::CodeWriter> writer = output.createWriter();
                           return produce(*writer, false, root, path, checkOnly, error);
                       } });
    }
    return kinds;
}

// The files the plugins made, written or compared as the other outputs are; an exit status.
int writePluginFiles(const QList<ZAT16::Plugin> &plugins, const ZAT16::Item *root, bool checkOnly, bool *outOfDate)
{
    for (const ZAT16::Plugin &plugin : std::as_const(plugins)) {
        for (const ZAT16::Plugin::File &file : plugin.files) {
            const QFileInfo info(file.path);
            OutputResult result = OutputResult::Unchanged;
            QString error;
            // An empty file is compared here: the writer frame gives no bytes for a failure too.
            if (!file.content.isEmpty() || !info.isFile() || info.size() != 0) {
                if (!checkOnly && !QDir().mkpath(info.absolutePath())) {
                    printErr(QStringLiteral("Error writing %1:\n  the folder could not be made\n").arg(file.path));
                    return WriteFailed;
                }
                ZAT16::WriterPluginFile writer(file.content);
                result = produce(writer, false, root, file.path, checkOnly, &error);
            }
            switch (result) {
            case OutputResult::Written:
            case OutputResult::Unchanged:
                break;
            case OutputResult::OutOfDate:
                printErr(QStringLiteral("zatgen: out of date: %1\n").arg(file.path));
                *outOfDate = true;
                break;
            case OutputResult::Failed:
                printErr(error + QLatin1Char('\n'));
                return WriteFailed;
            }
        }
    }
    return Success;
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
        QStringLiteral(
            "Write nothing; after the warnings of reading, list the entries that zatedit marks in red and the "
            "names that are keywords of C, C++, C# or Lua on standard error, one line each: "
            "\"<input>: problem: <message>\" or \"<input>: warning: <message>\"."));
    const QCommandLineOption compareOption(
        QStringLiteral("compare"),
        QStringLiteral("Compare the input with <old>, an older version of it, and print on standard output what would "
                       "break programs built from <old> and what was added; exit with status 5 if anything breaks. "
                       "No output is written."),
        QStringLiteral("old"));
    const QCommandLineOption werrorOption(QStringLiteral("werror"),
                                          QStringLiteral("Treat warnings as errors; with --check, the problems too."));
    const QCommandLineOption checkOutputsOption(
        QStringLiteral("check-outputs"),
        QStringLiteral("Write nothing; name every output file whose content differs from what would be generated, "
                       "and exit with status 4 if there is one. Output files that are up to date are never rewritten, "
                       "so their modification time stays."));
    const QCommandLineOption checkOutputOption(
        QStringLiteral("check-output"),
        QStringLiteral("List the problems that make the generated output <format> (header, lua, cpp, cpp-lut, cs, "
                       "or all of them) fail to compile or load, or hold a value other than the file's, one line "
                       "each: \"<input>: problem: <message>\". Repeatable. --check lists those of every output "
                       "after the other problems; this option limits them to the outputs named. Without --check "
                       "they are listed before the outputs are written, and with --werror they fail the run before "
                       "anything is written."),
        QStringLiteral("format"));
    cmd.addOption(checkOption);
    cmd.addOption(checkOutputOption);
    cmd.addOption(werrorOption);
    cmd.addOption(checkOutputsOption);
    cmd.addOption(compareOption);
    const QList<OutputKind> kinds = outputKinds();
    for (const OutputKind &kind : kinds)
        cmd.addOption(QCommandLineOption(kind.option, kind.description, QStringLiteral("path")));
    const QCommandLineOption pluginOption(
        QStringLiteral("plugin"),
        QStringLiteral("Run the generator plugin <command> (found beside zatgen, then on PATH) and write the files it "
                       "makes under the --plugin-out that follows; may be given more than once."),
        QStringLiteral("command"));
    const QCommandLineOption pluginOutOption(QStringLiteral("plugin-out"),
                                             QStringLiteral("The folder of the files of the --plugin before it."),
                                             QStringLiteral("dir"));
    const QCommandLineOption pluginOptOption(QStringLiteral("plugin-opt"),
                                             QStringLiteral("An option for the --plugin before it."),
                                             QStringLiteral("key=value"));
    const QCommandLineOption pluginTimeoutOption(QStringLiteral("plugin-timeout"),
                                                 QStringLiteral(
                                                     "Stop a plugin that runs longer than <seconds> (default %1).")
                                                     .arg(ZAT16::Plugin::defaultTimeoutSeconds()),
                                                 QStringLiteral("seconds"));
    cmd.addOption(pluginOption);
    cmd.addOption(pluginOutOption);
    cmd.addOption(pluginOptOption);
    cmd.addOption(pluginTimeoutOption);
    cmd.addPositionalArgument(QStringLiteral("input"),
                              QStringLiteral("The definitions file (.zatdef); with --compare, its new version."));

    // The arguments as the system gave them: Qt's own decoding would change a file name that is
    // not valid UTF-8 into another name.
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << ZAT16::LocalFile::decodeName(QByteArray(argv[i]));
    if (!cmd.parse(arguments)) {
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
    QList<ZAT16::Plugin> plugins;
    QString pluginUsage;
    if (!ZAT16::Plugin::fromCommandLine(cmd, &plugins, &pluginUsage)) {
        printErr(QStringLiteral("zatgen: %1\n").arg(pluginUsage));
        return BadUsage;
    }
    double pluginSeconds = ZAT16::Plugin::defaultTimeoutSeconds();
    if (cmd.isSet(pluginTimeoutOption)) {
        bool ok = false;
        pluginSeconds = cmd.value(pluginTimeoutOption).toDouble(&ok);
        if (!ok || !(pluginSeconds > 0) || pluginSeconds > 86400) {
            printErr(QStringLiteral("zatgen: --plugin-timeout needs a number of seconds above 0: %1\n")
                         .arg(cmd.value(pluginTimeoutOption)));
            return BadUsage;
        }
    }

    ZAT16::OutputProblems::OutputSet checkedKinds = 0;
    if (!checkedOutputs(cmd.values(checkOutputOption), &checkedKinds))
        return BadUsage;

    if (cmd.isSet(compareOption)) {
        if (cmd.isSet(checkOutputOption)) {
            printErr(QStringLiteral("zatgen: --compare cannot be combined with --check-output\n"));
            return BadUsage;
        }
        bool outputs = cmd.isSet(checkOption) || cmd.isSet(checkOutputsOption) || !plugins.isEmpty();
        for (const OutputKind &kind : kinds)
            outputs = outputs || cmd.isSet(kind.option);
        if (outputs) {
            printErr(
                QStringLiteral("zatgen: --compare cannot be combined with --check, --check-outputs or an output\n"));
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
        // Every output is checked, unless the project named the ones it uses.
        int problems = printProblems(input, root.get());
        problems
            += printOutputProblems(input,
                                   root.get(),
                                   cmd.isSet(checkOutputOption) ? checkedKinds : ZAT16::OutputProblems::AllOutputs);
        return cmd.isSet(werrorOption) && (warned || problems > 0) ? BadInput : Success;
    }
    const int outputProblems = printOutputProblems(input, root.get(), checkedKinds);
    if (cmd.isSet(werrorOption) && (warned || outputProblems > 0))
        return BadInput;

    // Plugins run before anything is written, so that a plugin that fails leaves every output
    // as it was.
    for (ZAT16::Plugin &plugin : plugins) {
        if (!plugin.run(root.get(), input, int(pluginSeconds * 1000))) {
            printErr(QStringLiteral("zatgen: %1\n").arg(plugin.errorMessage()));
            return PluginFailed;
        }
    }

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
    const int pluginStatus = writePluginFiles(plugins, root.get(), checkOnly, &outOfDate);
    if (pluginStatus != Success)
        return pluginStatus;
    return outOfDate ? OutOfDate : Success;
}
