#pragma once

#include "command.h"
#include "item.h"

namespace ZAT16 {

/// Replaces the whole data record of an item: the result of the item edit dialog.
class CommandChange : public Command
{
public:
    CommandChange(
        const ItemData &data, Item *item, EditorModel *model, const QModelIndex &index, Command *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    ItemData m_old;
    ItemData m_new;
};

} // namespace ZAT16
