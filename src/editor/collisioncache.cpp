#include "collisioncache.h"

#include "item.h"

namespace ZAT16 {

Item::CollisionFlags CollisionCache::collision(const Item *item, const Item *root) const
{
    const Item *parent = item->parent;
    if (!parent)
        return {};
    const SiblingIndex *counts = index(parent, root);
    const int row = item->row();
    if (!counts || row < 0 || row >= parent->children.size() || parent->children.at(row) != item)
        return item->findCollision();
    return counts->collision(item);
}

// The index of a parent in the document, made in one pass over its children on first need.
// Parents outside the document get none: nothing would tell when they are deleted.
const SiblingIndex *CollisionCache::index(const Item *parent, const Item *root) const
{
    const auto it = m_indexes.constFind(parent);
    if (it != m_indexes.constEnd())
        return &it.value();
    // A taken item keeps its parent pointer, so each step up must be in its parent's list.
    for (const Item *at = parent; at != root; at = at->parent) {
        if (!at->parent || at->parent->children.value(at->row()) != at)
            return nullptr;
    }
    return &m_indexes.insert(parent, SiblingIndex(parent)).value();
}

SiblingIndex *CollisionCache::forChange(const Item *parent, bool *lost)
{
    *lost = false;
    const auto it = m_indexes.find(parent);
    if (it == m_indexes.end())
        return nullptr;
    if (it->size() == parent->children.size())
        return &it.value();
    m_indexes.erase(it);
    *lost = true;
    return nullptr;
}

SiblingIndex *CollisionCache::forUpdate(const Item *item, int row, bool *lost)
{
    *lost = false;
    const Item *parent = item->parent;
    if (!parent)
        return nullptr;
    const auto it = m_indexes.find(parent);
    if (it == m_indexes.end())
        return nullptr;
    if (row >= 0 && row < it->size() && it->size() == parent->children.size() && parent->children.value(row) == item)
        return &it.value();
    m_indexes.erase(it);
    *lost = true;
    return nullptr;
}

// Rows leave the document with their subtrees; their indexes would not follow later changes.
void CollisionCache::forget(const Item *item)
{
    if (m_indexes.isEmpty())
        return;
    m_indexes.remove(item);
    for (const Item *child : item->children)
        forget(child);
}

} // namespace ZAT16
