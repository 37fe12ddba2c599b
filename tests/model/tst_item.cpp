// Tests of the definitions tree: item data, structure operations, queries, display mode
// inheritance and the debugging dump.

#include "item.h"
#include "makeitem.h"

#include <QtTest>

#include <QTemporaryFile>

#include <cstdio>
#include <memory>
#include <unistd.h>

using namespace ZAT16;

namespace {

using TestItems::makeItem;

Item *makeNumbered(ItemType type, const QString &name, quint64 id)
{
    return makeItem(type, name, true, id);
}

Item *makeComment(ItemType type, const QString &text)
{
    Item *item = makeItem(type);
    item->comment = text;
    return item;
}

Item *makeBlank(ItemType type)
{
    Item *item = makeItem(type);
    item->comment = QStringLiteral("");
    return item;
}

QString names(const Item &parent)
{
    QStringList list;
    for (const Item *child : parent.children)
        list << child->name;
    return list.join(QLatin1Char(','));
}

// Runs `call` with standard error redirected into a temporary file and returns what was written.
template<typename F>
QByteArray captureStderr(F call)
{
    QTemporaryFile file;
    if (!file.open())
        return QByteArray("<cannot open temporary file>");
    fflush(stderr);
    const int saved = dup(2);
    dup2(file.handle(), 2);
    call();
    fflush(stderr);
    dup2(saved, 2);
    close(saved);
    file.seek(0);
    return file.readAll();
}

} // namespace

class TestItem : public QObject
{
    Q_OBJECT

private slots:
    void itemTypeValues();
    void defaultConstruction();
    void constructionFromData();
    void clearChildless();
    void equality_data();
    void equality();
    void equalityOfCopies();
    void dataFormatNumberUsesOwnDisplay();

    void childAccess();
    void constChildAccess();
    void takeChild();
    void takeChildPastEnd();
    void removeChild();
    void removeChildPastEnd();
    void insertChildBefore();
    void appendChild();
    void rowOf();

    void sortChildrenByTypeOrder();
    void sortChildrenByTypeKeepsAuthorsOrder();

    void findButId();
    void findButIdNeedsHasId();
    void findButIdComparesAll64Bits();
    void findButName();

    void findCollision_data();
    void findCollision();
    void findCollisionWithoutParent();
    void findCollisionSiblingsOnly();

    void enumCount_data();
    void enumCount();

    void findInTagByItemType();
    void findInTagByItemTypeOnlyForTags();

    void isNewline_data();
    void isNewline();
    void isComment_data();
    void isComment();
    void isValid_data();
    void isValid();

    void displayModeInheritance();
    void displayModeOwn();
    void displayModeNoneSet();
    void displayModeSkipsDigitsOnly();
    void formatId_data();
    void formatId();

    void matchingParentType_data();
    void matchingParentType();
    void collisionFlagValues();

    void dumpTree();
    void dumpIndentAndRows();
    void dumpOtherTypes();
};

void TestItem::itemTypeValues()
{
    QCOMPARE(int(Invalid), -1);
    QCOMPARE(int(Root), 0);
    QCOMPARE(int(Tag), 1);
    QCOMPARE(int(Enums), 2);
    QCOMPARE(int(Enum), 3);
    QCOMPARE(int(Bits), 4);
    QCOMPARE(int(Bit), 5);
}

void TestItem::defaultConstruction()
{
    const Item item;
    QCOMPARE(item.type, Invalid);
    QCOMPARE(item.id, quint64(0));
    QVERIFY(item.name.isNull());
    QVERIFY(item.comment.isNull());
    QCOMPARE(item.display.mode, 0);
    QCOMPARE(item.display.digits, 0);
    QCOMPARE(item.hasId, false);
    QCOMPARE(item.secure, false);
    QVERIFY(item.children.isEmpty());
    QVERIFY(item.parent == nullptr);
}

void TestItem::constructionFromData()
{
    ItemData data;
    data.type = Enum;
    data.id = 0x123456789ull;
    data.name = QStringLiteral("Value");
    data.comment = QStringLiteral("a value");
    data.display.mode = 3;
    data.display.digits = 4;
    data.hasId = true;
    data.secure = true;

    Item parent;
    const Item item(data);
    QCOMPARE(item.type, Enum);
    QCOMPARE(item.id, 0x123456789ull);
    QCOMPARE(item.name, QStringLiteral("Value"));
    QCOMPARE(item.comment, QStringLiteral("a value"));
    QCOMPARE(item.display.mode, 3);
    QCOMPARE(item.display.digits, 4);
    QCOMPARE(item.hasId, true);
    QCOMPARE(item.secure, true);
    QVERIFY(item.children.isEmpty());
    QVERIFY(item.parent == nullptr);
    QVERIFY(static_cast<const ItemData &>(item) == data);
}

void TestItem::clearChildless()
{
    Item item;
    item.type = Tag;
    item.id = 0x2001;
    item.name = QStringLiteral("Power");
    item.comment = QStringLiteral("c");
    item.display.mode = 5;
    item.display.digits = 8;
    item.hasId = true;
    item.secure = true;
    item.clear();
    QCOMPARE(item.type, Invalid);
    QCOMPARE(item.id, quint64(0));
    QVERIFY(item.name.isEmpty());
    QVERIFY(item.comment.isEmpty());
    QCOMPARE(item.display.mode, 0);
    QCOMPARE(item.display.digits, 0);
    QCOMPARE(item.hasId, false);
    QCOMPARE(item.secure, false);
}

void TestItem::equality_data()
{
    QTest::addColumn<QString>("field");

    QTest::newRow("type") << QStringLiteral("type");
    QTest::newRow("id") << QStringLiteral("id");
    QTest::newRow("id upper bits") << QStringLiteral("idHigh");
    QTest::newRow("name") << QStringLiteral("name");
    QTest::newRow("name case") << QStringLiteral("nameCase");
    QTest::newRow("comment") << QStringLiteral("comment");
    QTest::newRow("display.mode") << QStringLiteral("mode");
    QTest::newRow("display.digits") << QStringLiteral("digits");
    QTest::newRow("hasId") << QStringLiteral("hasId");
    QTest::newRow("secure") << QStringLiteral("secure");
}

void TestItem::equality()
{
    QFETCH(QString, field);

    ItemData a;
    a.type = Tag;
    a.id = 0x1001;
    a.name = QStringLiteral("Power");
    a.comment = QStringLiteral("on or off");
    a.display.mode = 3;
    a.display.digits = 2;
    a.hasId = true;
    a.secure = false;

    ItemData b = a;
    QVERIFY(a == b);
    QVERIFY(!(a != b));

    if (field == QLatin1String("type"))
        b.type = Enum;
    else if (field == QLatin1String("id"))
        b.id = 0x1002;
    else if (field == QLatin1String("idHigh"))
        b.id = 0x100001001ull;
    else if (field == QLatin1String("name"))
        b.name = QStringLiteral("Powers");
    else if (field == QLatin1String("nameCase"))
        b.name = QStringLiteral("power");
    else if (field == QLatin1String("comment"))
        b.comment = QStringLiteral("on");
    else if (field == QLatin1String("mode"))
        b.display.mode = 4;
    else if (field == QLatin1String("digits"))
        b.display.digits = 3;
    else if (field == QLatin1String("hasId"))
        b.hasId = false;
    else if (field == QLatin1String("secure"))
        b.secure = true;

    QVERIFY(!(a == b));
    QVERIFY(a != b);
    QVERIFY(!(b == a));
}

void TestItem::equalityOfCopies()
{
    const ItemData a;
    const ItemData b;
    QVERIFY(a == b);

    // Equality is about the data only: the place in a tree does not count.
    Item parent;
    Item *child = makeNumbered(Tag, QStringLiteral("A"), 1);
    parent.appendChild(child);
    Item loose(*static_cast<ItemData *>(child));
    QVERIFY(static_cast<const ItemData &>(loose) == static_cast<const ItemData &>(*child));
}

void TestItem::dataFormatNumberUsesOwnDisplay()
{
    Item parent;
    parent.type = Enums;
    parent.display.mode = 3;
    parent.display.digits = 4;
    Item *value = makeNumbered(Enum, QStringLiteral("A"), 10);
    parent.appendChild(value);

    // no inheritance: the enum's own mode is 0, so signed decimal
    QCOMPARE(value->formatNumber(10), QStringLiteral("10"));
    QCOMPARE(value->formatNumber(~0ull), QStringLiteral("-1"));
    QCOMPARE(parent.formatNumber(10), QStringLiteral("0x000A"));
    value->display.mode = 5;
    QCOMPARE(value->formatNumber(5), QStringLiteral("0y101"));
}

void TestItem::childAccess()
{
    Item parent;
    Item *a = makeItem(Tag, QStringLiteral("A"));
    Item *b = makeItem(Tag, QStringLiteral("B"));
    parent.appendChild(a);
    parent.appendChild(b);

    QCOMPARE(parent.child(0), a);
    QCOMPARE(parent.child(1), b);
    QVERIFY(parent.child(2) == nullptr);
    QVERIFY(parent.child(100) == nullptr);

    Item empty;
    QVERIFY(empty.child(0) == nullptr);
}

void TestItem::constChildAccess()
{
    Item parent;
    Item *a = makeItem(Tag, QStringLiteral("A"));
    parent.appendChild(a);
    const Item &constParent = parent;
    QCOMPARE(constParent.child(0), static_cast<const Item *>(a));
    QVERIFY(constParent.child(1) == nullptr);
}

void TestItem::takeChild()
{
    Item parent;
    parent.appendChild(makeItem(Tag, QStringLiteral("A")));
    parent.appendChild(makeItem(Tag, QStringLiteral("B")));
    parent.appendChild(makeItem(Tag, QStringLiteral("C")));

    std::unique_ptr<Item> taken(parent.takeChild(1));
    QVERIFY(taken);
    QCOMPARE(taken->name, QStringLiteral("B"));
    QCOMPARE(names(parent), QStringLiteral("A,C"));
    // the taken item keeps its parent pointer
    QCOMPARE(taken->parent, &parent);
}

void TestItem::takeChildPastEnd()
{
    Item parent;
    parent.appendChild(makeItem(Tag, QStringLiteral("A")));
    QVERIFY(parent.takeChild(1) == nullptr);
    QVERIFY(parent.takeChild(5) == nullptr);
    QCOMPARE(names(parent), QStringLiteral("A"));
}

void TestItem::removeChild()
{
    Item parent;
    parent.appendChild(makeItem(Tag, QStringLiteral("A")));
    Item *b = makeItem(Tag, QStringLiteral("B"));
    b->appendChild(makeItem(Enums));
    parent.appendChild(b);
    parent.appendChild(makeItem(Tag, QStringLiteral("C")));

    parent.removeChild(1);
    QCOMPARE(names(parent), QStringLiteral("A,C"));
    parent.removeChild(0);
    QCOMPARE(names(parent), QStringLiteral("C"));
}

void TestItem::removeChildPastEnd()
{
    Item parent;
    parent.appendChild(makeItem(Tag, QStringLiteral("A")));
    parent.removeChild(1);
    parent.removeChild(7);
    QCOMPARE(names(parent), QStringLiteral("A"));
}

void TestItem::insertChildBefore()
{
    Item parent;
    Item *b = makeItem(Tag, QStringLiteral("B"));
    parent.insertChildBefore(0, b);
    QCOMPARE(b->parent, &parent);

    Item *a = makeItem(Tag, QStringLiteral("A"));
    parent.insertChildBefore(0, a);
    QCOMPARE(a->parent, &parent);
    QCOMPARE(names(parent), QStringLiteral("A,B"));

    Item *d = makeItem(Tag, QStringLiteral("D"));
    parent.insertChildBefore(2, d);
    QCOMPARE(names(parent), QStringLiteral("A,B,D"));

    Item *c = makeItem(Tag, QStringLiteral("C"));
    parent.insertChildBefore(2, c);
    QCOMPARE(names(parent), QStringLiteral("A,B,C,D"));
    QCOMPARE(c->parent, &parent);

    // an item moved from another parent gets the new one
    Item other;
    Item *e = makeItem(Tag, QStringLiteral("E"));
    other.appendChild(e);
    parent.insertChildBefore(1, other.takeChild(0));
    QCOMPARE(e->parent, &parent);
    QCOMPARE(names(parent), QStringLiteral("A,E,B,C,D"));
    QVERIFY(other.children.isEmpty());
}

void TestItem::appendChild()
{
    Item parent;
    Item *a = makeItem(Tag, QStringLiteral("A"));
    Item *b = makeItem(Tag, QStringLiteral("B"));
    parent.appendChild(a);
    parent.appendChild(b);
    QCOMPARE(a->parent, &parent);
    QCOMPARE(b->parent, &parent);
    QCOMPARE(parent.children.size(), 2);
    QCOMPARE(parent.children.at(0), a);
    QCOMPARE(parent.children.at(1), b);
}

void TestItem::rowOf()
{
    Item root;
    root.type = Root;
    QCOMPARE(root.row(), 0);

    Item *a = makeItem(Tag, QStringLiteral("A"));
    Item *b = makeItem(Tag, QStringLiteral("B"));
    Item *c = makeItem(Tag, QStringLiteral("C"));
    root.appendChild(a);
    root.appendChild(b);
    root.appendChild(c);
    QCOMPARE(a->row(), 0);
    QCOMPARE(b->row(), 1);
    QCOMPARE(c->row(), 2);

    Item *enums = makeItem(Enums);
    b->appendChild(enums);
    QCOMPARE(enums->row(), 0);

    const Item detached;
    QCOMPARE(detached.row(), 0);
}

void TestItem::sortChildrenByTypeOrder()
{
    Item tag;
    tag.type = Tag;
    tag.appendChild(makeItem(Enums, QStringLiteral("e1")));
    tag.appendChild(makeItem(Tag, QStringLiteral("blank1")));
    tag.appendChild(makeItem(Bits, QStringLiteral("b1")));
    tag.appendChild(makeItem(Enum, QStringLiteral("v1")));
    tag.appendChild(makeItem(Bit, QStringLiteral("t1")));
    tag.appendChild(makeItem(Invalid, QStringLiteral("i1")));
    tag.appendChild(makeItem(Root, QStringLiteral("r1")));

    tag.sortChildrenByType();
    // higher types first
    QCOMPARE(names(tag), QStringLiteral("t1,b1,v1,e1,blank1,r1,i1"));
    for (int row = 0; row < tag.children.size(); ++row)
        QCOMPARE(tag.child(row)->parent, &tag);
}

void TestItem::sortChildrenByTypeKeepsAuthorsOrder()
{
    Item tag;
    tag.type = Tag;
    tag.appendChild(makeItem(Enums, QStringLiteral("e1")));
    tag.appendChild(makeItem(Tag, QStringLiteral("n1")));
    tag.appendChild(makeItem(Bits, QStringLiteral("b1")));
    tag.appendChild(makeItem(Enums, QStringLiteral("e2")));
    tag.appendChild(makeItem(Tag, QStringLiteral("n2")));
    tag.appendChild(makeItem(Bits, QStringLiteral("b2")));
    tag.appendChild(makeItem(Enums, QStringLiteral("e3")));
    tag.appendChild(makeItem(Bits, QStringLiteral("b3")));
    tag.appendChild(makeItem(Tag, QStringLiteral("n3")));
    tag.appendChild(makeItem(Enums, QStringLiteral("e4")));

    tag.sortChildrenByType();
    QCOMPARE(names(tag), QStringLiteral("b1,b2,b3,e1,e2,e3,e4,n1,n2,n3"));

    // already sorted: unchanged
    tag.sortChildrenByType();
    QCOMPARE(names(tag), QStringLiteral("b1,b2,b3,e1,e2,e3,e4,n1,n2,n3"));

    // many equal types: every run keeps its order
    Item big;
    big.type = Tag;
    QStringList expectedBits;
    QStringList expectedEnums;
    for (int i = 0; i < 40; ++i) {
        const bool bits = (i % 3) == 1;
        const QString name = QStringLiteral("x%1").arg(i);
        big.appendChild(makeItem(bits ? Bits : Enums, name));
        (bits ? expectedBits : expectedEnums) << name;
    }
    big.sortChildrenByType();
    QCOMPARE(names(big), (expectedBits + expectedEnums).join(QLatin1Char(',')));
}

void TestItem::findButId()
{
    Item parent;
    Item *a = makeNumbered(Enum, QStringLiteral("A"), 5);
    Item *b = makeNumbered(Enum, QStringLiteral("B"), 5);
    Item *c = makeNumbered(Enum, QStringLiteral("C"), 7);
    parent.appendChild(a);
    parent.appendChild(b);
    parent.appendChild(c);

    QCOMPARE(parent.findBut(5u, nullptr), 0);
    QCOMPARE(parent.findBut(5u, a), 1);
    QCOMPARE(parent.findBut(5u, b), 0);
    QCOMPARE(parent.findBut(7u, nullptr), 2);
    QCOMPARE(parent.findBut(7u, c), -1);
    QCOMPARE(parent.findBut(9u, nullptr), -1);
    // an item of another parent as `but` changes nothing
    Item stranger;
    QCOMPARE(parent.findBut(7u, &stranger), 2);

    Item empty;
    QCOMPARE(empty.findBut(0u, nullptr), -1);
}

void TestItem::findButIdNeedsHasId()
{
    Item parent;
    parent.appendChild(makeComment(Enum, QStringLiteral("a comment")));
    parent.appendChild(makeItem(Enum, QStringLiteral("NoId"), false, 7));
    parent.appendChild(makeNumbered(Enum, QStringLiteral("Zero"), 0));

    QCOMPARE(parent.findBut(0u, nullptr), 2);
    QCOMPARE(parent.findBut(7u, nullptr), -1);
}

void TestItem::findButIdComparesAll64Bits()
{
    Item parent;
    parent.appendChild(makeNumbered(Enum, QStringLiteral("High"), 0x100000005ull));
    QCOMPARE(parent.findBut(5u, nullptr), -1);
    parent.appendChild(makeNumbered(Enum, QStringLiteral("Low"), 5));
    QCOMPARE(parent.findBut(5u, nullptr), 1);
    parent.appendChild(makeNumbered(Enum, QStringLiteral("AllOnes"), ~0ull));
    QCOMPARE(parent.findBut(0xFFFFFFFFu, nullptr), -1);
}

void TestItem::findButName()
{
    Item parent;
    Item *a = makeItem(Enum, QStringLiteral("A"));
    Item *a2 = makeNumbered(Enum, QStringLiteral("A"), 3);
    Item *comment = makeComment(Enum, QStringLiteral("text"));
    Item *b = makeNumbered(Enum, QStringLiteral("B"), 4);
    parent.appendChild(a);
    parent.appendChild(a2);
    parent.appendChild(comment);
    parent.appendChild(b);

    // hasId is not needed
    QCOMPARE(parent.findBut(QStringLiteral("A"), nullptr), 0);
    QCOMPARE(parent.findBut(QStringLiteral("A"), a), 1);
    QCOMPARE(parent.findBut(QStringLiteral("A"), a2), 0);
    QCOMPARE(parent.findBut(QStringLiteral("B"), nullptr), 3);
    QCOMPARE(parent.findBut(QStringLiteral("B"), b), -1);
    // exact and case-sensitive
    QCOMPARE(parent.findBut(QStringLiteral("a"), nullptr), -1);
    QCOMPARE(parent.findBut(QStringLiteral("B "), nullptr), -1);
    QCOMPARE(parent.findBut(QStringLiteral("text"), nullptr), -1);
    // the nameless comment has an empty name
    QCOMPARE(parent.findBut(QString(), nullptr), 2);
    QCOMPARE(parent.findBut(QString(), comment), -1);
}

void TestItem::findCollision_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<qulonglong>("id");
    QTest::addColumn<bool>("hasId");
    QTest::addColumn<QString>("siblingName");
    QTest::addColumn<qulonglong>("siblingId");
    QTest::addColumn<bool>("siblingHasId");
    QTest::addColumn<int>("flags");

    const int none = 0;
    const int nameCollision = Item::NameCollision;
    const int idCollision = Item::IdCollision;

    QTest::newRow("different") << "A" << 1ull << true << "B" << 2ull << true << none;
    QTest::newRow("same id") << "A" << 1ull << true << "B" << 1ull << true << idCollision;
    QTest::newRow("same id, sibling without hasId") << "A" << 1ull << true << "B" << 1ull << false << none;
    QTest::newRow("same id, own hasId missing") << "A" << 1ull << false << "B" << 1ull << true << none;
    QTest::newRow("same id, no hasId at all") << "A" << 1ull << false << "B" << 1ull << false << none;
    QTest::newRow("same name") << "A" << 1ull << true << "A" << 2ull << true << nameCollision;
    QTest::newRow("same name without ids") << "A" << 0ull << false << "A" << 0ull << false << nameCollision;
    QTest::newRow("both") << "A" << 1ull << true << "A" << 1ull << true << (nameCollision | idCollision);
    QTest::newRow("two nameless") << "" << 1ull << true << "" << 2ull << true << none;
    QTest::newRow("two nameless, same id") << "" << 1ull << true << "" << 1ull << true << idCollision;
    QTest::newRow("name case differs") << "A" << 1ull << true << "a" << 2ull << true << none;
    QTest::newRow("ids differ in upper bits") << "A" << 0x100000001ull << true << "B" << 1ull << true << none;
    QTest::newRow("same 64-bit id") << "A" << 0xFFFFFFFFFFFFFFFFull << true << "B" << 0xFFFFFFFFFFFFFFFFull << true
                                    << idCollision;
}

void TestItem::findCollision()
{
    QFETCH(QString, name);
    QFETCH(qulonglong, id);
    QFETCH(bool, hasId);
    QFETCH(QString, siblingName);
    QFETCH(qulonglong, siblingId);
    QFETCH(bool, siblingHasId);
    QFETCH(int, flags);

    Item parent;
    parent.type = Enums;
    parent.appendChild(makeNumbered(Enum, QStringLiteral("Other"), 99));
    Item *item = makeItem(Enum, name, hasId, id);
    Item *sibling = makeItem(Enum, siblingName, siblingHasId, siblingId);
    parent.appendChild(item);
    parent.appendChild(makeComment(Enum, QStringLiteral("between")));
    parent.appendChild(sibling);

    QCOMPARE(int(item->findCollision()), flags);
    // symmetric when both sides would see each other
    if (!name.isEmpty() && !siblingName.isEmpty())
        QCOMPARE(int(sibling->findCollision()), flags);
}

void TestItem::findCollisionWithoutParent()
{
    Item item;
    item.type = Tag;
    item.name = QStringLiteral("A");
    item.id = 1;
    item.hasId = true;
    QCOMPARE(int(item.findCollision()), 0);

    // alone under a parent: no collision with itself
    Item parent;
    Item *only = makeNumbered(Tag, QStringLiteral("A"), 1);
    parent.appendChild(only);
    QCOMPARE(int(only->findCollision()), 0);
}

void TestItem::findCollisionSiblingsOnly()
{
    Item root;
    root.type = Root;
    Item *tagA = makeNumbered(Tag, QStringLiteral("A"), 0x1001);
    Item *tagB = makeNumbered(Tag, QStringLiteral("B"), 0x1002);
    root.appendChild(tagA);
    root.appendChild(tagB);
    Item *enumsA = makeItem(Enums);
    Item *enumsB = makeItem(Enums);
    tagA->appendChild(enumsA);
    tagB->appendChild(enumsB);
    Item *valueA = makeNumbered(Enum, QStringLiteral("X"), 1);
    Item *valueB = makeNumbered(Enum, QStringLiteral("X"), 1);
    enumsA->appendChild(valueA);
    enumsB->appendChild(valueB);
    // a child named like its tag is no sibling of it
    Item *valueNamedA = makeNumbered(Enum, QStringLiteral("A"), 0x1001);
    enumsA->appendChild(valueNamedA);

    QCOMPARE(int(valueA->findCollision()), 0);
    QCOMPARE(int(valueB->findCollision()), 0);
    QCOMPARE(int(valueNamedA->findCollision()), 0);
    QCOMPARE(int(tagA->findCollision()), 0);
}

void TestItem::enumCount_data()
{
    QTest::addColumn<QString>("layout");
    QTest::addColumn<int>("count");

    // "c" is a comment, "n" a blank line, "-" a named item without id, numbers are values
    QTest::newRow("0,1,2 with a comment between 1 and 2") << "0 1 c 2" << 3;
    QTest::newRow("0,2") << "0 2" << 0;
    QTest::newRow("2,3") << "2 3" << 0;
    QTest::newRow("only comments") << "c c" << 0;
    QTest::newRow("empty") << "" << 0;
    QTest::newRow("1,2,3") << "1 2 3" << 3;
    QTest::newRow("0") << "0" << 1;
    QTest::newRow("1") << "1" << 1;
    QTest::newRow("2") << "2" << 0;
    QTest::newRow("0,1,1 repeat") << "0 1 1" << 0;
    QTest::newRow("1,0 descending") << "1 0" << 0;
    QTest::newRow("0,1,3 gap at the end") << "0 1 3" << 0;
    QTest::newRow("blank lines and comments skipped") << "n c 0 n 1 c n 2 3 c" << 4;
    QTest::newRow("items without id skipped") << "- 1 - 2 -" << 2;
    QTest::newRow("upper bits in a following value") << "0 4294967297" << 0;
    QTest::newRow("start by the low 32 bits") << "4294967296" << 1;
}

void TestItem::enumCount()
{
    QFETCH(QString, layout);
    QFETCH(int, count);

    Item enums;
    enums.type = Enums;
    const QStringList parts = layout.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &part : parts) {
        if (part == QLatin1String("c"))
            enums.appendChild(makeComment(Enum, QStringLiteral("comment")));
        else if (part == QLatin1String("n"))
            enums.appendChild(makeBlank(Enum));
        else if (part == QLatin1String("-"))
            enums.appendChild(makeItem(Enum, QStringLiteral("NoId"), false, 0));
        else
            enums.appendChild(makeNumbered(Enum, QStringLiteral("V%1").arg(part), part.toULongLong()));
    }
    QCOMPARE(enums.enumCount(), count);
}

void TestItem::findInTagByItemType()
{
    Item tag;
    tag.type = Tag;
    Item *bits = makeItem(Bits, QStringLiteral("bits"));
    Item *enums1 = makeItem(Enums, QStringLiteral("enums1"));
    Item *enums2 = makeItem(Enums, QStringLiteral("enums2"));
    tag.appendChild(bits);
    tag.appendChild(enums1);
    tag.appendChild(enums2);

    QCOMPARE(tag.findInTagByItemType(Enums), enums1);
    QCOMPARE(tag.findInTagByItemType(Bits), bits);
    QVERIFY(tag.findInTagByItemType(Enum) == nullptr);
    QVERIFY(tag.findInTagByItemType(Tag) == nullptr);

    Item emptyTag;
    emptyTag.type = Tag;
    QVERIFY(emptyTag.findInTagByItemType(Enums) == nullptr);
}

void TestItem::findInTagByItemTypeOnlyForTags()
{
    Item root;
    root.type = Root;
    root.appendChild(makeItem(Tag, QStringLiteral("A")));
    root.appendChild(makeItem(Enums, QStringLiteral("misplaced")));
    QVERIFY(root.findInTagByItemType(Tag) == nullptr);
    QVERIFY(root.findInTagByItemType(Enums) == nullptr);

    Item enums;
    enums.type = Enums;
    enums.appendChild(makeNumbered(Enum, QStringLiteral("X"), 1));
    QVERIFY(enums.findInTagByItemType(Enum) == nullptr);
}

// Columns for the isNewline and isComment tables.
static void specialItemColumns()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("hasId");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("comment");
    QTest::addColumn<bool>("withChild");
    QTest::addColumn<bool>("expected");
}

static Item *specialItem()
{
    QFETCH(int, type);
    QFETCH(bool, hasId);
    QFETCH(QString, name);
    QFETCH(QString, comment);
    QFETCH(bool, withChild);

    Item *item = makeItem(ItemType(type), name, hasId, 0);
    item->comment = comment;
    if (withChild)
        item->appendChild(makeItem(Enum));
    return item;
}

void TestItem::isNewline_data()
{
    specialItemColumns();
    const QString none;
    QTest::newRow("Tag") << int(Tag) << false << none << none << false << true;
    QTest::newRow("Enum") << int(Enum) << false << none << none << false << true;
    QTest::newRow("Bit") << int(Bit) << false << none << none << false << true;
    QTest::newRow("Root") << int(Root) << false << none << none << false << false;
    QTest::newRow("Enums") << int(Enums) << false << none << none << false << false;
    QTest::newRow("Bits") << int(Bits) << false << none << none << false << false;
    QTest::newRow("Invalid") << int(Invalid) << false << none << none << false << false;
    QTest::newRow("Tag with hasId") << int(Tag) << true << none << none << false << false;
    QTest::newRow("Tag with name") << int(Tag) << false << "A" << none << false << false;
    QTest::newRow("Tag with comment") << int(Tag) << false << none << "c" << false << false;
    QTest::newRow("Tag with child") << int(Tag) << false << none << none << true << false;
    QTest::newRow("Enum with comment") << int(Enum) << false << none << "c" << false << false;
    QTest::newRow("Bit with hasId") << int(Bit) << true << none << none << false << false;
    QTest::newRow("Enum with empty comment") << int(Enum) << false << QString("") << QString("") << false << true;
}

void TestItem::isNewline()
{
    QFETCH(bool, expected);
    std::unique_ptr<Item> item(specialItem());
    QCOMPARE(item->isNewline(), expected);
}

void TestItem::isComment_data()
{
    specialItemColumns();
    const QString none;
    QTest::newRow("Tag") << int(Tag) << false << none << "text" << false << true;
    QTest::newRow("Enum") << int(Enum) << false << none << "text" << false << true;
    QTest::newRow("Bit") << int(Bit) << false << none << "text" << false << true;
    QTest::newRow("Enums") << int(Enums) << false << none << "text" << false << true;
    QTest::newRow("Bits") << int(Bits) << false << none << "text" << false << true;
    QTest::newRow("Invalid") << int(Invalid) << false << none << "text" << false << true;
    QTest::newRow("Root") << int(Root) << false << none << "text" << false << false;
    QTest::newRow("empty comment") << int(Tag) << false << none << none << false << false;
    QTest::newRow("with name") << int(Tag) << false << "A"
                               << "text" << false << false;
    QTest::newRow("with hasId") << int(Tag) << true << none << "text" << false << false;
    QTest::newRow("with child") << int(Enums) << false << none << "text" << true << false;
    QTest::newRow("blank comment text") << int(Tag) << false << none << " " << false << true;
}

void TestItem::isComment()
{
    QFETCH(bool, expected);
    std::unique_ptr<Item> item(specialItem());
    QCOMPARE(item->isComment(), expected);
}

void TestItem::isValid_data()
{
    QTest::addColumn<int>("itemType");
    QTest::addColumn<bool>("hasId");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("askedType");
    QTest::addColumn<bool>("valid");

    const QString none;
    QTest::newRow("no id, named Tag") << int(Tag) << false << "A" << int(Tag) << false;
    QTest::newRow("no id, named Tag, any") << int(Tag) << false << "A" << -1 << false;
    QTest::newRow("no id, nameless Enum") << int(Enum) << false << none << int(Enum) << false;
    QTest::newRow("nameless Enum as Enum") << int(Enum) << true << none << int(Enum) << true;
    QTest::newRow("nameless Enum as any") << int(Enum) << true << none << -1 << false;
    QTest::newRow("nameless Tag as Tag") << int(Tag) << true << none << int(Tag) << false;
    QTest::newRow("nameless Bit as Bit") << int(Bit) << true << none << int(Bit) << false;
    QTest::newRow("nameless Tag as Enum") << int(Tag) << true << none << int(Enum) << false;
    QTest::newRow("named Tag as any") << int(Tag) << true << "A" << -1 << true;
    QTest::newRow("named Enum as any") << int(Enum) << true << "A" << -1 << true;
    QTest::newRow("named Bit as any") << int(Bit) << true << "A" << -1 << true;
    QTest::newRow("named Enums as any") << int(Enums) << true << "A" << -1 << false;
    QTest::newRow("named Bits as any") << int(Bits) << true << "A" << -1 << false;
    QTest::newRow("named Root as any") << int(Root) << true << "A" << -1 << false;
    QTest::newRow("named Invalid as any") << int(Invalid) << true << "A" << -1 << false;
    QTest::newRow("named Tag as Tag") << int(Tag) << true << "A" << int(Tag) << true;
    QTest::newRow("named Tag as Bit") << int(Tag) << true << "A" << int(Bit) << false;
    QTest::newRow("named Enum as Enum") << int(Enum) << true << "A" << int(Enum) << true;
    QTest::newRow("named Bit as Enum") << int(Bit) << true << "A" << int(Enum) << false;
    QTest::newRow("named Enums as Enums") << int(Enums) << true << "A" << int(Enums) << true;
    QTest::newRow("named Root as Root") << int(Root) << true << "A" << int(Root) << true;
}

void TestItem::isValid()
{
    QFETCH(int, itemType);
    QFETCH(bool, hasId);
    QFETCH(QString, name);
    QFETCH(int, askedType);
    QFETCH(bool, valid);

    std::unique_ptr<Item> item(makeItem(ItemType(itemType), name, hasId, 1));
    QCOMPARE(item->isValid(ItemType(askedType)), valid);
}

void TestItem::displayModeInheritance()
{
    Item enums;
    enums.type = Enums;
    enums.display.mode = 3;
    enums.display.digits = 2;
    Item *value = makeNumbered(Enum, QStringLiteral("Ten"), 10);
    enums.appendChild(value);

    const DisplayMode &mode = value->displayMode();
    QCOMPARE(mode.mode, 3);
    QCOMPARE(mode.digits, 2);
    QCOMPARE(&mode, &enums.display);
    QCOMPARE(value->formatId(), QStringLiteral("0x0A"));

    // further up: root > tag > bits > bit
    Item root;
    root.type = Root;
    root.display.mode = 4;
    root.display.digits = 3;
    Item *tag = makeNumbered(Tag, QStringLiteral("T"), 0x7001);
    root.appendChild(tag);
    Item *bits = makeItem(Bits);
    tag->appendChild(bits);
    Item *bit = makeNumbered(Bit, QStringLiteral("B"), 8);
    bits->appendChild(bit);
    QCOMPARE(&bit->displayMode(), &root.display);
    QCOMPARE(bit->formatId(), QStringLiteral("0o010"));
    // the tag itself always shows its code
    QCOMPARE(tag->formatId(), QStringLiteral("0x7001"));

    // the nearest set mode wins
    tag->display.mode = 2;
    QCOMPARE(&bit->displayMode(), &tag->display);
    QCOMPARE(bit->formatId(), QStringLiteral("8"));
}

void TestItem::displayModeOwn()
{
    Item enums;
    enums.type = Enums;
    enums.display.mode = 3;
    enums.display.digits = 2;
    Item *value = makeNumbered(Enum, QStringLiteral("Five"), 5);
    value->display.mode = 5;
    enums.appendChild(value);
    QCOMPARE(&value->displayMode(), &value->display);
    QCOMPARE(value->formatId(), QStringLiteral("0y101"));
}

void TestItem::displayModeNoneSet()
{
    Item root;
    root.type = Root;
    Item *tag = makeNumbered(Tag, QStringLiteral("T"), 0x1001);
    root.appendChild(tag);
    Item *enums = makeItem(Enums);
    tag->appendChild(enums);
    Item *value = makeNumbered(Enum, QStringLiteral("Minus"), ~0ull);
    value->display.digits = 4;
    enums->appendChild(value);

    const DisplayMode &mode = value->displayMode();
    QCOMPARE(&mode, &value->display);
    QCOMPARE(mode.mode, 0);
    QCOMPARE(mode.digits, 4);
    // signed decimal with the item's own padding
    QCOMPARE(value->formatId(), QStringLiteral("00-1"));
    value->id = 5;
    QCOMPARE(value->formatId(), QStringLiteral("0005"));
}

void TestItem::displayModeSkipsDigitsOnly()
{
    // an ancestor with digits but mode 0 is passed over
    Item tag;
    tag.type = Tag;
    tag.display.mode = 2;
    Item *enums = makeItem(Enums);
    enums->display.digits = 6;
    tag.appendChild(enums);
    Item *value = makeNumbered(Enum, QStringLiteral("V"), 12);
    enums->appendChild(value);
    QCOMPARE(&value->displayMode(), &tag.display);
    QCOMPARE(value->formatId(), QStringLiteral("12"));
}

void TestItem::formatId_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<qulonglong>("id");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("digits");
    QTest::addColumn<QString>("text");

    QTest::newRow("tag ignores display") << int(Tag) << 0x1A3ull << 5 << 8 << QStringLiteral("0x01A3");
    QTest::newRow("tag without display") << int(Tag) << 0x2001ull << 0 << 0 << QStringLiteral("0x2001");
    QTest::newRow("tag signed display") << int(Tag) << 0xFFFFull << 1 << 0 << QStringLiteral("0xFFFF");
    QTest::newRow("tag above 16 bits") << int(Tag) << 0x12345ull << 0 << 0 << QStringLiteral("0x12345");
    QTest::newRow("tag low 32 bits") << int(Tag) << 0x100001234ull << 0 << 0 << QStringLiteral("0x1234");
    QTest::newRow("enum signed default") << int(Enum) << ~0ull << 0 << 0 << QStringLiteral("-1");
    QTest::newRow("enum unsigned") << int(Enum) << ~0ull << 2 << 0 << QStringLiteral("18446744073709551615");
    QTest::newRow("enum hex") << int(Enum) << 255ull << 3 << 4 << QStringLiteral("0x00FF");
    QTest::newRow("bit octal") << int(Bit) << 8ull << 4 << 0 << QStringLiteral("0o10");
    QTest::newRow("bit binary") << int(Bit) << 5ull << 5 << 4 << QStringLiteral("0y0101");
    QTest::newRow("enums list") << int(Enums) << 10ull << 3 << 0 << QStringLiteral("0xA");
    QTest::newRow("root") << int(Root) << 7ull << 0 << 2 << QStringLiteral("07");
    QTest::newRow("invalid") << int(Invalid) << 7ull << 1 << 0 << QStringLiteral("7");
}

void TestItem::formatId()
{
    QFETCH(int, type);
    QFETCH(qulonglong, id);
    QFETCH(int, mode);
    QFETCH(int, digits);
    QFETCH(QString, text);

    Item item;
    item.type = ItemType(type);
    item.id = id;
    item.hasId = true;
    item.display.mode = mode;
    item.display.digits = digits;
    QCOMPARE(item.formatId(), text);
}

void TestItem::matchingParentType_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("parentType");

    QTest::newRow("Tag") << int(Tag) << int(Root);
    QTest::newRow("Enums") << int(Enums) << int(Tag);
    QTest::newRow("Enum") << int(Enum) << int(Enums);
    QTest::newRow("Bits") << int(Bits) << int(Tag);
    QTest::newRow("Bit") << int(Bit) << int(Bits);
    QTest::newRow("Root") << int(Root) << int(Invalid);
    QTest::newRow("Invalid") << int(Invalid) << int(Invalid);
    QTest::newRow("6") << 6 << int(Invalid);
    QTest::newRow("42") << 42 << int(Invalid);
    QTest::newRow("-2") << -2 << int(Invalid);
}

void TestItem::matchingParentType()
{
    QFETCH(int, type);
    QFETCH(int, parentType);
    QCOMPARE(int(Item::matchingParentType(ItemType(type))), parentType);
}

void TestItem::collisionFlagValues()
{
    QCOMPARE(int(Item::NameCollision), 1);
    QCOMPARE(int(Item::IdCollision), 2);
    const Item::CollisionFlags both = Item::NameCollision | Item::IdCollision;
    QCOMPARE(int(both), 3);
}

void TestItem::dumpTree()
{
    Item root;
    root.type = Root;
    root.appendChild(makeNumbered(Tag, QStringLiteral("Power"), 0x2001));

    QCOMPARE(captureStderr([&] { root.dump(0); }), QByteArray("  0 Root\n    0 Tag: Power = 0x2001\n"));

    Item *tag = makeNumbered(Tag, QStringLiteral("Mode"), 0x1A3);
    root.appendChild(tag);
    Item *bits = makeItem(Bits);
    Item *enums = makeItem(Enums);
    tag->appendChild(bits);
    tag->appendChild(enums);
    bits->appendChild(makeNumbered(Bit, QStringLiteral("Low"), 1));
    enums->appendChild(makeNumbered(Enum, QStringLiteral("Off"), 0));
    enums->appendChild(makeNumbered(Enum, QStringLiteral("Minus"), ~0ull));
    enums->appendChild(makeComment(Enum, QStringLiteral("comment")));
    enums->appendChild(makeNumbered(Enum, QStringLiteral("Big"), 0x123456789ull));

    const QByteArray expected = "  0 Root\n"
                                "    0 Tag: Power = 0x2001\n"
                                "    1 Tag: Mode = 0x01A3\n"
                                "      0 Bits\n"
                                "        0 Bit: Low = 0x0001\n"
                                "      1 Enums\n"
                                "        0 Enum: Off = 0x0000\n"
                                "        1 Enum: Minus = 0xFFFFFFFFFFFFFFFF\n"
                                "        2 Enum:  = 0x0000\n"
                                "        3 Enum: Big = 0x123456789\n";
    QCOMPARE(captureStderr([&] { root.dump(0); }), expected);
}

void TestItem::dumpIndentAndRows()
{
    Item root;
    root.type = Root;
    for (int i = 0; i < 12; ++i)
        root.appendChild(makeBlank(Tag));
    Item *last = makeNumbered(Tag, QStringLiteral("Twelfth"), 0xFFFF);
    root.appendChild(last);

    // the row of the item itself, after `indent` blanks
    QCOMPARE(captureStderr([&] { last->dump(3); }), QByteArray("    12 Tag: Twelfth = 0xFFFF\n"));

    Item wide;
    wide.type = Enums;
    for (int i = 0; i < 1001; ++i)
        wide.appendChild(makeBlank(Enum));
    const QByteArray text = captureStderr([&] { wide.child(1000)->dump(0); });
    QCOMPARE(text, QByteArray("1000 Enum:  = 0x0000\n"));
}

void TestItem::dumpOtherTypes()
{
    Item invalid;
    invalid.name = QStringLiteral("X");
    invalid.id = 0x12;
    QCOMPARE(captureStderr([&] { invalid.dump(0); }), QByteArray("  0 4294967295: X = 0x0012\n"));

    Item odd;
    odd.type = ItemType(7);
    odd.id = 0xABCDE;
    QCOMPARE(captureStderr([&] { odd.dump(2); }), QByteArray("    0 7:  = 0xABCDE\n"));
}

QTEST_GUILESS_MAIN(TestItem)

#include "tst_item.moc"
