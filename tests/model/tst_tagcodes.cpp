// Tests of the tag code helpers: splitting and building codes, type names, hexadecimal codes,
// number formatting in the display modes and the identifier check.

#include "tagcodes.h"

#include <QRandomGenerator>
#include <QtTest>

using namespace ZAT16;

class TestTagCodes : public QObject
{
    Q_OBJECT

private slots:
    void dataTypeOf_data();
    void dataTypeOf();
    void dataTypeValues();
    void answerCodeOf_data();
    void answerCodeOf();
    void setDataTypeOf_data();
    void setDataTypeOf();
    void isNestedTagOverAllNibbles_data();
    void isNestedTagOverAllNibbles();
    void isNestedTagExtended_data();
    void isNestedTagExtended();
    void typeNameTable_data();
    void typeNameTable();
    void typeNameUnnamedNibbles_data();
    void typeNameUnnamedNibbles();
    void tag2hexOf_data();
    void tag2hexOf();
    void displayModeDefault();
    void formatNumberOf_data();
    void formatNumberOf();
    void numbersMatchQtFormatting();
    void identifier_data();
    void identifier();
    void identifierWithoutErrorPointer();
    void identifierClearsError();
};

void TestTagCodes::dataTypeOf_data()
{
    QTest::addColumn<uint>("code");
    QTest::addColumn<int>("type");

    QTest::newRow("extended 0x8123") << 0x8123u << 0x81;
    QTest::newRow("extended 0x8FFF") << 0x8FFFu << 0x8F;
    QTest::newRow("plain 0x7FFF") << 0x7FFFu << 7;
    QTest::newRow("binary 0x0000") << 0x0000u << 0;
    QTest::newRow("integer 0x1001") << 0x1001u << 1;
    QTest::newRow("address 0x9ABC") << 0x9ABCu << 9;
    QTest::newRow("list 0xC001") << 0xC001u << 12;
    QTest::newRow("request 0xD305") << 0xD305u << 13;
    QTest::newRow("answer 0xE305") << 0xE305u << 14;
    QTest::newRow("message 0xFFFF") << 0xFFFFu << 15;
    QTest::newRow("ExtPoint 0x8000") << 0x8000u << 0x80;
    QTest::newRow("ExtRect 0x81FF") << 0x81FFu << 0x81;
    QTest::newRow("ExtSize 0x8201") << 0x8201u << 0x82;
    QTest::newRow("unnamed 0xA000") << 0xA000u << 10;
    QTest::newRow("unnamed 0xB123") << 0xB123u << 11;
}

void TestTagCodes::dataTypeOf()
{
    QFETCH(uint, code);
    QFETCH(int, type);
    QCOMPARE(int(dataType(code)), type);
}

void TestTagCodes::dataTypeValues()
{
    // The values are written into generated code and must not change.
    QCOMPARE(int(Binary), 0);
    QCOMPARE(int(Integer), 1);
    QCOMPARE(int(Bool), 2);
    QCOMPARE(int(String), 3);
    QCOMPARE(int(Date), 4);
    QCOMPARE(int(Time), 5);
    QCOMPARE(int(DateTime), 6);
    QCOMPARE(int(BitArray), 7);
    QCOMPARE(int(NetworkAddress), 9);
    QCOMPARE(int(List), 12);
    QCOMPARE(int(Request), 13);
    QCOMPARE(int(Answer), 14);
    QCOMPARE(int(Message), 15);
    QCOMPARE(int(ExtPoint), 0x80);
    QCOMPARE(int(ExtRect), 0x81);
    QCOMPARE(int(ExtSize), 0x82);
}

void TestTagCodes::answerCodeOf_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("answer");

    QTest::newRow("request 0xD305") << 0xD305 << 0xE305;
    QTest::newRow("request 0xD000") << 0xD000 << 0xE000;
    QTest::newRow("request 0xDFFF") << 0xDFFF << 0xEFFF;
    QTest::newRow("request 0xD0A1") << 0xD0A1 << 0xE0A1;
    QTest::newRow("answer 0xE305") << 0xE305 << -1;
    QTest::newRow("integer 0x1234") << 0x1234 << -1;
    QTest::newRow("list 0xC305") << 0xC305 << -1;
    QTest::newRow("message 0xF305") << 0xF305 << -1;
    QTest::newRow("binary 0x0000") << 0x0000 << -1;
    QTest::newRow("extended 0x8105") << 0x8105 << -1;
}

void TestTagCodes::answerCodeOf()
{
    QFETCH(int, code);
    QFETCH(int, answer);
    QCOMPARE(answerCode(code), answer);
}

void TestTagCodes::setDataTypeOf_data()
{
    QTest::addColumn<uint>("code");
    QTest::addColumn<int>("type");
    QTest::addColumn<uint>("result");

    QTest::newRow("to extended 0x81") << 0x1234u << 0x81 << 0x8134u;
    QTest::newRow("from extended to 3") << 0x8134u << 3 << 0x3134u;
    QTest::newRow("to request") << 0x1234u << int(Request) << 0xD234u;
    QTest::newRow("to binary") << 0xFFFFu << int(Binary) << 0x0FFFu;
    QTest::newRow("to message") << 0x0000u << int(Message) << 0xF000u;
    QTest::newRow("to ExtSize") << 0x0000u << int(ExtSize) << 0x8200u;
    QTest::newRow("to ExtPoint keeps low byte") << 0xFFFFu << int(ExtPoint) << 0x80FFu;
    QTest::newRow("same type") << 0xE305u << int(Answer) << 0xE305u;
}

void TestTagCodes::setDataTypeOf()
{
    QFETCH(uint, code);
    QFETCH(int, type);
    QFETCH(uint, result);
    QCOMPARE(setDataType(code, DataType(type)), result);
}

void TestTagCodes::isNestedTagOverAllNibbles_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("nested");

    for (int nibble = 0; nibble < 16; ++nibble) {
        const bool nested = nibble >= 12;
        const int code = (nibble << 12) | 0x001;
        QTest::addRow("nibble %d code 0x%04X", nibble, code) << code << nested;
        const int other = (nibble << 12) | 0x7FE;
        QTest::addRow("nibble %d code 0x%04X", nibble, other) << other << nested;
    }
}

void TestTagCodes::isNestedTagOverAllNibbles()
{
    QFETCH(int, code);
    QFETCH(bool, nested);
    QCOMPARE(isNestedTag(code), nested);
}

void TestTagCodes::isNestedTagExtended_data()
{
    QTest::addColumn<int>("code");

    // Extended types are 0x80..0xFF: never in the nested range, even when their low nibble of the
    // type byte is 12..15.
    QTest::newRow("0x8001") << 0x8001;
    QTest::newRow("0x8101") << 0x8101;
    QTest::newRow("0x8201") << 0x8201;
    QTest::newRow("0x8C01") << 0x8C01;
    QTest::newRow("0x8D01") << 0x8D01;
    QTest::newRow("0x8E01") << 0x8E01;
    QTest::newRow("0x8F01") << 0x8F01;
}

void TestTagCodes::isNestedTagExtended()
{
    QFETCH(int, code);
    QVERIFY(!isNestedTag(code));
}

void TestTagCodes::typeNameTable_data()
{
    QTest::addColumn<uint>("code");
    QTest::addColumn<QString>("name");

    const char *names[16] = { "Binary", "Integer",   "Bool",  "String", "Date", "Time",    "DateTime", "BitArray",
                              "Int64",  "IPAddress", nullptr, nullptr,  "List", "Request", "Answer",   "Message" };
    for (uint nibble = 0; nibble < 16; ++nibble) {
        if (!names[nibble])
            continue;
        QTest::addRow("nibble %u low 0x000", nibble) << (nibble << 12) << QString::fromLatin1(names[nibble]);
        QTest::addRow("nibble %u low 0xABC", nibble) << ((nibble << 12) | 0xABC) << QString::fromLatin1(names[nibble]);
    }
    // Extended codes are not decoded: they show their nibble 8 name.
    QTest::newRow("extended 0x8105") << 0x8105u << QStringLiteral("Int64");
    QTest::newRow("extended 0x8000") << 0x8000u << QStringLiteral("Int64");
    QTest::newRow("extended 0x82FF") << 0x82FFu << QStringLiteral("Int64");
    // Only bits 15..12 are looked at.
    QTest::newRow("above 16 bits 0x1D000") << 0x1D000u << QStringLiteral("Request");
}

void TestTagCodes::typeNameTable()
{
    QFETCH(uint, code);
    QFETCH(QString, name);
    QCOMPARE(typeName(code), name);
}

void TestTagCodes::typeNameUnnamedNibbles_data()
{
    QTest::addColumn<uint>("code");
    QTest::newRow("0xA000") << 0xA000u;
    QTest::newRow("0xAFFF") << 0xAFFFu;
    QTest::newRow("0xB000") << 0xB000u;
    QTest::newRow("0xB123") << 0xB123u;
}

void TestTagCodes::typeNameUnnamedNibbles()
{
    QFETCH(uint, code);
    QVERIFY(typeName(code).isNull());
}

void TestTagCodes::tag2hexOf_data()
{
    QTest::addColumn<uint>("code");
    QTest::addColumn<QString>("text");

    QTest::newRow("0x1A3 padded") << 0x1A3u << QStringLiteral("0x01A3");
    QTest::newRow("zero") << 0u << QStringLiteral("0x0000");
    QTest::newRow("one digit") << 0xFu << QStringLiteral("0x000F");
    QTest::newRow("upper case") << 0xabcdu << QStringLiteral("0xABCD");
    QTest::newRow("largest tag") << 0xFFFFu << QStringLiteral("0xFFFF");
    QTest::newRow("above 0xFFFF") << 0x10000u << QStringLiteral("0x10000");
    QTest::newRow("six digits") << 0x12AB56u << QStringLiteral("0x12AB56");
    QTest::newRow("32 bits") << 0xFFFFFFFFu << QStringLiteral("0xFFFFFFFF");
}

void TestTagCodes::tag2hexOf()
{
    QFETCH(uint, code);
    QFETCH(QString, text);
    QCOMPARE(tag2hex(code), text);
}

void TestTagCodes::displayModeDefault()
{
    const DisplayMode mode;
    QCOMPARE(mode.mode, 0);
    QCOMPARE(mode.digits, 0);
}

void TestTagCodes::formatNumberOf_data()
{
    QTest::addColumn<qulonglong>("value");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("digits");
    QTest::addColumn<QString>("text");

    const qulonglong minusOne = ~0ull;
    const qulonglong minusFive = qulonglong(-5ll);

    // worked examples
    QTest::newRow("0 not set") << 0ull << 0 << 0 << QStringLiteral("0");
    QTest::newRow("255 hex") << 255ull << 3 << 0 << QStringLiteral("0xFF");
    QTest::newRow("10 hex 4 digits") << 10ull << 3 << 4 << QStringLiteral("0x000A");
    QTest::newRow("5 binary 8 digits") << 5ull << 5 << 8 << QStringLiteral("0y00000101");
    QTest::newRow("all ones signed") << minusOne << 1 << 0 << QStringLiteral("-1");
    QTest::newRow("all ones unsigned") << minusOne << 2 << 0 << QStringLiteral("18446744073709551615");
    QTest::newRow("8 octal") << 8ull << 4 << 0 << QStringLiteral("0o10");
    // the sign stays inside the padding
    QTest::newRow("-5 signed 4 digits") << minusFive << 1 << 4 << QStringLiteral("00-5");
    QTest::newRow("-5 not set 4 digits") << minusFive << 0 << 4 << QStringLiteral("00-5");
    QTest::newRow("-5 not set") << minusFive << 0 << 0 << QStringLiteral("-5");
    QTest::newRow("-5 signed 2 digits") << minusFive << 1 << 2 << QStringLiteral("-5");
    // unset and unknown modes format as signed decimal
    QTest::newRow("all ones not set") << minusOne << 0 << 0 << QStringLiteral("-1");
    QTest::newRow("all ones mode 6") << minusOne << 6 << 0 << QStringLiteral("-1");
    QTest::newRow("all ones mode -1") << minusOne << -1 << 0 << QStringLiteral("-1");
    QTest::newRow("42 mode 99 3 digits") << 42ull << 99 << 3 << QStringLiteral("042");
    QTest::newRow("7 not set 3 digits") << 7ull << 0 << 3 << QStringLiteral("007");
    // the other modes
    QTest::newRow("42 signed 5 digits") << 42ull << 1 << 5 << QStringLiteral("00042");
    QTest::newRow("42 unsigned 5 digits") << 42ull << 2 << 5 << QStringLiteral("00042");
    QTest::newRow("-5 unsigned") << minusFive << 2 << 0 << QStringLiteral("18446744073709551611");
    QTest::newRow("all ones hex") << minusOne << 3 << 0 << QStringLiteral("0xFFFFFFFFFFFFFFFF");
    QTest::newRow("all ones octal") << minusOne << 4 << 0 << QStringLiteral("0o1777777777777777777777");
    QTest::newRow("0xABCDEF hex upper") << 0xABCDEFull << 3 << 0 << QStringLiteral("0xABCDEF");
    QTest::newRow("0 hex") << 0ull << 3 << 0 << QStringLiteral("0x0");
    QTest::newRow("0 octal") << 0ull << 4 << 0 << QStringLiteral("0o0");
    QTest::newRow("0 binary") << 0ull << 5 << 0 << QStringLiteral("0y0");
    QTest::newRow("0 signed") << 0ull << 1 << 0 << QStringLiteral("0");
    QTest::newRow("0 unsigned 3 digits") << 0ull << 2 << 3 << QStringLiteral("000");
    QTest::newRow("binary 2^63") << (1ull << 63) << 5 << 0
                                 << QStringLiteral(
                                        "0y1000000000000000000000000000000000000000000000000000000000000000");
    QTest::newRow("2^63 signed") << (1ull << 63) << 1 << 0 << QStringLiteral("-9223372036854775808");
    QTest::newRow("2^63 unsigned") << (1ull << 63) << 2 << 0 << QStringLiteral("9223372036854775808");
    // padding never truncates
    QTest::newRow("12345 unsigned 3 digits") << 12345ull << 2 << 3 << QStringLiteral("12345");
    QTest::newRow("0xABC hex 2 digits") << 0xABCull << 3 << 2 << QStringLiteral("0xABC");
    QTest::newRow("8 octal 4 digits") << 8ull << 4 << 4 << QStringLiteral("0o0010");
    // a digit count from a damaged file pads to 64 digits at most
    QTest::newRow("5 binary 64 digits") << 5ull << 5 << 64
                                        << QStringLiteral("0y") + QString(61, QLatin1Char('0')) + QStringLiteral("101");
    QTest::newRow("7 decimal 2000000000 digits")
        << 7ull << 1 << 2000000000 << QString(63, QLatin1Char('0')) + QStringLiteral("7");
}

void TestTagCodes::formatNumberOf()
{
    QFETCH(qulonglong, value);
    QFETCH(int, mode);
    QFETCH(int, digits);
    QFETCH(QString, text);

    DisplayMode display;
    display.mode = mode;
    display.digits = digits;
    QCOMPARE(formatNumber(value, display), text);
}

// The texts are built digit by digit; they must be what QString::number gives, for any value,
// mode and digit count, and the append forms add exactly that text.
void TestTagCodes::numbersMatchQtFormatting()
{
    QRandomGenerator random(77);
    for (int i = 0; i < 20000; ++i) {
        quint64 value = random.generate64();
        switch (i % 4) {
        case 0:
            value >>= random.bounded(64u);
            break;
        case 1:
            value = quint64(0) - (value >> random.bounded(64u));
            break;
        default:
            break;
        }
        DisplayMode display;
        display.mode = int(random.bounded(8u)) - 1;
        display.digits = i % 3 == 0 ? 0 : int(random.bounded(90u)) - 10;

        QString digits;
        QString prefix;
        switch (display.mode) {
        case 2:
            digits = QString::number(value);
            break;
        case 3:
            prefix = QStringLiteral("0x");
            digits = QString::number(value, 16).toUpper();
            break;
        case 4:
            prefix = QStringLiteral("0o");
            digits = QString::number(value, 8);
            break;
        case 5:
            prefix = QStringLiteral("0y");
            digits = QString::number(value, 2);
            break;
        default:
            digits = QString::number(qint64(value));
            break;
        }
        if (display.digits != 0)
            digits = digits.rightJustified(qMin(display.digits, 64), QLatin1Char('0'));
        const QString expected = prefix + digits;
        QCOMPARE(formatNumber(value, display), expected);
        QString appended = QStringLiteral("x=");
        appendNumber(appended, value, display);
        QCOMPARE(appended, QStringLiteral("x=") + expected);

        const unsigned code = i % 2 ? unsigned(value) : unsigned(value & 0xFFFF);
        const QString hex
            = QStringLiteral("0x") + QString::number(code, 16).toUpper().rightJustified(4, QLatin1Char('0'));
        QCOMPARE(tag2hex(code), hex);
        QString hexAppended = QStringLiteral("c ");
        appendTag2hex(hexAppended, code);
        QCOMPARE(hexAppended, QStringLiteral("c ") + hex);
    }
}

void TestTagCodes::identifier_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<QString>("message");

    const QString empty = QStringLiteral("Empty name not allowed.");
    const QString digit = QStringLiteral("Name must not start with a digit.");
    const QString reserved = QStringLiteral("The name \"Tag\" is reserved.");
    const QString invalid = QStringLiteral("Invalid characters in name.");

    QTest::newRow("tag") << QStringLiteral("tag") << true << QString();
    QTest::newRow("Tags") << QStringLiteral("Tags") << true << QString();
    QTest::newRow("TAG") << QStringLiteral("TAG") << true << QString();
    QTest::newRow("_1") << QStringLiteral("_1") << true << QString();
    QTest::newRow("_") << QStringLiteral("_") << true << QString();
    QTest::newRow("Power_On2") << QStringLiteral("Power_On2") << true << QString();

    QTest::newRow("null") << QString() << false << empty;
    QTest::newRow("empty") << QStringLiteral("") << false << empty;
    QTest::newRow("1a") << QStringLiteral("1a") << false << digit;
    QTest::newRow("0") << QStringLiteral("0") << false << digit;
    QTest::newRow("digit before bad character") << QStringLiteral("1-") << false << digit;
    QTest::newRow("arabic-indic digit first") << QString(QChar(0x0663)) + QStringLiteral("x") << false << digit;
    QTest::newRow("fullwidth digit first") << QString(QChar(0xFF11)) + QStringLiteral("x") << false << digit;
    QTest::newRow("Tag") << QStringLiteral("Tag") << false << reserved;
    QTest::newRow("a-b") << QStringLiteral("a-b") << false << invalid;
    QTest::newRow("Tag-") << QStringLiteral("Tag-") << false << invalid;
    QTest::newRow("blank inside") << QStringLiteral("a b") << false << invalid;
    QTest::newRow("leading blank") << QStringLiteral(" a") << false << invalid;
    QTest::newRow("trailing blank") << QStringLiteral("a ") << false << invalid;
    QTest::newRow("dot") << QStringLiteral("a.b") << false << invalid;
    QTest::newRow("non-ASCII letter inside") << QStringLiteral("Gr\u00f6\u00dfe") << false << invalid;
    QTest::newRow("non-ASCII letter first") << QStringLiteral("\u00e9t\u00e9") << false << invalid;
    QTest::newRow("greek") << QStringLiteral("\u03b1\u03b2") << false << invalid;
    QTest::newRow("digit inside non-ASCII") << QStringLiteral("a\u0663") << false << invalid;
}

void TestTagCodes::identifier()
{
    QFETCH(QString, name);
    QFETCH(bool, valid);
    QFETCH(QString, message);

    QString error = QStringLiteral("previous");
    QCOMPARE(isValidIdentifier(name, &error), valid);
    QCOMPARE(error, message);
    QCOMPARE(error.isNull(), valid);
}

void TestTagCodes::identifierWithoutErrorPointer()
{
    QVERIFY(isValidIdentifier(QStringLiteral("Power"), nullptr));
    QVERIFY(!isValidIdentifier(QString(), nullptr));
    QVERIFY(!isValidIdentifier(QStringLiteral("9"), nullptr));
    QVERIFY(!isValidIdentifier(QStringLiteral("Tag"), nullptr));
    QVERIFY(!isValidIdentifier(QStringLiteral("a-b"), nullptr));
}

void TestTagCodes::identifierClearsError()
{
    QString error;
    QVERIFY(!isValidIdentifier(QStringLiteral("a-b"), &error));
    QCOMPARE(error, QStringLiteral("Invalid characters in name."));
    QVERIFY(isValidIdentifier(QStringLiteral("ab"), &error));
    QVERIFY(error.isNull());
}

QTEST_GUILESS_MAIN(TestTagCodes)

#include "tst_tagcodes.moc"
