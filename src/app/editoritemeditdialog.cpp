#include "editoritemeditdialog.h"
#include "ui_editoritemeditdialog.h"

#include "identifiervalidator.h"
#include "item.h"
#include "numbers.h"
#include "numbervalidator.h"

#include <QApplication>
#include <QPushButton>
#include <QToolTip>

namespace ZAT16 {

EditorItemEditDialog::EditorItemEditDialog(QWidget *parent)
    : QDialog(parent)
    , m_ui(new Ui_ZAT16EditorItemEditDialog)
{
    m_ui->setupUi(this);
    // The entries' order is that of the display modes; each carries its mode number.
    for (int mode = 0; mode < m_ui->m_cb_display_mode->count(); ++mode)
        m_ui->m_cb_display_mode->setItemData(mode, mode, Qt::UserRole);
    connect(m_ui->m_cb_display_mode,
            qOverload<int>(&QComboBox::activated),
            this,
            &EditorItemEditDialog::onDisplayModeChanged);
    connect(m_ui->m_buttunz->button(QDialogButtonBox::Apply),
            &QAbstractButton::clicked,
            this,
            &EditorItemEditDialog::onApply);
    // The tag selector forwards the explanations of whichever validator it holds.
    connect(m_ui->m_te_id, &EditorTagEdit::message, this, &EditorItemEditDialog::popupMessage);
}

EditorItemEditDialog::~EditorItemEditDialog()
{
    // The fields signal while they go (a validator explains the text it loses); the
    // half-destroyed dialog must not answer.
    for (QObject *child : findChildren<QObject *>())
        child->disconnect(this);
    delete m_ui;
}

// The value as the item shows it, if that can be typed back: octal ("0o17"), binary ("0y101"),
// padded negative numbers ("00-5") and negative numbers shown unsigned cannot, and are offered
// in signed decimal instead, so that Ok on an unchanged dialog does not refuse the value.
QString EditorItemEditDialog::editableNumber(const QString &formatted, quint64 id) const
{
    QString text = formatted;
    int pos = 0;
    quint64 value = 0;
    if (Numbers::readValue(formatted, &value) == Numbers::Reading::Number && value == id
        && m_numberValidator->validate(text, pos) == QValidator::Acceptable)
        return formatted;
    return QString::number(qint64(id));
}

void EditorItemEditDialog::setData(const Item *item)
{
    m_item = item;

    m_ui->m_le_name->setValidator(nullptr);
    delete m_identifierValidator;
    m_identifierValidator = nullptr;
    m_ui->m_le_name->setText(item ? item->name : QString());
    m_identifierValidator = new IdentifierValidator(item, m_ui->m_le_name);
    m_ui->m_le_name->setValidator(m_identifierValidator);
    connect(m_identifierValidator, &IdentifierValidator::message, this, &EditorItemEditDialog::popupMessage);

    m_ui->m_le_id->setValidator(nullptr);
    delete m_numberValidator;
    m_numberValidator = nullptr;
    if (!item)
        return;
    // An item without code shows an empty field rather than a made-up 0.
    const QString code = item->hasId ? item->formatId() : QString();
    if (item->type == Tag) {
        m_ui->m_stk_id->setCurrentWidget(m_ui->m_pg_tag);
        m_ui->m_stk_id->setFocusProxy(m_ui->m_te_id);
        m_ui->m_te_id->setItem(item);
        m_ui->m_te_id->setTag(code);
    } else {
        m_ui->m_stk_id->setCurrentWidget(m_ui->m_pg_numeric);
        m_ui->m_stk_id->setFocusProxy(m_ui->m_le_id);
        m_numberValidator = new NumberValidator(item, m_ui->m_le_id);
        if (item->type == Bit)
            m_numberValidator->setBottom(0); // bit numbers cannot be negative
        m_ui->m_le_id->setText(item->hasId ? editableNumber(code, item->id) : QString());
        m_ui->m_le_id->setValidator(m_numberValidator);
        connect(m_numberValidator, &NumberValidator::message, this, &EditorItemEditDialog::popupMessage);
    }

    int entry = m_ui->m_cb_display_mode->findData(item->display.mode, Qt::UserRole, Qt::MatchExactly);
    m_ui->m_cb_display_mode->setCurrentIndex(entry < 0 ? 0 : entry);
    m_ui->m_sb_digits->setValue(item->display.digits);
    m_ui->m_ck_secure->setChecked(item->secure);
    m_ui->m_le_comment->setText(item->comment);
}

bool EditorItemEditDialog::readData(ItemData *result)
{
    if (!m_item)
        return false;
    ItemData data = *m_item;

    if (!m_ui->m_le_name->hasAcceptableInput())
        return invalidInput(m_ui->m_le_name);
    data.name = m_ui->m_le_name->text();
    data.comment = m_ui->m_le_comment->text();

    if (m_item->type == Tag) {
        if (!m_ui->m_te_id->hasAcceptableInput())
            return invalidInput(m_ui->m_te_id);
        const QString text = m_ui->m_te_id->tag();
        if (text.isEmpty()) {
            data.id = 0;
            data.hasId = false;
        } else {
            bool ok = false;
            const quint32 value = Numbers::to32(text, &ok);
            if (!ok || qint32(value) < 0 || value > 0xFFFF)
                return invalidInput(m_ui->m_te_id);
            data.id = value;
            data.hasId = true;
        }
    } else {
        // Enumeration values and bits need a number.
        const QString text = m_ui->m_le_id->text();
        if (!m_ui->m_le_id->hasAcceptableInput() || text.isEmpty())
            return invalidInput(m_ui->m_le_id);
        quint64 value = 0;
        if (Numbers::readValue(text, &value) != Numbers::Reading::Number)
            return invalidInput(m_ui->m_le_id);
        data.id = value; // a negative number is kept in two's complement
        data.hasId = true;
    }

    const QVariant mode = m_ui->m_cb_display_mode->currentData(Qt::UserRole);
    data.display.mode = mode.isValid() ? mode.toInt() : 0;
    // With "Default" the digit count is not shown in effect, but it is kept for later.
    if (data.display.mode != 0)
        data.display.digits = m_ui->m_sb_digits->value();

    data.secure = m_ui->m_ck_secure->isChecked();
    *result = data;
    return true;
}

bool EditorItemEditDialog::applyData()
{
    ItemData data;
    // Nothing changed: no message, nothing applied.
    if (!readData(&data) || data == *m_item)
        return false;
    emit apply(m_item, data);
    return true;
}

void EditorItemEditDialog::accept()
{
    ItemData data;
    if (!readData(&data))
        return;
    if (!(data == *m_item))
        emit apply(m_item, data);
    QDialog::accept();
}

void EditorItemEditDialog::onApply()
{
    if (!applyData() || m_ui->m_buttunz->button(QDialogButtonBox::Close))
        return;
    // Once a change has been applied, leaving the dialog no longer cancels anything. The Close
    // button has the reject role, so the box's rejected() reaches reject().
    m_ui->m_buttunz->addButton(QDialogButtonBox::Close);
    if (QPushButton *cancel = m_ui->m_buttunz->button(QDialogButtonBox::Cancel)) {
        m_ui->m_buttunz->removeButton(cancel);
        delete cancel;
    }
}

void EditorItemEditDialog::onDisplayModeChanged(int index)
{
    m_ui->m_sb_digits->setEnabled(index != 0);
}

bool EditorItemEditDialog::invalidInput(QWidget *field)
{
    field->setFocus(Qt::OtherFocusReason);
    popupMessage(tr("Invalid input"));
    return false;
}

void EditorItemEditDialog::popupMessage(const QString &text)
{
    QWidget *anchor = QApplication::focusWidget();
    if (!anchor)
        return;
    QToolTip::hideText();
    if (text.isEmpty())
        return;
    const QPoint at = anchor->mapToGlobal(QPoint(0, anchor->height() - 16));
    QToolTip::showText(at, text, anchor, anchor->rect().adjusted(-16, -16, 16, 16));
}

} // namespace ZAT16
