// The problems list and the editor's red marks agree: on random trees with every kind of
// fault, an entry is listed (not counting keyword warnings) exactly when the model marks at
// least one of its cells in red.

#include "editormodel.h"
#include "item.h"
#include "problems.h"

#include <QColor>
#include <QRandomGenerator>
#include <QSet>
#include <QtTest>

#include <memory>

using namespace ZAT16;

namespace {

class FaultyTree
{
public:
    explicit FaultyTree(quint32 seed)
        : m_rng(seed)
    {
    }

    Item *root()
    {
        auto *root = new Item;
        root->type = Root;
        const int tags = 1 + bounded(12);
        for (int i = 0; i < tags; ++i)
            root->appendChild(entry(Tag, 0xFFFF));
        return root;
    }

private:
    int bounded(int n) { return int(m_rng.bounded(n)); }
    bool chance(int percent) { return bounded(100) < percent; }

    // Few names and codes, so that siblings collide often.
    Item *entry(ItemType type, quint32 range)
    {
        auto *item = new Item;
        item->type = type;
        if (chance(75))
            item->name = QStringLiteral("N%1").arg(bounded(6));
        if (chance(10))
            item->name = QStringLiteral("end");
        item->hasId = chance(75);
        item->id = item->hasId ? quint64(m_rng.bounded(range)) % 6 : 0;
        if (chance(30))
            item->comment = QStringLiteral("note");
        if (type == Tag) {
            if (chance(40))
                item->appendChild(list(Bits, Bit));
            if (chance(40))
                item->appendChild(list(Enums, Enum));
        } else if (chance(3)) {
            // a value with entries below it, as a paste into a value could leave
            item->appendChild(entry(type, 10));
        }
        return item;
    }

    Item *list(ItemType listType, ItemType valueType)
    {
        auto *list = new Item;
        list->type = listType;
        const int values = bounded(6);
        for (int i = 0; i < values; ++i) {
            if (chance(10)) {
                auto *blank = new Item;
                blank->type = valueType;
                list->appendChild(blank);
            } else {
                list->appendChild(entry(valueType, 10));
            }
        }
        return list;
    }

    QRandomGenerator m_rng;
};

bool isRed(const EditorModel &model, const Item *item)
{
    for (int column = 0; column < 3; ++column) {
        const QVariant colour = model.highlightData(item, 0, column, Qt::BackgroundRole);
        if (colour.isValid() && colour.value<QColor>() == QColor(192, 0, 0))
            return true;
    }
    return false;
}

void collectRed(const EditorModel &model, const Item *item, QSet<const Item *> *red)
{
    for (const Item *child : item->children) {
        if (isRed(model, child))
            red->insert(child);
        collectRed(model, child, red);
    }
}

} // namespace

class TestProblemsMarks : public QObject
{
    Q_OBJECT

private slots:
    void listedExactlyWhenMarked_data()
    {
        QTest::addColumn<quint32>("seed");
        for (quint32 seed = 1; seed <= 500; ++seed)
            QTest::newRow(qPrintable(QStringLiteral("seed %1").arg(seed))) << seed;
    }

    void listedExactlyWhenMarked()
    {
        QFETCH(quint32, seed);
        EditorModel model;
        FaultyTree maker(seed);
        model.setTags(maker.root());

        QSet<const Item *> red;
        collectRed(model, model.root(), &red);
        QSet<const Item *> listed;
        for (const Problems::Problem &problem : Problems::find(model.root())) {
            if (!problem.isWarning())
                listed.insert(problem.item);
        }
        for (const Item *item : red)
            QVERIFY2(listed.contains(item),
                     qPrintable(QStringLiteral("marked, not listed: ") + Problems::describe(item)));
        for (const Item *item : listed)
            QVERIFY2(red.contains(item), qPrintable(QStringLiteral("listed, not marked: ") + Problems::describe(item)));
        m_marked += red.size();
    }

    // The trees do have faults: the comparison above is not between two empty sets.
    void treesHaveFaults() { QVERIFY2(m_marked > 2000, qPrintable(QString::number(m_marked))); }

private:
    qsizetype m_marked = 0;
};

QTEST_MAIN(TestProblemsMarks)
#include "tst_problemsmarks.moc"
