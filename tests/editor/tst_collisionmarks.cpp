// The red marks of colliding siblings follow every edit, undo and redo: when a change makes or
// breaks a collision with a sibling, the sibling's row is repainted too.

#include "editortest.h"

#include <QColor>
#include <QMimeData>

using namespace ZAT16;
using namespace EditorTest;

namespace {

const QColor markBackground(192, 0, 0);

Item *makeItem(ItemType type, const QString &name, bool hasId, quint64 id, const QString &comment = QString())
{
    auto *item = new Item;
    item->type = type;
    item->name = name;
    item->hasId = hasId;
    item->id = id;
    item->comment = comment;
    return item;
}

QString signalText(const QSignalSpy &spy)
{
    QStringList lines;
    for (const QList<QVariant> &arguments : spy)
        lines << dataChangedText(arguments);
    return lines.join(QLatin1Char('\n'));
}

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
    QCOMPARE(signalText(spy),
        QStringLiteral("dataChanged 2,0-2,3 A\ndataChanged 0,0-0,3 A\ndataChanged 1,0-1,3 B"));
    QCOMPARE(background(f, { 0 }, 0), QVariant(markBackground));
    QVERIFY(!background(f, { 0 }, 1).isValid());
    QCOMPARE(background(f, { 1 }, 1), QVariant(markBackground));
    QVERIFY(!background(f, { 1 }, 0).isValid());

    spy.clear();
    f.stack.undo();
    QCOMPARE(signalText(spy),
        QStringLiteral("dataChanged 2,0-2,3 C\ndataChanged 0,0-0,3 A\ndataChanged 1,0-1,3 B"));
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

QTEST_MAIN(TestCollisionMarks)
#include "tst_collisionmarks.moc"
