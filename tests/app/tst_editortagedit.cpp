#include "editortagedit.h"
#include "editortagmodel.h"
#include "item.h"
#include "tagvalidator.h"

#include <QAbstractItemModelTester>
#include <QLineEdit>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace ZAT16;

class TestEditorTagEdit : public QObject
{
    Q_OBJECT

private slots:
    // EditorTagModel
    void modelShape();
    void modelTester();
    void rowTexts_data();
    void rowTexts();
    void rowDataTypes_data();
    void rowDataTypes();
    void dataTypeRows_data();
    void dataTypeRows();
    void editRoleIsTheTypedText();

    // EditorTagEdit
    void construction();
    void tag_data();
    void tag();
    void typingSelectsTheRow_data();
    void typingSelectsTheRow();
    void typingKeepsTextAndCursor();
    void choosingIntegerThenString();
    void choosingPointThenRect();
    void requestCodeSelectsNoRow();
    void choosingWithoutACode_data();
    void choosingWithoutACode();
    void tooLargeCodeChangesNoSelection();
    void choosingByKeyboard();
    void validatorAndMessages();
    void setItemReplacesTheValidator();
    void nonHexCharactersAreRefused();
};

void TestEditorTagEdit::modelShape()
{
    EditorTagModel model;
    QCOMPARE(model.rowCount(), 13);
    QCOMPARE(model.columnCount(), 1);
    QCOMPARE(model.rowCount(model.index(0, 0)), 0);
    QVERIFY(!model.parent(model.index(3, 0)).isValid());
    QCOMPARE(model.flags(model.index(0, 0)), Qt::ItemIsSelectable | Qt::ItemIsEnabled);
    QVERIFY(!(model.flags(model.index(12, 0)) & Qt::ItemIsEditable));
    // Request, answer and message are defined but not offered.
    QVERIFY(!model.index(13, 0).isValid());
    QVERIFY(!model.index(15, 0).isValid());
    QVERIFY(!model.data(model.index(0, 0), Qt::ToolTipRole).isValid());
}

void TestEditorTagEdit::modelTester()
{
    EditorTagModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setEditData("1005");
}

void TestEditorTagEdit::rowTexts_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("icon");

    QTest::newRow("0") << 0 << "0 - Binary"
                       << ":/icons/i16_data.png";
    QTest::newRow("1") << 1 << "1 - Integer"
                       << ":/icons/i16_int.png";
    QTest::newRow("2") << 2 << "2 - Bool"
                       << ":/icons/i16_bool.png";
    QTest::newRow("3") << 3 << "3 - String"
                       << ":/icons/i16_string.png";
    QTest::newRow("4") << 4 << "4 - Date"
                       << ":/icons/i16_date.png";
    QTest::newRow("5") << 5 << "5 - Time"
                       << ":/icons/i16_time.png";
    QTest::newRow("6") << 6 << "6 - DateTime"
                       << ":/icons/i16_datetime.png";
    QTest::newRow("7") << 7 << "7 - BitArray"
                       << ":/icons/i16_list_bullets.png";
    QTest::newRow("8") << 8 << "80 - Point"
                       << ":/icons/i16_point.png";
    QTest::newRow("9") << 9 << "81 - Rect"
                       << ":/icons/i16_rect.png";
    QTest::newRow("10") << 10 << "82 - Size"
                        << ":/icons/i16_size.png";
    QTest::newRow("11") << 11 << "9 - Network address"
                        << ":/icons/i16_network.png";
    QTest::newRow("12") << 12 << "C - List"
                        << ":/icons/i16_list.png";
}

void TestEditorTagEdit::rowTexts()
{
    QFETCH(int, row);
    QFETCH(QString, text);
    QFETCH(QString, icon);

    EditorTagModel model;
    const QModelIndex index = model.index(row, 0);
    QCOMPARE(model.data(index, Qt::DisplayRole).toString(), text);
    const QIcon decoration = qvariant_cast<QIcon>(model.data(index, Qt::DecorationRole));
    QVERIFY(!decoration.isNull());
    // The icon is the resource file of the row.
    const QImage expected(icon);
    QVERIFY2(!expected.isNull(), qPrintable(icon));
    QCOMPARE(decoration.pixmap(expected.size()).toImage().convertToFormat(QImage::Format_ARGB32),
             expected.convertToFormat(QImage::Format_ARGB32));
}

void TestEditorTagEdit::rowDataTypes_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("type");

    const int types[]
        = { 0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x80, 0x81, 0x82, 0x09, 0x0C, 0x0D, 0x0E, 0x0F };
    for (int row = 0; row < 16; ++row)
        QTest::addRow("row %d", row) << row << types[row];
    QTest::newRow("row -1") << -1 << -1;
    QTest::newRow("row 16") << 16 << -1;
}

void TestEditorTagEdit::rowDataTypes()
{
    QFETCH(int, row);
    QFETCH(int, type);
    QCOMPARE(EditorTagModel::rowDataType(row), type);
}

void TestEditorTagEdit::dataTypeRows_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("row");

    QTest::newRow("Binary") << 0 << 0;
    QTest::newRow("BitArray") << 7 << 7;
    QTest::newRow("8, the escape") << 8 << -1;
    QTest::newRow("NetworkAddress") << 9 << 11;
    QTest::newRow("10") << 10 << -1;
    QTest::newRow("11") << 11 << -1;
    QTest::newRow("List") << 12 << 12;
    QTest::newRow("Request") << 13 << 13;
    QTest::newRow("Answer") << 14 << 14;
    QTest::newRow("Message") << 15 << 15;
    QTest::newRow("16") << 16 << -1;
    QTest::newRow("0x7F") << 0x7F << -1;
    QTest::newRow("ExtPoint") << 0x80 << 8;
    QTest::newRow("ExtRect") << 0x81 << 9;
    QTest::newRow("ExtSize") << 0x82 << 10;
    QTest::newRow("0x83") << 0x83 << -1;
    QTest::newRow("0x8F") << 0x8F << -1;
    QTest::newRow("-1") << -1 << -1;
}

void TestEditorTagEdit::dataTypeRows()
{
    QFETCH(int, type);
    QFETCH(int, row);
    QCOMPARE(EditorTagModel::dataTypeRow(type), row);
}

void TestEditorTagEdit::editRoleIsTheTypedText()
{
    EditorTagModel model;
    QVERIFY(model.setData(model.index(4, 0), "0x1234", Qt::EditRole));
    QCOMPARE(model.editData(), QString("0x1234"));
    QCOMPARE(model.data(model.index(0, 0), Qt::EditRole).toString(), QString("0x1234"));
    QCOMPARE(model.data(model.index(12, 0), Qt::EditRole).toString(), QString("0x1234"));
    QVERIFY(!model.setData(model.index(4, 0), "other", Qt::DisplayRole));
    QCOMPARE(model.editData(), QString("0x1234"));
    model.setEditData("7");
    QCOMPARE(model.data(model.index(1, 0), Qt::EditRole).toString(), QString("7"));
}

void TestEditorTagEdit::construction()
{
    EditorTagEdit edit;
    QVERIFY(edit.isEditable());
    QCOMPARE(edit.insertPolicy(), QComboBox::NoInsert);
    QCOMPARE(edit.maxVisibleItems(), 13);
    QCOMPARE(edit.count(), 13);
    QVERIFY(qobject_cast<EditorTagModel *>(edit.model()));
    QCOMPARE(edit.model()->parent(), &edit);
    QCOMPARE(edit.currentText(), QString());
    QVERIFY(!edit.tagValidator());
    QVERIFY(!edit.validator());
}

void TestEditorTagEdit::tag_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("tag");

    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("digits") << "1005"
                            << "0x1005";
    QTest::newRow("0x") << "0x1005"
                        << "0x1005";
    QTest::newRow("0X") << "0X1005"
                        << "0X1005";
    QTest::newRow("x only") << "x1"
                            << "0xx1";
}

void TestEditorTagEdit::tag()
{
    QFETCH(QString, text);
    QFETCH(QString, tag);

    EditorTagEdit edit;
    edit.setTag(text);
    QCOMPARE(edit.currentText(), text);
    QCOMPARE(edit.tag(), tag);
}

void TestEditorTagEdit::typingSelectsTheRow_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("row");

    QTest::newRow("1005 Integer") << "1005" << 1;
    QTest::newRow("0x3001 String") << "0x3001" << 3;
    QTest::newRow("7fff BitArray") << "7fff" << 7;
    QTest::newRow("9001 Network address") << "9001" << 11;
    QTest::newRow("C001 List") << "C001" << 12;
    QTest::newRow("8012 Point") << "8012" << 8;
    QTest::newRow("8101 Rect") << "8101" << 9;
    QTest::newRow("82FF Size") << "82FF" << 10;
    QTest::newRow("8301 no row") << "8301" << -1;
    QTest::newRow("A001 no row") << "A001" << -1;
    QTest::newRow("D001 Request: no row") << "D001" << -1;
    QTest::newRow("E001 Answer: no row") << "E001" << -1;
    QTest::newRow("F001 Message: no row") << "F001" << -1;
}

void TestEditorTagEdit::typingSelectsTheRow()
{
    QFETCH(QString, typed);
    QFETCH(int, row);

    EditorTagEdit edit;
    edit.setCurrentIndex(5); // something else first
    edit.setTag(QString());
    QTest::keyClicks(edit.lineEdit(), typed);
    QCOMPARE(edit.currentText(), typed);
    QCOMPARE(edit.currentIndex(), row);
}

void TestEditorTagEdit::typingKeepsTextAndCursor()
{
    EditorTagEdit edit;
    QTest::keyClicks(edit.lineEdit(), "D05"); // 0x0D05, a binary tag
    QCOMPARE(edit.currentIndex(), 0);
    // Insert a digit in the middle, making a request code: the text and the cursor stay where
    // the user put them.
    edit.lineEdit()->setCursorPosition(1);
    QTest::keyClicks(edit.lineEdit(), "0");
    QCOMPARE(edit.currentText(), QString("D005"));
    QCOMPARE(edit.currentIndex(), -1);
    QCOMPARE(edit.lineEdit()->cursorPosition(), 2);
    // Replace the type digit: the row follows, text and cursor stay.
    edit.lineEdit()->setCursorPosition(0);
    QTest::keyClick(edit.lineEdit(), Qt::Key_Delete);
    QCOMPARE(edit.currentText(), QString("005"));
    QCOMPARE(edit.currentIndex(), 0);
    QTest::keyClicks(edit.lineEdit(), "1");
    QCOMPARE(edit.currentText(), QString("1005"));
    QCOMPARE(edit.currentIndex(), 1);
    QCOMPARE(edit.lineEdit()->cursorPosition(), 1);
}

void TestEditorTagEdit::choosingIntegerThenString()
{
    EditorTagEdit edit;
    QTest::keyClicks(edit.lineEdit(), "1005");
    QCOMPARE(edit.currentIndex(), 1);
    QSignalSpy texts(&edit, &QComboBox::editTextChanged);
    edit.setCurrentIndex(3);
    QCOMPARE(edit.currentText(), QString("0x3005"));
    QCOMPARE(edit.currentIndex(), 3);
    QCOMPARE(edit.tag(), QString("0x3005"));
    QCOMPARE(texts.size(), 1);
}

void TestEditorTagEdit::choosingPointThenRect()
{
    EditorTagEdit edit;
    QTest::keyClicks(edit.lineEdit(), "8012");
    QCOMPARE(edit.currentIndex(), 8);
    edit.setCurrentIndex(9);
    QCOMPARE(edit.currentText(), QString("0x8112"));
    QCOMPARE(edit.currentIndex(), 9);
    // Back to a normal type: the low twelve bits survive.
    edit.setCurrentIndex(2);
    QCOMPARE(edit.currentText(), QString("0x2112"));
    QCOMPARE(edit.currentIndex(), 2);
}

void TestEditorTagEdit::requestCodeSelectsNoRow()
{
    EditorTagEdit edit;
    QTest::keyClicks(edit.lineEdit(), "1005");
    QCOMPARE(edit.currentIndex(), 1);
    edit.lineEdit()->clear();
    QTest::keyClicks(edit.lineEdit(), "D005");
    QCOMPARE(edit.currentIndex(), -1);
    QCOMPARE(edit.currentText(), QString("D005"));
    QCOMPARE(edit.tag(), QString("0xD005"));
}

void TestEditorTagEdit::choosingWithoutACode_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("result");

    QTest::newRow("empty, String") << "" << 3 << "0x3000";
    QTest::newRow("empty, Rect") << "" << 9 << "0x8100";
    QTest::newRow("0x, Integer") << "0x" << 1 << "0x1000";
    QTest::newRow("x1, List") << "x1" << 12 << "0xC000";
    QTest::newRow("not hexadecimal, Date") << "zz" << 4 << "0x4000";
}

void TestEditorTagEdit::choosingWithoutACode()
{
    QFETCH(QString, text);
    QFETCH(int, row);
    QFETCH(QString, result);

    EditorTagEdit edit;
    edit.setCurrentIndex(6);
    edit.setTag(text);
    QCOMPARE(edit.currentText(), text);
    edit.setCurrentIndex(row);
    QCOMPARE(edit.currentText(), result);
    QCOMPARE(edit.currentIndex(), row);
}

void TestEditorTagEdit::tooLargeCodeChangesNoSelection()
{
    EditorTagEdit edit;
    QTest::keyClicks(edit.lineEdit(), "1005");
    QCOMPARE(edit.currentIndex(), 1);
    QTest::keyClicks(edit.lineEdit(), "0"); // 0x10050
    QCOMPARE(edit.currentText(), QString("10050"));
    QCOMPARE(edit.currentIndex(), 1);
    edit.setTag("0x3FFFF");
    QCOMPARE(edit.currentIndex(), 1);
    edit.setTag("0x10000");
    QCOMPARE(edit.currentIndex(), 1);
    edit.setTag("0xFFFF");
    QCOMPARE(edit.currentIndex(), -1); // a message code: no row offered
}

void TestEditorTagEdit::choosingByKeyboard()
{
    EditorTagEdit edit;
    QTest::keyClicks(edit.lineEdit(), "1005");
    QCOMPARE(edit.currentIndex(), 1);
    QTest::keyClick(&edit, Qt::Key_Down);
    QCOMPARE(edit.currentIndex(), 2);
    QCOMPARE(edit.currentText(), QString("0x2005"));
    QTest::keyClick(&edit, Qt::Key_Up);
    QCOMPARE(edit.currentIndex(), 1);
    QCOMPARE(edit.currentText(), QString("0x1005"));
}

void TestEditorTagEdit::validatorAndMessages()
{
    std::unique_ptr<Item> root(new Item);
    root->type = Root;
    auto *alpha = new Item;
    alpha->type = Tag;
    alpha->name = "alpha";
    alpha->id = 0x1001;
    alpha->hasId = true;
    auto *beta = new Item;
    beta->type = Tag;
    beta->name = "beta";
    beta->id = 0x1002;
    beta->hasId = true;
    root->appendChild(alpha);
    root->appendChild(beta);

    EditorTagEdit edit;
    edit.setItem(beta);
    QVERIFY(edit.tagValidator());
    QCOMPARE(edit.tagValidator()->item(), beta);
    QCOMPARE(edit.validator(), edit.tagValidator());
    QCOMPARE(edit.lineEdit()->validator(), edit.tagValidator());

    QSignalSpy messages(&edit, &EditorTagEdit::message);
    QTest::keyClicks(edit.lineEdit(), "10000");
    QVERIFY(!messages.isEmpty());
    QCOMPARE(messages.last().at(0).toString(), QString("Tag code out of range"));
    QVERIFY(!edit.hasAcceptableInput());

    edit.lineEdit()->clear();
    messages.clear();
    QTest::keyClicks(edit.lineEdit(), "1001");
    QCOMPARE(messages.last().at(0).toString(), QString("Tag code already exists"));
    QVERIFY(edit.hasAcceptableInput());

    QTest::keyClick(edit.lineEdit(), Qt::Key_Backspace);
    QTest::keyClicks(edit.lineEdit(), "3");
    QCOMPARE(edit.currentText(), QString("1003"));
    QCOMPARE(messages.last().at(0).toString(), QString());
    QVERIFY(edit.hasAcceptableInput());

    edit.setTag("0x");
    QVERIFY(!edit.hasAcceptableInput());
    edit.setTag(QString());
    QVERIFY(edit.hasAcceptableInput());
}

void TestEditorTagEdit::setItemReplacesTheValidator()
{
    EditorTagEdit edit;
    edit.setItem(nullptr);
    QPointer<TagValidator> first = edit.tagValidator();
    QVERIFY(first);
    edit.setItem(nullptr);
    QVERIFY(!first);
    QVERIFY(edit.tagValidator());
    QCOMPARE(edit.validator(), edit.tagValidator());

    // Only the new validator's messages arrive, once each.
    QSignalSpy messages(&edit, &EditorTagEdit::message);
    QTest::keyClicks(edit.lineEdit(), "x");
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.at(0).at(0).toString(), QString("Not a hexadecimal number"));
}

void TestEditorTagEdit::nonHexCharactersAreRefused()
{
    EditorTagEdit edit;
    edit.setItem(nullptr);
    QTest::keyClicks(edit.lineEdit(), "1g0-5 ");
    QCOMPARE(edit.currentText(), QString("105"));
}

QTEST_MAIN(TestEditorTagEdit)
#include "tst_editortagedit.moc"
