#include "commandchangecomment.h"

#include "item.h"

namespace ZAT16 {

CommandChangeComment::CommandChangeComment(
    const QString &comment, Item *item, EditorModel *model, const QModelIndex &index, Command *parent)
    : CommandChangeText(
        &ItemData::comment, { "Set comment", "Change comment", "Remove comment" }, comment, item, model, index, parent)
{
}

} // namespace ZAT16
