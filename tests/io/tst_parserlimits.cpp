// What the reader refuses or reads beyond the plain file format, so that no input crashes or
// hangs it and every file it saves opens again: nesting limits for known elements, entity
// declarations (also in pasted data), ids in every notation the writer produces, and padded
// decimal ids under a decimal display mode.

#include "parser.h"
#include "writerxml.h"

#include <QtTest>

#include <sys/resource.h>

#include <memory>

using namespace ZAT16;

namespace {

struct Loaded {
    bool ok = false;
    QString error;
    QString warnings;
    std::unique_ptr<Item> root;
};

Loaded load(const QByteArray &data)
{
    Parser parser;
    Loaded result;
    result.ok = parser.parse(data);
    result.error = result.ok ? QString() : parser.formatError();
    result.warnings = parser.warnings;
    result.root.reset(parser.takeRoot());
    return result;
}

QByteArray nested(const QByteArray &open, const QByteArray &close, int levels)
{
    QByteArray data;
    data.reserve((open.size() + close.size()) * levels + 16);
    for (int i = 0; i < levels; ++i)
        data += open;
    for (int i = 0; i < levels; ++i)
        data += close;
    return data;
}

long maxResidentKiB()
{
    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

const Item *firstEnum(const Item *root)
{
    const Item *tag = root->child(0);
    const Item *enums = tag ? tag->child(0) : nullptr;
    return enums ? enums->child(0) : nullptr;
}

} // namespace

class TestParserLimits : public QObject
{
    Q_OBJECT

private slots:
    void knownElementsNestedDeeply_data()
    {
        QTest::addColumn<int>("levels");
        QTest::addColumn<bool>("ok");
        QTest::newRow("100 levels") << 100 << true;
        QTest::newRow("101 levels") << 101 << false;
    }

    void knownElementsNestedDeeply()
    {
        QFETCH(int, levels);
        QFETCH(bool, ok);
        // The root and tags inside tags: each inner tag is kept with a warning.
        const QByteArray data = "<zat16>" + nested("<tag>", "</tag>", levels - 1) + "</zat16>";
        const Loaded result = load(data);
        QCOMPARE(result.ok, ok);
        if (!ok) {
            // The 101st start tag ends at column 7 + 99 * 5 + 5.
            QCOMPARE(result.error,
                     QStringLiteral("Error: data, Line 1, Column 507:\n  (StartElement) File too deeply nested"));
        } else {
            QVERIFY(result.warnings.startsWith(
                QStringLiteral("Warning: data, Line 1, Column 17:\n  Element <tag> not expected.\n")));
        }
    }

    void millionNestedTagsAreRefused()
    {
        const QByteArray data = "<zat16>" + nested("<tag>", "</tag>", 1000000) + "</zat16>";
        const Loaded result = load(data);
        QVERIFY(!result.ok);
        QVERIFY(result.error.endsWith(QStringLiteral("(StartElement) File too deeply nested")));
        QVERIFY(!result.root);
    }

    void unknownInsideKnownCountSeparately()
    {
        // 100 unknown levels inside known elements pass, as they do at the top.
        const QByteArray data = "<zat16><tag name=\"A\" id=\"0x1\">" + nested("<u>", "</u>", 100) + "</tag></zat16>";
        const Loaded result = load(data);
        QVERIFY2(result.ok, qPrintable(result.error));
    }

    void entityDeclarations_data()
    {
        QTest::addColumn<QByteArray>("data");
        QByteArray laughs = "<?xml version=\"1.0\"?>\n<!DOCTYPE zat16 [\n <!ENTITY l0 \"lol\">\n";
        for (int i = 1; i < 10; ++i) {
            laughs += " <!ENTITY l" + QByteArray::number(i) + " \"";
            for (int j = 0; j < 10; ++j)
                laughs += "&l" + QByteArray::number(i - 1) + ";";
            laughs += "\">\n";
        }
        laughs += "]>\n";
        QTest::newRow("billion laughs in an attribute")
            << laughs + "<zat16><tag name=\"A\" id=\"0x1\" comment=\"&l9;\"/></zat16>\n";
        QTest::newRow("billion laughs in text") << laughs + "<zat16><tag name=\"A\" id=\"0x1\">&l9;</tag></zat16>\n";

        QByteArray quadratic = "<?xml version=\"1.0\"?>\n<!DOCTYPE zat16 [\n <!ENTITY a \"" + QByteArray(4000, 'x')
            + "\">\n]>\n<zat16><tag name=\"A\" id=\"0x1\" comment=\"";
        for (int i = 0; i < 100000; ++i)
            quadratic += "&a;";
        quadratic += "\"/></zat16>\n";
        QTest::newRow("quadratic blow-up") << quadratic;

        QByteArray parameter = "<?xml version=\"1.0\"?>\n<!DOCTYPE zat16 [\n <!ENTITY % a \"<!ENTITY x '"
            + QByteArray(4000, 'x') + "'>\">\n";
        for (int i = 0; i < 100000; ++i)
            parameter += " %a;";
        parameter += "\n]>\n<zat16/>\n";
        QTest::newRow("parameter entities") << parameter;

        QTest::newRow("external entity") << QByteArray("<?xml version=\"1.0\"?>\n<!DOCTYPE zat16 [\n"
                                                       " <!ENTITY e SYSTEM \"file:///etc/passwd\">\n]>\n"
                                                       "<zat16><tag name=\"A\" id=\"0x1\" comment=\"&e;\"/></zat16>\n");
        QTest::newRow("UTF-7") << QByteArray("<?xml version=\"1.0\" encoding=\"UTF-7\"?>\n"
                                             "+ADw-!DOCTYPE zat16 [+ADw-!ENTITY a \"b\">]>+ADw-zat16/>\n");
        QTest::newRow("UTF-16") << QByteArray("\xFF\xFE") + QByteArray::fromRawData(
                                       reinterpret_cast<const char *>(u"<!DOCTYPE zat16 [<!ENTITY a \"b\">]><zat16/>"), 84);
    }

    void entityDeclarations()
    {
        QFETCH(QByteArray, data);
        const long before = maxResidentKiB();
        const Loaded result = load(data);
        QVERIFY(!result.ok);
        QVERIFY2(result.error.endsWith(QStringLiteral(") Entity declarations are not supported")), qPrintable(result.error));
        QVERIFY(!result.root);
        // Refused before anything was expanded.
        QVERIFY2(maxResidentKiB() - before < 100 * 1024, qPrintable(QString::number(maxResidentKiB() - before)));
    }

    void entityGuardAcrossReads()
    {
        // The declaration straddles the reader's chunks of input.
        QByteArray data = "<?xml version=\"1.0\"?>\n<!-- " + QByteArray(8190 - 27, 'c') + " -->";
        data += "<!DOCTYPE zat16 [<!ENTITY a \"b\">]><zat16/>";
        for (int shift = 0; shift < 12; ++shift) {
            const Loaded result = load(QByteArray(shift, ' ') + data.mid(0));
            QVERIFY2(!result.ok, qPrintable(QString::number(shift)));
        }
    }

    void plainDocumentTypeStillReads()
    {
        const Loaded result = load("<!DOCTYPE zat16 SYSTEM \"zat16.dtd\">\n<zat16><tag name=\"A\" id=\"0x1\"/></zat16>");
        QVERIFY2(result.ok, qPrintable(result.error));
        QCOMPARE(result.root->comment, QStringLiteral("<!DOCTYPE zat16 SYSTEM \"zat16.dtd\">"));
    }

    void idNotations_data()
    {
        QTest::addColumn<QByteArray>("id");
        QTest::addColumn<QByteArray>("display");
        QTest::addColumn<quint64>("value");
        // What the writer produces for every display mode.
        QTest::newRow("octal 0o") << QByteArray("0o17") << QByteArray() << quint64(15);
        QTest::newRow("octal 0O") << QByteArray("0O17") << QByteArray() << quint64(15);
        QTest::newRow("padded octal") << QByteArray("0o0017") << QByteArray() << quint64(15);
        QTest::newRow("binary 0y") << QByteArray("0y101") << QByteArray() << quint64(5);
        QTest::newRow("binary 0b") << QByteArray("0b101") << QByteArray() << quint64(5);
        QTest::newRow("padded binary") << QByteArray("0y00000101") << QByteArray() << quint64(5);
        QTest::newRow("zeros before the minus") << QByteArray("00-5") << QByteArray("4d") << quint64(-5);
        QTest::newRow("zeros before the minus, no display") << QByteArray("00-5") << QByteArray() << quint64(-5);
        QTest::newRow("negative octal") << QByteArray("-0o17") << QByteArray() << quint64(-15);
        // Leading zeros: decimal under a decimal display, C octal otherwise (as always).
        QTest::newRow("padded signed decimal") << QByteArray("0010") << QByteArray("4d") << quint64(10);
        QTest::newRow("padded unsigned decimal") << QByteArray("0010") << QByteArray("4u") << quint64(10);
        QTest::newRow("digit count only") << QByteArray("0010") << QByteArray("4") << quint64(10);
        QTest::newRow("padded 8 and 9") << QByteArray("0089") << QByteArray("4") << quint64(89);
        QTest::newRow("no display: octal") << QByteArray("0010") << QByteArray() << quint64(8);
        QTest::newRow("hexadecimal display: octal") << QByteArray("0010") << QByteArray("x") << quint64(8);
        QTest::newRow("hexadecimal under decimal") << QByteArray("0x10") << QByteArray("d") << quint64(16);
        QTest::newRow("plain decimal") << QByteArray("10") << QByteArray("d") << quint64(10);
        QTest::newRow("zero") << QByteArray("0") << QByteArray("4d") << quint64(0);
        QTest::newRow("padded zero") << QByteArray("0000") << QByteArray("4u") << quint64(0);
        QTest::newRow("unsigned maximum") << QByteArray("18446744073709551615") << QByteArray("u")
                                          << quint64(18446744073709551615ull);
    }

    void idNotations()
    {
        QFETCH(QByteArray, id);
        QFETCH(QByteArray, display);
        QFETCH(quint64, value);
        const QByteArray displayAttribute = display.isNull() ? QByteArray() : " display=\"" + display + "\"";
        const Loaded own = load("<zat16><tag name=\"T\" id=\"0x1001\"><enums><enum name=\"V\" id=\"" + id + "\""
                                + displayAttribute + "/></enums></tag></zat16>");
        QVERIFY2(own.ok, qPrintable(own.error));
        QCOMPARE(firstEnum(own.root.get())->id, value);

        // The same display inherited from the list. A digit count without a mode is not
        // inherited (the writer formats such values without padding), so there the C rules hold.
        if (display.size() == 1 && QChar(display.at(0)).isDigit())
            return;
        const Loaded inherited = load("<zat16><tag name=\"T\" id=\"0x1001\"><enums" + displayAttribute
                                      + "><enum name=\"V\" id=\"" + id + "\"/></enums></tag></zat16>");
        QVERIFY2(inherited.ok, qPrintable(inherited.error));
        QCOMPARE(firstEnum(inherited.root.get())->id, value);
    }

    void ownModeOverridesInherited()
    {
        // A value's own hexadecimal mode wins over the list's decimal one, and the other way round.
        Loaded result = load("<zat16><tag name=\"T\" id=\"0x1001\"><enums display=\"4d\">"
                             "<enum name=\"V\" id=\"010\" display=\"x\"/></enums></tag></zat16>");
        QVERIFY(result.ok);
        QCOMPARE(firstEnum(result.root.get())->id, quint64(8));
        result = load("<zat16><tag name=\"T\" id=\"0x1001\"><enums display=\"x\">"
                      "<enum name=\"V\" id=\"010\" display=\"3u\"/></enums></tag></zat16>");
        QVERIFY(result.ok);
        QCOMPARE(firstEnum(result.root.get())->id, quint64(10));
        // A digit count alone on the list is not inherited: "010" is octal below it.
        result = load("<zat16><tag name=\"T\" id=\"0x1001\"><enums display=\"4\">"
                      "<enum name=\"V\" id=\"010\"/></enums></tag></zat16>");
        QVERIFY(result.ok);
        QCOMPARE(firstEnum(result.root.get())->id, quint64(8));
        // A digit count alone is passed over when the list has a mode: the list's mode counts.
        result = load("<zat16><tag name=\"T\" id=\"0x1001\"><enums display=\"x\">"
                      "<enum name=\"V\" id=\"010\" display=\"3\"/></enums></tag></zat16>");
        QVERIFY(result.ok);
        QCOMPARE(firstEnum(result.root.get())->id, quint64(8));
    }

    void displayDigitCountBeyondInt_data()
    {
        QTest::addColumn<QByteArray>("display");
        QTest::addColumn<int>("digits");
        QTest::addColumn<int>("mode");
        QTest::newRow("largest int") << QByteArray("2147483647x") << 2147483647 << 3;
        QTest::newRow("one more") << QByteArray("2147483648x") << 2147483647 << 3;
        QTest::newRow("far more, no mode") << QByteArray("46744073709551614") << 2147483647 << 0;
        QTest::newRow("would wrap to a negative count") << QByteArray("4000000000d") << 2147483647 << 1;
        QTest::newRow("leading zeros") << QByteArray("000000000000000000012u") << 12 << 2;
    }

    // A digit count too large for an int stays at the largest one, and a saved file reads back
    // with the same count.
    void displayDigitCountBeyondInt()
    {
        QFETCH(QByteArray, display);
        QFETCH(int, digits);
        QFETCH(int, mode);
        const Loaded first = load("<zat16><tag name=\"T\" id=\"0x1001\"><enums display=\"" + display
                                  + "\"><enum name=\"V\" id=\"5\"/></enums></tag></zat16>");
        QVERIFY2(first.ok, qPrintable(first.error));
        const Item *enums = first.root->child(0)->child(0);
        QCOMPARE(enums->display.digits, digits);
        QCOMPARE(enums->display.mode, mode);

        WriterXml writer;
        const QByteArray saved = writer.encode(first.root.get());
        const Loaded second = load(saved);
        QVERIFY2(second.ok, qPrintable(second.error));
        const Item *again = second.root->child(0)->child(0);
        QCOMPARE(again->display.digits, digits);
        QCOMPARE(again->display.mode, mode);
        QCOMPARE(writer.encode(second.root.get()), saved);
    }
};

QTEST_GUILESS_MAIN(TestParserLimits)
#include "tst_parserlimits.moc"
