#include "commandchangename.h"

#include "item.h"

namespace ZAT16 {

CommandChangeName::CommandChangeName(
    const QString &name, Item *item, EditorModel *model, const QModelIndex &index, Command *parent)
    : CommandChangeText(&ItemData::name, { "Set name", "Change name", "Remove name" }, name, item, model, index, parent)
{
}

} // namespace ZAT16
