// Tests of the definitions file writer: the exact saved bytes.

#include "iotesthelpers.h"
#include "item.h"
#include "parser.h"
#include "writerxml.h"

#include <QtTest>

#include <QBuffer>
#include <QRandomGenerator>
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
    writer.device = &buffer;
    writer.depth = depth;
    *result = writer.writeItem(item);
    writer.device = nullptr;
    return buffer.data();
}

// The writer as it was built on QXmlStreamWriter, kept here as the reference for the bytes of
// every document: the saved text, including what happens to characters that XML cannot carry,
// must not change.
class StreamWriterReference : public Writer
{
public:
    bool writeDefinitions(const Item *root) override
    {
        QXmlStreamWriter writer(device);
        xml = &writer;
        xml->setAutoFormatting(false);
        depth = 1;
        xml->writeStartDocument(QStringLiteral("1.0"));
        device->write(" <!-- -*- nxml -*- -->");
        if (!root->comment.isEmpty())
            xml->writeDTD(xmlText(root->comment));
        writeItem(root);
        xml->writeCharacters(QStringLiteral("\n"));
        xml = nullptr;
        return !writer.hasError();
    }

private:
    static QString xmlText(const QString &text)
    {
        QString result;
        for (qsizetype i = 0; i < text.size(); ++i) {
            const QChar c = text.at(i);
            if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
                result += c;
                result += text.at(++i);
                continue;
            }
            const char16_t u = c.unicode();
            const bool ok
                = u == 0x9 || u == 0xA || u == 0xD || (u >= 0x20 && u <= 0xD7FF) || (u >= 0xE000 && u <= 0xFFFD);
            result += ok ? c : QChar(QChar::ReplacementCharacter);
        }
        return result;
    }

    static QString commentText(const QString &text)
    {
        const QString result = xmlText(text);
        QString spaced;
        for (qsizetype i = 0; i < result.size(); ++i) {
            spaced += result.at(i);
            if (result.at(i) == QLatin1Char('-') && (i + 1 == result.size() || result.at(i + 1) == QLatin1Char('-')))
                spaced += QLatin1Char(' ');
        }
        return spaced;
    }

    void writeIndent()
    {
        if (depth != 0)
            xml->writeCharacters(QLatin1Char('\n') + QString(2 * depth - 2, QLatin1Char(' ')));
    }

    bool writeItem(const Item *item)
    {
        if (item->isComment()) {
            writeIndent();
            xml->writeComment(commentText(item->comment));
            return true;
        }
        if (item->isNewline()) {
            if (depth == 0)
                return false;
            xml->writeCharacters(QStringLiteral("\n"));
            return true;
        }
        static const char *const elements[] = { "zat16", "tag", "enums", "enum", "bits", "bit" };
        if (item->type < Root || item->type > Bit)
            return false;
        writeIndent();
        xml->writeStartElement(QLatin1String(elements[item->type]));
        if (!item->name.isEmpty())
            xml->writeAttribute(QStringLiteral("name"), item->name);
        if (item->hasId)
            xml->writeAttribute(QStringLiteral("id"), item->formatId());
        if (item->type != Root && !item->comment.isEmpty())
            xml->writeAttribute(QStringLiteral("comment"), xmlText(item->comment));
        if (item->secure)
            xml->writeAttribute(QStringLiteral("secure"), QStringLiteral("true"));
        const bool hasMode = item->display.mode >= 1 && item->display.mode <= 5;
        if (hasMode || (item->display.mode == 0 && item->display.digits != 0)) {
            QString display;
            if (item->display.digits != 0)
                display = QString::number(item->display.digits);
            if (hasMode)
                display += QLatin1Char("duxoy"[item->display.mode - 1]);
            xml->writeAttribute(QStringLiteral("display"), display);
        }
        const int saved = depth;
        if (depth != 0)
            ++depth;
        bool wroteChild = false;
        for (const Item *child : item->children) {
            if (writeItem(child))
                wroteChild = true;
        }
        depth = saved;
        if (wroteChild)
            writeIndent();
        xml->writeEndElement();
        return true;
    }

    QXmlStreamWriter *xml = nullptr;
    int depth = 0;
};

// Runs writeDefinitions on a buffer, so that the bytes of a failed write can be compared too.
template<typename W>
QByteArray writeRaw(W &writer, const Item *root, bool *ok)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly | QIODevice::Text);
    writer.device = &buffer;
    *ok = writer.writeDefinitions(root);
    writer.device = nullptr;
    buffer.close();
    return bytes;
}

// Random texts: mostly plain, some with markup characters, whitespace, control characters,
// non-ASCII letters, surrogate pairs, lone surrogates and the noncharacters U+FFFE and U+FFFF.
class RandomText
{
public:
    explicit RandomText(quint32 seed)
        : m_random(seed)
    {
    }

    int bounded(int n) { return int(m_random.bounded(quint32(n))); }

    QString text(int maxLength)
    {
        static const char16_t odd[]
            = { u'<', u'>',   u'&',   u'"',   u'\'',  u'\t',  u'\n',  u'\r',  0x01,   0x0B,   0x0C,   0x1F, 0x7F, 0x80,
                0xE9, 0x20AC, 0xD7FF, 0xE000, 0xFFFD, 0xFFFE, 0xFFFF, 0xD83D, 0xDE00, 0xDBFF, 0xDC00, u'-', u' ' };
        const int length = bounded(maxLength + 1);
        const bool plain = bounded(4) != 0;
        QString result;
        for (int i = 0; i < length; ++i) {
            const int pick = bounded(10);
            if (plain || pick < 5) {
                result += QLatin1Char("abcXYZ_019 -"[bounded(12)]);
            } else if (pick < 7) {
                result += QChar(0xD83D);
                result += QChar(0xDE00 + bounded(64));
            } else {
                result += QChar(odd[bounded(int(sizeof(odd) / sizeof(odd[0])))]);
            }
        }
        return result;
    }

private:
    QRandomGenerator m_random;
};

Item *randomItem(RandomText &random, Item *parent, ItemType type, int depth)
{
    auto *item = new Item;
    item->type = type;
    const int shape = random.bounded(10);
    if (shape == 0) {
        item->comment = random.text(12); // a comment line, or a blank line when empty
    } else if (shape == 1 && type != Root) {
        // a blank line
    } else {
        if (random.bounded(5) != 0)
            item->name = random.text(10);
        if (random.bounded(5) != 0) {
            item->hasId = true;
            item->id = random.bounded(3) == 0
                ? (quint64(random.bounded(1 << 30)) << 34) ^ quint64(random.bounded(1 << 30))
                : quint64(random.bounded(5000));
        }
        if (random.bounded(2) == 0)
            item->comment = random.text(16);
        item->secure = random.bounded(8) == 0;
        if (random.bounded(4) == 0) {
            item->display.mode = random.bounded(7);
            item->display.digits = random.bounded(4) == 0 ? random.bounded(80) : 0;
        }
        if (random.bounded(30) == 0)
            item->type = random.bounded(2) ? ZAT16::Invalid : ItemType(9);
    }
    if (parent)
        parent->appendChild(item);
    if (depth > 0 && (item->type == Tag || item->type == Enums || item->type == Bits || item->type == Root)) {
        const ItemType childType = item->type == Tag ? (random.bounded(2) ? Enums : Bits)
            : item->type == Enums                    ? Enum
            : item->type == Bits                     ? Bit
                                                     : Tag;
        const int children = random.bounded(item->type == Tag ? 3 : 6);
        for (int i = 0; i < children; ++i)
            randomItem(random, item, childType, depth - 1);
    }
    return item;
}

// A device that takes the first `limit` bytes and refuses every write after them.
class RefusingDevice : public QIODevice
{
public:
    explicit RefusingDevice(qint64 limit)
        : m_limit(limit)
    {
        open(QIODevice::WriteOnly);
    }
    QByteArray taken;

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *data, qint64 size) override
    {
        if (taken.size() + size > m_limit)
            return -1;
        taken.append(data, size);
        return size;
    }

private:
    qint64 m_limit;
};

} // namespace

class TestWriterXml : public QObject
{
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
    void sameBytesAsStreamWriter_data();
    void sameBytesAsStreamWriter();
    void valuesAsStreamWriter();
    void refusedWrites();
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

    IOTEST_COMPARE_BYTES(
        save(root.get()),
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
    IOTEST_COMPARE_BYTES(save(root.get()),
                         head + "\n<zat16 name=\"Device\" id=\"5\" secure=\"true\" display=\"u\"/>\n");
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
    tag->comment = QStringLiteral("a\x01"
                                  "b")
        + QChar(0xFFFF) + QChar(0xD800) + QStringLiteral("c\U0001F600");
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
        writer.device = &buffer;
        writer.depth = depths[i];
        writer.writeIndent();
        writer.device = nullptr;
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
    const QByteArray first = writer.encode(root.get());
    QVERIFY(writer.fileName.isNull());
    QVERIFY(writer.device == nullptr);
    // the writer can be used again and gives the same bytes
    QCOMPARE(writer.encode(root.get()), first);
    QCOMPARE(first, head + "\n<zat16/>\n");
}

void TestWriterXml::sameBytesAsStreamWriter_data()
{
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<int>("trees");
    QTest::addColumn<int>("tags");

    QTest::newRow("small trees, seed 1") << 1u << 300 << 4;
    QTest::newRow("small trees, seed 77") << 77u << 300 << 4;
    QTest::newRow("trees of 40 tags, seed 5") << 5u << 40 << 40;
    // More than one piece of text goes to the device.
    QTest::newRow("one tree of 3000 tags, seed 9") << 9u << 1 << 3000;
}

void TestWriterXml::sameBytesAsStreamWriter()
{
    QFETCH(quint32, seed);
    QFETCH(int, trees);
    QFETCH(int, tags);

    RandomText random(seed);
    int failed = 0;
    for (int t = 0; t < trees; ++t) {
        std::unique_ptr<Item> root(new Item);
        root->type = Root;
        if (random.bounded(3) == 0)
            root->comment = random.bounded(2) ? QStringLiteral("<!DOCTYPE zat16>") : random.text(8);
        for (int i = 0; i < tags; ++i)
            randomItem(random, root.get(), Tag, 2);

        StreamWriterReference reference;
        WriterXml writer;
        bool expectedOk = false;
        bool ok = false;
        const QByteArray expected = writeRaw(reference, root.get(), &expectedOk);
        const QByteArray actual = writeRaw(writer, root.get(), &ok);
        IOTEST_COMPARE_BYTES(actual, expected);
        QCOMPARE(ok, expectedOk);
        QCOMPARE(writer.encode(root.get()), expectedOk ? expected : QByteArray());
        if (!ok)
            ++failed;
    }
    // The random texts reach the failing cases, yet most documents are written.
    if (trees > 100) {
        QVERIFY(failed > 0);
        QVERIFY(failed < trees);
    }
}

void TestWriterXml::valuesAsStreamWriter()
{
    // Each random text as a name, as the comment of a tag and of a comment line, and as the
    // document type declaration, one document each.
    // First the cases around surrogates: a pair parted only by characters that are dropped
    // stays a pair; parted by markup, reversed or doubled it does not.
    const QList<QString> chosen = {
        QString::fromUtf16(u"a\xD83D\x01\xDE00"
                           u"b"),
        QString::fromUtf16(u"a\xD83D\xFFFE\x0B\xDE00"),
        QString::fromUtf16(u"\xD83D<\xDE00"),
        QString::fromUtf16(u"\xDE00\xD83D"),
        QString::fromUtf16(u"ab\xD83D"),
        QString::fromUtf16(u"\xD83D\xD83D\xDE00"),
        QString::fromUtf16(u"\xD83D\xDE00\xDE00"),
        QString::fromUtf16(u"\x0B\x0C\xFFFF\x7F"),
        QString::fromUtf16(u"\t\n\r<&>\"'"),
    };
    RandomText random(2024);
    int failed = 0;
    for (int i = 0; i < 5000 + chosen.size(); ++i) {
        const QString text = i < chosen.size() ? chosen.at(i) : random.text(24);
        std::unique_ptr<Item> root(new Item);
        root->type = Root;
        root->comment = text;
        Item *tag = add(root.get(), Tag, text, 0x1001, true);
        tag->comment = text;
        addComment(root.get(), Tag, text);
        add(root.get(), Tag, QStringLiteral("After"), 0x1002, true)->comment = QStringLiteral("a<b");

        StreamWriterReference reference;
        WriterXml writer;
        bool expectedOk = false;
        bool ok = false;
        const QByteArray expected = writeRaw(reference, root.get(), &expectedOk);
        const QByteArray actual = writeRaw(writer, root.get(), &ok);
        if (actual != expected || ok != expectedOk)
            qWarning() << "text" << text;
        IOTEST_COMPARE_BYTES(actual, expected);
        QCOMPARE(ok, expectedOk);
        if (!ok)
            ++failed;
    }
    QVERIFY(failed > 0);
}

void TestWriterXml::refusedWrites()
{
    const auto root = makeRoot();
    for (int i = 0; i < 2000; ++i)
        addNumbered(root.get(), Tag, QStringLiteral("Name%1").arg(i), 0x1000 + i)->comment = QStringLiteral("comment");
    WriterXml writer;
    const QByteArray whole = writer.encode(root.get());
    QVERIFY(whole.size() > 100000);

    // Refused at once, after a first piece, and not at all.
    const qint64 limits[] = { 0, whole.size() / 2, whole.size() };
    for (qint64 limit : limits) {
        RefusingDevice device(limit);
        writer.device = &device;
        const bool ok = writer.writeDefinitions(root.get());
        writer.device = nullptr;
        QCOMPARE(ok, limit == whole.size());
        QVERIFY(whole.startsWith(device.taken));
    }
}

QTEST_GUILESS_MAIN(TestWriterXml)

#include "tst_writerxml.moc"
