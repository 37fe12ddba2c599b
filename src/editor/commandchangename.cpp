#include "commandchangename.h"

#include "editormodel.h"
#include "item.h"

namespace ZAT16 {

CommandChangeName::CommandChangeName(
    const QString &name, Item *item, EditorModel *model, const QModelIndex &index, Command *parent)
    : Command(item, model, index, parent)
    , m_oldName(item->name)
    , m_newName(name)
{
    if (name.isEmpty())
        setText(QStringLiteral("Remove name"));
    else if (!m_oldName.isEmpty())
        setText(QStringLiteral("Change name"));
    else
        setText(QStringLiteral("Set name"));
}

void CommandChangeName::redo()
{
    m_item->name = m_newName;
    m_model->cmdItemChanged(m_item);
}

void CommandChangeName::undo()
{
    m_item->name = m_oldName;
    m_model->cmdItemChanged(m_item);
    select();
}

} // namespace ZAT16
