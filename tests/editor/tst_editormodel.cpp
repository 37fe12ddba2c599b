// Tests of EditorModel: structure, every display role, flags, headers, cell edits, insertions,
// lists, deletions, whole-document operations and the caches.

#include "commanddelete.h"
#include "editortest.h"

#include <QBrush>
#include <QColor>
#include <QFont>
#include <QIcon>
#include <QImage>

using namespace ZAT16;
using namespace EditorTest;

Q_DECLARE_METATYPE(QList<int>)

namespace {

// Gives the tests indexes that the model itself never hands out: to the root, to a null item,
// to an item of an unknown kind.
class ProbeModel : public EditorModel
{
public:
    using QAbstractItemModel::createIndex;
};

const QVariant invalid;

// A tree for the role tables. Rows of the root:
//  0 tag Mode 0x1002 "Operating mode" { 0 bits (display 2x) {0 Manual 1, 1 Remote 2 "host",
//    2 comment " reserved "}, 1 enums {0 Off 0, 1 Low 1 "slow", 2 blank line, 3 High 2} }
//    (the parser puts a tag's bit list before its enumeration list)
//  1 comment line " Plain tags "
//  2 blank line
//  3 tag (no name) 0x1004 "no name"
//  4 tag Unassigned (no code)
//  5 tag Hex 0x1005 { 0 enums (display 4x) {0 A 16, 1 nameless 7 "legal", 2 nameless 8} }
const QByteArray roleTree = document("  <tag name=\"Mode\" id=\"0x1002\" comment=\"Operating mode\">\n"
                                     "    <enums>\n"
                                     "      <enum name=\"Off\" id=\"0\"/>\n"
                                     "      <enum name=\"Low\" id=\"1\" comment=\"slow\"/>\n"
                                     "\n"
                                     "      <enum name=\"High\" id=\"2\"/>\n"
                                     "    </enums>\n"
                                     "    <bits display=\"2x\">\n"
                                     "      <bit name=\"Manual\" id=\"1\"/>\n"
                                     "      <bit name=\"Remote\" id=\"2\" comment=\"host\"/>\n"
                                     "      <!-- reserved -->\n"
                                     "    </bits>\n"
                                     "  </tag>\n"
                                     "  <!-- Plain tags -->\n"
                                     "\n"
                                     "  <tag id=\"0x1004\" comment=\"no name\"/>\n"
                                     "  <tag name=\"Unassigned\"/>\n"
                                     "  <tag name=\"Hex\" id=\"0x1005\">\n"
                                     "    <enums display=\"4x\">\n"
                                     "      <enum name=\"A\" id=\"16\"/>\n"
                                     "      <enum id=\"7\" comment=\"legal\"/>\n"
                                     "      <enum id=\"8\"/>\n"
                                     "    </enums>\n"
                                     "  </tag>\n");

QImage iconImage(const QVariant &value)
{
    return value.value<QIcon>().pixmap(16, 16).toImage();
}

QImage resourceImage(const QString &path)
{
    return QIcon(path).pixmap(16, 16).toImage();
}

} // namespace

class TestEditorModel : public QObject
{
    Q_OBJECT

private slots:
    // Structure
    void emptyModel();
    void indexAndParent();
    void index2itemAndItem2index();
    void rowCountOfOtherColumns();
    void columnCountIsAlwaysThree();

    // Roles
    void display_data();
    void display();
    void displayOfOtherKinds();
    void edit_data();
    void edit();
    void decoration_data();
    void decoration();
    void decorationIconsAreDistinct();
    void tooltip_data();
    void tooltip();
    void markedCellsSayWhatIsWrong();
    void outputMarksRepaintTheirRows();
    void font_data();
    void font();
    void defaultFonts();
    void highlight_data();
    void highlight();
    void commentLineColourOnEveryRow();
    void collisionsInDifferentParentsNotMarked();
    void otherRoles();
    void headerData_data();
    void headerData();
    void flags_data();
    void flags();
    void flagsOfUnusualIndexes();

    // Fonts and repaint requests
    void fontsRepaintAllChildren();
    void allChildrenChangedWithoutChildrenEmitsNothing();

    // Cell edits
    void setData_data();
    void setData();
    void setDataOfWideCode();
    void setDataOfNegativeCode();
    void setDataEmitsOnePastTheEnd();
    void tagCodeOutOfRange();
    void clearingCodeCell();

    // Item data
    void setItemData();

    // Insertions
    void insertEmptyRow_data();
    void insertEmptyRow();
    void insertRowRefused();
    void insertRowUnderEnumValue();
    void insertTag_data();
    void insertTag();
    void insertValueIntoExistingList();
    void insertValueCreatesMissingList();
    void insertValueFromOtherList();
    void insertListItemWithoutList();
    void insertListItemMerges();
    void insertListItemMergesAtRow();
    void insertRootRefused();
    void insertList_data();
    void insertList();
    void insertListExisting();
    void insertListRefused();
    void insertAfterAndBefore();
    void insertBeforeIntoEmptyDocument();
    void bitListGoesBeforeEnumList();

    // Deletions
    void removeRow_data();
    void removeRow();
    void removeRowRefused();
    void prepareRemoveRow();

    // Whole document
    void setTagsClearsHistory();
    void clearModel();
    void undoableClear();
    void undoableClearOfEmptyTree();
    void undoableSetTags();

    // Caches
    void cachesFollowChanges();
    void collisionCacheMatchesItem();
    void rowCacheMatchesItem();
    void collisionCountsFollowEdits_data();
    void collisionCountsFollowEdits();
};

// ---------------------------------------------------------------------------------------------
// Structure

void TestEditorModel::emptyModel()
{
    Fixture f;
    QVERIFY(!f.model.root());
    QCOMPARE(f.model.rowCount(), 0);
    QCOMPARE(f.model.columnCount(), 3);
    QVERIFY(!f.model.index(0, 0).isValid());
    QVERIFY(!f.model.index2item(QModelIndex()));
    QVERIFY(!f.model.data(QModelIndex(), Qt::DisplayRole).isValid());
    QVERIFY(!f.model.insertRow(0, QModelIndex()));
    QVERIFY(!f.model.removeRow(0, QModelIndex()));
    QVERIFY(!f.model.setItemData(QModelIndex(), ItemData()));
    QCOMPARE(f.stack.count(), 0);
}

void TestEditorModel::indexAndParent()
{
    Fixture f(roleTree);
    QCOMPARE(f.model.rowCount(), 6);
    const QModelIndex mode = f.model.index(0, 0);
    QVERIFY(mode.isValid());
    QCOMPARE(f.model.index2item(mode), f.at({ 0 }));
    QCOMPARE(f.model.rowCount(mode), 2);
    const QModelIndex enums = f.model.index(1, 0, mode);
    QCOMPARE(f.model.index2item(enums)->type, Enums);
    QCOMPARE(f.model.parent(enums), mode);
    const QModelIndex high = f.model.index(3, 2, enums);
    QCOMPARE(f.model.index2item(high)->name, QStringLiteral("High"));
    QCOMPARE(high.column(), 2);
    QCOMPARE(f.model.parent(high), enums);
    QVERIFY(!f.model.parent(mode).isValid());
    QVERIFY(!f.model.parent(QModelIndex()).isValid());
    // Rows past the end or before the start give invalid indexes.
    QVERIFY(!f.model.index(6, 0).isValid());
    QVERIFY(!f.model.index(-1, 0).isValid());
    QVERIFY(!f.model.index(4, 0, enums).isValid());
    // The column is not checked.
    const QModelIndex wide = f.model.index(0, 5);
    QVERIFY(wide.isValid());
    QCOMPARE(f.model.index2item(wide), f.at({ 0 }));
}

void TestEditorModel::index2itemAndItem2index()
{
    Fixture f(roleTree);
    QCOMPARE(f.model.index2item(QModelIndex()), f.root());
    QVERIFY(!f.model.item2index(nullptr).isValid());
    QVERIFY(!f.model.item2index(f.root()).isValid());
    Item *low = f.at({ 0, 1, 1 });
    const QModelIndex index = f.model.item2index(low);
    QCOMPARE(index.row(), 1);
    QCOMPARE(index.column(), 0);
    QCOMPARE(f.model.index2item(index), low);
    QCOMPARE(f.model.findRow(low), 1);
    QCOMPARE(f.model.findRow(nullptr), 0);
    QCOMPARE(f.model.findRow(f.at({ 5 })), 5);
}

void TestEditorModel::rowCountOfOtherColumns()
{
    Fixture f(roleTree);
    QCOMPARE(f.model.rowCount(f.model.index(0, 0)), 2);
    QCOMPARE(f.model.rowCount(f.model.index(0, 1)), 0);
    QCOMPARE(f.model.rowCount(f.model.index(0, 2)), 0);
}

void TestEditorModel::columnCountIsAlwaysThree()
{
    Fixture f(roleTree);
    QCOMPARE(f.model.columnCount(QModelIndex()), 3);
    QCOMPARE(f.model.columnCount(f.index({ 0 })), 3);
    QCOMPARE(f.model.columnCount(f.index({ 0, 1, 0 })), 3);
}

// ---------------------------------------------------------------------------------------------
// Display role

void TestEditorModel::display_data()
{
    QTest::addColumn<QList<int>>("path");
    QTest::addColumn<int>("column");
    QTest::addColumn<QVariant>("expected");

    QTest::newRow("tag name") << QList<int> { 0 } << 0 << QVariant(QStringLiteral("Mode"));
    QTest::newRow("tag code") << QList<int> { 0 } << 1 << QVariant(QStringLiteral("0x1002"));
    QTest::newRow("tag comment") << QList<int> { 0 } << 2 << QVariant(QStringLiteral("Operating mode"));
    QTest::newRow("tag empty name is one blank") << QList<int> { 3 } << 0 << QVariant(QStringLiteral(" "));
    QTest::newRow("tag without code is six blanks") << QList<int> { 4 } << 1 << QVariant(QStringLiteral("      "));
    QTest::newRow("tag empty comment is one blank") << QList<int> { 4 } << 2 << QVariant(QStringLiteral(" "));
    QTest::newRow("enum list name") << QList<int> { 0, 1 } << 0 << QVariant(QStringLiteral("Enums"));
    QTest::newRow("enum list code") << QList<int> { 0, 1 } << 1 << invalid;
    QTest::newRow("enum list empty comment") << QList<int> { 0, 1 } << 2 << QVariant(QStringLiteral(" "));
    QTest::newRow("bit list name") << QList<int> { 0, 0 } << 0 << QVariant(QStringLiteral("Bits"));
    QTest::newRow("bit list code") << QList<int> { 0, 0 } << 1 << invalid;
    QTest::newRow("enum value name") << QList<int> { 0, 1, 1 } << 0 << QVariant(QStringLiteral("Low"));
    QTest::newRow("enum value code after two blanks") << QList<int> { 0, 1, 1 } << 1 << QVariant(QStringLiteral("  1"));
    QTest::newRow("enum value comment") << QList<int> { 0, 1, 1 } << 2 << QVariant(QStringLiteral("slow"));
    QTest::newRow("enum value in hex list") << QList<int> { 5, 0, 0 } << 1 << QVariant(QStringLiteral("  0x0010"));
    QTest::newRow("nameless enum value name") << QList<int> { 5, 0, 1 } << 0 << QVariant(QStringLiteral(" "));
    QTest::newRow("bit code in hex list") << QList<int> { 0, 0, 1 } << 1 << QVariant(QStringLiteral("  0x02"));
    QTest::newRow("bit name") << QList<int> { 0, 0, 0 } << 0 << QVariant(QStringLiteral("Manual"));
    QTest::newRow("bit empty comment") << QList<int> { 0, 0, 0 } << 2 << QVariant(QStringLiteral(" "));
    QTest::newRow("blank enum line name") << QList<int> { 0, 1, 2 } << 0 << QVariant(QStringLiteral(" "));
    QTest::newRow("blank enum line code is one blank") << QList<int> { 0, 1, 2 } << 1 << QVariant(QStringLiteral(" "));
    QTest::newRow("comment bit line code is one blank") << QList<int> { 0, 0, 2 } << 1 << QVariant(QStringLiteral(" "));
    QTest::newRow("comment bit line text") << QList<int> { 0, 0, 2 } << 2 << QVariant(QStringLiteral(" reserved "));
    QTest::newRow("comment line name") << QList<int> { 1 } << 0 << QVariant(QStringLiteral(" "));
    QTest::newRow("comment line code") << QList<int> { 1 } << 1 << QVariant(QStringLiteral("      "));
    QTest::newRow("comment line text") << QList<int> { 1 } << 2 << QVariant(QStringLiteral(" Plain tags "));
    QTest::newRow("blank tag line comment") << QList<int> { 2 } << 2 << QVariant(QStringLiteral(" "));
    QTest::newRow("column 3") << QList<int> { 0 } << 3 << invalid;
}

void TestEditorModel::display()
{
    QFETCH(QList<int>, path);
    QFETCH(int, column);
    QFETCH(QVariant, expected);

    Fixture f(roleTree);
    QModelIndex parent;
    for (int i = 0; i < path.size() - 1; ++i)
        parent = f.model.index(path.at(i), 0, parent);
    const QModelIndex index = f.model.index(path.last(), column, parent);
    QVERIFY(index.isValid());
    const QVariant value = f.model.data(index, Qt::DisplayRole);
    QCOMPARE(value.isValid(), expected.isValid());
    if (expected.isValid())
        QCOMPARE(value.toString(), expected.toString());
}

void TestEditorModel::displayOfOtherKinds()
{
    Fixture f(roleTree);
    // The root and kinds without a row of their own show only their comment.
    Item root;
    root.type = Root;
    QVERIFY(!f.model.displayData(&root, 0).isValid());
    QVERIFY(!f.model.displayData(&root, 1).isValid());
    QCOMPARE(f.model.displayData(&root, 2).toString(), QStringLiteral(" "));
    root.comment = QStringLiteral("<!DOCTYPE zat16>");
    QCOMPARE(f.model.displayData(&root, 2).toString(), QStringLiteral("<!DOCTYPE zat16>"));
    Item odd;
    odd.type = ItemType(7);
    odd.name = QStringLiteral("Odd");
    QVERIFY(!f.model.displayData(&odd, 0).isValid());
    QVERIFY(!f.model.displayData(&odd, 1).isValid());
    QCOMPARE(f.model.displayData(&odd, 2).toString(), QStringLiteral(" "));
    // A list with a comment shows it.
    Item list;
    list.type = Bits;
    list.comment = QStringLiteral("flags");
    QCOMPARE(f.model.displayData(&list, 2).toString(), QStringLiteral("flags"));
}

// ---------------------------------------------------------------------------------------------
// Edit role

void TestEditorModel::edit_data()
{
    QTest::addColumn<QList<int>>("path");
    QTest::addColumn<int>("column");
    QTest::addColumn<QVariant>("expected");

    QTest::newRow("tag name") << QList<int> { 0 } << 0 << QVariant(QStringLiteral("Mode"));
    QTest::newRow("tag code") << QList<int> { 0 } << 1 << QVariant(QStringLiteral("0x1002"));
    QTest::newRow("tag comment") << QList<int> { 0 } << 2 << QVariant(QStringLiteral("Operating mode"));
    QTest::newRow("tag empty name") << QList<int> { 3 } << 0 << QVariant(QString());
    QTest::newRow("tag without code") << QList<int> { 4 } << 1 << invalid;
    QTest::newRow("enum value code without blanks") << QList<int> { 0, 1, 1 } << 1 << QVariant(QStringLiteral("1"));
    QTest::newRow("hex enum value code") << QList<int> { 5, 0, 0 } << 1 << QVariant(QStringLiteral("0x0010"));
    QTest::newRow("bit code") << QList<int> { 0, 0, 0 } << 1 << QVariant(QStringLiteral("0x01"));
    QTest::newRow("enum list") << QList<int> { 0, 1 } << 0 << invalid;
    QTest::newRow("enum list comment") << QList<int> { 0, 1 } << 2 << invalid;
    QTest::newRow("bit list") << QList<int> { 0, 0 } << 0 << invalid;
    QTest::newRow("comment line text") << QList<int> { 1 } << 2 << QVariant(QStringLiteral(" Plain tags "));
    QTest::newRow("column 3") << QList<int> { 0 } << 3 << invalid;
}

void TestEditorModel::edit()
{
    QFETCH(QList<int>, path);
    QFETCH(int, column);
    QFETCH(QVariant, expected);

    Fixture f(roleTree);
    QModelIndex parent;
    for (int i = 0; i < path.size() - 1; ++i)
        parent = f.model.index(path.at(i), 0, parent);
    const QVariant value = f.model.data(f.model.index(path.last(), column, parent), Qt::EditRole);
    QCOMPARE(value.isValid(), expected.isValid());
    if (expected.isValid())
        QCOMPARE(value.toString(), expected.toString());
}

// ---------------------------------------------------------------------------------------------
// Decoration role

void TestEditorModel::decoration_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("hasId");
    QTest::addColumn<quint64>("id");
    QTest::addColumn<QString>("comment");
    QTest::addColumn<QString>("icon");

    auto tag = [](const char *row, quint64 code, const char *icon) {
        QTest::newRow(row) << int(Tag) << QStringLiteral("T") << true << code << QString() << QString::fromLatin1(icon);
    };
    tag("tag binary", 0x0001, ":/icons/i16_data.png");
    tag("tag integer", 0x1001, ":/icons/i16_int.png");
    tag("tag bool", 0x2001, ":/icons/i16_bool.png");
    tag("tag string", 0x3001, ":/icons/i16_string.png");
    tag("tag date", 0x4001, ":/icons/i16_date.png");
    tag("tag time", 0x5001, ":/icons/i16_time.png");
    tag("tag datetime", 0x6001, ":/icons/i16_datetime.png");
    tag("tag bit array", 0x7001, ":/icons/i16_list_bullets.png");
    tag("tag network address", 0x9001, ":/icons/i16_network.png");
    tag("tag list", 0xC001, ":/icons/i16_list.png");
    tag("tag request", 0xD001, ":/icons/i16_question.png");
    tag("tag answer", 0xE001, ":/icons/i16_answer.png");
    tag("tag message", 0xF001, ":/icons/i16_message.png");
    tag("tag point", 0x8001, ":/icons/i16_point.png");
    tag("tag rect", 0x8101, ":/icons/i16_rect.png");
    tag("tag size", 0x8201, ":/icons/i16_size.png");
    tag("tag code zero", 0x0000, ":/icons/i16_data.png");
    tag("tag type 10", 0xA001, ":/icons/i16_empty.png");
    tag("tag type 11", 0xB001, ":/icons/i16_empty.png");
    tag("tag type 0x83", 0x8301, ":/icons/i16_empty.png");
    tag("tag type 0x8F", 0x8F01, ":/icons/i16_empty.png");
    QTest::newRow("tag without code") << int(Tag) << QStringLiteral("T") << false << quint64(0x1001) << QString()
                                      << QStringLiteral(":/icons/i16_empty.png");
    QTest::newRow("enum list") << int(Enums) << QString() << false << quint64(0) << QString()
                               << QStringLiteral(":/icons/i16_folder.png");
    QTest::newRow("bit list") << int(Bits) << QString() << false << quint64(0) << QString()
                              << QStringLiteral(":/icons/i16_folder.png");
    QTest::newRow("enum value with code and name") << int(Enum) << QStringLiteral("E") << true << quint64(1)
                                                   << QString() << QStringLiteral(":/icons/i16_list.png");
    QTest::newRow("enum value with code only")
        << int(Enum) << QString() << true << quint64(1) << QString() << QStringLiteral(":/icons/i16_list.png");
    QTest::newRow("enum value with name only") << int(Enum) << QStringLiteral("E") << false << quint64(0) << QString()
                                               << QStringLiteral(":/icons/i16_list.png");
    QTest::newRow("bit with code and name") << int(Bit) << QStringLiteral("B") << true << quint64(1) << QString()
                                            << QStringLiteral(":/icons/i16_tiny_bullet.png");
    QTest::newRow("bit with code only") << int(Bit) << QString() << true << quint64(1) << QString()
                                        << QStringLiteral(":/icons/i16_tiny_bullet.png");
    QTest::newRow("bit with name only") << int(Bit) << QStringLiteral("B") << false << quint64(0) << QString()
                                        << QStringLiteral(":/icons/i16_tiny_bullet.png");
    QTest::newRow("tag comment line") << int(Tag) << QString() << false << quint64(0) << QStringLiteral("c")
                                      << QStringLiteral(":/icons/i16_empty.png");
    QTest::newRow("enum comment line") << int(Enum) << QString() << false << quint64(0) << QStringLiteral("c")
                                       << QStringLiteral(":/icons/i16_empty.png");
    QTest::newRow("bit comment line") << int(Bit) << QString() << false << quint64(0) << QStringLiteral("c")
                                      << QStringLiteral(":/icons/i16_empty.png");
    QTest::newRow("tag blank line") << int(Tag) << QString() << false << quint64(0) << QString()
                                    << QStringLiteral(":/icons/i16_empty.png");
    QTest::newRow("enum blank line") << int(Enum) << QString() << false << quint64(0) << QString()
                                     << QStringLiteral(":/icons/i16_empty.png");
    QTest::newRow("bit blank line") << int(Bit) << QString() << false << quint64(0) << QString()
                                    << QStringLiteral(":/icons/i16_empty.png");
    QTest::newRow("root") << int(Root) << QString() << false << quint64(0) << QString()
                          << QStringLiteral(":/icons/i16_empty.png");
}

void TestEditorModel::decoration()
{
    QFETCH(int, type);
    QFETCH(QString, name);
    QFETCH(bool, hasId);
    QFETCH(quint64, id);
    QFETCH(QString, comment);
    QFETCH(QString, icon);

    Fixture f;
    Item item;
    item.type = ItemType(type);
    item.name = name;
    item.hasId = hasId;
    item.id = id;
    item.comment = comment;
    const QImage expected = resourceImage(icon);
    QVERIFY2(!expected.isNull(), qPrintable(icon));
    QCOMPARE(expected.size(), QSize(16, 16));
    QCOMPARE(iconImage(f.model.decorationData(&item, 0)), expected);
    QVERIFY(!f.model.decorationData(&item, 1).isValid());
    QVERIFY(!f.model.decorationData(&item, 2).isValid());
}

// The comparisons above can only tell icons apart when the images differ.
void TestEditorModel::decorationIconsAreDistinct()
{
    const QStringList paths = {
        QStringLiteral(":/icons/i16_data.png"),     QStringLiteral(":/icons/i16_int.png"),
        QStringLiteral(":/icons/i16_bool.png"),     QStringLiteral(":/icons/i16_string.png"),
        QStringLiteral(":/icons/i16_date.png"),     QStringLiteral(":/icons/i16_time.png"),
        QStringLiteral(":/icons/i16_datetime.png"), QStringLiteral(":/icons/i16_list_bullets.png"),
        QStringLiteral(":/icons/i16_network.png"),  QStringLiteral(":/icons/i16_list.png"),
        QStringLiteral(":/icons/i16_question.png"), QStringLiteral(":/icons/i16_answer.png"),
        QStringLiteral(":/icons/i16_message.png"),  QStringLiteral(":/icons/i16_point.png"),
        QStringLiteral(":/icons/i16_rect.png"),     QStringLiteral(":/icons/i16_size.png"),
        QStringLiteral(":/icons/i16_folder.png"),   QStringLiteral(":/icons/i16_tiny_bullet.png"),
        QStringLiteral(":/icons/i16_empty.png"),
    };
    for (int i = 0; i < paths.size(); ++i) {
        const QImage a = resourceImage(paths.at(i));
        QVERIFY2(!a.isNull(), qPrintable(paths.at(i)));
        for (int j = i + 1; j < paths.size(); ++j)
            QVERIFY2(a != resourceImage(paths.at(j)), qPrintable(paths.at(i) + QLatin1String(" = ") + paths.at(j)));
    }
}

// ---------------------------------------------------------------------------------------------
// Tooltip role

void TestEditorModel::tooltip_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("hasId");
    QTest::addColumn<quint64>("id");
    QTest::addColumn<int>("column");
    QTest::addColumn<QVariant>("expected");

    auto tag = [](const char *row, quint64 code, const char *text) {
        QTest::newRow(row) << int(Tag) << true << code << 0
                           << (text ? QVariant(QString::fromLatin1(text)) : QVariant());
    };
    tag("binary", 0x0001, "Binary");
    tag("integer", 0x1001, "Integer");
    tag("bool", 0x2001, "Bool");
    tag("string", 0x3001, "String");
    tag("date", 0x4001, "Date");
    tag("time", 0x5001, "Time");
    tag("datetime", 0x6001, "DateTime");
    tag("bit array", 0x7001, "BitArray");
    tag("network address", 0x9001, "Network-Address");
    tag("list", 0xC001, "List");
    tag("request", 0xD001, "Request");
    tag("answer", 0xE001, "Answer");
    tag("message", 0xF001, "Message");
    tag("point", 0x8001, "Point");
    tag("rect", 0x8101, "Rect");
    tag("size", 0x8201, "Size");
    tag("type 10", 0xA001, nullptr);
    tag("type 11", 0xB001, nullptr);
    tag("type 0x83", 0x8301, nullptr);
    QTest::newRow("code column") << int(Tag) << true << quint64(0x3001) << 1 << QVariant(QStringLiteral("String"));
    QTest::newRow("comment column") << int(Tag) << true << quint64(0x3001) << 2 << invalid;
    // a red cell says what is wrong
    QTest::newRow("tag without code") << int(Tag) << false << quint64(0x3001) << 0
                                      << QVariant(QStringLiteral("Name without code"));
    QTest::newRow("enum value") << int(Enum) << true << quint64(0x3001) << 0 << invalid;
    QTest::newRow("bit") << int(Bit) << true << quint64(0x3001) << 1 << invalid;
    QTest::newRow("enum list") << int(Enums) << true << quint64(0x3001) << 0 << invalid;
}

void TestEditorModel::tooltip()
{
    QFETCH(int, type);
    QFETCH(bool, hasId);
    QFETCH(quint64, id);
    QFETCH(int, column);
    QFETCH(QVariant, expected);

    Item *tag = makeItem(ItemType(type), QStringLiteral("T"), hasId, id);
    Item *root = makeItem(Root);
    root->appendChild(tag);
    Fixture f(root);
    const QVariant value = f.model.data(f.model.index(0, column), Qt::ToolTipRole);
    QCOMPARE(value.isValid(), expected.isValid());
    if (expected.isValid())
        QCOMPARE(value.toString(), expected.toString());
}

// A red cell's tooltip names each fault that marks it, a line each, and a tag's data type last.
void TestEditorModel::markedCellsSayWhatIsWrong()
{
    Item *root = makeItem(Root);
    root->appendChild(makeItem(Tag, QStringLiteral("A"), true, 0x1001));
    root->appendChild(makeItem(Tag, QStringLiteral("B"), true, 0x1001));
    root->appendChild(makeItem(Tag, QStringLiteral("C")));
    root->appendChild(makeItem(Tag, QStringLiteral("Tag"), true, 0x3002));
    Item *nameless = makeItem(Tag, QString(), true, 0x1003);
    Item *values = makeItem(Enums);
    values->appendChild(makeItem(Enum, QStringLiteral("On"), true, 1));
    values->appendChild(makeItem(Enum, QStringLiteral("On"), true, 2));
    values->appendChild(makeItem(Enum, QString(), true, 3));
    nameless->appendChild(values);
    root->appendChild(nameless);
    Item *blank = makeItem(Tag);
    Item *bits = makeItem(Bits);
    bits->appendChild(makeItem(Bit, QStringLiteral("Ready"), true, 0));
    blank->appendChild(bits);
    root->appendChild(blank);
    Fixture f(root);
    auto tip = [&](const QModelIndex &index) { return index.data(Qt::ToolTipRole).toString(); };
    const QModelIndex a = f.model.index(0, 0);
    QCOMPARE(tip(a.siblingAtColumn(1)), QStringLiteral("Another tag of this list has the code 0x1001\nInteger"));
    // the name of A is fine: its tooltip is the data type's alone
    QCOMPARE(tip(a), QStringLiteral("Integer"));
    QVERIFY(!f.model.index(0, 2).data(Qt::ToolTipRole).isValid());
    QCOMPARE(tip(f.model.index(2, 0)), QStringLiteral("Name without code"));
    QCOMPARE(tip(f.model.index(2, 1)), QStringLiteral("Name without code"));
    QCOMPARE(tip(f.model.index(3, 0)), QStringLiteral("The name \"Tag\" is reserved.\nString"));
    const QModelIndex tag = f.model.index(4, 0);
    QCOMPARE(tip(tag), QStringLiteral("Code without name\nInteger"));
    QCOMPARE(tip(tag.siblingAtColumn(2)), QStringLiteral("Code without name"));
    QCOMPARE(tip(f.model.index(5, 2)), QStringLiteral("Entries below, but no name and no code"));
    const QModelIndex list = f.model.index(0, 0, tag);
    QCOMPARE(tip(f.model.index(0, 0, list)), QStringLiteral("Another value of this list has the name On"));
    QVERIFY(!f.model.index(0, 1, list).data(Qt::ToolTipRole).isValid());
    QCOMPARE(tip(f.model.index(2, 1, list)), QStringLiteral("Code without name"));

    // once the collision is gone, so is its line
    QVERIFY(f.model.setData(f.model.index(1, 1), QStringLiteral("0x1002")));
    QCOMPARE(tip(a.siblingAtColumn(1)), QStringLiteral("Integer"));
}

// ---------------------------------------------------------------------------------------------
// Font role

void TestEditorModel::font_data()
{
    QTest::addColumn<QList<int>>("path");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("font"); // "fixed", "comment" or empty for none

    QTest::newRow("tag name") << QList<int> { 0 } << 0 << QStringLiteral("fixed");
    QTest::newRow("tag code") << QList<int> { 0 } << 1 << QStringLiteral("fixed");
    QTest::newRow("tag comment") << QList<int> { 0 } << 2 << QStringLiteral("comment");
    QTest::newRow("enum value name") << QList<int> { 0, 1, 0 } << 0 << QStringLiteral("fixed");
    QTest::newRow("enum value code") << QList<int> { 0, 1, 0 } << 1 << QStringLiteral("fixed");
    QTest::newRow("enum value comment") << QList<int> { 0, 1, 0 } << 2 << QStringLiteral("comment");
    QTest::newRow("bit name") << QList<int> { 0, 0, 0 } << 0 << QStringLiteral("fixed");
    QTest::newRow("bit comment") << QList<int> { 0, 0, 0 } << 2 << QStringLiteral("comment");
    QTest::newRow("enum list name") << QList<int> { 0, 1 } << 0 << QString();
    QTest::newRow("enum list code") << QList<int> { 0, 1 } << 1 << QString();
    QTest::newRow("enum list comment") << QList<int> { 0, 1 } << 2 << QStringLiteral("comment");
    QTest::newRow("bit list name") << QList<int> { 0, 0 } << 0 << QString();
    QTest::newRow("bit list comment") << QList<int> { 0, 0 } << 2 << QStringLiteral("comment");
    QTest::newRow("comment line name") << QList<int> { 1 } << 0 << QStringLiteral("fixed");
    QTest::newRow("comment line text") << QList<int> { 1 } << 2 << QStringLiteral("comment");
    QTest::newRow("column 3") << QList<int> { 0 } << 3 << QString();
}

void TestEditorModel::font()
{
    QFETCH(QList<int>, path);
    QFETCH(int, column);
    QFETCH(QString, font);

    Fixture f(roleTree);
    QFont fixed(QStringLiteral("Fixed Test"), 17);
    QFont comment(QStringLiteral("Comment Test"), 9);
    comment.setItalic(true);
    f.model.setFixedFont(fixed);
    f.model.setCommentFont(comment);
    QModelIndex parent;
    for (int i = 0; i < path.size() - 1; ++i)
        parent = f.model.index(path.at(i), 0, parent);
    const QVariant value = f.model.data(f.model.index(path.last(), column, parent), Qt::FontRole);
    if (font.isEmpty()) {
        QVERIFY(!value.isValid());
    } else {
        QVERIFY(value.canConvert<QFont>());
        QCOMPARE(value.value<QFont>(), font == QLatin1String("fixed") ? fixed : comment);
    }
}

void TestEditorModel::defaultFonts()
{
    Fixture f;
    QCOMPARE(f.model.fixedFont().family(), QStringLiteral("Monospace"));
    QCOMPARE(f.model.fixedFont().styleHint(), QFont::TypeWriter);
    QCOMPARE(f.model.fixedFont().styleStrategy(), QFont::PreferDefault);
    QCOMPARE(f.model.commentFont(), QFont());
}

// ---------------------------------------------------------------------------------------------
// Background and foreground roles

void TestEditorModel::highlight_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<QList<int>>("path");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("colour"); // "marked", "comment" or empty for none

    const QByteArray lists = document("  <tag name=\"T\" id=\"0x1001\">\n"
                                      "    <enums>\n"
                                      "      <enum name=\"A\" id=\"1\"/>\n"
                                      "      <enum id=\"2\" comment=\"legal\"/>\n"
                                      "      <enum id=\"3\"/>\n"
                                      "      <enum name=\"D\"/>\n"
                                      "      <enum name=\"E\" id=\"5\"/>\n"
                                      "      <enum name=\"E\" id=\"6\"/>\n"
                                      "      <enum name=\"G\" id=\"1\"/>\n"
                                      "      <!-- note -->\n"
                                      "\n"
                                      "      <enum name=\"H\" id=\"9\"/>\n"
                                      "    </enums>\n"
                                      "    <bits>\n"
                                      "      <bit id=\"2\" comment=\"not legal for bits\"/>\n"
                                      "    </bits>\n"
                                      "  </tag>\n");
    const QByteArray tags = document("  <tag name=\"Named\"/>\n"
                                     "  <tag id=\"0x1002\"/>\n"
                                     "  <tag name=\"Dup\" id=\"0x1003\"/>\n"
                                     "  <tag name=\"Dup\" id=\"0x1004\"/>\n"
                                     "  <tag name=\"Same1\" id=\"0x1005\"/>\n"
                                     "  <tag name=\"Same2\" id=\"0x1005\"/>\n"
                                     "  <tag name=\"NoCode\">\n"
                                     "    <enums><enum name=\"X\" id=\"0\"/></enums>\n"
                                     "  </tag>\n"
                                     "  <tag id=\"0x1006\">\n"
                                     "    <enums><enum name=\"X\" id=\"0\"/></enums>\n"
                                     "  </tag>\n"
                                     "  <tag>\n"
                                     "    <enums><enum name=\"X\" id=\"0\"/></enums>\n"
                                     "  </tag>\n"
                                     "  <tag name=\"Full\" id=\"0x1007\">\n"
                                     "    <enums><enum name=\"X\" id=\"0\"/></enums>\n"
                                     "  </tag>\n"
                                     "  <tag name=\"Plain\" id=\"0x1008\" comment=\"ok\"/>\n");

    // Complete items and lists have no colour.
    for (int c = 0; c < 3; ++c) {
        QTest::newRow(qPrintable(QStringLiteral("complete value, column %1").arg(c)))
            << lists << QList<int> { 0, 1, 9 } << c << QString();
        QTest::newRow(qPrintable(QStringLiteral("complete tag, column %1").arg(c)))
            << tags << QList<int> { 10 } << c << QString();
        QTest::newRow(qPrintable(QStringLiteral("list, column %1").arg(c)))
            << lists << QList<int> { 0, 1 } << c << QString();
        QTest::newRow(qPrintable(QStringLiteral("blank line, column %1").arg(c)))
            << lists << QList<int> { 0, 1, 8 } << c << QString();
        QTest::newRow(qPrintable(QStringLiteral("comment line, column %1").arg(c)))
            << lists << QList<int> { 0, 1, 7 } << c << QStringLiteral("comment");
        QTest::newRow(qPrintable(QStringLiteral("complete tag with list, column %1").arg(c)))
            << tags << QList<int> { 9 } << c << QString();
        QTest::newRow(qPrintable(QStringLiteral("list children without name or code, column %1").arg(c)))
            << tags << QList<int> { 8 } << c << QStringLiteral("marked");
    }
    // a: a name but no code, in the name and code columns.
    QTest::newRow("tag name without code, column 0") << tags << QList<int> { 0 } << 0 << QStringLiteral("marked");
    QTest::newRow("tag name without code, column 1") << tags << QList<int> { 0 } << 1 << QStringLiteral("marked");
    QTest::newRow("tag name without code, column 2") << tags << QList<int> { 0 } << 2 << QString();
    QTest::newRow("enum name without code, column 0")
        << lists << QList<int> { 0, 1, 3 } << 0 << QStringLiteral("marked");
    QTest::newRow("enum name without code, column 2") << lists << QList<int> { 0, 1, 3 } << 2 << QString();
    // b: a code but no name, except for a commented enumeration value.
    QTest::newRow("tag code without name, column 0") << tags << QList<int> { 1 } << 0 << QStringLiteral("marked");
    QTest::newRow("tag code without name, column 1") << tags << QList<int> { 1 } << 1 << QStringLiteral("marked");
    QTest::newRow("tag code without name, column 2") << tags << QList<int> { 1 } << 2 << QString();
    QTest::newRow("enum code without name, column 1")
        << lists << QList<int> { 0, 1, 2 } << 1 << QStringLiteral("marked");
    QTest::newRow("enum code and comment without name, column 0") << lists << QList<int> { 0, 1, 1 } << 0 << QString();
    QTest::newRow("enum code and comment without name, column 1") << lists << QList<int> { 0, 1, 1 } << 1 << QString();
    QTest::newRow("bit code and comment without name, column 0")
        << lists << QList<int> { 0, 0, 0 } << 0 << QStringLiteral("marked");
    QTest::newRow("bit code and comment without name, column 2") << lists << QList<int> { 0, 0, 0 } << 2 << QString();
    // c: collisions, name in column 0, code in column 1.
    QTest::newRow("name collision, column 0") << tags << QList<int> { 2 } << 0 << QStringLiteral("marked");
    QTest::newRow("name collision, column 1") << tags << QList<int> { 2 } << 1 << QString();
    QTest::newRow("name collision, column 2") << tags << QList<int> { 2 } << 2 << QString();
    QTest::newRow("other name collision, column 0") << tags << QList<int> { 3 } << 0 << QStringLiteral("marked");
    QTest::newRow("code collision, column 0") << tags << QList<int> { 4 } << 0 << QString();
    QTest::newRow("code collision, column 1") << tags << QList<int> { 4 } << 1 << QStringLiteral("marked");
    QTest::newRow("other code collision, column 1") << tags << QList<int> { 5 } << 1 << QStringLiteral("marked");
    QTest::newRow("code collision, column 2") << tags << QList<int> { 5 } << 2 << QString();
    QTest::newRow("value name collision, column 0") << lists << QList<int> { 0, 1, 4 } << 0 << QStringLiteral("marked");
    QTest::newRow("value name collision, column 1") << lists << QList<int> { 0, 1, 4 } << 1 << QString();
    QTest::newRow("value code collision, column 1") << lists << QList<int> { 0, 1, 6 } << 1 << QStringLiteral("marked");
    QTest::newRow("value code collision, column 0") << lists << QList<int> { 0, 1, 6 } << 0 << QString();
    QTest::newRow("value code collision, first, column 1")
        << lists << QList<int> { 0, 1, 0 } << 1 << QStringLiteral("marked");
    QTest::newRow("value code collision, first, column 0") << lists << QList<int> { 0, 1, 0 } << 0 << QString();
    // d: children and a missing name or code mark every column.
    QTest::newRow("name without code with children, column 2")
        << tags << QList<int> { 6 } << 2 << QStringLiteral("marked");
    QTest::newRow("code without name with children, column 2")
        << tags << QList<int> { 7 } << 2 << QStringLiteral("marked");
    QTest::newRow("code without name with children, column 0")
        << tags << QList<int> { 7 } << 0 << QStringLiteral("marked");
}

void TestEditorModel::highlight()
{
    QFETCH(QByteArray, xml);
    QFETCH(QList<int>, path);
    QFETCH(int, column);
    QFETCH(QString, colour);

    Fixture f(xml);
    QModelIndex parent;
    for (int i = 0; i < path.size() - 1; ++i)
        parent = f.model.index(path.at(i), 0, parent);
    const QModelIndex index = f.model.index(path.last(), column, parent);
    QVERIFY(index.isValid());
    const QVariant background = f.model.data(index, Qt::BackgroundRole);
    const QVariant foreground = f.model.data(index, Qt::ForegroundRole);
    if (colour.isEmpty()) {
        QVERIFY(!background.isValid());
        QVERIFY(!foreground.isValid());
        return;
    }
    QVERIFY(background.canConvert<QColor>());
    QVERIFY(foreground.canConvert<QColor>());
    if (colour == QLatin1String("marked")) {
        QCOMPARE(background.value<QColor>(), QColor(192, 0, 0));
        QCOMPARE(foreground.value<QColor>(), QColor(255, 255, 255));
    } else {
        QCOMPARE(background.value<QColor>(), QColor(222, 255, 222));
        QCOMPARE(foreground.value<QColor>(), QColor(0, 0, 0));
    }
    QCOMPARE(background.value<QColor>().alpha(), 255);
    QCOMPARE(foreground.value<QColor>().alpha(), 255);
    // Views read the colours as brushes.
    QCOMPARE(background.value<QBrush>().color(), background.value<QColor>());
}

void TestEditorModel::commentLineColourOnEveryRow()
{
    Item *root = makeItem(Root);
    for (int i = 0; i < 6; ++i)
        root->appendChild(makeItem(Tag, QString(), false, 0, QStringLiteral("note %1").arg(i)));
    Fixture f(root);
    for (int row = 0; row < 6; ++row) {
        for (int column = 0; column < 3; ++column) {
            const QModelIndex index = f.model.index(row, column);
            QCOMPARE(f.model.data(index, Qt::BackgroundRole).value<QColor>(), QColor(222, 255, 222));
            QCOMPARE(f.model.data(index, Qt::ForegroundRole).value<QColor>(), QColor(0, 0, 0));
            // The row handed to highlightData does not matter either.
            QCOMPARE(f.model.highlightData(f.at({ row }), row * 7 + 1, column, Qt::BackgroundRole).value<QColor>(),
                     QColor(222, 255, 222));
        }
    }
}

void TestEditorModel::collisionsInDifferentParentsNotMarked()
{
    Fixture f(document("  <tag name=\"A\" id=\"0x1001\">\n"
                       "    <enums><enum name=\"Same\" id=\"1\"/></enums>\n"
                       "  </tag>\n"
                       "  <tag name=\"B\" id=\"0x1002\">\n"
                       "    <enums><enum name=\"Same\" id=\"1\"/></enums>\n"
                       "    <bits><bit name=\"Same\" id=\"1\"/></bits>\n"
                       "  </tag>\n"));
    const QList<QModelIndex> indexes = { f.index({ 0, 0, 0 }), f.index({ 1, 0, 0 }), f.index({ 1, 1, 0 }) };
    for (const QModelIndex &index : indexes) {
        for (int column = 0; column < 3; ++column) {
            const QModelIndex cell = index.siblingAtColumn(column);
            QVERIFY(!f.model.data(cell, Qt::BackgroundRole).isValid());
            QVERIFY(!f.model.data(cell, Qt::ForegroundRole).isValid());
        }
        QCOMPARE(int(f.model.findCollision(f.model.index2item(index))), 0);
    }
}

void TestEditorModel::otherRoles()
{
    Fixture f(roleTree);
    const QModelIndex index = f.index({ 0 });
    QVERIFY(!f.model.data(index, Qt::StatusTipRole).isValid());
    QVERIFY(!f.model.data(index, Qt::WhatsThisRole).isValid());
    QVERIFY(!f.model.data(index, Qt::SizeHintRole).isValid());
    QVERIFY(!f.model.data(index, Qt::TextAlignmentRole).isValid());
    QVERIFY(!f.model.data(index, Qt::CheckStateRole).isValid());
    QVERIFY(!f.model.data(index, Qt::UserRole).isValid());
}

// ---------------------------------------------------------------------------------------------
// Header

void TestEditorModel::headerData_data()
{
    QTest::addColumn<int>("section");
    QTest::addColumn<int>("orientation");
    QTest::addColumn<int>("role");
    QTest::addColumn<QVariant>("expected");

    QTest::newRow("name") << 0 << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant(QStringLiteral("Name"));
    QTest::newRow("tag") << 1 << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant(QStringLiteral("Tag"));
    QTest::newRow("comment") << 2 << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant(QStringLiteral("Comment"));
    QTest::newRow("section 3") << 3 << int(Qt::Horizontal) << int(Qt::DisplayRole) << invalid;
    QTest::newRow("section -1") << -1 << int(Qt::Horizontal) << int(Qt::DisplayRole) << invalid;
    QTest::newRow("vertical 0") << 0 << int(Qt::Vertical) << int(Qt::DisplayRole) << QVariant(QStringLiteral("1"));
    QTest::newRow("vertical 9") << 9 << int(Qt::Vertical) << int(Qt::DisplayRole) << QVariant(QStringLiteral("10"));
    QTest::newRow("tooltip role") << 0 << int(Qt::Horizontal) << int(Qt::ToolTipRole) << invalid;
    QTest::newRow("edit role") << 0 << int(Qt::Horizontal) << int(Qt::EditRole) << invalid;
    QTest::newRow("vertical font role") << 0 << int(Qt::Vertical) << int(Qt::FontRole) << invalid;
}

void TestEditorModel::headerData()
{
    QFETCH(int, section);
    QFETCH(int, orientation);
    QFETCH(int, role);
    QFETCH(QVariant, expected);

    Fixture f(roleTree);
    const QVariant value = f.model.headerData(section, Qt::Orientation(orientation), role);
    QCOMPARE(value.isValid(), expected.isValid());
    if (expected.isValid())
        QCOMPARE(value.toString(), expected.toString());
}

// ---------------------------------------------------------------------------------------------
// Flags

void TestEditorModel::flags_data()
{
    QTest::addColumn<QList<int>>("path");
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("flags");

    const int named
        = Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled | Qt::ItemIsEnabled;
    const int list = Qt::ItemIsSelectable | Qt::ItemIsDropEnabled | Qt::ItemIsEnabled;
    QTest::newRow("tag") << QList<int> { 0 } << 0 << named;
    QTest::newRow("tag code") << QList<int> { 0 } << 1 << named;
    QTest::newRow("tag comment") << QList<int> { 0 } << 2 << named;
    QTest::newRow("enum value") << QList<int> { 0, 1, 0 } << 0 << named;
    QTest::newRow("bit") << QList<int> { 0, 0, 0 } << 1 << named;
    QTest::newRow("comment line") << QList<int> { 1 } << 0 << named;
    QTest::newRow("blank line") << QList<int> { 2 } << 2 << named;
    QTest::newRow("enum list") << QList<int> { 0, 1 } << 0 << list;
    QTest::newRow("bit list") << QList<int> { 0, 0 } << 2 << list;
}

void TestEditorModel::flags()
{
    QFETCH(QList<int>, path);
    QFETCH(int, column);
    QFETCH(int, flags);

    Fixture f(roleTree);
    QModelIndex parent;
    for (int i = 0; i < path.size() - 1; ++i)
        parent = f.model.index(path.at(i), 0, parent);
    QCOMPARE(int(f.model.flags(f.model.index(path.last(), column, parent))), flags);
}

void TestEditorModel::flagsOfUnusualIndexes()
{
    ProbeModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QObject::disconnect(&model, &QAbstractItemModel::dataChanged, &tester, nullptr);
    Item *root = makeItem(Root);
    root->appendChild(makeItem(Tag, QStringLiteral("T"), true, 0x1001));
    model.setTags(root);

    QCOMPARE(int(model.flags(QModelIndex())), int(Qt::NoItemFlags));
    QCOMPARE(int(model.flags(model.createIndex(0, 0, root))), int(Qt::ItemIsDropEnabled));
    QCOMPARE(int(model.flags(model.createIndex(0, 0, nullptr))),
             int(Qt::ItemIsSelectable | Qt::ItemIsDropEnabled | Qt::ItemIsEnabled));
    Item odd;
    odd.type = ItemType(7);
    QCOMPARE(int(model.flags(model.createIndex(0, 0, &odd))), int(Qt::NoItemFlags));
    Item invalidKind;
    QCOMPARE(int(model.flags(model.createIndex(0, 0, &invalidKind))), int(Qt::NoItemFlags));
    // The null item of such an index has no data.
    QVERIFY(!model.data(model.createIndex(0, 0, nullptr), Qt::DisplayRole).isValid());
    QVERIFY(!model.parent(model.createIndex(0, 0, nullptr)).isValid());
}

// ---------------------------------------------------------------------------------------------
// Fonts and repaint requests

void TestEditorModel::fontsRepaintAllChildren()
{
    Fixture f(roleTree);
    QSignalSpy spy(&f.model, &QAbstractItemModel::dataChanged);
    f.model.setFixedFont(QFont(QStringLiteral("Courier"), 11));
    f.model.setCommentFont(QFont(QStringLiteral("Serif"), 12));
    // The range ends one row and one column past the last.
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 0,0-6,3 <root>\ndataChanged 0,0-6,3 <root>"));
    QCOMPARE(f.model.fixedFont(), QFont(QStringLiteral("Courier"), 11));
    QCOMPARE(f.model.commentFont(), QFont(QStringLiteral("Serif"), 12));

    spy.clear();
    f.model.allChildrenChanged(f.at({ 0 }));
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 0,0-2,3 Mode"));
    QCOMPARE(spy.first().at(0).value<QModelIndex>().internalPointer(), static_cast<void *>(f.at({ 0 })));
    QCOMPARE(spy.first().at(1).value<QModelIndex>().internalPointer(), static_cast<void *>(f.at({ 0 })));
    QCOMPARE(f.stack.count(), 0);
}

void TestEditorModel::allChildrenChangedWithoutChildrenEmitsNothing()
{
    Fixture f(roleTree);
    QSignalSpy spy(&f.model, &QAbstractItemModel::dataChanged);
    f.model.allChildrenChanged(f.at({ 4 }));
    f.model.allChildrenChanged(nullptr);
    QCOMPARE(spy.count(), 0);

    Fixture empty;
    QSignalSpy emptySpy(&empty.model, &QAbstractItemModel::dataChanged);
    empty.model.setFixedFont(QFont(QStringLiteral("Courier"), 11));
    QCOMPARE(emptySpy.count(), 0);
}

// ---------------------------------------------------------------------------------------------
// Cell edits

void TestEditorModel::setData_data()
{
    QTest::addColumn<QList<int>>("path");
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("role");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("result");
    QTest::addColumn<QString>("command"); // the pushed command's text, empty when none
    QTest::addColumn<QString>("display"); // display text of the cell afterwards

    const int edit = Qt::EditRole;
    QTest::newRow("rename tag") << QList<int> { 0 } << 0 << edit << QVariant(QStringLiteral("State")) << true
                                << QStringLiteral("Change name") << QStringLiteral("State");
    QTest::newRow("same name") << QList<int> { 0 } << 0 << edit << QVariant(QStringLiteral("Mode")) << true << QString()
                               << QStringLiteral("Mode");
    QTest::newRow("name of nameless tag") << QList<int> { 3 } << 0 << edit << QVariant(QStringLiteral("Named")) << true
                                          << QStringLiteral("Set name") << QStringLiteral("Named");
    QTest::newRow("clear name") << QList<int> { 0 } << 0 << edit << QVariant(QString()) << true
                                << QStringLiteral("Remove name") << QStringLiteral(" ");
    QTest::newRow("name is not checked") << QList<int> { 0 } << 0 << edit << QVariant(QStringLiteral("1 bad")) << true
                                         << QStringLiteral("Change name") << QStringLiteral("1 bad");
    QTest::newRow("tag code hex") << QList<int> { 0 } << 1 << edit << QVariant(QStringLiteral("0x2002")) << true
                                  << QStringLiteral("Change tag code") << QStringLiteral("0x2002");
    QTest::newRow("tag code decimal") << QList<int> { 0 } << 1 << edit << QVariant(QStringLiteral("4099")) << true
                                      << QStringLiteral("Change tag code") << QStringLiteral("0x1003");
    QTest::newRow("tag code binary") << QList<int> { 0 } << 1 << edit << QVariant(QStringLiteral("0b101")) << true
                                     << QStringLiteral("Change tag code") << QStringLiteral("0x0005");
    QTest::newRow("tag code from number") << QList<int> { 0 } << 1 << edit << QVariant(8193) << true
                                          << QStringLiteral("Change tag code") << QStringLiteral("0x2001");
    QTest::newRow("same tag code") << QList<int> { 0 } << 1 << edit << QVariant(QStringLiteral("4098")) << true
                                   << QString() << QStringLiteral("0x1002");
    QTest::newRow("set tag code") << QList<int> { 4 } << 1 << edit << QVariant(QStringLiteral("0x3003")) << true
                                  << QStringLiteral("Set tag code") << QStringLiteral("0x3003");
    QTest::newRow("remove tag code") << QList<int> { 0 } << 1 << edit << QVariant(QString()) << true
                                     << QStringLiteral("Remove tag code") << QStringLiteral("      ");
    QTest::newRow("tag code not a number") << QList<int> { 0 } << 1 << edit << QVariant(QStringLiteral("0x12G"))
                                           << false << QString() << QStringLiteral("0x1002");
    QTest::newRow("tag code with blank") << QList<int> { 0 } << 1 << edit << QVariant(QStringLiteral(" 12")) << false
                                         << QString() << QStringLiteral("0x1002");
    QTest::newRow("tag code 0xFFFF") << QList<int> { 0 } << 1 << edit << QVariant(QStringLiteral("0xFFFF")) << true
                                     << QStringLiteral("Change tag code") << QStringLiteral("0xFFFF");
    QTest::newRow("tag code 0x10000") << QList<int> { 0 } << 1 << edit << QVariant(QStringLiteral("0x10000")) << false
                                      << QString() << QStringLiteral("0x1002");
    QTest::newRow("enum code") << QList<int> { 0, 1, 0 } << 1 << edit << QVariant(QStringLiteral("5")) << true
                               << QStringLiteral("Change enum code") << QStringLiteral("  5");
    QTest::newRow("enum code 70000") << QList<int> { 0, 1, 0 } << 1 << edit << QVariant(QStringLiteral("70000")) << true
                                     << QStringLiteral("Change enum code") << QStringLiteral("  70000");
    QTest::newRow("enum code -20") << QList<int> { 0, 1, 0 } << 1 << edit << QVariant(QStringLiteral("-20")) << true
                                   << QStringLiteral("Change enum code") << QStringLiteral("  -20");
    QTest::newRow("enum code 010") << QList<int> { 0, 1, 0 } << 1 << edit << QVariant(QStringLiteral("010")) << true
                                   << QStringLiteral("Change enum code") << QStringLiteral("  10");
    QTest::newRow("enum code above 32 bits")
        << QList<int> { 0, 1, 0 } << 1 << edit << QVariant(QStringLiteral("0x100000000")) << true
        << QStringLiteral("Change enum code") << QStringLiteral("  4294967296");
    QTest::newRow("enum code above 64 bits")
        << QList<int> { 0, 1, 0 } << 1 << edit << QVariant(QStringLiteral("18446744073709551616")) << false << QString()
        << QStringLiteral("  0");
    QTest::newRow("enum code sign alone") << QList<int> { 0, 1, 0 } << 1 << edit << QVariant(QStringLiteral("-"))
                                          << false << QString() << QStringLiteral("  0");
    QTest::newRow("set enum code") << QList<int> { 0, 1, 2 } << 1 << edit << QVariant(QStringLiteral("4")) << true
                                   << QStringLiteral("Set enum code") << QStringLiteral("  4");
    QTest::newRow("remove enum code") << QList<int> { 0, 1, 0 } << 1 << edit << QVariant(QString()) << true
                                      << QStringLiteral("Remove enum code") << QStringLiteral(" ");
    QTest::newRow("bit number") << QList<int> { 0, 0, 0 } << 1 << edit << QVariant(QStringLiteral("0x10")) << true
                                << QStringLiteral("Change bit number") << QStringLiteral("  0x10");
    QTest::newRow("set bit number") << QList<int> { 0, 0, 2 } << 1 << edit << QVariant(QStringLiteral("4")) << true
                                    << QStringLiteral("Set bit number") << QStringLiteral("  0x04");
    QTest::newRow("remove bit number") << QList<int> { 0, 0, 1 } << 1 << edit << QVariant(QString()) << true
                                       << QStringLiteral("Remove bit number") << QStringLiteral(" ");
    QTest::newRow("bit number 70000") << QList<int> { 0, 0, 0 } << 1 << edit << QVariant(QStringLiteral("70000"))
                                      << true << QStringLiteral("Change bit number") << QStringLiteral("  0x11170");
    QTest::newRow("bit number -1") << QList<int> { 0, 0, 0 } << 1 << edit << QVariant(QStringLiteral("-1")) << false
                                   << QString() << QStringLiteral("  0x01");
    QTest::newRow("set comment") << QList<int> { 4 } << 2 << edit << QVariant(QStringLiteral("note")) << true
                                 << QStringLiteral("Set comment") << QStringLiteral("note");
    QTest::newRow("change comment") << QList<int> { 0 } << 2 << edit << QVariant(QStringLiteral("note")) << true
                                    << QStringLiteral("Change comment") << QStringLiteral("note");
    QTest::newRow("same comment") << QList<int> { 0 } << 2 << edit << QVariant(QStringLiteral("Operating mode")) << true
                                  << QString() << QStringLiteral("Operating mode");
    QTest::newRow("remove comment") << QList<int> { 0 } << 2 << edit << QVariant(QString()) << true
                                    << QStringLiteral("Remove comment") << QStringLiteral(" ");
    QTest::newRow("comment of a comment line") << QList<int> { 1 } << 2 << edit << QVariant(QStringLiteral("other"))
                                               << true << QStringLiteral("Change comment") << QStringLiteral("other");
    QTest::newRow("name of a blank line") << QList<int> { 2 } << 0 << edit << QVariant(QStringLiteral("Fresh")) << true
                                          << QStringLiteral("Set name") << QStringLiteral("Fresh");
    QTest::newRow("display role") << QList<int> { 0 } << 0 << int(Qt::DisplayRole) << QVariant(QStringLiteral("X"))
                                  << false << QString() << QStringLiteral("Mode");
    QTest::newRow("enum list name") << QList<int> { 0, 1 } << 0 << edit << QVariant(QStringLiteral("X")) << false
                                    << QString() << QStringLiteral("Enums");
    QTest::newRow("bit list comment") << QList<int> { 0, 0 } << 2 << edit << QVariant(QStringLiteral("X")) << false
                                      << QString() << QStringLiteral(" ");
    QTest::newRow("column 3") << QList<int> { 0 } << 3 << edit << QVariant(QStringLiteral("X")) << false << QString()
                              << QString();
}

void TestEditorModel::setData()
{
    QFETCH(QList<int>, path);
    QFETCH(int, column);
    QFETCH(int, role);
    QFETCH(QVariant, value);
    QFETCH(bool, result);
    QFETCH(QString, command);
    QFETCH(QString, display);

    Fixture f(roleTree);
    const QByteArray before = f.encoding();
    QModelIndex parent;
    for (int i = 0; i < path.size() - 1; ++i)
        parent = f.model.index(path.at(i), 0, parent);
    const QModelIndex index = f.model.index(path.last(), column, parent);
    QCOMPARE(f.model.setData(index, value, role), result);
    QCOMPARE(f.stack.count(), command.isEmpty() ? 0 : 1);
    if (!command.isEmpty()) {
        QCOMPARE(f.stack.text(0), command);
        QVERIFY(f.encoding() != before);
    } else {
        QCOMPARE(f.encoding(), before);
    }
    if (!display.isNull())
        QCOMPARE(f.model.data(index, Qt::DisplayRole).toString(), display);
}

void TestEditorModel::setDataOfWideCode()
{
    // A stored code with upper bits set never equals a 32-bit value.
    Item *root = makeItem(Root);
    Item *tag = makeItem(Tag, QStringLiteral("T"), true, 0x1001);
    Item *list = makeItem(Enums);
    list->appendChild(makeItem(Enum, QStringLiteral("Wide"), true, 0x100000005ULL));
    tag->appendChild(list);
    root->appendChild(tag);
    Fixture f(root);
    QVERIFY(f.model.setData(f.index({ 0, 0, 0 }, 1), QStringLiteral("5")));
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.at({ 0, 0, 0 })->id, quint64(5));
    // Undo brings back all 64 bits of the code.
    f.stack.undo();
    QCOMPARE(f.at({ 0, 0, 0 })->id, quint64(0x100000005ULL));
    QVERIFY(f.at({ 0, 0, 0 })->hasId);
}

void TestEditorModel::setDataOfNegativeCode()
{
    // The code cell of a value reads a sign and keeps all 64 bits, as the edit dialog does.
    Fixture f(roleTree);
    const QModelIndex cell = f.index({ 0, 1, 0 }, 1);
    QVERIFY(f.model.setData(cell, QStringLiteral("-20")));
    QCOMPARE(f.at({ 0, 1, 0 })->id, quint64(-20));
    QCOMPARE(f.model.data(cell, Qt::DisplayRole).toString(), QStringLiteral("  -20"));
    QVERIFY(f.model.setData(cell, QStringLiteral("0x123456789")));
    QCOMPARE(f.at({ 0, 1, 0 })->id, quint64(0x123456789ULL));
    f.stack.undo();
    QCOMPARE(f.at({ 0, 1, 0 })->id, quint64(-20));
    f.stack.undo();
    QCOMPARE(f.at({ 0, 1, 0 })->id, quint64(0));
    f.stack.redo();
    f.stack.redo();
    QCOMPARE(f.at({ 0, 1, 0 })->id, quint64(0x123456789ULL));
}

void TestEditorModel::setDataEmitsOnePastTheEnd()
{
    Fixture f(roleTree);
    QSignalSpy spy(&f.model, &QAbstractItemModel::dataChanged);
    QVERIFY(f.model.setData(f.index({ 0, 1, 1 }, 2), QStringLiteral("quick")));
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 1,0-1,3 Low"));
    QCOMPARE(spy.first().at(0).value<QModelIndex>().internalPointer(), static_cast<void *>(f.at({ 0, 1, 1 })));
    spy.clear();
    f.stack.undo();
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 1,0-1,3 Low"));
}

void TestEditorModel::tagCodeOutOfRange()
{
    Fixture f(roleTree);
    QVERIFY(!f.model.setData(f.index({ 0 }, 1), QStringLiteral("70000")));
    QCOMPARE(f.stack.count(), 0);
    QCOMPARE(f.at({ 0 })->id, quint64(0x1002));
    QVERIFY(f.model.setData(f.index({ 0, 1, 0 }, 1), QStringLiteral("70000")));
    QCOMPARE(f.at({ 0, 1, 0 })->id, quint64(70000));
    QVERIFY(f.model.setData(f.index({ 0, 0, 0 }, 1), QStringLiteral("70000")));
    QCOMPARE(f.at({ 0, 0, 0 })->id, quint64(70000));
    QCOMPARE(f.stack.count(), 2);
}

void TestEditorModel::clearingCodeCell()
{
    Fixture f(roleTree);
    QVERIFY(f.model.setData(f.index({ 0, 1, 1 }, 1), QString()));
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), QStringLiteral("Remove enum code"));
    QVERIFY(!f.at({ 0, 1, 1 })->hasId);
    QCOMPARE(f.at({ 0, 1, 1 })->id, quint64(0));
    // Without a code nothing happens.
    QVERIFY(f.model.setData(f.index({ 4 }, 1), QString()));
    QVERIFY(f.model.setData(f.index({ 0, 1, 1 }, 1), QString()));
    QCOMPARE(f.stack.count(), 1);
}

// ---------------------------------------------------------------------------------------------
// Item data

void TestEditorModel::setItemData()
{
    Fixture f(roleTree);
    Item *mode = f.at({ 0 });
    ItemData data = *mode;
    QVERIFY(f.model.setItemData(f.index({ 0 }), data));
    QCOMPARE(f.stack.count(), 0);

    data.secure = true;
    data.display.mode = 3;
    data.display.digits = 2;
    QSignalSpy spy(&f.model, &QAbstractItemModel::dataChanged);
    QVERIFY(f.model.setItemData(f.index({ 0 }, 2), data));
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), QStringLiteral("Change item"));
    QVERIFY(static_cast<const ItemData &>(*mode) == data);
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 0,0-0,3 Mode"));

    // The invalid index stands for the root.
    ItemData rootData = *f.root();
    rootData.comment = QStringLiteral("<!DOCTYPE zat16>");
    QVERIFY(f.model.setItemData(QModelIndex(), rootData));
    QCOMPARE(f.root()->comment, QStringLiteral("<!DOCTYPE zat16>"));
    QCOMPARE(f.stack.count(), 2);
}

// ---------------------------------------------------------------------------------------------
// Insertions

void TestEditorModel::insertEmptyRow_data()
{
    QTest::addColumn<QList<int>>("parentPath"); // empty: the root
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("expectedRow");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("text");

    QTest::newRow("tag at the start") << QList<int> {} << 0 << 0 << int(Tag) << QStringLiteral("Insert tag");
    QTest::newRow("tag in the middle") << QList<int> {} << 3 << 3 << int(Tag) << QStringLiteral("Insert tag");
    QTest::newRow("tag past the end") << QList<int> {} << 99 << 6 << int(Tag) << QStringLiteral("Insert tag");
    QTest::newRow("enum value") << QList<int> { 0, 1 } << 1 << 1 << int(Enum) << QStringLiteral("Insert enum");
    QTest::newRow("enum value at end") << QList<int> { 0, 1 } << 4 << 4 << int(Enum) << QStringLiteral("Insert enum");
    QTest::newRow("bit") << QList<int> { 0, 0 } << 0 << 0 << int(Bit) << QStringLiteral("Insert bit");
    QTest::newRow("bit past the end") << QList<int> { 0, 0 } << 10 << 3 << int(Bit) << QStringLiteral("Insert bit");
}

void TestEditorModel::insertEmptyRow()
{
    QFETCH(QList<int>, parentPath);
    QFETCH(int, row);
    QFETCH(int, expectedRow);
    QFETCH(int, kind);
    QFETCH(QString, text);

    Fixture f(roleTree);
    QModelIndex parent;
    for (int r : parentPath)
        parent = f.model.index(r, 0, parent);
    Item *parentItem = f.model.index2item(parent);
    const int count = parentItem->children.size();
    QSignalSpy inserted(&f.model, &QAbstractItemModel::rowsInserted);
    QVERIFY(f.model.insertRow(row, parent));
    QCOMPARE(inserted.count(), 1);
    QCOMPARE(inserted.first().at(1).toInt(), expectedRow);
    QCOMPARE(inserted.first().at(2).toInt(), expectedRow);
    QCOMPARE(parentItem->children.size(), count + 1);
    const Item *item = parentItem->child(expectedRow);
    QCOMPARE(int(item->type), kind);
    QVERIFY(item->isNewline());
    QVERIFY(!item->hasId);
    QCOMPARE(item->id, quint64(0));
    QCOMPARE(item->display.mode, 0);
    QCOMPARE(item->parent, parentItem);
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), text);

    f.stack.undo();
    QCOMPARE(parentItem->children.size(), count);
    QCOMPARE(f.encoding(), encodeText(roleTree));
}

void TestEditorModel::insertRowRefused()
{
    Fixture f(roleTree);
    QVERIFY(!f.model.insertRow(-1, QModelIndex()));
    QVERIFY(!f.model.insertRow(0, f.index({ 0 })));
    QVERIFY(!f.model.insertRow(0, f.index({ 1 })));
    Item *tag = makeItem(Tag);
    QVERIFY(!f.model.insertRow(-1, QModelIndex(), tag).isValid());
    delete tag;
    QCOMPARE(f.stack.count(), 0);
}

void TestEditorModel::insertRowUnderEnumValue()
{
    Fixture f(roleTree);
    const QByteArray before = f.encoding();
    QVERIFY(!f.model.insertRow(0, f.index({ 0, 1, 0 })));
    const QModelIndex result = f.model.insertRow(0, f.index({ 0, 1, 0 }), nullptr);
    QVERIFY(!result.isValid());
    QCOMPARE(f.stack.count(), 0);
    QCOMPARE(f.encoding(), before);
}

void TestEditorModel::insertTag_data()
{
    QTest::addColumn<QList<int>>("parentPath");
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("expectedRow");

    QTest::newRow("root, row 2") << QList<int> {} << 2 << 2;
    QTest::newRow("root, past the end") << QList<int> {} << 50 << 6;
    QTest::newRow("tag Hex") << QList<int> { 5 } << 0 << 5;
    QTest::newRow("enum list of Hex") << QList<int> { 5, 0 } << 2 << 5;
    QTest::newRow("enum value of Hex") << QList<int> { 5, 0, 1 } << 0 << 5;
    QTest::newRow("bit list of Mode") << QList<int> { 0, 0 } << 1 << 0;
}

void TestEditorModel::insertTag()
{
    QFETCH(QList<int>, parentPath);
    QFETCH(int, row);
    QFETCH(int, expectedRow);

    Fixture f(roleTree);
    QModelIndex parent;
    for (int r : parentPath)
        parent = f.model.index(r, 0, parent);
    Item *tag = makeItem(Tag, QStringLiteral("New"), true, 0x3009);
    tag->appendChild(makeItem(Enums));
    tag->children.first()->appendChild(makeItem(Enum, QStringLiteral("V"), true, 1));
    const QModelIndex index = f.model.insertRow(row, parent, tag);
    QVERIFY(index.isValid());
    QCOMPARE(index.row(), expectedRow);
    QVERIFY(!index.parent().isValid());
    QCOMPARE(f.model.index2item(index), tag);
    QCOMPARE(f.at({ expectedRow }), tag);
    QCOMPARE(tag->parent, f.root());
    QCOMPARE(f.root()->children.size(), 7);
    QCOMPARE(f.stack.text(0), QStringLiteral("Insert tag"));
    f.stack.undo();
    QCOMPARE(f.encoding(), encodeText(roleTree));
    f.stack.redo();
    QCOMPARE(f.at({ expectedRow }), tag);
}

void TestEditorModel::insertValueIntoExistingList()
{
    Fixture f(roleTree);
    Item *value = makeItem(Enum, QStringLiteral("Mid"), true, 9);
    const QModelIndex index = f.model.insertRow(1, f.index({ 0, 1 }), value);
    QVERIFY(index.isValid());
    QCOMPARE(index.row(), 1);
    QCOMPARE(f.at({ 0, 1, 1 }), value);
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), QStringLiteral("Insert enum"));
}

// Edge case: pasting an enumeration value into a tag without a list makes the list first, as an
// undo step of its own.
void TestEditorModel::insertValueCreatesMissingList()
{
    Fixture f(roleTree);
    const QByteArray before = f.encoding();
    Item *value = makeItem(Enum, QStringLiteral("Only"), true, 0);
    QTest::ignoreMessage(QtDebugMsg, "insertion point modified");
    const QModelIndex index = f.model.insertRow(4, QModelIndex(), value);
    QVERIFY(index.isValid());
    Item *tag = f.at({ 4 });
    QCOMPARE(tag->children.size(), 1);
    QCOMPARE(tag->children.first()->type, Enums);
    QCOMPARE(tag->children.first()->children.first(), value);
    QCOMPARE(f.model.index2item(index.parent()), tag->children.first());
    QCOMPARE(f.stack.count(), 2);
    QCOMPARE(f.stack.text(0), QStringLiteral("Insert item"));
    QCOMPARE(f.stack.text(1), QStringLiteral("Insert enum"));
    f.stack.undo();
    QCOMPARE(tag->children.size(), 1);
    QVERIFY(tag->children.first()->children.isEmpty());
    f.stack.undo();
    QCOMPARE(f.encoding(), before);
}

void TestEditorModel::insertValueFromOtherList()
{
    // A bit handed to an enumeration list goes to the bit list of the same tag, at its end.
    Fixture f(roleTree);
    Item *bit = makeItem(Bit, QStringLiteral("Extra"), true, 16);
    QTest::ignoreMessage(QtDebugMsg, "insertion point modified");
    const QModelIndex index = f.model.insertRow(0, f.index({ 0, 1 }), bit);
    QVERIFY(index.isValid());
    QCOMPARE(f.at({ 0, 0, 3 }), bit);
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), QStringLiteral("Insert bit"));
}

void TestEditorModel::insertListItemWithoutList()
{
    Fixture f(roleTree);
    Item *list = makeItem(Bits);
    list->appendChild(makeItem(Bit, QStringLiteral("F"), true, 1));
    const QModelIndex index = f.model.insertRow(0, f.index({ 5, 0 }), list);
    QVERIFY(index.isValid());
    // Bits (4) go before enums (2).
    QCOMPARE(f.at({ 5, 0 }), list);
    QCOMPARE(f.at({ 5, 1 })->type, Enums);
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), QStringLiteral("Insert item"));
}

// Edge case: a pasted enumeration list merges into the existing one as one "Merge data" step.
void TestEditorModel::insertListItemMerges()
{
    Fixture f(roleTree);
    const QByteArray before = f.encoding();
    Item *list = makeItem(Enums);
    list->appendChild(makeItem(Enum, QStringLiteral("Max"), true, 3));
    list->appendChild(makeItem(Enum, QString(), false, 0, QStringLiteral(" note ")));
    list->appendChild(makeItem(Enum, QStringLiteral("Min"), true, 4));
    Item *first = list->children.at(0);
    const QModelIndex index = f.model.insertRow(0, f.index({ 0 }), list); // list is deleted here
    QVERIFY(index.isValid());
    Item *existing = f.at({ 0, 1 });
    QCOMPARE(f.model.index2item(index), existing);
    QCOMPARE(existing->children.size(), 7);
    QCOMPARE(existing->children.at(4), first);
    QCOMPARE(existing->children.at(5)->comment, QStringLiteral(" note "));
    QCOMPARE(existing->children.at(6)->name, QStringLiteral("Min"));
    QCOMPARE(first->parent, existing);
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), QStringLiteral("Merge data"));
    QCOMPARE(f.stack.command(0)->childCount(), 3);
    f.stack.undo();
    QCOMPARE(f.encoding(), before);
    f.stack.redo();
    QCOMPARE(existing->children.size(), 7);
}

void TestEditorModel::insertListItemMergesAtRow()
{
    // Given the list itself as the parent, the values go in at the row.
    Fixture f(roleTree);
    Item *list = makeItem(Enums);
    list->appendChild(makeItem(Enum, QStringLiteral("X"), true, 10));
    list->appendChild(makeItem(Enum, QStringLiteral("Y"), true, 11));
    QVERIFY(f.model.insertRow(1, f.index({ 0, 1 }), list).isValid());
    QCOMPARE(f.at({ 0, 1, 1 })->name, QStringLiteral("X"));
    QCOMPARE(f.at({ 0, 1, 2 })->name, QStringLiteral("Y"));
    QCOMPARE(f.at({ 0, 1, 3 })->name, QStringLiteral("Low"));
}

void TestEditorModel::insertRootRefused()
{
    Fixture f(roleTree);
    Item *root = makeItem(Root);
    QVERIFY(!f.model.insertRow(0, QModelIndex(), root).isValid());
    Item *odd = makeItem(ItemType(7));
    QVERIFY(!f.model.insertRow(0, QModelIndex(), odd).isValid());
    // Lists and values need a tag around the insertion point.
    Item *list = makeItem(Enums);
    QVERIFY(!f.model.insertRow(99, QModelIndex(), list).isValid());
    Item *value = makeItem(Enum, QStringLiteral("V"), true, 1);
    QVERIFY(!f.model.insertRow(99, QModelIndex(), value).isValid());
    QCOMPARE(f.stack.count(), 0);
    // The caller still owns refused items.
    delete root;
    delete odd;
    delete list;
    delete value;
}

void TestEditorModel::insertList_data()
{
    QTest::addColumn<QList<int>>("at");
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("tagRow");
    QTest::addColumn<int>("listRow");

    QTest::newRow("bits into Hex from the tag") << QList<int> { 5 } << int(Bits) << 5 << 0;
    QTest::newRow("bits into Hex from a value") << QList<int> { 5, 0, 2 } << int(Bits) << 5 << 0;
    QTest::newRow("enums into Unassigned") << QList<int> { 4 } << int(Enums) << 4 << 0;
    QTest::newRow("bits into nameless tag") << QList<int> { 3 } << int(Bits) << 3 << 0;
}

void TestEditorModel::insertList()
{
    QFETCH(QList<int>, at);
    QFETCH(int, kind);
    QFETCH(int, tagRow);
    QFETCH(int, listRow);

    Fixture f(roleTree);
    QModelIndex index;
    for (int r : at)
        index = f.model.index(r, 0, index);
    const QModelIndex list = f.model.insertList(index, ItemType(kind));
    QVERIFY(list.isValid());
    QCOMPARE(list.row(), listRow);
    QCOMPARE(list.parent(), f.model.index(tagRow, 0));
    QCOMPARE(int(f.model.index2item(list)->type), kind);
    QVERIFY(f.model.index2item(list)->children.isEmpty());
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), QStringLiteral("Insert item"));
    f.stack.undo();
    QCOMPARE(f.encoding(), encodeText(roleTree));
}

void TestEditorModel::insertListExisting()
{
    Fixture f(roleTree);
    QCOMPARE(f.model.insertList(f.index({ 0, 0, 2 }), Enums), f.index({ 0, 1 }));
    QCOMPARE(f.model.insertList(f.index({ 0 }), Bits), f.index({ 0, 0 }));
    QCOMPARE(f.stack.count(), 0);
}

void TestEditorModel::insertListRefused()
{
    Fixture f(roleTree);
    QVERIFY(!f.model.insertList(QModelIndex(), Enums).isValid());
    QVERIFY(!f.model.insertList(f.index({ 0 }), Enum).isValid());
    QCOMPARE(f.stack.count(), 0);
}

// The rows from the top down to `index`.
static QList<int> path(QModelIndex index)
{
    QList<int> rows;
    for (; index.isValid(); index = index.parent())
        rows.prepend(index.row());
    return rows;
}

// Insert after puts the new row below the selection, or at the end of a selected list, or below
// the last row; Insert before above it, or at the start of a selected list, or above the first.
void TestEditorModel::insertAfterAndBefore()
{
    Fixture f(roleTree);
    QCOMPARE(path(f.model.insertAfter(f.index({ 3 }))), QList<int>({ 4 }));
    QCOMPARE(f.at({ 4 })->type, Tag);
    QVERIFY(f.at({ 4 })->name.isEmpty());
    QCOMPARE(path(f.model.insertBefore(f.index({ 3 }))), QList<int>({ 3 }));
    QCOMPARE(f.model.rowCount(), 8);

    // row 0's enumeration list holds four rows; the bit list three
    QCOMPARE(path(f.model.insertAfter(f.index({ 0, 1 }))), QList<int>({ 0, 1, 4 }));
    QCOMPARE(f.at({ 0, 1, 4 })->type, Enum);
    QCOMPARE(path(f.model.insertBefore(f.index({ 0, 0 }))), QList<int>({ 0, 0, 0 }));
    QCOMPARE(f.at({ 0, 0, 0 })->type, Bit);
    QCOMPARE(f.at({ 0, 0, 1 })->name, QStringLiteral("Manual"));
    // a value gets its sibling next to it
    QCOMPARE(path(f.model.insertAfter(f.index({ 0, 0, 1 }))), QList<int>({ 0, 0, 2 }));

    QCOMPARE(path(f.model.insertAfter(QModelIndex())), QList<int>({ 8 }));
    QCOMPARE(path(f.model.insertBefore(QModelIndex())), QList<int>({ 0 }));
    QCOMPARE(f.model.rowCount(), 10);
    QCOMPARE(f.at({ 1 })->name, QStringLiteral("Mode"));
    QCOMPARE(f.stack.count(), 7);
}

// Into an empty document both put the first tag at row 0.
void TestEditorModel::insertBeforeIntoEmptyDocument()
{
    Fixture f(document(""));
    QCOMPARE(path(f.model.insertBefore(QModelIndex())), QList<int>({ 0 }));
    QCOMPARE(f.model.rowCount(), 1);
    f.stack.undo();
    QCOMPARE(path(f.model.insertAfter(QModelIndex())), QList<int>({ 0 }));
    QCOMPARE(f.at({ 0 })->type, Tag);
}

// Edge case: a bit list inserted into a tag that has only an enumeration list comes first.
void TestEditorModel::bitListGoesBeforeEnumList()
{
    Fixture f(document("  <tag name=\"T\" id=\"0x1001\">\n"
                       "    <enums><enum name=\"A\" id=\"0\"/></enums>\n"
                       "  </tag>\n"));
    const QModelIndex bits = f.model.insertList(f.index({ 0 }), Bits);
    QCOMPARE(bits.row(), 0);
    QCOMPARE(f.at({ 0, 0 })->type, Bits);
    QCOMPARE(f.at({ 0, 1 })->type, Enums);
    f.stack.undo();
    // The same through an inserted list item.
    Item *list = makeItem(Bits);
    list->appendChild(makeItem(Bit, QStringLiteral("B"), true, 1));
    QCOMPARE(f.model.insertRow(0, f.index({ 0, 0, 0 }), list).row(), 0);
    QCOMPARE(f.at({ 0, 0 }), list);
    QCOMPARE(f.at({ 0, 1 })->type, Enums);
}

// ---------------------------------------------------------------------------------------------
// Deletions

void TestEditorModel::removeRow_data()
{
    QTest::addColumn<QList<int>>("parentPath");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("text");

    QTest::newRow("tag") << QList<int> {} << 0 << QStringLiteral("Remove tag");
    QTest::newRow("comment line") << QList<int> {} << 1 << QString();
    QTest::newRow("blank line") << QList<int> {} << 2 << QString();
    QTest::newRow("bit list") << QList<int> { 0 } << 0 << QString();
    QTest::newRow("enum list") << QList<int> { 0 } << 1 << QString();
    QTest::newRow("enum value") << QList<int> { 0, 1 } << 3 << QStringLiteral("Remove enum");
    QTest::newRow("nameless enum value") << QList<int> { 5, 0 } << 2 << QStringLiteral("Remove enum");
    QTest::newRow("bit") << QList<int> { 0, 0 } << 0 << QStringLiteral("Remove bit");
}

void TestEditorModel::removeRow()
{
    QFETCH(QList<int>, parentPath);
    QFETCH(int, row);
    QFETCH(QString, text);

    Fixture f(roleTree);
    const QByteArray before = f.encoding();
    const QString dump = f.dump();
    QModelIndex parent;
    for (int r : parentPath)
        parent = f.model.index(r, 0, parent);
    Item *parentItem = f.model.index2item(parent);
    Item *item = parentItem->child(row);
    const int count = parentItem->children.size();
    QSignalSpy removed(&f.model, &QAbstractItemModel::rowsRemoved);
    QVERIFY(f.model.removeRow(row, parent));
    QCOMPARE(removed.count(), 1);
    QCOMPARE(removed.first().at(1).toInt(), row);
    QCOMPARE(parentItem->children.size(), count - 1);
    QVERIFY(!parentItem->children.contains(item));
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), text);
    f.stack.undo();
    QCOMPARE(parentItem->child(row), item);
    QCOMPARE(f.encoding(), before);
    QCOMPARE(f.dump(), dump);
}

void TestEditorModel::removeRowRefused()
{
    Fixture f(roleTree);
    QVERIFY(!f.model.removeRow(-1, QModelIndex()));
    QVERIFY(!f.model.removeRow(6, QModelIndex()));
    QVERIFY(!f.model.removeRow(0, f.index({ 4 })));
    QCOMPARE(f.stack.count(), 0);
}

void TestEditorModel::prepareRemoveRow()
{
    Fixture f(roleTree);
    QVERIFY(!f.model.prepareRemoveRow(-1, QModelIndex()));
    QVERIFY(!f.model.prepareRemoveRow(2, f.index({ 0 })));
    std::unique_ptr<CommandDelete> command(f.model.prepareRemoveRow(1, f.index({ 0 })));
    QVERIFY(command);
    // Not pushed and not run.
    QCOMPARE(f.stack.count(), 0);
    QCOMPARE(f.at({ 0 })->children.size(), 2);
    QVERIFY(command->text().isEmpty());
}

// ---------------------------------------------------------------------------------------------
// Whole document

void TestEditorModel::setTagsClearsHistory()
{
    Fixture f(roleTree);
    QVERIFY(f.model.setData(f.index({ 0 }), QStringLiteral("Other")));
    QCOMPARE(f.stack.count(), 1);
    QSignalSpy reset(&f.model, &QAbstractItemModel::modelReset);
    Item *root = parseText(document("  <tag name=\"Only\" id=\"0x1001\"/>\n"));
    f.model.setTags(root);
    QCOMPARE(f.stack.count(), 0);
    QCOMPARE(f.model.root(), root);
    QCOMPARE(reset.count(), 1);
    QCOMPARE(f.model.rowCount(), 1);
    // The same root again changes nothing.
    f.model.setTags(root);
    QCOMPARE(reset.count(), 1);
    QCOMPARE(f.model.root(), root);
}

void TestEditorModel::clearModel()
{
    Fixture f(roleTree);
    f.model.clear();
    QVERIFY(!f.model.root());
    QCOMPARE(f.model.rowCount(), 0);
    QCOMPARE(f.stack.count(), 0);
}

void TestEditorModel::undoableClear()
{
    Fixture f(roleTree);
    const QByteArray before = f.encoding();
    Item *old = f.root();
    f.model.undoableClear(f.index({ 2 }));
    QCOMPARE(f.stack.count(), 1);
    QCOMPARE(f.stack.text(0), QStringLiteral("New"));
    QVERIFY(f.root() != old);
    QCOMPARE(f.root()->type, Root);
    QCOMPARE(f.model.rowCount(), 0);
    f.stack.undo();
    QCOMPARE(f.root(), old);
    QCOMPARE(f.encoding(), before);
}

void TestEditorModel::undoableClearOfEmptyTree()
{
    Fixture f(document(""));
    f.model.undoableClear(QModelIndex());
    QCOMPARE(f.stack.count(), 0);
    Fixture none;
    none.model.undoableClear(QModelIndex());
    QCOMPARE(none.stack.count(), 0);
    QVERIFY(!none.model.root());
}

void TestEditorModel::undoableSetTags()
{
    Fixture f(roleTree);
    Item *old = f.root();
    Item *fresh = parseText(document("  <tag name=\"Only\" id=\"0x1001\"/>\n"));
    f.model.undoableSetTags(fresh, QModelIndex());
    QCOMPARE(f.stack.text(0), QStringLiteral("Replace data"));
    QCOMPARE(f.root(), fresh);
    f.stack.undo();
    QCOMPARE(f.root(), old);
    f.stack.redo();
    QCOMPARE(f.root(), fresh);

    // Into an empty model as well.
    Fixture none;
    Item *first = parseText(document("  <tag name=\"A\" id=\"0x1001\"/>\n"));
    none.model.undoableSetTags(first, QModelIndex());
    QCOMPARE(none.model.root(), first);
    none.stack.undo();
    QVERIFY(!none.model.root());
    none.stack.redo();
    QCOMPARE(none.model.root(), first);
}

// ---------------------------------------------------------------------------------------------
// Caches

void TestEditorModel::cachesFollowChanges()
{
    Fixture f(document("  <tag name=\"A\" id=\"0x1001\"/>\n"
                       "  <tag name=\"B\" id=\"0x1002\"/>\n"
                       "  <tag name=\"C\" id=\"0x1003\"/>\n"));
    QVERIFY(!f.model.data(f.index({ 1 }, 0), Qt::BackgroundRole).isValid());
    QCOMPARE(f.model.findRow(f.at({ 2 })), 2);
    // A rename into a collision shows at once on both siblings.
    QVERIFY(f.model.setData(f.index({ 1 }), QStringLiteral("A")));
    QCOMPARE(f.model.data(f.index({ 0 }, 0), Qt::BackgroundRole).value<QColor>(), QColor(192, 0, 0));
    QCOMPARE(f.model.data(f.index({ 1 }, 0), Qt::BackgroundRole).value<QColor>(), QColor(192, 0, 0));
    QVERIFY(!f.model.data(f.index({ 1 }, 1), Qt::BackgroundRole).isValid());
    // So does a code change.
    QVERIFY(f.model.setData(f.index({ 2 }, 1), QStringLiteral("0x1001")));
    QCOMPARE(f.model.data(f.index({ 0 }, 1), Qt::BackgroundRole).value<QColor>(), QColor(192, 0, 0));
    QCOMPARE(f.model.data(f.index({ 2 }, 1), Qt::BackgroundRole).value<QColor>(), QColor(192, 0, 0));
    QVERIFY(!f.model.data(f.index({ 1 }, 1), Qt::BackgroundRole).isValid());
    // Rows move with insertions and deletions.
    Item *c = f.at({ 2 });
    QVERIFY(f.model.insertRow(0, QModelIndex()));
    QCOMPARE(f.model.findRow(c), 3);
    QCOMPARE(f.model.item2index(c).row(), 3);
    QVERIFY(f.model.removeRow(1, QModelIndex()));
    QCOMPARE(f.model.findRow(c), 2);
    QCOMPARE(f.model.data(f.index({ 2 }, 1), Qt::BackgroundRole).isValid(), false);
    f.stack.undo();
    QCOMPARE(f.model.findRow(c), 3);
    QCOMPARE(f.model.data(f.index({ 3 }, 1), Qt::BackgroundRole).value<QColor>(), QColor(192, 0, 0));
}

void TestEditorModel::collisionCacheMatchesItem()
{
    Fixture f;
    Item *root = parseFile(QStringLiteral(ZAT16_TEST_DATA "/editor/editing.zatdef"));
    QVERIFY(root);
    f.model.setTags(root);
    // Both directions: flags looked up from the last sibling first, then from the first.
    QList<const Item *> items;
    QList<const Item *> queue = { root };
    while (!queue.isEmpty()) {
        const Item *item = queue.takeFirst();
        for (const Item *child : item->children) {
            items << child;
            queue << child;
        }
    }
    for (auto it = items.crbegin(); it != items.crend(); ++it)
        QCOMPARE(f.model.findCollision(*it), (*it)->findCollision());
    f.model.setFixedFont(QFont());
    QVERIFY(f.model.setData(f.index({ 0 }, 2), QStringLiteral("refresh")));
    int collisions = 0;
    for (const Item *item : items) {
        QCOMPARE(f.model.findCollision(item), item->findCollision());
        if (item->findCollision())
            ++collisions;
    }
    QVERIFY(collisions >= 4);
    // An item outside the tree has no collisions.
    Item loose;
    QCOMPARE(int(f.model.findCollision(&loose)), 0);
}

void TestEditorModel::rowCacheMatchesItem()
{
    Item *root = parseFile(QStringLiteral(ZAT16_TEST_DATA "/editor/editing.zatdef"));
    QVERIFY(root);
    Fixture f(root);
    QList<const Item *> queue = { root };
    QList<const Item *> items;
    while (!queue.isEmpty()) {
        const Item *item = queue.takeFirst();
        for (const Item *child : item->children) {
            items << child;
            queue << child;
        }
    }
    for (auto it = items.crbegin(); it != items.crend(); ++it)
        QCOMPARE(f.model.findRow(*it), (*it)->row());
    QVERIFY(f.model.removeRow(0, QModelIndex()));
    for (const Item *item : items) {
        if (item->parent && item->parent->children.contains(const_cast<Item *>(item)))
            QCOMPARE(f.model.findRow(item), item->row());
    }
}

void TestEditorModel::collisionCountsFollowEdits_data()
{
    QTest::addColumn<quint32>("seed");
    QTest::newRow("seed 3") << 3u;
    QTest::newRow("seed 1234") << 1234u;
}

// Names and codes from small sets, so that edits make and break collisions all the time; after
// every step the flags of every item in the tree, and of an item just taken out of it, are what
// the items themselves say, and the rows are right.
void TestEditorModel::collisionCountsFollowEdits()
{
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    auto bounded = [&](int n) { return int(random.bounded(quint32(n))); };
    const QStringList names = { QString(), QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C") };

    QByteArray body;
    for (int i = 0; i < 60; ++i) {
        body += "  <tag name=\"T" + QByteArray::number(i % 25) + "\" id=\"0x" + QByteArray::number(0x1000 + i % 30, 16)
            + "\">\n    <enums>\n";
        for (int k = 0; k < 6; ++k)
            body += "      <enum name=\"" + names.at(1 + k % 3).toLatin1() + "\" id=\"" + QByteArray::number(k % 4)
                + "\"/>\n";
        body += "    </enums>\n  </tag>\n";
    }
    Fixture f(document(body));

    auto allItems = [&]() {
        QList<Item *> items;
        QList<Item *> queue = { f.root() };
        while (!queue.isEmpty()) {
            Item *item = queue.takeFirst();
            for (Item *child : item->children) {
                items << child;
                queue << child;
            }
        }
        return items;
    };

    for (int step = 0; step < 400; ++step) {
        const QList<Item *> items = allItems();
        Item *item = items.at(bounded(int(items.size())));
        const QModelIndex index = f.model.item2index(item);
        const int op = bounded(100);
        if (op < 35) {
            f.model.setData(index.siblingAtColumn(0), names.at(bounded(4)));
        } else if (op < 70) {
            const QString code = bounded(5) == 0 ? QString() : QStringLiteral("0x%1").arg(0x1000 + bounded(4), 0, 16);
            f.model.setData(index.siblingAtColumn(1), code);
        } else if (op < 78) {
            ItemData data = *item;
            data.name = names.at(bounded(4));
            data.hasId = bounded(3) != 0;
            data.id = quint64(bounded(3));
            QVERIFY(f.model.setItemData(index, data));
        } else if (op < 84) {
            // The removed item, held by the command, still points at its old parent.
            Item *victim = f.model.index2item(index);
            QVERIFY(f.model.removeRow(index.row(), index.parent()));
            QCOMPARE(f.model.findCollision(victim), victim->findCollision());
        } else if (op < 87) {
            f.model.insertRow(index.row(), index.parent());
        } else if (op < 95) {
            f.stack.undo();
        } else {
            f.stack.redo();
        }
        for (const Item *each : allItems()) {
            QCOMPARE(f.model.findCollision(each), each->findCollision());
            QCOMPARE(f.model.findRow(each), each->row());
        }
    }
}

// Entries that break a generated output are coloured amber where no other mark colours a cell;
// the rows that gain or lose the mark are repainted, with the colour roles alone, their ranges
// reaching one past the last column as the model's other repaints do.
void TestEditorModel::outputMarksRepaintTheirRows()
{
    QByteArray body;
    for (int i = 0; i < 40; ++i)
        body += QStringLiteral("  <tag name=\"T%1\" id=\"0x1%2\"/>\n").arg(i).arg(i, 3, 10, QLatin1Char('0')).toUtf8();
    Fixture f(document(body + "  <tag name=\"Same\" id=\"0x2001\"/>\n  <tag name=\"Same\" id=\"0x2002\"/>\n"));
    const Item *root = f.model.root();
    QSignalSpy spy(&f.model, &QAbstractItemModel::dataChanged);
    const QColor amber(255, 191, 71);

    f.model.setOutputMarks({ root->child(3), root->child(40) });
    QCOMPARE(spy.count(), 2);
    QStringList lines = signalText(spy).split(QLatin1Char('\n'));
    lines.sort();
    QCOMPARE(lines, QStringList({ "dataChanged 3,0-3,3 T3", "dataChanged 40,0-40,3 Same" }));
    for (const QList<QVariant> &arguments : std::as_const(spy))
        QCOMPARE(arguments.at(2).value<QList<int>>(), QList<int>({ Qt::BackgroundRole, Qt::ForegroundRole }));
    QCOMPARE(f.model.data(f.model.index(3, 0), Qt::BackgroundRole).value<QColor>(), amber);
    QCOMPARE(f.model.data(f.model.index(3, 2), Qt::ForegroundRole).value<QColor>(), QColor(Qt::black));
    QVERIFY(!f.model.data(f.model.index(4, 0), Qt::BackgroundRole).isValid());
    // The name collision's red comes first; the code cell, which it leaves alone, is amber.
    QCOMPARE(f.model.data(f.model.index(40, 0), Qt::BackgroundRole).value<QColor>(), QColor(192, 0, 0));
    QCOMPARE(f.model.data(f.model.index(40, 1), Qt::BackgroundRole).value<QColor>(), amber);

    // The same marks again repaint nothing; many changes repaint the top-level rows at once.
    spy.clear();
    f.model.setOutputMarks({ root->child(3), root->child(40) });
    QCOMPARE(spy.count(), 0);
    QList<const Item *> all;
    for (const Item *tag : root->children)
        all.append(tag);
    f.model.setOutputMarks(all);
    QCOMPARE(signalText(spy), QStringLiteral("dataChanged 0,0-42,3 (two items) T0"));

    // A removed entry loses its mark; a new document has none.
    QVERIFY(f.model.removeRow(5));
    QVERIFY(!f.model.hasOutputMark(all.at(5)));
    QVERIFY(f.model.hasOutputMark(root->child(5)));
    f.stack.undo();
    QVERIFY(f.model.hasOutputMark(all.at(4)));
    QVERIFY(!f.model.hasOutputMark(root->child(5)));
    f.model.setTags(parseText(document("  <tag name=\"A\" id=\"0x1001\"/>\n")));
    QVERIFY(!f.model.hasOutputMark(all.at(4)));
    QVERIFY(!f.model.data(f.model.index(0, 0), Qt::BackgroundRole).isValid());
}

QTEST_MAIN(TestEditorModel)
#include "tst_editormodel.moc"
