#include "editoritemeditdialog.h"
#include "editormodel.h"
#include "editortagedit.h"
#include "identifiervalidator.h"
#include "item.h"
#include "makeitem.h"
#include "numbervalidator.h"
#include "tagvalidator.h"
#include "ui_editoritemeditdialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTest>
#include <QTimer>
#include <QToolTip>
#include <QUndoStack>

#include <cstddef>
#include <memory>

using namespace ZAT16;

namespace {

using TestItems::makeItem;

// One apply() signal.
struct Applied {
    const Item *item;
    ItemData data;
};

QString describe(const ItemData &d)
{
    return QStringLiteral("type %1 id 0x%2 hasId %3 name \"%4\" comment \"%5\" display %6/%7 secure %8")
        .arg(d.type)
        .arg(d.id, 0, 16)
        .arg(d.hasId)
        .arg(d.name, d.comment)
        .arg(d.display.mode)
        .arg(d.display.digits)
        .arg(d.secure);
}

} // namespace

class TestEditorItemEditDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void form();
    void formFieldOrder();
    void formLabels_data();
    void formLabels();
    void displayModeEntries();

    void setDataTag();
    void setDataBit();
    void setDataEnum();
    void setDataUnknownDisplayMode();
    void setDataItemWithoutCode();
    void setDataNumbersThatCannotBeTypedBack_data();
    void setDataNumbersThatCannotBeTypedBack();
    void setDataReplacesValidators();

    void okWithoutChangeCloses();
    void okAfterApplyWithoutFurtherChangeCloses();
    void okWithRefusedFieldStaysOpen();
    void reservedNameIsRefused();
    void wideValueIsApplied();
    void leadingZeroValueIsDecimal();
    void cancelCloses();
    void applyTurnsCancelIntoClose();
    void commentIsEditedWithTheRest();
    void defaultDisablesDigitsAndKeepsThem();
    void otherDisplayModeTakesDigits();
    void setDataLeavesDigitsEnabledState();
    void tagCodeOutOfRangeIsRefused();
    void tagCodeFfffIsAccepted();
    void emptyTagCodeRemovesTheCode();
    void requestCodeIsTyped();
    void bitNumberMinusOneIsRefused();
    void bitNumberIsApplied();
    void negativeEnumValueIsSignExtended();
    void emptyValueIsRefused();
    void nameStartingWithDigitIsRefused();
    void duplicateNameIsOnlyAWarning();
    void secureFlagIsApplied();
    void resultIsOneUndoableChangeItem();
    void execOk();
    void execCancel();
    void popupMessageWithoutFocusShowsNothing();

private:
    // root { alpha 0x1001 { bits { b0 = 0, b1 = 1 }, enums { one = 1, two = 2 (hex, 4 digits) } },
    //        beta 0x1002 (hex, 4 digits, secure, comment "second"), nocode (no code) }
    EditorModel *m_model = nullptr;
    QUndoStack *m_stack = nullptr;
    Item *m_alpha = nullptr;
    Item *m_beta = nullptr;
    Item *m_nocode = nullptr;
    Item *m_b1 = nullptr;
    Item *m_one = nullptr;
    Item *m_two = nullptr;

    EditorItemEditDialog *m_dialog = nullptr;
    QList<Applied> m_applied;

    void openDialog(const Item *item, bool show = true);
    template<class T>
    T *field(const char *name) const
    {
        T *w = m_dialog->findChild<T *>(QLatin1String(name));
        Q_ASSERT(w);
        return w;
    }
    QLineEdit *nameEdit() const { return field<QLineEdit>("m_le_name"); }
    QLineEdit *valueEdit() const { return field<QLineEdit>("m_le_id"); }
    EditorTagEdit *tagEdit() const { return field<EditorTagEdit>("m_te_id"); }
    QComboBox *modeCombo() const { return field<QComboBox>("m_cb_display_mode"); }
    QSpinBox *digitsBox() const { return field<QSpinBox>("m_sb_digits"); }
    QCheckBox *secureBox() const { return field<QCheckBox>("m_ck_secure"); }
    QDialogButtonBox *buttons() const { return field<QDialogButtonBox>("m_buttunz"); }
    void click(QDialogButtonBox::StandardButton which) const;
    static void retype(QLineEdit *edit, const QString &text);
};

void TestEditorItemEditDialog::init()
{
    m_model = new EditorModel;
    m_stack = new QUndoStack;
    m_model->setUndoStack(m_stack);

    auto *root = makeItem(Root, QString(), false, 0);
    m_alpha = makeItem(Tag, "alpha", true, 0x1001);
    root->appendChild(m_alpha);
    auto *bits = makeItem(Bits, QString(), false, 0);
    m_alpha->appendChild(bits);
    bits->appendChild(makeItem(Bit, "b0", true, 0));
    m_b1 = makeItem(Bit, "b1", true, 1);
    bits->appendChild(m_b1);
    auto *enums = makeItem(Enums, QString(), false, 0);
    m_alpha->appendChild(enums);
    m_one = makeItem(Enum, "one", true, 1);
    enums->appendChild(m_one);
    m_two = makeItem(Enum, "two", true, 2);
    m_two->display = { 3, 4 };
    enums->appendChild(m_two);
    m_beta = makeItem(Tag, "beta", true, 0x1002);
    m_beta->display = { 3, 4 };
    m_beta->secure = true;
    m_beta->comment = "second";
    root->appendChild(m_beta);
    m_nocode = makeItem(Tag, "nocode", false, 0);
    root->appendChild(m_nocode);
    m_model->setTags(root);

    m_applied.clear();
    m_dialog = new EditorItemEditDialog;
    // What the main window does with the result.
    connect(m_dialog, &EditorItemEditDialog::apply, m_model, [this](const Item *item, const ItemData &data) {
        m_applied.append({ item, data });
        m_model->setItemData(m_model->item2index(item), data);
    });
}

void TestEditorItemEditDialog::cleanup()
{
    QToolTip::hideText();
    delete m_dialog;
    m_dialog = nullptr;
    delete m_model;
    delete m_stack;
}

void TestEditorItemEditDialog::openDialog(const Item *item, bool show)
{
    m_dialog->setData(item);
    if (show) {
        m_dialog->show();
        m_dialog->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_dialog));
    }
}

void TestEditorItemEditDialog::click(QDialogButtonBox::StandardButton which) const
{
    QPushButton *button = buttons()->button(which);
    QVERIFY(button);
    QTest::mouseClick(button, Qt::LeftButton);
}

void TestEditorItemEditDialog::retype(QLineEdit *edit, const QString &text)
{
    edit->setFocus();
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    QTest::keyClicks(edit, text);
}

void TestEditorItemEditDialog::form()
{
    QCOMPARE(m_dialog->windowTitle(), QString("Edit item"));
    QCOMPARE(m_dialog->size(), QSize(427, 168));
    QCOMPARE(m_dialog->objectName(), QString("ZAT16EditorItemEditDialog"));

    QVERIFY(m_dialog->findChild<QVBoxLayout *>("verticalLayout"));
    QVERIFY(m_dialog->findChild<QFormLayout *>("formLayout"));
    QVERIFY(m_dialog->findChild<QHBoxLayout *>("horizontalLayout"));
    QVERIFY(m_dialog->findChild<QHBoxLayout *>("horizontalLayout_2"));
    QVERIFY(m_dialog->findChild<QHBoxLayout *>("horizontalLayout_3"));
    auto *stack = field<QStackedWidget>("m_stk_id");
    QWidget *numeric = field<QWidget>("m_pg_numeric");
    QWidget *tag = field<QWidget>("m_pg_tag");
    QCOMPARE(stack->count(), 2);
    QCOMPARE(stack->indexOf(numeric), 0);
    QCOMPARE(stack->indexOf(tag), 1);
    QCOMPARE(valueEdit()->parentWidget(), numeric);
    QCOMPARE(tagEdit()->parentWidget(), tag);
    QCOMPARE(numeric->layout()->contentsMargins(), QMargins());
    QCOMPARE(tag->layout()->contentsMargins(), QMargins());

    QCOMPARE(digitsBox()->minimum(), 0);
    QCOMPARE(digitsBox()->maximum(), 20);
    QCOMPARE(digitsBox()->specialValueText(), QString("Default"));
    QCOMPARE(secureBox()->text(), QString("Hide values when debugging"));

    QCOMPARE(buttons()->orientation(), Qt::Horizontal);
    QCOMPARE(buttons()->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Apply | QDialogButtonBox::Cancel);
}

void TestEditorItemEditDialog::formFieldOrder()
{
    using Ui = Ui_ZAT16EditorItemEditDialog;
    const std::size_t offsets[] = {
        offsetof(Ui, verticalLayout),     offsetof(Ui, formLayout),         offsetof(Ui, m_lbl_name),
        offsetof(Ui, m_le_name),          offsetof(Ui, m_lbl_id),           offsetof(Ui, m_stk_id),
        offsetof(Ui, m_pg_numeric),       offsetof(Ui, horizontalLayout_2), offsetof(Ui, m_le_id),
        offsetof(Ui, m_pg_tag),           offsetof(Ui, horizontalLayout_3), offsetof(Ui, m_te_id),
        offsetof(Ui, m_lbl_display_mode), offsetof(Ui, horizontalLayout),   offsetof(Ui, m_cb_display_mode),
        offsetof(Ui, m_lbl_digits),       offsetof(Ui, m_sb_digits),        offsetof(Ui, m_lbl_secure),
        offsetof(Ui, m_ck_secure),        offsetof(Ui, m_lbl_comment),      offsetof(Ui, m_le_comment),
        offsetof(Ui, m_buttunz),
    };
    for (std::size_t i = 0; i < std::size(offsets); ++i)
        QCOMPARE(offsets[i], i * sizeof(void *));
    QCOMPARE(sizeof(Ui), std::size(offsets) * sizeof(void *));
    static_assert(std::is_same_v<decltype(Ui::m_te_id), EditorTagEdit *>);
    static_assert(std::is_same_v<decltype(Ui::m_buttunz), QDialogButtonBox *>);
}

void TestEditorItemEditDialog::formLabels_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("buddy");

    QTest::newRow("name") << "m_lbl_name"
                          << "&Name:"
                          << "m_le_name";
    QTest::newRow("value") << "m_lbl_id"
                           << "&Value:"
                           << "m_stk_id";
    QTest::newRow("display mode") << "m_lbl_display_mode"
                                  << "Display &mode:"
                                  << "m_cb_display_mode";
    QTest::newRow("digits") << "m_lbl_digits"
                            << "&Digits:"
                            << "m_sb_digits";
    QTest::newRow("secure") << "m_lbl_secure"
                            << "&Secure:"
                            << "m_ck_secure";
    QTest::newRow("comment") << "m_lbl_comment"
                             << "&Comment:"
                             << "m_le_comment";
}

void TestEditorItemEditDialog::formLabels()
{
    QFETCH(QString, label);
    QFETCH(QString, text);
    QFETCH(QString, buddy);

    auto *l = m_dialog->findChild<QLabel *>(label);
    QVERIFY(l);
    QCOMPARE(l->text(), text);
    QVERIFY(l->buddy());
    QCOMPARE(l->buddy()->objectName(), buddy);
}

void TestEditorItemEditDialog::displayModeEntries()
{
    const char *texts[] = { "Default", "Signed decimal", "Unsigned decimal", "Hex", "Octal", "Binary" };
    QCOMPARE(modeCombo()->count(), 6);
    for (int i = 0; i < 6; ++i) {
        QCOMPARE(modeCombo()->itemText(i), QString(texts[i]));
        QCOMPARE(modeCombo()->itemData(i, Qt::UserRole), QVariant(i));
    }
}

void TestEditorItemEditDialog::setDataTag()
{
    openDialog(m_beta, false);
    QCOMPARE(m_dialog->item(), m_beta);
    QCOMPARE(nameEdit()->text(), QString("beta"));
    auto *names = qobject_cast<const IdentifierValidator *>(nameEdit()->validator());
    QVERIFY(names);
    QCOMPARE(names->item(), m_beta);
    QCOMPARE(field<QStackedWidget>("m_stk_id")->currentWidget(), field<QWidget>("m_pg_tag"));
    QCOMPARE(tagEdit()->currentText(), QString("0x1002"));
    QCOMPARE(tagEdit()->currentIndex(), 1); // Integer
    QVERIFY(tagEdit()->tagValidator());
    QCOMPARE(tagEdit()->tagValidator()->item(), m_beta);
    QCOMPARE(modeCombo()->currentIndex(), 3);
    QCOMPARE(digitsBox()->value(), 4);
    QVERIFY(secureBox()->isChecked());
}

void TestEditorItemEditDialog::setDataBit()
{
    openDialog(m_b1, false);
    QCOMPARE(nameEdit()->text(), QString("b1"));
    QCOMPARE(field<QStackedWidget>("m_stk_id")->currentWidget(), field<QWidget>("m_pg_numeric"));
    QCOMPARE(valueEdit()->text(), QString("1"));
    auto *numbers = qobject_cast<const NumberValidator *>(valueEdit()->validator());
    QVERIFY(numbers);
    QCOMPARE(numbers->item(), m_b1);
    QCOMPARE(numbers->bottom(), 0);
    QCOMPARE(modeCombo()->currentIndex(), 0);
    QCOMPARE(digitsBox()->value(), 0);
    QCOMPARE(digitsBox()->text(), QString("Default"));
    QVERIFY(!secureBox()->isChecked());
}

void TestEditorItemEditDialog::setDataEnum()
{
    openDialog(m_two, false);
    QCOMPARE(valueEdit()->text(), QString("0x0002"));
    auto *numbers = qobject_cast<const NumberValidator *>(valueEdit()->validator());
    QVERIFY(numbers);
    QCOMPARE(numbers->bottom(), INT_MIN);
    QCOMPARE(modeCombo()->currentIndex(), 3);
    QCOMPARE(digitsBox()->value(), 4);
}

void TestEditorItemEditDialog::setDataUnknownDisplayMode()
{
    m_one->display = { 7, 2 };
    openDialog(m_one, false);
    QCOMPARE(modeCombo()->currentIndex(), 0);
    QCOMPARE(digitsBox()->value(), 2);
    m_one->display = { 5, 0 };
    openDialog(m_one, false);
    QCOMPARE(modeCombo()->currentIndex(), 5);
}

void TestEditorItemEditDialog::setDataItemWithoutCode()
{
    openDialog(m_nocode, false);
    QCOMPARE(tagEdit()->currentText(), QString());
    m_one->hasId = false;
    openDialog(m_one, false);
    QCOMPARE(valueEdit()->text(), QString());
}

void TestEditorItemEditDialog::setDataNumbersThatCannotBeTypedBack_data()
{
    QTest::addColumn<qulonglong>("id");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("digits");
    QTest::addColumn<QString>("text");

    QTest::newRow("octal") << qulonglong(15) << 4 << 0 << "15";
    QTest::newRow("binary") << qulonglong(5) << 5 << 8 << "5";
    QTest::newRow("negative, padded") << qulonglong(-5) << 1 << 4 << "-5";
    // A negative value shown unsigned types back as the same 64 bits.
    QTest::newRow("negative, unsigned") << qulonglong(-1) << 2 << 0 << "18446744073709551615";
    QTest::newRow("negative, hexadecimal") << qulonglong(-1) << 3 << 0 << "0xFFFFFFFFFFFFFFFF";
    QTest::newRow("signed") << qulonglong(-7) << 1 << 0 << "-7";
    QTest::newRow("padded decimal") << qulonglong(7) << 1 << 3 << "007";
    QTest::newRow("hexadecimal") << qulonglong(255) << 3 << 4 << "0x00FF";
}

void TestEditorItemEditDialog::setDataNumbersThatCannotBeTypedBack()
{
    QFETCH(qulonglong, id);
    QFETCH(int, mode);
    QFETCH(int, digits);
    QFETCH(QString, text);

    m_one->id = id;
    m_one->display = { mode, digits };
    openDialog(m_one, false);
    QCOMPARE(valueEdit()->text(), text);
    QVERIFY(valueEdit()->hasAcceptableInput());
    // An unchanged dialog applies nothing.
    QVERIFY(!m_dialog->applyData());
    QVERIFY(m_applied.isEmpty());
}

void TestEditorItemEditDialog::setDataReplacesValidators()
{
    openDialog(m_b1, false);
    QPointer<const QValidator> names = nameEdit()->validator();
    QPointer<const QValidator> numbers = valueEdit()->validator();
    openDialog(m_beta, false);
    QVERIFY(!names);
    QVERIFY(!numbers);
    QVERIFY(!valueEdit()->validator());
    QCOMPARE(qobject_cast<const IdentifierValidator *>(nameEdit()->validator())->item(), m_beta);
}

void TestEditorItemEditDialog::okWithoutChangeCloses()
{
    openDialog(m_beta);
    // Apply with nothing changed does nothing and leaves the dialog as it is.
    click(QDialogButtonBox::Apply);
    QVERIFY(m_applied.isEmpty());
    QVERIFY(m_dialog->isVisible());
    QCOMPARE(buttons()->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Apply | QDialogButtonBox::Cancel);
    click(QDialogButtonBox::Ok);
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(m_dialog->result(), int(QDialog::Accepted));
    QVERIFY(m_applied.isEmpty());
    QCOMPARE(m_stack->count(), 0);
    // No "Invalid input" either: nothing was wrong.
    QVERIFY(QToolTip::text().isEmpty());
}

void TestEditorItemEditDialog::okAfterApplyWithoutFurtherChangeCloses()
{
    openDialog(m_beta);
    retype(nameEdit(), "gamma");
    click(QDialogButtonBox::Apply);
    QCOMPARE(m_applied.size(), 1);
    QVERIFY(m_dialog->isVisible());
    click(QDialogButtonBox::Ok);
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(m_applied.size(), 1);
    QCOMPARE(m_stack->count(), 1);
}

void TestEditorItemEditDialog::okWithRefusedFieldStaysOpen()
{
    openDialog(m_beta);
    retype(nameEdit(), "1abc");
    click(QDialogButtonBox::Ok);
    QVERIFY(m_dialog->isVisible());
    QVERIFY(m_applied.isEmpty());
    QCOMPARE(QToolTip::text(), QString("Invalid input"));
}

void TestEditorItemEditDialog::reservedNameIsRefused()
{
    openDialog(m_beta);
    retype(nameEdit(), "Tag");
    QVERIFY(!nameEdit()->hasAcceptableInput());
    click(QDialogButtonBox::Ok);
    QVERIFY(m_dialog->isVisible());
    QVERIFY(m_applied.isEmpty());
    QCOMPARE(QToolTip::text(), QString("Invalid input"));
    QCOMPARE(m_beta->name, QString("beta"));
}

void TestEditorItemEditDialog::wideValueIsApplied()
{
    openDialog(m_one);
    retype(valueEdit(), "0x123456789");
    click(QDialogButtonBox::Ok);
    QCOMPARE(m_applied.size(), 1);
    QCOMPARE(m_applied.at(0).data.id, Q_UINT64_C(0x123456789));
}

void TestEditorItemEditDialog::leadingZeroValueIsDecimal()
{
    openDialog(m_one);
    retype(valueEdit(), "010");
    click(QDialogButtonBox::Ok);
    QCOMPARE(m_applied.size(), 1);
    QCOMPARE(m_applied.at(0).data.id, Q_UINT64_C(10));
}

void TestEditorItemEditDialog::cancelCloses()
{
    openDialog(m_beta);
    retype(nameEdit(), "gamma");
    click(QDialogButtonBox::Cancel);
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(m_dialog->result(), int(QDialog::Rejected));
    QVERIFY(m_applied.isEmpty());
    QCOMPARE(m_beta->name, QString("beta"));
    QCOMPARE(m_stack->count(), 0);
}

void TestEditorItemEditDialog::applyTurnsCancelIntoClose()
{
    openDialog(m_beta);
    retype(nameEdit(), "gamma");
    click(QDialogButtonBox::Apply);
    QVERIFY(m_dialog->isVisible());
    QCOMPARE(m_applied.size(), 1);
    QCOMPARE(m_beta->name, QString("gamma"));
    QCOMPARE(buttons()->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Apply | QDialogButtonBox::Close);
    QCOMPARE(buttons()->buttons().size(), 3);

    // A second change, applied again: still one Close button.
    retype(nameEdit(), "delta");
    click(QDialogButtonBox::Apply);
    QCOMPARE(m_applied.size(), 2);
    QCOMPARE(buttons()->buttons().size(), 3);

    click(QDialogButtonBox::Close);
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(m_dialog->result(), int(QDialog::Rejected));
    // Close does not take anything back; Undo does.
    QCOMPARE(m_beta->name, QString("delta"));
    QCOMPARE(m_stack->count(), 2);
    m_stack->undo();
    QCOMPARE(m_beta->name, QString("gamma"));
}

void TestEditorItemEditDialog::defaultDisablesDigitsAndKeepsThem()
{
    openDialog(m_beta);
    QVERIFY(digitsBox()->isEnabled());
    modeCombo()->setFocus();
    QTest::keyClick(modeCombo(), Qt::Key_Home); // the user picks "Default"
    QCOMPARE(modeCombo()->currentIndex(), 0);
    QVERIFY(!digitsBox()->isEnabled());
    digitsBox()->setValue(9); // whatever the box shows, it is not taken
    click(QDialogButtonBox::Ok);
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(m_dialog->result(), int(QDialog::Accepted));
    QCOMPARE(m_applied.size(), 1);
    QCOMPARE(m_applied.at(0).data.display.mode, 0);
    QCOMPARE(m_applied.at(0).data.display.digits, 4);
    QCOMPARE(m_beta->display.mode, 0);
    QCOMPARE(m_beta->display.digits, 4);
}

void TestEditorItemEditDialog::otherDisplayModeTakesDigits()
{
    openDialog(m_beta);
    QTest::keyClick(modeCombo(), Qt::Key_Home);
    QVERIFY(!digitsBox()->isEnabled());
    QTest::keyClick(modeCombo(), Qt::Key_Down); // "Signed decimal"
    QCOMPARE(modeCombo()->currentIndex(), 1);
    QVERIFY(digitsBox()->isEnabled());
    QTest::keyClick(modeCombo(), Qt::Key_End); // "Binary"
    QCOMPARE(modeCombo()->currentIndex(), 5);
    digitsBox()->setValue(16);
    click(QDialogButtonBox::Ok);
    QCOMPARE(m_applied.size(), 1);
    QCOMPARE(m_applied.at(0).data.display.mode, 5);
    QCOMPARE(m_applied.at(0).data.display.digits, 16);
}

void TestEditorItemEditDialog::setDataLeavesDigitsEnabledState()
{
    openDialog(m_b1, false); // "Default"
    QVERIFY(digitsBox()->isEnabled());
    m_dialog->onDisplayModeChanged(0);
    QVERIFY(!digitsBox()->isEnabled());
    openDialog(m_beta, false); // "Hex"
    QVERIFY(!digitsBox()->isEnabled());
    m_dialog->onDisplayModeChanged(3);
    QVERIFY(digitsBox()->isEnabled());
}

void TestEditorItemEditDialog::tagCodeOutOfRangeIsRefused()
{
    openDialog(m_beta);
    retype(tagEdit()->lineEdit(), "0x10000");
    QCOMPARE(QToolTip::text(), QString("Tag code out of range"));
    click(QDialogButtonBox::Ok);
    QVERIFY(m_dialog->isVisible());
    QVERIFY(m_applied.isEmpty());
    QCOMPARE(QToolTip::text(), QString("Invalid input"));
    QVERIFY(tagEdit()->hasFocus());
    QCOMPARE(m_beta->id, quint64(0x1002));

    click(QDialogButtonBox::Apply);
    QVERIFY(m_applied.isEmpty());
    QCOMPARE(buttons()->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Apply | QDialogButtonBox::Cancel);
}

void TestEditorItemEditDialog::tagCodeFfffIsAccepted()
{
    openDialog(m_beta);
    retype(tagEdit()->lineEdit(), "ffff");
    QCOMPARE(tagEdit()->currentIndex(), -1); // a message code
    click(QDialogButtonBox::Ok);
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(m_applied.size(), 1);
    QCOMPARE(m_applied.at(0).item, m_beta);
    QCOMPARE(m_applied.at(0).data.id, quint64(0xFFFF));
    QVERIFY(m_applied.at(0).data.hasId);
    QCOMPARE(m_beta->id, quint64(0xFFFF));
}

void TestEditorItemEditDialog::emptyTagCodeRemovesTheCode()
{
    openDialog(m_beta);
    retype(tagEdit()->lineEdit(), "");
    click(QDialogButtonBox::Ok);
    QCOMPARE(m_applied.size(), 1);
    QCOMPARE(m_applied.at(0).data.id, quint64(0));
    QVERIFY(!m_applied.at(0).data.hasId);
    QVERIFY(!m_beta->hasId);
}

void TestEditorItemEditDialog::requestCodeIsTyped()
{
    openDialog(m_nocode);
    retype(tagEdit()->lineEdit(), "D0");
    QCOMPARE(tagEdit()->currentIndex(), 0);
    QTest::keyClicks(tagEdit()->lineEdit(), "07");
    QCOMPARE(tagEdit()->currentIndex(), -1);
    click(QDialogButtonBox::Ok);
    QCOMPARE(m_applied.size(), 1);
    QCOMPARE(m_applied.at(0).data.id, quint64(0xD007));
    QVERIFY(m_applied.at(0).data.hasId);
}

void TestEditorItemEditDialog::bitNumberMinusOneIsRefused()
{
    openDialog(m_b1);
    retype(valueEdit(), "-1");
    QCOMPARE(valueEdit()->text(), QString("-1"));
    QCOMPARE(QToolTip::text(), QString("Number out of range"));
    click(QDialogButtonBox::Ok);
    QVERIFY(m_dialog->isVisible());
    QVERIFY(m_applied.isEmpty());
    QCOMPARE(QToolTip::text(), QString("Invalid input"));
    QVERIFY(valueEdit()->hasFocus());
    QCOMPARE(m_b1->id, quint64(1));
}

void TestEditorItemEditDialog::bitNumberIsApplied()
{
    openDialog(m_b1);
    retype(valueEdit(), "0x1F");
    click(QDialogButtonBox::Ok);
    QCOMPARE(m_applied.size(), 1);
    QCOMPARE(m_applied.at(0).data.id, quint64(31));
    QCOMPARE(m_b1->id, quint64(31));
}

void TestEditorItemEditDialog::commentIsEditedWithTheRest()
{
    openDialog(m_beta);
    QLineEdit *comment = field<QLineEdit>("m_le_comment");
    QCOMPARE(comment->text(), QStringLiteral("second"));
    retype(nameEdit(), "gamma");
    retype(comment, "the third");
    const int steps = m_stack->count();
    click(QDialogButtonBox::Ok);
    QCOMPARE(m_applied.size(), 1);
    QCOMPARE(m_applied.at(0).data.comment, QStringLiteral("the third"));
    QCOMPARE(m_beta->name, QStringLiteral("gamma"));
    QCOMPARE(m_beta->comment, QStringLiteral("the third"));
    // one undo step takes both back
    QCOMPARE(m_stack->count(), steps + 1);
    m_stack->undo();
    QCOMPARE(m_beta->name, QStringLiteral("beta"));
    QCOMPARE(m_beta->comment, QStringLiteral("second"));
    m_stack->redo();
    QCOMPARE(m_beta->comment, QStringLiteral("the third"));

    // an item without a comment shows an empty field
    openDialog(m_one);
    QCOMPARE(comment->text(), QString());
}

void TestEditorItemEditDialog::negativeEnumValueIsSignExtended()
{
    openDialog(m_one);
    retype(valueEdit(), "-3");
    click(QDialogButtonBox::Ok);
    QCOMPARE(m_applied.size(), 1);
    QCOMPARE(m_applied.at(0).data.id, Q_UINT64_C(0xFFFFFFFFFFFFFFFD));
}

void TestEditorItemEditDialog::emptyValueIsRefused()
{
    openDialog(m_one);
    retype(valueEdit(), "");
    click(QDialogButtonBox::Ok);
    QVERIFY(m_dialog->isVisible());
    QVERIFY(m_applied.isEmpty());
    QCOMPARE(QToolTip::text(), QString("Invalid input"));
}

void TestEditorItemEditDialog::nameStartingWithDigitIsRefused()
{
    openDialog(m_beta);
    retype(nameEdit(), "1abc");
    QCOMPARE(QToolTip::text(), QString("Identifier must not start with a digit"));
    click(QDialogButtonBox::Ok);
    QVERIFY(m_dialog->isVisible());
    QVERIFY(m_applied.isEmpty());
    QCOMPARE(QToolTip::text(), QString("Invalid input"));
    QVERIFY(nameEdit()->hasFocus());
    QCOMPARE(m_beta->name, QString("beta"));
}

void TestEditorItemEditDialog::duplicateNameIsOnlyAWarning()
{
    openDialog(m_beta);
    retype(nameEdit(), "alpha");
    QCOMPARE(QToolTip::text(), QString("Identifier already exists"));
    click(QDialogButtonBox::Ok);
    QCOMPARE(m_applied.size(), 1);
    QCOMPARE(m_beta->name, QString("alpha"));
}

void TestEditorItemEditDialog::secureFlagIsApplied()
{
    openDialog(m_alpha);
    QTest::mouseClick(secureBox(), Qt::LeftButton);
    click(QDialogButtonBox::Ok);
    QCOMPARE(m_applied.size(), 1);
    QVERIFY(m_applied.at(0).data.secure);
}

void TestEditorItemEditDialog::resultIsOneUndoableChangeItem()
{
    const ItemData before = *m_beta;
    openDialog(m_beta);
    retype(nameEdit(), "gamma");
    retype(tagEdit()->lineEdit(), "3005");
    QTest::keyClick(modeCombo(), Qt::Key_Down); // "Octal"
    digitsBox()->setValue(6);
    QTest::mouseClick(secureBox(), Qt::LeftButton);
    click(QDialogButtonBox::Ok);
    QVERIFY(!m_dialog->isVisible());

    ItemData expected = before;
    expected.name = "gamma";
    expected.id = 0x3005;
    expected.display = { 4, 6 };
    expected.secure = false;
    QCOMPARE(m_applied.size(), 1);
    QCOMPARE(m_applied.at(0).item, m_beta);
    QCOMPARE(describe(m_applied.at(0).data), describe(expected));
    QVERIFY(m_applied.at(0).data == expected);

    QCOMPARE(m_stack->count(), 1);
    QCOMPARE(m_stack->text(0), QString("Change item"));
    QCOMPARE(describe(*m_beta), describe(expected));
    m_stack->undo();
    QCOMPARE(describe(*m_beta), describe(before));
    m_stack->redo();
    QCOMPARE(describe(*m_beta), describe(expected));
}

void TestEditorItemEditDialog::execOk()
{
    m_dialog->setData(m_b1);
    QTimer::singleShot(0, this, [this] {
        retype(nameEdit(), "bit1");
        click(QDialogButtonBox::Ok);
    });
    QCOMPARE(m_dialog->exec(), int(QDialog::Accepted));
    QCOMPARE(m_b1->name, QString("bit1"));
    QCOMPARE(m_stack->count(), 1);
}

void TestEditorItemEditDialog::execCancel()
{
    m_dialog->setData(m_b1);
    QTimer::singleShot(0, this, [this] {
        retype(nameEdit(), "bit1");
        click(QDialogButtonBox::Cancel);
    });
    QCOMPARE(m_dialog->exec(), int(QDialog::Rejected));
    QCOMPARE(m_b1->name, QString("b1"));
    QCOMPARE(m_stack->count(), 0);
}

void TestEditorItemEditDialog::popupMessageWithoutFocusShowsNothing()
{
    QVERIFY(!QApplication::focusWidget());
    m_dialog->popupMessage("Something");
    QVERIFY(!QToolTip::isVisible());
    QVERIFY(QToolTip::text().isEmpty());
}

QTEST_MAIN(TestEditorItemEditDialog)
#include "tst_editoritemeditdialog.moc"
