#pragma once

#include <QHash>

namespace ZAT16 {

class Item;

/// The rows of items in their parents' lists, looked up on first need. A miss searches the
/// parent's list once and keeps the rows of the neighbours too: a view asks for the rows around
/// the one it paints, and a long list is then not searched once per row. Every change of the
/// tree's structure empties the cache; a change of an item's data keeps it.
class RowCache
{
public:
    /// The item's row in its parent's list; 0 for null. An item that is not in its parent's
    /// list (taken out of the tree) gets what Item::row() says.
    int row(const Item *item) const;
    /// The row of a child of `parent` known only by its address, or -1 when it is not there.
    /// The cache is trusted only where it agrees with the list.
    int rowIn(const Item *parent, const Item *child) const;
    void clear() { m_rows.clear(); }

private:
    mutable QHash<const Item *, int> m_rows;
};

} // namespace ZAT16
