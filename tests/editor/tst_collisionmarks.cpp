// The red marks of colliding siblings follow every edit, undo and redo: when a change makes or
// breaks a collision with a sibling, the sibling's row is repainted too. A view only asks again
// for the rows the model names in dataChanged and for inserted rows; a random walk checks that
// such a view always shows what the model answers.

#include "editortest.h"

#include <QColor>
#include <QMimeData>
#include <QRandomGenerator>

#include <array>

using namespace ZAT16;
using namespace EditorTest;

namespace {

const QColor markBackground(192, 0, 0);

// Rows of the root:
//  0 tag A 0x1001, 1 tag B 0x1002,
//  2 tag C 0x1003 { 0 bits {0 Low 0, 1 High 1}, 1 enums {0 Off 0, 1 On 1, 2 nameless 2 "legal"} }
const QByteArray smallTree = document("  <tag name=\"A\" id=\"0x1001\"/>\n"
                                      "  <tag name=\"B\" id=\"0x1002\"/>\n"
                                      "  <tag name=\"C\" id=\"0x1003\">\n"
                                      "    <enums>\n"
                                      "      <enum name=\"Off\" id=\"0\"/>\n"
                                      "      <enum name=\"On\" id=\"1\"/>\n"
                                      "      <enum id=\"2\" comment=\"legal\"/>\n"
                                      "    </enums>\n"
                                      "    <bits>\n"
                                      "      <bit name=\"Low\" id=\"0\"/>\n"
                                      "      <bit name=\"High\" id=\"1\"/>\n"
                                      "    </bits>\n"
                                      "  </tag>\n");

// The marks a view shows: for each column the background and the foreground colour.
using Colours = std::array<QVariant, 6>;

QString colourText(const QVariant &value)
{
    return value.isValid() ? value.value<QColor>().name() : QStringLiteral("none");
}

// Keeps the colours a view would show, refreshed only as the model's signals ask: rows in the
// ranges of dataChanged (clipped to the rows and columns that exist, since the model's ranges
// reach one past the end), inserted rows with their subtrees, everything after a reset.
class ColourRecorder : public QObject
{
public:
    explicit ColourRecorder(EditorModel *model)
        : m_model(model)
    {
        connect(model, &QAbstractItemModel::dataChanged, this, &ColourRecorder::onDataChanged);
        connect(model, &QAbstractItemModel::rowsInserted, this, &ColourRecorder::onRowsInserted);
        connect(model, &QAbstractItemModel::rowsAboutToBeRemoved, this, &ColourRecorder::onRowsAboutToBeRemoved);
        connect(model, &QAbstractItemModel::modelReset, this, &ColourRecorder::recordAll);
        // A view lays itself out anew after moved rows, and reads every colour it shows again.
        connect(model, &QAbstractItemModel::rowsMoved, this, &ColourRecorder::recordAll);
        // The model changes no layout; a recorder that does not know how a view would take such
        // a signal says so rather than guess.
        connect(model, &QAbstractItemModel::layoutChanged, this, [this] {
            unhandled = QStringLiteral("layoutChanged");
        });
        recordAll();
    }

    QString unhandled;

    // The first difference between the recorded colours and the model's, or an empty string.
    QString compare() const
    {
        int rows = 0;
        QString problem;
        compareChildren(QModelIndex(), QString(), &rows, &problem);
        if (problem.isEmpty() && rows != m_colours.size())
            problem = QStringLiteral("%1 rows recorded, %2 in the tree").arg(m_colours.size()).arg(rows);
        return problem;
    }

private:
    const Item *item(const QModelIndex &index) const { return m_model->index2item(index); }

    QVariant current(const QModelIndex &row, int slot) const
    {
        return m_model->data(row.siblingAtColumn(slot / 2), slot % 2 == 0 ? Qt::BackgroundRole : Qt::ForegroundRole);
    }

    void recordSubtree(const QModelIndex &index)
    {
        Colours &colours = m_colours[item(index)];
        for (int slot = 0; slot < 6; ++slot)
            colours[slot] = current(index, slot);
        const int rows = m_model->rowCount(index);
        for (int row = 0; row < rows; ++row)
            recordSubtree(m_model->index(row, 0, index));
    }

    void forgetSubtree(const Item *gone)
    {
        m_colours.remove(gone);
        for (const Item *child : gone->children)
            forgetSubtree(child);
    }

    void recordAll()
    {
        m_colours.clear();
        const int rows = m_model->rowCount();
        for (int row = 0; row < rows; ++row)
            recordSubtree(m_model->index(row, 0));
    }

    void onRowsInserted(const QModelIndex &parent, int first, int last)
    {
        for (int row = first; row <= last; ++row)
            recordSubtree(m_model->index(row, 0, parent));
    }

    void onRowsAboutToBeRemoved(const QModelIndex &parent, int first, int last)
    {
        for (int row = first; row <= last; ++row)
            forgetSubtree(item(m_model->index(row, 0, parent)));
    }

    void onDataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight)
    {
        const QModelIndex parent = topLeft.parent();
        const int last = qMin(bottomRight.row(), m_model->rowCount(parent) - 1);
        const int left = qMax(0, topLeft.column());
        const int right = qMin(2, bottomRight.column());
        for (int row = qMax(0, topLeft.row()); row <= last; ++row) {
            const QModelIndex index = m_model->index(row, 0, parent);
            Colours &colours = m_colours[item(index)];
            for (int column = left; column <= right; ++column) {
                colours[column * 2] = current(index, column * 2);
                colours[column * 2 + 1] = current(index, column * 2 + 1);
            }
        }
    }

    void compareChildren(const QModelIndex &parent, const QString &path, int *rows, QString *problem) const
    {
        const int count = m_model->rowCount(parent);
        for (int row = 0; row < count && problem->isEmpty(); ++row) {
            const QModelIndex index = m_model->index(row, 0, parent);
            const QString here = path.isEmpty() ? QString::number(row) : path + QLatin1Char('/') + QString::number(row);
            ++*rows;
            const auto it = m_colours.constFind(item(index));
            if (it == m_colours.constEnd()) {
                *problem = QStringLiteral("row %1 ('%2') never recorded").arg(here, item(index)->name);
                return;
            }
            for (int slot = 0; slot < 6; ++slot) {
                const QVariant now = current(index, slot);
                if (now != it.value()[slot]) {
                    *problem = QStringLiteral("row %1 ('%2') column %3 %4: view shows %5, model says %6")
                                   .arg(here, item(index)->name)
                                   .arg(slot / 2)
                                   .arg(slot % 2 == 0 ? QStringLiteral("background") : QStringLiteral("foreground"),
                                        colourText(it.value()[slot]),
                                        colourText(now));
                    return;
                }
            }
            compareChildren(index, here, rows, problem);
        }
    }

    EditorModel *m_model;
    QHash<const Item *, Colours> m_colours;
};

} // namespace

class TestCollisionMarks : public QObject
{
    Q_OBJECT

private slots:
    void renameMarksSibling();
    void renameAmongManyHoldersRepaintsNoSibling();
    void tagCodeMarksSibling();
    void enumCodeMarksSibling();
    void bitNumberMarksSibling();
    void itemDataMarksTwoSiblings();
    void pasteOfDuplicateMarksOriginal();
    void insertRowOfDuplicateMarksOriginal();
    void removeOneOfTwoDuplicates();
    void firstChildRepaintsParent();
    void viewFollowsRandomEdits();

private:
    static QVariant background(const Fixture &f, std::initializer_list<int> rows, int column)
    {
        return f.model.data(f.index(rows, column), Qt::BackgroundRole);
    }
};

void TestCollisionMarks::renameMarksSibling()
{
    Fixture f(smallTree);
    QVERIFY(!background(f, { 0 }, 0).isValid());
    QSignalSpy spy(&f.model, &QAbstractItemModel::dataChanged);

    QVERIFY(f.model.setData(f.index({ 1 }), QStringLiteral("A")));
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 1,0-1,3 A\ndataChanged 0,0-0,3 A"));
    QCOMPARE(background(f, { 0 }, 0), QVariant(markBackground));
    QCOMPARE(background(f, { 1 }, 0), QVariant(markBackground));
    QVERIFY(!background(f, { 0 }, 1).isValid());

    spy.clear();
    f.stack.undo();
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 1,0-1,3 B\ndataChanged 0,0-0,3 A"));
    QVERIFY(!background(f, { 0 }, 0).isValid());
    QVERIFY(!background(f, { 1 }, 0).isValid());

    spy.clear();
    f.stack.redo();
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 1,0-1,3 A\ndataChanged 0,0-0,3 A"));
    QCOMPARE(background(f, { 0 }, 0), QVariant(markBackground));
}

// With three holders of a name, one leaving keeps the other two colliding: only the changed row
// is repainted.
void TestCollisionMarks::renameAmongManyHoldersRepaintsNoSibling()
{
    Fixture f(document("  <tag name=\"A\" id=\"0x1001\"/>\n"
                       "  <tag name=\"A\" id=\"0x1002\"/>\n"
                       "  <tag name=\"A\" id=\"0x1003\"/>\n"));
    QCOMPARE(background(f, { 0 }, 0), QVariant(markBackground));
    QSignalSpy spy(&f.model, &QAbstractItemModel::dataChanged);
    QVERIFY(f.model.setData(f.index({ 2 }), QStringLiteral("Z")));
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 2,0-2,3 Z"));
    QCOMPARE(background(f, { 0 }, 0), QVariant(markBackground));
    QCOMPARE(background(f, { 1 }, 0), QVariant(markBackground));
    QVERIFY(!background(f, { 2 }, 0).isValid());
    // The second leaves the first alone with the name.
    spy.clear();
    QVERIFY(f.model.setData(f.index({ 1 }), QStringLiteral("Y")));
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 1,0-1,3 Y\ndataChanged 0,0-0,3 A"));
    QVERIFY(!background(f, { 0 }, 0).isValid());
}

void TestCollisionMarks::tagCodeMarksSibling()
{
    Fixture f(smallTree);
    QVERIFY(!background(f, { 0 }, 1).isValid());
    QSignalSpy spy(&f.model, &QAbstractItemModel::dataChanged);

    QVERIFY(f.model.setData(f.index({ 2 }, 1), QStringLiteral("0x1001")));
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 2,0-2,3 C\ndataChanged 0,0-0,3 A"));
    QCOMPARE(background(f, { 0 }, 1), QVariant(markBackground));
    QCOMPARE(background(f, { 2 }, 1), QVariant(markBackground));
    QVERIFY(!background(f, { 0 }, 0).isValid());

    spy.clear();
    f.stack.undo();
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 2,0-2,3 C\ndataChanged 0,0-0,3 A"));
    QVERIFY(!background(f, { 0 }, 1).isValid());

    // Removing the code of one of two holders unmarks the other.
    f.stack.redo();
    spy.clear();
    QVERIFY(f.model.setData(f.index({ 0 }, 1), QString()));
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 0,0-0,3 A\ndataChanged 2,0-2,3 C"));
    QVERIFY(!background(f, { 2 }, 1).isValid());
}

void TestCollisionMarks::enumCodeMarksSibling()
{
    Fixture f(smallTree);
    QVERIFY(!background(f, { 2, 1, 0 }, 1).isValid());
    QSignalSpy spy(&f.model, &QAbstractItemModel::dataChanged);

    QVERIFY(f.model.setData(f.index({ 2, 1, 1 }, 1), QStringLiteral("0")));
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 1,0-1,3 On\ndataChanged 0,0-0,3 Off"));
    QCOMPARE(background(f, { 2, 1, 0 }, 1), QVariant(markBackground));
    // The same code among the bits is no collision.
    QVERIFY(!background(f, { 2, 0, 0 }, 1).isValid());

    spy.clear();
    f.stack.undo();
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 1,0-1,3 On\ndataChanged 0,0-0,3 Off"));
    QVERIFY(!background(f, { 2, 1, 0 }, 1).isValid());

    // A nameless value collides by its code too.
    spy.clear();
    QVERIFY(f.model.setData(f.index({ 2, 1, 0 }, 1), QStringLiteral("2")));
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 0,0-0,3 Off\ndataChanged 2,0-2,3 "));
    QCOMPARE(background(f, { 2, 1, 2 }, 1), QVariant(markBackground));
    spy.clear();
    f.stack.undo();
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 0,0-0,3 Off\ndataChanged 2,0-2,3 "));
    QVERIFY(!background(f, { 2, 1, 2 }, 1).isValid());
}

void TestCollisionMarks::bitNumberMarksSibling()
{
    Fixture f(smallTree);
    QVERIFY(!background(f, { 2, 0, 1 }, 1).isValid());
    QSignalSpy spy(&f.model, &QAbstractItemModel::dataChanged);

    QVERIFY(f.model.setData(f.index({ 2, 0, 0 }, 1), QStringLiteral("1")));
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 0,0-0,3 Low\ndataChanged 1,0-1,3 High"));
    QCOMPARE(background(f, { 2, 0, 1 }, 1), QVariant(markBackground));

    spy.clear();
    f.stack.undo();
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 0,0-0,3 Low\ndataChanged 1,0-1,3 High"));
    QVERIFY(!background(f, { 2, 0, 1 }, 1).isValid());
}

// The edit dialog changes name and code at once: the holder of the name and the holder of the
// code are both repainted, and both again on undo.
void TestCollisionMarks::itemDataMarksTwoSiblings()
{
    Fixture f(smallTree);
    QVERIFY(!background(f, { 0 }, 0).isValid());
    QVERIFY(!background(f, { 1 }, 1).isValid());
    ItemData data = *f.at({ 2 });
    data.name = QStringLiteral("A");
    data.id = 0x1002;
    QSignalSpy spy(&f.model, &QAbstractItemModel::dataChanged);

    QVERIFY(f.model.setItemData(f.index({ 2 }), data));
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 2,0-2,3 A\ndataChanged 0,0-0,3 A\ndataChanged 1,0-1,3 B"));
    QCOMPARE(background(f, { 0 }, 0), QVariant(markBackground));
    QVERIFY(!background(f, { 0 }, 1).isValid());
    QCOMPARE(background(f, { 1 }, 1), QVariant(markBackground));
    QVERIFY(!background(f, { 1 }, 0).isValid());

    spy.clear();
    f.stack.undo();
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 2,0-2,3 C\ndataChanged 0,0-0,3 A\ndataChanged 1,0-1,3 B"));
    QVERIFY(!background(f, { 0 }, 0).isValid());
    QVERIFY(!background(f, { 1 }, 1).isValid());
}

void TestCollisionMarks::pasteOfDuplicateMarksOriginal()
{
    Fixture f(smallTree);
    QVERIFY(!background(f, { 1 }, 0).isValid());
    std::unique_ptr<QMimeData> mime(f.model.copy(f.index({ 1 })));
    QVERIFY(mime);
    QSignalSpy spy(&f.model, &QAbstractItemModel::dataChanged);
    QSignalSpy inserted(&f.model, &QAbstractItemModel::rowsInserted);

    const QModelIndex pasted = f.model.paste(f.index({ 0 }), mime.get());
    QCOMPARE(pasted.row(), 0);
    QCOMPARE(inserted.size(), 1);
    // The copy is the new row 0, the original B moved to row 2.
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 2,0-2,3 B"));
    QCOMPARE(f.model.index2item(pasted)->name, QStringLiteral("B"));
    QCOMPARE(background(f, { 2 }, 0), QVariant(markBackground));
    QCOMPARE(background(f, { 2 }, 1), QVariant(markBackground));
    QVERIFY(!background(f, { 1 }, 0).isValid());

    spy.clear();
    f.stack.undo();
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 1,0-1,3 B"));
    QVERIFY(!background(f, { 1 }, 0).isValid());
    QVERIFY(!background(f, { 1 }, 1).isValid());
}

void TestCollisionMarks::insertRowOfDuplicateMarksOriginal()
{
    Fixture f(smallTree);
    QVERIFY(!background(f, { 2, 1, 1 }, 0).isValid());
    QSignalSpy spy(&f.model, &QAbstractItemModel::dataChanged);

    // A value named like On with the code of Off, at the end of the list.
    const QModelIndex index = f.model.insertRow(3, f.index({ 2, 1 }), makeItem(Enum, QStringLiteral("On"), true, 0));
    QVERIFY(index.isValid());
    QCOMPARE(index.row(), 3);
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 1,0-1,3 On\ndataChanged 0,0-0,3 Off"));
    QCOMPARE(background(f, { 2, 1, 1 }, 0), QVariant(markBackground));
    QCOMPARE(background(f, { 2, 1, 0 }, 1), QVariant(markBackground));
    QVERIFY(!background(f, { 2, 1, 0 }, 0).isValid());

    spy.clear();
    f.stack.undo();
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 1,0-1,3 On\ndataChanged 0,0-0,3 Off"));
    QVERIFY(!background(f, { 2, 1, 1 }, 0).isValid());
    QVERIFY(!background(f, { 2, 1, 0 }, 1).isValid());

    spy.clear();
    f.stack.redo();
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 1,0-1,3 On\ndataChanged 0,0-0,3 Off"));
    QCOMPARE(background(f, { 2, 1, 1 }, 0), QVariant(markBackground));
}

void TestCollisionMarks::removeOneOfTwoDuplicates()
{
    Fixture f(document("  <tag name=\"A\" id=\"0x1001\"/>\n"
                       "  <tag name=\"B\" id=\"0x1002\"/>\n"
                       "  <tag name=\"A\" id=\"0x1001\"/>\n"));
    QCOMPARE(background(f, { 2 }, 0), QVariant(markBackground));
    QCOMPARE(background(f, { 2 }, 1), QVariant(markBackground));
    QSignalSpy spy(&f.model, &QAbstractItemModel::dataChanged);

    QVERIFY(f.model.removeRow(0));
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 1,0-1,3 A"));
    QVERIFY(!background(f, { 1 }, 0).isValid());
    QVERIFY(!background(f, { 1 }, 1).isValid());

    spy.clear();
    f.stack.undo();
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 2,0-2,3 A"));
    QCOMPARE(background(f, { 2 }, 0), QVariant(markBackground));
    QCOMPARE(background(f, { 2 }, 1), QVariant(markBackground));
}

// A tag with neither name nor code is a comment line while it has no children and marked red
// once it holds a list.
void TestCollisionMarks::firstChildRepaintsParent()
{
    Fixture f(document("  <tag name=\"A\" id=\"0x1001\"/>\n"
                       "  <!-- note -->\n"));
    QCOMPARE(background(f, { 1 }, 0), QVariant(QColor(222, 255, 222)));
    QSignalSpy spy(&f.model, &QAbstractItemModel::dataChanged);

    const QModelIndex list = f.model.insertList(f.index({ 1 }), Enums);
    QVERIFY(list.isValid());
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 1,0-1,3 "));
    QCOMPARE(background(f, { 1 }, 0), QVariant(markBackground));

    spy.clear();
    f.stack.undo();
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 1,0-1,3 "));
    QCOMPARE(background(f, { 1 }, 0), QVariant(QColor(222, 255, 222)));

    // Deleting the list of a tag does the same.
    f.stack.redo();
    QCOMPARE(background(f, { 1 }, 0), QVariant(markBackground));
    spy.clear();
    QVERIFY(f.model.removeRow(0, f.index({ 1 })));
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 1,0-1,3 "));
    QCOMPARE(background(f, { 1 }, 0), QVariant(QColor(222, 255, 222)));
}

// Thousands of random edits, undos and redos on a file full of collisions; after each one the
// colours a view has been told match what the model answers, row by row.
void TestCollisionMarks::viewFollowsRandomEdits()
{
    const quint32 seed = 271828;
    QRandomGenerator random(seed);
    auto bounded = [&](int n) { return int(random.bounded(quint32(n))); };
    const QStringList names = { QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C"), QStringLiteral("D") };
    const QStringList codes = { QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"), QStringLiteral("4") };
    auto randomName = [&]() { return bounded(6) == 0 ? QString() : names.at(bounded(4)); };
    auto randomCode = [&]() { return bounded(6) == 0 ? QString() : codes.at(bounded(4)); };

    // Tags share names and codes; some have no name, no code or neither (comment lines and
    // blank lines); values and bits collide within their lists.
    QByteArray body;
    for (int i = 0; i < 24; ++i) {
        if (i % 7 == 3) {
            body += "  <!-- comment " + QByteArray::number(i) + " -->\n\n";
            continue;
        }
        body += "  <tag";
        if (i % 5 != 4)
            body += " name=\"" + names.at(i % 4).toLatin1() + "\"";
        if (i % 6 != 5)
            body += " id=\"" + QByteArray::number(1 + i % 3) + "\"";
        body += ">\n";
        if (i % 3 != 2) {
            body += "    <enums>\n";
            for (int k = 0; k < 5; ++k) {
                body += "      <enum";
                if (k != 4)
                    body += " name=\"" + names.at((i + k) % 3).toLatin1() + "\"";
                body += " id=\"" + QByteArray::number(k % 3) + "\"";
                if (k == 4)
                    body += " comment=\"nameless\"";
                body += "/>\n";
            }
            body += "    </enums>\n";
        }
        if (i % 3 != 1) {
            body += "    <bits>\n";
            for (int k = 0; k < 4; ++k)
                body += "      <bit name=\"" + names.at(k % 3).toLatin1() + "\" id=\"" + QByteArray::number(k % 2)
                    + "\"/>\n";
            body += "    </bits>\n";
        }
        body += "  </tag>\n";
    }
    Fixture f(document(body));
    QVERIFY(f.root());
    ColourRecorder recorder(&f.model);
    // the first tag shares its name and code with the thirteenth
    QCOMPARE(background(f, { 0 }, 0), QVariant(markBackground));
    QCOMPARE(background(f, { 0 }, 1), QVariant(markBackground));

    auto allItems = [&]() {
        QList<Item *> items;
        QList<Item *> queue = { f.root() };
        while (!queue.isEmpty()) {
            Item *item = queue.takeLast();
            for (Item *child : item->children) {
                items << child;
                queue << child;
            }
        }
        return items;
    };

    const QuietInsertions quiet;
    QHash<QString, int> done;
    for (int step = 0; step < 5000; ++step) {
        const QList<Item *> items = allItems();
        QString what;
        if (items.isEmpty()) {
            what = QStringLiteral("undo");
            f.stack.undo();
        } else {
            Item *item = items.at(bounded(int(items.size())));
            const QModelIndex index = f.model.item2index(item);
            const int op = bounded(100);
            if (op < 22) {
                what = QStringLiteral("rename");
                f.model.setData(index.siblingAtColumn(0), randomName());
            } else if (op < 42) {
                what = QStringLiteral("code");
                f.model.setData(index.siblingAtColumn(1), randomCode());
            } else if (op < 46) {
                what = QStringLiteral("comment");
                f.model.setData(index.siblingAtColumn(2), bounded(2) ? QStringLiteral("note") : QString());
            } else if (op < 52) {
                what = QStringLiteral("item data");
                ItemData data = *item;
                data.name = randomName();
                const QString code = randomCode();
                data.hasId = !code.isEmpty();
                data.id = code.toULongLong();
                f.model.setItemData(index, data);
            } else if (op < 56) {
                what = QStringLiteral("insert empty row");
                f.model.insertRow(index.row(), index.parent());
            } else if (op < 62) {
                what = QStringLiteral("insert duplicate");
                const ItemType kind = item->type == Enums ? Enum : item->type == Bits ? Bit : item->type;
                const QString code = randomCode();
                // The model takes the item only when it inserts it.
                std::unique_ptr<Item> duplicate(makeItem(kind, randomName(), !code.isEmpty(), code.toULongLong()));
                if (f.model.insertRow(index.row(), index.parent(), duplicate.get()).isValid())
                    duplicate.release();
                else
                    what += QStringLiteral(" (refused)");
            } else if (op < 65) {
                what = QStringLiteral("paste");
                const QList<Item *> from = allItems();
                std::unique_ptr<QMimeData> mime(f.model.copy(f.model.item2index(from.at(bounded(int(from.size()))))));
                f.model.paste(index, mime.get());
            } else if (op < 67) {
                what = QStringLiteral("insert list");
                f.model.insertList(index, bounded(2) ? Enums : Bits);
            } else if (op < 78) {
                what = QStringLiteral("remove");
                f.model.removeRow(index.row(), index.parent());
            } else if (op < 90) {
                what = QStringLiteral("undo");
                f.stack.undo();
            } else {
                what = QStringLiteral("redo");
                f.stack.redo();
            }
        }
        ++done[what];
        const QString problem
            = recorder.unhandled.isEmpty() ? recorder.compare() : QStringLiteral("unhandled ") + recorder.unhandled;
        if (!problem.isEmpty())
            QFAIL(qPrintable(QStringLiteral("seed %1, operation %2 (%3): %4").arg(seed).arg(step).arg(what, problem)));
    }
    // The walk did what it is for.
    QVERIFY(done.value(QStringLiteral("rename")) > 800);
    QVERIFY(done.value(QStringLiteral("remove")) > 400);
    QVERIFY(done.value(QStringLiteral("insert duplicate")) > 200);
    QVERIFY(allItems().size() > 50);
}

QTEST_MAIN(TestCollisionMarks)
#include "tst_collisionmarks.moc"
