#pragma once

#include "item.h"

#include <QModelIndex>

namespace ZAT16 {

class EditorModel;

/// Where new rows and inserted entries go. Tags live at the root level, values and bits in the
/// lists of their tag, and a tag keeps its bit list before its enumeration list.
class InsertionPolicy
{
public:
    /// A place for a new row: its parent and its row there.
    struct Slot {
        QModelIndex parent;
        int row = 0;
    };

    /// The kind of a new empty row under a parent of the given kind, or Invalid where none fits.
    static ItemType blankRowKind(ItemType parentType);
    /// The row of a new list of `kind` among the tag's children: before the first child of a
    /// lower kind, so that a bit list goes before an enumeration list; the end if there is none.
    static int listPosition(const Item *tag, ItemType kind);
    /// The tag that holds `item` (the item itself when it is a tag), or null.
    static Item *enclosingTag(Item *item);
    /// For a tag inserted under `parent` at `position`: the root, and the row there of the
    /// top-level tag that holds the place. False when `parent` is outside a document.
    static bool tagPlace(const EditorModel &model, Item **parent, int *position);

    /// Where Insert after puts a new empty row next to `at` (the selection, or invalid).
    static Slot after(const EditorModel &model, QModelIndex at);
    /// Where Insert before puts it; into an empty document, as after.
    static Slot before(const EditorModel &model, QModelIndex at);
};

} // namespace ZAT16
