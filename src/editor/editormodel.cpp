#include "editormodel.h"

#include "editorclipboard.h"

#include <QMimeData>
#include <QUndoStack>

namespace ZAT16 {

EditorModel::EditorModel(QObject *parent)
    : QAbstractItemModel(parent)
{
}

EditorModel::~EditorModel()
{
    delete m_root;
}

// ---------------------------------------------------------------------------------------------
// Structure

Item *EditorModel::index2item(const QModelIndex &index) const
{
    if (index.isValid())
        return static_cast<Item *>(index.internalPointer());
    return m_root;
}

QModelIndex EditorModel::item2index(const Item *item) const
{
    if (!item || item == m_root)
        return QModelIndex();
    return createIndex(findRow(item), 0, const_cast<Item *>(item));
}

int EditorModel::findRow(const Item *item) const
{
    return item ? item->row() : 0;
}

QModelIndex EditorModel::index(int row, int column, const QModelIndex &parent) const
{
    Item *parentItem = index2item(parent);
    if (!parentItem)
        return QModelIndex();
    Item *child = parentItem->child(row);
    if (!child)
        return QModelIndex();
    return createIndex(row, column, child);
}

QModelIndex EditorModel::parent(const QModelIndex &index) const
{
    if (!index.isValid())
        return QModelIndex();
    const Item *item = index2item(index);
    if (!item)
        return QModelIndex();
    Item *parentItem = item->parent;
    if (!parentItem || parentItem == m_root)
        return QModelIndex();
    return createIndex(findRow(parentItem), 0, parentItem);
}

int EditorModel::rowCount(const QModelIndex &parent) const
{
    if (parent.column() > 0)
        return 0;
    const Item *item = index2item(parent);
    return item ? int(item->children.size()) : 0;
}

int EditorModel::columnCount(const QModelIndex &) const
{
    return 3;
}

// ---------------------------------------------------------------------------------------------
// Reading

QVariant EditorModel::data(const QModelIndex &index, int role) const
{
    const Item *item = index2item(index);
    if (!item)
        return QVariant();
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        return displayData(item, column);
    case Qt::DecorationRole:
        return decorationData(item, column);
    case Qt::EditRole:
        return editData(item, column);
    case Qt::ToolTipRole:
        return tooltipData(item, column);
    case Qt::FontRole:
        return fontData(item, column);
    case Qt::BackgroundRole:
    case Qt::ForegroundRole:
        return highlightData(item, index.row(), column, role);
    default:
        return QVariant();
    }
}

// The row does not matter: the marks depend on the item and its siblings only.
QVariant EditorModel::highlightData(const Item *item, int row, int column, int role) const
{
    Q_UNUSED(row)
    return m_presentation.highlight(
        item,
        column,
        role,
        [this, item] { return findCollision(item); },
        !m_outputMarks.isEmpty() && m_outputMarks.contains(item));
}

void EditorModel::setOutputMarks(const QList<const Item *> &items)
{
    QSet<const Item *> marks(items.cbegin(), items.cend());
    if (marks == m_outputMarks)
        return;
    std::swap(marks, m_outputMarks);
    // Only colours change. A few rows are repainted one by one, many by one signal over the
    // top-level rows, on which a view repaints what it shows.
    const QList<int> roles { Qt::BackgroundRole, Qt::ForegroundRole };
    QList<const Item *> changed;
    for (const QSet<const Item *> *set : { &marks, &m_outputMarks }) {
        const QSet<const Item *> &other = set == &marks ? m_outputMarks : marks;
        for (const Item *item : *set) {
            if (!other.contains(item))
                changed.append(item);
        }
    }
    if (changed.size() > 32 && m_root && !m_root->children.isEmpty()) {
        const QList<Item *> &tags = m_root->children;
        emit dataChanged(createIndex(0, 0, tags.first()), createIndex(int(tags.size()), 3, tags.last()), roles);
        return;
    }
    for (const Item *item : std::as_const(changed)) {
        const int row = findRow(item);
        emit dataChanged(createIndex(row, 0, const_cast<Item *>(item)),
                         createIndex(row, 3, const_cast<Item *>(item)),
                         roles);
    }
}

void EditorModel::forgetOutputMarks(const Item *item)
{
    if (m_outputMarks.isEmpty())
        return;
    m_outputMarks.remove(item);
    for (const Item *child : item->children)
        forgetOutputMarks(child);
}

Item::CollisionFlags EditorModel::findCollision(const Item *item) const
{
    return m_collisions.collision(item, m_root);
}

QVariant EditorModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return QVariant();
    if (orientation == Qt::Vertical)
        return QString::number(section + 1);
    switch (section) {
    case 0:
        return tr("Name");
    case 1:
        return tr("Tag");
    case 2:
        return tr("Comment");
    default:
        return QVariant();
    }
}

Qt::ItemFlags EditorModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    const Item *item = index2item(index);
    if (!item)
        return Qt::ItemIsSelectable | Qt::ItemIsDropEnabled | Qt::ItemIsEnabled;
    switch (item->type) {
    case Tag:
    case Enum:
    case Bit:
        return Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled
            | Qt::ItemIsEnabled;
    case Enums:
    case Bits:
        return Qt::ItemIsSelectable | Qt::ItemIsDropEnabled | Qt::ItemIsEnabled;
    case Root:
        return Qt::ItemIsDropEnabled;
    default:
        return Qt::NoItemFlags;
    }
}

// ---------------------------------------------------------------------------------------------
// Fonts and the stack

void EditorModel::setFixedFont(const QFont &font)
{
    m_presentation.setFixedFont(font);
    allChildrenChanged(m_root);
}

void EditorModel::setCommentFont(const QFont &font)
{
    m_presentation.setCommentFont(font);
    allChildrenChanged(m_root);
}

// The bottom-right corner lies one past the last row and column on purpose: views take the
// signal as a request to repaint.
void EditorModel::allChildrenChanged(Item *item)
{
    if (!item || item->children.isEmpty())
        return;
    emit dataChanged(createIndex(0, 0, item), createIndex(int(item->children.size()), 3, item));
}

void EditorModel::setUndoStack(QUndoStack *stack)
{
    m_undoStack = stack;
}

void EditorModel::push(QUndoCommand *command)
{
    if (m_undoStack) {
        m_undoStack->push(command);
    } else {
        command->redo();
        delete command;
    }
}

// ---------------------------------------------------------------------------------------------
// Whole-document operations

void EditorModel::setTags(Item *root)
{
    if (m_undoStack)
        m_undoStack->clear();
    delete cmdReplaceTags(root);
}

void EditorModel::clear()
{
    setTags(nullptr);
}

// ---------------------------------------------------------------------------------------------
// Clipboard and drag-and-drop

QStringList EditorModel::mimeTypes() const
{
    return QStringList(EditorClipboard::textMimeType());
}

// Beside the cell's text, the entry of the row, so that a drop into this model moves it.
QMimeData *EditorModel::mimeData(const QModelIndexList &indexes) const
{
    if (indexes.size() != 1)
        return nullptr;
    QMimeData *mime = EditorClipboard::encode(nullptr, data(indexes.first(), Qt::EditRole).toString());
    m_moves.addEntry(mime, indexes.first());
    return mime;
}

// What dropMimeData() would take, so that the view shows only places where a drop does something.
bool EditorModel::canDropMimeData(
    const QMimeData *data, Qt::DropAction action, int row, int column, const QModelIndex &parent) const
{
    if (action == Qt::IgnoreAction)
        return true;
    QModelIndex entry;
    if (m_moves.isOwnDrag(data, &entry))
        return m_moves.canDrop(entry, row, parent);
    // Text sets a cell of a tag, value or bit.
    const Item *item = index2item(parent);
    if (row >= 0 || column >= 0 || !parent.isValid() || !item || !item->isNamedKind())
        return false;
    return QAbstractItemModel::canDropMimeData(data, action, row, column, parent);
}

// A row dragged within this model moves its entry, whatever the drop action: the view offers
// copying only, so it never removes the dragged row itself after the drop. Anything else (text
// from another program, a row dragged from another window) sets the text of the cell it is
// dropped onto.
bool EditorModel::dropMimeData(
    const QMimeData *data, Qt::DropAction action, int row, int column, const QModelIndex &parent)
{
    if (action == Qt::IgnoreAction)
        return true;
    QModelIndex entry;
    if (m_moves.isOwnDrag(data, &entry)) {
        const QModelIndex moved = m_moves.drop(entry, row, parent);
        if (moved.isValid())
            emit entryDropped(moved);
        return moved.isValid();
    }
    // Only drops onto an item are taken, not between rows.
    if (row >= 0 || column >= 0)
        return false;
    if (!data || !data->hasText())
        return false;
    return setData(parent, data->text(), Qt::EditRole);
}

Qt::DropActions EditorModel::supportedDropActions() const
{
    return Qt::CopyAction;
}

Qt::DropActions EditorModel::supportedDragActions() const
{
    return Qt::CopyAction;
}

// ---------------------------------------------------------------------------------------------
// Primitive tree changes

// The bottom-right corner lies one past the last column on purpose, as in allChildrenChanged.
void EditorModel::rowChanged(const Item *item, int row)
{
    emit dataChanged(createIndex(row, 0, const_cast<Item *>(item)), createIndex(row, 3, const_cast<Item *>(item)));
}

// The siblings come from the counts as bare addresses: each is looked up in the parent's list,
// so that only a child is ever touched (its own row hint would have to be read through the
// address).
void EditorModel::rowsChanged(const Item *parent, const Changed &changed)
{
    for (qsizetype i = 0; i < changed.size(); ++i) {
        const Item *sibling = changed.at(i);
        // A sibling that both gains and loses a flag in one change is repainted once.
        bool seen = false;
        for (qsizetype k = 0; k < i && !seen; ++k)
            seen = changed.at(k) == sibling;
        if (seen)
            continue;
        const int row = int(parent->children.indexOf(const_cast<Item *>(sibling)));
        if (row >= 0)
            rowChanged(sibling, row);
    }
}

// All children of `parent`, with indexes of the children themselves, one past the end as usual.
void EditorModel::allRowsChanged(const Item *parent)
{
    const qsizetype size = parent->children.size();
    if (size == 0)
        return;
    emit dataChanged(createIndex(0, 0, parent->children.first()), createIndex(int(size), 3, parent->children.last()));
}

// Only the rows of the parent's list move. The new item's name and code join its siblings'
// counts, which may mark a sibling; a first child changes the parent's own marks.
void EditorModel::cmdInsertRow(Item *parent, Item *item, int row)
{
    const bool wasEmpty = parent->children.isEmpty();
    Changed changed;
    bool lost = false;
    beginInsertRows(item2index(parent), row, row);
    SiblingIndex *counts = m_collisions.forChange(parent, &lost);
    parent->insertChildBefore(row, item);
    if (counts)
        counts->insert(row, item, &changed);
    endInsertRows();
    rowsChanged(parent, changed);
    if (lost)
        allRowsChanged(parent);
    if (wasEmpty && parent != m_root)
        rowChanged(parent, findRow(parent));
}

// The item leaves the counts of its old siblings and joins those of its new ones, which may mark
// or unmark siblings on both sides, and itself where its parent changes; a parent that loses its
// last child or gets its first changes its own marks. The view keeps the item's selection and
// expansion, as it is the same item at another place.
void EditorModel::cmdMoveRow(Item *from, int fromRow, Item *to, int toRow)
{
    if (from == to && fromRow == toRow)
        return;
    const bool wasEmpty = to->children.isEmpty();
    // Qt counts the destination row in the list as it is before the move.
    const int destination = from == to && toRow > fromRow ? toRow + 1 : toRow;
    const bool moving = beginMoveRows(item2index(from), fromRow, fromRow, item2index(to), destination);
    Q_ASSERT(moving);
    Q_UNUSED(moving)
    Changed left;
    bool lostFrom = false;
    SiblingIndex *fromCounts = m_collisions.forChange(from, &lostFrom);
    Item *item = from->takeChild(fromRow);
    if (fromCounts)
        fromCounts->remove(fromRow, item, &left);
    Changed joined;
    bool lostTo = false;
    SiblingIndex *toCounts = m_collisions.forChange(to, &lostTo);
    to->insertChildBefore(toRow, item);
    if (toCounts)
        toCounts->insert(toRow, item, &joined);
    endMoveRows();
    if (from == to) {
        // A sibling that loses a flag and gets it back is repainted once.
        for (const Item *sibling : joined)
            left.append(sibling);
        rowsChanged(from, left);
    } else {
        rowsChanged(from, left);
        rowsChanged(to, joined);
        rowChanged(item, toRow);
    }
    if (lostFrom)
        allRowsChanged(from);
    if (lostTo && to != from)
        allRowsChanged(to);
    if (from != to && from->children.isEmpty() && from != m_root)
        rowChanged(from, findRow(from));
    if (wasEmpty && to != m_root)
        rowChanged(to, findRow(to));
}

// The taken item leaves its siblings' counts, which may unmark a sibling; a last child changes
// the parent's own marks.
Item *EditorModel::cmdTakeRow(Item *parent, int row)
{
    Changed changed;
    bool lost = false;
    beginRemoveRows(item2index(parent), row, row);
    SiblingIndex *counts = m_collisions.forChange(parent, &lost);
    Item *item = parent->takeChild(row);
    if (item) {
        m_collisions.forget(item);
        forgetOutputMarks(item);
        if (counts)
            counts->remove(row, item, &changed);
    }
    endRemoveRows();
    rowsChanged(parent, changed);
    if (lost)
        allRowsChanged(parent);
    if (item && parent->children.isEmpty() && parent != m_root)
        rowChanged(parent, findRow(parent));
    return item;
}

// The counts of the item's siblings move from its old name and code, as they were counted, to
// the new ones. The siblings whose flags that turns on or off are repainted after the item
// itself.
void EditorModel::cmdItemChanged(Item *item)
{
    const int row = findRow(item);
    Changed changed;
    bool lost = false;
    if (SiblingIndex *counts = m_collisions.forUpdate(item, row, &lost))
        counts->update(row, item, &changed);
    rowChanged(item, row);
    if (!changed.isEmpty())
        rowsChanged(item->parent, changed);
    if (lost)
        allRowsChanged(item->parent);
}

Item *EditorModel::cmdReplaceTags(Item *root)
{
    if (root == m_root)
        return nullptr;
    beginResetModel();
    Item *previous = m_root;
    m_root = root;
    m_collisions.clear();
    m_outputMarks.clear();
    endResetModel();
    return previous;
}

void EditorModel::cmdUndone(const QModelIndex &index)
{
    emit undone(index);
}

} // namespace ZAT16
