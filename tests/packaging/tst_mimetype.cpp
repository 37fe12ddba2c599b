// The type of definitions files installed by packaging_install, as Qt's file dialogs and desktop
// components see it: the installed share/ folder is put first in XDG_DATA_DIRS, where Qt reads
// the uncompiled package file.

#include <QMimeDatabase>
#include <QMimeType>
#include <QTest>

class TestMimeType : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void type();
    void byName_data();
    void byName();
    void exampleFile();
};

static const QString definitionsType = QStringLiteral("application/x-zat16-definitions");

void TestMimeType::initTestCase()
{
    const QString packageFile = QStringLiteral(ZAT16_PREFIX "/share/mime/packages/zatedit.xml");
    QVERIFY2(QFile::exists(packageFile), qPrintable(packageFile + QStringLiteral(" is not installed")));
    // Before the first QMimeDatabase, which reads the folders once.
    QByteArray dirs = ZAT16_PREFIX "/share";
    const QByteArray system = qgetenv("XDG_DATA_DIRS");
    dirs += ':' + (system.isEmpty() ? QByteArray("/usr/local/share:/usr/share") : system);
    qputenv("XDG_DATA_DIRS", dirs);
}

void TestMimeType::type()
{
    const QMimeType mime = QMimeDatabase().mimeTypeForName(definitionsType);
    QVERIFY(mime.isValid());
    QCOMPARE(mime.comment(), QStringLiteral("ZAT16 tag definitions"));
    QCOMPARE(mime.globPatterns(), QStringList { QStringLiteral("*.zatdef") });
    QCOMPARE(mime.suffixes(), QStringList { QStringLiteral("zatdef") });
    QCOMPARE(mime.parentMimeTypes(), QStringList { QStringLiteral("application/xml") });
    QVERIFY(mime.inherits(QStringLiteral("text/plain")));
    QCOMPARE(mime.genericIconName(), QStringLiteral("text-x-generic"));
}

void TestMimeType::byName_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("expected");
    QTest::newRow("definitions file") << QStringLiteral("charger.zatdef") << definitionsType;
    QTest::newRow("extension in capitals") << QStringLiteral("CHARGER.ZATDEF") << definitionsType;
    QTest::newRow("backup of a definitions file")
        << QStringLiteral("charger.zatdef.bak") << QStringLiteral("application/x-trash");
    QTest::newRow("plain XML file") << QStringLiteral("charger.xml") << QStringLiteral("application/xml");
}

void TestMimeType::byName()
{
    QFETCH(QString, fileName);
    QFETCH(QString, expected);
    QCOMPARE(QMimeDatabase().mimeTypeForFile(fileName, QMimeDatabase::MatchExtension).name(), expected);
}

void TestMimeType::exampleFile()
{
    const QString path = QStringLiteral(ZAT16_EXAMPLES "/battery-charger.zatdef");
    QCOMPARE(QMimeDatabase().mimeTypeForFile(path).name(), definitionsType);
}

QTEST_GUILESS_MAIN(TestMimeType)
#include "tst_mimetype.moc"
