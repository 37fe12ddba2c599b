// Every definitions file in the canonical saved layout loads and saves back to the same bytes,
// and the saved text is well-formed XML for xmllint. Runs over the hand-written files under
// tests/data/io/roundtrip/ and over every example shipped in examples/.

#include "iotesthelpers.h"
#include "item.h"
#include "parser.h"
#include "writerxml.h"

#include <QtTest>

#include <QDir>
#include <QDirIterator>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <memory>

using namespace ZAT16;

class TestRoundTrip : public QObject
{
    Q_OBJECT

private slots:
    void handWrittenFilesPresent();
    void roundTrip_data();
    void roundTrip();
    void savedTextIsWellFormed_data();
    void savedTextIsWellFormed();

private:
    void fileRows();
};

static QStringList definitionFiles(const QString &folder)
{
    QStringList files;
    QDirIterator it(folder, { QStringLiteral("*.zatdef") }, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        files << it.next();
    files.sort();
    return files;
}

void TestRoundTrip::handWrittenFilesPresent()
{
    QVERIFY(definitionFiles(QStringLiteral(ZAT16_TEST_DATA "/io/roundtrip")).size() >= 5);
}

void TestRoundTrip::fileRows()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("handWritten");

    const QString data = QStringLiteral(ZAT16_TEST_DATA "/io/roundtrip");
    for (const QString &path : definitionFiles(data))
        QTest::newRow(qPrintable(QStringLiteral("roundtrip/") + QDir(data).relativeFilePath(path))) << path << true;
    // examples are picked up as they are added
    const QString examples = QStringLiteral(ZAT16_EXAMPLES);
    for (const QString &path : definitionFiles(examples))
        QTest::newRow(qPrintable(QStringLiteral("examples/") + QDir(examples).relativeFilePath(path))) << path << false;
}

void TestRoundTrip::roundTrip_data()
{
    fileRows();
}

void TestRoundTrip::roundTrip()
{
    QFETCH(QString, path);
    QFETCH(bool, handWritten);

    const QByteArray original = IoTest::readFile(path);
    QVERIFY(!original.isEmpty());

    Parser parser;
    QVERIFY2(parser.parse(path), qPrintable(parser.formatError()));
    if (handWritten)
        QCOMPARE(parser.warnings, QString());
    std::unique_ptr<Item> root(parser.takeRoot());
    QVERIFY(root);

    WriterXml writer;
    IOTEST_COMPARE_BYTES(writer.encode(root.get()), original);
}

void TestRoundTrip::savedTextIsWellFormed_data()
{
    fileRows();
}

void TestRoundTrip::savedTextIsWellFormed()
{
    QFETCH(QString, path);

    const QString xmllint = QStandardPaths::findExecutable(QStringLiteral("xmllint"));
    if (xmllint.isEmpty())
        QSKIP("xmllint is not installed");

    Parser parser;
    QVERIFY2(parser.parse(path), qPrintable(parser.formatError()));
    std::unique_ptr<Item> root(parser.takeRoot());
    WriterXml writer;
    const QByteArray saved = writer.encode(root.get());
    QVERIFY(!saved.isEmpty());

    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString savedPath = dir.filePath(QStringLiteral("saved.zatdef"));
    QVERIFY(IoTest::writeFile(savedPath, saved));

    QProcess lint;
    lint.start(xmllint, { QStringLiteral("--noout"), savedPath });
    QVERIFY(lint.waitForFinished(30000));
    const QString messages = QString::fromUtf8(lint.readAllStandardError() + lint.readAllStandardOutput());
    QVERIFY2(lint.exitStatus() == QProcess::NormalExit && lint.exitCode() == 0, qPrintable(messages));
    QCOMPARE(messages, QString());
}

QTEST_GUILESS_MAIN(TestRoundTrip)

#include "tst_roundtrip.moc"
