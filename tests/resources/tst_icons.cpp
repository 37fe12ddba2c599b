#include "iconloader.h"

#include <QDir>
#include <QFile>
#include <QIcon>
#include <QImage>
#include <QtTest>

namespace {

// Every icon the editor uses: data types and item kinds in the tree, the tag type selector, and the
// actions of the main window, with those for finding, problems, expanding and moving.
const char *const iconPaths[] = {
    ":/icons/i16_add.png",         ":/icons/i16_answer.png",       ":/icons/i16_bomb.png",
    ":/icons/i16_bool.png",        ":/icons/i16_copy.png",         ":/icons/i16_cut.png",
    ":/icons/i16_data.png",        ":/icons/i16_date.png",         ":/icons/i16_datetime.png",
    ":/icons/i16_empty.png",       ":/icons/i16_exit.png",         ":/icons/i16_folder.png",
    ":/icons/i16_folder_open.png", ":/icons/i16_font.png",         ":/icons/i16_header.png",
    ":/icons/i16_int.png",         ":/icons/i16_list.png",         ":/icons/i16_list_bullets.png",
    ":/icons/i16_lua.png",         ":/icons/i16_message.png",      ":/icons/i16_network.png",
    ":/icons/i16_paste.png",       ":/icons/i16_point.png",        ":/icons/i16_question.png",
    ":/icons/i16_rect.png",        ":/icons/i16_redo.png",         ":/icons/i16_remove.png",
    ":/icons/i16_save.png",        ":/icons/i16_save_as.png",      ":/icons/i16_size.png",
    ":/icons/i16_string.png",      ":/icons/i16_table_edit.png",   ":/icons/i16_time.png",
    ":/icons/i16_tiny_bullet.png", ":/icons/i16_undo.png",         ":/icons/i16_undo_history.png",
    ":/icons/i16_find.png",        ":/icons/i16_next_problem.png", ":/icons/i16_previous_problem.png",
    ":/icons/i16_expand_all.png",  ":/icons/i16_collapse_all.png", ":/icons/i16_move_up.png",
    ":/icons/i16_move_down.png",   ":/icons/i16_edit.png",
};

const char emptyIcon[] = ":/icons/i16_empty.png";

QImage loadImage(const QString &path)
{
    return QImage(path).convertToFormat(QImage::Format_ARGB32);
}

int countPixels(const QImage &image, int minAlpha, int maxAlpha)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const int alpha = qAlpha(image.pixel(x, y));
            if (alpha >= minAlpha && alpha <= maxAlpha)
                ++count;
        }
    }
    return count;
}

} // namespace

class TestIcons : public QObject
{
    Q_OBJECT

private slots:
    void registeredAtStartUp();
    void loadsAsImage_data();
    void loadsAsImage();
    void loadsAsIcon_data();
    void loadsAsIcon();
    void emptyIsFullyTransparent();
    void drawnOnTransparency_data();
    void drawnOnTransparency();
    void allDifferent();
    void noOtherFiles();
    void applicationIcon_data();
    void applicationIcon();
    void resourceName();
};

// Linking is enough: nothing in this test has registered the resource before this function runs.
void TestIcons::registeredAtStartUp()
{
    QVERIFY(QFile::exists(QStringLiteral(":/icons/i16_table_edit.png")));
    QVERIFY(QDir(QStringLiteral(":/icons")).exists());
}

void TestIcons::loadsAsImage_data()
{
    QTest::addColumn<QString>("path");
    for (const char *path : iconPaths)
        QTest::newRow(path) << QString::fromLatin1(path);
}

void TestIcons::loadsAsImage()
{
    QFETCH(QString, path);
    QVERIFY2(QFile::exists(path), qPrintable(path));
    const QImage image(path);
    QVERIFY(!image.isNull());
    QCOMPARE(image.size(), QSize(16, 16));
    QVERIFY(image.hasAlphaChannel());
}

void TestIcons::loadsAsIcon_data()
{
    loadsAsImage_data();
}

void TestIcons::loadsAsIcon()
{
    QFETCH(QString, path);
    const QIcon icon(path);
    QVERIFY(!icon.isNull());
    QVERIFY(icon.availableSizes().contains(QSize(16, 16)));
    const QImage image = loadIcon16(path);
    QVERIFY(!image.isNull());
    QCOMPARE(image.size(), QSize(16, 16));
    // the icon engine hands out the picture unchanged at its own size (pixmaps are premultiplied)
    const QImage expected
        = loadImage(path).convertToFormat(QImage::Format_ARGB32_Premultiplied).convertToFormat(QImage::Format_ARGB32);
    QCOMPARE(image, expected);
}

void TestIcons::emptyIsFullyTransparent()
{
    const QImage image = loadImage(QString::fromLatin1(emptyIcon));
    QVERIFY(!image.isNull());
    QCOMPARE(countPixels(image, 1, 255), 0);
    QCOMPARE(countPixels(image, 0, 0), 16 * 16);
}

void TestIcons::drawnOnTransparency_data()
{
    QTest::addColumn<QString>("path");
    for (const char *path : iconPaths) {
        if (qstrcmp(path, emptyIcon) != 0)
            QTest::newRow(path) << QString::fromLatin1(path);
    }
}

// Every other icon shows a picture (a fair number of opaque pixels) and leaves some of its square
// transparent, so that it sits on any background.
void TestIcons::drawnOnTransparency()
{
    QFETCH(QString, path);
    const QImage image = loadImage(path);
    QVERIFY(!image.isNull());
    QVERIFY2(countPixels(image, 192, 255) >= 20, qPrintable(path));
    QVERIFY2(countPixels(image, 0, 0) >= 1, qPrintable(path));
}

void TestIcons::allDifferent()
{
    QList<QString> paths;
    QList<QImage> images;
    for (const char *path : iconPaths) {
        if (qstrcmp(path, emptyIcon) == 0)
            continue;
        paths.append(QString::fromLatin1(path));
        images.append(loadImage(paths.last()));
        QVERIFY(!images.last().isNull());
    }
    QCOMPARE(images.size(), 43);
    QStringList equalPairs;
    for (int i = 0; i < images.size(); ++i) {
        for (int j = i + 1; j < images.size(); ++j) {
            if (images[i] == images[j])
                equalPairs.append(paths[i] + QStringLiteral(" = ") + paths[j]);
        }
    }
    QVERIFY2(equalPairs.isEmpty(), qPrintable(QStringLiteral("identical: ") + equalPairs.join(QStringLiteral(", "))));
}

// The resource holds exactly the icons above and their 32 pixel versions (tst_icons2x), nothing else.
void TestIcons::noOtherFiles()
{
    QStringList expected;
    for (const char *path : iconPaths) {
        const QString name = QString::fromLatin1(path).mid(QStringLiteral(":/icons/").size());
        expected.append(name);
        expected.append(QString(name).replace(QStringLiteral(".png"), QStringLiteral("@2x.png")));
    }
    expected.sort();
    QCOMPARE(expected.size(), 88);
    QStringList actual = QDir(QStringLiteral(":/icons")).entryList(QDir::Files | QDir::NoDotAndDotDot, QDir::Name);
    QCOMPARE(actual, expected);
}

void TestIcons::applicationIcon_data()
{
    QTest::addColumn<int>("size");
    for (int size : { 16, 32, 48, 64, 128, 256 })
        QTest::newRow(qPrintable(QStringLiteral("%1x%1").arg(size))) << size;
}

void TestIcons::applicationIcon()
{
    QFETCH(int, size);
    const QString path = QStringLiteral(ZAT16_HICOLOR "/%1x%1/apps/zatedit.png").arg(size);
    const QImage image = loadImage(path);
    QVERIFY2(!image.isNull(), qPrintable(path));
    QCOMPARE(image.size(), QSize(size, size));
    QVERIFY(image.hasAlphaChannel());
    QVERIFY(countPixels(image, 0, 0) >= 1);
    QVERIFY(countPixels(image, 192, 255) >= size * size / 4);
}

// The icons belong to the resource file named "zatedit": unregistering it by that name removes
// them, registering it again brings them back.
void TestIcons::resourceName()
{
    const QString path = QStringLiteral(":/icons/i16_message.png");
    QVERIFY(QFile::exists(path));
    Q_CLEANUP_RESOURCE(zatedit);
    QVERIFY(!QFile::exists(path));
    Q_INIT_RESOURCE(zatedit);
    QVERIFY(QFile::exists(path));
    QVERIFY(!QImage(path).isNull());
}

QTEST_MAIN(TestIcons)
#include "tst_icons.moc"
