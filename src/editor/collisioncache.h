#pragma once

#include "siblingindex.h"

#include <QHash>

namespace ZAT16 {

class Item;

/// The sibling indexes of the parents in a document, made on the first question about one of
/// their children. The model's primitives keep them up to date: an insertion, a removal or a
/// data change updates its parent's index in place; a removal drops the indexes of the removed
/// subtree, a new root all of them.
class CollisionCache
{
public:
    /// The collision flags of `item` with its siblings. An item of the document `root` is
    /// answered from its parent's index; an item taken out of the tree, or one whose parent is
    /// outside the document, is compared with its siblings the slow way, as Item does it.
    Item::CollisionFlags collision(const Item *item, const Item *root) const;

    /// The index of `parent` that a change of its children is to update, or null when there is
    /// none. Where a parent has none, no view has been told a colour of its children that
    /// depends on a collision, so nothing needs to be repainted for them. An index that no
    /// longer matches the list is dropped and `lost` set: the whole list is to be repainted.
    SiblingIndex *forChange(const Item *parent, bool *lost);
    /// The same for a change of the data of `item` at `row`.
    SiblingIndex *forUpdate(const Item *item, int row, bool *lost);
    /// Drops the indexes of `item` and its subtree, which has left the document.
    void forget(const Item *item);
    void clear() { m_indexes.clear(); }

private:
    const SiblingIndex *index(const Item *parent, const Item *root) const;

    mutable QHash<const Item *, SiblingIndex> m_indexes;
};

} // namespace ZAT16
