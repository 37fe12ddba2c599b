// Tests of the entity guard on its own: "<!ENTITY" in every encoding it looks for, wherever the
// reads cut the input, stops the input before the declaration is complete; near misses pass.

#include "entityguard.h"

#include <QtTest>

#include <QBuffer>

namespace {

QByteArray encoded(const char *text, int unitSize, bool bigEndian)
{
    QByteArray bytes;
    for (const char *c = text; *c; ++c) {
        QByteArray unit(unitSize, '\0');
        unit[bigEndian ? unitSize - 1 : 0] = *c;
        bytes += unit;
    }
    return bytes;
}

struct ReadResult {
    QByteArray delivered;
    bool tripped = false;
};

// Reads everything through a guard in reads of `chunk` bytes.
ReadResult readThrough(const QByteArray &input, int chunk)
{
    QBuffer source;
    source.setData(input);
    source.open(QIODevice::ReadOnly);
    EntityGuard guard(&source);
    ReadResult result;
    QByteArray buffer(chunk, '\0');
    for (;;) {
        const qint64 n = guard.read(buffer.data(), chunk);
        if (n <= 0)
            break;
        result.delivered += buffer.left(n);
    }
    result.tripped = guard.tripped();
    return result;
}

} // namespace

class TestEntityGuard : public QObject
{
    Q_OBJECT

private slots:
    void declarationAnywhere_data();
    void declarationAnywhere();
    void nearMissesPass_data();
    void nearMissesPass();
};

void TestEntityGuard::declarationAnywhere_data()
{
    QTest::addColumn<int>("unitSize");
    QTest::addColumn<bool>("bigEndian");
    QTest::newRow("8-bit") << 1 << false;
    QTest::newRow("UTF-16LE") << 2 << false;
    QTest::newRow("UTF-16BE") << 2 << true;
    QTest::newRow("UTF-32LE") << 4 << false;
    QTest::newRow("UTF-32BE") << 4 << true;
}

void TestEntityGuard::declarationAnywhere()
{
    QFETCH(int, unitSize);
    QFETCH(bool, bigEndian);

    const QByteArray pattern = encoded("<!ENTITY", unitSize, bigEndian);
    // Markup before it, with '<' bytes of its own, so that the search meets false starts.
    const QByteArray before = encoded("<a><!-- <!ENTIT --><b/>", unitSize, bigEndian);
    for (int chunk : { 1, 2, 3, 5, 7, 8, 16, 31, 32, 33, 63, 64, 65, 4096 }) {
        for (int offset = 0; offset < 80; ++offset) {
            const QByteArray input = QByteArray(offset, ' ') + before + pattern + encoded(" a \"b\">", unitSize, bigEndian);
            const ReadResult result = readThrough(input, chunk);
            const QByteArray where = QByteArray::number(chunk) + "/" + QByteArray::number(offset);
            QVERIFY2(result.tripped, where.constData());
            // What came through is the start of the input, short of the whole declaration.
            QVERIFY2(input.startsWith(result.delivered), where.constData());
            QVERIFY2(result.delivered.size() < offset + before.size() + pattern.size(), where.constData());
        }
    }
}

void TestEntityGuard::nearMissesPass_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::newRow("lower case") << QByteArray("<?xml version=\"1.0\"?><!DOCTYPE a [<!entity x \"y\">]><a/>");
    QTest::newRow("cut short") << QByteArray("<a><!-- <!ENTIT --></a><!ENTIT");
    QTest::newRow("blank inside") << QByteArray("<a>< !ENTITY</a>");
    QTest::newRow("element") << QByteArray("<a><!ELEMENT a ANY></a>");
    QTest::newRow("UTF-16LE with a wrong byte") << QByteArray("<\0!\0E\0N\0T\0I\0T\0X\0", 16);
}

void TestEntityGuard::nearMissesPass()
{
    QFETCH(QByteArray, input);
    for (int chunk : { 1, 3, 8, 31, 32, 33, 4096 }) {
        const ReadResult result = readThrough(input, chunk);
        QVERIFY(!result.tripped);
        QCOMPARE(result.delivered, input);
    }
}

QTEST_GUILESS_MAIN(TestEntityGuard)

#include "tst_entityguard.moc"
