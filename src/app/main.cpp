// zatedit: the ZAT16 tag definitions editor. Exit status: 0 when the window was closed, and after
// --help and --version; 1 no display to show the window on; 2 bad usage (an unknown option, more
// than one file).

#include "editorwindow.h"
#include "localfile.h"
#include "recovery.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>

#include <cstdio>
#include <cstring>

namespace {

enum ExitStatus {
    Success = 0,
    NoDisplay = 1,
    BadUsage = 2,
};

// Messages quote the arguments; those come out as the bytes they were given as.
void printErr(const QString &text)
{
    const QByteArray bytes = ZAT16::LocalFile::encodeName(text);
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
    std::fflush(stderr);
}

// Whether an argument asks for the help or the version, looked for before the toolkit has taken
// out its own options, which are not known here: so only the words as they stand, up to "--".
bool asksForText(int argc, char *argv[])
{
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--") == 0)
            return false;
        for (const char *option : { "-h", "--help", "--help-all", "-v", "--version" }) {
            if (std::strcmp(argv[i], option) == 0)
                return true;
        }
    }
    return false;
}

} // namespace

int main(int argc, char *argv[])
{
    // The help and the version need no display, and are given where there is none. The toolkit
    // starts all the same, without a screen, as it takes its own options (-style, -platform)
    // out of the arguments.
    const bool textOnly = asksForText(argc, argv);
    // Without a display the toolkit would end the program as it starts, before a wrong option
    // could be named: the arguments are read offscreen all the same, and the window is not opened.
    const bool noDisplay = qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
        && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
    if (textOnly || noDisplay)
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("zatedit"));
    QApplication::setApplicationVersion(QStringLiteral(ZAT16_VERSION));
    QApplication::setOrganizationName(QStringLiteral("zatedit"));
    QApplication::setOrganizationDomain(QStringLiteral("zatedit.invalid"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/i16_message.png")));

    QCommandLineParser cmd;
    cmd.setApplicationDescription(QStringLiteral("Edits the tag definitions of the ZAT16 device protocol."));
    cmd.addHelpOption();
    cmd.addVersionOption();
    cmd.addPositionalArgument(
        QStringLiteral("file"),
        QStringLiteral("The definitions file (.zatdef) to open. Without it, the file last opened is opened again."),
        QStringLiteral("[file]"));

    // The arguments as the system gave them, Qt's own options taken out by now: Qt's decoding
    // would change a file name that is not valid UTF-8 into another name.
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << ZAT16::LocalFile::decodeName(QByteArray(argv[i]));
    if (!cmd.parse(arguments)) {
        printErr(QStringLiteral("zatedit: %1\n").arg(cmd.errorText()));
        return BadUsage;
    }
    if (cmd.isSet(QStringLiteral("help")))
        cmd.showHelp(Success);
    // The help with Qt's options, which only process() gives.
    if (cmd.isSet(QStringLiteral("help-all")))
        cmd.process(arguments);
    if (cmd.isSet(QStringLiteral("version")))
        cmd.showVersion();
    const QStringList files = cmd.positionalArguments();
    if (files.size() > 1) {
        printErr(QStringLiteral("zatedit: only one file can be opened\n"));
        return BadUsage;
    }
    // A word taken for the help above was the value of one of Qt's options: the window would
    // open on no screen.
    if (textOnly) {
        printErr(QStringLiteral("zatedit: --help or --version was given as the value of an option\n"));
        return BadUsage;
    }
    if (noDisplay) {
        printErr(
            QStringLiteral("zatedit: no display to show the window on (neither DISPLAY nor WAYLAND_DISPLAY is set)\n"));
        return NoDisplay;
    }

    auto *window = new ZAT16::EditorWindow;
    // A file named on the command line is opened instead of the last one opened.
    window->initialize(files.value(0), QString());
    // From here on SIGTERM (the session ending, a plain kill) keeps unsaved changes for the next
    // start. Before, there are none: a recovered document is still in its recovery file.
    ZAT16::Recovery::onTermination(window, [window]() { window->terminate(); });
    window->show();
    const int result = app.exec();
    delete window;
    return result;
}
