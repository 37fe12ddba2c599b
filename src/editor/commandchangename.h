#pragma once

#include "commandchangetext.h"

namespace ZAT16 {

/// Sets, changes or removes the name of an item.
class CommandChangeName : public CommandChangeText
{
public:
    CommandChangeName(
        const QString &name, Item *item, EditorModel *model, const QModelIndex &index, Command *parent = nullptr);
};

} // namespace ZAT16
