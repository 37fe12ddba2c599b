#include "editoredits.h"

#include "commandchange.h"
#include "commandchangecomment.h"
#include "commandchangeid.h"
#include "commandchangename.h"
#include "commanddelete.h"
#include "commandnew.h"
#include "commandreplaceall.h"
#include "editorclipboard.h"
#include "editormodel.h"
#include "numbers.h"

#include <QDebug>
#include <QMimeData>
#include <QUndoStack>

namespace ZAT16 {

EditorEdits::EditorEdits(EditorModel &model)
    : m_model(model)
{
}

void EditorEdits::undoableSetTags(Item *root, const QModelIndex &index)
{
    m_model.push(new CommandReplaceAll(root, &m_model, index));
}

void EditorEdits::undoableClear(const QModelIndex &index)
{
    const Item *root = m_model.root();
    if (root && !root->children.isEmpty())
        undoableSetTags(nullptr, index);
}

bool EditorEdits::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole)
        return false;
    Item *item = m_model.index2item(index);
    if (!item || !item->isNamedKind())
        return false;
    const QString text = value.toString();
    switch (index.column()) {
    case 1:
        if (!text.isEmpty()) {
            // A tag's code is 16 bits; a value or bit takes all 64, with a sign, read as the
            // editors and the edit dialog read it.
            quint64 code = 0;
            if (item->type == Tag) {
                bool ok = false;
                code = Numbers::to32(text, &ok);
                if (!ok || code >= 0x10000)
                    return false;
            } else {
                bool negative = false;
                if (Numbers::readValue(text, &code, &negative) != Numbers::Reading::Number)
                    return false;
                if (negative && item->type == Bit) // a bit number is never below zero
                    return false;
            }
            if (item->hasId && item->id == code)
                return true;
            m_model.push(new CommandChangeID(code, true, item, &m_model, index));
        } else if (item->hasId) {
            m_model.push(new CommandChangeID(0, false, item, &m_model, index));
        }
        return true;
    case 2:
        if (text != item->comment)
            m_model.push(new CommandChangeComment(text, item, &m_model, index));
        return true;
    case 0:
        if (text != item->name)
            m_model.push(new CommandChangeName(text, item, &m_model, index));
        return true;
    default:
        return false;
    }
}

bool EditorEdits::setItemData(const QModelIndex &index, const ItemData &data)
{
    Item *item = m_model.index2item(index);
    if (!item)
        return false;
    if (data == *item)
        return true;
    m_model.push(new CommandChange(data, item, &m_model, index));
    return true;
}

QModelIndex EditorEdits::insertRow(int row, const QModelIndex &parent, Item *item)
{
    Item *parentItem = m_model.index2item(parent);
    if (!parentItem || row < 0)
        return QModelIndex();
    int position = qMin(row, int(parentItem->children.size()));

    if (!item) {
        // A new empty row starts as a blank line that the user then fills; no code is chosen.
        const ItemType kind = InsertionPolicy::blankRowKind(parentItem->type);
        if (kind == Invalid)
            return QModelIndex();
        item = new Item;
        item->type = kind;
    } else {
        switch (item->type) {
        case Tag:
            // Tags live at the root level: before the top-level tag that holds the position.
            if (!InsertionPolicy::tagPlace(m_model, &parentItem, &position))
                return QModelIndex();
            break;
        case Enums:
        case Bits: {
            Item *at = parentItem->child(position);
            Item *tag = InsertionPolicy::enclosingTag(at ? at : parentItem);
            if (!tag)
                return QModelIndex();
            Item *existing = tag->findInTagByItemType(item->type);
            if (existing)
                return mergeList(item,
                                 existing,
                                 parentItem != existing ? int(existing->children.size()) : position,
                                 parent);
            tag->dump(0);
            parentItem = tag;
            position = InsertionPolicy::listPosition(tag, item->type);
            break;
        }
        case Enum:
        case Bit: {
            Item *at = parentItem->child(position);
            if (!at)
                at = parentItem;
            const QModelIndex list = insertList(m_model.item2index(at), Item::matchingParentType(item->type));
            if (!list.isValid() || !list.model())
                return QModelIndex();
            Item *listItem = m_model.index2item(list);
            if (listItem != parentItem) {
                qDebug() << "insertion point modified";
                parentItem = listItem;
                position = int(listItem->children.size());
            }
            break;
        }
        default:
            return QModelIndex();
        }
    }

    const QModelIndex select = parent.model() ? parent.model()->index(position, 0, parent) : QModelIndex();
    m_model.push(new CommandNew(item, position, parentItem, &m_model, select));
    return m_model.item2index(item);
}

// A list of the same kind is there already: the values of `list` are merged into it, from
// `position` on, and `list` itself is deleted.
QModelIndex EditorEdits::mergeList(Item *list, Item *existing, int position, const QModelIndex &parent)
{
    const QModelIndex select = parent.model() ? parent.model()->index(position, 0, parent) : QModelIndex();
    const QList<Item *> children = list->children;
    list->children.clear();
    delete list;
    if (m_model.undoStack())
        m_model.undoStack()->beginMacro(tr("Merge data"));
    for (int i = 0; i < children.size(); ++i)
        m_model.push(new CommandNew(children.at(i), position + i, existing, &m_model, select));
    if (m_model.undoStack())
        m_model.undoStack()->endMacro();
    return m_model.item2index(existing);
}

bool EditorEdits::insertRow(int row, const QModelIndex &parent)
{
    return insertRow(row, parent, nullptr).isValid();
}

QModelIndex EditorEdits::insertAfter(const QModelIndex &at)
{
    return insertBlankRow(InsertionPolicy::after(m_model, at));
}

QModelIndex EditorEdits::insertBefore(const QModelIndex &at)
{
    return insertBlankRow(InsertionPolicy::before(m_model, at));
}

QModelIndex EditorEdits::insertBlankRow(const InsertionPolicy::Slot &slot)
{
    if (!insertRow(slot.row, slot.parent))
        return QModelIndex();
    return m_model.index(slot.row, 0, slot.parent);
}

QModelIndex EditorEdits::insertList(const QModelIndex &at, ItemType kind)
{
    if (kind != Enums && kind != Bits)
        return QModelIndex();
    Item *tag = InsertionPolicy::enclosingTag(m_model.index2item(at));
    if (!tag)
        return QModelIndex();
    if (Item *existing = tag->findInTagByItemType(kind))
        return m_model.item2index(existing);

    Item *list = new Item;
    list->type = kind;
    m_model.push(
        new CommandNew(list, InsertionPolicy::listPosition(tag, kind), tag, &m_model, m_model.item2index(tag)));
    return m_model.item2index(list);
}

CommandDelete *EditorEdits::prepareRemoveRow(int row, const QModelIndex &parent)
{
    Item *parentItem = m_model.index2item(parent);
    if (!parentItem || row < 0 || row >= parentItem->children.size())
        return nullptr;
    const QModelIndex select = parent.model() ? parent.model()->index(row, 0, parent) : QModelIndex();
    return new CommandDelete(row, parentItem, &m_model, select);
}

bool EditorEdits::removeRow(int row, const QModelIndex &parent)
{
    CommandDelete *command = prepareRemoveRow(row, parent);
    if (!command)
        return false;
    command->setMode(CommandDelete::Remove);
    m_model.push(command);
    return true;
}

// The clipboard

QMimeData *EditorEdits::copy(const QModelIndex &index)
{
    if (!index.isValid())
        return nullptr;
    const QModelIndex parentIndex = index.parent();
    const int row = index.row();
    return EditorClipboard::encode(m_model.index2item(index),
                                   m_model.data(m_model.index(row, 0, parentIndex), Qt::EditRole).toString()
                                       + QLatin1Char(' ')
                                       + m_model.data(m_model.index(row, 1, parentIndex), Qt::EditRole).toString());
}

QMimeData *EditorEdits::cut(const QModelIndex &index)
{
    QMimeData *mime = copy(index);
    if (!mime)
        return nullptr;
    CommandDelete *command = prepareRemoveRow(index.row(), index.parent());
    if (!command) {
        delete mime;
        return nullptr;
    }
    command->setMode(CommandDelete::Cut);
    m_model.push(command);
    return mime;
}

QModelIndex EditorEdits::paste(const QModelIndex &at, const QMimeData *data)
{
    if (!at.isValid() || !data)
        return QModelIndex();
    const QByteArray xml = EditorClipboard::itemXml(data);
    if (!xml.isEmpty()) {
        Item *item = EditorClipboard::decodeItem(xml);
        if (!item)
            return QModelIndex();
        const QModelIndex inserted = insertRow(at.row(), at.parent(), item);
        if (inserted.isValid())
            return inserted;
        delete item;
        return QModelIndex();
    }
    if (data->hasText()) {
        m_model.setData(at, data->text(), Qt::EditRole);
        return at;
    }
    return QModelIndex();
}

} // namespace ZAT16
