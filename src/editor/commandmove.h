#pragma once

#include "command.h"

namespace ZAT16 {

/// Moves an item with its whole subtree from one place in the tree to another: from child
/// `fromRow` of one parent to child `toRow` of another (or the same) parent, `toRow` counted in
/// the list as it is after the move. The item stays the same object, so the views keep its
/// selection and expansion. A child command (the creation of the list that the item moves into)
/// is done before the move and undone after it. After an undo the item is selected again.
class CommandMove : public Command
{
public:
    CommandMove(Item *item, Item *toParent, int toRow, EditorModel *model, Command *parentCommand = nullptr);

    void redo() override;
    void undo() override;

private:
    Item *m_from; ///< the parent the item leaves
    int m_fromRow;
    Item *m_to; ///< the parent the item joins
    int m_toRow;
    bool m_moved = false;
};

} // namespace ZAT16
