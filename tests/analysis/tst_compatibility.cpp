// Tests of the compatibility report: each kind of breaking change and addition with its exact
// text, what is not a change (comments, display, order), the report's layout, and two files of
// 100,000 tags, to show that large trees are handled (speed is the benchmark's business).

#include "bodyparser.h"
#include "compatibility.h"
#include "item.h"

#include <QtTest>

#include <memory>

using namespace ZAT16;
using TestTrees::parseBody;

namespace {

QStringList texts(const QList<CompatibilityReport::Change> &changes)
{
    QStringList list;
    for (const CompatibilityReport::Change &change : changes)
        list << change.text;
    return list;
}

const QByteArray base
    = "<tag name=\"Power\" id=\"0x2001\"/>"
      "<tag name=\"Mode\" id=\"0x1002\"><enums><enum name=\"Off\" id=\"0\"/><enum name=\"On\" id=\"1\"/></enums></tag>"
      "<tag name=\"Flags\" id=\"0x7001\"><bits><bit name=\"Ready\" id=\"0\"/><bit name=\"Fault\" "
      "id=\"4\"/></bits></tag>";

} // namespace

class TestCompatibility : public QObject
{
    Q_OBJECT

private slots:
    void changes_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");
        QTest::addColumn<QStringList>("breaks");
        QTest::addColumn<QStringList>("additions");

        QTest::newRow("identical") << base << base << QStringList() << QStringList();
        QTest::newRow("comments, display, secure flag and order do not matter")
            << base
            << QByteArray("<!-- reordered -->\n"
                          "<tag name=\"Flags\" id=\"0x7001\" comment=\"new\"><bits display=\"x\"><bit name=\"Fault\" "
                          "id=\"0x4\"/>"
                          "<bit name=\"Ready\" id=\"0\"/></bits></tag>"
                          "<tag name=\"Mode\" id=\"4098\" secure=\"true\"><enums display=\"4u\"><enum name=\"Off\" "
                          "id=\"0000\"/>"
                          "<enum name=\"On\" id=\"0001\"/></enums></tag>"
                          "<tag name=\"Power\" id=\"0x2001\"/>")
            << QStringList() << QStringList();
        QTest::newRow("tag removed") << base
                                     << QByteArray("<tag name=\"Mode\" id=\"0x1002\"><enums><enum name=\"Off\" "
                                                   "id=\"0\"/><enum name=\"On\" id=\"1\"/></enums></tag>"
                                                   "<tag name=\"Flags\" id=\"0x7001\"><bits><bit name=\"Ready\" "
                                                   "id=\"0\"/><bit name=\"Fault\" id=\"4\"/></bits></tag>")
                                     << QStringList { "Tag removed: Power (0x2001)" } << QStringList();
        QTest::newRow("tag code changed")
            << QByteArray("<tag name=\"Power\" id=\"0x2001\"/>") << QByteArray("<tag name=\"Power\" id=\"0x2005\"/>")
            << QStringList { "Tag code changed: Power 0x2001 -> 0x2005" } << QStringList();
        QTest::newRow("tag type changed")
            << QByteArray("<tag name=\"Speed\" id=\"0x1006\"/>") << QByteArray("<tag name=\"Speed\" id=\"0x3006\"/>")
            << QStringList { "Tag type changed: Speed 0x1006 (Integer) -> 0x3006 (String)" } << QStringList();
        QTest::newRow("tag type changed to an extended type")
            << QByteArray("<tag name=\"Spot\" id=\"0x0001\"/>") << QByteArray("<tag name=\"Spot\" id=\"0x8001\"/>")
            << QStringList { "Tag type changed: Spot 0x0001 (Binary) -> 0x8001 (ExtPoint)" } << QStringList();
        QTest::newRow("tag type changed to an unnamed type")
            << QByteArray("<tag name=\"Odd\" id=\"0x9001\"/>") << QByteArray("<tag name=\"Odd\" id=\"0xA001\"/>")
            << QStringList { "Tag type changed: Odd 0x9001 (NetworkAddress) -> 0xA001 (type 10)" } << QStringList();
        QTest::newRow("code reused by a different name")
            << QByteArray("<tag name=\"Humidity\" id=\"0x1003\"/>")
            << QByteArray("<tag name=\"Dewpoint\" id=\"0x1003\"/>")
            << QStringList { "Tag removed: Humidity (0x1003)", "Tag code reused: 0x1003 was Humidity, is now Dewpoint" }
            << QStringList();
        QTest::newRow("code taken over from a tag that moved")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"/>")
            << QByteArray("<tag name=\"B\" id=\"0x1001\"/><tag name=\"A\" id=\"0x1002\"/>")
            << QStringList { "Tag code changed: A 0x1001 -> 0x1002", "Tag code reused: 0x1001 was A, is now B" }
            << QStringList();
        QTest::newRow("enumeration value changed")
            << base
            << QByteArray("<tag name=\"Power\" id=\"0x2001\"/>"
                          "<tag name=\"Mode\" id=\"0x1002\"><enums><enum name=\"Off\" id=\"0\"/><enum name=\"Standby\" "
                          "id=\"1\"/>"
                          "<enum name=\"On\" id=\"2\"/></enums></tag>"
                          "<tag name=\"Flags\" id=\"0x7001\"><bits><bit name=\"Ready\" id=\"0\"/><bit name=\"Fault\" "
                          "id=\"4\"/></bits></tag>")
            << QStringList { "Enum value changed: Mode.On 1 -> 2" }
            << QStringList { "Enum value added: Mode.Standby (1)" };
        QTest::newRow("enumeration value removed")
            << base
            << QByteArray("<tag name=\"Power\" id=\"0x2001\"/>"
                          "<tag name=\"Mode\" id=\"0x1002\"><enums><enum name=\"Off\" id=\"0\"/></enums></tag>"
                          "<tag name=\"Flags\" id=\"0x7001\"><bits><bit name=\"Ready\" id=\"0\"/><bit name=\"Fault\" "
                          "id=\"4\"/></bits></tag>")
            << QStringList { "Enum value removed: Mode.On (1)" } << QStringList();
        QTest::newRow("whole enumeration list removed")
            << base
            << QByteArray("<tag name=\"Power\" id=\"0x2001\"/><tag name=\"Mode\" id=\"0x1002\"/>"
                          "<tag name=\"Flags\" id=\"0x7001\"><bits><bit name=\"Ready\" id=\"0\"/><bit name=\"Fault\" "
                          "id=\"4\"/></bits></tag>")
            << QStringList { "Enum value removed: Mode.Off (0)", "Enum value removed: Mode.On (1)" } << QStringList();
        QTest::newRow("bit number changed and bit removed")
            << base
            << QByteArray("<tag name=\"Power\" id=\"0x2001\"/>"
                          "<tag name=\"Mode\" id=\"0x1002\"><enums><enum name=\"Off\" id=\"0\"/><enum name=\"On\" "
                          "id=\"1\"/></enums></tag>"
                          "<tag name=\"Flags\" id=\"0x7001\"><bits><bit name=\"Ready\" id=\"1\"/></bits></tag>")
            << QStringList { "Bit changed: Flags.Ready 0 -> 1", "Bit removed: Flags.Fault (4)" } << QStringList();
        QTest::newRow("values compared under the tag's name when its code changed")
            << QByteArray("<tag name=\"Mode\" id=\"0x1002\"><enums><enum name=\"On\" id=\"1\"/></enums></tag>")
            << QByteArray("<tag name=\"Mode\" id=\"0x1003\"><enums><enum name=\"On\" id=\"3\"/></enums></tag>")
            << QStringList { "Tag code changed: Mode 0x1002 -> 0x1003", "Enum value changed: Mode.On 1 -> 3" }
            << QStringList();
        QTest::newRow("values of a removed tag are not listed one by one")
            << QByteArray("<tag name=\"Mode\" id=\"0x1002\"><enums><enum name=\"On\" id=\"1\"/></enums></tag>")
            << QByteArray() << QStringList { "Tag removed: Mode (0x1002)" } << QStringList();
        QTest::newRow("additions") << base
                                   << base
                + QByteArray("<tag name=\"Volume\" id=\"0x1010\"><enums><enum name=\"Loud\" id=\"9\"/></enums></tag>")
                + QByteArray("<tag name=\"Extra\" id=\"0x7002\"><bits><bit name=\"Low\" id=\"5\"/></bits></tag>")
                                   << QStringList()
                                   << QStringList { "Tag added: Volume (0x1010)", "Tag added: Extra (0x7002)" };
        QTest::newRow("values and bits added to existing tags")
            << base
            << QByteArray(
                   "<tag name=\"Power\" id=\"0x2001\"/>"
                   "<tag name=\"Mode\" id=\"0x1002\"><enums><enum name=\"Off\" id=\"0\"/><enum name=\"On\" id=\"1\"/>"
                   "<enum name=\"Eco\" id=\"4\"/></enums></tag>"
                   "<tag name=\"Flags\" id=\"0x7001\"><bits><bit name=\"Ready\" id=\"0\"/><bit name=\"Fault\" "
                   "id=\"4\"/>"
                   "<bit name=\"Low\" id=\"5\"/></bits></tag>")
            << QStringList() << QStringList { "Enum value added: Mode.Eco (4)", "Bit added: Flags.Low (5)" };
        QTest::newRow("numbers shown in each file's own notation")
            << QByteArray("<tag name=\"Mode\" id=\"0x1002\"><enums display=\"x\"><enum name=\"On\" "
                          "id=\"0x10\"/></enums></tag>")
            << QByteArray("<tag name=\"Mode\" id=\"0x1002\"><enums><enum name=\"On\" id=\"17\"/></enums></tag>")
            << QStringList { "Enum value changed: Mode.On 0x10 -> 17" } << QStringList();
        QTest::newRow("tags without a name or a code are left out")
            << QByteArray("<tag id=\"0x1001\"/><tag name=\"Draft\"/>")
            << QByteArray("<tag id=\"0x1002\"/><tag name=\"Other\"/>") << QStringList() << QStringList();
        QTest::newRow("the first of a repeated name counts")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"/><tag name=\"A\" id=\"0x1002\"/>")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"/>") << QStringList() << QStringList();
    }

    void changes()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        QFETCH(QStringList, breaks);
        QFETCH(QStringList, additions);
        const std::unique_ptr<Item> oldRoot = parseBody(before);
        const std::unique_ptr<Item> newRoot = parseBody(after);
        QVERIFY(oldRoot && newRoot);
        const CompatibilityReport report(oldRoot.get(), newRoot.get());
        QCOMPARE(texts(report.breaks()), breaks);
        QCOMPARE(texts(report.additions()), additions);
        QCOMPARE(report.isBreaking(), !breaks.isEmpty());
        for (const CompatibilityReport::Change &change : report.breaks())
            QVERIFY(change.breaks());
        for (const CompatibilityReport::Change &change : report.additions())
            QVERIFY(!change.breaks());
    }

    void kinds()
    {
        const std::unique_ptr<Item> oldRoot
            = parseBody("<tag name=\"A\" id=\"0x1001\"/><tag name=\"B\" id=\"0x1002\"/>"
                        "<tag name=\"C\" id=\"0x1003\"/><tag name=\"D\" id=\"0x1004\"/>"
                        "<tag name=\"E\" id=\"0x1005\"><enums><enum name=\"X\" id=\"1\"/>"
                        "<enum name=\"Y\" id=\"2\"/></enums><bits><bit name=\"P\" id=\"1\"/>"
                        "<bit name=\"Q\" id=\"2\"/></bits></tag>");
        const std::unique_ptr<Item> newRoot
            = parseBody("<tag name=\"B\" id=\"0x1012\"/><tag name=\"C\" id=\"0x2003\"/>"
                        "<tag name=\"F\" id=\"0x1001\"/><tag name=\"D\" id=\"0x1004\"/>"
                        "<tag name=\"E\" id=\"0x1005\"><enums><enum name=\"X\" id=\"3\"/>"
                        "<enum name=\"Z\" id=\"2\"/></enums><bits><bit name=\"P\" id=\"3\"/>"
                        "<bit name=\"R\" id=\"2\"/></bits></tag><tag name=\"G\" id=\"0x1007\"/>");
        QVERIFY(oldRoot && newRoot);
        const CompatibilityReport report(oldRoot.get(), newRoot.get());
        QList<CompatibilityReport::Kind> kinds;
        for (const CompatibilityReport::Change &change : report.breaks() + report.additions())
            kinds << change.kind;
        QCOMPARE(kinds,
                 QList<CompatibilityReport::Kind>({ CompatibilityReport::TagRemoved,
                                                    CompatibilityReport::TagCodeChanged,
                                                    CompatibilityReport::TagTypeChanged,
                                                    CompatibilityReport::EnumValueChanged,
                                                    CompatibilityReport::EnumValueRemoved,
                                                    CompatibilityReport::BitChanged,
                                                    CompatibilityReport::BitRemoved,
                                                    CompatibilityReport::TagCodeReused,
                                                    CompatibilityReport::EnumValueAdded,
                                                    CompatibilityReport::BitAdded,
                                                    CompatibilityReport::TagAdded }));
    }

    void text()
    {
        const std::unique_ptr<Item> oldRoot = parseBody(base);
        const std::unique_ptr<Item> newRoot
            = parseBody("<tag name=\"Power\" id=\"0x3001\"/>"
                        "<tag name=\"Mode\" id=\"0x1002\"><enums><enum name=\"Off\" id=\"0\"/>"
                        "<enum name=\"On\" id=\"1\"/><enum name=\"Eco\" id=\"2\"/></enums></tag>"
                        "<tag name=\"Level\" id=\"0x1003\"/>");
        QVERIFY(oldRoot && newRoot);
        const CompatibilityReport report(oldRoot.get(), newRoot.get());
        QCOMPARE(report.text(QStringLiteral("v1.zatdef"), QStringLiteral("v2.zatdef")),
                 QStringLiteral("Old: v1.zatdef\n"
                                "New: v2.zatdef\n"
                                "\n"
                                "Breaking changes: 2\n"
                                "  Tag type changed: Power 0x2001 (Bool) -> 0x3001 (String)\n"
                                "  Tag removed: Flags (0x7001)\n"
                                "\n"
                                "Additions: 2\n"
                                "  Enum value added: Mode.Eco (2)\n"
                                "  Tag added: Level (0x1003)\n"));
    }

    void textWithoutChanges()
    {
        const std::unique_ptr<Item> root = parseBody(base);
        QVERIFY(root);
        const CompatibilityReport report(root.get(), root.get());
        QVERIFY(!report.isBreaking());
        QCOMPARE(report.text(QStringLiteral("a"), QStringLiteral("b")),
                 QStringLiteral("Old: a\nNew: b\n\nBreaking changes: none\n\nAdditions: none\n"));
    }

    void emptyTrees()
    {
        const std::unique_ptr<Item> root = parseBody(base);
        QVERIFY(root);
        CompatibilityReport removed(root.get(), nullptr);
        QCOMPARE(texts(removed.breaks()),
                 QStringList(
                     { "Tag removed: Power (0x2001)", "Tag removed: Mode (0x1002)", "Tag removed: Flags (0x7001)" }));
        CompatibilityReport added(nullptr, root.get());
        QCOMPARE(texts(added.additions()),
                 QStringList({ "Tag added: Power (0x2001)", "Tag added: Mode (0x1002)", "Tag added: Flags (0x7001)" }));
        QVERIFY(!added.isBreaking());
    }

    // Two files of 100,000 tags in which every tag moved: nested lookups would take minutes.
    void largeTree()
    {
        auto build = [](int shift) {
            auto *root = new Item;
            root->type = Root;
            for (int i = 0; i < 100000; ++i) {
                auto *tag = new Item;
                tag->type = Tag;
                tag->name = QStringLiteral("T%1").arg(i);
                tag->id = quint64((i + shift) % 0x10000);
                tag->hasId = true;
                root->appendChild(tag);
            }
            return std::unique_ptr<Item>(root);
        };
        const std::unique_ptr<Item> oldRoot = build(0);
        const std::unique_ptr<Item> newRoot = build(1);
        const CompatibilityReport report(oldRoot.get(), newRoot.get());
        QCOMPARE(report.breaks().size(), 100000);
        QCOMPARE(report.breaks().first().text, QStringLiteral("Tag code changed: T0 0x0000 -> 0x0001"));
    }
};

QTEST_GUILESS_MAIN(TestCompatibility)
#include "tst_compatibility.moc"
