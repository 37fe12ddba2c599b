// What the reader refuses or reads beyond the plain file format, so that no input crashes or
// hangs it and every file it saves opens again: nesting limits for known elements, entity and
// attribute-list declarations (also in pasted data), elements with more than 256 attributes, ids
// in every notation the writer produces, and padded decimal ids under a decimal display mode.

#include "iotesthelpers.h"
#include "parser.h"
#include "writerxml.h"

#include <QStringEncoder>
#include <QtTest>

#include <sys/resource.h>

#include <memory>

using namespace ZAT16;

namespace {

using IoTest::load;
using IoTest::Loaded;
using IoTest::warningMessages;

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

// The ASCII text `data` in the encoding `encoding`, a QStringConverter::Encoding, with or without a
// byte order mark. -1 stands for UTF-7 with '<', '>', '=' and '"' written in base64 as an encoder
// may, below an XML declaration that names it: where a byte-wise look sees none of them.
QByteArray encodedAs(const QByteArray &data, int encoding, bool byteOrderMark)
{
    if (encoding == -1) {
        QByteArray text = data;
        text.replace('<', "+ADw-").replace('>', "+AD4-").replace('=', "+AD0-").replace('"', "+ACI-");
        return "<?xml version=\"1.0\" encoding=\"UTF-7\"?>\n" + text;
    }
    QStringEncoder encoder(QStringConverter::Encoding(encoding),
                           byteOrderMark ? QStringConverter::Flag::WriteBom : QStringConverter::Flag::Default);
    return encoder(QString::fromLatin1(data));
}

// A tag with `count` attributes: its name and id, and a0="v", a1="v", ... up to the count.
QByteArray tagWithAttributes(int count, const QByteArray &value = QByteArray())
{
    QByteArray tag = "<tag name=\"A\" id=\"0x1\"";
    for (int i = 0; i < count - 2; ++i)
        tag += " a" + QByteArray::number(i) + "=\"" + value + "\"";
    return tag + "/>";
}

// The whole input fitted the reader's first read, which the guard withheld: the reader met the end
// of the input before its first character.
const QString attributeListRefused = QStringLiteral("Error: data, Line 1, Column 0:\n"
                                                    "  (Invalid) Attribute-list declarations are not supported");
const QString tooManyAttributes
    = QStringLiteral("Error: data, Line 1, Column 0:\n"
                     "  (Invalid) Elements with more than 256 attributes are not supported");

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
        QTest::newRow("UTF-16") << QByteArray("\xFF\xFE")
                + QByteArray::fromRawData(reinterpret_cast<const char *>(
                                              u"<!DOCTYPE zat16 [<!ENTITY a \"b\">]><zat16/>"),
                                          84);
    }

    void entityDeclarations()
    {
        QFETCH(QByteArray, data);
        const long before = maxResidentKiB();
        const Loaded result = load(data);
        QVERIFY(!result.ok);
        QVERIFY2(result.error.endsWith(QStringLiteral(") Entity declarations are not supported")),
                 qPrintable(result.error));
        QVERIFY(!result.root);
        // Refused before anything was expanded.
        QVERIFY2(maxResidentKiB() - before < 100 * 1024, qPrintable(QString::number(maxResidentKiB() - before)));
    }

    void attributeListDeclarations_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::newRow("default value") << QByteArray(
            "<!DOCTYPE zat16 [<!ATTLIST tag comment CDATA \"x\">]><zat16><tag name=\"A\"/></zat16>");
        // Each tag would get a copy of the megabyte.
        QByteArray megabyte = "<?xml version=\"1.0\"?>\n<!DOCTYPE zat16 [\n <!ATTLIST tag comment CDATA \""
            + QByteArray(1024 * 1024, 'x') + "\">\n]>\n<zat16>\n";
        for (int i = 0; i < 10000; ++i)
            megabyte += "<tag name=\"T" + QByteArray::number(i) + "\" id=\"" + QByteArray::number(i) + "\"/>\n";
        megabyte += "</zat16>\n";
        QTest::newRow("megabyte default") << megabyte;
        QTest::newRow("fixed value") << QByteArray(
            "<!DOCTYPE zat16 [<!ATTLIST tag comment CDATA #FIXED \"x\">]><zat16><tag name=\"A\"/></zat16>");
        QTest::newRow("no default") << QByteArray(
            "<!DOCTYPE zat16 [<!ATTLIST tag comment CDATA #IMPLIED>]><zat16><tag name=\"A\"/></zat16>");
        const QByteArray small
            = "<!DOCTYPE zat16 [<!ATTLIST tag comment CDATA \"x\">]><zat16><tag name=\"A\"/></zat16>";
        QTest::newRow("UTF-16LE") << encodedAs(small, QStringConverter::Utf16LE, true);
        QTest::newRow("UTF-16BE") << encodedAs(small, QStringConverter::Utf16BE, false);
        QTest::newRow("UTF-32LE") << encodedAs(small, QStringConverter::Utf32LE, false);
        QTest::newRow("UTF-32BE") << encodedAs(small, QStringConverter::Utf32BE, true);
        QTest::newRow("UTF-7") << encodedAs(small, -1, false);
    }

    void attributeListDeclarations()
    {
        QFETCH(QByteArray, data);
        const long before = maxResidentKiB();
        const Loaded result = load(data);
        QVERIFY(!result.ok);
        QCOMPARE(result.error, attributeListRefused);
        QVERIFY(!result.root);
        QVERIFY2(maxResidentKiB() - before < 100 * 1024, qPrintable(QString::number(maxResidentKiB() - before)));
    }

    void declarationsAcrossReads_data()
    {
        QTest::addColumn<QByteArray>("declaration");
        QTest::addColumn<QString>("message");
        QTest::newRow("entity") << QByteArray("<!ENTITY a \"b\">")
                                << QStringLiteral("(Invalid) Entity declarations are not supported");
        QTest::newRow("attribute list") << QByteArray("<!ATTLIST tag comment CDATA \"x\">")
                                        << QStringLiteral("(Invalid) Attribute-list declarations are not supported");
    }

    // The declaration begins anywhere from well before the end of the reader's first read of
    // 8 KiB to after it, across it too.
    void declarationsAcrossReads()
    {
        QFETCH(QByteArray, declaration);
        QFETCH(QString, message);
        const QByteArray start = "<?xml version=\"1.0\"?>\n<!-- ";
        const QByteArray end = " --><!DOCTYPE zat16 [";
        const int keyword = int(declaration.indexOf(' '));
        for (int at = 8180; at <= 8200; ++at) {
            const QByteArray data
                = start + QByteArray(at - start.size() - end.size(), 'c') + end + declaration + "]><zat16/>";
            QCOMPARE(data.indexOf(declaration), at);
            const Loaded result = load(data);
            QVERIFY2(!result.ok, qPrintable(QString::number(at)));
            // A keyword within the first read stops the input before it. One that reaches into the
            // second read lets the first one through: the reader stops at its end, on line 2 after
            // the 22 bytes of line 1.
            const QString where = at + keyword <= 8192 ? QStringLiteral("Line 1, Column 0")
                                                       : QStringLiteral("Line 2, Column %1").arg(8192 - 22);
            QCOMPARE(result.error, QStringLiteral("Error: data, %1:\n  %2").arg(where, message));
        }
    }

    void attributeCount_data()
    {
        QTest::addColumn<int>("encoding");
        QTest::addColumn<bool>("byteOrderMark");
        QTest::newRow("UTF-8") << int(QStringConverter::Utf8) << false;
        QTest::newRow("UTF-16LE") << int(QStringConverter::Utf16LE) << false;
        QTest::newRow("UTF-16BE") << int(QStringConverter::Utf16BE) << false;
        QTest::newRow("UTF-16LE with a byte order mark") << int(QStringConverter::Utf16LE) << true;
        QTest::newRow("UTF-32LE") << int(QStringConverter::Utf32LE) << false;
        QTest::newRow("UTF-32BE") << int(QStringConverter::Utf32BE) << false;
        QTest::newRow("UTF-32BE with a byte order mark") << int(QStringConverter::Utf32BE) << true;
        QTest::newRow("UTF-7") << -1 << false;
    }

    // 256 attributes on an element load; 257 are refused before the reader compares them.
    void attributeCount()
    {
        QFETCH(int, encoding);
        QFETCH(bool, byteOrderMark);
        // Small enough for the reader's first read of 8 KiB also in UTF-32.
        const QByteArray accepted = encodedAs("<zat16>" + tagWithAttributes(256) + "</zat16>", encoding, byteOrderMark);
        QVERIFY(accepted.size() < 8192);
        const Loaded loaded = load(accepted);
        QVERIFY2(loaded.ok, qPrintable(loaded.error));
        // Every attribute but the name and the id is unknown to the format, and is named.
        QStringList unknown;
        for (int i = 0; i < 254; ++i)
            unknown << QStringLiteral("Attribute \"a%1\" is not kept").arg(i);
        QCOMPARE(warningMessages(loaded.warnings), unknown);
        QCOMPARE(loaded.root->children.size(), 1);
        QCOMPARE(loaded.root->child(0)->name, QStringLiteral("A"));

        const QByteArray refused = encodedAs("<zat16>" + tagWithAttributes(257) + "</zat16>", encoding, byteOrderMark);
        QVERIFY(refused.size() < 8192);
        const Loaded result = load(refused);
        QVERIFY(!result.ok);
        QCOMPARE(result.error, tooManyAttributes);
        QVERIFY(!result.root);
    }

    void equalSignsOutsideAttributes_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");
        QTest::addColumn<QByteArray>("value");
        // Each holds "<x" and 300 '=' after what would end it if it were read wrongly.
        const QByteArray x = "<x " + QByteArray(300, '=') + ">";
        QTest::newRow("text") << "<zat16><u>" + QByteArray(300, '=') + "</u>" << QByteArray("</zat16>") << QByteArray();
        QTest::newRow("comment") << "<zat16><!-- - -> " + x + " -->" << QByteArray("</zat16>") << QByteArray();
        QTest::newRow("CDATA") << "<zat16><u><![CDATA[ ] ]> " + x + " ]]></u>" << QByteArray("</zat16>")
                               << QByteArray();
        QTest::newRow("processing instruction")
            << "<zat16><?pi > ? " + x + " ?>" << QByteArray("</zat16>") << QByteArray();
        // The reader takes no '<' in the literals.
        const QByteArray equals(100, '=');
        QTest::newRow("document type declaration")
            << "<!DOCTYPE zat16 SYSTEM \"]> " + equals + "\" [<!ELEMENT zat16 ANY><!NOTATION n SYSTEM '> " + equals
                + "'><!-- ]> ' \" " + x + " --><?pi ]> ' \" " + x + " ?>]><zat16>"
            << QByteArray("</zat16>") << QByteArray();
        QTest::newRow("attribute values")
            << QByteArray("<zat16 a=\"=>'=\" b='=\">='>") << QByteArray("</zat16>") << QByteArray("=>=&quot;'=");
    }

    // An '=' that is not between the attributes of a start tag does not count as an attribute.
    void equalSignsOutsideAttributes()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        QFETCH(QByteArray, value);
        const Loaded loaded = load(before + tagWithAttributes(256, value) + after);
        QVERIFY2(loaded.ok, qPrintable(loaded.error));
        // After a comment item where there is one.
        QCOMPARE(loaded.root->children.last()->name, QStringLiteral("A"));

        const Loaded result = load(before + tagWithAttributes(257, value) + after);
        QCOMPARE(result.error, tooManyAttributes);
    }

    void hundredThousandAttributes()
    {
        // The reader would compare each attribute with all before it: seconds of work, refused at
        // the 257th attribute instead, within the reader's first read.
        QByteArray data = "<zat16><x";
        for (int i = 0; i < 100000; ++i)
            data += " a" + QByteArray::number(i) + "=\"\"";
        data += "/></zat16>";
        const Loaded result = load(data);
        QCOMPARE(result.error, tooManyAttributes);
    }

    void plainDocumentTypeStillReads()
    {
        const Loaded result
            = load("<!DOCTYPE zat16 SYSTEM \"zat16.dtd\">\n<zat16><tag name=\"A\" id=\"0x1\"/></zat16>");
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
        QTest::newRow("unsigned maximum")
            << QByteArray("18446744073709551615") << QByteArray("u") << quint64(18446744073709551615ull);
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

    // Text between elements ends reading, keeping what came before; the line of its first
    // character that is not blank is kept, so that the user can be told what was not read.
    void strayTextStopsAtItsLine_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("line");
        QTest::addColumn<int>("tags");
        QTest::newRow("whole file") << QByteArray("<zat16>\n  <tag name=\"A\"/>\n</zat16>\n") << 0 << 1;
        QTest::newRow("a letter on its own line")
            << QByteArray("<zat16>\n  <tag name=\"A\"/>\n  x\n  <tag name=\"B\"/>\n</zat16>\n") << 3 << 1;
        QTest::newRow("after blank lines")
            << QByteArray("<zat16>\n  <tag name=\"A\"/>\n\n\n\n  y <tag name=\"B\"/>\n</zat16>\n") << 6 << 1;
        QTest::newRow("CDATA of blanks") << QByteArray(
            "<zat16>\n  <tag name=\"A\"/>\n  <![CDATA[  ]]>\n  <tag name=\"B\"/>\n</zat16>\n")
                                         << 3 << 1;
        QTest::newRow("no-break space") << QByteArray(
            "<zat16>\n  <tag name=\"A\"/>\n  <tag name=\"B\"/>\xC2\xA0\n</zat16>\n")
                                        << 3 << 2;
        QTest::newRow("the thirteen bytes") << QByteArray("<tag><bit/>]<") << 1 << 1;
    }

    void strayTextStopsAtItsLine()
    {
        QFETCH(QByteArray, text);
        QFETCH(int, line);
        QFETCH(int, tags);
        Parser parser;
        QVERIFY(parser.parse(text));
        QCOMPARE(parser.stoppedAtLine, line);
        const std::unique_ptr<Item> root(parser.takeRoot());
        QCOMPARE(root->type == Root ? int(root->children.size()) : 1, tags);
        // A parse of a whole file afterwards starts again at 0.
        QVERIFY(parser.parse(QByteArray("<zat16/>")));
        QCOMPARE(parser.stoppedAtLine, 0);
    }

    // After a thousand warnings the rest are counted exactly, in one last line, without their
    // texts.
    void warningsAfterAThousandAreCounted_data()
    {
        QTest::addColumn<int>("duplicates");
        QTest::addColumn<int>("listed");
        QTest::addColumn<QString>("last");
        QTest::newRow("a thousand") << 1000 << 1000 << "  Double number 1";
        QTest::newRow("one more") << 1001 << 1000 << "  1 more warnings were not listed";
        QTest::newRow("a hundred thousand") << 100000 << 1000 << "  99000 more warnings were not listed";
    }

    void warningsAfterAThousandAreCounted()
    {
        QFETCH(int, duplicates);
        QFETCH(int, listed);
        QFETCH(QString, last);
        QByteArray text = "<zat16><tag name=\"T\" id=\"0x1001\"><enums><enum id=\"1\"/>";
        for (int i = 0; i < duplicates; ++i)
            text += "<enum id=\"1\"/>";
        text += "</enums></tag></zat16>";
        Parser parser;
        QVERIFY(parser.parse(text));
        QCOMPARE(parser.warningCount, duplicates);
        QCOMPARE(int(parser.warnings.count(QStringLiteral("Double number 1"))), listed);
        const QStringList lines = parser.warnings.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(lines.last(), last);
        if (duplicates > listed)
            QCOMPARE(lines.at(lines.size() - 2), QStringLiteral("Warning: data:"));
    }
};

QTEST_GUILESS_MAIN(TestParserLimits)
#include "tst_parserlimits.moc"
