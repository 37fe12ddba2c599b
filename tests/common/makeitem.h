#pragma once

// Items built field by field, for tests that put trees together by hand.

#include "item.h"

#include <QString>

namespace TestItems {

/// A new item with the given fields and no children; the caller owns it.
inline ZAT16::Item *makeItem(ZAT16::ItemType type,
                             const QString &name = QString(),
                             bool hasId = false,
                             quint64 id = 0,
                             const QString &comment = QString())
{
    auto *item = new ZAT16::Item;
    item->type = type;
    item->name = name;
    item->hasId = hasId;
    item->id = id;
    item->comment = comment;
    return item;
}

} // namespace TestItems
