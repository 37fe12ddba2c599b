// The main window's layout across starts: what one start stores on closing comes back at the
// next, unless the stored bytes were changed behind the editor's back or the start before ended
// while restoring them. A start is this executable run again with --start, so that a start that
// crashes fails one check instead of ending the whole test.

#include "editorwindow.h"
#include "ui_editorwindow.h"

#include <QApplication>
#include <QDockWidget>
#include <QHeaderView>
#include <QProcess>
#include <QScreen>
#include <QSettings>
#include <QStandardPaths>
#include <QTest>

#include <cstdio>
#include <cstdlib>
#include <cstring>

using namespace ZAT16;

namespace {

const QString keyState = QStringLiteral("ZAT16Editor/State");
const QString keyGeometry = QStringLiteral("ZAT16Editor/Geometry");
const QString keyTreeHeader = QStringLiteral("ZAT16Editor/TreeHeader");
const QString keyCheck = QStringLiteral("ZAT16Editor/LayoutCheck");
const QString keyRestoring = QStringLiteral("ZAT16Editor/Restoring");

// The window as a start leaves it after construction and restoring, before anything else: a
// first start takes two thirds of the screen, and no less than 800 x 500.
QString defaultLayout()
{
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    return QStringLiteral("size %1x%2, tree column 250, messages hidden")
        .arg(std::max(800, screen.width() * 2 / 3))
        .arg(std::max(500, screen.height() * 2 / 3));
}
// What storeChangedLayout() makes of it.
const QString changedLayout = QStringLiteral("size 700x450, tree column 180, messages shown");

void useTestSettings()
{
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setOrganizationName(QStringLiteral("zatedit-tests"));
    QCoreApplication::setApplicationName(QStringLiteral("tst_windowlayout"));
}

// One line, so that a failing comparison shows every part of the layout at once.
QString describe(EditorWindow *window)
{
    return QStringLiteral("size %1x%2, tree column %3, messages %4")
        .arg(window->width())
        .arg(window->height())
        .arg(window->ui()->m_view->header()->sectionSize(0))
        .arg(window->messageDock()->isHidden() ? QStringLiteral("hidden") : QStringLiteral("shown"));
}

// The child: one start of the editor. "show" shows the window and prints its layout; "die"
// ends right after constructing the window, without showing it and without running any
// destructor, the way a crash in restoring would end it; "leak" returns from main() without
// showing or deleting the window.
int start(const QByteArray &how)
{
    auto *window = new EditorWindow;
    if (how == "die") {
        std::fflush(stdout);
        std::_Exit(0);
    }
    if (how == "leak")
        return 0;
    window->show();
    if (!QTest::qWaitForWindowExposed(window)) {
        std::printf("not exposed\n");
        return 1;
    }
    std::printf("%s\n", qPrintable(describe(window)));
    // Deleted without closing, so that this start does not store its layout.
    delete window;
    return 0;
}

// Runs one start in a child process: its description of the window, or what went wrong.
QString runStart(const char *how)
{
    QSettings().sync();
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    child.setProcessEnvironment(environment);
    child.start(QCoreApplication::applicationFilePath(), { QStringLiteral("--start"), QString::fromLatin1(how) });
    if (!child.waitForStarted())
        return QStringLiteral("not started: ") + child.errorString();
    if (!child.waitForFinished(60000)) {
        child.kill();
        child.waitForFinished();
        return QStringLiteral("still running after a minute");
    }
    const QString output = QString::fromUtf8(child.readAllStandardOutput()).trimmed();
    const QString errors = QString::fromUtf8(child.readAllStandardError()).right(2000);
    if (child.exitStatus() == QProcess::CrashExit)
        return QStringLiteral("crashed:\n") + errors;
    if (child.exitCode() != 0)
        return QStringLiteral("exit code %1: %2\n%3").arg(child.exitCode()).arg(output, errors);
    return output;
}

QByteArray storedBytes(const QString &key)
{
    return QSettings().value(key).toByteArray();
}

} // namespace

// storeChangedLayout() checks as it goes; a failure there ends the calling test too.
#define STORE_CHANGED_LAYOUT()                                                                                         \
    do {                                                                                                               \
        storeChangedLayout();                                                                                          \
        if (QTest::currentTestFailed())                                                                                \
            return;                                                                                                    \
    } while (false)

class TestWindowLayout : public QObject
{
    Q_OBJECT

private:
    // A user's session: the window made smaller, the tree's first column narrower and the
    // messages dock open, then closed, which stores the layout.
    void storeChangedLayout()
    {
        EditorWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(describe(&window), defaultLayout());
        window.resize(700, 450);
        window.ui()->m_view->header()->resizeSection(0, 180);
        window.messageDock()->show();
        QCOMPARE(describe(&window), changedLayout);
        QVERIFY(window.close());
        QVERIFY(!storedBytes(keyState).isEmpty());
        QVERIFY(!storedBytes(keyGeometry).isEmpty());
        QVERIFY(!storedBytes(keyTreeHeader).isEmpty());
    }

private slots:
    void init()
    {
        QSettings settings;
        settings.clear();
        settings.sync();
    }

    void storedLayoutIsRestored()
    {
        STORE_CHANGED_LAYOUT();
        QCOMPARE(runStart("show"), changedLayout);
        // Restoring does not use the layout up.
        QCOMPARE(runStart("show"), changedLayout);
    }

    void noStoredLayoutLeavesDefaults() { QCOMPARE(runStart("show"), defaultLayout()); }

    void missingCheckRestoresNothing()
    {
        STORE_CHANGED_LAYOUT();
        QSettings settings;
        QVERIFY(settings.contains(keyCheck));
        settings.remove(keyCheck);
        settings.sync();
        QCOMPARE(runStart("show"), defaultLayout());
    }

    void changedCheckRestoresNothing()
    {
        STORE_CHANGED_LAYOUT();
        QSettings settings;
        QString check = settings.value(keyCheck).toString();
        QVERIFY(!check.isEmpty());
        const qsizetype last = check.size() - 1;
        check[last] = check.at(last) == QLatin1Char('0') ? QLatin1Char('1') : QLatin1Char('0');
        settings.setValue(keyCheck, check);
        settings.sync();
        QCOMPARE(runStart("show"), defaultLayout());
    }

    void corruptedByteRestoresNothing_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<int>("position");
        // Bytes 13 to 16 of the window state hold the index of its first dock area (the right
        // one, 1). In Qt 6.4 an index out of 0 to 3 crashes QMainWindow::restoreState.
        QTest::newRow("state: dock area index") << keyState << 13;
        QTest::newRow("state: version marker") << keyState << 3;
        QTest::newRow("state: last byte") << keyState << -1;
        // The width, as stored by Tools::saveWidgetGeometry().
        QTest::newRow("geometry: width") << keyGeometry << 10;
        QTest::newRow("tree header: last byte") << keyTreeHeader << -1;
    }

    void corruptedByteRestoresNothing()
    {
        QFETCH(QString, key);
        QFETCH(int, position);
        STORE_CHANGED_LAYOUT();
        QSettings settings;
        QByteArray bytes = settings.value(key).toByteArray();
        if (position < 0)
            position = int(bytes.size()) + position;
        QVERIFY(position < bytes.size());
        if (key == keyState && position == 13)
            QCOMPARE(bytes.mid(13, 4).toHex(), QByteArray("00000001"));
        // Only the value changes; the check stays as the editor wrote it.
        bytes[position] = char(bytes.at(position) ^ 0xff);
        settings.setValue(key, bytes);
        settings.sync();
        QCOMPARE(runStart("show"), defaultLayout());
    }

    void startEndedBeforeShowingSkipsLayoutOnce()
    {
        STORE_CHANGED_LAYOUT();
        QVERIFY(!QSettings().contains(keyRestoring));
        QCOMPARE(runStart("die"), QString());
        QVERIFY(QSettings().value(keyRestoring).toBool());
        // The next start does not risk what may have ended the one before.
        QCOMPARE(runStart("show"), defaultLayout());
        QVERIFY(!QSettings().contains(keyRestoring));
        // The layout is still stored, and the start after that restores it again.
        QCOMPARE(runStart("show"), changedLayout);
        QVERIFY(!QSettings().contains(keyRestoring));
    }

    void shownWindowClearsTheMarker()
    {
        STORE_CHANGED_LAYOUT();
        EditorWindow window;
        QCOMPARE(describe(&window), changedLayout);
        QVERIFY(QSettings().value(keyRestoring).toBool());
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(!QSettings().contains(keyRestoring));
        // Showing again later does not set it.
        window.hide();
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(!QSettings().contains(keyRestoring));
    }

    // Tests and tools construct windows they never show; destroying such a window is no crash,
    // so it must not cost the next start its layout.
    void windowNeverShownDoesNotSkipNextLayout()
    {
        STORE_CHANGED_LAYOUT();
        {
            EditorWindow window;
            QCOMPARE(describe(&window), changedLayout);
        }
        QVERIFY(!QSettings().contains(keyRestoring));
        QCOMPARE(runStart("show"), changedLayout);
    }

    void programEndingWithUnshownWindowDoesNotSkipNextLayout()
    {
        STORE_CHANGED_LAYOUT();
        QCOMPARE(runStart("leak"), QString());
        QVERIFY(!QSettings().contains(keyRestoring));
        QCOMPARE(runStart("show"), changedLayout);
    }

    // The marker of a window of this same program that is still being set up is not the mark
    // of a start that ended.
    void secondWindowOfTheSameProgramRestores()
    {
        STORE_CHANGED_LAYOUT();
        EditorWindow first;
        EditorWindow second;
        QCOMPARE(describe(&first), changedLayout);
        QCOMPARE(describe(&second), changedLayout);
        first.show();
        QVERIFY(QTest::qWaitForWindowExposed(&first));
        // The second is still unshown.
        QVERIFY(QSettings().value(keyRestoring).toBool());
        second.show();
        QVERIFY(QTest::qWaitForWindowExposed(&second));
        QVERIFY(!QSettings().contains(keyRestoring));
    }

    void hugeGeometryIsClampedToTheScreen()
    {
        QScreen *screen = QGuiApplication::primaryScreen();
        // The offscreen platform's one screen.
        QCOMPARE(screen->availableGeometry(), QRect(0, 0, 800, 800));
        {
            // Never shown: at this size a shown window would need gigabytes for its pixels.
            EditorWindow window;
            window.resize(30000, 30000);
            QVERIFY(window.close());
        }
        EditorWindow window;
        QCOMPARE(window.size(), QSize(800, 800));
    }
};

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    useTestSettings();
    if (argc == 3 && std::strcmp(argv[1], "--start") == 0)
        return start(argv[2]);
    TestWindowLayout test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_windowlayout.moc"
