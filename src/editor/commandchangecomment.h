#pragma once

#include "commandchangetext.h"

namespace ZAT16 {

/// Sets, changes or removes the comment of an item.
class CommandChangeComment : public CommandChangeText
{
public:
    CommandChangeComment(
        const QString &comment, Item *item, EditorModel *model, const QModelIndex &index, Command *parent = nullptr);
};

} // namespace ZAT16
