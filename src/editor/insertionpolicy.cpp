#include "insertionpolicy.h"

#include "editormodel.h"

namespace ZAT16 {

ItemType InsertionPolicy::blankRowKind(ItemType parentType)
{
    switch (parentType) {
    case Enums:
        return Enum;
    case Bits:
        return Bit;
    case Root:
        return Tag;
    default:
        return Invalid;
    }
}

int InsertionPolicy::listPosition(const Item *tag, ItemType kind)
{
    for (int i = 0; i < tag->children.size(); ++i) {
        if (tag->children.at(i)->type < kind)
            return i;
    }
    return int(tag->children.size());
}

Item *InsertionPolicy::enclosingTag(Item *item)
{
    while (item && item->type != Tag)
        item = item->parent;
    return item;
}

bool InsertionPolicy::tagPlace(const EditorModel &model, Item **parent, int *position)
{
    Item *current = *parent;
    while (current->type != Root) {
        if (!current->parent)
            return false;
        *position = model.findRow(current);
        current = current->parent;
    }
    *parent = current;
    return true;
}

// A list takes the new row at its end; any other row gets its new sibling right below it.
InsertionPolicy::Slot InsertionPolicy::after(const EditorModel &model, QModelIndex at)
{
    if (!at.isValid()) {
        const int count = model.rowCount();
        at = model.index(count > 0 ? count - 1 : 0, 0);
    }
    const Item *item = model.index2item(at);
    if (at.isValid() && item && (item->type == Enums || item->type == Bits))
        return Slot { at.siblingAtColumn(0), int(item->children.size()) };
    return Slot { at.parent(), at.isValid() ? at.row() + 1 : 0 };
}

// A list takes the new row at its start; any other row gets its new sibling right above it.
InsertionPolicy::Slot InsertionPolicy::before(const EditorModel &model, QModelIndex at)
{
    const Item *root = model.root();
    if (!root || root->children.isEmpty())
        return after(model, at);
    if (!at.isValid())
        at = model.index(0, 0);
    const Item *item = model.index2item(at);
    if (item && (item->type == Enums || item->type == Bits))
        return Slot { at.siblingAtColumn(0), 0 };
    return Slot { at.parent(), at.row() };
}

} // namespace ZAT16
