#pragma once

#include "command.h"

namespace ZAT16 {

/// Inserts an item with its subtree as child `row` of a parent item. The command owns the item
/// whenever it is outside the tree: before the first redo and after an undo.
class CommandNew : public Command
{
public:
    CommandNew(Item *item,
               int row,
               Item *parent,
               EditorModel *model,
               const QModelIndex &index,
               Command *parentCommand = nullptr);
    ~CommandNew() override;

    void redo() override;
    void undo() override;

private:
    Item *m_newItem; ///< the item while it is outside the tree, null while it is inserted
    int m_row;
};

} // namespace ZAT16
