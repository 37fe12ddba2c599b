// The order in which every generator lists the top-level tags.

#include "generatortest.h"
#include "taglisting.h"

#include <QRandomGenerator>
#include <QSet>
#include <QTest>

using namespace ZAT16;

namespace {

QString names(const QList<const Item *> &tags)
{
    QStringList list;
    for (const Item *tag : tags)
        list << (tag->name.isEmpty() ? tag2hex(quint32(tag->id)) : tag->name);
    return list.join(QLatin1Char(' '));
}

QString render(const Item *root)
{
    const TagListing listing(root);
    return QStringLiteral("pairs: ") + names(listing.pairs()) + QStringLiteral(" | nested: ") + names(listing.nested())
        + QStringLiteral(" | plain: ") + names(listing.plain());
}

} // namespace

class TestTagListing : public QObject
{
    Q_OBJECT

private slots:
    void listing_data()
    {
        QTest::addColumn<QByteArray>("tags");
        QTest::addColumn<QString>("expected");

        QTest::newRow("worked example") << QByteArray(R"(
            <tag name="Power" id="0x2001"/>
            <tag name="GetInfo" id="0xD101"/>
            <tag name="InfoReply" id="0xE101"/>
            <tag name="Mode" id="0x1002"/>
            <tag name="Flags" id="0x7001"/>)")
                                        << QStringLiteral(
                                               "pairs: GetInfo InfoReply | nested:  | plain: Power Mode Flags");
        QTest::newRow("empty tree") << QByteArray() << QStringLiteral("pairs:  | nested:  | plain: ");
        QTest::newRow("answer before its request") << QByteArray(R"(
            <tag name="Reply" id="0xE005"/>
            <tag name="Ask" id="0xD005"/>)") << QStringLiteral("pairs: Ask Reply | nested:  | plain: ");
        QTest::newRow("request without answer, list, message, lone answer") << QByteArray(R"(
            <tag name="Plain" id="0x1001"/>
            <tag name="Ask" id="0xD001"/>
            <tag name="List" id="0xC001"/>
            <tag name="Lone" id="0xE077"/>
            <tag name="Note" id="0xF001"/>)") << QStringLiteral("pairs:  | nested: Ask List Lone Note | plain: Plain");
        QTest::newRow("duplicate codes: first in pass order wins") << QByteArray(R"(
            <tag name="A" id="0x1001"/>
            <tag name="Ask" id="0xD001"/>
            <tag name="B" id="0x1001"/>
            <tag name="Again" id="0xD001"/>
            <tag name="Reply" id="0xE001"/>
            <tag name="Reply2" id="0xE001"/>)") << QStringLiteral("pairs: Ask Reply | nested:  | plain: A");
        QTest::newRow("answer is the first child with the code, even without a name") << QByteArray(R"(
            <tag id="0xE002"/>
            <tag name="Ask" id="0xD002"/>
            <tag name="Reply" id="0xE002"/>)") << QStringLiteral("pairs: Ask 0xE002 | nested:  | plain: ");
        QTest::newRow("invalid tags are left out") << QByteArray(R"(
            <tag name="NoCode"/>
            <tag id="0x1005"/>
            <!-- a comment -->

            <tag name="Good" id="0x1006"/>)") << QStringLiteral("pairs:  | nested:  | plain: Good");
        QTest::newRow("extended types are plain") << QByteArray(R"(
            <tag name="Point" id="0x8001"/>
            <tag name="Size" id="0x8201"/>)") << QStringLiteral("pairs:  | nested:  | plain: Point Size");
    }

    void listing()
    {
        QFETCH(QByteArray, tags);
        QFETCH(QString, expected);
        const auto root = GeneratorTest::tree(tags);
        QVERIFY(root);
        QCOMPARE(render(root.get()), expected);
    }

    void nullRoot() { QCOMPARE(render(nullptr), QStringLiteral("pairs:  | nested:  | plain: ")); }

    // Each request looks up its answer in a hash, not by walking the root: many requests with
    // answers at the very end stay fast.
    void linearInTheNumberOfTags()
    {
        Item root;
        root.type = Root;
        const int count = 4000; // 0x000..0xFFF are all the request numbers there are
        for (int i = 0; i < count; ++i) {
            ItemData data;
            data.type = Tag;
            data.hasId = true;
            data.id = 0xD000 | quint64(i);
            data.name = QStringLiteral("Ask%1").arg(i);
            root.appendChild(new Item(data));
        }
        for (int i = 0; i < 100000; ++i) {
            ItemData data;
            data.type = Tag;
            data.hasId = true;
            data.id = 0x1000 | quint64(i % 0x1000);
            data.name = QStringLiteral("Plain%1").arg(i);
            root.appendChild(new Item(data));
        }
        for (int i = 0; i < count; ++i) {
            ItemData data;
            data.type = Tag;
            data.hasId = true;
            data.id = 0xE000 | quint64(i);
            data.name = QStringLiteral("Reply%1").arg(i);
            root.appendChild(new Item(data));
        }
        const TagListing listing(&root);
        QCOMPARE(listing.pairs().size(), 2 * count);
        QCOMPARE(listing.pairs().at(1)->name, QStringLiteral("Reply0"));
        QCOMPARE(listing.nested().size(), 0);
        QCOMPARE(listing.plain().size(), 0x1000);
    }
    // Random roots with every kind of child: the listing is what the three passes of the
    // generators give when written out plainly (answers found by walking the root, the written
    // codes in a set), and withLists() holds the valid tags with their first lists.
    void randomRootsAsThePassesGiveThem()
    {
        QRandomGenerator random(4711);
        for (int round = 0; round < 300; ++round) {
            Item root;
            root.type = Root;
            const int count = int(random.bounded(1u, 120u));
            for (int i = 0; i < count; ++i) {
                ItemData data;
                const int kind = int(random.bounded(20u));
                data.type = kind == 0 ? Enum : kind == 1 ? Invalid : Tag;
                if (random.bounded(8u) != 0)
                    data.name = QStringLiteral("T%1").arg(i);
                if (random.bounded(8u) != 0) {
                    data.hasId = true;
                    const quint64 types[] = { 0x1000, 0xC000, 0xD000, 0xE000, 0xF000, 0x8000, 0xA000 };
                    data.id = types[random.bounded(7u)] | random.bounded(6u);
                    if (random.bounded(30u) == 0)
                        data.id |= quint64(random.bounded(1u, 4u)) << (random.bounded(2u) ? 16 : 32);
                }
                auto *item = new Item(data);
                root.appendChild(item);
                if (data.type == Tag) {
                    for (ItemType list : { Bits, Enums, Enums, Tag }) {
                        if (random.bounded(3u) == 0) {
                            auto *child = new Item;
                            child->type = list;
                            item->appendChild(child);
                        }
                    }
                }
            }

            QList<const Item *> pairs, nested, plain;
            QSet<quint32> written;
            for (const Item *tag : std::as_const(root.children)) {
                if (!tag->isValid(Tag) || ((tag->id >> 12) & 0xF) != Request)
                    continue;
                const quint32 code = quint32(tag->id);
                const quint32 answer = 0xE000 | (code & 0x0FFF);
                const int at = root.findBut(answer, nullptr);
                if (written.contains(code) || written.contains(answer) || at < 0)
                    continue;
                pairs << tag << root.child(at);
                written << code << answer;
            }
            for (const Item *tag : std::as_const(root.children)) {
                if (tag->isValid(Tag) && isNestedTag(int(tag->id)) && !written.contains(quint32(tag->id))) {
                    nested << tag;
                    written << quint32(tag->id);
                }
            }
            for (const Item *tag : std::as_const(root.children)) {
                if (tag->isValid(Tag) && !isNestedTag(int(tag->id)) && !written.contains(quint32(tag->id))) {
                    plain << tag;
                    written << quint32(tag->id);
                }
            }
            QList<const Item *> withLists;
            for (const Item *tag : std::as_const(root.children)) {
                if (tag->isValid(Tag) && (tag->findInTagByItemType(Enums) || tag->findInTagByItemType(Bits)))
                    withLists << tag << tag->findInTagByItemType(Enums) << tag->findInTagByItemType(Bits);
            }

            const TagListing listing(&root);
            QCOMPARE(listing.pairs(), pairs);
            QCOMPARE(listing.nested(), nested);
            QCOMPARE(listing.plain(), plain);
            QList<const Item *> listed;
            for (const TagListing::Lists &lists : listing.withLists())
                listed << lists.tag << lists.enums << lists.bits;
            QCOMPARE(listed, withLists);
        }
    }
};

QTEST_GUILESS_MAIN(TestTagListing)
#include "tst_taglisting.moc"
