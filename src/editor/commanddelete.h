#pragma once

#include "command.h"

namespace ZAT16 {

/// Takes child `row` of a parent item out of the tree (delete or cut). The command owns the
/// taken item while it is outside the tree: after a redo, until the next undo.
class CommandDelete : public Command
{
public:
    enum Mode {
        Cut = 0,
        Remove = 1,
    };

    CommandDelete(
        int row, Item *parent, EditorModel *model, const QModelIndex &index, Command *parentCommand = nullptr);
    ~CommandDelete() override;

    /// Chooses the text by the kind of the item at the row; lists, comments and blank lines get
    /// an empty text.
    void setMode(Mode mode);

    void redo() override;
    void undo() override;

private:
    Item *m_taken = nullptr; ///< the item while it is outside the tree
    int m_row;
};

} // namespace ZAT16
