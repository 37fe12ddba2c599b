// zatgen: reads a definitions file and writes it back in the canonical layout or as generated
// source, without a display. Exit status: 0 success, 1 bad input, 2 bad usage, 3 an output could
// not be written.

#include "item.h"
#include "parser.h"
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
};

void printErr(const QString &text)
{
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
    std::fflush(stderr);
}

// One kind of output: the option that asks for it and the writer that produces it.
struct OutputKind {
    QString option;
    QString description;
    std::function<bool(const ZAT16::Item *, const QString &, QString *)> write;
};

template<typename W>
bool writeWith(const ZAT16::Item *root, const QString &path, QString *error)
{
    W writer;
    if (writer.write(root, path))
        return true;
    *error = writer.formatError();
    return false;
}

QList<OutputKind> outputKinds()
{
    return {
        {QStringLiteral("xml"),
         QStringLiteral("Save the definitions in the canonical layout to <path> (- for standard output)."),
         writeWith<ZAT16::WriterXml>},
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
    const QCommandLineOption checkOption(QStringLiteral("check"), QStringLiteral("Only read the file and report problems."));
    const QCommandLineOption werrorOption(QStringLiteral("werror"), QStringLiteral("Treat warnings as errors."));
    cmd.addOption(checkOption);
    cmd.addOption(werrorOption);
    const QList<OutputKind> kinds = outputKinds();
    for (const OutputKind &kind : kinds)
        cmd.addOption(QCommandLineOption(kind.option, kind.description, QStringLiteral("path")));
    cmd.addPositionalArgument(QStringLiteral("input"), QStringLiteral("The definitions file (.zatdef)."));

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

    ZAT16::Parser parser;
    const bool ok = parser.parse(inputs.first());
    printErr(parser.warnings);
    if (!ok) {
        printErr(parser.formatError() + QLatin1Char('\n'));
        return BadInput;
    }
    std::unique_ptr<ZAT16::Item> root(parser.takeRoot());
    if (cmd.isSet(werrorOption) && !parser.warnings.isEmpty())
        return BadInput;
    if (cmd.isSet(checkOption))
        return Success;

    for (const OutputKind &kind : kinds) {
        const QStringList paths = cmd.values(kind.option);
        for (const QString &path : paths) {
            QString error;
            if (!kind.write(root.get(), path, &error)) {
                printErr(error + QLatin1Char('\n'));
                return WriteFailed;
            }
        }
    }
    return Success;
}
