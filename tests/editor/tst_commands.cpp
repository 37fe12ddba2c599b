// Tests of the undo commands: their texts, exact undo and redo of every kind of change, the
// index each one selects after undo, and who owns items outside the tree.

#include "commandchange.h"
#include "commandchangecomment.h"
#include "commandchangeid.h"
#include "commandchangename.h"
#include "commanddelete.h"
#include "commandnew.h"
#include "commandreplaceall.h"
#include "editortest.h"

using namespace ZAT16;
using namespace EditorTest;

Q_DECLARE_METATYPE(QList<int>)

namespace {

// Rows of the root: 0 tag Mode { 0 bits {0 Manual, 1 comment, 2 Service}, 1 enums {0 Off, 1 Low,
// 2 blank line, 3 High} }, 1 comment line, 2 blank line, 3 tag Speed, 4 tag Label (no code).
const QByteArray tree = document("  <tag name=\"Mode\" id=\"0x1002\" comment=\"Operating mode\">\n"
                                 "    <bits display=\"2x\">\n"
                                 "      <bit name=\"Manual\" id=\"0x01\"/>\n"
                                 "      <!-- 0x02 is reserved -->\n"
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
                                 "  <tag name=\"Speed\" id=\"0x1001\" secure=\"true\" display=\"u\"/>\n"
                                 "  <tag name=\"Label\"/>\n");

// Records every undone signal as "row,column name" or "invalid".
struct UndoneRecorder {
    QStringList texts;
    QMetaObject::Connection connection;
    explicit UndoneRecorder(EditorModel *model)
    {
        connection = QObject::connect(model, &EditorModel::undone, model, [this, model](const QModelIndex &index) {
            if (!index.isValid()) {
                texts << QStringLiteral("invalid");
                return;
            }
            const Item *item = model->index2item(index);
            texts << QStringLiteral("%1,%2 %3").arg(index.row()).arg(index.column()).arg(item ? item->name : QString());
        });
    }
    ~UndoneRecorder() { QObject::disconnect(connection); }
};

} // namespace

class TestCommands : public QObject
{
    Q_OBJECT

private slots:
    // Texts
    void changeIdText_data();
    void changeIdText();
    void changeNameText_data();
    void changeNameText();
    void changeCommentText_data();
    void changeCommentText();
    void changeText();
    void newText_data();
    void newText();
    void deleteText_data();
    void deleteText();
    void deleteTextWithoutItem();
    void replaceAllText();

    // Undo and redo through the model
    void undoRedo_data();
    void undoRedo();
    void undoRedoMerge();
    void undoRedoListCreation();

    // Edge cases of the history
    void setAndRemoveEnumCode();
    void setAndRemoveName();
    void deleteBitListHasEmptyText();
    void droppedInsertionFreesItem();
    void undoNewDocument();
    void wideCodeRestoredOnUndo();

    // Commands on their own
    void repeatedRedoAndUndoAreHarmless();
    void commandOwnsItemOutsideTree();
    void replaceAllOwnsOtherRoot();
    void replaceAllWithCurrentRoot();
    void commandsNeverMerge();
    void parentCommand();
};

// ---------------------------------------------------------------------------------------------
// Texts

void TestCommands::changeIdText_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("hadCode");
    QTest::addColumn<bool>("newHasCode");
    QTest::addColumn<QString>("text");

    const struct {
        int type;
        const char *name;
        const char *change;
        const char *set;
        const char *remove;
    } kinds[] = {
        { Tag, "tag", "Change tag code", "Set tag code", "Remove tag code" },
        { Enum, "enum", "Change enum code", "Set enum code", "Remove enum code" },
        { Bit, "bit", "Change bit number", "Set bit number", "Remove bit number" },
        { Enums, "enum list", "Change code", "Set code", "Remove code" },
        { Bits, "bit list", "Change code", "Set code", "Remove code" },
        { Root, "root", "Change code", "Set code", "Remove code" },
    };
    for (const auto &kind : kinds) {
        QTest::newRow(qPrintable(QStringLiteral("%1, change").arg(QLatin1String(kind.name))))
            << kind.type << true << true << QString::fromLatin1(kind.change);
        QTest::newRow(qPrintable(QStringLiteral("%1, set").arg(QLatin1String(kind.name))))
            << kind.type << false << true << QString::fromLatin1(kind.set);
        QTest::newRow(qPrintable(QStringLiteral("%1, remove").arg(QLatin1String(kind.name))))
            << kind.type << true << false << QString::fromLatin1(kind.remove);
        QTest::newRow(qPrintable(QStringLiteral("%1, remove without code").arg(QLatin1String(kind.name))))
            << kind.type << false << false << QString::fromLatin1(kind.remove);
    }
}

void TestCommands::changeIdText()
{
    QFETCH(int, type);
    QFETCH(bool, hadCode);
    QFETCH(bool, newHasCode);
    QFETCH(QString, text);

    Fixture f;
    Item item;
    item.type = ItemType(type);
    item.hasId = hadCode;
    item.id = 3;
    CommandChangeID command(7, newHasCode, &item, &f.model, QModelIndex());
    QCOMPARE(command.text(), text);
}

void TestCommands::changeNameText_data()
{
    QTest::addColumn<QString>("oldName");
    QTest::addColumn<QString>("newName");
    QTest::addColumn<QString>("text");

    QTest::newRow("change") << QStringLiteral("A") << QStringLiteral("B") << QStringLiteral("Change name");
    QTest::newRow("set") << QString() << QStringLiteral("B") << QStringLiteral("Set name");
    QTest::newRow("remove") << QStringLiteral("A") << QString() << QStringLiteral("Remove name");
    QTest::newRow("remove empty") << QString() << QString() << QStringLiteral("Remove name");
}

void TestCommands::changeNameText()
{
    QFETCH(QString, oldName);
    QFETCH(QString, newName);
    QFETCH(QString, text);

    Fixture f;
    Item item;
    item.type = Enum;
    item.name = oldName;
    CommandChangeName command(newName, &item, &f.model, QModelIndex());
    QCOMPARE(command.text(), text);
}

void TestCommands::changeCommentText_data()
{
    QTest::addColumn<QString>("oldComment");
    QTest::addColumn<QString>("newComment");
    QTest::addColumn<QString>("text");

    QTest::newRow("change") << QStringLiteral("a") << QStringLiteral("b") << QStringLiteral("Change comment");
    QTest::newRow("set") << QString() << QStringLiteral("b") << QStringLiteral("Set comment");
    QTest::newRow("remove") << QStringLiteral("a") << QString() << QStringLiteral("Remove comment");
    QTest::newRow("remove empty") << QString() << QString() << QStringLiteral("Remove comment");
}

void TestCommands::changeCommentText()
{
    QFETCH(QString, oldComment);
    QFETCH(QString, newComment);
    QFETCH(QString, text);

    Fixture f;
    Item item;
    item.type = Tag;
    item.comment = oldComment;
    CommandChangeComment command(newComment, &item, &f.model, QModelIndex());
    QCOMPARE(command.text(), text);
}

void TestCommands::changeText()
{
    Fixture f;
    Item item;
    item.type = Bits;
    ItemData data;
    data.type = Bits;
    data.comment = QStringLiteral("x");
    CommandChange command(data, &item, &f.model, QModelIndex());
    QCOMPARE(command.text(), QStringLiteral("Change item"));
}

void TestCommands::newText_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("text");

    QTest::newRow("enum") << int(Enum) << QStringLiteral("Insert enum");
    QTest::newRow("bit") << int(Bit) << QStringLiteral("Insert bit");
    QTest::newRow("tag") << int(Tag) << QStringLiteral("Insert tag");
    QTest::newRow("enum list") << int(Enums) << QStringLiteral("Insert item");
    QTest::newRow("bit list") << int(Bits) << QStringLiteral("Insert item");
    QTest::newRow("root") << int(Root) << QStringLiteral("Insert item");
    QTest::newRow("invalid kind") << int(ZAT16::Invalid) << QStringLiteral("Insert item");
}

void TestCommands::newText()
{
    QFETCH(int, type);
    QFETCH(QString, text);

    Fixture f;
    Item parent;
    parent.type = Root;
    // The command owns the item until it is inserted.
    CommandNew command(makeItem(ItemType(type)), 0, &parent, &f.model, QModelIndex());
    QCOMPARE(command.text(), text);
}

void TestCommands::deleteText_data()
{
    QTest::addColumn<QList<int>>("path");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("text");

    QTest::newRow("cut tag") << QList<int> { 0 } << int(CommandDelete::Cut) << QStringLiteral("Cut tag");
    QTest::newRow("remove tag") << QList<int> { 0 } << int(CommandDelete::Remove) << QStringLiteral("Remove tag");
    QTest::newRow("cut enum") << QList<int> { 0, 1, 0 } << int(CommandDelete::Cut) << QStringLiteral("Cut enum");
    QTest::newRow("remove enum") << QList<int> { 0, 1, 0 } << int(CommandDelete::Remove)
                                 << QStringLiteral("Remove enum");
    QTest::newRow("cut bit") << QList<int> { 0, 0, 2 } << int(CommandDelete::Cut) << QStringLiteral("Cut bit");
    QTest::newRow("remove bit") << QList<int> { 0, 0, 2 } << int(CommandDelete::Remove) << QStringLiteral("Remove bit");
    QTest::newRow("cut enum list") << QList<int> { 0, 1 } << int(CommandDelete::Cut) << QString();
    QTest::newRow("remove enum list") << QList<int> { 0, 1 } << int(CommandDelete::Remove) << QString();
    QTest::newRow("cut bit list") << QList<int> { 0, 0 } << int(CommandDelete::Cut) << QString();
    QTest::newRow("remove bit list") << QList<int> { 0, 0 } << int(CommandDelete::Remove) << QString();
    QTest::newRow("cut comment line") << QList<int> { 1 } << int(CommandDelete::Cut) << QString();
    QTest::newRow("remove comment line") << QList<int> { 1 } << int(CommandDelete::Remove) << QString();
    QTest::newRow("remove bit comment line") << QList<int> { 0, 0, 1 } << int(CommandDelete::Remove) << QString();
    QTest::newRow("cut blank line") << QList<int> { 2 } << int(CommandDelete::Cut) << QString();
    QTest::newRow("remove blank enum line") << QList<int> { 0, 1, 2 } << int(CommandDelete::Remove) << QString();
}

void TestCommands::deleteText()
{
    QFETCH(QList<int>, path);
    QFETCH(int, mode);
    QFETCH(QString, text);

    Fixture f(tree);
    Item *parent = f.root();
    for (int i = 0; i < path.size() - 1; ++i)
        parent = parent->child(path.at(i));
    CommandDelete command(path.last(), parent, &f.model, QModelIndex());
    command.setMode(CommandDelete::Mode(mode));
    QCOMPARE(command.text(), text);
    QVERIFY(command.text().isEmpty() == text.isEmpty());
}

void TestCommands::deleteTextWithoutItem()
{
    Fixture f(tree);
    CommandDelete command(9, f.root(), &f.model, QModelIndex());
    command.setText(QStringLiteral("untouched"));
    command.setMode(CommandDelete::Cut);
    QCOMPARE(command.text(), QStringLiteral("untouched"));
    QCOMPARE(int(CommandDelete::Cut), 0);
    QCOMPARE(int(CommandDelete::Remove), 1);
}

void TestCommands::replaceAllText()
{
    Fixture f;
    CommandReplaceAll replace(makeItem(Root), &f.model, QModelIndex());
    QCOMPARE(replace.text(), QStringLiteral("Replace data"));
    CommandReplaceAll fresh(nullptr, &f.model, QModelIndex());
    QCOMPARE(fresh.text(), QStringLiteral("New"));
}

// ---------------------------------------------------------------------------------------------
// Undo and redo through the model

void TestCommands::undoRedo_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QList<int>>("path");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("undone");

    QTest::newRow("change tag code") << QStringLiteral("code 0x2002") << QList<int> { 3 } << 1
                                     << QStringLiteral("Change tag code") << QStringLiteral("3,1 Speed");
    QTest::newRow("set tag code") << QStringLiteral("code 0x3001") << QList<int> { 4 } << 1
                                  << QStringLiteral("Set tag code") << QStringLiteral("4,1 Label");
    QTest::newRow("remove bit number") << QStringLiteral("code ") << QList<int> { 0, 0, 2 } << 1
                                       << QStringLiteral("Remove bit number") << QStringLiteral("2,1 Service");
    QTest::newRow("change enum code") << QStringLiteral("code 9") << QList<int> { 0, 1, 3 } << 1
                                      << QStringLiteral("Change enum code") << QStringLiteral("3,1 High");
    QTest::newRow("change name") << QStringLiteral("name Fast") << QList<int> { 0, 1, 3 } << 0
                                 << QStringLiteral("Change name") << QStringLiteral("3,0 High");
    QTest::newRow("set name of blank line") << QStringLiteral("name Fresh") << QList<int> { 2 } << 0
                                            << QStringLiteral("Set name") << QStringLiteral("2,0 ");
    QTest::newRow("remove name") << QStringLiteral("name ") << QList<int> { 3 } << 0 << QStringLiteral("Remove name")
                                 << QStringLiteral("3,0 Speed");
    QTest::newRow("change comment") << QStringLiteral("comment slow") << QList<int> { 0, 1, 3 } << 2
                                    << QStringLiteral("Change comment") << QStringLiteral("3,2 High");
    QTest::newRow("remove comment line text") << QStringLiteral("comment ") << QList<int> { 1 } << 2
                                              << QStringLiteral("Remove comment") << QStringLiteral("1,2 ");
    QTest::newRow("change item") << QStringLiteral("item") << QList<int> { 0, 0, 0 } << 0
                                 << QStringLiteral("Change item") << QStringLiteral("0,0 Manual");
    QTest::newRow("change root item") << QStringLiteral("item") << QList<int> {} << 0 << QStringLiteral("Change item")
                                      << QStringLiteral("invalid");
    // An insertion selects the row that followed it, if any (a top-level row has no parent
    // index to build that index from).
    QTest::newRow("insert tag") << QStringLiteral("insert") << QList<int> { 1 } << 0 << QStringLiteral("Insert tag")
                                << QStringLiteral("invalid");
    QTest::newRow("insert enum") << QStringLiteral("insert") << QList<int> { 0, 1, 1 } << 0
                                 << QStringLiteral("Insert enum") << QStringLiteral("1,0 Low");
    QTest::newRow("insert enum at end") << QStringLiteral("insert") << QList<int> { 0, 1, 4 } << 0
                                        << QStringLiteral("Insert enum") << QStringLiteral("invalid");
    QTest::newRow("insert bit") << QStringLiteral("insert") << QList<int> { 0, 0, 0 } << 0
                                << QStringLiteral("Insert bit") << QStringLiteral("0,0 Manual");
    // A deleted row's index dies with the row.
    QTest::newRow("remove tag") << QStringLiteral("remove") << QList<int> { 0 } << 0 << QStringLiteral("Remove tag")
                                << QStringLiteral("invalid");
    QTest::newRow("remove enum") << QStringLiteral("remove") << QList<int> { 0, 1, 1 } << 0
                                 << QStringLiteral("Remove enum") << QStringLiteral("invalid");
    QTest::newRow("remove bit list") << QStringLiteral("remove") << QList<int> { 0, 0 } << 0 << QString()
                                     << QStringLiteral("invalid");
    QTest::newRow("cut bit") << QStringLiteral("cut") << QList<int> { 0, 0, 0 } << 1 << QStringLiteral("Cut bit")
                             << QStringLiteral("invalid");
    QTest::newRow("new document") << QStringLiteral("clear") << QList<int> { 3 } << 0 << QStringLiteral("New")
                                  << QStringLiteral("invalid");
    QTest::newRow("replace document") << QStringLiteral("replace") << QList<int> { 3 } << 0
                                      << QStringLiteral("Replace data") << QStringLiteral("invalid");
}

void TestCommands::undoRedo()
{
    QFETCH(QString, operation);
    QFETCH(QList<int>, path);
    QFETCH(int, column);
    QFETCH(QString, text);
    QFETCH(QString, undone);

    Fixture f(tree);
    const QByteArray before = f.encoding();
    const QString beforeDump = f.dump();
    QModelIndex parent;
    for (int i = 0; i < path.size() - 1; ++i)
        parent = f.model.index(path.at(i), 0, parent);
    const QModelIndex index = path.isEmpty() ? QModelIndex() : f.model.index(path.last(), column, parent);
    QVERIFY(path.isEmpty() || index.isValid() || operation == QLatin1String("insert"));

    std::unique_ptr<QMimeData> mime;
    if (operation.startsWith(QLatin1String("code "))) {
        QVERIFY(f.model.setData(index, operation.mid(5)));
    } else if (operation.startsWith(QLatin1String("name "))) {
        QVERIFY(f.model.setData(index, operation.mid(5)));
    } else if (operation.startsWith(QLatin1String("comment "))) {
        QVERIFY(f.model.setData(index, operation.mid(8)));
    } else if (operation == QLatin1String("item")) {
        ItemData data = *f.model.index2item(index);
        data.secure = !data.secure;
        data.display.mode = 4;
        data.display.digits = 3;
        data.id = 0x7FFFFFFFFULL;
        data.hasId = true;
        data.comment = QStringLiteral("edited");
        QVERIFY(f.model.setItemData(index, data));
    } else if (operation == QLatin1String("insert")) {
        QVERIFY(f.model.insertRow(path.last(), parent));
    } else if (operation == QLatin1String("remove")) {
        QVERIFY(f.model.removeRow(path.last(), parent));
    } else if (operation == QLatin1String("cut")) {
        mime.reset(f.model.cut(index));
        QVERIFY(mime);
    } else if (operation == QLatin1String("clear")) {
        f.model.undoableClear(index);
    } else if (operation == QLatin1String("replace")) {
        f.model.undoableSetTags(parseText(document("  <tag name=\"Other\" id=\"0x1001\"/>\n")), index);
    } else {
        QFAIL("unknown operation");
    }
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), text);
    const QByteArray after = f.encoding();
    const QString afterDump = f.dump();
    QVERIFY(afterDump != beforeDump);

    UndoneRecorder recorder(&f.model);
    f.stack.undo();
    QCOMPARE(f.dump(), beforeDump);
    QCOMPARE(f.encoding(), before);
    QCOMPARE(recorder.texts, QStringList { undone });

    f.stack.redo();
    QCOMPARE(f.dump(), afterDump);
    QCOMPARE(f.encoding(), after);
    QCOMPARE(recorder.texts.size(), 1);

    // And once more, the commands being reusable.
    f.stack.undo();
    QCOMPARE(f.dump(), beforeDump);
    QCOMPARE(recorder.texts.size(), 2);
    f.stack.redo();
    QCOMPARE(f.encoding(), after);
}

void TestCommands::undoRedoMerge()
{
    Fixture f(tree);
    const QString before = f.dump();
    Item *list = makeItem(Bits);
    list->appendChild(makeItem(Bit, QStringLiteral("Extra"), true, 8));
    list->appendChild(makeItem(Bit, QStringLiteral("More"), true, 16));
    // Given a row inside the bit list that is not the list itself, the values go to the end of
    // the list; the index to select is built on the given parent index, which has no such row.
    QVERIFY(f.model.insertRow(0, f.index({ 0, 0, 1 }), list).isValid());
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), QStringLiteral("Merge data"));
    const QString after = f.dump();
    QCOMPARE(f.at({ 0, 0, 3 })->name, QStringLiteral("Extra"));
    QCOMPARE(f.at({ 0, 0, 4 })->name, QStringLiteral("More"));

    UndoneRecorder recorder(&f.model);
    f.stack.undo();
    QCOMPARE(f.dump(), before);
    QCOMPARE(recorder.texts, (QStringList { QStringLiteral("invalid"), QStringLiteral("invalid") }));
    f.stack.redo();
    QCOMPARE(f.dump(), after);
}

void TestCommands::undoRedoListCreation()
{
    Fixture f(tree);
    const QString before = f.dump();
    UndoneRecorder recorder(&f.model);
    const QModelIndex list = f.model.insertList(f.index({ 3 }), Enums);
    QVERIFY(list.isValid());
    QCOMPARE(f.stack.text(0), QStringLiteral("Insert item"));
    f.stack.undo();
    QCOMPARE(f.dump(), before);
    // The index to select is the tag's.
    QCOMPARE(recorder.texts, QStringList { QStringLiteral("3,0 Speed") });
}

// ---------------------------------------------------------------------------------------------
// Edge cases of the history

void TestCommands::setAndRemoveEnumCode()
{
    Fixture f(tree);
    // The blank enumeration line has no code.
    QVERIFY(f.model.setData(f.index({ 0, 1, 2 }, 1), QStringLiteral("7")));
    QCOMPARE(f.stack.text(0), QStringLiteral("Set enum code"));
    QVERIFY(f.model.setData(f.index({ 0, 1, 2 }, 1), QString()));
    QCOMPARE(f.stack.text(1), QStringLiteral("Remove enum code"));
    QCOMPARE(f.stack.count(), 2);
}

void TestCommands::setAndRemoveName()
{
    Fixture f(tree);
    QVERIFY(f.model.setData(f.index({ 0, 1, 2 }, 0), QStringLiteral("Medium")));
    QCOMPARE(f.stack.text(0), QStringLiteral("Set name"));
    QVERIFY(f.model.setData(f.index({ 0, 1, 2 }, 0), QString()));
    QCOMPARE(f.stack.text(1), QStringLiteral("Remove name"));
    QVERIFY(f.model.setData(f.index({ 3 }, 0), QStringLiteral("Velocity")));
    QCOMPARE(f.stack.text(2), QStringLiteral("Change name"));
}

void TestCommands::deleteBitListHasEmptyText()
{
    Fixture f(tree);
    QVERIFY(f.model.removeRow(0, f.index({ 0 })));
    QCOMPARE(f.stack.count(), 1);
    QVERIFY(f.stack.text(0).isEmpty());
    QCOMPARE(f.at({ 0 })->children.size(), 1);
    QCOMPARE(f.at({ 0, 0 })->type, Enums);
}

void TestCommands::droppedInsertionFreesItem()
{
    // The undone insertion's command is destroyed by the next push and frees the item it holds;
    // the sanitizer build checks that it is freed exactly once.
    Fixture f(tree);
    Item *tag = makeItem(Tag, QStringLiteral("Temp"), true, 0x3003);
    tag->appendChild(makeItem(Bits));
    tag->children.first()->appendChild(makeItem(Bit, QStringLiteral("B"), true, 1));
    QVERIFY(f.model.insertRow(0, QModelIndex(), tag).isValid());
    f.stack.undo();
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.index(), 0);
    QVERIFY(f.model.setData(f.index({ 3 }), QStringLiteral("Velocity")));
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), QStringLiteral("Change name"));
    QCOMPARE(f.encoding(), encodeText(QByteArray(tree).replace("\"Speed\"", "\"Velocity\"")));
}

void TestCommands::undoNewDocument()
{
    Fixture f(tree);
    const QString before = f.dump();
    Item *old = f.root();
    f.model.undoableClear(QModelIndex());
    QCOMPARE(f.stack.text(0), QStringLiteral("New"));
    QCOMPARE(f.model.rowCount(), 0);
    Item *empty = f.root();
    QCOMPARE(f.dump(), QStringLiteral("Root\n"));
    f.stack.undo();
    QCOMPARE(f.root(), old);
    QCOMPARE(f.dump(), before);
    QCOMPARE(f.model.rowCount(), 5);
    f.stack.redo();
    QCOMPARE(f.root(), empty);
    QCOMPARE(f.model.rowCount(), 0);
    QCOMPARE(f.encoding(), QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?> <!-- -*- nxml -*- -->\n<zat16/>\n"));
}

void TestCommands::wideCodeRestoredOnUndo()
{
    Item *root = parseFile(QStringLiteral(ZAT16_EXAMPLES "/battery-charger.zatdef"));
    if (!root)
        root = parseText(document("  <tag name=\"T\" id=\"0x1001\">\n"
                                  "    <enums><enum name=\"Minus20\" id=\"-20\"/></enums>\n"
                                  "  </tag>\n"));
    Fixture f(root);
    // Find the value -20, stored as a 64-bit two's complement.
    Item *minus = nullptr;
    QList<Item *> queue = { root };
    while (!queue.isEmpty() && !minus) {
        Item *item = queue.takeFirst();
        if (item->type == Enum && item->id == quint64(-20))
            minus = item;
        queue << item->children;
    }
    QVERIFY(minus);
    QVERIFY(f.model.setData(f.model.item2index(minus).siblingAtColumn(1), QStringLiteral("3")));
    QCOMPARE(minus->id, quint64(3));
    f.stack.undo();
    QCOMPARE(minus->id, quint64(-20));
    QVERIFY(minus->hasId);
    f.stack.redo();
    QCOMPARE(minus->id, quint64(3));
    f.stack.undo();
    QCOMPARE(minus->id, quint64(-20));
}

// ---------------------------------------------------------------------------------------------
// Commands on their own

void TestCommands::repeatedRedoAndUndoAreHarmless()
{
    Fixture f(tree);
    const QString before = f.dump();
    Item *parent = f.at({ 0, 1 });
    {
        CommandNew insert(makeItem(Enum, QStringLiteral("Extra"), true, 5), 1, parent, &f.model, QModelIndex());
        insert.redo();
        const QString inserted = f.dump();
        insert.redo();
        QCOMPARE(f.dump(), inserted);
        QCOMPARE(parent->children.size(), 5);
        insert.undo();
        QCOMPARE(f.dump(), before);
        insert.undo();
        QCOMPARE(f.dump(), before);
        QCOMPARE(parent->children.size(), 4);
    } // the command frees the item it holds
    {
        CommandDelete remove(0, parent, &f.model, QModelIndex());
        remove.undo(); // holds nothing yet
        QCOMPARE(f.dump(), before);
        remove.redo();
        const QString removed = f.dump();
        remove.redo();
        QCOMPARE(f.dump(), removed);
        QCOMPARE(parent->children.size(), 3);
        remove.undo();
        remove.undo();
        QCOMPARE(f.dump(), before);
        remove.redo();
    } // the command frees the taken item
    QCOMPARE(parent->children.size(), 3);
    QCOMPARE(parent->children.first()->name, QStringLiteral("Low"));
}

void TestCommands::commandOwnsItemOutsideTree()
{
    // A cut item lives in the command; clearing the stack frees it, undoing before that puts
    // the very same item back.
    Fixture f(tree);
    Item *mode = f.at({ 0 });
    std::unique_ptr<QMimeData> mime(f.model.cut(f.index({ 0 })));
    QVERIFY(mime);
    QCOMPARE(f.model.rowCount(), 4);
    f.stack.undo();
    QCOMPARE(f.at({ 0 }), mode);
    f.stack.redo();
    f.stack.clear();
    QCOMPARE(f.model.rowCount(), 4);
    QCOMPARE(f.at({ 0 })->isComment(), true);
}

void TestCommands::replaceAllOwnsOtherRoot()
{
    Fixture f(tree);
    Item *old = f.root();
    Item *next = parseText(document("  <tag name=\"Other\" id=\"0x1001\"/>\n"));
    f.model.undoableSetTags(next, QModelIndex());
    QCOMPARE(f.root(), next);
    f.stack.undo();
    QCOMPARE(f.root(), old);
    // Dropping the undone command frees the new root; the old one stays with the model.
    QVERIFY(f.model.setData(f.index({ 3 }), QStringLiteral("Velocity")));
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.root(), old);
    // A stack cleared after a redo frees the old root instead.
    f.model.undoableClear(QModelIndex());
    QVERIFY(f.root() != old);
    f.stack.clear();
    QCOMPARE(f.model.rowCount(), 0);
}

void TestCommands::replaceAllWithCurrentRoot()
{
    Fixture f(tree);
    Item *root = f.root();
    f.model.undoableSetTags(root, QModelIndex());
    QCOMPARE(f.root(), root);
    f.stack.undo();
    QVERIFY(!f.root());
    f.stack.redo();
    QCOMPARE(f.root(), root);
}

void TestCommands::commandsNeverMerge()
{
    Fixture f(tree);
    QVERIFY(f.model.setData(f.index({ 3 }), QStringLiteral("A")));
    QVERIFY(f.model.setData(f.index({ 3 }), QStringLiteral("B")));
    QVERIFY(f.model.setData(f.index({ 3 }, 1), QStringLiteral("0x1005")));
    QVERIFY(f.model.setData(f.index({ 3 }, 1), QStringLiteral("0x1006")));
    QCOMPARE(f.stack.count(), 4);
    for (int i = 0; i < f.stack.count(); ++i)
        QCOMPARE(f.stack.command(i)->id(), -1);
}

void TestCommands::parentCommand()
{
    Fixture f(tree);
    const QString before = f.dump();
    auto *group = new Command(nullptr, &f.model, QModelIndex());
    group->setText(QStringLiteral("group"));
    new CommandChangeName(QStringLiteral("X"), f.at({ 3 }), &f.model, f.index({ 3 }), group);
    new CommandChangeComment(QStringLiteral("y"), f.at({ 3 }), &f.model, f.index({ 3 }, 2), group);
    QCOMPARE(group->childCount(), 2);
    f.stack.push(group);
    QCOMPARE(f.at({ 3 })->name, QStringLiteral("X"));
    QCOMPARE(f.at({ 3 })->comment, QStringLiteral("y"));
    UndoneRecorder recorder(&f.model);
    f.stack.undo();
    QCOMPARE(f.dump(), before);
    QCOMPARE(recorder.texts, (QStringList { QStringLiteral("3,2 X"), QStringLiteral("3,0 Speed") }));
}

QTEST_MAIN(TestCommands)
#include "tst_commands.moc"
