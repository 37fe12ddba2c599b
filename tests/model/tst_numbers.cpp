// Tests of the strict number parsers used for what the user types.

#include "numbers.h"

#include <QtTest>

class TestNumbers : public QObject
{
    Q_OBJECT

private slots:
    void cton_data();
    void cton();
    void atoi_data();
    void atoi();
    void atoiNullText();
    void to32FromQString_data();
    void to32FromQString();
    void to32FromQByteArray_data();
    void to32FromQByteArray();
    void to32FromPointer_data();
    void to32FromPointer();
    void to64FromQString_data();
    void to64FromQString();
    void to64FromQByteArray_data();
    void to64FromQByteArray();
    void to64FromPointer_data();
    void to64FromPointer();
    void nonAsciiDigitsRejected();
    void pointerLengthIsRespected();
    void okFlagIsReset();
    void readValue_data();
    void readValue();
    void readHex_data();
    void readHex();

private:
    void numberRows();
};

void TestNumbers::cton_data()
{
    QTest::addColumn<int>("c");
    QTest::addColumn<int>("value");

    QTest::newRow("0") << int('0') << 0;
    QTest::newRow("5") << int('5') << 5;
    QTest::newRow("9") << int('9') << 9;
    QTest::newRow("A") << int('A') << 10;
    QTest::newRow("F") << int('F') << 15;
    QTest::newRow("Z") << int('Z') << 35;
    QTest::newRow("a") << int('a') << 10;
    QTest::newRow("f") << int('f') << 15;
    QTest::newRow("z") << int('z') << 35;
    QTest::newRow("slash before 0") << int('/') << -1;
    QTest::newRow("colon after 9") << int(':') << -1;
    QTest::newRow("at before A") << int('@') << -1;
    QTest::newRow("bracket after Z") << int('[') << -1;
    QTest::newRow("backquote before a") << int('`') << -1;
    QTest::newRow("brace after z") << int('{') << -1;
    QTest::newRow("blank") << int(' ') << -1;
    QTest::newRow("minus") << int('-') << -1;
    QTest::newRow("plus") << int('+') << -1;
    QTest::newRow("underscore") << int('_') << -1;
    QTest::newRow("NUL") << 0 << -1;
    QTest::newRow("-1") << -1 << -1;
    QTest::newRow("Latin-1 e acute") << 0xE9 << -1;
    QTest::newRow("0x130") << 0x130 << -1;
    QTest::newRow("0x135") << 0x135 << -1;
    QTest::newRow("0x161") << 0x161 << -1;
}

void TestNumbers::cton()
{
    QFETCH(int, c);
    QFETCH(int, value);
    QCOMPARE(Numbers::cton(c), value);
}

void TestNumbers::atoi_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<uint>("length");
    QTest::addColumn<uint>("base");
    QTest::addColumn<uint>("value");

    QTest::newRow("decimal") << QByteArray("123") << 3u << 10u << 123u;
    QTest::newRow("length shorter than text") << QByteArray("123") << 2u << 10u << 12u;
    QTest::newRow("length 0") << QByteArray("123") << 0u << 10u << 0u;
    QTest::newRow("empty") << QByteArray("") << 0u << 10u << 0u;
    QTest::newRow("hex lower") << QByteArray("ff") << 2u << 16u << 255u;
    QTest::newRow("hex upper") << QByteArray("FF") << 2u << 16u << 255u;
    QTest::newRow("binary") << QByteArray("101") << 3u << 2u << 5u;
    QTest::newRow("octal") << QByteArray("17") << 2u << 8u << 15u;
    QTest::newRow("base 36") << QByteArray("z") << 1u << 36u << 35u;
    QTest::newRow("digit equal to base") << QByteArray("102") << 3u << 2u << 0xFFFFFFFFu;
    QTest::newRow("8 in octal") << QByteArray("8") << 1u << 8u << 0xFFFFFFFFu;
    QTest::newRow("letter in decimal") << QByteArray("1a") << 2u << 10u << 0xFFFFFFFFu;
    QTest::newRow("sign") << QByteArray("-1") << 2u << 10u << 0xFFFFFFFFu;
    QTest::newRow("prefix") << QByteArray("0x1") << 3u << 16u << 0xFFFFFFFFu;
    QTest::newRow("trailing blank") << QByteArray("1 ") << 2u << 10u << 0xFFFFFFFFu;
    QTest::newRow("largest") << QByteArray("4294967295") << 10u << 10u << 0xFFFFFFFFu;
    QTest::newRow("wraps to 0") << QByteArray("4294967296") << 10u << 10u << 0u;
    QTest::newRow("wraps to 1") << QByteArray("4294967297") << 10u << 10u << 1u;
    QTest::newRow("hex wraps") << QByteArray("123456789") << 9u << 16u << 0x23456789u;
}

void TestNumbers::atoi()
{
    QFETCH(QByteArray, text);
    QFETCH(uint, length);
    QFETCH(uint, base);
    QFETCH(uint, value);
    QCOMPARE(Numbers::atoi(text.constData(), length, base), value);
}

void TestNumbers::atoiNullText()
{
    QCOMPARE(Numbers::atoi(nullptr, 3, 10), 0xFFFFFFFFu);
}

// Rows shared by every form of to32 and to64: the text, the 32-bit result, the 64-bit result and
// the ok flag.
void TestNumbers::numberRows()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<uint>("value32");
    QTest::addColumn<qulonglong>("value64");
    QTest::addColumn<bool>("ok");

    const qulonglong all64 = ~0ull;

    QTest::newRow("hex 0x1F") << QByteArray("0x1F") << 31u << 31ull << true;
    QTest::newRow("hex 0X1f") << QByteArray("0X1f") << 31u << 31ull << true;
    QTest::newRow("binary 0b101") << QByteArray("0b101") << 5u << 5ull << true;
    QTest::newRow("leading zero is decimal") << QByteArray("010") << 10u << 10ull << true;
    QTest::newRow("decimal") << QByteArray("4097") << 4097u << 4097ull << true;
    QTest::newRow("zero") << QByteArray("0") << 0u << 0ull << true;
    QTest::newRow("double zero") << QByteArray("00") << 0u << 0ull << true;
    QTest::newRow("minus one") << QByteArray("-1") << 0xFFFFFFFFu << all64 << true;
    QTest::newRow("minus zero") << QByteArray("-0") << 0u << 0ull << true;
    QTest::newRow("plus") << QByteArray("+42") << 42u << 42ull << true;
    QTest::newRow("negative hex") << QByteArray("-0x10") << 0xFFFFFFF0u << 0xFFFFFFFFFFFFFFF0ull << true;
    QTest::newRow("negative binary") << QByteArray("-0b1") << 0xFFFFFFFFu << all64 << true;
    QTest::newRow("negative 2^32-1") << QByteArray("-4294967295") << 1u << 0xFFFFFFFF00000001ull << true;
    QTest::newRow("hex lower digits") << QByteArray("0xabcdef") << 0xABCDEFu << 0xABCDEFull << true;
    QTest::newRow("hex upper digits") << QByteArray("0xABCDEF") << 0xABCDEFu << 0xABCDEFull << true;
    QTest::newRow("32 binary ones") << QByteArray("0b11111111111111111111111111111111") << 0xFFFFFFFFu << 0xFFFFFFFFull
                                    << true;

    // empty inputs
    QTest::newRow("empty") << QByteArray("") << 0u << 0ull << true;
    QTest::newRow("plus alone") << QByteArray("+") << 0u << 0ull << true;
    QTest::newRow("minus alone") << QByteArray("-") << 0u << 0ull << true;
    QTest::newRow("0x alone") << QByteArray("0x") << 0u << 0ull << true;
    QTest::newRow("0b alone") << QByteArray("0b") << 0u << 0ull << true;
    QTest::newRow("sign and prefix alone") << QByteArray("-0x") << 0u << 0ull << true;

    // wrap-around without notice
    QTest::newRow("2^32") << QByteArray("4294967296") << 0u << 4294967296ull << true;
    QTest::newRow("2^32-1") << QByteArray("4294967295") << 0xFFFFFFFFu << 0xFFFFFFFFull << true;
    QTest::newRow("0x100000000") << QByteArray("0x100000000") << 0u << 0x100000000ull << true;
    QTest::newRow("2^64-1") << QByteArray("18446744073709551615") << 0xFFFFFFFFu << all64 << true;
    QTest::newRow("2^64") << QByteArray("18446744073709551616") << 0u << 0ull << true;
    QTest::newRow("17 hex digits") << QByteArray("0xFFFFFFFFFFFFFFFFF") << 0xFFFFFFFFu << all64 << true;
    QTest::newRow("0x123456789") << QByteArray("0x123456789") << 0x23456789u << 0x123456789ull << true;

    // rejected
    QTest::newRow("upper case 0B") << QByteArray("0B1") << 0u << 0ull << false;
    QTest::newRow("leading blank") << QByteArray(" 1") << 0u << 0ull << false;
    QTest::newRow("trailing blank") << QByteArray("1 ") << 0u << 0ull << false;
    QTest::newRow("blank after sign") << QByteArray("- 1") << 0u << 0ull << false;
    QTest::newRow("letter in decimal") << QByteArray("12a") << 0u << 0ull << false;
    QTest::newRow("letter alone") << QByteArray("a") << 0u << 0ull << false;
    QTest::newRow("second sign") << QByteArray("--1") << 0u << 0ull << false;
    QTest::newRow("plus minus") << QByteArray("+-1") << 0u << 0ull << false;
    QTest::newRow("2 in binary") << QByteArray("0b2") << 0u << 0ull << false;
    QTest::newRow("G in hex") << QByteArray("0xG") << 0u << 0ull << false;
    QTest::newRow("second prefix") << QByteArray("0x0x1") << 0u << 0ull << false;
    QTest::newRow("octal prefix") << QByteArray("0o7") << 0u << 0ull << false;
    QTest::newRow("underscore") << QByteArray("1_000") << 0u << 0ull << false;
    QTest::newRow("trailing sign") << QByteArray("1-") << 0u << 0ull << false;
    QTest::newRow("embedded NUL") << QByteArray("1\0", 2) << 0u << 0ull << false;
}

void TestNumbers::to32FromQString_data()
{
    numberRows();
}

void TestNumbers::to32FromQString()
{
    QFETCH(QByteArray, text);
    QFETCH(uint, value32);
    QFETCH(bool, ok);

    bool result = !ok;
    QCOMPARE(Numbers::to32(QString::fromUtf8(text), &result), value32);
    QCOMPARE(result, ok);
}

void TestNumbers::to32FromQByteArray_data()
{
    numberRows();
}

void TestNumbers::to32FromQByteArray()
{
    QFETCH(QByteArray, text);
    QFETCH(uint, value32);
    QFETCH(bool, ok);

    bool result = !ok;
    QCOMPARE(Numbers::to32(text, &result), value32);
    QCOMPARE(result, ok);
}

void TestNumbers::to32FromPointer_data()
{
    numberRows();
}

void TestNumbers::to32FromPointer()
{
    QFETCH(QByteArray, text);
    QFETCH(uint, value32);
    QFETCH(bool, ok);

    bool result = !ok;
    QCOMPARE(Numbers::to32(static_cast<const void *>(text.constData()), uint(text.size()), &result), value32);
    QCOMPARE(result, ok);
}

void TestNumbers::to64FromQString_data()
{
    numberRows();
}

void TestNumbers::to64FromQString()
{
    QFETCH(QByteArray, text);
    QFETCH(qulonglong, value64);
    QFETCH(bool, ok);

    bool result = !ok;
    QCOMPARE(qulonglong(Numbers::to64(QString::fromUtf8(text), &result)), value64);
    QCOMPARE(result, ok);
}

void TestNumbers::to64FromQByteArray_data()
{
    numberRows();
}

void TestNumbers::to64FromQByteArray()
{
    QFETCH(QByteArray, text);
    QFETCH(qulonglong, value64);
    QFETCH(bool, ok);

    bool result = !ok;
    QCOMPARE(qulonglong(Numbers::to64(text, &result)), value64);
    QCOMPARE(result, ok);
}

void TestNumbers::to64FromPointer_data()
{
    numberRows();
}

void TestNumbers::to64FromPointer()
{
    QFETCH(QByteArray, text);
    QFETCH(qulonglong, value64);
    QFETCH(bool, ok);

    bool result = !ok;
    QCOMPARE(qulonglong(Numbers::to64(static_cast<const void *>(text.constData()), uint(text.size()), &result)),
             value64);
    QCOMPARE(result, ok);
}

void TestNumbers::nonAsciiDigitsRejected()
{
    // The text form goes through UTF-8, so digits of other scripts are not digits here.
    const QString arabicOne(QChar(0x0661));
    bool ok = true;
    QCOMPARE(Numbers::to32(arabicOne, &ok), 0u);
    QVERIFY(!ok);
    ok = true;
    QCOMPARE(Numbers::to64(arabicOne, &ok), quint64(0));
    QVERIFY(!ok);
    ok = true;
    QCOMPARE(Numbers::to32(QStringLiteral("1\u00b2"), &ok), 0u);
    QVERIFY(!ok);
}

void TestNumbers::pointerLengthIsRespected()
{
    // Only `length` bytes are looked at; what follows does not matter.
    const char text[] = "12xyz";
    bool ok = false;
    QCOMPARE(Numbers::to32(static_cast<const void *>(text), 2u, &ok), 12u);
    QVERIFY(ok);
    ok = false;
    QCOMPARE(Numbers::to64(static_cast<const void *>(text), 2u, &ok), quint64(12));
    QVERIFY(ok);
    ok = false;
    QCOMPARE(Numbers::to32(static_cast<const void *>(text), 0u, &ok), 0u);
    QVERIFY(ok);
    ok = true;
    QCOMPARE(Numbers::to32(static_cast<const void *>(text), 3u, &ok), 0u);
    QVERIFY(!ok);
}

void TestNumbers::okFlagIsReset()
{
    bool ok = true;
    Numbers::to32(QByteArray("x"), &ok);
    QVERIFY(!ok);
    Numbers::to32(QByteArray("7"), &ok);
    QVERIFY(ok);
    Numbers::to64(QByteArray("0x"), &ok);
    QVERIFY(ok);
    Numbers::to64(QByteArray("0xx"), &ok);
    QVERIFY(!ok);
}

void TestNumbers::readValue_data()
{
    using Reading = Numbers::Reading;
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("reading");
    QTest::addColumn<qulonglong>("value");
    QTest::addColumn<bool>("negative");

    QTest::newRow("empty") << "" << int(Reading::NotANumber) << 0ULL << false;
    QTest::newRow("decimal") << "42" << int(Reading::Number) << 42ULL << false;
    QTest::newRow("leading zero is decimal") << "010" << int(Reading::Number) << 10ULL << false;
    QTest::newRow("08") << "08" << int(Reading::Number) << 8ULL << false;
    QTest::newRow("plus") << "+7" << int(Reading::Number) << 7ULL << false;
    QTest::newRow("minus") << "-20" << int(Reading::Number) << qulonglong(-20) << true;
    QTest::newRow("minus zero") << "-0" << int(Reading::Number) << 0ULL << false;
    QTest::newRow("hexadecimal") << "0x1F" << int(Reading::Number) << 31ULL << false;
    QTest::newRow("hexadecimal capital X") << "0XfF" << int(Reading::Number) << 255ULL << false;
    QTest::newRow("negative hexadecimal") << "-0x10" << int(Reading::Number) << qulonglong(-16) << true;
    QTest::newRow("binary") << "0b101" << int(Reading::Number) << 5ULL << false;
    QTest::newRow("binary digit 2") << "0b102" << int(Reading::NotANumber) << 0ULL << false;
    QTest::newRow("sign alone") << "-" << int(Reading::NotANumber) << 0ULL << false;
    QTest::newRow("prefix alone") << "0x" << int(Reading::NotANumber) << 0ULL << false;
    QTest::newRow("blank") << " 5" << int(Reading::NotANumber) << 0ULL << false;
    QTest::newRow("letter") << "5a" << int(Reading::NotANumber) << 0ULL << false;
    QTest::newRow("highest") << "18446744073709551615" << int(Reading::Number) << ~0ULL << false;
    QTest::newRow("above highest") << "18446744073709551616" << int(Reading::TooLarge) << 0ULL << false;
    QTest::newRow("highest hexadecimal") << "0xFFFFFFFFFFFFFFFF" << int(Reading::Number) << ~0ULL << false;
    QTest::newRow("17 hexadecimal digits") << "0x10000000000000000" << int(Reading::TooLarge) << 0ULL << false;
    QTest::newRow("lowest") << "-9223372036854775808" << int(Reading::Number) << (1ULL << 63) << true;
    QTest::newRow("below lowest") << "-9223372036854775809" << int(Reading::TooLarge) << 0ULL << false;
    QTest::newRow("too large with a letter") << "99999999999999999999z" << int(Reading::NotANumber) << 0ULL << false;
}

void TestNumbers::readValue()
{
    QFETCH(QString, text);
    QFETCH(int, reading);
    QFETCH(qulonglong, value);
    QFETCH(bool, negative);

    quint64 read = 99;
    bool below = !negative;
    QCOMPARE(int(Numbers::readValue(text, &read, &below)), reading);
    QCOMPARE(qulonglong(read), value);
    QCOMPARE(below, negative);
}

void TestNumbers::readHex_data()
{
    using Reading = Numbers::Reading;
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("reading");
    QTest::addColumn<qulonglong>("value");

    QTest::newRow("empty") << "" << int(Reading::NotANumber) << 0ULL;
    QTest::newRow("digits") << "1005" << int(Reading::Number) << 0x1005ULL;
    QTest::newRow("letters in either case") << "aBcD" << int(Reading::Number) << 0xABCDULL;
    QTest::newRow("prefix") << "0x1F" << int(Reading::Number) << 0x1FULL;
    QTest::newRow("capital prefix") << "0XfF" << int(Reading::Number) << 0xFFULL;
    QTest::newRow("prefix alone") << "0x" << int(Reading::NotANumber) << 0ULL;
    QTest::newRow("0b is hexadecimal") << "0b1" << int(Reading::Number) << 0xB1ULL;
    QTest::newRow("0B is hexadecimal") << "0B1" << int(Reading::Number) << 0xB1ULL;
    QTest::newRow("leading zero") << "010" << int(Reading::Number) << 0x10ULL;
    QTest::newRow("x alone") << "x" << int(Reading::NotANumber) << 0ULL;
    QTest::newRow("x without the zero") << "x12" << int(Reading::NotANumber) << 0ULL;
    QTest::newRow("two prefixes") << "0x0x1" << int(Reading::NotANumber) << 0ULL;
    QTest::newRow("x at the end") << "12x" << int(Reading::NotANumber) << 0ULL;
    QTest::newRow("zero before the prefix") << "00x1" << int(Reading::NotANumber) << 0ULL;
    QTest::newRow("plus") << "+1" << int(Reading::NotANumber) << 0ULL;
    QTest::newRow("minus") << "-1" << int(Reading::NotANumber) << 0ULL;
    QTest::newRow("leading blank") << " 1" << int(Reading::NotANumber) << 0ULL;
    QTest::newRow("trailing blank") << "1 " << int(Reading::NotANumber) << 0ULL;
    QTest::newRow("letter past f") << "1g" << int(Reading::NotANumber) << 0ULL;
    QTest::newRow("non-ASCII digit") << QString(QChar(0x0661)) << int(Reading::NotANumber) << 0ULL;
    QTest::newRow("fullwidth letter") << QString(QChar(0xFF21)) << int(Reading::NotANumber) << 0ULL;
    QTest::newRow("highest") << "FFFFFFFFFFFFFFFF" << int(Reading::Number) << ~0ULL;
    QTest::newRow("highest with prefix") << "0xFFFFFFFFFFFFFFFF" << int(Reading::Number) << ~0ULL;
    QTest::newRow("leading zeros do not count") << "00000000FFFFFFFFFFFFFFFF" << int(Reading::Number) << ~0ULL;
    QTest::newRow("17 digits") << "10000000000000000" << int(Reading::TooLarge) << 0ULL;
    QTest::newRow("too large with a bad digit") << "10000000000000000g" << int(Reading::NotANumber) << 0ULL;
}

void TestNumbers::readHex()
{
    QFETCH(QString, text);
    QFETCH(int, reading);
    QFETCH(qulonglong, value);

    quint64 read = 99;
    QCOMPARE(int(Numbers::readHex(text, &read)), reading);
    QCOMPARE(qulonglong(read), value);
}

QTEST_GUILESS_MAIN(TestNumbers)

#include "tst_numbers.moc"
