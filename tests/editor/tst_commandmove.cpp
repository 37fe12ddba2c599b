// Tests of moving entries: Move up and Move down within a list, and rows dragged and dropped
// within the model, each one undo step (CommandMove) that undo takes back to the same parent and
// row. A dropped value or bit lands where pasting it would; plain text still sets a cell.

#include "commandmove.h"
#include "editormoves.h"
#include "editortest.h"
#include "problemlist.h"

#include <QColor>
#include <QMimeData>

using namespace ZAT16;
using namespace EditorTest;

Q_DECLARE_METATYPE(QList<int>)

namespace {

const QColor markBackground(192, 0, 0);

// Rows of the root: 0 tag Mode { 0 bits {0 Manual, 1 comment, 2 Service}, 1 enums {0 Off, 1 Low,
// 2 blank line, 3 High} }, 1 comment line, 2 blank line, 3 tag Speed, 4 tag Label (no code),
// 5 tag Level { 0 enums {0 Min, 1 Max} }.
const QByteArray tree = document("  <tag name=\"Mode\" id=\"0x1002\" comment=\"Operating mode\">\n"
                                 "    <bits display=\"2x\">\n"
                                 "      <bit name=\"Manual\" id=\"0x01\"/>\n"
                                 "      <!-- reserved -->\n"
                                 "      <bit name=\"Service\" id=\"0x04\" comment=\"service only\"/>\n"
                                 "    </bits>\n"
                                 "    <enums>\n"
                                 "      <enum name=\"Off\" id=\"0\"/>\n"
                                 "      <enum name=\"Low\" id=\"1\"/>\n"
                                 "\n"
                                 "      <enum name=\"High\" id=\"2\" comment=\"fast\"/>\n"
                                 "    </enums>\n"
                                 "  </tag>\n"
                                 "  <!-- Plain tags -->\n"
                                 "\n"
                                 "  <tag name=\"Speed\" id=\"0x1001\"/>\n"
                                 "  <tag name=\"Label\"/>\n"
                                 "  <tag name=\"Level\" id=\"0x1003\">\n"
                                 "    <enums>\n"
                                 "      <enum name=\"Min\" id=\"0\"/>\n"
                                 "      <enum name=\"Max\" id=\"2\"/>\n"
                                 "    </enums>\n"
                                 "  </tag>\n");

// The tree as names, one entry a line, two blanks of indentation a level: lists by their kind,
// comment lines as "# text", blank lines as "-".
QString outline(const Item *item, int indent = 0)
{
    QString text;
    for (const Item *child : item->children) {
        QString label;
        if (child->type == Enums || child->type == Bits)
            label = TreeText::typeName(child->type);
        else if (child->isComment())
            label = QStringLiteral("# ") + child->comment.trimmed();
        else if (child->isNewline())
            label = QStringLiteral("-");
        else
            label = child->name;
        text += QString(indent, QLatin1Char(' ')) + label + QLatin1Char('\n') + outline(child, indent + 2);
    }
    return text;
}

// The problem list as its messages, one a line.
QString messages(const ProblemList &problems)
{
    QStringList lines;
    for (const Problems::Problem &problem : problems.problems())
        lines << problem.message;
    return lines.join(QLatin1Char('\n'));
}

const QString modeSubtree = QStringLiteral("  Bits\n"
                                           "    Manual\n"
                                           "    # reserved\n"
                                           "    Service\n"
                                           "  Enums\n"
                                           "    Off\n"
                                           "    Low\n"
                                           "    -\n"
                                           "    High\n");
const QString levelSubtree = QStringLiteral("  Enums\n"
                                            "    Min\n"
                                            "    Max\n");

// The whole tree with the root's rows as given, Mode and Level with their usual subtrees.
QString rootRows(const QStringList &rows)
{
    QString text;
    for (const QString &row : rows) {
        text += row + QLatin1Char('\n');
        if (row == QLatin1String("Mode"))
            text += modeSubtree;
        else if (row == QLatin1String("Level"))
            text += levelSubtree;
    }
    return text;
}

const QString original = rootRows({ "Mode", "# Plain tags", "-", "Speed", "Label", "Level" });

// The whole tree with Mode's lists as given.
QString modeLists(const QStringList &bits, const QStringList &enums)
{
    QString text = QStringLiteral("Mode\n  Bits\n");
    for (const QString &bit : bits)
        text += QStringLiteral("    ") + bit + QLatin1Char('\n');
    text += QStringLiteral("  Enums\n");
    for (const QString &value : enums)
        text += QStringLiteral("    ") + value + QLatin1Char('\n');
    return text + rootRows({ "# Plain tags", "-", "Speed", "Label", "Level" });
}

std::unique_ptr<QMimeData> textData(const QString &text)
{
    auto mime = std::make_unique<QMimeData>();
    mime->setText(text);
    return mime;
}

QModelIndex indexAt(const EditorModel &model, const QList<int> &path, int column = 0)
{
    QModelIndex index;
    for (int i = 0; i < path.size(); ++i)
        index = model.index(path.at(i), i + 1 == path.size() ? column : 0, index);
    return index;
}

Item *itemAt(const EditorModel &model, const QList<int> &path)
{
    Item *item = model.root();
    for (int row : path)
        item = item ? item->child(row) : nullptr;
    return item;
}

// The structural signals of the model, as short lines: "rowsMoved Enums 3-3 to Enums 2".
class StructureSpy : public QObject
{
public:
    explicit StructureSpy(EditorModel *model)
        : m_model(model)
    {
        connect(model,
                &QAbstractItemModel::rowsMoved,
                this,
                [this](const QModelIndex &from, int first, int last, const QModelIndex &to, int row) {
                    texts << QStringLiteral("rowsMoved %1 %2-%3 to %4 %5")
                                 .arg(name(from))
                                 .arg(first)
                                 .arg(last)
                                 .arg(name(to))
                                 .arg(row);
                });
        connect(model, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex &parent, int first, int last) {
            texts << QStringLiteral("rowsInserted %1 %2-%3").arg(name(parent)).arg(first).arg(last);
        });
        connect(model, &QAbstractItemModel::rowsRemoved, this, [this](const QModelIndex &parent, int first, int last) {
            texts << QStringLiteral("rowsRemoved %1 %2-%3").arg(name(parent)).arg(first).arg(last);
        });
        connect(model, &QAbstractItemModel::modelReset, this, [this] { texts << QStringLiteral("modelReset"); });
        connect(model, &QAbstractItemModel::layoutChanged, this, [this] { texts << QStringLiteral("layoutChanged"); });
    }

    QStringList texts;

private:
    QString name(const QModelIndex &index) const
    {
        const Item *item = m_model->index2item(index);
        if (!index.isValid())
            return QStringLiteral("<root>");
        return item->name.isEmpty() ? TreeText::typeName(item->type) : item->name;
    }

    EditorModel *m_model;
};

// Records every undone signal as "row name" or "invalid".
struct UndoneRecorder {
    QStringList texts;
    QMetaObject::Connection connection;
    explicit UndoneRecorder(EditorModel *model)
    {
        connection = QObject::connect(model, &EditorModel::undone, model, [this, model](const QModelIndex &index) {
            const Item *item = model->index2item(index);
            texts << (index.isValid() ? QStringLiteral("%1 %2").arg(index.row()).arg(item->name)
                                      : QStringLiteral("invalid"));
        });
    }
    ~UndoneRecorder() { QObject::disconnect(connection); }
};

} // namespace

class TestCommandMove : public QObject
{
    Q_OBJECT

private slots:
    void fixture();

    // Move up and Move down
    void moveBy_data();
    void moveBy();
    void subtreeTravels();
    void cannotMove_data();
    void cannotMove();
    void undoSelectsEntry();
    void onlyRowsMove();
    void persistentIndexFollows();
    void commandText_data();
    void commandText();
    void repeatedRedoAndUndoAreHarmless();

    // Moves to where an insertion goes
    void moveIntoNewList();
    void valueLandsWherePasteWould_data();
    void valueLandsWherePasteWould();

    // Drag and drop
    void dragCarriesEntry();
    void dropRowOntoRowMoves();
    void dropBetweenRows();
    void dropBelowRows();
    void dropIntoOwnSubtreeRefused();
    void dropOfStaleDragRefused();
    void dropFromOtherModelSetsText();
    void plainTextStillSetsCell();
    void canDropMimeData();

    // Marks
    void moveChangesCollisionMarks();
    void problemListFollowsMoves();
};

void TestCommandMove::fixture()
{
    Fixture f(tree);
    QCOMPARE(outline(f.root()), original);
}

// ---------------------------------------------------------------------------------------------
// Move up and Move down

void TestCommandMove::moveBy_data()
{
    QTest::addColumn<QList<int>>("path");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("row");

    QTest::newRow("tag up") << QList<int> { 3 } << -1
                            << rootRows({ "Mode", "# Plain tags", "Speed", "-", "Label", "Level" })
                            << QStringLiteral("Move tag") << 2;
    QTest::newRow("tag down to the last row")
        << QList<int> { 4 } << 1 << rootRows({ "Mode", "# Plain tags", "-", "Speed", "Level", "Label" })
        << QStringLiteral("Move tag") << 5;
    QTest::newRow("tag with lists down") << QList<int> { 0 } << 1
                                         << rootRows({ "# Plain tags", "Mode", "-", "Speed", "Label", "Level" })
                                         << QStringLiteral("Move tag") << 1;
    QTest::newRow("tag two rows up") << QList<int> { 5 } << -2
                                     << rootRows({ "Mode", "# Plain tags", "-", "Level", "Speed", "Label" })
                                     << QStringLiteral("Move tag") << 3;
    QTest::newRow("comment line down") << QList<int> { 1 } << 1
                                       << rootRows({ "Mode", "-", "# Plain tags", "Speed", "Label", "Level" })
                                       << QStringLiteral("Move tag") << 2;
    QTest::newRow("enum up") << QList<int> { 0, 1, 3 } << -1
                             << modeLists({ "Manual", "# reserved", "Service" }, { "Off", "Low", "High", "-" })
                             << QStringLiteral("Move enum") << 2;
    QTest::newRow("enum down") << QList<int> { 0, 1, 0 } << 1
                               << modeLists({ "Manual", "# reserved", "Service" }, { "Low", "Off", "-", "High" })
                               << QStringLiteral("Move enum") << 1;
    QTest::newRow("blank line in a list")
        << QList<int> { 0, 1, 2 } << -2
        << modeLists({ "Manual", "# reserved", "Service" }, { "-", "Off", "Low", "High" })
        << QStringLiteral("Move enum") << 0;
    QTest::newRow("bit up") << QList<int> { 0, 0, 2 } << -1
                            << modeLists({ "Manual", "Service", "# reserved" }, { "Off", "Low", "-", "High" })
                            << QStringLiteral("Move bit") << 1;
    QTest::newRow("bit comment up") << QList<int> { 0, 0, 1 } << -1
                                    << modeLists({ "# reserved", "Manual", "Service" }, { "Off", "Low", "-", "High" })
                                    << QStringLiteral("Move bit") << 0;
}

void TestCommandMove::moveBy()
{
    QFETCH(QList<int>, path);
    QFETCH(int, offset);
    QFETCH(QString, after);
    QFETCH(QString, text);
    QFETCH(int, row);

    Fixture f(tree);
    const QString before = f.dump();
    Item *item = itemAt(f.model, path);
    Item *parent = item->parent;
    const QModelIndex index = indexAt(f.model, path);
    QVERIFY(f.model.canMoveBy(index, offset));
    const QModelIndex moved = f.model.moveBy(index, offset);
    QCOMPARE(moved.row(), row);
    QCOMPARE(f.model.index2item(moved), item);
    QCOMPARE(item->parent, parent);
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), text);
    QCOMPARE(outline(f.root()), after);
    const QString movedDump = f.dump();
    QVERIFY(!movedDump.contains(QLatin1String("(wrong parent)")));

    f.stack.undo();
    QCOMPARE(f.dump(), before);
    QCOMPARE(f.model.findRow(item), path.last());
    QCOMPARE(f.encoding(), encodeText(tree));
    f.stack.redo();
    QCOMPARE(f.dump(), movedDump);
    QCOMPARE(f.model.findRow(item), row);
}

// The entry moves as the same item with everything below it.
void TestCommandMove::subtreeTravels()
{
    Fixture f(tree);
    Item *mode = f.at({ 0 });
    const QString subtree = dumpTree(mode);
    const QList<Item *> children = mode->children;
    QVERIFY(f.model.moveBy(f.index({ 0 }), 3).isValid());
    QCOMPARE(f.at({ 3 }), mode);
    QCOMPARE(dumpTree(mode), subtree);
    QCOMPARE(mode->children, children);
    QCOMPARE(mode->name, QStringLiteral("Mode"));
    QCOMPARE(mode->id, quint64(0x1002));
    QCOMPARE(mode->comment, QStringLiteral("Operating mode"));
    QCOMPARE(f.model.rowCount(f.index({ 3 })), 2);
    QCOMPARE(f.model.data(f.index({ 3, 1, 3 }), Qt::DisplayRole).toString(), QStringLiteral("High"));
}

void TestCommandMove::cannotMove_data()
{
    QTest::addColumn<QList<int>>("path");
    QTest::addColumn<int>("offset");

    QTest::newRow("root") << QList<int> {} << 1;
    QTest::newRow("first tag up") << QList<int> { 0 } << -1;
    QTest::newRow("last tag down") << QList<int> { 5 } << 1;
    QTest::newRow("tag past the end") << QList<int> { 3 } << 3;
    QTest::newRow("no offset") << QList<int> { 3 } << 0;
    QTest::newRow("first enum up") << QList<int> { 0, 1, 0 } << -1;
    QTest::newRow("last enum down") << QList<int> { 0, 1, 3 } << 1;
    QTest::newRow("last bit down") << QList<int> { 0, 0, 2 } << 1;
    QTest::newRow("bit list down") << QList<int> { 0, 0 } << 1;
    QTest::newRow("enum list up") << QList<int> { 0, 1 } << -1;
    QTest::newRow("only list up") << QList<int> { 5, 0 } << -1;
}

void TestCommandMove::cannotMove()
{
    QFETCH(QList<int>, path);
    QFETCH(int, offset);

    Fixture f(tree);
    const QModelIndex index = indexAt(f.model, path);
    QVERIFY(!f.model.canMoveBy(index, offset));
    QVERIFY(!f.model.moveBy(index, offset).isValid());
    QCOMPARE(f.stack.count(), 0);
    QCOMPARE(outline(f.root()), original);
}

void TestCommandMove::undoSelectsEntry()
{
    Fixture f(tree);
    UndoneRecorder undone(&f.model);
    QVERIFY(f.model.moveBy(f.index({ 0, 1, 3 }), -3).isValid());
    QVERIFY(f.model.moveBy(f.index({ 4 }), -4).isValid());
    QCOMPARE(undone.texts, QStringList());
    f.stack.undo();
    QCOMPARE(undone.texts, QStringList({ "4 Label" }));
    f.stack.undo();
    QCOMPARE(undone.texts, QStringList({ "4 Label", "3 High" }));
    f.stack.redo();
    f.stack.redo();
    QCOMPARE(undone.texts.size(), 2);
}

// A move is one moved row for the views, not a removal and an insertion.
void TestCommandMove::onlyRowsMove()
{
    Fixture f(tree);
    StructureSpy spy(&f.model);
    QVERIFY(f.model.moveBy(f.index({ 0, 1, 0 }), 2).isValid());
    QVERIFY(f.model.moveBy(f.index({ 3 }), -3).isValid());
    QVERIFY(f.model.moveBy(f.index({ 1 }), 3).isValid());
    f.stack.undo();
    f.stack.undo();
    f.stack.undo();
    // Qt names the destination row as it is before the move.
    QCOMPARE(spy.texts,
             QStringList({ "rowsMoved Enums 0-0 to Enums 3",
                           "rowsMoved <root> 3-3 to <root> 0",
                           "rowsMoved <root> 1-1 to <root> 5",
                           "rowsMoved <root> 4-4 to <root> 1",
                           "rowsMoved <root> 0-0 to <root> 4",
                           "rowsMoved Enums 2-2 to Enums 0" }));
}

// A view keeps the selection and expansion of the moved row: its persistent index goes with it.
void TestCommandMove::persistentIndexFollows()
{
    Fixture f(tree);
    Item *high = f.at({ 0, 1, 3 });
    const QPersistentModelIndex entry(f.index({ 0, 1, 3 }, 2));
    const QPersistentModelIndex sibling(f.index({ 0, 1, 0 }));
    const QPersistentModelIndex tag(f.index({ 0 }));
    QVERIFY(f.model.moveBy(f.index({ 0, 1, 3 }), -3).isValid());
    QCOMPARE(entry.row(), 0);
    QCOMPARE(entry.column(), 2);
    QCOMPARE(entry.internalPointer(), high);
    QCOMPARE(sibling.row(), 1);
    QCOMPARE(f.model.index2item(sibling)->name, QStringLiteral("Off"));
    QVERIFY(f.model.moveBy(f.index({ 0 }), 2).isValid());
    QCOMPARE(tag.row(), 2);
    QCOMPARE(entry.parent().parent(), QModelIndex(tag));
    f.stack.undo();
    f.stack.undo();
    QCOMPARE(entry.row(), 3);
    QCOMPARE(entry.internalPointer(), high);
    QCOMPARE(tag.row(), 0);
}

void TestCommandMove::commandText_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("text");

    QTest::newRow("tag") << int(Tag) << QStringLiteral("Move tag");
    QTest::newRow("enum") << int(Enum) << QStringLiteral("Move enum");
    QTest::newRow("bit") << int(Bit) << QStringLiteral("Move bit");
    QTest::newRow("enum list") << int(Enums) << QStringLiteral("Move item");
    QTest::newRow("bit list") << int(Bits) << QStringLiteral("Move item");
}

void TestCommandMove::commandText()
{
    QFETCH(int, type);
    QFETCH(QString, text);

    Fixture f;
    Item parent;
    Item *item = makeItem(ItemType(type));
    parent.appendChild(item);
    CommandMove command(item, &parent, 0, &f.model);
    QCOMPARE(command.text(), text);
}

void TestCommandMove::repeatedRedoAndUndoAreHarmless()
{
    Fixture f(tree);
    Item *low = f.at({ 0, 1, 1 });
    CommandMove command(low, f.at({ 0, 1 }), 3, &f.model);
    command.redo();
    command.redo();
    QCOMPARE(outline(f.root()), modeLists({ "Manual", "# reserved", "Service" }, { "Off", "-", "High", "Low" }));
    command.undo();
    command.undo();
    QCOMPARE(outline(f.root()), original);
    QCOMPARE(f.encoding(), encodeText(tree));
}

// ---------------------------------------------------------------------------------------------
// Moves to where an insertion goes

// A value moved to a tag without an enumeration list makes the list, in the same undo step.
void TestCommandMove::moveIntoNewList()
{
    Fixture f(tree);
    Item *low = f.at({ 0, 1, 1 });
    const QString before = f.dump();
    StructureSpy spy(&f.model);
    const QModelIndex moved = f.model.moveTo(f.index({ 0, 1, 1 }), 3, QModelIndex());
    QVERIFY(moved.isValid());
    QCOMPARE(f.model.index2item(moved), low);
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), QStringLiteral("Move enum"));
    const QString after = QStringLiteral("Mode\n"
                                         "  Bits\n"
                                         "    Manual\n"
                                         "    # reserved\n"
                                         "    Service\n"
                                         "  Enums\n"
                                         "    Off\n"
                                         "    -\n"
                                         "    High\n"
                                         "# Plain tags\n"
                                         "-\n"
                                         "Speed\n"
                                         "  Enums\n"
                                         "    Low\n"
                                         "Label\n")
        + rootRows({ "Level" });
    QCOMPARE(outline(f.root()), after);
    QCOMPARE(spy.texts, QStringList({ "rowsInserted Speed 0-0", "rowsMoved Enums 1-1 to Enums 0" }));

    UndoneRecorder undone(&f.model);
    f.stack.undo();
    QCOMPARE(f.dump(), before);
    QCOMPARE(f.at({ 3 })->children.size(), 0);
    // The list goes after the value has left it; the value is selected last.
    QCOMPARE(undone.texts.last(), QStringLiteral("1 Low"));
    f.stack.redo();
    QCOMPARE(outline(f.root()), after);
    QCOMPARE(f.at({ 3, 0, 0 }), low);
}

void TestCommandMove::valueLandsWherePasteWould_data()
{
    QTest::addColumn<QList<int>>("source");
    QTest::addColumn<QList<int>>("target");

    QTest::newRow("value onto a tag without enumeration list") << QList<int> { 0, 1, 1 } << QList<int> { 3 };
    QTest::newRow("value onto a tag with a list") << QList<int> { 0, 1, 1 } << QList<int> { 5 };
    QTest::newRow("value onto a value of another tag") << QList<int> { 0, 1, 1 } << QList<int> { 5, 0, 1 };
    QTest::newRow("value onto another tag's list") << QList<int> { 0, 1, 3 } << QList<int> { 5, 0 };
    QTest::newRow("value onto a value above it") << QList<int> { 0, 1, 3 } << QList<int> { 0, 1, 0 };
    QTest::newRow("value onto a value below it") << QList<int> { 0, 1, 0 } << QList<int> { 0, 1, 3 };
    QTest::newRow("value onto its tag's bit") << QList<int> { 0, 1, 0 } << QList<int> { 0, 0, 2 };
    QTest::newRow("value onto its tag's bit list") << QList<int> { 0, 1, 0 } << QList<int> { 0, 0 };
    QTest::newRow("value onto its own tag") << QList<int> { 0, 1, 0 } << QList<int> { 0 };
    QTest::newRow("value onto a comment line") << QList<int> { 0, 1, 1 } << QList<int> { 1 };
    QTest::newRow("blank line of a list onto a tag") << QList<int> { 0, 1, 2 } << QList<int> { 5 };
    QTest::newRow("bit onto a tag without bit list") << QList<int> { 0, 0, 2 } << QList<int> { 5 };
    QTest::newRow("bit onto a value of another tag") << QList<int> { 0, 0, 0 } << QList<int> { 5, 0, 0 };
    QTest::newRow("bit comment onto a bit above it") << QList<int> { 0, 0, 1 } << QList<int> { 0, 0, 0 };
    QTest::newRow("tag onto a tag below it") << QList<int> { 0 } << QList<int> { 4 };
    QTest::newRow("tag onto a value of another tag") << QList<int> { 3 } << QList<int> { 0, 1, 2 };
    QTest::newRow("comment line onto a tag") << QList<int> { 1 } << QList<int> { 5 };
}

// The move gives the tree that pasting a copy onto the target and deleting the original gives.
void TestCommandMove::valueLandsWherePasteWould()
{
    QFETCH(QList<int>, source);
    QFETCH(QList<int>, target);

    const QuietInsertions quiet;
    Fixture pasted(tree);
    Item *copied = itemAt(pasted.model, source);
    std::unique_ptr<QMimeData> copy(pasted.model.copy(indexAt(pasted.model, source)));
    QVERIFY(pasted.model.paste(indexAt(pasted.model, target), copy.get()).isValid());
    QVERIFY(pasted.model.removeRow(pasted.model.findRow(copied), pasted.model.item2index(copied->parent)));

    Fixture f(tree);
    Item *item = itemAt(f.model, source);
    std::unique_ptr<QMimeData> drag(f.model.mimeData({ indexAt(f.model, source) }));
    QVERIFY(f.model.dropMimeData(drag.get(), Qt::CopyAction, -1, -1, indexAt(f.model, target)));
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.dump(), pasted.dump());
    // the same item, not a copy
    bool found = false;
    QList<const Item *> queue { f.root() };
    while (!queue.isEmpty() && !found) {
        const Item *at = queue.takeLast();
        found = at == item;
        for (const Item *child : at->children)
            queue << child;
    }
    QVERIFY(found);

    f.stack.undo();
    QCOMPARE(f.encoding(), encodeText(tree));
    QCOMPARE(outline(f.root()), original);
    QCOMPARE(itemAt(f.model, source), item);
}

// ---------------------------------------------------------------------------------------------
// Drag and drop

void TestCommandMove::dragCarriesEntry()
{
    Fixture f(tree);
    const QString type = EditorMoves::entryMimeType();
    QCOMPARE(type, QStringLiteral("application/x-zatedit-entry"));
    std::unique_ptr<QMimeData> name(f.model.mimeData({ f.index({ 4 }) }));
    QCOMPARE(name->text(), QStringLiteral("Label"));
    QVERIFY(name->hasFormat(type));
    QVERIFY(!name->hasFormat(QStringLiteral("text/xml")));
    std::unique_ptr<QMimeData> code(f.model.mimeData({ f.index({ 0, 1, 3 }, 1) }));
    QCOMPARE(code->text(), QStringLiteral("2"));
    QVERIFY(code->hasFormat(type));
    // Lists are not dragged; their data carries no entry.
    std::unique_ptr<QMimeData> list(f.model.mimeData({ f.index({ 0, 1 }) }));
    QVERIFY(!list->hasFormat(type));
    QVERIFY(!(f.model.flags(f.index({ 0, 1 })) & Qt::ItemIsDragEnabled));
    // The clipboard's copy is no drag.
    std::unique_ptr<QMimeData> copy(f.model.copy(f.index({ 4 })));
    QVERIFY(!copy->hasFormat(type));
    // Copying stays what the view offers; the model moves the entry itself.
    QCOMPARE(f.model.supportedDragActions(), Qt::DropActions(Qt::CopyAction));
    QCOMPARE(f.model.supportedDropActions(), Qt::DropActions(Qt::CopyAction));
}

// A row dropped onto another row moves there, before it, as a paste onto it would go; the name of
// the row it is dropped onto stays.
void TestCommandMove::dropRowOntoRowMoves()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> label(f.model.mimeData({ f.index({ 4 }) }));
    QVERIFY(f.model.dropMimeData(label.get(), Qt::CopyAction, -1, -1, f.index({ 3 })));
    QCOMPARE(outline(f.root()), rootRows({ "Mode", "# Plain tags", "-", "Label", "Speed", "Level" }));
    QCOMPARE(f.at({ 4 })->name, QStringLiteral("Speed"));
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), QStringLiteral("Move tag"));

    // Dropped onto another column of the row, with a move as the action: the same.
    std::unique_ptr<QMimeData> high(f.model.mimeData({ f.index({ 0, 1, 3 }, 2) }));
    QVERIFY(f.model.dropMimeData(high.get(), Qt::MoveAction, -1, -1, f.index({ 0, 1, 0 }, 1)));
    QCOMPARE(f.stack.count(), 2);
    QCOMPARE(f.stack.text(1), QStringLiteral("Move enum"));
    QCOMPARE(f.at({ 0, 1, 0 })->name, QStringLiteral("High"));
    QCOMPARE(f.at({ 0, 1, 1 })->name, QStringLiteral("Off"));
    QCOMPARE(f.at({ 0, 1 })->children.size(), 4);

    f.stack.undo();
    f.stack.undo();
    QCOMPARE(f.encoding(), encodeText(tree));
}

void TestCommandMove::dropBetweenRows()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> label(f.model.mimeData({ f.index({ 4 }) }));
    QVERIFY(f.model.dropMimeData(label.get(), Qt::CopyAction, 0, 0, QModelIndex()));
    QCOMPARE(outline(f.root()), rootRows({ "Label", "Mode", "# Plain tags", "-", "Speed", "Level" }));

    // After the last row of the root.
    std::unique_ptr<QMimeData> mode(f.model.mimeData({ f.index({ 1 }) }));
    QVERIFY(f.model.dropMimeData(mode.get(), Qt::CopyAction, 6, 1, QModelIndex()));
    QCOMPARE(outline(f.root()), rootRows({ "Label", "# Plain tags", "-", "Speed", "Level", "Mode" }));

    // Between the rows of a list, and past its end.
    std::unique_ptr<QMimeData> off(f.model.mimeData({ f.index({ 5, 1, 0 }) }));
    QVERIFY(f.model.dropMimeData(off.get(), Qt::CopyAction, 3, 0, f.index({ 5, 1 })));
    std::unique_ptr<QMimeData> manual(f.model.mimeData({ f.index({ 5, 0, 0 }) }));
    QVERIFY(f.model.dropMimeData(manual.get(), Qt::CopyAction, 3, 0, f.index({ 5, 0 })));
    QCOMPARE(outline(f.at({ 5 })),
             QStringLiteral("Bits\n  # reserved\n  Service\n  Manual\nEnums\n  Low\n  -\n  Off\n  High\n"));

    // A value between the rows of another tag's list goes there.
    std::unique_ptr<QMimeData> high(f.model.mimeData({ f.index({ 5, 1, 3 }) }));
    QVERIFY(f.model.dropMimeData(high.get(), Qt::CopyAction, 1, 0, f.index({ 4, 0 })));
    QCOMPARE(outline(f.at({ 4 })), QStringLiteral("Enums\n  Min\n  High\n  Max\n"));
    QCOMPARE(f.stack.count(), 5);
    for (int i = 0; i < 5; ++i)
        f.stack.undo();
    QCOMPARE(f.encoding(), encodeText(tree));
}

// Onto the empty area below the rows: a tag goes last, a value has no tag to go to.
void TestCommandMove::dropBelowRows()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> speed(f.model.mimeData({ f.index({ 3 }) }));
    QVERIFY(f.model.canDropMimeData(speed.get(), Qt::CopyAction, -1, -1, QModelIndex()));
    QVERIFY(f.model.dropMimeData(speed.get(), Qt::CopyAction, -1, -1, QModelIndex()));
    QCOMPARE(outline(f.root()), rootRows({ "Mode", "# Plain tags", "-", "Label", "Level", "Speed" }));
    std::unique_ptr<QMimeData> low(f.model.mimeData({ f.index({ 0, 1, 1 }) }));
    QVERIFY(!f.model.canDropMimeData(low.get(), Qt::CopyAction, -1, -1, QModelIndex()));
    QVERIFY(!f.model.dropMimeData(low.get(), Qt::CopyAction, -1, -1, QModelIndex()));
    QCOMPARE(f.stack.count(), 1);
}

void TestCommandMove::dropIntoOwnSubtreeRefused()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> mode(f.model.mimeData({ f.index({ 0 }) }));
    // onto its own value, its own list, itself
    QVERIFY(!f.model.dropMimeData(mode.get(), Qt::CopyAction, -1, -1, f.index({ 0, 1, 1 })));
    QVERIFY(!f.model.dropMimeData(mode.get(), Qt::CopyAction, -1, -1, f.index({ 0, 1 })));
    QVERIFY(!f.model.dropMimeData(mode.get(), Qt::CopyAction, -1, -1, f.index({ 0 })));
    // between the rows of its own lists
    QVERIFY(!f.model.dropMimeData(mode.get(), Qt::CopyAction, 1, 0, f.index({ 0, 1 })));
    QVERIFY(!f.model.dropMimeData(mode.get(), Qt::CopyAction, 0, 0, f.index({ 0 })));
    QVERIFY(!f.model.canDropMimeData(mode.get(), Qt::CopyAction, 1, 0, f.index({ 0, 1 })));
    // A tag inserted there would go right before it: where it is already.
    QVERIFY(!f.model.moveTo(f.index({ 0 }), 2, f.index({ 0, 1 })).isValid());
    QVERIFY(!f.model.canMoveTo(f.index({ 0 }), 2, f.index({ 0, 1 })));

    // A value onto itself or onto the row below it stays where it is.
    std::unique_ptr<QMimeData> low(f.model.mimeData({ f.index({ 0, 1, 1 }) }));
    QVERIFY(!f.model.dropMimeData(low.get(), Qt::CopyAction, -1, -1, f.index({ 0, 1, 1 })));
    QVERIFY(!f.model.dropMimeData(low.get(), Qt::CopyAction, -1, -1, f.index({ 0, 1, 2 })));
    QVERIFY(!f.model.dropMimeData(low.get(), Qt::CopyAction, 2, 0, f.index({ 0, 1 })));
    QCOMPARE(f.stack.count(), 0);
    QCOMPARE(f.encoding(), encodeText(tree));
}

// The rows a drag names must still hold the dragged entry.
void TestCommandMove::dropOfStaleDragRefused()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> label(f.model.mimeData({ f.index({ 4 }) }));
    QVERIFY(f.model.moveBy(f.index({ 3 }), 1).isValid());
    QVERIFY(!f.model.canDropMimeData(label.get(), Qt::CopyAction, -1, -1, f.index({ 0 })));
    QVERIFY(!f.model.dropMimeData(label.get(), Qt::CopyAction, -1, -1, f.index({ 0 })));
    QCOMPARE(f.at({ 0 })->name, QStringLiteral("Mode"));
    QCOMPARE(f.stack.count(), 1);

    // Damaged data is refused the same way.
    QMimeData damaged;
    damaged.setText(QStringLiteral("Damaged"));
    const QByteArray entry = label->data(EditorMoves::entryMimeType());
    damaged.setData(EditorMoves::entryMimeType(), entry.left(entry.lastIndexOf(' ')) + " 4/x");
    QVERIFY(!f.model.dropMimeData(&damaged, Qt::CopyAction, -1, -1, f.index({ 0 })));
    damaged.setData(EditorMoves::entryMimeType(), entry.left(entry.lastIndexOf(' ')) + " 99");
    QVERIFY(!f.model.dropMimeData(&damaged, Qt::CopyAction, -1, -1, f.index({ 0 })));
    QCOMPARE(f.stack.count(), 1);
}

// Another window's model has its own id: its rows come as text, as from any other program.
void TestCommandMove::dropFromOtherModelSetsText()
{
    Fixture f(tree);
    Fixture other(tree);
    std::unique_ptr<QMimeData> label(other.model.mimeData({ other.index({ 4 }) }));
    QVERIFY(label->hasFormat(EditorMoves::entryMimeType()));
    QVERIFY(f.model.dropMimeData(label.get(), Qt::CopyAction, -1, -1, f.index({ 3 })));
    QCOMPARE(outline(f.root()), rootRows({ "Mode", "# Plain tags", "-", "Label", "Label", "Level" }));
    QCOMPARE(f.stack.text(0), QStringLiteral("Change name"));
    // and like text, not between rows
    QVERIFY(!f.model.dropMimeData(label.get(), Qt::CopyAction, 0, 0, QModelIndex()));
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(other.stack.count(), 0);
}

void TestCommandMove::plainTextStillSetsCell()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> text = textData(QStringLiteral("Renamed"));
    QVERIFY(f.model.dropMimeData(text.get(), Qt::CopyAction, -1, -1, f.index({ 3 })));
    QCOMPARE(f.at({ 3 })->name, QStringLiteral("Renamed"));
    std::unique_ptr<QMimeData> number = textData(QStringLiteral("7"));
    QVERIFY(f.model.dropMimeData(number.get(), Qt::CopyAction, -1, -1, f.index({ 0, 1, 1 }, 1)));
    QCOMPARE(f.at({ 0, 1, 1 })->id, quint64(7));
    QCOMPARE(f.stack.count(), 2);
    QCOMPARE(f.stack.text(0), QStringLiteral("Change name"));
    QCOMPARE(f.stack.text(1), QStringLiteral("Change enum code"));
    QCOMPARE(outline(f.root()), rootRows({ "Mode", "# Plain tags", "-", "Renamed", "Label", "Level" }));
}

// The view asks before it shows a place to drop: a moving row where its drop moves it, text onto
// a cell only.
void TestCommandMove::canDropMimeData()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> label(f.model.mimeData({ f.index({ 4 }) }));
    QVERIFY(f.model.canDropMimeData(label.get(), Qt::CopyAction, -1, -1, f.index({ 0, 1, 1 })));
    QVERIFY(f.model.canDropMimeData(label.get(), Qt::CopyAction, 2, 0, QModelIndex()));
    QVERIFY(!f.model.canDropMimeData(label.get(), Qt::CopyAction, -1, -1, f.index({ 5 })));
    QVERIFY(!f.model.canDropMimeData(label.get(), Qt::CopyAction, 4, 0, QModelIndex()));
    QVERIFY(f.model.canDropMimeData(label.get(), Qt::IgnoreAction, 4, 0, QModelIndex()));
    std::unique_ptr<QMimeData> text = textData(QStringLiteral("Other"));
    QVERIFY(f.model.canDropMimeData(text.get(), Qt::CopyAction, -1, -1, f.index({ 3 })));
    QVERIFY(!f.model.canDropMimeData(text.get(), Qt::CopyAction, 1, 0, QModelIndex()));
    QVERIFY(!f.model.canDropMimeData(text.get(), Qt::CopyAction, -1, -1, QModelIndex()));
    QVERIFY(!f.model.canDropMimeData(text.get(), Qt::CopyAction, -1, -1, f.index({ 0, 1 })));
    QVERIFY(f.model.canDropMimeData(text.get(), Qt::CopyAction, -1, -1, f.index({ 0, 1, 2 }, 2)));
    QMimeData image;
    image.setData(QStringLiteral("image/png"), "png");
    QVERIFY(!f.model.canDropMimeData(&image, Qt::CopyAction, -1, -1, f.index({ 3 })));
    QCOMPARE(f.stack.count(), 0);
}

// ---------------------------------------------------------------------------------------------
// Marks

// A value moved into another tag's list collides there with a value of the same code; its old
// siblings and the new ones are marked as they are now, and again after undo and redo.
void TestCommandMove::moveChangesCollisionMarks()
{
    Fixture f(tree);
    auto marked = [&](std::initializer_list<int> rows, int column) {
        return f.model.data(f.index(rows, column), Qt::BackgroundRole) == QVariant(markBackground);
    };
    // Level's Max has the code of Mode's High, 2.
    std::unique_ptr<QMimeData> high(f.model.mimeData({ f.index({ 0, 1, 3 }) }));
    QVERIFY(!marked({ 0, 1, 3 }, 1));
    QVERIFY(!marked({ 5, 0, 1 }, 1));
    QSignalSpy changed(&f.model, &QAbstractItemModel::dataChanged);
    QVERIFY(f.model.dropMimeData(high.get(), Qt::CopyAction, -1, -1, f.index({ 5, 0, 1 })));
    QCOMPARE(outline(f.at({ 5 })), QStringLiteral("Enums\n  Min\n  High\n  Max\n"));
    QVERIFY(marked({ 5, 0, 1 }, 1));
    QVERIFY(marked({ 5, 0, 2 }, 1));
    QVERIFY(!marked({ 5, 0, 1 }, 0));
    QVERIFY(!marked({ 5, 0, 2 }, 0));
    QVERIFY(!marked({ 5, 0, 0 }, 1));
    QVERIFY(!marked({ 0, 1, 0 }, 1));
    // Max's row is repainted, and the moved row itself.
    QCOMPARE(signalText(changed), QStringLiteral("dataChanged 2,0-2,3 Max\ndataChanged 1,0-1,3 High"));

    // Undone, Max has its code alone again; High back among Mode's values.
    changed.clear();
    f.stack.undo();
    QVERIFY(!marked({ 5, 0, 1 }, 1));
    QVERIFY(!marked({ 0, 1, 3 }, 1));
    QCOMPARE(signalText(changed), QStringLiteral("dataChanged 1,0-1,3 Max\ndataChanged 3,0-3,3 High"));
    f.stack.redo();
    QVERIFY(marked({ 5, 0, 1 }, 1));
    QVERIFY(marked({ 5, 0, 2 }, 1));

    // Level's Min, renamed Off, moved among Mode's values collides with Mode's Off in name and
    // code, until the move is undone.
    QVERIFY(f.model.setData(f.index({ 5, 0, 0 }), QStringLiteral("Off")));
    QVERIFY(!marked({ 5, 0, 0 }, 0));
    std::unique_ptr<QMimeData> min(f.model.mimeData({ f.index({ 5, 0, 0 }) }));
    QVERIFY(f.model.dropMimeData(min.get(), Qt::CopyAction, 0, 0, f.index({ 0, 1 })));
    QCOMPARE(outline(f.at({ 0, 1 })), QStringLiteral("Off\nOff\nLow\n-\n"));
    for (int row : { 0, 1 }) {
        QVERIFY(marked({ 0, 1, row }, 0));
        QVERIFY(marked({ 0, 1, row }, 1));
    }
    QVERIFY(!marked({ 0, 1, 2 }, 0));
    f.stack.undo();
    QVERIFY(!marked({ 0, 1, 0 }, 0));
    QVERIFY(!marked({ 0, 1, 0 }, 1));
    QVERIFY(!marked({ 5, 0, 0 }, 0));
    QCOMPARE(f.at({ 5, 0, 0 })->name, QStringLiteral("Off"));
}

// The problem list follows a move as it follows an insertion and a removal, entry by entry: it
// is not made anew, and stays in document order.
void TestCommandMove::problemListFollowsMoves()
{
    Fixture f(tree);
    ProblemList problems(&f.model);
    problems.update();
    const QString label = QStringLiteral("Tag Label: name without code");
    QCOMPARE(messages(problems), label);
    QSignalSpy rebuilt(&problems, &ProblemList::rebuilt);
    QSignalSpy replaced(&problems, &ProblemList::replaced);

    // Mode's High among Level's values, where Max has its code.
    std::unique_ptr<QMimeData> high(f.model.mimeData({ f.index({ 0, 1, 3 }) }));
    QVERIFY(f.model.dropMimeData(high.get(), Qt::CopyAction, -1, -1, f.index({ 5, 0, 1 })));
    QVERIFY(problems.isStale());
    problems.update();
    const QString collisions = QStringLiteral("Enum High (2) of Tag Level (0x1003): code collision with a sibling\n"
                                              "Enum Max (2) of Tag Level (0x1003): code collision with a sibling");
    QCOMPARE(messages(problems), label + QLatin1Char('\n') + collisions);

    // Level with its subtree before Mode: its problems go before Label's.
    EditorMoves moves(f.model);
    QVERIFY(moves.moveTo(f.index({ 5 }), 0, QModelIndex()).isValid());
    problems.update();
    QCOMPARE(messages(problems), collisions + QLatin1Char('\n') + label);
    // Label one row up, still after Level.
    QVERIFY(moves.moveBy(f.index({ 4 }), -1).isValid());
    problems.update();
    QCOMPARE(messages(problems), collisions + QLatin1Char('\n') + label);

    f.stack.undo();
    f.stack.undo();
    problems.update();
    QCOMPARE(messages(problems), label + QLatin1Char('\n') + collisions);
    f.stack.undo();
    problems.update();
    QCOMPARE(messages(problems), label);
    QCOMPARE(rebuilt.count(), 0);
    QVERIFY(replaced.count() >= 6);
}

QTEST_MAIN(TestCommandMove)
#include "tst_commandmove.moc"
