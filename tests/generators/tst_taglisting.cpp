// The order in which every generator lists the top-level tags.

#include "generatortest.h"
#include "taglisting.h"

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
                                        << QStringLiteral("pairs: GetInfo InfoReply | nested:  | plain: Power Mode Flags");
        QTest::newRow("empty tree") << QByteArray() << QStringLiteral("pairs:  | nested:  | plain: ");
        QTest::newRow("answer before its request") << QByteArray(R"(
            <tag name="Reply" id="0xE005"/>
            <tag name="Ask" id="0xD005"/>)")
                                                   << QStringLiteral("pairs: Ask Reply | nested:  | plain: ");
        QTest::newRow("request without answer, list, message, lone answer") << QByteArray(R"(
            <tag name="Plain" id="0x1001"/>
            <tag name="Ask" id="0xD001"/>
            <tag name="List" id="0xC001"/>
            <tag name="Lone" id="0xE077"/>
            <tag name="Note" id="0xF001"/>)")
                                                                            << QStringLiteral("pairs:  | nested: Ask List Lone Note | plain: Plain");
        QTest::newRow("duplicate codes: first in pass order wins") << QByteArray(R"(
            <tag name="A" id="0x1001"/>
            <tag name="Ask" id="0xD001"/>
            <tag name="B" id="0x1001"/>
            <tag name="Again" id="0xD001"/>
            <tag name="Reply" id="0xE001"/>
            <tag name="Reply2" id="0xE001"/>)")
                                                                   << QStringLiteral("pairs: Ask Reply | nested:  | plain: A");
        QTest::newRow("answer is the first child with the code, even without a name") << QByteArray(R"(
            <tag id="0xE002"/>
            <tag name="Ask" id="0xD002"/>
            <tag name="Reply" id="0xE002"/>)")
                                                                                      << QStringLiteral("pairs: Ask 0xE002 | nested:  | plain: ");
        QTest::newRow("invalid tags are left out") << QByteArray(R"(
            <tag name="NoCode"/>
            <tag id="0x1005"/>
            <!-- a comment -->

            <tag name="Good" id="0x1006"/>)")
                                                   << QStringLiteral("pairs:  | nested:  | plain: Good");
        QTest::newRow("extended types are plain") << QByteArray(R"(
            <tag name="Point" id="0x8001"/>
            <tag name="Size" id="0x8201"/>)")
                                                  << QStringLiteral("pairs:  | nested:  | plain: Point Size");
    }

    void listing()
    {
        QFETCH(QByteArray, tags);
        QFETCH(QString, expected);
        const auto root = GeneratorTest::tree(tags);
        QVERIFY(root);
        QCOMPARE(render(root.get()), expected);
    }

    void nullRoot()
    {
        QCOMPARE(render(nullptr), QStringLiteral("pairs:  | nested:  | plain: "));
    }

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
};

QTEST_GUILESS_MAIN(TestTagListing)
#include "tst_taglisting.moc"
