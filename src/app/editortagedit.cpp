#include "editortagedit.h"

#include "editortagmodel.h"
#include "tagcodes.h"
#include "tagvalidator.h"

#include <QAbstractItemView>
#include <QLineEdit>

namespace ZAT16 {

EditorTagEdit::EditorTagEdit(QWidget *parent)
    : QComboBox(parent)
    , m_model(new EditorTagModel(this))
    , m_updating(true)
{
    setEditable(true);
    setInsertPolicy(QComboBox::NoInsert);
    setModel(m_model);
    setMaxVisibleItems(m_model->rowCount());
    // In the narrow code column the list still shows the type names in full.
    view()->setMinimumWidth(view()->sizeHintForColumn(0) + 2 * view()->frameWidth() + 24);
    connect(this, qOverload<int>(&QComboBox::currentIndexChanged), this, &EditorTagEdit::onCurrentIndexChanged);
    connect(this, &QComboBox::editTextChanged, this, &EditorTagEdit::onEditTextChanged);
    m_updating = false;
}

void EditorTagEdit::setItem(const Item *item)
{
    if (m_validator) {
        setValidator(nullptr);
        delete m_validator;
    }
    m_validator = new TagValidator(item, this);
    setValidator(m_validator);
    connect(m_validator, &TagValidator::message, this, &EditorTagEdit::message);
}

void EditorTagEdit::setTag(const QString &text)
{
    setEditText(text);
}

QString EditorTagEdit::tag() const
{
    const QString text = currentText();
    if (text.isEmpty() || text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
        return text;
    return QLatin1String("0x") + text;
}

bool EditorTagEdit::hasAcceptableInput() const
{
    return lineEdit() && lineEdit()->hasAcceptableInput();
}

void EditorTagEdit::onCurrentIndexChanged(int row)
{
    if (m_updating)
        return;
    const int type = EditorTagModel::rowDataType(row);
    if (type < 0)
        return;
    bool ok = false;
    unsigned int code = tag().toUInt(&ok, 16);
    if (!ok)
        code = 0;
    // Runs onEditTextChanged, which selects this row again.
    setEditText(tag2hex(setDataType(code, DataType(type))));
}

void EditorTagEdit::onEditTextChanged(const QString &text)
{
    if (m_updating)
        return;
    m_updating = true;
    m_model->setEditData(text);
    bool ok = false;
    const unsigned int code = tag().toUInt(&ok, 16);
    if (ok && code < 0x10000) {
        // Requests, answers and messages have rows beyond the offered ones: no row is selected.
        const int row = EditorTagModel::dataTypeRow(dataType(code));
        if (row != currentIndex()) {
            // An editable combo box writes the selected row's edit text (the text typed, see
            // EditorTagModel) into its line edit, and an empty one when no row is selected; keep
            // what the user typed and where the cursor is.
            QLineEdit *edit = lineEdit();
            const int cursor = edit->cursorPosition();
            setCurrentIndex(row);
            if (edit->text() != text) {
                edit->setText(text);
                edit->setCursorPosition(cursor);
            }
        }
    }
    m_updating = false;
}

} // namespace ZAT16
