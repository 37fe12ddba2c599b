// A seeded random walk of edits over a definitions file: cell edits of all three columns, item
// data, insertions of every kind, lists, deletions, copy, cut and paste, drops of text and of
// dragged rows, moves up, down and to where an insertion goes, new and replaced documents, with
// undo and redo in between. The model tester watches every signal; at the end
// undoing everything must give the original file byte for byte and redoing everything the final
// one. Run in the sanitizer build it also shows that every item outside the tree is owned by
// exactly one command and freed once. After every step the rows the items keep of themselves
// and the problem list that follows the edits must equal what a search of the lists and a new
// problem list say.

#include "editormoves.h"
#include "editortest.h"
#include "problemlist.h"

#include <QMimeData>
#include <QRandomGenerator>
#include <QTemporaryDir>

using namespace ZAT16;
using namespace EditorTest;

namespace {

class RandomWalk
{
public:
    RandomWalk(Fixture &fixture, quint32 seed, const QString &path)
        : f(fixture)
        , m_edits(seed)
        , m_moves(seed ^ 4u)
        , m_path(path)
    {
    }

    void step();
    /// The number of entries moved so far, by the walk's moves and by drops of dragged rows.
    int moved = 0;
    bool checkCaches(QString *problem);

    QMap<QString, int> counts;

private:
    // The moves and the variants of drops draw from a generator of their own, so that the edits
    // draw the same numbers as they did before there were moves.
    class MoveDraws
    {
    public:
        explicit MoveDraws(RandomWalk *walk)
            : m_walk(walk)
        {
            m_walk->rng = &m_walk->m_moves;
        }
        ~MoveDraws() { m_walk->rng = &m_walk->m_edits; }

    private:
        RandomWalk *m_walk;
    };

    void edit();
    void move();
    int bounded(int n) { return int(rng->bounded(quint32(n))); }
    bool chance(int percent) { return bounded(100) < percent; }

    QList<Item *> items() const;
    Item *pickItem();
    QModelIndex pickIndex(int column);
    QModelIndex pickIndex() { return pickIndex(bounded(3)); }
    // An entry of a list of the given kind, or of any kind when there is none of it.
    QModelIndex pickListEntry(ItemType list);
    QString randomName();
    QString randomCode();
    QString randomComment();
    Item *randomItem(int depth);
    void count(const QString &what) { ++counts[what]; }

    Fixture &f;
    QRandomGenerator m_edits;
    QRandomGenerator m_moves;
    QRandomGenerator *rng = &m_edits;
    QString m_path;
    std::unique_ptr<QMimeData> m_clipboard;
    int m_clipboardKind = -1;
    std::unique_ptr<QMimeData> m_drag; ///< a row dragged some steps ago
    int m_serial = 0;
};

QList<Item *> RandomWalk::items() const
{
    QList<Item *> result;
    if (!f.root())
        return result;
    QList<Item *> stack = { f.root() };
    while (!stack.isEmpty()) {
        Item *item = stack.takeLast();
        for (Item *child : item->children) {
            result << child;
            stack << child;
        }
    }
    return result;
}

Item *RandomWalk::pickItem()
{
    const QList<Item *> all = items();
    if (all.isEmpty())
        return nullptr;
    return all.at(bounded(all.size()));
}

QModelIndex RandomWalk::pickIndex(int column)
{
    if (chance(3))
        return QModelIndex();
    Item *item = pickItem();
    if (!item)
        return QModelIndex();
    const QModelIndex index = f.model.item2index(item);
    return f.model.index(index.row(), column, index.parent());
}

QModelIndex RandomWalk::pickListEntry(ItemType list)
{
    QList<Item *> entries;
    for (Item *item : items()) {
        if (item->parent->type == list)
            entries << item;
    }
    if (entries.isEmpty())
        return pickIndex();
    return f.model.item2index(entries.at(bounded(entries.size())));
}

QString RandomWalk::randomName()
{
    const int kind = bounded(10);
    if (kind == 0)
        return QString();
    if (kind <= 2) {
        if (Item *item = pickItem())
            return item->name;
    }
    if (kind == 3)
        return QStringLiteral("1bad name");
    return QStringLiteral("Name%1").arg(bounded(40));
}

QString RandomWalk::randomCode()
{
    switch (bounded(10)) {
    case 0:
        return QString();
    case 1:
        return QString::number(bounded(20));
    case 2:
        return QStringLiteral("70000");
    case 3:
        return QStringLiteral("0b%1").arg(QString::number(bounded(16), 2));
    case 4:
        return QStringLiteral("junk");
    case 5:
        if (Item *item = pickItem())
            return item->formatId();
        return QString();
    default:
        return QStringLiteral("0x%1").arg(bounded(0x10000), 4, 16, QLatin1Char('0'));
    }
}

QString RandomWalk::randomComment()
{
    switch (bounded(5)) {
    case 0:
    case 1:
        return QString();
    case 2:
        if (Item *item = pickItem())
            return item->comment;
        return QString();
    default:
        return QStringLiteral("comment %1 & <more>").arg(bounded(100));
    }
}

// A fresh item of any kind, with children for tags and lists; codes stay within 32 bits.
Item *RandomWalk::randomItem(int depth)
{
    static const ItemType kinds[] = { Tag, Tag, Enums, Bits, Enum, Enum, Bit, Bit, Root };
    const ItemType kind = kinds[bounded(depth == 0 ? 9 : 8)];
    auto *item = new Item;
    item->type = kind;
    const int shape = bounded(10);
    if (kind == Tag || kind == Enum || kind == Bit) {
        if (shape == 0) {
            // a blank line
        } else if (shape == 1) {
            item->comment = QStringLiteral("note %1").arg(++m_serial);
        } else {
            item->name = QStringLiteral("New%1").arg(++m_serial);
            item->hasId = shape != 2;
            item->id = kind == Tag ? quint64(bounded(0x10000)) : quint64(bounded(64));
            if (chance(30))
                item->comment = QStringLiteral("fresh");
        }
    }
    if (kind == Tag && shape > 1 && depth == 0) {
        if (chance(40)) {
            auto *bits = new Item;
            bits->type = Bits;
            for (int i = 0, n = bounded(3); i < n; ++i) {
                auto *bit = new Item;
                bit->type = Bit;
                bit->name = QStringLiteral("B%1").arg(++m_serial);
                bit->hasId = true;
                bit->id = quint64(1) << i;
                bits->appendChild(bit);
            }
            item->appendChild(bits);
        }
        if (chance(40)) {
            auto *enums = new Item;
            enums->type = Enums;
            for (int i = 0, n = bounded(4); i < n; ++i) {
                auto *value = new Item;
                value->type = Enum;
                value->name = QStringLiteral("E%1").arg(++m_serial);
                value->hasId = true;
                value->id = quint64(i);
                enums->appendChild(value);
            }
            item->appendChild(enums);
        }
    }
    if ((kind == Enums || kind == Bits) && depth == 0) {
        if (chance(30))
            item->display.mode = 3;
        for (int i = 0, n = bounded(4); i < n; ++i) {
            auto *value = new Item;
            value->type = kind == Enums ? Enum : Bit;
            if (chance(15)) {
                value->comment = QStringLiteral("inside");
            } else {
                value->name = QStringLiteral("V%1").arg(++m_serial);
                value->hasId = true;
                value->id = quint64(bounded(100));
            }
            item->appendChild(value);
        }
    }
    return item;
}

// An edit, and now and then a move after it.
void RandomWalk::step()
{
    edit();
    if (QTest::currentTestFailed())
        return;
    const MoveDraws draws(this);
    if (chance(10))
        move();
}

void RandomWalk::edit()
{
    const int op = bounded(100);
    if (op < 12) {
        const QModelIndex index = pickIndex(0);
        if (f.model.setData(index, randomName()))
            count(QStringLiteral("edit name"));
    } else if (op < 24) {
        const QModelIndex index = pickIndex(1);
        if (f.model.setData(index, randomCode()))
            count(QStringLiteral("edit code"));
    } else if (op < 32) {
        const QModelIndex index = pickIndex(2);
        // One random number after the other, in the same order whatever the compiler: the order in
        // which a call's arguments are evaluated is not fixed.
        const int role = chance(95) ? Qt::EditRole : Qt::DisplayRole;
        if (f.model.setData(index, randomComment(), role))
            count(QStringLiteral("edit comment"));
    } else if (op < 38) {
        const QModelIndex index = pickIndex();
        Item *item = f.model.index2item(index);
        if (!item)
            return;
        ItemData data = *item;
        switch (bounded(6)) {
        case 0:
            data.name = randomName();
            break;
        case 1:
            data.hasId = !data.hasId;
            data.id = item->type == Tag ? quint64(bounded(0x10000)) : quint64(rng->generate());
            break;
        case 2:
            data.comment = randomComment();
            break;
        case 3:
            data.display.mode = bounded(6);
            data.display.digits = bounded(9);
            break;
        case 4:
            data.secure = !data.secure;
            break;
        default:
            break; // unchanged: nothing is pushed
        }
        if (f.model.setItemData(index, data))
            count(QStringLiteral("item data"));
    } else if (op < 46) {
        const QModelIndex parent = pickIndex(0);
        Item *parentItem = f.model.index2item(parent);
        const int row = parentItem ? bounded(int(parentItem->children.size()) + 2) - 1 : 0;
        if (f.model.insertRow(row, parent))
            count(QStringLiteral("new row under ") + TreeText::typeName(parentItem->type));
    } else if (op < 54) {
        const QModelIndex parent = pickIndex(0);
        Item *parentItem = f.model.index2item(parent);
        const int row = parentItem ? bounded(int(parentItem->children.size()) + 2) : 0;
        Item *item = randomItem(0);
        const int kind = item->type;
        const int before = f.stack.count();
        const QModelIndex inserted = f.model.insertRow(row, parent, item);
        if (inserted.isValid()) {
            const bool merged
                = f.stack.count() > before && f.stack.text(f.stack.count() - 1) == QLatin1String("Merge data");
            count(QStringLiteral("insert ") + TreeText::typeName(kind)
                  + (merged ? QStringLiteral(" merged") : QString()));
        } else {
            delete item;
        }
    } else if (op < 58) {
        const ItemType list = chance(50) ? Enums : Bits;
        if (f.model.insertList(pickIndex(), list).isValid())
            count(QStringLiteral("list"));
    } else if (op < 65) {
        const QModelIndex index = pickIndex();
        if (f.model.removeRow(index.isValid() ? index.row() : bounded(3), index.parent()))
            count(QStringLiteral("remove"));
    } else if (op < 71) {
        const QModelIndex index = pickIndex();
        QMimeData *mime = f.model.copy(index);
        if (mime) {
            m_clipboard.reset(mime);
            m_clipboardKind = f.model.index2item(index)->type;
            count(QStringLiteral("copy"));
        }
    } else if (op < 75) {
        const QModelIndex index = pickIndex();
        const int kind = index.isValid() ? f.model.index2item(index)->type : -1;
        QMimeData *mime = f.model.cut(index);
        if (mime) {
            m_clipboard.reset(mime);
            m_clipboardKind = kind;
            count(QStringLiteral("cut"));
        }
    } else if (op < 84) {
        if (!m_clipboard)
            return;
        const int before = f.stack.count();
        const QModelIndex pasted = f.model.paste(pickIndex(), m_clipboard.get());
        if (pasted.isValid()) {
            const bool merged
                = f.stack.count() > before && f.stack.text(f.stack.count() - 1) == QLatin1String("Merge data");
            count(QStringLiteral("paste ") + TreeText::typeName(m_clipboardKind)
                  + (merged ? QStringLiteral(" merged") : QString()));
        }
    } else if (op < 86) {
        QMimeData mime;
        mime.setText(chance(50) ? randomName() : randomCode());
        if (f.model.paste(pickIndex(), &mime).isValid())
            count(QStringLiteral("paste text"));
    } else if (op < 90) {
        // A row dragged within the model moves its entry; text, as from another program, sets a
        // cell. A drag kept from an earlier step may name rows that hold other entries now.
        const QModelIndex source = pickIndex();
        std::unique_ptr<QMimeData> mime(f.model.mimeData({ source }));
        if (!mime)
            return;
        {
            const MoveDraws draws(this);
            if (chance(25)) {
                mime = std::make_unique<QMimeData>();
                mime->setText(chance(50) ? randomName() : randomCode());
            } else if (m_drag && chance(15)) {
                mime = std::move(m_drag);
            }
        }
        const bool row = mime->hasFormat(EditorMoves::entryMimeType());
        const int kind = bounded(10);
        const int between = kind == 0 ? bounded(3) : -1;
        const Qt::DropAction action = kind == 1 ? Qt::IgnoreAction : Qt::CopyAction;
        const int before = f.stack.index();
        if (f.model.dropMimeData(mime.get(), action, between, -1, pickIndex(source.column()))) {
            count(QStringLiteral("drop"));
            if (action != Qt::IgnoreAction)
                count(row ? QStringLiteral("drop row") : QStringLiteral("drop text"));
            if (row && f.stack.index() > before)
                ++moved;
        }
        const MoveDraws draws(this);
        if (row && chance(30))
            m_drag = std::move(mime);
    } else if (op < 91) {
        const int before = f.stack.count();
        f.model.undoableClear(pickIndex());
        if (f.stack.count() > before)
            count(QStringLiteral("clear"));
    } else if (op < 92) {
        Item *root = parseFile(m_path);
        QVERIFY(root);
        f.model.undoableSetTags(root, pickIndex());
        count(QStringLiteral("replace"));
    } else if (op < 97) {
        for (int i = 0, n = bounded(3) + 1; i < n && f.stack.canUndo(); ++i)
            f.stack.undo();
        count(QStringLiteral("undo"));
    } else {
        for (int i = 0, n = bounded(3) + 1; i < n && f.stack.canRedo(); ++i)
            f.stack.redo();
        count(QStringLiteral("redo"));
    }
}

void RandomWalk::move()
{
    if (chance(60)) {
        // Values and bits often: a file may have few of them.
        const QModelIndex index = chance(40) ? pickListEntry(chance(50) ? Bits : Enums) : pickIndex();
        const int offset = chance(80) ? (chance(50) ? -1 : 1) : bounded(7) - 3;
        const bool can = f.model.canMoveBy(index, offset);
        const int before = f.stack.index();
        const QModelIndex moved = f.model.moveBy(index, offset);
        QCOMPARE(moved.isValid(), can);
        QCOMPARE(f.stack.index(), before + (can ? 1 : 0));
        if (moved.isValid()) {
            QCOMPARE(moved.row(), index.row() + offset);
            count(QStringLiteral("move ") + TreeText::typeName(f.model.index2item(moved)->type));
            ++this->moved;
        }
    } else {
        const QModelIndex index = chance(40) ? pickListEntry(chance(50) ? Bits : Enums) : pickIndex();
        const QModelIndex parent = pickIndex(0);
        Item *parentItem = f.model.index2item(parent);
        const int row = parentItem ? bounded(int(parentItem->children.size()) + 2) - 1 : 0;
        const bool can = f.model.canMoveTo(index, row, parent);
        const int before = f.stack.index();
        const QModelIndex moved = f.model.moveTo(index, row, parent);
        // one undo step, or none
        QCOMPARE(moved.isValid(), can);
        QCOMPARE(f.stack.index(), before + (can ? 1 : 0));
        if (moved.isValid()) {
            count(QStringLiteral("move to ") + TreeText::typeName(f.model.index2item(moved)->type));
            ++this->moved;
        }
    }
}

// The cached rows and collision flags must match what the items themselves say.
bool RandomWalk::checkCaches(QString *problem)
{
    const QList<Item *> all = items();
    // Every row, asked in random order, as a search of the parent's list finds it.
    for (int i = 0; i < all.size(); ++i) {
        const Item *item = all.at(bounded(all.size()));
        const int row = int(item->parent->children.indexOf(const_cast<Item *>(item)));
        if (f.model.findRow(item) != row || item->row() != row) {
            *problem = QStringLiteral("row of %1: %2 and %3, not %4")
                           .arg(item->name)
                           .arg(f.model.findRow(item))
                           .arg(item->row())
                           .arg(row);
            return false;
        }
    }
    for (int i = 0; i < 4 && !all.isEmpty(); ++i) {
        const Item *item = all.at(bounded(all.size()));
        if (f.model.findCollision(item) != item->findCollision()) {
            *problem = QStringLiteral("collisions of %1").arg(item->name);
            return false;
        }
    }
    return true;
}

// Whether two problem lists are the same, entry by entry; where not, `difference` says where.
bool sameProblems(const QList<Problems::Problem> &kept, const QList<Problems::Problem> &found, QString *difference)
{
    for (qsizetype i = 0; i < qMax(kept.size(), found.size()); ++i) {
        const QString a = i < kept.size() ? kept.at(i).message : QStringLiteral("(none)");
        const QString b = i < found.size() ? found.at(i).message : QStringLiteral("(none)");
        if (a != b || i >= kept.size() || i >= found.size() || kept.at(i).item != found.at(i).item
            || kept.at(i).kind != found.at(i).kind) {
            *difference = QStringLiteral("problem %1 of %2 is \"%3\", not \"%4\"").arg(i).arg(found.size()).arg(a, b);
            return false;
        }
    }
    return true;
}

} // namespace

class TestEditorRandom : public QObject
{
    Q_OBJECT

private slots:
    void randomEdits_data();
    void randomEdits();

private:
    QTemporaryDir m_dir;
};

namespace {

// A file with a top-level list and an enumeration list long enough to be indexed as soon as the
// problem list is made, with repeated names and codes in both.
QByteArray longLists()
{
    QByteArray xml = "<zat16>\n  <tag name=\"Long\" id=\"0x1fff\">\n    <enums>\n";
    for (int i = 0; i < 300; ++i)
        xml += "      <enum name=\"V" + QByteArray::number(i % 290) + "\" id=\"" + QByteArray::number(i % 280)
            + "\"/>\n";
    xml += "    </enums>\n  </tag>\n";
    for (int i = 0; i < 300; ++i) {
        xml += "  <tag name=\"T" + QByteArray::number(i % 295) + "\" id=\"0x" + QByteArray::number(0x1000 + i % 285, 16)
            + "\"/>\n";
    }
    return xml + "</zat16>\n";
}

} // namespace

void TestEditorRandom::randomEdits_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<int>("steps");

    QTest::newRow("editing file, seed 1") << QStringLiteral(ZAT16_TEST_DATA "/editor/editing.zatdef") << 1u << 2500;
    QTest::newRow("editing file, seed 4242")
        << QStringLiteral(ZAT16_TEST_DATA "/editor/editing.zatdef") << 4242u << 2500;
    QTest::newRow("weather station, seed 99")
        << QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef") << 99u << 2500;
    const QString path = m_dir.filePath(QStringLiteral("long.zatdef"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(longLists()) > 0);
    file.close();
    QTest::newRow("long lists, seed 7") << path << 7u << 2500;
}

void TestEditorRandom::randomEdits()
{
    const QuietInsertions quiet;
    QFETCH(QString, path);
    QFETCH(quint32, seed);
    QFETCH(int, steps);

    if (!QFile::exists(path))
        QSKIP("example file not present");
    Item *root = parseFile(path);
    QVERIFY(root);
    Fixture f(root);
    const QByteArray original = f.encoding();
    const QString originalTree = f.dump();
    QVERIFY(!original.isEmpty());

    ProblemList problems(&f.model);
    QSignalSpy rebuilt(&problems, &ProblemList::rebuilt);
    QSignalSpy replaced(&problems, &ProblemList::replaced);
    QSignalSpy movedRows(&f.model, &QAbstractItemModel::rowsMoved);
    int listed = 0;
    RandomWalk walk(f, seed, path);
    for (int i = 0; i < steps; ++i) {
        walk.step();
        if (QTest::currentTestFailed())
            QFAIL(qPrintable(QStringLiteral("step %1").arg(i)));
        QString problem;
        QVERIFY2(walk.checkCaches(&problem), qPrintable(QStringLiteral("step %1: %2").arg(i).arg(problem)));
        problems.update();
        QVERIFY(!problems.isStale());
        const QList<Problems::Problem> found = Problems::find(f.root());
        QVERIFY2(sameProblems(problems.problems(), found, &problem),
                 qPrintable(QStringLiteral("step %1: %2").arg(i).arg(problem)));
        listed += int(found.size());
        if (i % 100 == 0)
            QVERIFY2(!f.dump().contains(QLatin1String("(wrong parent)")), qPrintable(QStringLiteral("step %1").arg(i)));
    }

    // The list was kept up to date change by change, moved rows too; only new documents and the
    // changes that touched many entries made it anew.
    QVERIFY(listed > steps);
    QVERIFY(walk.moved > steps / 50);
    QVERIFY2(replaced.count() > steps / 5, qPrintable(QString::number(replaced.count())));
    QVERIFY2(rebuilt.count() < steps / 10,
             qPrintable(QStringLiteral("%1, %2 moved rows").arg(rebuilt.count()).arg(movedRows.count())));
    qDebug("%d problems listed, %lld changes of the list, %lld lists made anew, %lld moved rows",
           listed,
           replaced.count(),
           rebuilt.count(),
           movedRows.count());

    // Every kind of operation took place.
    const QStringList expected = {
        QStringLiteral("edit name"),
        QStringLiteral("edit code"),
        QStringLiteral("edit comment"),
        QStringLiteral("item data"),
        QStringLiteral("new row under Root"),
        QStringLiteral("new row under Enums"),
        QStringLiteral("new row under Bits"),
        QStringLiteral("insert Tag"),
        QStringLiteral("insert Enum"),
        QStringLiteral("insert Bit"),
        QStringLiteral("insert Enums"),
        QStringLiteral("insert Bits"),
        QStringLiteral("insert Enums merged"),
        QStringLiteral("insert Bits merged"),
        QStringLiteral("list"),
        QStringLiteral("remove"),
        QStringLiteral("copy"),
        QStringLiteral("cut"),
        QStringLiteral("paste Tag"),
        QStringLiteral("paste Enum"),
        QStringLiteral("paste Bit"),
        QStringLiteral("paste Enums merged"),
        QStringLiteral("paste Bits merged"),
        QStringLiteral("paste text"),
        QStringLiteral("drop"),
        QStringLiteral("drop row"),
        QStringLiteral("drop text"),
        QStringLiteral("move Tag"),
        QStringLiteral("move Enum"),
        QStringLiteral("move Bit"),
        QStringLiteral("move to Tag"),
        QStringLiteral("move to Enum"),
        QStringLiteral("move to Bit"),
        QStringLiteral("clear"),
        QStringLiteral("replace"),
        QStringLiteral("undo"),
        QStringLiteral("redo"),
    };
    QStringList summary;
    for (auto it = walk.counts.cbegin(); it != walk.counts.cend(); ++it)
        summary << QStringLiteral("%1: %2").arg(it.key()).arg(it.value());
    for (const QString &what : expected)
        QVERIFY2(walk.counts.value(what) > 0,
                 qPrintable(what + QStringLiteral(" never happened; ") + summary.join(QStringLiteral(", "))));
    qInfo("%d commands; %s", f.stack.count(), qPrintable(summary.join(QStringLiteral(", "))));

    // The walk may end with undone commands on the stack: "final" is the state it ended in,
    // "top" the state with every command done.
    const QByteArray final = f.encoding();
    const QString finalTree = f.dump();
    const int finalIndex = f.stack.index();
    f.stack.setIndex(f.stack.count());
    const QByteArray top = f.encoding();
    const QString topTree = f.dump();
    f.stack.setIndex(finalIndex);
    QCOMPARE(f.encoding(), final);

    while (f.stack.canUndo())
        f.stack.undo();
    QCOMPARE(f.stack.index(), 0);
    QCOMPARE(f.encoding(), original);
    QCOMPARE(f.dump(), originalTree);

    while (f.stack.index() < finalIndex)
        f.stack.redo();
    QCOMPARE(f.encoding(), final);
    QCOMPARE(f.dump(), finalTree);

    while (f.stack.canRedo())
        f.stack.redo();
    QCOMPARE(f.encoding(), top);
    QCOMPARE(f.dump(), topTree);

    // Once more in both directions.
    f.stack.setIndex(0);
    QCOMPARE(f.encoding(), original);
    f.stack.setIndex(finalIndex);
    QCOMPARE(f.encoding(), final);
}

QTEST_MAIN(TestEditorRandom)
#include "tst_editorrandom.moc"
