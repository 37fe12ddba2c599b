#include "rowcache.h"

#include "item.h"

namespace ZAT16 {

namespace {

// How many rows on either side of an item a miss keeps.
constexpr qsizetype rowWindow = 64;

} // namespace

int RowCache::row(const Item *item) const
{
    if (!item)
        return 0;
    const auto it = m_rows.constFind(item);
    if (it != m_rows.constEnd())
        return it.value();
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

int RowCache::rowIn(const Item *parent, const Item *child) const
{
    const auto cached = m_rows.constFind(child);
    if (cached != m_rows.constEnd() && parent->children.value(cached.value()) == child)
        return cached.value();
    return int(parent->children.indexOf(const_cast<Item *>(child)));
}

} // namespace ZAT16
