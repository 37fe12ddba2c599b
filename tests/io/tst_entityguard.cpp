// Tests of the entity guard on its own: "<!ENTITY" and "<!ATTLIST" in every encoding it looks
// for, wherever the reads cut the input, stop the input before the declaration is complete; near
// misses pass. A start tag with more than 256 attributes stops it too, counted on the characters of
// the input's encoding wherever the reads cut it; an '=' anywhere but between attributes does not
// count.

#include "entityguard.h"

#include <QtTest>

#include <QBuffer>
#include <QStringEncoder>

namespace {

QByteArray encoded(const QByteArray &text, int unitSize, bool bigEndian)
{
    QByteArray bytes;
    for (char c : text) {
        QByteArray unit(unitSize, '\0');
        unit[bigEndian ? unitSize - 1 : 0] = c;
        bytes += unit;
    }
    return bytes;
}

// `text` in UTF-8, or in UTF-16 or UTF-32 with the given byte order.
QByteArray encodedText(const QString &text, int unitSize, bool bigEndian)
{
    if (unitSize == 1)
        return text.toUtf8();
    const QStringConverter::Encoding encoding = unitSize == 2
        ? (bigEndian ? QStringConverter::Utf16BE : QStringConverter::Utf16LE)
        : (bigEndian ? QStringConverter::Utf32BE : QStringConverter::Utf32LE);
    return QStringEncoder(encoding)(text);
}

struct ReadResult {
    QByteArray delivered;
    bool tripped = false;
    QString message;
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
    result.message = guard.refusalMessage();
    return result;
}

// The sizes the reads cut the inputs into: every small size, and sizes around the longest pattern.
const int chunks[] = { 1, 2, 3, 4, 5, 6, 7, 8, 9, 16, 31, 32, 33, 35, 36, 37, 63, 64, 65, 4096 };

const QString tooManyAttributes = QStringLiteral("Elements with more than 256 attributes are not supported");

// A start tag with `count` attributes: names a0, a1, ... and values "" each.
QString plainTag(int count)
{
    QString tag = QStringLiteral("<x");
    for (int i = 0; i < count; ++i)
        tag += QStringLiteral(" a%1=\"\"").arg(i);
    return tag + QStringLiteral("/>");
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
    void attributesCounted_data();
    void attributesCounted();
    void lessThanStartsAnotherTag_data();
    void lessThanStartsAnotherTag();
    void firstRefusalCounts_data();
    void firstRefusalCounts();
};

void TestEntityGuard::declarationAnywhere_data()
{
    QTest::addColumn<QByteArray>("declaration");
    QTest::addColumn<QByteArray>("cutShort");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("unitSize");
    QTest::addColumn<bool>("bigEndian");
    const struct {
        const char *name;
        int unitSize;
        bool bigEndian;
    } encodings[] = { { "8-bit", 1, false },
                      { "UTF-16LE", 2, false },
                      { "UTF-16BE", 2, true },
                      { "UTF-32LE", 4, false },
                      { "UTF-32BE", 4, true } };
    for (const auto &encoding : encodings) {
        QTest::addRow("entity, %s", encoding.name)
            << QByteArray("<!ENTITY") << QByteArray("<!ENTIT")
            << QStringLiteral("Entity declarations are not supported") << encoding.unitSize << encoding.bigEndian;
    }
    for (const auto &encoding : encodings) {
        QTest::addRow("attribute list, %s", encoding.name)
            << QByteArray("<!ATTLIST") << QByteArray("<!ATTLIS")
            << QStringLiteral("Attribute-list declarations are not supported") << encoding.unitSize
            << encoding.bigEndian;
    }
}

void TestEntityGuard::declarationAnywhere()
{
    QFETCH(QByteArray, declaration);
    QFETCH(QByteArray, cutShort);
    QFETCH(QString, message);
    QFETCH(int, unitSize);
    QFETCH(bool, bigEndian);

    const QByteArray pattern = encoded(declaration, unitSize, bigEndian);
    // Markup before it, with '<' bytes of its own, so that the search meets false starts.
    const QByteArray before = encoded("<a><!-- " + cutShort + " --><b/>", unitSize, bigEndian);
    for (int chunk : chunks) {
        for (int offset = 0; offset < 80; ++offset) {
            const QByteArray input
                = QByteArray(offset, ' ') + before + pattern + encoded(" a \"b\">", unitSize, bigEndian);
            const ReadResult result = readThrough(input, chunk);
            const QByteArray where = QByteArray::number(chunk) + "/" + QByteArray::number(offset);
            QVERIFY2(result.tripped, where.constData());
            QCOMPARE(result.message, message);
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
    QTest::newRow("attribute list in lower case") << QByteArray("<!DOCTYPE a [<!attlist a b CDATA \"c\">]><a/>");
    QTest::newRow("attribute list cut short") << QByteArray("<a><!-- <!ATTLIS --></a><!ATTLIS");
    QTest::newRow("attribute list with a blank inside") << QByteArray("<a><! ATTLIST</a>");
    QTest::newRow("UTF-32BE attribute list with a wrong byte")
        << QByteArray("\0\0\0<\0\0\0!\0\0\0A\0\0\0T\0\0\0T\0\0\0L\0\0\0I\0\0\0S\0\0\1T", 36);
}

void TestEntityGuard::nearMissesPass()
{
    QFETCH(QByteArray, input);
    for (int chunk : { 1, 3, 8, 31, 32, 33, 4096 }) {
        const ReadResult result = readThrough(input, chunk);
        QVERIFY(!result.tripped);
        QCOMPARE(result.message, QString());
        QCOMPARE(result.delivered, input);
    }
}

void TestEntityGuard::attributesCounted_data()
{
    QTest::addColumn<int>("unitSize");
    QTest::addColumn<bool>("bigEndian");
    QTest::addColumn<bool>("byteOrderMark");
    QTest::newRow("8-bit") << 1 << false << false;
    QTest::newRow("UTF-8 with a byte order mark") << 1 << false << true;
    QTest::newRow("UTF-16LE") << 2 << false << false;
    QTest::newRow("UTF-16BE") << 2 << true << false;
    QTest::newRow("UTF-16LE with a byte order mark") << 2 << false << true;
    QTest::newRow("UTF-16BE with a byte order mark") << 2 << true << true;
    QTest::newRow("UTF-32LE") << 4 << false << false;
    QTest::newRow("UTF-32BE") << 4 << true << false;
    QTest::newRow("UTF-32LE with a byte order mark") << 4 << false << true;
    QTest::newRow("UTF-32BE with a byte order mark") << 4 << true << true;
}

// 256 attributes pass and the 257th stops the input, after markup in which '=' does not count:
// the XML declaration, a document type declaration whose literals, comments and processing
// instructions hold quotes, brackets and '>', text, comments, CDATA sections, processing
// instructions and attribute values. Each of them holds "<x" and 300 '=' after what would end it
// if it were read wrongly. The names of the counted attributes start with U+3D3D and their values
// hold U+3C22: in UTF-16 and UTF-32 the code units of those hold the bytes of '=', '<' and '"',
// which are no such characters there.
void TestEntityGuard::attributesCounted()
{
    QFETCH(int, unitSize);
    QFETCH(bool, bigEndian);
    QFETCH(bool, byteOrderMark);

    const QString equals(300, QLatin1Char('='));
    const QString before = QStringLiteral("<?xml version=\"1.0\" standalone=\"yes\"?>\n"
                                          "<!DOCTYPE zat16 SYSTEM \"> <x %1>\" [\n"
                                          "  <!ELEMENT zat16 ANY>\n"
                                          "  <!NOTATION n SYSTEM '> <x %1>'>\n"
                                          "  <!NOTATION m SYSTEM \"]> <x %1>\">\n"
                                          "  <!-- ]> ' \" <x %1> -->\n"
                                          "  <?pi ]> ' \" <x %1> ?>\n"
                                          "]>\n"
                                          "<zat16 a=\"=>'\" b='=\">'>\n"
                                          "  %1 > ' \"\n"
                                          "  <!-- - -> <x %1> -->\n"
                                          "  <![CDATA[ ] ]> <x %1> ]]>\n"
                                          "  <?pi > ? <x %1> ?>\n"
                                          "  <u v=\"%1\" w='%1'>=</u>\n")
                               .arg(equals);
    for (int count : { 256, 257 }) {
        QString tag = QStringLiteral("<x");
        for (int i = 0; i < count; ++i) {
            tag += i % 2 == 0 ? QStringLiteral(" \u3D3Da%1=\"='>\u3C22\"").arg(i)
                              : QStringLiteral(" \u3D3Da%1='=\">\u3C22'").arg(i);
        }
        tag += QStringLiteral("/>");
        const QString text = before + tag + QStringLiteral("\n</zat16>\n");
        const QByteArray bom
            = byteOrderMark ? encodedText(QStringLiteral("\uFEFF"), unitSize, bigEndian) : QByteArray();
        const QByteArray input = bom + encodedText(text, unitSize, bigEndian);
        // Where the '=' of the 257th attribute begins.
        const int cut = bom.size()
            + encodedText(text.left(text.indexOf(QStringLiteral("a256=")) + 4), unitSize, bigEndian).size();
        for (int chunk : chunks) {
            const ReadResult result = readThrough(input, chunk);
            const QByteArray where = QByteArray::number(count) + " attributes, reads of " + QByteArray::number(chunk);
            if (count == 256) {
                QVERIFY2(!result.tripped, where.constData());
                QVERIFY2(result.delivered == input, where.constData());
            } else {
                QVERIFY2(result.tripped, where.constData());
                QCOMPARE(result.message, tooManyAttributes);
                // Every read before the one that completes that '=' came through.
                QVERIFY2(input.startsWith(result.delivered), where.constData());
                QCOMPARE(result.delivered.size(), (cut + unitSize - 1) / chunk * chunk);
            }
        }
    }
}

void TestEntityGuard::lessThanStartsAnotherTag_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<bool>("tripped");
    // A '<' cannot be part of a start tag: it begins another one, which counts on its own.
    const QString open = plainTag(200).chopped(2);
    QTest::newRow("between attributes") << open + QLatin1Char(' ') + plainTag(200) << false;
    QTest::newRow("in a value") << open + QStringLiteral(" v=\"") + plainTag(200) << false;
    QTest::newRow("in a single-quoted value") << open + QStringLiteral(" v='") + plainTag(200) << false;
    QTest::newRow("the other tag has too many") << open + QLatin1Char(' ') + plainTag(257) << true;
    QTest::newRow("in an end tag") << QStringLiteral("</y ") + plainTag(257) << true;
    QTest::newRow("after an unknown declaration") << QStringLiteral("<!y ") + plainTag(257) << true;
    QTest::newRow("the other tag in a value has too many") << open + QStringLiteral(" v=\"") + plainTag(257) << true;
}

void TestEntityGuard::lessThanStartsAnotherTag()
{
    QFETCH(QString, input);
    QFETCH(bool, tripped);
    const QByteArray bytes = input.toUtf8();
    for (int chunk : chunks) {
        const ReadResult result = readThrough(bytes, chunk);
        QCOMPARE(result.tripped, tripped);
        if (tripped)
            QCOMPARE(result.message, tooManyAttributes);
        else
            QCOMPARE(result.delivered, bytes);
    }
}

void TestEntityGuard::firstRefusalCounts_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("message");
    const QString entity = QStringLiteral("Entity declarations are not supported");
    const QString attributeList = QStringLiteral("Attribute-list declarations are not supported");
    QTest::newRow("entity before attribute list")
        << QStringLiteral("<!DOCTYPE a [<!ENTITY x \"y\"><!ATTLIST a b CDATA \"c\">]><a/>") << entity;
    QTest::newRow("attribute list before entity")
        << QStringLiteral("<!DOCTYPE a [<!ATTLIST a b CDATA \"c\"><!ENTITY x \"y\">]><a/>") << attributeList;
    QTest::newRow("entity before attributes")
        << QStringLiteral("<!DOCTYPE a [<!ENTITY x \"y\">]>") + plainTag(257) << entity;
    QTest::newRow("attribute list before attributes")
        << QStringLiteral("<!DOCTYPE a [<!ATTLIST a b CDATA \"c\">]>") + plainTag(257) << attributeList;
    QTest::newRow("attributes before entity")
        << plainTag(257) + QStringLiteral("<!DOCTYPE a [<!ENTITY x \"y\">]>") << tooManyAttributes;
    QTest::newRow("attributes before attribute list")
        << plainTag(257) + QStringLiteral("<!DOCTYPE a [<!ATTLIST a b CDATA \"c\">]>") << tooManyAttributes;
}

// The message names the refusal met first in the input, also when one read holds several.
void TestEntityGuard::firstRefusalCounts()
{
    QFETCH(QString, input);
    QFETCH(QString, message);
    for (int unitSize : { 1, 2, 4 }) {
        for (bool bigEndian : { false, true }) {
            if (unitSize == 1 && bigEndian)
                continue;
            const QByteArray bytes = encodedText(input, unitSize, bigEndian);
            for (int chunk : chunks) {
                const ReadResult result = readThrough(bytes, chunk);
                const QByteArray where = QByteArray::number(unitSize) + (bigEndian ? " BE" : " LE") + ", reads of "
                    + QByteArray::number(chunk);
                QVERIFY2(result.tripped, where.constData());
                QVERIFY2(result.message == message, where.constData());
            }
        }
    }
}

QTEST_GUILESS_MAIN(TestEntityGuard)

#include "tst_entityguard.moc"
