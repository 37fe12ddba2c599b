// Tests of the definitions file writer: the exact saved bytes.

#include "iotesthelpers.h"
#include "item.h"
#include "parser.h"
#include "writerxml.h"

#include <QtTest>

#include <QBuffer>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QXmlStreamWriter>

#include <cstdio>
#include <memory>
#include <unistd.h>

using namespace ZAT16;

namespace {

// The first line of every saved file, without its line break.
const QByteArray head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?> <!-- -*- nxml -*- -->";

Item *add(Item *parent, ItemType type, const QString &name = QString(), qint64 id = 0, bool hasId = false)
{
    auto *item = new Item;
    item->type = type;
    item->name = name;
    item->id = quint64(id);
    item->hasId = hasId;
    item->comment = QStringLiteral("");
    if (parent)
        parent->appendChild(item);
    return item;
}

Item *addNumbered(Item *parent, ItemType type, const QString &name, quint64 id)
{
    Item *item = add(parent, type, name, 0, true);
    item->id = id;
    return item;
}

Item *addComment(Item *parent, ItemType type, const QString &text)
{
    Item *item = add(parent, type);
    item->comment = text;
    return item;
}

Item *addBlank(Item *parent, ItemType type)
{
    return add(parent, type);
}

std::unique_ptr<Item> makeRoot()
{
    std::unique_ptr<Item> root(new Item);
    root->type = Root;
    return root;
}

void setDisplay(Item *item, int mode, int digits)
{
    item->display.mode = mode;
    item->display.digits = digits;
}

QByteArray save(const Item *root)
{
    WriterXml writer;
    return writer.encode(root);
}

// Loads `data` and saves it again.
QByteArray resave(const QByteArray &data, QString *error)
{
    Parser parser;
    if (!parser.parse(data)) {
        *error = parser.formatError();
        return QByteArray();
    }
    std::unique_ptr<Item> root(parser.takeRoot());
    return save(root.get());
}

// Runs writeItem on its own at the given depth and returns the bytes written.
QByteArray writeAlone(const Item *item, int depth, bool *result)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    WriterXml writer;
    writer.xml = new QXmlStreamWriter(&buffer);
    writer.xml->setAutoFormatting(false);
    writer.depth = depth;
    *result = writer.writeItem(item);
    delete writer.xml;
    writer.xml = nullptr;
    return buffer.data();
}

} // namespace

class TestWriterXml : public QObject {
    Q_OBJECT

private slots:
    void emptyRoot();
    void rootWithOnlyBlankLine();
    void nestedLayout();
    void enumsDisplayInherited();
    void displayLettersNormalised();
    void documentTypeDeclarationKept();
    void documentTypeDeclarationFromFile();
    void attributeOrder();
    void attributeConditions();
    void rootAttributes();
    void displayLetters_data();
    void displayLetters();
    void idsInInheritedDisplayModes();
    void digitsWithoutModeNotInherited();
    void commentsAndBlankLines();
    void escaping();
    void nonAsciiText();
    void charactersXmlCannotCarry();
    void commentLinesWithDashes();
    void itemsOfOtherTypesWriteNothing();
    void writeIndent();
    void writeItemAtDepthZero();
    void writeToFile();
    void writeToMissingDirectory();
    void writeToStandardOutput();
    void encodeLeavesFrameClean();
};

void TestWriterXml::emptyRoot()
{
    const auto root = makeRoot();
    IOTEST_COMPARE_BYTES(save(root.get()), head + "\n<zat16/>\n");
}

void TestWriterXml::rootWithOnlyBlankLine()
{
    const auto root = makeRoot();
    addBlank(root.get(), Tag);
    IOTEST_COMPARE_BYTES(save(root.get()), head + "\n<zat16>\n\n</zat16>\n");
}

void TestWriterXml::nestedLayout()
{
    const auto root = makeRoot();
    Item *tag = addNumbered(root.get(), Tag, QStringLiteral("Status"), 0xC001);
    Item *bits = add(tag, Bits);
    addNumbered(bits, Bit, QStringLiteral("Low"), 0);
    add(tag, Enums);
    addNumbered(root.get(), Tag, QStringLiteral("Other"), 0x1A3);

    IOTEST_COMPARE_BYTES(save(root.get()),
        head
            + "\n<zat16>\n"
              "  <tag name=\"Status\" id=\"0xC001\">\n"
              "    <bits>\n"
              "      <bit name=\"Low\" id=\"0\"/>\n"
              "    </bits>\n"
              "    <enums/>\n"
              "  </tag>\n"
              "  <tag name=\"Other\" id=\"0x01A3\"/>\n"
              "</zat16>\n");
}

void TestWriterXml::enumsDisplayInherited()
{
    const auto root = makeRoot();
    Item *tag = addNumbered(root.get(), Tag, QStringLiteral("Mode"), 0x1001);
    Item *enums = add(tag, Enums);
    setDisplay(enums, 3, 0);
    addNumbered(enums, Enum, QStringLiteral("Off"), 0);
    addNumbered(enums, Enum, QStringLiteral("On"), 10);

    IOTEST_COMPARE_BYTES(save(root.get()),
        head
            + "\n<zat16>\n"
              "  <tag name=\"Mode\" id=\"0x1001\">\n"
              "    <enums display=\"x\">\n"
              "      <enum name=\"Off\" id=\"0x0\"/>\n"
              "      <enum name=\"On\" id=\"0xA\"/>\n"
              "    </enums>\n"
              "  </tag>\n"
              "</zat16>\n");
}

void TestWriterXml::displayLettersNormalised()
{
    // "8b" comes back as "8y", "X" as "x"; a bare digit count is kept, since it pads decimal
    // numbers and reading padded decimal digits depends on it
    QString error;
    const QByteArray saved = resave("<zat16>\n"
                                    "<tag name=\"A\" id=\"0x1001\" display=\"8b\">\n"
                                    "<enums display=\"4\"/>\n"
                                    "<enums display=\"X\"/>\n"
                                    "<enums display=\"2X\"/>\n"
                                    "<enums display=\"q\"/>\n"
                                    "</tag>\n"
                                    "</zat16>\n",
        &error);
    QCOMPARE(error, QString());
    IOTEST_COMPARE_BYTES(saved,
        head
            + "\n<zat16>\n"
              "  <tag name=\"A\" id=\"0x1001\" display=\"8y\">\n"
              "    <enums display=\"4\"/>\n"
              "    <enums display=\"x\"/>\n"
              "    <enums display=\"2x\"/>\n"
              "    <enums/>\n"
              "  </tag>\n"
              "</zat16>\n");
}

void TestWriterXml::documentTypeDeclarationKept()
{
    const auto root = makeRoot();
    root->comment = QStringLiteral("<!DOCTYPE zat16>");
    IOTEST_COMPARE_BYTES(save(root.get()), head + "<!DOCTYPE zat16>\n<zat16/>\n");

    addNumbered(root.get(), Tag, QStringLiteral("A"), 1);
    IOTEST_COMPARE_BYTES(save(root.get()),
        head
            + "<!DOCTYPE zat16>\n"
              "<zat16>\n"
              "  <tag name=\"A\" id=\"0x0001\"/>\n"
              "</zat16>\n");
}

void TestWriterXml::documentTypeDeclarationFromFile()
{
    QString error;
    const QByteArray saved = resave("<?xml version=\"1.0\"?>\n"
                                    "<!DOCTYPE zat16 [\n"
                                    "<!ELEMENT zat16 ANY>\n"
                                    "]>\n"
                                    "\n"
                                    "<zat16>\n"
                                    "<tag name=\"A\" id=\"1\"/>\n"
                                    "</zat16>\n",
        &error);
    QCOMPARE(error, QString());
    // the declaration's text starts with the line break that stood before it
    IOTEST_COMPARE_BYTES(saved,
        head
            + "\n<!DOCTYPE zat16 [\n"
              "<!ELEMENT zat16 ANY>\n"
              "]>\n"
              "<zat16>\n"
              "  <tag name=\"A\" id=\"0x0001\"/>\n"
              "</zat16>\n");
}

void TestWriterXml::attributeOrder()
{
    const auto root = makeRoot();
    Item *tag = addNumbered(root.get(), Tag, QStringLiteral("All"), 0x2001);
    tag->comment = QStringLiteral("every attribute");
    tag->secure = true;
    setDisplay(tag, 3, 4);

    IOTEST_COMPARE_BYTES(save(root.get()),
        head
            + "\n<zat16>\n"
              "  <tag name=\"All\" id=\"0x2001\" comment=\"every attribute\" secure=\"true\" display=\"4x\"/>\n"
              "</zat16>\n");
}

void TestWriterXml::attributeConditions()
{
    const auto root = makeRoot();
    add(root.get(), Tag, QStringLiteral("NoId"));
    Item *nameless = addNumbered(root.get(), Tag, QString(), 0x1001);
    nameless->comment = QStringLiteral("nameless");
    Item *emptyName = addNumbered(root.get(), Tag, QStringLiteral(""), 0x1002);
    emptyName->secure = false;
    Item *digitsOnly = addNumbered(root.get(), Tag, QStringLiteral("DigitsOnly"), 0x1003);
    setDisplay(digitsOnly, 0, 4);
    Item *mode6 = addNumbered(root.get(), Tag, QStringLiteral("Mode6"), 0x1004);
    setDisplay(mode6, 6, 2);
    Item *modeMinus = addNumbered(root.get(), Tag, QStringLiteral("ModeMinus"), 0x1005);
    setDisplay(modeMinus, -1, 0);
    Item *secure = add(root.get(), Tag, QStringLiteral("Secure"));
    secure->secure = true;
    Item *zero = addNumbered(root.get(), Tag, QStringLiteral("Zero"), 0);
    Q_UNUSED(zero);

    IOTEST_COMPARE_BYTES(save(root.get()),
        head
            + "\n<zat16>\n"
              "  <tag name=\"NoId\"/>\n"
              "  <tag id=\"0x1001\" comment=\"nameless\"/>\n"
              "  <tag id=\"0x1002\"/>\n"
              "  <tag name=\"DigitsOnly\" id=\"0x1003\" display=\"4\"/>\n"
              "  <tag name=\"Mode6\" id=\"0x1004\"/>\n"
              "  <tag name=\"ModeMinus\" id=\"0x1005\"/>\n"
              "  <tag name=\"Secure\" secure=\"true\"/>\n"
              "  <tag name=\"Zero\" id=\"0x0000\"/>\n"
              "</zat16>\n");
}

void TestWriterXml::rootAttributes()
{
    // The root's comment is the document type declaration, never an attribute.
    const auto root = makeRoot();
    root->name = QStringLiteral("Device");
    root->id = 5;
    root->hasId = true;
    root->secure = true;
    setDisplay(root.get(), 2, 0);
    IOTEST_COMPARE_BYTES(
        save(root.get()), head + "\n<zat16 name=\"Device\" id=\"5\" secure=\"true\" display=\"u\"/>\n");
}

void TestWriterXml::displayLetters_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("digits");
    QTest::addColumn<QByteArray>("attribute");

    QTest::newRow("signed") << 1 << 0 << QByteArray(" display=\"d\"");
    QTest::newRow("unsigned") << 2 << 0 << QByteArray(" display=\"u\"");
    QTest::newRow("hexadecimal") << 3 << 0 << QByteArray(" display=\"x\"");
    QTest::newRow("octal") << 4 << 0 << QByteArray(" display=\"o\"");
    QTest::newRow("binary") << 5 << 0 << QByteArray(" display=\"y\"");
    QTest::newRow("signed 3") << 1 << 3 << QByteArray(" display=\"3d\"");
    QTest::newRow("unsigned 5") << 2 << 5 << QByteArray(" display=\"5u\"");
    QTest::newRow("hexadecimal 4") << 3 << 4 << QByteArray(" display=\"4x\"");
    QTest::newRow("octal 6") << 4 << 6 << QByteArray(" display=\"6o\"");
    QTest::newRow("binary 16") << 5 << 16 << QByteArray(" display=\"16y\"");
    QTest::newRow("not set") << 0 << 0 << QByteArray();
    QTest::newRow("digits without mode") << 0 << 8 << QByteArray(" display=\"8\"");
    QTest::newRow("mode 6") << 6 << 0 << QByteArray();
    QTest::newRow("mode -1") << -1 << 3 << QByteArray();
}

void TestWriterXml::displayLetters()
{
    QFETCH(int, mode);
    QFETCH(int, digits);
    QFETCH(QByteArray, attribute);

    const auto root = makeRoot();
    Item *tag = addNumbered(root.get(), Tag, QStringLiteral("T"), 0x1001);
    Item *bits = add(tag, Bits);
    setDisplay(bits, mode, digits);

    IOTEST_COMPARE_BYTES(save(root.get()),
        head
            + "\n<zat16>\n"
              "  <tag name=\"T\" id=\"0x1001\">\n"
              "    <bits"
            + attribute
            + "/>\n"
              "  </tag>\n"
              "</zat16>\n");
}

void TestWriterXml::idsInInheritedDisplayModes()
{
    const auto root = makeRoot();
    setDisplay(root.get(), 1, 0);

    // the root's signed decimal reaches the values of a tag without display
    Item *plain = addNumbered(root.get(), Tag, QStringLiteral("Plain"), 0x1001);
    Item *plainEnums = add(plain, Enums);
    addNumbered(plainEnums, Enum, QStringLiteral("Minus"), ~0ull);

    // the tag's octal mode with padding; the tag's own code stays hexadecimal
    Item *octal = addNumbered(root.get(), Tag, QStringLiteral("Octal"), 0x1002);
    setDisplay(octal, 4, 2);
    Item *octalEnums = add(octal, Enums);
    addNumbered(octalEnums, Enum, QStringLiteral("One"), 1);
    addNumbered(octalEnums, Enum, QStringLiteral("Eight"), 8);

    // the list's mode wins over the tag's
    Item *bitsTag = addNumbered(root.get(), Tag, QStringLiteral("Flags"), 0x7001);
    setDisplay(bitsTag, 3, 0);
    Item *bits = add(bitsTag, Bits);
    setDisplay(bits, 5, 8);
    addNumbered(bits, Bit, QStringLiteral("Five"), 5);
    Item *own = addNumbered(bits, Bit, QStringLiteral("Own"), 5);
    setDisplay(own, 2, 0);
    Item *enums = add(bitsTag, Enums);
    addNumbered(enums, Enum, QStringLiteral("Hex"), 255);

    // unsigned
    Item *unsignedTag = addNumbered(root.get(), Tag, QStringLiteral("Unsigned"), 0x1003);
    Item *unsignedEnums = add(unsignedTag, Enums);
    setDisplay(unsignedEnums, 2, 0);
    addNumbered(unsignedEnums, Enum, QStringLiteral("Max"), ~0ull);

    IOTEST_COMPARE_BYTES(save(root.get()),
        head
            + "\n<zat16 display=\"d\">\n"
              "  <tag name=\"Plain\" id=\"0x1001\">\n"
              "    <enums>\n"
              "      <enum name=\"Minus\" id=\"-1\"/>\n"
              "    </enums>\n"
              "  </tag>\n"
              "  <tag name=\"Octal\" id=\"0x1002\" display=\"2o\">\n"
              "    <enums>\n"
              "      <enum name=\"One\" id=\"0o01\"/>\n"
              "      <enum name=\"Eight\" id=\"0o10\"/>\n"
              "    </enums>\n"
              "  </tag>\n"
              "  <tag name=\"Flags\" id=\"0x7001\" display=\"x\">\n"
              "    <bits display=\"8y\">\n"
              "      <bit name=\"Five\" id=\"0y00000101\"/>\n"
              "      <bit name=\"Own\" id=\"5\" display=\"u\"/>\n"
              "    </bits>\n"
              "    <enums>\n"
              "      <enum name=\"Hex\" id=\"0xFF\"/>\n"
              "    </enums>\n"
              "  </tag>\n"
              "  <tag name=\"Unsigned\" id=\"0x1003\">\n"
              "    <enums display=\"u\">\n"
              "      <enum name=\"Max\" id=\"18446744073709551615\"/>\n"
              "    </enums>\n"
              "  </tag>\n"
              "</zat16>\n");
}

void TestWriterXml::digitsWithoutModeNotInherited()
{
    // A digit count without mode is passed over when looking up; the value keeps its own
    // (unset) display. The digit counts are written back, so that "005" reads as decimal again.
    const auto root = makeRoot();
    Item *tag = addNumbered(root.get(), Tag, QStringLiteral("T"), 0x1001);
    setDisplay(tag, 0, 4);
    Item *enums = add(tag, Enums);
    addNumbered(enums, Enum, QStringLiteral("Five"), 5);
    Item *padded = addNumbered(enums, Enum, QStringLiteral("Padded"), 5);
    setDisplay(padded, 0, 3);

    IOTEST_COMPARE_BYTES(save(root.get()),
        head
            + "\n<zat16>\n"
              "  <tag name=\"T\" id=\"0x1001\" display=\"4\">\n"
              "    <enums>\n"
              "      <enum name=\"Five\" id=\"5\"/>\n"
              "      <enum name=\"Padded\" id=\"005\" display=\"3\"/>\n"
              "    </enums>\n"
              "  </tag>\n"
              "</zat16>\n");
}

void TestWriterXml::commentsAndBlankLines()
{
    const auto root = makeRoot();
    addComment(root.get(), Tag, QStringLiteral(" first "));
    addBlank(root.get(), Tag);
    Item *tag = addNumbered(root.get(), Tag, QStringLiteral("A"), 0x1001);
    Item *bits = add(tag, Bits);
    addComment(bits, Bit, QStringLiteral("only a comment"));
    Item *enums = add(tag, Enums);
    addNumbered(enums, Enum, QStringLiteral("X"), 1);
    addBlank(enums, Enum);
    addComment(enums, Enum, QStringLiteral(" two\n       lines "));
    addNumbered(enums, Enum, QStringLiteral("Y"), 2);
    addBlank(root.get(), Tag);
    addNumbered(root.get(), Tag, QStringLiteral("B"), 0x1002);
    addBlank(root.get(), Tag);

    IOTEST_COMPARE_BYTES(save(root.get()),
        head
            + "\n<zat16>\n"
              "  <!-- first -->\n"
              "\n"
              "  <tag name=\"A\" id=\"0x1001\">\n"
              "    <bits>\n"
              "      <!--only a comment-->\n"
              "    </bits>\n"
              "    <enums>\n"
              "      <enum name=\"X\" id=\"1\"/>\n"
              "\n"
              "      <!-- two\n"
              "       lines -->\n"
              "      <enum name=\"Y\" id=\"2\"/>\n"
              "    </enums>\n"
              "  </tag>\n"
              "\n"
              "  <tag name=\"B\" id=\"0x1002\"/>\n"
              "\n"
              "</zat16>\n");
}

void TestWriterXml::escaping()
{
    const auto root = makeRoot();
    Item *tag = addNumbered(root.get(), Tag, QStringLiteral("Text"), 0x3001);
    tag->comment = QStringLiteral("say \"hi\" & <go> 'now'\ttab\nline\rreturn");

    IOTEST_COMPARE_BYTES(save(root.get()),
        head
            + "\n<zat16>\n"
              "  <tag name=\"Text\" id=\"0x3001\" comment=\"say &quot;hi&quot; &amp; &lt;go&gt; "
              "'now'&#9;tab&#10;line&#13;return\"/>\n"
              "</zat16>\n");
}

void TestWriterXml::nonAsciiText()
{
    const auto root = makeRoot();
    addComment(root.get(), Tag, QStringLiteral(" Gr\u00f6\u00dfe \u20ac "));
    Item *tag = addNumbered(root.get(), Tag, QStringLiteral("A"), 0x1001);
    tag->comment = QStringLiteral("\u00dcn\u00efc\u00f6d\u00e9 \u2713");

    IOTEST_COMPARE_BYTES(save(root.get()),
        head
            + "\n<zat16>\n"
              "  <!-- Gr\xc3\xb6\xc3\x9f"
              "e \xe2\x82\xac -->\n"
              "  <tag name=\"A\" id=\"0x1001\" comment=\"\xc3\x9cn\xc3\xaf"
              "c\xc3\xb6"
              "d\xc3\xa9 \xe2\x9c\x93\"/>\n"
              "</zat16>\n");
}

void TestWriterXml::charactersXmlCannotCarry()
{
    // Control characters, U+FFFF and lone surrogates cannot stand in XML: they become U+FFFD,
    // and the file still reads back.
    const auto root = makeRoot();
    Item *tag = addNumbered(root.get(), Tag, QStringLiteral("A"), 0x1001);
    tag->comment = QStringLiteral("a\x01" "b") + QChar(0xFFFF) + QChar(0xD800) + QStringLiteral("c\U0001F600");
    addComment(root.get(), Tag, QStringLiteral("bell\x07"));

    const QByteArray saved = save(root.get());
    IOTEST_COMPARE_BYTES(saved,
        head
            + "\n<zat16>\n"
              "  <tag name=\"A\" id=\"0x1001\" comment=\"a\xef\xbf\xbd"
              "b\xef\xbf\xbd\xef\xbf\xbd"
              "c\xf0\x9f\x98\x80\"/>\n"
              "  <!--bell\xef\xbf\xbd-->\n"
              "</zat16>\n");
    Parser parser;
    QVERIFY2(parser.parse(saved), qPrintable(parser.formatError()));
}

void TestWriterXml::commentLinesWithDashes()
{
    // A comment line cannot hold "--" or end with "-" in XML: a blank separates such dashes.
    const auto root = makeRoot();
    addComment(root.get(), Tag, QStringLiteral("a--b---c-"));
    addComment(root.get(), Tag, QStringLiteral("- ok -x"));

    const QByteArray saved = save(root.get());
    IOTEST_COMPARE_BYTES(saved,
        head
            + "\n<zat16>\n"
              "  <!--a- -b- - -c- -->\n"
              "  <!--- ok -x-->\n"
              "</zat16>\n");
    Parser parser;
    QVERIFY2(parser.parse(saved), qPrintable(parser.formatError()));
    const std::unique_ptr<Item> loaded(parser.takeRoot());
    QCOMPARE(loaded->child(0)->comment, QStringLiteral("a- -b- - -c- "));
    QCOMPARE(loaded->child(1)->comment, QStringLiteral("- ok -x"));
}

void TestWriterXml::itemsOfOtherTypesWriteNothing()
{
    const auto root = makeRoot();
    add(root.get(), Invalid, QStringLiteral("X"), 1, true);
    add(root.get(), ItemType(9), QStringLiteral("Y"));
    IOTEST_COMPARE_BYTES(save(root.get()), head + "\n<zat16/>\n");

    // a tag whose only child writes nothing is closed in the short form
    const auto second = makeRoot();
    Item *tag = addNumbered(second.get(), Tag, QStringLiteral("A"), 0x1001);
    add(tag, Invalid, QStringLiteral("Z"));
    IOTEST_COMPARE_BYTES(save(second.get()),
        head
            + "\n<zat16>\n"
              "  <tag name=\"A\" id=\"0x1001\"/>\n"
              "</zat16>\n");
}

void TestWriterXml::writeIndent()
{
    const int depths[] = { 0, 1, 2, 3, 5 };
    const QByteArray expected[] = { "", "\n", "\n  ", "\n    ", "\n        " };
    for (int i = 0; i < 5; ++i) {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        WriterXml writer;
        writer.xml = new QXmlStreamWriter(&buffer);
        writer.depth = depths[i];
        writer.writeIndent();
        delete writer.xml;
        writer.xml = nullptr;
        QCOMPARE(buffer.data(), expected[i]);
    }
}

void TestWriterXml::writeItemAtDepthZero()
{
    // Without a depth nothing is indented, and blank lines write nothing.
    Item tag;
    tag.type = Tag;
    tag.name = QStringLiteral("A");
    tag.id = 0x1001;
    tag.hasId = true;
    Item *enums = add(&tag, Enums);
    addNumbered(enums, Enum, QStringLiteral("X"), 1);
    addBlank(enums, Enum);
    addComment(enums, Enum, QStringLiteral("c"));
    addBlank(&tag, Tag);

    bool result = false;
    QCOMPARE(writeAlone(&tag, 0, &result),
        QByteArray("<tag name=\"A\" id=\"0x1001\"><enums><enum name=\"X\" id=\"1\"/><!--c--></enums></tag>"));
    QVERIFY(result);

    Item blank;
    blank.type = Enum;
    result = true;
    QCOMPARE(writeAlone(&blank, 0, &result), QByteArray());
    QVERIFY(!result);

    result = false;
    QCOMPARE(writeAlone(&blank, 2, &result), QByteArray("\n"));
    QVERIFY(result);

    Item comment;
    comment.type = Bit;
    comment.comment = QStringLiteral("note");
    result = false;
    QCOMPARE(writeAlone(&comment, 0, &result), QByteArray("<!--note-->"));
    QVERIFY(result);
    QCOMPARE(writeAlone(&comment, 3, &result), QByteArray("\n    <!--note-->"));

    Item other;
    other.name = QStringLiteral("X");
    result = true;
    QCOMPARE(writeAlone(&other, 1, &result), QByteArray());
    QVERIFY(!result);

    Item lone;
    lone.type = Bits;
    result = false;
    QCOMPARE(writeAlone(&lone, 2, &result), QByteArray("\n  <bits/>"));
    QVERIFY(result);
}

void TestWriterXml::writeToFile()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("out.zatdef"));
    QVERIFY(IoTest::writeFile(path,
        "old content that is longer than the new one\n"
        "old content that is longer than the new one\n"
        "old content that is longer than the new one\n"));

    const auto root = makeRoot();
    addNumbered(root.get(), Tag, QStringLiteral("A"), 0x1001);
    WriterXml writer;
    QVERIFY(writer.write(root.get(), path));
    QVERIFY(writer.fileName.isNull());
    QVERIFY(writer.device == nullptr);
    QVERIFY(writer.xml == nullptr);
    QVERIFY(writer.error.isEmpty());
    IOTEST_COMPARE_BYTES(IoTest::readFile(path),
        head
            + "\n<zat16>\n"
              "  <tag name=\"A\" id=\"0x1001\"/>\n"
              "</zat16>\n");
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList({ QStringLiteral("out.zatdef") }));
}

void TestWriterXml::writeToMissingDirectory()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("missing/out.zatdef"));
    const auto root = makeRoot();
    WriterXml writer;
    QVERIFY(!writer.write(root.get(), path));
    QCOMPARE(writer.formatError(), QStringLiteral("Failed to open output file ") + path + QStringLiteral("."));
    QVERIFY(!QFile::exists(path));
}

void TestWriterXml::writeToStandardOutput()
{
    const auto root = makeRoot();
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QTemporaryFile capture;
    QVERIFY(capture.open());

    fflush(stdout);
    const int saved = dup(1);
    dup2(capture.handle(), 1);
    bool ok = false;
    {
        WriterXml writer;
        ok = writer.write(root.get(), QStringLiteral("-"));
    }
    fflush(stdout);
    dup2(saved, 1);
    close(saved);

    QVERIFY(ok);
    capture.seek(0);
    IOTEST_COMPARE_BYTES(capture.readAll(), head + "\n<zat16/>\n");
    QVERIFY(!QFile::exists(QStringLiteral("-")));
    QVERIFY(!QFile::exists(dir.filePath(QStringLiteral("-"))));
}

void TestWriterXml::encodeLeavesFrameClean()
{
    const auto root = makeRoot();
    WriterXml writer;
    QCOMPARE(writer.depth, 0);
    QVERIFY(writer.xml == nullptr);
    const QByteArray first = writer.encode(root.get());
    QVERIFY(writer.fileName.isNull());
    QVERIFY(writer.device == nullptr);
    QVERIFY(writer.xml == nullptr);
    // the writer can be used again and gives the same bytes
    QCOMPARE(writer.encode(root.get()), first);
    QCOMPARE(first, head + "\n<zat16/>\n");
}

QTEST_GUILESS_MAIN(TestWriterXml)

#include "tst_writerxml.moc"
