#include "item.h"
#include "itempool.h"

#include <algorithm>
#include <cstdio>

namespace ZAT16 {

bool ItemData::operator==(const ItemData &other) const
{
    return type == other.type && id == other.id && name == other.name && comment == other.comment
        && display.mode == other.display.mode && display.digits == other.display.digits && hasId == other.hasId
        && secure == other.secure;
}

QString ItemData::formatNumber(unsigned long long value) const
{
    return ZAT16::formatNumber(value, display);
}

Item::Item() = default;

Item::Item(const ItemData &data)
    : ItemData(data)
{
}

Item::~Item()
{
    qDeleteAll(children);
}

void *Item::operator new(std::size_t size)
{
    // A class derived from Item has a size of its own and is allocated as usual.
    if (size != ItemPool::slotSize)
        return ::operator new(size);
    return ItemPool::allocate();
}

void Item::operator delete(void *pointer, std::size_t size)
{
    if (size != ItemPool::slotSize)
        ::operator delete(pointer);
    else
        ItemPool::release(pointer);
}

void Item::clear()
{
    qDeleteAll(children);
    static_cast<ItemData &>(*this) = ItemData();
}

// Negative rows give null as well: item views probe indexes like (-1, 0).
Item *Item::child(int row)
{
    return row >= 0 && row < children.size() ? children.at(row) : nullptr;
}

const Item *Item::child(int row) const
{
    return row >= 0 && row < children.size() ? children.at(row) : nullptr;
}

Item *Item::takeChild(int row)
{
    if (row < 0 || row >= children.size())
        return nullptr;
    return children.takeAt(row);
}

void Item::removeChild(int row)
{
    delete takeChild(row);
}

void Item::insertChildBefore(int row, Item *item)
{
    item->parent = this;
    children.insert(row, item);
}

void Item::appendChild(Item *item)
{
    item->parent = this;
    children.append(item);
}

int Item::row() const
{
    if (!parent)
        return 0;
    const QList<Item *> &siblings = parent->children;
    const qsizetype count = siblings.size();
    if (m_rowHint < count && siblings.at(m_rowHint) == this)
        return m_rowHint;
    int row = -1;
    for (qsizetype i = 0; i < count; ++i) {
        const Item *sibling = siblings.at(i);
        sibling->m_rowHint = int(i);
        if (sibling == this)
            row = int(i);
    }
    return row;
}

void Item::sortChildrenByType()
{
    std::stable_sort(children.begin(), children.end(), sortsBefore);
}

int Item::findBut(unsigned int id, const Item *but) const
{
    for (int i = 0; i < children.size(); ++i) {
        const Item *c = children.at(i);
        if (c != but && c->hasId && c->id == quint64(id))
            return i;
    }
    return -1;
}

int Item::findBut(const QString &name, const Item *but) const
{
    for (int i = 0; i < children.size(); ++i) {
        const Item *c = children.at(i);
        if (c != but && c->name == name)
            return i;
    }
    return -1;
}

Item::CollisionFlags Item::findCollision() const
{
    CollisionFlags flags;
    if (!parent)
        return flags;
    for (const Item *sibling : parent->children) {
        if (sibling == this)
            continue;
        if (hasIdKey() && sibling->hasIdKey() && sibling->id == id)
            flags |= IdCollision;
        if (hasNameKey() && sibling->hasNameKey() && sibling->name == name)
            flags |= NameCollision;
    }
    return flags;
}

int Item::enumCount() const
{
    int count = 0;
    quint64 next = 0;
    for (const Item *c : children) {
        if (!c->hasId)
            continue;
        if (count == 0) {
            const quint32 first = quint32(c->id);
            if (first > 1)
                return 0;
            next = quint64(first) + 1;
        } else {
            if (c->id != next)
                return 0;
            ++next;
        }
        ++count;
    }
    return count;
}

Item *Item::findInTagByItemType(ItemType type) const
{
    if (this->type != Tag)
        return nullptr;
    for (Item *c : children) {
        if (c->type == type)
            return c;
    }
    return nullptr;
}

bool Item::isNewline() const
{
    return children.isEmpty() && !hasId && name.isEmpty() && comment.isEmpty() && isNamedKind();
}

bool Item::isComment() const
{
    return type != Root && children.isEmpty() && !hasId && name.isEmpty() && !comment.isEmpty();
}

bool Item::isValid(ItemType type) const
{
    if (!hasId)
        return false;
    if (name.isEmpty())
        return type == Enum && this->type == Enum;
    if (type == Invalid)
        return isNamedKind();
    return this->type == type;
}

const DisplayMode &Item::displayMode() const
{
    return displayModeWithin(nullptr);
}

const DisplayMode &Item::displayModeWithin(const Item *top) const
{
    for (const Item *item = this; item; item = item == top ? nullptr : item->parent) {
        if (item->display.mode != 0)
            return item->display;
    }
    return display;
}

QString Item::formatId() const
{
    QString text;
    appendId(text);
    return text;
}

void Item::appendId(QString &text) const
{
    if (type == Tag)
        appendTag2hex(text, quint32(id));
    else
        appendNumber(text, id, displayMode());
}

ItemType Item::matchingParentType(ItemType type)
{
    switch (type) {
    case Tag:
        return Root;
    case Enums:
    case Bits:
        return Tag;
    case Enum:
        return Enums;
    case Bit:
        return Bits;
    default:
        return Invalid;
    }
}

void Item::dump(int indent)
{
    const QByteArray local = name.toLocal8Bit();
    const char *n = local.constData();
    const unsigned long long value = id;
    std::fprintf(stderr, "%*s%3d ", indent, "", row());
    switch (type) {
    case Root:
        std::fprintf(stderr, "Root\n");
        break;
    case Tag:
        std::fprintf(stderr, "Tag: %s = 0x%04llX\n", n, value);
        break;
    case Enums:
        std::fprintf(stderr, "Enums\n");
        break;
    case Enum:
        std::fprintf(stderr, "Enum: %s = 0x%04llX\n", n, value);
        break;
    case Bits:
        std::fprintf(stderr, "Bits\n");
        break;
    case Bit:
        std::fprintf(stderr, "Bit: %s = 0x%04llX\n", n, value);
        break;
    default:
        std::fprintf(stderr, "%u: %s = 0x%04llX\n", unsigned(type), n, value);
        break;
    }
    for (Item *c : children)
        c->dump(indent + 2);
}

} // namespace ZAT16
