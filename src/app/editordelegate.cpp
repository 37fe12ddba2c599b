#include "editordelegate.h"

#include "editortagedit.h"
#include "identifiervalidator.h"
#include "item.h"
#include "numbervalidator.h"

#include <QLineEdit>
#include <QMetaMethod>
#include <QPainter>

namespace ZAT16 {

namespace {

// Connects `sender`'s message(QString) to popupMessage(QString) of the editor's window. The
// delegate does not know the window's class, so the slot is looked up by its signature; a
// window without it simply gets no messages.
void connectMessages(QObject *sender, QWidget *editor)
{
    QWidget *window = editor->window();
    if (!window || window == editor)
        return;
    const QMetaObject *windowMeta = window->metaObject();
    const int slot = windowMeta->indexOfSlot("popupMessage(QString)");
    if (slot < 0)
        return;
    const QMetaObject *senderMeta = sender->metaObject();
    const int signal = senderMeta->indexOfSignal("message(QString)");
    if (signal < 0)
        return;
    QObject::connect(sender, senderMeta->method(signal), window, windowMeta->method(slot));
}

QLineEdit *newLineEdit(QWidget *parent, const QFont &font)
{
    auto *edit = new QLineEdit(parent);
    edit->setFont(font);
    return edit;
}

} // namespace

EditorDelegate::EditorDelegate(QObject *parent)
    : QItemDelegate(parent)
{
}

QWidget *EditorDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &, const QModelIndex &index) const
{
    if (!index.isValid() || !index.model())
        return nullptr;
    const Item *item = static_cast<const Item *>(index.internalPointer());
    if (!item)
        return nullptr;

    const QVariant fontData = index.data(Qt::FontRole);
    const QFont font = fontData.canConvert<QFont>() ? qvariant_cast<QFont>(fontData) : QFont();

    const bool named = item->isNamedKind();
    if (!named)
        return nullptr;

    switch (index.column()) {
    case 0: {
        QLineEdit *edit = newLineEdit(parent, font);
        auto *validator = new IdentifierValidator(item, edit);
        edit->setValidator(validator);
        connectMessages(validator, edit);
        return edit;
    }
    case 1:
        if (item->type == Tag) {
            auto *tagEdit = new EditorTagEdit(parent);
            tagEdit->setFrame(false);
            tagEdit->setItem(item);
            tagEdit->lineEdit()->setFont(font);
            connectMessages(tagEdit, tagEdit);
            return tagEdit;
        } else {
            QLineEdit *edit = newLineEdit(parent, font);
            auto *validator = new NumberValidator(item, edit);
            if (item->type == Bit)
                validator->setBottom(0); // bit numbers cannot be negative
            edit->setValidator(validator);
            connectMessages(validator, edit);
            return edit;
        }
    case 2:
        return newLineEdit(parent, font);
    default:
        return nullptr;
    }
}

void EditorDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    if (auto *tagEdit = qobject_cast<EditorTagEdit *>(editor))
        tagEdit->setTag(index.data(Qt::EditRole).toString());
    else
        QItemDelegate::setEditorData(editor, index);
}

void EditorDelegate::setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const
{
    // The view commits an open editor whenever the current cell moves, whatever its validator
    // says; text that the validator does not accept is dropped here instead.
    if (auto *tagEdit = qobject_cast<EditorTagEdit *>(editor)) {
        if (tagEdit->hasAcceptableInput())
            model->setData(index, tagEdit->tag(), Qt::EditRole);
    } else if (auto *lineEdit = qobject_cast<QLineEdit *>(editor)) {
        if (lineEdit->hasAcceptableInput())
            QItemDelegate::setModelData(editor, model, index);
    } else {
        QItemDelegate::setModelData(editor, model, index);
    }
}

void EditorDelegate::updateEditorGeometry(QWidget *editor,
                                          const QStyleOptionViewItem &option,
                                          const QModelIndex &index) const
{
    QItemDelegate::updateEditorGeometry(editor, option, index);
    if (index.column() != 1)
        return;
    auto *lineEdit = qobject_cast<QLineEdit *>(editor);
    // Room for the frame and the cursor; a tag's editor has its drop-down button too.
    int room = 16;
    if (auto *tagEdit = qobject_cast<EditorTagEdit *>(editor)) {
        lineEdit = tagEdit->lineEdit();
        room += editor->style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, editor) + 8;
    }
    if (!lineEdit)
        return;
    // One digit more than the code, so that the text can grow a little before it scrolls.
    const QString text = index.data(Qt::EditRole).toString() + QLatin1Char('0');
    const int wanted = lineEdit->fontMetrics().horizontalAdvance(text) + room;
    if (editor->width() < wanted)
        editor->resize(wanted, editor->height());
}

void EditorDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    if (!(option.state & QStyle::State_Selected)) {
        QItemDelegate::paint(painter, option, index);
        return;
    }
    QPalette::ColorGroup group = (option.state & QStyle::State_Enabled) ? QPalette::Normal : QPalette::Disabled;
    if (group == QPalette::Normal && !(option.state & QStyle::State_Active))
        group = QPalette::Inactive;
    painter->fillRect(option.rect, option.palette.brush(group, QPalette::Highlight));
    // Unless the style lets the selection cover the decoration too, the base class fills the cell
    // with the model's background (a comment line's green, a marked cell's red) and highlights only
    // the text; told otherwise, it fills the whole cell with the highlight, as above.
    QStyleOptionViewItem selected(option);
    selected.showDecorationSelected = true;
    QItemDelegate::paint(painter, selected, index);
}

} // namespace ZAT16
