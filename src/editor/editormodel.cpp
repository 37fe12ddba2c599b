#include "editormodel.h"

#include "commandchange.h"
#include "commandchangecomment.h"
#include "commandchangeid.h"
#include "commandchangename.h"
#include "commanddelete.h"
#include "commandnew.h"
#include "commandreplaceall.h"
#include "numbers.h"
#include "parser.h"
#include "writerxml.h"

#include <QBrush>
#include <QColor>
#include <QDebug>
#include <QMimeData>
#include <QUndoStack>

namespace ZAT16 {

namespace {

// How many rows on either side of an item a row cache miss keeps.
constexpr qsizetype rowWindow = 64;

const QString xmlMimeType = QStringLiteral("text/xml");
const QString textMimeType = QStringLiteral("text/plain");

// Tags, enumeration values and bits: the kinds that carry a name, a code and a comment.
bool isNamedKind(const Item *item)
{
    return item->type == Tag || item->type == Enum || item->type == Bit;
}

const char *tagIconPath(unsigned int code)
{
    switch (dataType(code)) {
    case Binary:
        return ":/icons/i16_data.png";
    case Integer:
        return ":/icons/i16_int.png";
    case Bool:
        return ":/icons/i16_bool.png";
    case String:
        return ":/icons/i16_string.png";
    case Date:
        return ":/icons/i16_date.png";
    case Time:
        return ":/icons/i16_time.png";
    case DateTime:
        return ":/icons/i16_datetime.png";
    case BitArray:
        return ":/icons/i16_list_bullets.png";
    case NetworkAddress:
        return ":/icons/i16_network.png";
    case List:
        return ":/icons/i16_list.png";
    case Request:
        return ":/icons/i16_question.png";
    case Answer:
        return ":/icons/i16_answer.png";
    case Message:
        return ":/icons/i16_message.png";
    case ExtPoint:
        return ":/icons/i16_point.png";
    case ExtRect:
        return ":/icons/i16_rect.png";
    case ExtSize:
        return ":/icons/i16_size.png";
    }
    return ":/icons/i16_empty.png";
}

} // namespace

EditorModel::EditorModel(QObject *parent)
    : QAbstractItemModel(parent)
    , m_fixedFont(QStringLiteral("Monospace"))
{
    m_fixedFont.setStyleHint(QFont::TypeWriter, QFont::PreferDefault);
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
    if (!item)
        return 0;
    const auto it = m_rows.constFind(item);
    if (it != m_rows.constEnd())
        return it.value();
    // A miss looks the item up in its parent's list and keeps the rows around it: a repaint
    // asks for neighbours, and a long list is not walked once per row.
    if (const Item *parent = item->parent) {
        const QList<Item *> &siblings = parent->children;
        const qsizetype row = siblings.indexOf(const_cast<Item *>(item));
        if (row >= 0) {
            const qsizetype first = qMax<qsizetype>(0, row - rowWindow);
            const qsizetype last = qMin<qsizetype>(siblings.size(), row + rowWindow + 1);
            for (qsizetype i = first; i < last; ++i)
                m_rows.insert(siblings.at(i), int(i));
            return int(row);
        }
    }
    const int row = item->row();
    m_rows.insert(item, row);
    return row;
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

// The blanks keep empty cells at a usable height and width.
QVariant EditorModel::displayData(const Item *item, int column) const
{
    if (column == 2)
        return item->comment.isEmpty() ? QStringLiteral(" ") : item->comment;
    if (isNamedKind(item)) {
        if (column == 0)
            return item->name.isEmpty() ? QStringLiteral(" ") : item->name;
        if (column == 1) {
            if (!item->hasId)
                return item->type == Tag ? QStringLiteral("      ") : QStringLiteral(" ");
            if (item->type == Tag)
                return item->formatId();
            return QStringLiteral("  ") + item->formatId();
        }
        return QVariant();
    }
    if (column == 0) {
        if (item->type == Enums)
            return tr("Enums");
        if (item->type == Bits)
            return tr("Bits");
    }
    return QVariant();
}

QVariant EditorModel::editData(const Item *item, int column) const
{
    if (!isNamedKind(item))
        return QVariant();
    switch (column) {
    case 0:
        return item->name;
    case 1:
        return item->hasId ? QVariant(item->formatId()) : QVariant();
    case 2:
        return item->comment;
    default:
        return QVariant();
    }
}

QIcon EditorModel::icon(const QString &path) const
{
    auto it = m_icons.find(path);
    if (it == m_icons.end())
        it = m_icons.insert(path, QIcon(path));
    return it.value();
}

QVariant EditorModel::decorationData(const Item *item, int column) const
{
    if (column != 0)
        return QVariant();
    const char *path = ":/icons/i16_empty.png";
    switch (item->type) {
    case Tag:
        if (item->hasId)
            path = tagIconPath(quint32(item->id));
        break;
    case Enums:
    case Bits:
        path = ":/icons/i16_folder.png";
        break;
    case Enum:
        if (item->hasId || !item->name.isEmpty())
            path = ":/icons/i16_list.png";
        break;
    case Bit:
        if (item->hasId || !item->name.isEmpty())
            path = ":/icons/i16_tiny_bullet.png";
        break;
    default:
        break;
    }
    return icon(QString::fromLatin1(path));
}

QVariant EditorModel::tooltipData(const Item *item, int column) const
{
    // A name that the reader refuses says why it is marked.
    QString invalid;
    if (column == 0 && isNamedKind(item) && !item->isComment() && !item->name.isEmpty()
        && !isValidIdentifier(item->name, &invalid))
        return invalid;
    if (item->type != Tag || !item->hasId || (column != 0 && column != 1))
        return QVariant();
    switch (dataType(quint32(item->id))) {
    case Binary:
        return tr("Binary");
    case Integer:
        return tr("Integer");
    case Bool:
        return tr("Bool");
    case String:
        return tr("String");
    case Date:
        return tr("Date");
    case Time:
        return tr("Time");
    case DateTime:
        return tr("DateTime");
    case BitArray:
        return tr("BitArray");
    case NetworkAddress:
        return tr("Network-Address");
    case List:
        return tr("List");
    case Request:
        return tr("Request");
    case Answer:
        return tr("Answer");
    case Message:
        return tr("Message");
    case ExtPoint:
        return tr("Point");
    case ExtRect:
        return tr("Rect");
    case ExtSize:
        return tr("Size");
    }
    return QVariant();
}

QVariant EditorModel::fontData(const Item *item, int column) const
{
    if (column == 2)
        return m_commentFont;
    if ((column == 0 || column == 1) && isNamedKind(item))
        return m_fixedFont;
    return QVariant();
}

QVariant EditorModel::highlightData(const Item *item, int row, int column, int role) const
{
    Q_UNUSED(row)
    const bool background = role == Qt::BackgroundRole;
    if (item->isComment())
        return background ? QColor(222, 255, 222) : QColor(0, 0, 0);
    if (!isNamedKind(item))
        return QVariant();

    const bool hasName = !item->name.isEmpty();
    const bool hasCode = item->hasId;
    const bool codeOrName = column == 0 || column == 1;
    bool marked = false;
    if (column == 0 && hasName && !isValidIdentifier(item->name, nullptr)) {
        // the reader refuses it: the saved file would not open again
        marked = true;
    } else if (hasName && !hasCode && codeOrName) {
        marked = true;
    } else if (!hasName && hasCode && codeOrName && !(item->type == Enum && !item->comment.isEmpty())) {
        // a nameless enumeration value with a code and a comment is legal
        marked = true;
    } else {
        const Item::CollisionFlags flags = findCollision(item);
        if ((flags.testFlag(Item::NameCollision) && column == 0) || (flags.testFlag(Item::IdCollision) && column == 1))
            marked = true;
        else if (!item->children.isEmpty() && (!hasName || !hasCode))
            marked = true;
    }
    if (!marked)
        return QVariant();
    return background ? QColor(192, 0, 0) : QColor(255, 255, 255);
}

Item::CollisionFlags EditorModel::findCollision(const Item *item) const
{
    const Item *parent = item->parent;
    if (!parent)
        return {};
    const SiblingIndex *counts = siblingCounts(parent);
    // An item that is not where its parent pointer says (taken out of the tree) and the
    // children of a parent outside the document are compared the slow way, as Item does it.
    const int row = findRow(item);
    if (!counts || row < 0 || row >= parent->children.size() || parent->children.at(row) != item)
        return item->findCollision();
    return counts->collision(item);
}

// The counts of a parent in the document, made in one pass over its children on first need.
// Parents outside the document get none: nothing would tell when they are deleted.
const SiblingIndex *EditorModel::siblingCounts(const Item *parent) const
{
    const auto it = m_counts.constFind(parent);
    if (it != m_counts.constEnd())
        return &it.value();
    // A taken item keeps its parent pointer, so each step up must be in its parent's list.
    for (const Item *at = parent; at != m_root; at = at->parent) {
        if (!at->parent || at->parent->children.value(findRow(at)) != at)
            return nullptr;
    }

    return &m_counts.insert(parent, SiblingIndex(parent)).value();
}

// The counts of a parent that a change of its children is to update, when there are any.
// Where a parent has none, no view has been told a colour of its children that depends on a
// collision, since the counts are made for the first such answer and dropped only with a new
// root or when the parent leaves the document: nothing needs to be repainted for them.
// Counts that no longer match the list are dropped; `lost` tells that the whole list is to be
// repainted after the change.
SiblingIndex *EditorModel::countsForChange(const Item *parent, bool *lost)
{
    *lost = false;
    const auto it = m_counts.find(parent);
    if (it == m_counts.end())
        return nullptr;
    if (it->size() == parent->children.size())
        return &it.value();
    m_counts.erase(it);
    *lost = true;
    return nullptr;
}

// Rows leave the document with their subtrees; their counts would not follow later changes.
void EditorModel::forgetCounts(const Item *item)
{
    if (m_counts.isEmpty())
        return;
    m_counts.remove(item);
    for (const Item *child : item->children)
        forgetCounts(child);
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
    m_fixedFont = font;
    allChildrenChanged(m_root);
}

void EditorModel::setCommentFont(const QFont &font)
{
    m_commentFont = font;
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

void EditorModel::undoableSetTags(Item *root, const QModelIndex &index)
{
    push(new CommandReplaceAll(root, this, index));
}

void EditorModel::undoableClear(const QModelIndex &index)
{
    if (m_root && !m_root->children.isEmpty())
        undoableSetTags(nullptr, index);
}

// ---------------------------------------------------------------------------------------------
// Editing operations

bool EditorModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole)
        return false;
    Item *item = index2item(index);
    if (!item || !isNamedKind(item))
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
            push(new CommandChangeID(code, true, item, this, index));
        } else if (item->hasId) {
            push(new CommandChangeID(0, false, item, this, index));
        }
        return true;
    case 2:
        if (text != item->comment)
            push(new CommandChangeComment(text, item, this, index));
        return true;
    case 0:
        if (text != item->name)
            push(new CommandChangeName(text, item, this, index));
        return true;
    default:
        return false;
    }
}

bool EditorModel::setItemData(const QModelIndex &index, const ItemData &data)
{
    Item *item = index2item(index);
    if (!item)
        return false;
    if (data == *item)
        return true;
    push(new CommandChange(data, item, this, index));
    return true;
}

QModelIndex EditorModel::insertRow(int row, const QModelIndex &parent, Item *item)
{
    Item *parentItem = index2item(parent);
    if (!parentItem || row < 0)
        return QModelIndex();
    int position = qMin(row, int(parentItem->children.size()));

    if (!item) {
        // A new empty row starts as a blank line that the user then fills; no code is chosen.
        ItemType kind;
        switch (parentItem->type) {
        case Enums:
            kind = Enum;
            break;
        case Bits:
            kind = Bit;
            break;
        case Root:
            kind = Tag;
            break;
        default:
            return QModelIndex();
        }
        item = new Item;
        item->type = kind;
    } else {
        switch (item->type) {
        case Tag: {
            // Tags live at the root level: before the top-level tag that holds the position.
            Item *current = parentItem;
            while (current->type != Root) {
                if (!current->parent)
                    return QModelIndex();
                position = findRow(current);
                current = current->parent;
            }
            parentItem = current;
            break;
        }
        case Enums:
        case Bits: {
            Item *tag = parentItem->child(position);
            if (!tag)
                tag = parentItem;
            while (tag && tag->type != Tag)
                tag = tag->parent;
            if (!tag)
                return QModelIndex();
            Item *existing = tag->findInTagByItemType(item->type);
            if (!existing) {
                tag->dump(0);
                parentItem = tag;
                position = int(tag->children.size());
                for (int i = 0; i < tag->children.size(); ++i) {
                    if (tag->children.at(i)->type < item->type) {
                        position = i;
                        break;
                    }
                }
                break;
            }
            // A list of the same kind is there already: its values are merged into it.
            if (parentItem != existing)
                position = int(existing->children.size());
            const QModelIndex select = parent.model() ? parent.model()->index(position, 0, parent) : QModelIndex();
            const QList<Item *> children = item->children;
            item->children.clear();
            delete item;
            if (m_undoStack)
                m_undoStack->beginMacro(tr("Merge data"));
            for (int i = 0; i < children.size(); ++i)
                push(new CommandNew(children.at(i), position + i, existing, this, select));
            if (m_undoStack)
                m_undoStack->endMacro();
            return item2index(existing);
        }
        case Enum:
        case Bit: {
            Item *at = parentItem->child(position);
            if (!at)
                at = parentItem;
            const QModelIndex list = insertList(item2index(at), Item::matchingParentType(item->type));
            if (!list.isValid() || !list.model())
                return QModelIndex();
            Item *listItem = index2item(list);
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
    push(new CommandNew(item, position, parentItem, this, select));
    return item2index(item);
}

bool EditorModel::insertRow(int row, const QModelIndex &parent)
{
    return insertRow(row, parent, nullptr).isValid();
}

QModelIndex EditorModel::insertList(const QModelIndex &at, ItemType kind)
{
    if (kind != Enums && kind != Bits)
        return QModelIndex();
    Item *tag = index2item(at);
    while (tag && tag->type != Tag)
        tag = tag->parent;
    if (!tag)
        return QModelIndex();
    if (Item *existing = tag->findInTagByItemType(kind))
        return item2index(existing);

    // Higher kinds first: a bit list goes before an enumeration list.
    int position = int(tag->children.size());
    for (int i = 0; i < tag->children.size(); ++i) {
        if (tag->children.at(i)->type < kind) {
            position = i;
            break;
        }
    }
    Item *list = new Item;
    list->type = kind;
    push(new CommandNew(list, position, tag, this, item2index(tag)));
    return item2index(list);
}

CommandDelete *EditorModel::prepareRemoveRow(int row, const QModelIndex &parent)
{
    Item *parentItem = index2item(parent);
    if (!parentItem || row < 0 || row >= parentItem->children.size())
        return nullptr;
    const QModelIndex select = parent.model() ? parent.model()->index(row, 0, parent) : QModelIndex();
    return new CommandDelete(row, parentItem, this, select);
}

bool EditorModel::removeRow(int row, const QModelIndex &parent)
{
    CommandDelete *command = prepareRemoveRow(row, parent);
    if (!command)
        return false;
    command->setMode(CommandDelete::Remove);
    push(command);
    return true;
}

// ---------------------------------------------------------------------------------------------
// Clipboard and drag-and-drop

QMimeData *EditorModel::copy(const QModelIndex &index)
{
    if (!index.isValid())
        return nullptr;
    auto *mime = new QMimeData;
    const QModelIndex parentIndex = index.parent();
    const int row = index.row();
    mime->setText(data(this->index(row, 0, parentIndex), Qt::EditRole).toString() + QLatin1Char(' ')
        + data(this->index(row, 1, parentIndex), Qt::EditRole).toString());
    // The item as the one element of a definitions document, its comment an attribute: a
    // comment line or a blank line too, which could not stand as a document otherwise.
    if (const Item *item = index2item(index)) {
        WriterXml writer;
        writer.entry = true;
        mime->setData(xmlMimeType, writer.encode(item));
    }
    return mime;
}

QMimeData *EditorModel::cut(const QModelIndex &index)
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
    push(command);
    return mime;
}

QModelIndex EditorModel::paste(const QModelIndex &at, const QMimeData *data)
{
    if (!at.isValid() || !data)
        return QModelIndex();
    const QByteArray xml = data->data(xmlMimeType);
    if (!xml.isEmpty()) {
        // Parse errors are not reported: only whether an item came out counts.
        Parser parser;
        parser.entry = true;
        parser.parse(xml);
        Item *item = parser.takeRoot();
        if (!item)
            return QModelIndex();
        const QModelIndex inserted = insertRow(at.row(), at.parent(), item);
        if (inserted.isValid())
            return inserted;
        delete item;
        return QModelIndex();
    }
    if (data->hasText()) {
        setData(at, data->text(), Qt::EditRole);
        return at;
    }
    return QModelIndex();
}

QStringList EditorModel::mimeTypes() const
{
    return QStringList(textMimeType);
}

QMimeData *EditorModel::mimeData(const QModelIndexList &indexes) const
{
    if (indexes.size() != 1)
        return nullptr;
    auto *mime = new QMimeData;
    mime->setText(data(indexes.first(), Qt::EditRole).toString());
    return mime;
}

bool EditorModel::dropMimeData(
    const QMimeData *data, Qt::DropAction action, int row, int column, const QModelIndex &parent)
{
    if (action == Qt::IgnoreAction)
        return true;
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

void EditorModel::clearCaches()
{
    m_counts.clear();
    m_rows.clear();
}

// The bottom-right corner lies one past the last column on purpose, as in allChildrenChanged.
void EditorModel::rowChanged(const Item *item, int row)
{
    emit dataChanged(createIndex(row, 0, const_cast<Item *>(item)), createIndex(row, 3, const_cast<Item *>(item)));
}

// The siblings come from the counts as bare addresses: each is looked up in the parent's list,
// so that only a child is ever touched.
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
        const auto cached = m_rows.constFind(sibling);
        const qsizetype row = cached != m_rows.constEnd() && parent->children.value(cached.value()) == sibling
            ? cached.value()
            : parent->children.indexOf(const_cast<Item *>(sibling));
        if (row >= 0)
            rowChanged(sibling, int(row));
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
    m_rows.clear();
    SiblingIndex *counts = countsForChange(parent, &lost);
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

// The taken item leaves its siblings' counts, which may unmark a sibling; a last child changes
// the parent's own marks.
Item *EditorModel::cmdTakeRow(Item *parent, int row)
{
    Changed changed;
    bool lost = false;
    beginRemoveRows(item2index(parent), row, row);
    SiblingIndex *counts = countsForChange(parent, &lost);
    Item *item = parent->takeChild(row);
    m_rows.clear();
    if (item) {
        forgetCounts(item);
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

// A data change moves no rows, so the row cache stays; the counts of the item's siblings move
// from its old name and code, as they were counted, to the new ones. The siblings whose flags
// that turns on or off are repainted after the item itself.
void EditorModel::cmdItemChanged(Item *item)
{
    const int row = findRow(item);
    Changed changed;
    bool lost = false;
    if (const Item *parent = item->parent) {
        const auto it = m_counts.find(parent);
        if (it != m_counts.end()) {
            SiblingIndex &counts = it.value();
            if (row >= 0 && row < counts.size() && counts.size() == parent->children.size()
                && parent->children.value(row) == item) {
                counts.update(row, item, &changed);
            } else {
                m_counts.erase(it);
                lost = true;
            }
        }
    }
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
    clearCaches();
    endResetModel();
    return previous;
}

void EditorModel::cmdUndone(const QModelIndex &index)
{
    emit undone(index);
}

} // namespace ZAT16
