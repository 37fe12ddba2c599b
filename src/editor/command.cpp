#include "command.h"

#include "editormodel.h"

namespace ZAT16 {

Command::Command(Item *item, EditorModel *model, const QModelIndex &index, Command *parent)
    : QUndoCommand(parent)
    , m_item(item)
    , m_model(model)
    , m_index(index)
{
}

void Command::select()
{
    m_model->cmdUndone(m_index);
}

} // namespace ZAT16
