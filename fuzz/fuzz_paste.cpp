// libFuzzer target: arbitrary "text/xml" and text data pasted onto a row of an example document
// through EditorModel::paste with an undo stack, then everything undone, redone and undone again;
// the document must come back each time. The first input byte chooses the format, the kind of
// row (tag, enum list, enum, bit list, bit, comment, blank line, ...) and the column.
//
// The document is examples/weather-station.zatdef unless ZAT16_FUZZ_DOCUMENT names another;
// ZAT16_FUZZ_MODELTESTER=1 also attaches a QAbstractItemModelTester (slower).

#include "fuzzchecks.h"
#include "fuzztarget.h"

#include <QFile>
#include <QGuiApplication>

namespace {

QByteArray document;
bool modelTester = false;

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    FuzzTarget::quietQt();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static int appArgc = 1;
    static char *appArgv[] = { (*argc > 0 ? (*argv)[0] : const_cast<char *>("fuzz_paste")), nullptr };
    new QGuiApplication(appArgc, appArgv); // lives as long as the process

    QString path = qEnvironmentVariable("ZAT16_FUZZ_DOCUMENT");
    if (path.isEmpty())
        path = QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef");
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "fuzz_paste: cannot read %s\n", qPrintable(path));
        std::exit(1);
    }
    document = file.readAll();
    modelTester = FuzzTarget::envFlag("ZAT16_FUZZ_MODELTESTER");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzTarget::failIf(FuzzChecks::checkPaste(document, FuzzTarget::input(data, size), modelTester));
    return 0;
}
