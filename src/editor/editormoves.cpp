#include "editormoves.h"

#include "commandmove.h"
#include "commandnew.h"
#include "editormodel.h"
#include "insertionpolicy.h"

#include <QMimeData>
#include <QUuid>

namespace ZAT16 {

EditorMoves::EditorMoves(EditorModel &model)
    : m_model(model)
    , m_id(QUuid::createUuid().toByteArray(QUuid::WithoutBraces))
{
}

// Entries of the root and of the lists; the children of a tag are its lists, whose order the kinds
// decide.
bool EditorMoves::canMove(const Item *item) const
{
    if (!item || !item->isNamedKind() || !item->parent)
        return false;
    const ItemType parentType = item->parent->type;
    return parentType == Root || parentType == Enums || parentType == Bits;
}

bool EditorMoves::canMoveBy(const QModelIndex &index, int offset) const
{
    if (!index.isValid() || offset == 0)
        return false;
    const Item *item = m_model.index2item(index);
    if (!canMove(item))
        return false;
    const int row = m_model.findRow(item) + offset;
    return row >= 0 && row < item->parent->children.size();
}

QModelIndex EditorMoves::moveBy(const QModelIndex &index, int offset)
{
    if (!canMoveBy(index, offset))
        return QModelIndex();
    Item *item = m_model.index2item(index);
    Destination to;
    to.parent = item->parent;
    to.row = m_model.findRow(item) + offset;
    return move(item, to);
}

QModelIndex EditorMoves::moveTo(const QModelIndex &index, int row, const QModelIndex &parent)
{
    Item *item = m_model.index2item(index);
    Item *parentItem = m_model.index2item(parent);
    Destination to;
    if (!index.isValid() || !parentItem || row < 0 || !destination(item, parentItem, row, &to))
        return QModelIndex();
    return move(item, to);
}

bool EditorMoves::canMoveTo(const QModelIndex &index, int row, const QModelIndex &parent) const
{
    Item *parentItem = m_model.index2item(parent);
    Destination to;
    return index.isValid() && parentItem && row >= 0 && destination(m_model.index2item(index), parentItem, row, &to);
}

// The rules of EditorModel::insertRow for an inserted entry of the same kind; where that makes a
// list, the move makes it too.
bool EditorMoves::destination(const Item *item, Item *parent, int position, Destination *to) const
{
    if (!canMove(item))
        return false;
    position = qMin(position, int(parent->children.size()));
    switch (item->type) {
    case Tag:
        if (!InsertionPolicy::tagPlace(m_model, &parent, &position))
            return false;
        break;
    case Enum:
    case Bit: {
        Item *at = parent->child(position);
        Item *tag = InsertionPolicy::enclosingTag(at ? at : parent);
        if (!tag)
            return false;
        const ItemType kind = Item::matchingParentType(item->type);
        Item *list = tag->findInTagByItemType(kind);
        if (!list) {
            // Checked as the new list's parent below.
            parent = tag;
            to->tag = tag;
            to->newList = kind;
            to->listRow = InsertionPolicy::listPosition(tag, kind);
            position = 0;
            break;
        }
        if (list != parent) {
            parent = list;
            position = int(list->children.size());
        }
        break;
    }
    default:
        return false;
    }
    // Never into its own subtree.
    for (const Item *at = parent; at; at = at->parent) {
        if (at == item)
            return false;
    }
    if (to->newList != Invalid) {
        to->parent = nullptr;
        to->row = 0;
        return true;
    }
    // The row counts in the list without the entry; where it stays in place, nothing moves.
    const int row = m_model.findRow(item);
    if (parent == item->parent) {
        if (position > row)
            --position;
        if (position == row)
            return false;
    }
    to->parent = parent;
    to->row = position;
    return true;
}

QModelIndex EditorMoves::move(Item *item, const Destination &to)
{
    if (to.newList == Invalid) {
        m_model.push(new CommandMove(item, to.parent, to.row, &m_model));
        return m_model.item2index(item);
    }
    auto *list = new Item;
    list->type = to.newList;
    auto *command = new CommandMove(item, list, to.row, &m_model);
    new CommandNew(list, to.listRow, to.tag, &m_model, m_model.item2index(to.tag), command);
    m_model.push(command);
    return m_model.item2index(item);
}

// ---------------------------------------------------------------------------------------------
// Drag and drop

QString EditorMoves::entryMimeType()
{
    return QStringLiteral("application/x-zatedit-entry");
}

// "id address rows", the rows from the root joined by '/': the address tells whether the entry
// at those rows is still the dragged one, without the address itself ever being followed.
void EditorMoves::addEntry(QMimeData *data, const QModelIndex &index) const
{
    const Item *item = m_model.index2item(index);
    if (!data || !index.isValid() || !canMove(item))
        return;
    QList<QByteArray> rows;
    for (const Item *at = item; at->parent; at = at->parent)
        rows.prepend(QByteArray::number(m_model.findRow(at)));
    data->setData(entryMimeType(), m_id + ' ' + QByteArray::number(quintptr(item), 16) + ' ' + rows.join('/'));
}

bool EditorMoves::isOwnDrag(const QMimeData *data, QModelIndex *entry) const
{
    *entry = QModelIndex();
    if (!data || !data->hasFormat(entryMimeType()))
        return false;
    const QList<QByteArray> fields = data->data(entryMimeType()).split(' ');
    if (fields.size() != 3 || fields.at(0) != m_id)
        return false;
    bool ok = false;
    const quintptr address = fields.at(1).toULongLong(&ok, 16);
    if (!ok)
        return true;
    const Item *item = m_model.root();
    for (const QByteArray &row : fields.at(2).split('/')) {
        const int number = row.toInt(&ok);
        if (!item || !ok || number < 0)
            return true;
        item = item->child(number);
    }
    if (item && item != m_model.root() && quintptr(item) == address)
        *entry = m_model.item2index(item);
    return true;
}

bool EditorMoves::dropPlace(int row, const QModelIndex &parent, Item **parentItem, int *position) const
{
    Item *target = m_model.index2item(parent);
    if (!target)
        return false;
    if (row >= 0) {
        // between rows
        *parentItem = target;
        *position = row;
    } else if (parent.isValid()) {
        // onto an entry: before it, as a paste there
        if (!target->parent)
            return false;
        *parentItem = target->parent;
        *position = m_model.findRow(target);
    } else {
        // below the last row
        *parentItem = target;
        *position = int(target->children.size());
    }
    return true;
}

bool EditorMoves::canDrop(const QModelIndex &entry, int row, const QModelIndex &parent) const
{
    Item *parentItem = nullptr;
    int position = 0;
    Destination to;
    return entry.isValid() && dropPlace(row, parent, &parentItem, &position)
        && destination(m_model.index2item(entry), parentItem, position, &to);
}

QModelIndex EditorMoves::drop(const QModelIndex &entry, int row, const QModelIndex &parent)
{
    Item *parentItem = nullptr;
    int position = 0;
    Destination to;
    Item *item = m_model.index2item(entry);
    if (!entry.isValid() || !dropPlace(row, parent, &parentItem, &position)
        || !destination(item, parentItem, position, &to))
        return QModelIndex();
    return move(item, to);
}

} // namespace ZAT16
