// Tests of copy, cut and paste of items with their subtrees, and of dragging and dropping cell
// texts.

#include "editortest.h"
#include "treemaker.h"
#include "writerxml.h"

#include <QMimeData>

#include <functional>

using namespace ZAT16;
using namespace EditorTest;

namespace {

const QByteArray declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?> <!-- -*- nxml -*- -->";

// Rows of the root: 0 Mode { 0 bits {0 Manual}, 1 enums {0 Off, 1 On} }, 1 Speed "fast",
// 2 Label (no code), 3 Channel { 0 enums (display 4x) {0 A, 1 B} }, 4 comment line, 5 Plain.
const QByteArray tree = document("  <tag name=\"Mode\" id=\"0x1002\">\n"
                                 "    <bits>\n"
                                 "      <bit name=\"Manual\" id=\"1\"/>\n"
                                 "    </bits>\n"
                                 "    <enums>\n"
                                 "      <enum name=\"Off\" id=\"0\"/>\n"
                                 "      <enum name=\"On\" id=\"1\"/>\n"
                                 "    </enums>\n"
                                 "  </tag>\n"
                                 "  <tag name=\"Speed\" id=\"0x1001\" comment=\"fast\"/>\n"
                                 "  <tag name=\"Label\"/>\n"
                                 "  <tag name=\"Channel\" id=\"0x1005\">\n"
                                 "    <enums display=\"4x\">\n"
                                 "      <enum name=\"A\" id=\"0x10\"/>\n"
                                 "      <enum name=\"B\" id=\"0x11\"/>\n"
                                 "    </enums>\n"
                                 "  </tag>\n"
                                 "  <!-- plain tags -->\n"
                                 "  <tag name=\"Plain\" id=\"0x3001\"/>\n");

// An item with its subtree as the clipboard writes it.
QByteArray entryText(const Item *item)
{
    WriterXml writer;
    writer.entry = true;
    return writer.encode(item);
}

// The paths of rows from the root to every item of a tree, parents before their children.
QList<QList<int>> itemPaths(const Item *item, QList<int> path = {})
{
    QList<QList<int>> paths;
    for (int row = 0; row < item->children.size(); ++row) {
        QList<int> child = path;
        child.append(row);
        paths.append(child);
        paths += itemPaths(item->children.at(row), child);
    }
    return paths;
}

Item *itemAt(Item *root, const QList<int> &path)
{
    Item *item = root;
    for (int row : path)
        item = item ? item->child(row) : nullptr;
    return item;
}

QModelIndex indexAt(const EditorModel &model, const QList<int> &path)
{
    QModelIndex index;
    for (int row : path)
        index = model.index(row, 0, index);
    return index;
}

QString rowsText(const QList<int> &path)
{
    QStringList rows;
    for (int row : path)
        rows << QString::number(row);
    return rows.join(QLatin1Char('/'));
}

// Copies the item at `path` of a fresh tree from `makeTree` and pastes it onto its own row; empty
// when the same subtree came back where the insertion rules put it, what went wrong otherwise. A
// list pasted onto itself merges into its tag's first list of its kind: its children come back at
// that list's end; a value or bit of another list than that first one goes there too.
// The tag's first child of the given kind, searched here rather than asked of the item.
const Item *firstOfKind(const Item *tag, ItemType type)
{
    for (const Item *child : tag->children) {
        if (child->type == type)
            return child;
    }
    return nullptr;
}

QString pastesBack(const std::function<Item *()> &makeTree, const QList<int> &path)
{
    Fixture f(makeTree());
    Item *item = itemAt(f.root(), path);
    const QModelIndex index = indexAt(f.model, path);
    const QByteArray original = entryText(item);
    QStringList children;
    for (const Item *child : item->children)
        children.append(dumpTree(child));
    const bool list = item->type == Enums || item->type == Bits;
    // A pasted list merges into the tag's first list of its kind, which may be another one.
    const Item *target = list ? firstOfKind(item->parent, item->type) : nullptr;
    const qsizetype targetSize = target ? target->children.size() : 0;

    std::unique_ptr<QMimeData> mime(f.model.copy(index));
    const QModelIndex pasted = f.model.paste(index, mime.get());
    if (!pasted.isValid())
        return QStringLiteral("nothing was pasted: ") + QString::fromUtf8(mime->data(QStringLiteral("text/xml")));
    const Item *result = f.model.index2item(pasted);
    if (!list) {
        // A value or bit goes into the first list of its kind in the tag; onto its own row when
        // that is its list, at the end of the first list otherwise.
        const Item *parent = item->parent;
        const Item *first
            = (parent->type == Enums || parent->type == Bits) && parent->parent && parent->parent->type == Tag
            ? firstOfKind(parent->parent, parent->type)
            : parent;
        const bool ownRow = first == parent;
        if (f.model.index2item(pasted.parent()) != first
            || pasted.row() != (ownRow ? path.last() : int(first->children.size()) - 1))
            return QStringLiteral("pasted at another place");
        // In another list the numbers show in that list's display: the fields must be the same.
        if (!ownRow)
            return dumpTree(result) == dumpTree(item) ? QString()
                                                      : QStringLiteral("pasted otherwise into the first list");
        const QByteArray back = entryText(result);
        return back == original
            ? QString()
            : QStringLiteral("pasted %1 instead of %2").arg(QString::fromUtf8(back), QString::fromUtf8(original));
    }
    if (result != target || target->children.size() != targetSize + children.size())
        return QStringLiteral("the list did not get its children again");
    for (int i = 0; i < children.size(); ++i) {
        if (dumpTree(target->children.at(targetSize + i)) != children.at(i))
            return QStringLiteral("child %1 of the list came back otherwise").arg(i);
    }
    return QString();
}

std::unique_ptr<QMimeData> textData(const QString &text)
{
    auto mime = std::make_unique<QMimeData>();
    mime->setText(text);
    return mime;
}

std::unique_ptr<QMimeData> xmlData(const QByteArray &xml)
{
    auto mime = std::make_unique<QMimeData>();
    mime->setData(QStringLiteral("text/xml"), xml);
    return mime;
}

} // namespace

class TestClipboard : public QObject
{
    Q_OBJECT

private slots:
    // Copy
    void copyTagWithLists();
    void copyTagWithoutCode();
    void copyTexts_data();
    void copyTexts();
    void copyItemWithComment();
    void copyCommentLine();
    void copyInvalidIndex();

    // Cut
    void cutRootLevelTag();
    void cutValue();
    void cutInvalidIndex();

    // Paste
    void pasteTagOntoItsOwnValue();
    void pasteTagAtRootLevel();
    void pasteValueIntoOtherTag();
    void pasteValueIntoTagWithoutList();
    void pasteValueIntoList();
    void pasteListMerges();
    void pasteListIntoTagWithoutList();
    void pasteBit();
    void pastedCollisionsAreKept();
    void pasteValueOntoCommentLine();
    void pasteCommentAsDocumentType();
    void pasteRefused();
    void pasteEntityDeclarationsRefused();
    void pastePlainText();
    void pastePlainTextOnCodeCell();
    void copyValueOfPaddedDecimalList();
    void everyItemPastesBack_data();
    void everyItemPastesBack();

    // Drag and drop
    void mimeTypes();
    void dropActions();
    void dragSingleCell();
    void dragSeveralCells();
    void dropOntoCell();
    void dropRefused();
    void refusedNameDroppedOrPastedIsMarked();
};

// ---------------------------------------------------------------------------------------------
// Copy

// Edge case: the text and the XML of a copied tag.
void TestClipboard::copyTagWithLists()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> mime(f.model.copy(f.index({ 0 })));
    QVERIFY(mime);
    QCOMPARE(mime->text(), QStringLiteral("Mode 0x1002"));
    QVERIFY(mime->hasFormat(QStringLiteral("text/plain")));
    const QByteArray expected = declaration
        + "\n<tag name=\"Mode\" id=\"0x1002\">\n"
          "  <bits>\n"
          "    <bit name=\"Manual\" id=\"1\"/>\n"
          "  </bits>\n"
          "  <enums>\n"
          "    <enum name=\"Off\" id=\"0\"/>\n"
          "    <enum name=\"On\" id=\"1\"/>\n"
          "  </enums>\n"
          "</tag>\n";
    QCOMPARE(mime->data(QStringLiteral("text/xml")), expected);
    // Copying changes nothing.
    QCOMPARE(f.stack.count(), 0);
    QCOMPARE(f.encoding(), encodeText(tree));
}

void TestClipboard::copyTagWithoutCode()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> mime(f.model.copy(f.index({ 2 })));
    QVERIFY(mime);
    QCOMPARE(mime->text(), QStringLiteral("Label "));
    QCOMPARE(mime->data(QStringLiteral("text/xml")), declaration + "\n<tag name=\"Label\"/>\n");
}

void TestClipboard::copyTexts_data()
{
    QTest::addColumn<QList<int>>("path");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("xml");

    QTest::newRow("tag from the comment column") << QList<int> { 5 } << 2 << QStringLiteral("Plain 0x3001")
                                                 << (declaration + "\n<tag name=\"Plain\" id=\"0x3001\"/>\n");
    QTest::newRow("enum value in hex list") << QList<int> { 3, 0, 1 } << 0 << QStringLiteral("B 0x0011")
                                            << (declaration + "\n<enum name=\"B\" id=\"0x0011\"/>\n");
    QTest::newRow("bit") << QList<int> { 0, 0, 0 } << 1 << QStringLiteral("Manual 1")
                         << (declaration + "\n<bit name=\"Manual\" id=\"1\"/>\n");
    QTest::newRow("list") << QList<int> { 3, 0 } << 0 << QStringLiteral(" ")
                          << (declaration
                              + "\n<enums display=\"4x\">\n"
                                "  <enum name=\"A\" id=\"0x0010\"/>\n"
                                "  <enum name=\"B\" id=\"0x0011\"/>\n"
                                "</enums>\n");
}

void TestClipboard::copyTexts()
{
    QFETCH(QList<int>, path);
    QFETCH(int, column);
    QFETCH(QString, text);
    QFETCH(QByteArray, xml);

    Fixture f(tree);
    QModelIndex parent;
    for (int i = 0; i < path.size() - 1; ++i)
        parent = f.model.index(path.at(i), 0, parent);
    std::unique_ptr<QMimeData> mime(f.model.copy(f.model.index(path.last(), column, parent)));
    QVERIFY(mime);
    QCOMPARE(mime->text(), text);
    QCOMPARE(mime->data(QStringLiteral("text/xml")), xml);
}

// An item's comment is its comment attribute on the clipboard, never the place of a document
// type declaration, which no parser takes there; so an item with a comment pastes like any other.
void TestClipboard::copyItemWithComment()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> mime(f.model.copy(f.index({ 1 })));
    QVERIFY(mime);
    QCOMPARE(mime->text(), QStringLiteral("Speed 0x1001"));
    QCOMPARE(mime->data(QStringLiteral("text/xml")),
             declaration + "\n<tag name=\"Speed\" id=\"0x1001\" comment=\"fast\"/>\n");
    const QModelIndex pasted = f.model.paste(f.index({ 2 }), mime.get());
    QVERIFY(pasted.isValid());
    QCOMPARE(pasted.row(), 2);
    QCOMPARE(dumpTree(f.at({ 2 })), dumpTree(f.at({ 1 })));
    QCOMPARE(f.at({ 2 })->comment, QStringLiteral("fast"));
}

// A comment line is an element with only a comment on the clipboard; pasted, it is a comment line
// again.
void TestClipboard::copyCommentLine()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> mime(f.model.copy(f.index({ 4 })));
    QVERIFY(mime);
    QCOMPARE(mime->text(), QStringLiteral(" "));
    QCOMPARE(mime->data(QStringLiteral("text/xml")), declaration + "\n<tag comment=\" plain tags \"/>\n");
    const QModelIndex pasted = f.model.paste(f.index({ 2 }), mime.get());
    QVERIFY(pasted.isValid());
    QVERIFY(f.at({ 2 })->isComment());
    QCOMPARE(f.at({ 2 })->comment, QStringLiteral(" plain tags "));
    QCOMPARE(f.stack.count(), 1);
}

void TestClipboard::copyInvalidIndex()
{
    Fixture f(tree);
    QVERIFY(!f.model.copy(QModelIndex()));
    QVERIFY(!f.model.cut(QModelIndex()));
}

// A value of a list that pads decimal numbers with zeros is copied without them: on its own, "0043"
// would read as octal.
void TestClipboard::copyValueOfPaddedDecimalList()
{
    Fixture f(document("  <tag name=\"T\" id=\"0x1001\">\n"
                       "    <enums display=\"4u\">\n"
                       "      <enum name=\"A\" id=\"0043\"/>\n"
                       "    </enums>\n"
                       "  </tag>\n"));
    QCOMPARE(f.at({ 0, 0, 0 })->id, quint64(43));
    std::unique_ptr<QMimeData> mime(f.model.copy(f.index({ 0, 0, 0 })));
    QCOMPARE(mime->data(QStringLiteral("text/xml")), declaration + "\n<enum name=\"A\" id=\"43\"/>\n");
    const QModelIndex pasted = f.model.paste(f.index({ 0, 0, 0 }), mime.get());
    QVERIFY(pasted.isValid());
    QCOMPARE(f.at({ 0, 0, 0 })->id, quint64(43));
    QCOMPARE(f.model.data(f.index({ 0, 0, 0 }, 1), Qt::DisplayRole).toString(), QStringLiteral("  0043"));
}

// Every item, whatever it holds (a comment, a comment line, a blank line, a list), copied and
// pasted onto its own row, comes back as it was: in both example files and in 200 random trees.
void TestClipboard::everyItemPastesBack_data()
{
    QTest::addColumn<QString>("example");
    QTest::addColumn<int>("seed");
    QTest::newRow("weather station") << QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef") << 0;
    QTest::newRow("battery charger") << QStringLiteral(ZAT16_EXAMPLES "/battery-charger.zatdef") << 0;
    for (int seed = 1; seed <= 200; ++seed)
        QTest::newRow(qPrintable(QStringLiteral("random tree %1").arg(seed))) << QString() << seed;
}

void TestClipboard::everyItemPastesBack()
{
    QFETCH(QString, example);
    QFETCH(int, seed);
    const std::function<Item *()> makeTree = [&]() -> Item * {
        if (!example.isEmpty())
            return parseFile(example);
        return TreeMaker(quint32(seed)).root().release();
    };
    const std::unique_ptr<Item> tree(makeTree());
    const QList<QList<int>> paths = itemPaths(tree.get());
    if (!example.isEmpty())
        QVERIFY(!paths.isEmpty());
    for (const QList<int> &path : paths) {
        const QString problem = pastesBack(makeTree, path);
        QVERIFY2(problem.isEmpty(),
                 qPrintable(QStringLiteral("item at rows %1 (%2): %3")
                                .arg(rowsText(path))
                                .arg(dumpTree(itemAt(tree.get(), path)).trimmed(), problem)));
    }
}

// ---------------------------------------------------------------------------------------------
// Cut

// Edge case: cutting a root-level tag takes its lists along; undo puts it back at its row.
void TestClipboard::cutRootLevelTag()
{
    Fixture f(tree);
    const QString before = f.dump();
    Item *mode = f.at({ 0 });
    std::unique_ptr<QMimeData> mime(f.model.cut(f.index({ 0 }, 1)));
    QVERIFY(mime);
    QCOMPARE(mime->text(), QStringLiteral("Mode 0x1002"));
    QVERIFY(mime->data(QStringLiteral("text/xml")).contains("<enum name=\"On\" id=\"1\"/>"));
    QCOMPARE(f.model.rowCount(), 5);
    QCOMPARE(f.at({ 0 })->name, QStringLiteral("Speed"));
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), QStringLiteral("Cut tag"));
    f.stack.undo();
    QCOMPARE(f.at({ 0 }), mode);
    QCOMPARE(f.dump(), before);
    QCOMPARE(mode->children.size(), 2);

    // The cut data pastes back as a copy.
    f.stack.redo();
    const QModelIndex pasted = f.model.paste(f.index({ 2 }), mime.get());
    QVERIFY(pasted.isValid());
    QCOMPARE(pasted.row(), 2);
    QCOMPARE(f.model.index2item(pasted)->name, QStringLiteral("Mode"));
    QCOMPARE(f.model.index2item(pasted)->children.size(), 2);
}

void TestClipboard::cutValue()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> mime(f.model.cut(f.index({ 3, 0, 0 }, 2)));
    QVERIFY(mime);
    QCOMPARE(mime->text(), QStringLiteral("A 0x0010"));
    QCOMPARE(f.stack.text(0), QStringLiteral("Cut enum"));
    QCOMPARE(f.at({ 3, 0 })->children.size(), 1);
    std::unique_ptr<QMimeData> bit(f.model.cut(f.index({ 0, 0, 0 })));
    QCOMPARE(f.stack.text(1), QStringLiteral("Cut bit"));
    std::unique_ptr<QMimeData> list(f.model.cut(f.index({ 0, 0 })));
    QVERIFY(list);
    QCOMPARE(list->text(), QStringLiteral(" "));
    QVERIFY(f.stack.text(2).isEmpty());
}

void TestClipboard::cutInvalidIndex()
{
    Fixture f(tree);
    QVERIFY(!f.model.cut(QModelIndex()));
    QCOMPARE(f.stack.count(), 0);
}

// ---------------------------------------------------------------------------------------------
// Paste

// Edge case: a tag pasted onto one of its own values lands at the root level before that tag.
void TestClipboard::pasteTagOntoItsOwnValue()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> mime(f.model.copy(f.index({ 0 })));
    Item *mode = f.at({ 0 });
    const QModelIndex pasted = f.model.paste(f.index({ 0, 1, 1 }), mime.get());
    QVERIFY(pasted.isValid());
    QCOMPARE(pasted.row(), 0);
    QVERIFY(!pasted.parent().isValid());
    QCOMPARE(f.at({ 1 }), mode);
    Item *copy = f.at({ 0 });
    QVERIFY(copy != mode);
    QCOMPARE(dumpTree(copy), dumpTree(mode));
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), QStringLiteral("Insert tag"));
    f.stack.undo();
    QCOMPARE(f.encoding(), encodeText(tree));
}

void TestClipboard::pasteTagAtRootLevel()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> mime(f.model.copy(f.index({ 5 })));
    const QModelIndex pasted = f.model.paste(f.index({ 3 }, 2), mime.get());
    QCOMPARE(pasted.row(), 3);
    QCOMPARE(f.at({ 3 })->name, QStringLiteral("Plain"));
    QCOMPARE(f.at({ 4 })->name, QStringLiteral("Channel"));
}

// Edge case: a value copied from one tag goes into the list of the tag at the insertion point.
void TestClipboard::pasteValueIntoOtherTag()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> mime(f.model.copy(f.index({ 3, 0, 1 })));
    QTest::ignoreMessage(QtDebugMsg, "insertion point modified");
    const QModelIndex pasted = f.model.paste(f.index({ 0 }), mime.get());
    QVERIFY(pasted.isValid());
    Item *value = f.model.index2item(pasted);
    QCOMPARE(value->parent, f.at({ 0, 1 }));
    QCOMPARE(pasted.row(), 2);
    QCOMPARE(value->name, QStringLiteral("B"));
    QCOMPARE(value->id, quint64(0x11));
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), QStringLiteral("Insert enum"));
}

// Edge case: the missing list is made first, as its own undo step.
void TestClipboard::pasteValueIntoTagWithoutList()
{
    Fixture f(tree);
    const QByteArray before = f.encoding();
    std::unique_ptr<QMimeData> mime(f.model.copy(f.index({ 0, 1, 1 })));
    QTest::ignoreMessage(QtDebugMsg, "insertion point modified");
    const QModelIndex pasted = f.model.paste(f.index({ 5 }), mime.get());
    QVERIFY(pasted.isValid());
    QCOMPARE(f.at({ 5, 0 })->type, Enums);
    QCOMPARE(f.at({ 5, 0, 0 })->name, QStringLiteral("On"));
    QCOMPARE(f.model.index2item(pasted), f.at({ 5, 0, 0 }));
    QCOMPARE(f.stack.count(), 2);
    QCOMPARE(f.stack.text(0), QStringLiteral("Insert item"));
    QCOMPARE(f.stack.text(1), QStringLiteral("Insert enum"));
    f.stack.undo();
    QCOMPARE(f.at({ 5 })->children.size(), 1);
    f.stack.undo();
    QCOMPARE(f.encoding(), before);
}

void TestClipboard::pasteValueIntoList()
{
    // Onto a value of the list itself, at that value's row.
    Fixture f(tree);
    std::unique_ptr<QMimeData> mime(f.model.copy(f.index({ 3, 0, 1 })));
    const QModelIndex pasted = f.model.paste(f.index({ 0, 1, 1 }), mime.get());
    QVERIFY(pasted.isValid());
    QCOMPARE(pasted.row(), 1);
    QCOMPARE(f.at({ 0, 1, 1 })->name, QStringLiteral("B"));
    QCOMPARE(f.at({ 0, 1, 2 })->name, QStringLiteral("On"));
    QCOMPARE(f.stack.count(), 1);
}

// Edge case: a pasted list merges into the existing one as one "Merge data" step.
void TestClipboard::pasteListMerges()
{
    Fixture f(tree);
    const QByteArray before = f.encoding();
    std::unique_ptr<QMimeData> mime(f.model.copy(f.index({ 3, 0 })));
    const QModelIndex pasted = f.model.paste(f.index({ 0, 1, 0 }), mime.get());
    QVERIFY(pasted.isValid());
    QCOMPARE(f.model.index2item(pasted), f.at({ 0, 1 }));
    QCOMPARE(f.at({ 0, 1 })->children.size(), 4);
    // Onto a value of the list: in at that value's row.
    QCOMPARE(f.at({ 0, 1, 0 })->name, QStringLiteral("A"));
    QCOMPARE(f.at({ 0, 1, 1 })->name, QStringLiteral("B"));
    QCOMPARE(f.at({ 0, 1, 2 })->name, QStringLiteral("Off"));
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), QStringLiteral("Merge data"));
    f.stack.undo();
    QCOMPARE(f.encoding(), before);
    f.stack.redo();
    QCOMPARE(f.at({ 0, 1 })->children.size(), 4);

    // Onto the tag: at the end of its list.
    std::unique_ptr<QMimeData> bits(f.model.copy(f.index({ 0, 0 })));
    QVERIFY(f.model.paste(f.index({ 0 }), bits.get()).isValid());
    QCOMPARE(f.at({ 0, 0 })->children.size(), 2);
    QCOMPARE(f.at({ 0, 0, 1 })->name, QStringLiteral("Manual"));
    QCOMPARE(f.stack.text(1), QStringLiteral("Merge data"));
}

void TestClipboard::pasteListIntoTagWithoutList()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> mime(f.model.copy(f.index({ 0, 0 })));
    const QModelIndex pasted = f.model.paste(f.index({ 3, 0, 1 }), mime.get());
    QVERIFY(pasted.isValid());
    // The bit list goes before the enumeration list.
    QCOMPARE(pasted.row(), 0);
    QCOMPARE(f.at({ 3, 0 })->type, Bits);
    QCOMPARE(f.at({ 3, 0, 0 })->name, QStringLiteral("Manual"));
    QCOMPARE(f.at({ 3, 1 })->type, Enums);
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), QStringLiteral("Insert item"));
}

void TestClipboard::pasteBit()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> mime(f.model.copy(f.index({ 0, 0, 0 })));
    QTest::ignoreMessage(QtDebugMsg, "insertion point modified");
    const QModelIndex pasted = f.model.paste(f.index({ 3, 0, 0 }), mime.get());
    QVERIFY(pasted.isValid());
    QCOMPARE(f.at({ 3, 0 })->type, Bits);
    QCOMPARE(f.model.index2item(pasted), f.at({ 3, 0, 0 }));
    QCOMPARE(f.stack.count(), 2);
    QCOMPARE(f.stack.text(1), QStringLiteral("Insert bit"));
}

void TestClipboard::pastedCollisionsAreKept()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> mime(f.model.copy(f.index({ 0, 1, 0 })));
    const QModelIndex pasted = f.model.paste(f.index({ 0, 1, 1 }), mime.get());
    QVERIFY(pasted.isValid());
    QCOMPARE(f.at({ 0, 1, 1 })->name, QStringLiteral("Off"));
    QCOMPARE(f.model.data(pasted, Qt::BackgroundRole).value<QColor>(), QColor(192, 0, 0));
    QCOMPARE(f.model.data(pasted.siblingAtColumn(1), Qt::BackgroundRole).value<QColor>(), QColor(192, 0, 0));
    QCOMPARE(f.model.data(f.index({ 0, 1, 0 }), Qt::BackgroundRole).value<QColor>(), QColor(192, 0, 0));
}

// A comment line of the root level is of the tag kind, so a value pasted onto it gets a list of
// its own inside that line, which then shows as an incomplete tag.
void TestClipboard::pasteValueOntoCommentLine()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> mime(f.model.copy(f.index({ 0, 1, 0 })));
    QTest::ignoreMessage(QtDebugMsg, "insertion point modified");
    const QModelIndex pasted = f.model.paste(f.index({ 4 }), mime.get());
    QVERIFY(pasted.isValid());
    QCOMPARE(f.at({ 4 })->comment, QStringLiteral(" plain tags "));
    QCOMPARE(f.at({ 4, 0 })->type, Enums);
    QCOMPARE(f.model.index2item(pasted), f.at({ 4, 0, 0 }));
    QVERIFY(!f.at({ 4 })->isComment());
    QCOMPARE(f.model.data(f.index({ 4 }, 2), Qt::BackgroundRole).value<QColor>(), QColor(192, 0, 0));
    QCOMPARE(f.stack.count(), 2);
    f.stack.undo();
    f.stack.undo();
    QVERIFY(f.at({ 4 })->isComment());
    QCOMPARE(f.encoding(), encodeText(tree));
}

// A comment that reads like a document type declaration survives the trip as a comment.
void TestClipboard::pasteCommentAsDocumentType()
{
    Fixture f(document("  <tag name=\"Typed\" id=\"0x1001\" comment=\"&lt;!DOCTYPE tag&gt;\"/>\n"));
    std::unique_ptr<QMimeData> mime(f.model.copy(f.index({ 0 })));
    QCOMPARE(mime->data(QStringLiteral("text/xml")),
             declaration + "\n<tag name=\"Typed\" id=\"0x1001\" comment=\"&lt;!DOCTYPE tag&gt;\"/>\n");
    const QModelIndex pasted = f.model.paste(f.index({ 0 }), mime.get());
    QVERIFY(pasted.isValid());
    QCOMPARE(pasted.row(), 0);
    QCOMPARE(f.at({ 0 })->comment, QStringLiteral("<!DOCTYPE tag>"));
    QCOMPARE(dumpTree(f.at({ 0 })), dumpTree(f.at({ 1 })));
}

void TestClipboard::pasteRefused()
{
    Fixture f(tree);
    const QByteArray before = f.encoding();
    std::unique_ptr<QMimeData> tag(f.model.copy(f.index({ 5 })));
    QVERIFY(!f.model.paste(QModelIndex(), tag.get()).isValid());
    QVERIFY(!f.model.paste(f.index({ 0 }), nullptr).isValid());
    QMimeData empty;
    QVERIFY(!f.model.paste(f.index({ 0 }), &empty).isValid());
    // Unreadable XML is not tried as text.
    std::unique_ptr<QMimeData> broken = xmlData("<tag name=\"X\"");
    broken->setText(QStringLiteral("Renamed"));
    QVERIFY(!f.model.paste(f.index({ 0 }), broken.get()).isValid());
    // A whole document is of the root kind and cannot be inserted.
    std::unique_ptr<QMimeData> whole = xmlData(encodeText(tree));
    QVERIFY(!f.model.paste(f.index({ 0 }), whole.get()).isValid());
    // A value needs a tag around the insertion point; a misplaced list at the root level has none.
    std::unique_ptr<QMimeData> value = xmlData(declaration + "\n<enum name=\"V\" id=\"1\"/>\n");
    Fixture lonely(document("  <enums/>\n"));
    QCOMPARE(lonely.at({ 0 })->type, Enums);
    QVERIFY(!lonely.model.paste(lonely.index({ 0 }), value.get()).isValid());
    QCOMPARE(lonely.stack.count(), 0);
    QCOMPARE(f.stack.count(), 0);
    QCOMPARE(f.encoding(), before);
}

// Pasted data is read like a file: entity declarations, which could make the reader expand a few
// bytes into gigabytes, are refused and nothing changes.
void TestClipboard::pasteEntityDeclarationsRefused()
{
    Fixture f(tree);
    const QByteArray before = f.encoding();
    QByteArray laughs = "<?xml version=\"1.0\"?>\n<!DOCTYPE tag [\n <!ENTITY l0 \"lol\">\n";
    for (int i = 1; i < 10; ++i) {
        laughs += " <!ENTITY l" + QByteArray::number(i) + " \"";
        for (int j = 0; j < 10; ++j)
            laughs += "&l" + QByteArray::number(i - 1) + ";";
        laughs += "\">\n";
    }
    laughs += "]>\n<tag name=\"X\" id=\"0x1\" comment=\"&l9;\"/>\n";
    std::unique_ptr<QMimeData> mime = xmlData(laughs);
    QVERIFY(!f.model.paste(f.index({ 0 }), mime.get()).isValid());
    std::unique_ptr<QMimeData> external = xmlData("<?xml version=\"1.0\"?>\n<!DOCTYPE tag [\n"
                                                  " <!ENTITY e SYSTEM \"file:///etc/passwd\">\n]>\n"
                                                  "<tag name=\"X\" id=\"0x1\" comment=\"&e;\"/>\n");
    QVERIFY(!f.model.paste(f.index({ 0 }), external.get()).isValid());
    QCOMPARE(f.stack.count(), 0);
    QCOMPARE(f.encoding(), before);
}

// Edge case: plain text from another program renames the item in a name cell.
void TestClipboard::pastePlainText()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> mime = textData(QStringLiteral("Renamed"));
    const QModelIndex at = f.index({ 5 });
    QCOMPARE(f.model.paste(at, mime.get()), at);
    QCOMPARE(f.at({ 5 })->name, QStringLiteral("Renamed"));
    QCOMPARE(f.stack.text(0), QStringLiteral("Change name"));
    // In the comment cell it becomes the comment.
    QCOMPARE(f.model.paste(f.index({ 5 }, 2), mime.get()), f.index({ 5 }, 2));
    QCOMPARE(f.at({ 5 })->comment, QStringLiteral("Renamed"));
}

// Edge case: in a code cell the text must parse as a number, or nothing changes.
void TestClipboard::pastePlainTextOnCodeCell()
{
    Fixture f(tree);
    const QModelIndex at = f.index({ 5 }, 1);
    std::unique_ptr<QMimeData> number = textData(QStringLiteral("0x3005"));
    QCOMPARE(f.model.paste(at, number.get()), at);
    QCOMPARE(f.at({ 5 })->id, quint64(0x3005));
    QCOMPARE(f.stack.count(), 1);
    std::unique_ptr<QMimeData> word = textData(QStringLiteral("Plain 0x3001"));
    QCOMPARE(f.model.paste(at, word.get()), at);
    QCOMPARE(f.at({ 5 })->id, quint64(0x3005));
    QCOMPARE(f.stack.count(), 1);
    // Onto a list nothing changes either.
    QCOMPARE(f.model.paste(f.index({ 0, 0 }), word.get()), f.index({ 0, 0 }));
    QCOMPARE(f.stack.count(), 1);
}

// ---------------------------------------------------------------------------------------------
// Drag and drop

void TestClipboard::mimeTypes()
{
    Fixture f;
    QCOMPARE(f.model.mimeTypes(), QStringList { QStringLiteral("text/plain") });
}

void TestClipboard::dropActions()
{
    Fixture f;
    QCOMPARE(f.model.supportedDropActions(), Qt::DropActions(Qt::CopyAction));
    QCOMPARE(f.model.supportedDragActions(), Qt::DropActions(Qt::CopyAction));
}

void TestClipboard::dragSingleCell()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> name(f.model.mimeData({ f.index({ 3, 0, 0 }) }));
    QVERIFY(name);
    QCOMPARE(name->text(), QStringLiteral("A"));
    QVERIFY(!name->hasFormat(QStringLiteral("text/xml")));
    std::unique_ptr<QMimeData> code(f.model.mimeData({ f.index({ 3, 0, 0 }, 1) }));
    QCOMPARE(code->text(), QStringLiteral("0x0010"));
    std::unique_ptr<QMimeData> comment(f.model.mimeData({ f.index({ 1 }, 2) }));
    QCOMPARE(comment->text(), QStringLiteral("fast"));
    std::unique_ptr<QMimeData> list(f.model.mimeData({ f.index({ 3, 0 }) }));
    QVERIFY(list);
    QCOMPARE(list->text(), QString());
}

// Edge case: a selection of several cells carries no data.
void TestClipboard::dragSeveralCells()
{
    Fixture f(tree);
    QVERIFY(!f.model.mimeData({ f.index({ 0 }), f.index({ 0 }, 1) }));
    QVERIFY(!f.model.mimeData({ f.index({ 0 }), f.index({ 1 }) }));
    QVERIFY(!f.model.mimeData({}));
}

// Cells dragged from another window: a row dragged within the same model moves its entry instead.
void TestClipboard::dropOntoCell()
{
    Fixture f(tree);
    Fixture other(tree);
    std::unique_ptr<QMimeData> drag(other.model.mimeData({ other.index({ 3, 0, 0 }) }));
    QVERIFY(f.model.dropMimeData(drag.get(), Qt::CopyAction, -1, -1, f.index({ 5 })));
    QCOMPARE(f.at({ 5 })->name, QStringLiteral("A"));
    QCOMPARE(f.stack.text(0), QStringLiteral("Change name"));
    std::unique_ptr<QMimeData> code(other.model.mimeData({ other.index({ 3, 0, 0 }, 1) }));
    QVERIFY(f.model.dropMimeData(code.get(), Qt::CopyAction, -1, -1, f.index({ 0, 1, 1 }, 1)));
    QCOMPARE(f.at({ 0, 1, 1 })->id, quint64(0x10));
    QCOMPARE(f.stack.text(1), QStringLiteral("Change enum code"));
    // The same text again changes nothing and still succeeds.
    QVERIFY(f.model.dropMimeData(code.get(), Qt::CopyAction, -1, -1, f.index({ 0, 1, 1 }, 1)));
    QCOMPARE(f.stack.count(), 2);
    // The XML of a copy is not used by a drop: only its text, here into a comment.
    std::unique_ptr<QMimeData> copied(f.model.copy(f.index({ 0, 1, 0 })));
    QVERIFY(f.model.dropMimeData(copied.get(), Qt::CopyAction, -1, -1, f.index({ 2 }, 2)));
    QCOMPARE(f.at({ 2 })->comment, QStringLiteral("Off 0"));
    QCOMPARE(f.at({ 2 })->children.size(), 0);
    QCOMPARE(f.stack.count(), 3);
    f.stack.undo();
    f.stack.undo();
    f.stack.undo();
    QCOMPARE(f.encoding(), encodeText(tree));
}

// A name that the reader refuses, dropped or pasted as text, is taken and marked with the reason.
void TestClipboard::refusedNameDroppedOrPastedIsMarked()
{
    Fixture f(tree);
    const QModelIndex name = f.index({ 0 });
    std::unique_ptr<QMimeData> digit = textData(QStringLiteral("1abc"));
    QVERIFY(f.model.dropMimeData(digit.get(), Qt::CopyAction, -1, -1, name));
    QCOMPARE(f.at({ 0 })->name, QStringLiteral("1abc"));
    QCOMPARE(name.data(Qt::BackgroundRole).value<QColor>(), QColor(192, 0, 0));
    QCOMPARE(name.data(Qt::ForegroundRole).value<QColor>(), QColor(255, 255, 255));
    QCOMPARE(name.data(Qt::ToolTipRole).toString(), QStringLiteral("Name must not start with a digit.\nInteger"));
    QVERIFY(!f.index({ 0 }, 1).data(Qt::BackgroundRole).isValid());

    std::unique_ptr<QMimeData> reserved = textData(QStringLiteral("Tag"));
    f.model.paste(name, reserved.get());
    QCOMPARE(f.at({ 0 })->name, QStringLiteral("Tag"));
    QCOMPARE(name.data(Qt::BackgroundRole).value<QColor>(), QColor(192, 0, 0));
    QCOMPARE(name.data(Qt::ToolTipRole).toString(), QStringLiteral("The name \"Tag\" is reserved.\nInteger"));

    f.stack.undo();
    f.stack.undo();
    QCOMPARE(f.encoding(), encodeText(tree));
    QVERIFY(!name.data(Qt::BackgroundRole).isValid());
    // back to the tooltip of a tag: its data type
    QCOMPARE(name.data(Qt::ToolTipRole).toString(), QStringLiteral("Integer"));
}

// Edge case: drops between rows are refused.
void TestClipboard::dropRefused()
{
    Fixture f(tree);
    std::unique_ptr<QMimeData> text = textData(QStringLiteral("Other"));
    QVERIFY(!f.model.dropMimeData(text.get(), Qt::CopyAction, 0, -1, f.index({ 0 })));
    QVERIFY(!f.model.dropMimeData(text.get(), Qt::CopyAction, 2, 0, QModelIndex()));
    QVERIFY(!f.model.dropMimeData(text.get(), Qt::CopyAction, -1, 0, f.index({ 0 })));
    QMimeData empty;
    QVERIFY(!f.model.dropMimeData(&empty, Qt::CopyAction, -1, -1, f.index({ 0 })));
    // Onto a list or a bad code.
    QVERIFY(!f.model.dropMimeData(text.get(), Qt::CopyAction, -1, -1, f.index({ 0, 0 })));
    QVERIFY(!f.model.dropMimeData(text.get(), Qt::CopyAction, -1, -1, f.index({ 0 }, 1)));
    QVERIFY(!f.model.dropMimeData(text.get(), Qt::CopyAction, -1, -1, QModelIndex()));
    // Ignoring is always fine.
    QVERIFY(f.model.dropMimeData(text.get(), Qt::IgnoreAction, 0, 0, f.index({ 0 })));
    QVERIFY(f.model.dropMimeData(nullptr, Qt::IgnoreAction, -1, -1, QModelIndex()));
    QCOMPARE(f.stack.count(), 0);
}

QTEST_MAIN(TestClipboard)
#include "tst_clipboard.moc"
