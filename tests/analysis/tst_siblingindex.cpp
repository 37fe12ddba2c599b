// Tests of the sibling index: the holders of every name and code with their exact counts and
// address mixes, the collision flags it gives, and which siblings each change reports as changed.

#include "item.h"
#include "siblingindex.h"

#include <QtTest>

#include <algorithm>
#include <memory>

using namespace ZAT16;

namespace {

Item *value(Item *list, const QString &name, quint64 id, bool hasId = true)
{
    auto *item = new Item;
    item->type = Enum;
    item->name = name;
    item->id = id;
    item->hasId = hasId;
    list->appendChild(item);
    return item;
}

quintptr mix(std::initializer_list<const Item *> items)
{
    quintptr result = 0;
    for (const Item *item : items)
        result ^= quintptr(item);
    return result;
}

// The changed siblings as a sorted list of names, so that a comparison reads well.
QStringList names(const SiblingIndex::Changed &changed)
{
    QStringList list;
    for (const Item *item : changed)
        list << item->name;
    std::sort(list.begin(), list.end());
    return list;
}

// The index agrees with Item::findCollision for every child of `list`.
bool agrees(const SiblingIndex &index, const Item *list)
{
    for (const Item *child : list->children) {
        if (index.collision(child) != child->findCollision())
            return false;
    }
    return true;
}

} // namespace

class TestSiblingIndex : public QObject
{
    Q_OBJECT

private slots:
    void countsOfAList()
    {
        Item list;
        list.type = Enums;
        Item *a = value(&list, QStringLiteral("A"), 1);
        Item *b = value(&list, QStringLiteral("B"), 1);
        Item *a2 = value(&list, QStringLiteral("A"), 2);
        Item *nameless = value(&list, QString(), 7);
        Item *codeless = value(&list, QStringLiteral("C"), 2, false);
        Item *blank = value(&list, QString(), 0, false);

        const SiblingIndex index(&list);
        QCOMPARE(index.size(), qsizetype(6));
        QCOMPARE(index.nameHolders(QStringLiteral("A")).count, 2);
        QCOMPARE(index.nameHolders(QStringLiteral("A")).mix, mix({ a, a2 }));
        QCOMPARE(index.nameHolders(QStringLiteral("B")).count, 1);
        QCOMPARE(index.nameHolders(QStringLiteral("B")).mix, mix({ b }));
        QCOMPARE(index.nameHolders(QStringLiteral("C")).count, 1);
        QCOMPARE(index.nameHolders(QStringLiteral("C")).mix, mix({ codeless }));
        // An empty name is no key: the nameless value and the blank line are not counted.
        QCOMPARE(index.nameHolders(QString()).count, 0);
        QCOMPARE(index.idHolders(1).count, 2);
        QCOMPARE(index.idHolders(1).mix, mix({ a, b }));
        // The codeless entry's id of 2 is not counted, only a2's.
        QCOMPARE(index.idHolders(2).count, 1);
        QCOMPARE(index.idHolders(2).mix, mix({ a2 }));
        QCOMPARE(index.idHolders(7).mix, mix({ nameless }));
        // The blank line's id 0 is no key.
        QCOMPARE(index.idHolders(0).count, 0);

        QCOMPARE(index.at(0).name, QStringLiteral("A"));
        QVERIFY(index.at(0).hasName);
        QVERIFY(index.at(0).hasId);
        QVERIFY(!index.at(3).hasName);
        QVERIFY(!index.at(4).hasId);
        QVERIFY(!index.at(5).hasName && !index.at(5).hasId);
        QVERIFY(blank->isNewline());
    }

    void collisionFlags()
    {
        Item list;
        list.type = Enums;
        Item *a = value(&list, QStringLiteral("A"), 1);
        Item *b = value(&list, QStringLiteral("B"), 1);
        Item *a2 = value(&list, QStringLiteral("A"), 2);
        Item *nameless1 = value(&list, QString(), 3);
        Item *nameless2 = value(&list, QString(), 4);
        Item *codeless = value(&list, QStringLiteral("C"), 3, false);
        // The same 64-bit id only: the low 32 bits alone do not collide.
        Item *wide = value(&list, QStringLiteral("W"), Q_UINT64_C(0x100000004));

        const SiblingIndex index(&list);
        QCOMPARE(int(index.collision(a)), int(Item::NameCollision | Item::IdCollision));
        QCOMPARE(int(index.collision(b)), int(Item::IdCollision));
        QCOMPARE(int(index.collision(a2)), int(Item::NameCollision));
        QCOMPARE(int(index.collision(nameless1)), 0);
        QCOMPARE(int(index.collision(nameless2)), 0);
        QCOMPARE(int(index.collision(codeless)), 0);
        QCOMPARE(int(index.collision(wide)), 0);
        QVERIFY(agrees(index, &list));
    }

    // The flags of a whole list in one pass, pair by pair for short lists and hashed for long
    // ones, are the flags of the index; a list of 16 and one of 17 take the two ways.
    void collisionsOfAllChildren_data()
    {
        QTest::addColumn<int>("size");
        for (int size : { 0, 1, 2, 7, 16, 17, 40, 1000 })
            QTest::newRow(qPrintable(QString::number(size))) << size;
    }

    void collisionsOfAllChildren()
    {
        QFETCH(int, size);
        Item list;
        list.type = Enums;
        for (int i = 0; i < size; ++i) {
            // Names repeat every 7 rows, ids every 5; every third value has no id, every fourth
            // no name; some ids differ only above 32 bits.
            const QString name = i % 4 == 3 ? QString() : QStringLiteral("N%1").arg(i % 7);
            const quint64 id = (i % 5) | (i % 11 == 10 ? Q_UINT64_C(0x100000000) : 0);
            value(&list, name, id, i % 3 != 2);
        }
        const QList<Item::CollisionFlags> flags = SiblingIndex::collisions(&list);
        QCOMPARE(flags.size(), qsizetype(size));
        const SiblingIndex index(&list);
        int marked = 0;
        for (int i = 0; i < size; ++i) {
            const Item *child = list.children.at(i);
            QCOMPARE(int(flags.at(i)), int(index.collision(child)));
            QCOMPARE(int(flags.at(i)), int(child->findCollision()));
            marked += flags.at(i) ? 1 : 0;
        }
        // The lists from 7 rows on hold both kinds of collision.
        QCOMPARE(marked > 0, size >= 7);
    }

    void insertReportsTheLoneHolder()
    {
        Item list;
        list.type = Enums;
        Item *a = value(&list, QStringLiteral("A"), 1);
        value(&list, QStringLiteral("B"), 2);
        SiblingIndex index(&list);

        // A second holder of A and of 2: the first holders gain a flag.
        auto *c = new Item;
        c->type = Enum;
        c->name = QStringLiteral("A");
        c->id = 2;
        c->hasId = true;
        list.insertChildBefore(1, c);
        SiblingIndex::Changed changed;
        index.insert(1, c, &changed);
        QCOMPARE(names(changed), QStringList({ QStringLiteral("A"), QStringLiteral("B") }));
        QCOMPARE(changed.size(), 2);
        QCOMPARE(index.size(), qsizetype(3));
        QCOMPARE(index.at(1).name, QStringLiteral("A"));
        QCOMPARE(index.nameHolders(QStringLiteral("A")).count, 2);
        QCOMPARE(index.nameHolders(QStringLiteral("A")).mix, mix({ a, c }));
        QVERIFY(agrees(index, &list));

        // A third holder changes nobody's flags.
        Item *d = value(&list, QStringLiteral("A"), 9);
        changed.clear();
        index.insert(3, d, &changed);
        QVERIFY(changed.isEmpty());
        QCOMPARE(index.nameHolders(QStringLiteral("A")).count, 3);
        QCOMPARE(index.nameHolders(QStringLiteral("A")).mix, mix({ a, c, d }));
        QVERIFY(agrees(index, &list));
    }

    void removeReportsTheOneLeft()
    {
        Item list;
        list.type = Enums;
        Item *a = value(&list, QStringLiteral("A"), 1);
        value(&list, QStringLiteral("A"), 1);
        Item *b = value(&list, QStringLiteral("B"), 1);
        SiblingIndex index(&list);

        // A and B stay: A loses its name partner, the id 1 still has two holders.
        std::unique_ptr<Item> taken(list.takeChild(1));
        SiblingIndex::Changed changed;
        index.remove(1, taken.get(), &changed);
        QCOMPARE(names(changed), QStringList({ QStringLiteral("A") }));
        QCOMPARE(changed.at(0), a);
        QCOMPARE(index.size(), qsizetype(2));
        QCOMPARE(index.idHolders(1).count, 2);
        QCOMPARE(index.idHolders(1).mix, mix({ a, b }));
        QVERIFY(agrees(index, &list));

        // The last holder of a name leaves: the name is gone, and only A, which shared the code
        // with it, is reported.
        std::unique_ptr<Item> last(list.takeChild(1));
        changed.clear();
        index.remove(1, last.get(), &changed);
        QCOMPARE(names(changed), QStringList({ QStringLiteral("A") }));
        QCOMPARE(index.nameHolders(QStringLiteral("B")).count, 0);
        QCOMPARE(index.idHolders(1).count, 1);
        QCOMPARE(index.idHolders(1).mix, mix({ a }));
        QVERIFY(agrees(index, &list));
    }

    // The removal takes the keys as they were counted, not the item's present data.
    void removeGoesByWhatWasCounted()
    {
        Item list;
        list.type = Enums;
        Item *a = value(&list, QStringLiteral("A"), 1);
        value(&list, QStringLiteral("A"), 5);
        SiblingIndex index(&list);
        list.children.at(1)->name = QStringLiteral("Z");
        std::unique_ptr<Item> taken(list.takeChild(1));
        SiblingIndex::Changed changed;
        index.remove(1, taken.get(), &changed);
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed.at(0), a);
        QCOMPARE(index.nameHolders(QStringLiteral("A")).count, 1);
        QCOMPARE(index.idHolders(5).count, 0);
    }

    void updateMovesBetweenKeys()
    {
        Item list;
        list.type = Enums;
        Item *a = value(&list, QStringLiteral("A"), 1);
        Item *b = value(&list, QStringLiteral("B"), 2);
        Item *c = value(&list, QStringLiteral("C"), 2);
        SiblingIndex index(&list);

        // C takes A's name and leaves the code 2 to B alone: A and B change, C is the changed item
        // itself and is not reported.
        c->name = QStringLiteral("A");
        c->id = 3;
        SiblingIndex::Changed changed;
        index.update(2, c, &changed);
        QCOMPARE(names(changed), QStringList({ QStringLiteral("A"), QStringLiteral("B") }));
        QCOMPARE(index.at(2).name, QStringLiteral("A"));
        QCOMPARE(index.at(2).id, quint64(3));
        QCOMPARE(index.nameHolders(QStringLiteral("A")).mix, mix({ a, c }));
        QCOMPARE(index.nameHolders(QStringLiteral("C")).count, 0);
        QCOMPARE(index.idHolders(2).mix, mix({ b }));
        QVERIFY(agrees(index, &list));

        // The same sibling can lose one flag and gain the other in one change: it is reported for
        // each. A is left alone with its name and joined on its code; B is joined on its name; C
        // was alone with its code 3, which nobody else holds.
        c->name = QStringLiteral("B");
        c->id = 1;
        changed.clear();
        index.update(2, c, &changed);
        QCOMPARE(changed.size(), 3);
        QCOMPARE(names(changed), QStringList({ QStringLiteral("A"), QStringLiteral("A"), QStringLiteral("B") }));
        QCOMPARE(index.idHolders(3).count, 0);
        QVERIFY(agrees(index, &list));

        // Dropping the code and the name: both keys are left.
        c->name.clear();
        c->hasId = false;
        changed.clear();
        index.update(2, c, &changed);
        QCOMPARE(names(changed), QStringList({ QStringLiteral("A"), QStringLiteral("B") }));
        QCOMPARE(index.nameHolders(QStringLiteral("B")).count, 1);
        QCOMPARE(index.idHolders(1).count, 1);
        QVERIFY(!index.at(2).hasName);
        QVERIFY(!index.at(2).hasId);
        QVERIFY(agrees(index, &list));

        // Data that holds the same keys changes nothing.
        c->comment = QStringLiteral("note");
        changed.clear();
        index.update(2, c, &changed);
        QVERIFY(changed.isEmpty());
    }

    void changeWithoutAChangedList()
    {
        Item list;
        list.type = Enums;
        Item *a = value(&list, QStringLiteral("A"), 1);
        SiblingIndex index;
        QCOMPARE(index.size(), qsizetype(0));
        index.append(a);
        Item *b = value(&list, QStringLiteral("A"), 1);
        index.append(b);
        QCOMPARE(index.size(), qsizetype(2));
        QCOMPARE(index.nameHolders(QStringLiteral("A")).count, 2);
        QCOMPARE(int(index.collision(a)), int(Item::NameCollision | Item::IdCollision));
        index.change(SiblingIndex::counted(b), SiblingIndex::Counted(), b, nullptr);
        QCOMPARE(int(index.collision(a)), 0);
        // change() leaves the rows alone.
        QCOMPARE(index.size(), qsizetype(2));
    }
};

QTEST_GUILESS_MAIN(TestSiblingIndex)
#include "tst_siblingindex.moc"
