#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <QtTest>

// The 32 x 32 versions of the icons, as a screen with a device pixel ratio of 2 shows them. This test
// runs its application at a scale factor of 2 (see main()), so QIcon behaves as it does for the editor
// on such a screen.

namespace {

const QString iconFolder = QStringLiteral(":/icons/");

// The 16 pixel icons in the resource, by file name, without their "@2x" versions.
QStringList plainIconNames()
{
    QStringList names;
    const QStringList all = QDir(iconFolder).entryList(QDir::Files | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString &name : all) {
        if (!name.contains(QLatin1Char('@')))
            names.append(name);
    }
    return names;
}

QString twoTimesName(const QString &name)
{
    QString result = name;
    return result.insert(result.lastIndexOf(QLatin1Char('.')), QStringLiteral("@2x"));
}

// A picture as the icon engine hands it out: premultiplied, then back to plain ARGB32.
QImage asPixmapImage(const QImage &image)
{
    return image.convertToFormat(QImage::Format_ARGB32_Premultiplied).convertToFormat(QImage::Format_ARGB32);
}

} // namespace

class TestIcons2x : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everyIconHasOne();
    void twoTimesFile_data();
    void twoTimesFile();
    void iconUsesIt_data();
    void iconUsesIt();
    void formIconsetUsesIt_data();
    void formIconsetUsesIt();
};

void TestIcons2x::initTestCase()
{
    QCOMPARE(qApp->devicePixelRatio(), 2.0);
}

// Every icon has its 32 pixel version, and there is no other file.
void TestIcons2x::everyIconHasOne()
{
    const QStringList names = plainIconNames();
    QCOMPARE(names.size(), 44);
    QStringList expected;
    for (const QString &name : names)
        expected << name << twoTimesName(name);
    expected.sort();
    QCOMPARE(QDir(iconFolder).entryList(QDir::Files | QDir::NoDotAndDotDot, QDir::Name), expected);
}

void TestIcons2x::twoTimesFile_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : plainIconNames())
        QTest::newRow(qPrintable(name)) << name;
}

// The file is 32 x 32 and drawn for that size: it is not the 16 pixel picture with every pixel
// doubled. Only two are: the empty icon, transparent at both sizes, and the rectangle, which has
// neither a curve nor a diagonal, so that its edges lie on the grid at both sizes.
void TestIcons2x::twoTimesFile()
{
    QFETCH(QString, name);
    const QImage small = QImage(iconFolder + name).convertToFormat(QImage::Format_ARGB32);
    QImage large = QImage(iconFolder + twoTimesName(name)).convertToFormat(QImage::Format_ARGB32);
    QVERIFY(!large.isNull());
    large.setDevicePixelRatio(1); // as read from an "@2x" file it says 2
    QCOMPARE(large.size(), QSize(32, 32));
    QVERIFY(large.hasAlphaChannel());
    const QImage doubled = small.scaled(32, 32, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    if (name == QLatin1String("i16_empty.png") || name == QLatin1String("i16_rect.png"))
        QCOMPARE(large, doubled);
    else
        QVERIFY2(large != doubled, qPrintable(name));
}

void TestIcons2x::iconUsesIt_data()
{
    twoTimesFile_data();
}

// A QIcon made from the 16 pixel file, as the tree and the actions make theirs, gives a 32 x 32
// pixmap at a device pixel ratio of 2 that is the picture of the @2x file, not an enlargement.
void TestIcons2x::iconUsesIt()
{
    QFETCH(QString, name);
    const QIcon icon(iconFolder + name);
    QVERIFY(!icon.isNull());
    const QPixmap pixmap = icon.pixmap(QSize(16, 16), 2.0);
    QCOMPARE(pixmap.size(), QSize(32, 32));
    QCOMPARE(pixmap.devicePixelRatio(), 2.0);
    QCOMPARE(pixmap.deviceIndependentSize(), QSizeF(16, 16));
    QCOMPARE(pixmap.toImage().convertToFormat(QImage::Format_ARGB32),
             asPixmapImage(QImage(iconFolder + twoTimesName(name))));
    // without a device pixel ratio, the application's is used
    QCOMPARE(icon.pixmap(QSize(16, 16)).size(), QSize(32, 32));
}

void TestIcons2x::formIconsetUsesIt_data()
{
    twoTimesFile_data();
}

// The forms' iconsets become QIcon::addFile calls in the generated code; they get the file too.
void TestIcons2x::formIconsetUsesIt()
{
    QFETCH(QString, name);
    QIcon icon;
    icon.addFile(iconFolder + name, QSize(), QIcon::Normal, QIcon::Off);
    const QPixmap pixmap = icon.pixmap(QSize(16, 16), 2.0);
    QCOMPARE(pixmap.size(), QSize(32, 32));
    QCOMPARE(pixmap.toImage().convertToFormat(QImage::Format_ARGB32),
             asPixmapImage(QImage(iconFolder + twoTimesName(name))));
}

int main(int argc, char **argv)
{
    // The offscreen screen then has a device pixel ratio of 2, as a high-density screen has.
    qputenv("QT_SCALE_FACTOR", "2");
    QGuiApplication app(argc, argv);
    TestIcons2x test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_icons2x.moc"
