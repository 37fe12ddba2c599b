#include "tools.h"

#include <QDataStream>
#include <QDir>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <QtTest>

#include <cerrno>
#include <cstring>

namespace {

// Debug lines written while a capture is active.
QStringList capturedDebug;
QtMessageHandler previousHandler = nullptr;

void captureHandler(QtMsgType type, QMessageLogContext const &context, QString const &message)
{
    if (type == QtDebugMsg)
        capturedDebug << message;
    else
        previousHandler(type, context, message);
}

// Collects the debug output of its lifetime.
class DebugCapture
{
public:
    DebugCapture()
    {
        capturedDebug.clear();
        previousHandler = qInstallMessageHandler(captureHandler);
    }
    ~DebugCapture() { qInstallMessageHandler(previousHandler); }
    QStringList lines() const { return capturedDebug; }
};

QByteArray record(QPoint const &pos, QSize const &size, bool maximized)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << pos << size << maximized;
    return bytes;
}

QString red(QString const &line)
{
    return QStringLiteral("\033[31m") + line + QStringLiteral("\033[0m");
}

// The area a restored window may use on the (only) offscreen screen: the available area, 16
// pixels wider on either side and 50 pixels shorter at the bottom.
QRect adjustedArea()
{
    return QGuiApplication::primaryScreen()->availableGeometry().adjusted(-16, 0, 16, -50);
}

} // namespace

class TestTools : public QObject
{
    Q_OBJECT

private slots:
    void saveLayout();
    void saveMaximized();
    void restoreOnScreen();
    void restoreMaximizedOnScreen();
    void restoreEmpty();
    void restoreTruncated();
    void restoreSixteenPixelsLeft();
    void restoreSeventeenPixelsLeft();
    void restoreSecondMonitorGone();
    void restoreSecondMonitorGoneMaximized();
    void restoreCentered();
    void restoreDoesNotFit();
    void restoreDoesNotFitMaximized();
    void roundTrip();
    void restoreOnSecondScreen();
    void restoreOnTinyScreen();
    void restoreHugeSize();
    void restoreHugeSizeOnSecondScreen();
    void restoreHugeSizeNotOnAnyScreen();

    void ensureDirectorySeparator_data();
    void ensureDirectorySeparator();
    void documentsPath_data();
    void documentsPath();
    void appDataPath();
    void allFilesFilter();
    void systemErrorStringOfNumber_data();
    void systemErrorStringOfNumber();
    void systemErrorStringOfErrno();
};

void TestTools::saveLayout()
{
    QWidget widget;
    widget.move(10, 20);
    widget.resize(300, 200);
    QByteArray const bytes = Tools::saveWidgetGeometry(&widget);

    // Big-endian 32-bit x, y, width, height, then one byte for the maximized flag.
    QCOMPARE(bytes.toHex(' '), QByteArray("00 00 00 0a 00 00 00 14 00 00 01 2c 00 00 00 c8 00"));

    QDataStream stream(bytes);
    QPoint pos;
    QSize size;
    bool maximized = true;
    stream >> pos >> size >> maximized;
    QCOMPARE(stream.status(), QDataStream::Ok);
    QVERIFY(stream.atEnd());
    QCOMPARE(pos, QPoint(10, 20));
    QCOMPARE(size, QSize(300, 200));
    QCOMPARE(maximized, false);
}

void TestTools::saveMaximized()
{
    QWidget widget;
    widget.showMaximized();
    QVERIFY(QTest::qWaitForWindowExposed(&widget));
    QVERIFY(widget.isMaximized());
    QByteArray const bytes = Tools::saveWidgetGeometry(&widget);

    QDataStream stream(bytes);
    QPoint pos;
    QSize size;
    bool maximized = false;
    stream >> pos >> size >> maximized;
    QCOMPARE(stream.status(), QDataStream::Ok);
    QCOMPARE(pos, widget.pos());
    QCOMPARE(size, widget.geometry().size());
    QCOMPARE(maximized, true);
}

void TestTools::restoreOnScreen()
{
    QRect const available = QGuiApplication::primaryScreen()->availableGeometry();
    QPoint const pos = available.topLeft() + QPoint(50, 60);
    QWidget widget;
    widget.move(available.topLeft() + QPoint(5, 5));
    widget.resize(100, 100);

    DebugCapture capture;
    QVERIFY(Tools::restoreWidgetGeometry(&widget, record(pos, QSize(300, 200), false)));
    QCOMPARE(capture.lines(), QStringList());
    QCOMPARE(widget.pos(), pos);
    QCOMPARE(widget.size(), QSize(300, 200));
    QVERIFY(!widget.isMaximized());
    QVERIFY(!widget.isVisible());
}

void TestTools::restoreMaximizedOnScreen()
{
    QRect const available = QGuiApplication::primaryScreen()->availableGeometry();
    QPoint const pos = available.topLeft() + QPoint(30, 40);
    QWidget widget;
    widget.resize(100, 100);

    DebugCapture capture;
    QVERIFY(Tools::restoreWidgetGeometry(&widget, record(pos, QSize(300, 200), true)));
    QCOMPARE(capture.lines(), QStringList());
    QVERIFY(widget.windowState() & Qt::WindowMaximized);
    widget.show();
    QVERIFY(QTest::qWaitForWindowExposed(&widget));
    QVERIFY(widget.isMaximized());
}

void TestTools::restoreEmpty()
{
    QWidget widget;
    widget.move(70, 80);
    widget.resize(123, 45);

    DebugCapture capture;
    QVERIFY(!Tools::restoreWidgetGeometry(&widget, QByteArray()));
    QCOMPARE(capture.lines(), QStringList());
    QCOMPARE(widget.pos(), QPoint(70, 80));
    QCOMPARE(widget.size(), QSize(123, 45));
    QCOMPARE(widget.windowState(), Qt::WindowNoState);
    QVERIFY(!widget.isVisible());
}

void TestTools::restoreTruncated()
{
    QWidget widget;
    widget.move(70, 80);
    widget.resize(123, 45);

    DebugCapture capture;
    QVERIFY(!Tools::restoreWidgetGeometry(&widget, record(QPoint(10, 10), QSize(300, 200), false).left(10)));
    QCOMPARE(capture.lines(), QStringList());
    QCOMPARE(widget.pos(), QPoint(70, 80));
    QCOMPARE(widget.size(), QSize(123, 45));
}

void TestTools::restoreSixteenPixelsLeft()
{
    QRect const available = QGuiApplication::primaryScreen()->availableGeometry();
    QPoint const pos(available.left() - 16, available.top() + 20);
    QWidget widget;
    widget.move(available.topLeft() + QPoint(100, 100));
    widget.resize(100, 100);

    DebugCapture capture;
    QVERIFY(Tools::restoreWidgetGeometry(&widget, record(pos, QSize(400, 300), false)));
    QCOMPARE(capture.lines(), QStringList());
    QCOMPARE(widget.pos(), pos);
    QCOMPARE(widget.size(), QSize(400, 300));
}

void TestTools::restoreSeventeenPixelsLeft()
{
    QRect const available = QGuiApplication::primaryScreen()->availableGeometry();
    QPoint const pos(available.left() - 17, available.top() + 20);
    QPoint const defaultPlace = available.topLeft() + QPoint(100, 100);
    QWidget widget;
    widget.move(defaultPlace);
    widget.resize(100, 100);

    DebugCapture capture;
    QVERIFY(Tools::restoreWidgetGeometry(&widget, record(pos, QSize(400, 300), false)));
    QCOMPARE(capture.lines(),
             QStringList(red(QString::asprintf("Restore 400x300%+d%+d: Not on any screen", pos.x(), pos.y()))));
    QCOMPARE(widget.pos(), defaultPlace);
    QCOMPARE(widget.size(), QSize(400, 300));
}

// The position is far beyond every attached screen, as after unplugging the monitor the window
// was last on.
static QPoint beyondEveryScreen()
{
    QRect all;
    for (QScreen const *screen : QGuiApplication::screens())
        all |= screen->geometry();
    return QPoint(all.right() + 3000, all.top() + 100);
}

void TestTools::restoreSecondMonitorGone()
{
    QRect const available = QGuiApplication::primaryScreen()->availableGeometry();
    QPoint const defaultPlace = available.topLeft() + QPoint(40, 30);
    QPoint const pos = beyondEveryScreen();
    QWidget widget;
    widget.move(defaultPlace);
    widget.resize(100, 100);

    DebugCapture capture;
    // The size still fits the remaining screen and is restored, so the call reports success.
    QVERIFY(Tools::restoreWidgetGeometry(&widget, record(pos, QSize(320, 240), false)));
    QCOMPARE(capture.lines(),
             QStringList(red(QString("Restore 320x240+%1+%2: Not on any screen").arg(pos.x()).arg(pos.y()))));
    QCOMPARE(widget.pos(), defaultPlace);
    QCOMPARE(widget.size(), QSize(320, 240));
}

void TestTools::restoreSecondMonitorGoneMaximized()
{
    QRect const available = QGuiApplication::primaryScreen()->availableGeometry();
    QPoint const defaultPlace = available.topLeft() + QPoint(40, 30);
    QPoint const pos = beyondEveryScreen();
    QWidget widget;
    widget.move(defaultPlace);
    widget.resize(100, 100);

    DebugCapture capture;
    QVERIFY(Tools::restoreWidgetGeometry(&widget, record(pos, QSize(320, 240), true)));
    QCOMPARE(capture.lines(),
             QStringList(red(QString("Restore 320x240+%1+%2: Not on any screen").arg(pos.x()).arg(pos.y()))));
    QCOMPARE(widget.pos(), defaultPlace);
    QVERIFY(widget.windowState() & Qt::WindowMaximized);
}

void TestTools::restoreCentered()
{
    // On the screen, but in the bottom strip the restored window must stay out of.
    QRect const available = QGuiApplication::primaryScreen()->availableGeometry();
    QRect const area = adjustedArea();
    QPoint const pos(available.left() + 10, available.bottom() - 20);
    QSize const size(300, 200);
    QPoint const centered(area.left() + (area.width() - 300) / 2, area.top() + (area.height() - 200) / 2);
    QWidget widget;
    widget.resize(100, 100);

    QString const saved = QString::asprintf("Restore 300x200%+d%+d", pos.x(), pos.y());
    QString const areaText = QString::asprintf("%dx%d%+d%+d", area.width(), area.height(), area.left(), area.top());

    DebugCapture capture;
    QVERIFY(Tools::restoreWidgetGeometry(&widget, record(pos, size, false)));
    QCOMPARE(capture.lines(), QStringList(red(saved + ": Does not fit " + areaText + ", trying centered")));
    QCOMPARE(widget.pos(), centered);
    QCOMPARE(widget.size(), size);
}

void TestTools::restoreDoesNotFit()
{
    // Wider than the screen by far: even the centred point lies left of the area.
    QRect const available = QGuiApplication::primaryScreen()->availableGeometry();
    QRect const area = adjustedArea();
    QPoint const pos(available.left() + 10, available.bottom() - 20);
    QSize const size(area.width() + 2000, 200);
    QPoint const centered(area.left() + (area.width() - size.width()) / 2, area.top() + (area.height() - 200) / 2);
    QPoint const defaultPlace = available.topLeft() + QPoint(40, 30);
    QWidget widget;
    widget.move(defaultPlace);
    widget.resize(100, 100);

    QString const saved = QString::asprintf("Restore %dx200%+d%+d", size.width(), pos.x(), pos.y());
    QString const areaText = QString::asprintf("%dx%d%+d%+d", area.width(), area.height(), area.left(), area.top());
    QString const centeredText
        = QString::asprintf("%dx%d%+d%+d", area.width(), area.height(), centered.x(), centered.y());

    DebugCapture capture;
    QVERIFY(Tools::restoreWidgetGeometry(&widget, record(pos, size, false)));
    QCOMPARE(capture.lines(),
             QStringList({ red(saved + ": Does not fit " + areaText + ", trying centered"),
                           red(saved + ": Does not fit " + centeredText) }));
    QCOMPARE(widget.pos(), defaultPlace);
    // The saved width is cut to the screen's; the debug lines still name the saved size.
    QCOMPARE(widget.size(), QSize(available.width(), 200));
    QVERIFY(!(widget.windowState() & Qt::WindowMaximized));
}

void TestTools::restoreDoesNotFitMaximized()
{
    QRect const available = QGuiApplication::primaryScreen()->availableGeometry();
    QRect const area = adjustedArea();
    QPoint const pos(available.left() + 10, available.bottom() - 20);
    QSize const size(area.width() + 2000, 200);
    QPoint const centered(area.left() + (area.width() - size.width()) / 2, area.top() + (area.height() - 200) / 2);
    QPoint const defaultPlace = available.topLeft() + QPoint(40, 30);
    QWidget widget;
    widget.move(defaultPlace);
    widget.resize(100, 100);

    QString const saved = QString::asprintf("Restore %dx200%+d%+d", size.width(), pos.x(), pos.y());
    QString const areaText = QString::asprintf("%dx%d%+d%+d", area.width(), area.height(), area.left(), area.top());
    QString const centeredText
        = QString::asprintf("%dx%d%+d%+d", area.width(), area.height(), centered.x(), centered.y());

    DebugCapture capture;
    QVERIFY(Tools::restoreWidgetGeometry(&widget, record(pos, size, true)));
    QCOMPARE(capture.lines(),
             QStringList({ red(saved + ": Does not fit " + areaText + ", trying centered"),
                           red(saved + ": Does not fit " + centeredText + ", maximizing anyway") }));
    QCOMPARE(widget.pos(), defaultPlace);
    QVERIFY(widget.windowState() & Qt::WindowMaximized);
}

void TestTools::roundTrip()
{
    QRect const available = QGuiApplication::primaryScreen()->availableGeometry();
    QWidget first;
    first.move(available.topLeft() + QPoint(25, 35));
    first.resize(250, 150);
    QWidget second;
    second.resize(10, 10);
    QVERIFY(Tools::restoreWidgetGeometry(&second, Tools::saveWidgetGeometry(&first)));
    QCOMPARE(second.pos(), available.topLeft() + QPoint(25, 35));
    QCOMPARE(second.size(), QSize(250, 150));
}

// Needs the three-screen configuration (tst_tools_threescreens).
static bool haveThreeScreens()
{
    QList<QScreen *> const screens = QGuiApplication::screens();
    return screens.size() == 3 && screens.at(1)->geometry() == QRect(800, 0, 640, 480)
        && screens.at(2)->geometry() == QRect(1440, 0, 40, 40);
}

void TestTools::restoreOnSecondScreen()
{
    if (!haveThreeScreens())
        QSKIP("needs the three-screen offscreen configuration");
    QWidget widget;
    widget.move(40, 30);
    widget.resize(100, 100);

    DebugCapture capture;
    QVERIFY(Tools::restoreWidgetGeometry(&widget, record(QPoint(900, 50), QSize(300, 200), false)));
    QCOMPARE(capture.lines(), QStringList());
    QCOMPARE(widget.pos(), QPoint(900, 50));
    QCOMPARE(widget.size(), QSize(300, 200));
}

void TestTools::restoreOnTinyScreen()
{
    if (!haveThreeScreens())
        QSKIP("needs the three-screen offscreen configuration");
    // The tiny screen's area with the slack is x 1424 to 1495 and, 50 pixels shorter than the
    // screen, empty: y 0 to -11, 72 wide and -10 high. The size is refused, the position does not
    // fit, nor does the centred point (1424 + (72 - 300) / 2, 0 + (-10 - 200) / 2) = (1310, -105).
    QWidget widget;
    widget.move(40, 30);
    widget.resize(100, 100);

    DebugCapture capture;
    // Nothing of the record could be used.
    QVERIFY(!Tools::restoreWidgetGeometry(&widget, record(QPoint(1450, 10), QSize(300, 200), false)));
    QCOMPARE(capture.lines(),
             QStringList({ red("Restore 300x200+1450+10: Too small"),
                           red("Restore 300x200+1450+10: Does not fit 72x-10+1424+0, trying centered"),
                           red("Restore 300x200+1450+10: Does not fit 72x-10+1310-105") }));
    QCOMPARE(widget.pos(), QPoint(40, 30));
    QCOMPARE(widget.size(), QSize(100, 100));
    QCOMPARE(widget.windowState(), Qt::WindowNoState);
}

// The primary screen: 800 x 800 is the offscreen platform's default, 800 x 600 the first of the
// three screens.
static QRect primaryArea()
{
    return haveThreeScreens() ? QRect(0, 0, 800, 600) : QRect(0, 0, 800, 800);
}

void TestTools::restoreHugeSize()
{
    // Applied as it is, 30000 x 30000 would need 3.5 GB for the window's pixels.
    QCOMPARE(QGuiApplication::primaryScreen()->availableGeometry(), primaryArea());
    QWidget widget;
    widget.move(40, 30);
    widget.resize(100, 100);

    DebugCapture capture;
    QVERIFY(Tools::restoreWidgetGeometry(&widget, record(QPoint(10, 20), QSize(30000, 30000), false)));
    QCOMPARE(capture.lines(), QStringList());
    QCOMPARE(widget.pos(), QPoint(10, 20));
    QCOMPARE(widget.size(), primaryArea().size());
}

void TestTools::restoreHugeSizeOnSecondScreen()
{
    if (!haveThreeScreens())
        QSKIP("needs the three-screen offscreen configuration");
    // Cut to the screen the window goes to, not to the primary one.
    QCOMPARE(QGuiApplication::screens().at(1)->availableGeometry(), QRect(800, 0, 640, 480));
    QWidget widget;
    widget.move(40, 30);
    widget.resize(100, 100);

    DebugCapture capture;
    QVERIFY(Tools::restoreWidgetGeometry(&widget, record(QPoint(900, 50), QSize(30000, 1000), false)));
    QCOMPARE(capture.lines(), QStringList());
    QCOMPARE(widget.pos(), QPoint(900, 50));
    QCOMPARE(widget.size(), QSize(640, 480));
}

void TestTools::restoreHugeSizeNotOnAnyScreen()
{
    // The position is refused, the window stays where it is, on the primary screen, and its
    // size is cut to that screen.
    QCOMPARE(QGuiApplication::primaryScreen()->availableGeometry(), primaryArea());
    QPoint const pos = beyondEveryScreen();
    QWidget widget;
    widget.move(40, 30);
    widget.resize(100, 100);

    DebugCapture capture;
    QVERIFY(Tools::restoreWidgetGeometry(&widget, record(pos, QSize(500, 30000), false)));
    QCOMPARE(capture.lines(),
             QStringList(red(QString("Restore 500x30000+%1+%2: Not on any screen").arg(pos.x()).arg(pos.y()))));
    QCOMPARE(widget.pos(), QPoint(40, 30));
    QCOMPARE(widget.size(), QSize(500, primaryArea().height()));
}

void TestTools::ensureDirectorySeparator_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("expected");
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("empty but not null") << QString("") << QString("");
    QTest::newRow("root") << "/"
                          << "/";
    QTest::newRow("without separator") << "/home/user"
                                       << "/home/user/";
    QTest::newRow("with separator") << "/home/user/"
                                    << "/home/user/";
    QTest::newRow("relative") << "dir"
                              << "dir/";
}

void TestTools::ensureDirectorySeparator()
{
    QFETCH(QString, path);
    QFETCH(QString, expected);
    QCOMPARE(Tools::ensureDirectorySeparator(path), expected);
}

void TestTools::documentsPath_data()
{
    QTest::addColumn<QByteArray>("home");
    QTest::addColumn<QString>("expected");
    QTest::newRow("plain home") << QByteArray("/home/tester") << "/home/tester/Documents";
    QTest::newRow("home with separator") << QByteArray("/home/tester/") << "/home/tester/Documents";
    QTest::newRow("root as home") << QByteArray("/") << "/Documents";
}

void TestTools::documentsPath()
{
    QFETCH(QByteArray, home);
    QFETCH(QString, expected);

    QString const actual = Tools::documentsPath();
    QVERIFY2(actual.endsWith("/Documents"), qPrintable(actual));
    QVERIFY2(actual.startsWith(QDir::homePath()), qPrintable(actual));

    QByteArray const previous = qgetenv("HOME");
    qputenv("HOME", home);
    QString const result = Tools::documentsPath();
    qputenv("HOME", previous);
    QCOMPARE(result, expected);
}

void TestTools::appDataPath()
{
    QByteArray const previous = qgetenv("HOME");
    qputenv("HOME", "/home/tester");
    QString const result = Tools::appDataPath();
    qputenv("HOME", previous);
    QCOMPARE(result, QString("/home/tester"));
    QCOMPARE(Tools::appDataPath(), QDir::homePath());
}

void TestTools::allFilesFilter()
{
    QCOMPARE(Tools::allFilesFilter(), QString("All Files (*)"));
}

void TestTools::systemErrorStringOfNumber_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("ENOENT") << ENOENT;
    QTest::newRow("EACCES") << EACCES;
    QTest::newRow("ENOSPC") << ENOSPC;
}

void TestTools::systemErrorStringOfNumber()
{
    QFETCH(int, number);
    QCOMPARE(Tools::systemErrorString(number), QString::fromLocal8Bit(std::strerror(number)));
}

void TestTools::systemErrorStringOfErrno()
{
    QString const expected = QString::fromLocal8Bit(std::strerror(EACCES));
    errno = EACCES;
    QString const actual = Tools::systemErrorString();
    QCOMPARE(actual, expected);
}

QTEST_MAIN(TestTools)
#include "tst_tools.moc"
