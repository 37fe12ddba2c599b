// The check that a saved definitions text gives back its tree: what passes (blank lines that
// come and go, the reader's order of a tag's lists), what is refused, and how the first entry
// that would not come back is named.

#include "item.h"
#include "makeitem.h"
#include "parser.h"
#include "readbackcheck.h"
#include "writerxml.h"

#include <QtTest>

#include <memory>

using namespace ZAT16;

namespace {

Item *add(Item *parent,
          ItemType type,
          const QString &name = QString(),
          bool hasId = false,
          quint64 id = 0,
          const QString &comment = QString())
{
    Item *item = TestItems::makeItem(type, name, hasId, id, comment);
    if (parent)
        parent->appendChild(item);
    return item;
}

std::unique_ptr<Item> newRoot()
{
    return std::unique_ptr<Item>(add(nullptr, Root));
}

QString checked(const Item *root)
{
    WriterXml writer;
    return ReadBackCheck::check(root, writer.encode(root));
}

std::unique_ptr<Item> loadFile(const QString &path)
{
    Parser parser;
    if (!parser.parse(path))
        return nullptr;
    return std::unique_ptr<Item>(parser.takeRoot());
}

} // namespace

class TestReadBackCheck : public QObject
{
    Q_OBJECT

private slots:
    void examplesComeBack_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("weather station") << QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef");
        QTest::newRow("battery charger") << QStringLiteral(ZAT16_EXAMPLES "/battery-charger.zatdef");
    }

    void examplesComeBack()
    {
        QFETCH(QString, path);
        const std::unique_ptr<Item> root = loadFile(path);
        QVERIFY(root);
        QCOMPARE(checked(root.get()), QString());
    }

    // Blank lines may come and go, and a tag's bit list comes back before its enumeration list.
    void whatMayChange()
    {
        const std::unique_ptr<Item> root = newRoot();
        add(root.get(), Tag, QStringLiteral("A"), true, 0x1001);
        add(root.get(), Tag);
        add(root.get(), Tag);
        add(root.get(), Tag);
        Item *tag = add(root.get(), Tag, QStringLiteral("B"), true, 0x1002);
        Item *values = add(tag, Enums);
        add(values, Enum, QStringLiteral("One"), true, 1);
        add(values, Enum);
        add(values, Enum);
        Item *bits = add(tag, Bits);
        add(bits, Bit, QStringLiteral("Ready"), true, 0);
        QCOMPARE(checked(root.get()), QString());
    }

    void namesOfEntries()
    {
        const std::unique_ptr<Item> root = newRoot();
        Item *power = add(root.get(), Tag, QStringLiteral("Power"), true, 0x2001);
        Item *coded = add(root.get(), Tag, QString(), true, 0x1A3);
        Item *bare = add(root.get(), Tag);
        Item *values = add(power, Enums);
        Item *ten = add(values, Enum, QStringLiteral("Ten"), true, 10);
        Item *five = add(values, Enum, QString(), true, 5);
        Item *bits = add(coded, Bits);
        Item *ready = add(bits, Bit, QStringLiteral("Ready"), true, 0);
        Item *note = add(values,
                         Enum,
                         QString(),
                         false,
                         0,
                         QStringLiteral("a note that is much longer than forty characters, really"));
        Item *bareList = add(bare, Bits);
        QCOMPARE(ReadBackCheck::describe(root.get()), QStringLiteral("the document"));
        QCOMPARE(ReadBackCheck::describe(power), QStringLiteral("the tag \"Power\""));
        QCOMPARE(ReadBackCheck::describe(coded), QStringLiteral("the tag 0x01A3"));
        QCOMPARE(ReadBackCheck::describe(bare), QStringLiteral("a tag without name or code"));
        QCOMPARE(ReadBackCheck::describe(values), QStringLiteral("the enumeration list of tag \"Power\""));
        QCOMPARE(ReadBackCheck::describe(ten), QStringLiteral("the value \"Ten\" of tag \"Power\""));
        QCOMPARE(ReadBackCheck::describe(five), QStringLiteral("the value 5 of tag \"Power\""));
        QCOMPARE(ReadBackCheck::describe(bits), QStringLiteral("the bit list of tag 0x01A3"));
        QCOMPARE(ReadBackCheck::describe(ready), QStringLiteral("the bit \"Ready\" of tag 0x01A3"));
        QCOMPARE(ReadBackCheck::describe(note),
                 QStringLiteral("the comment \"a note that is much longer than forty c") + QChar(0x2026)
                     + QStringLiteral("\" of tag \"Power\""));
        QCOMPARE(ReadBackCheck::describe(bareList), QStringLiteral("the bit list of a tag without name or code"));
    }

    // The entry is found where the reader stopped: at a start tag, at the end tag of a tag with
    // children, deep inside lists.
    void refusals_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("expected");
        QTest::newRow("reserved tag name with children")
            << 0 << "the tag \"Tag\" would not load again (The name \"Tag\" is reserved.)";
        QTest::newRow("value name starting with a digit")
            << 1 << "the value \"2b\" of tag \"Mode\" would not load again (Name must not start with a digit.)";
        QTest::newRow("tag code out of range") << 2 << "the tag \"Big\" would not load again (Tag out of range)";
        QTest::newRow("comment inside a tag")
            << 3
            << "the comment \"lost\" of tag \"Mode\" would not load again (a comment line inside a tag is not kept)";
        QTest::newRow("negative digit count") << 4 << "the value \"One\" of tag \"Mode\" would not load again";
        QTest::newRow("invalid characters in a bit name")
            << 5 << "the bit \"a-b\" of tag \"Mode\" would not load again (Invalid characters in name.)";
        QTest::newRow("a list with only a comment") << 6
                                                    << "the bit list of tag \"Extra\" would not load again (a list "
                                                       "with only a comment is saved as a comment line)";
        QTest::newRow("a comment with two dashes")
            << 7
            << "the comment \"-- power --\" would not load again (a comment line cannot hold \"--\" or end with \"-\")";
        QTest::newRow("a tag with a comment and only blank lines below it")
            << 9
            << "a tag without name or code would not load again (an entry with only a comment is saved as a comment "
               "line)";
        QTest::newRow("a value with only a comment outside a list")
            << 10
            << "the comment \"misplaced\" would not load again (an entry with only a comment is saved as a comment "
               "line)";
        QTest::newRow("a comment holding a lone surrogate")
            << 11
            << QStringLiteral("the tag \"Last\" would not load again (it holds characters that a file cannot carry)");
        QTest::newRow("a secure tag with only a comment")
            << 8
            << "the comment \"secret\" would not load again (an entry with only a comment is saved as a comment line, "
               "without its other settings)";
    }

    void refusals()
    {
        QFETCH(int, kind);
        QFETCH(QString, expected);
        const std::unique_ptr<Item> root = newRoot();
        add(root.get(), Tag, QStringLiteral("First"), true, 0x1000);
        Item *mode = add(root.get(), Tag, kind == 0 ? QStringLiteral("Tag") : QStringLiteral("Mode"), true, 0x1001);
        Item *values = add(mode, Enums);
        Item *one = add(values, Enum, QStringLiteral("One"), true, 1);
        add(values, Enum, kind == 1 ? QStringLiteral("2b") : QStringLiteral("Two"), true, 2);
        Item *bits = add(mode, Bits);
        add(bits, Bit, kind == 5 ? QStringLiteral("a-b") : QStringLiteral("Ready"), true, 0);
        if (kind == 2)
            add(add(root.get(), Tag, QStringLiteral("Big"), true, 0x10000), Bits);
        if (kind == 3)
            add(mode, Tag, QString(), false, 0, QStringLiteral("lost"));
        if (kind == 4)
            one->display = { 3, -2 };
        if (kind == 6)
            add(add(root.get(), Tag, QStringLiteral("Extra"), true, 0x1003),
                Bits,
                QString(),
                false,
                0,
                QStringLiteral("flags later"));
        if (kind == 7)
            add(root.get(), Tag, QString(), false, 0, QStringLiteral("-- power --"));
        if (kind == 9)
            add(add(root.get(), Tag, QString(), false, 0, QStringLiteral("c")), Tag);
        if (kind == 8)
            add(root.get(), Tag, QString(), false, 0, QStringLiteral("secret"))->secure = true;
        if (kind == 10)
            add(root.get(), Enum, QString(), false, 0, QStringLiteral("misplaced"));
        Item *last = add(root.get(), Tag, QStringLiteral("Last"), true, 0x1002);
        if (kind == 11)
            last->comment = QStringLiteral("half a pair ") + QChar(0xD800);
        QCOMPARE(checked(root.get()), expected);
    }

    // Text that is not a definitions file at all.
    void notADefinitionsText()
    {
        const std::unique_ptr<Item> root = newRoot();
        add(root.get(), Tag, QStringLiteral("A"), true, 0x1001);
        QCOMPARE(ReadBackCheck::check(root.get(), QByteArray("<?xml version=\"1.0\"?>\n")),
                 QStringLiteral("the document would not load again (No decodable data found)"));
        QCOMPARE(ReadBackCheck::check(root.get(), QByteArray("<zat16/>")),
                 QStringLiteral("the tag \"A\" would not load again"));
    }
};

QTEST_GUILESS_MAIN(TestReadBackCheck)
#include "tst_readbackcheck.moc"
