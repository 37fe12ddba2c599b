// zatedit: the ZAT16 tag definitions editor.

#include "editorwindow.h"
#include "localfile.h"
#include "recovery.h"

#include <QApplication>
#include <QIcon>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("zatedit"));
    QApplication::setOrganizationName(QStringLiteral("zatedit"));
    QApplication::setOrganizationDomain(QStringLiteral("zatedit.invalid"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/i16_message.png")));

    auto *window = new ZAT16::EditorWindow;
    // A file named on the command line is opened instead of the last one chosen in the Open
    // dialog; Qt's own options have been taken out of argv by now. The name is taken as the bytes
    // it is, which Qt's decoding of the arguments would change where they are not UTF-8.
    window->initialize(argc > 1 ? ZAT16::LocalFile::decodeName(QByteArray(argv[1])) : QString(), QString());
    // From here on SIGTERM (the session ending, a plain kill) keeps unsaved changes for the next
    // start. Before, there are none: a recovered document is still in its recovery file.
    ZAT16::Recovery::onTermination(window, [window]() { window->terminate(); });
    window->show();
    const int result = app.exec();
    delete window;
    return result;
}
