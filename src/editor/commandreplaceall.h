#pragma once

#include "command.h"

namespace ZAT16 {

/// Swaps the whole document: "New" (a fresh empty root) or a reload. The command owns the root
/// that is not in the model.
class CommandReplaceAll : public Command
{
public:
    CommandReplaceAll(Item *root, EditorModel *model, const QModelIndex &index, Command *parent = nullptr);
    ~CommandReplaceAll() override;

    void redo() override;
    void undo() override;

private:
    Item *m_other; ///< the root that the model does not show
};

} // namespace ZAT16
