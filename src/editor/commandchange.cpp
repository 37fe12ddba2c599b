#include "commandchange.h"

#include "editormodel.h"

namespace ZAT16 {

CommandChange::CommandChange(
    const ItemData &data, Item *item, EditorModel *model, const QModelIndex &index, Command *parent)
    : Command(item, model, index, parent)
    , m_old(*item)
    , m_new(data)
{
    setText(QStringLiteral("Change item"));
}

void CommandChange::redo()
{
    static_cast<ItemData &>(*m_item) = m_new;
    m_model->cmdItemChanged(m_item);
}

void CommandChange::undo()
{
    static_cast<ItemData &>(*m_item) = m_old;
    m_model->cmdItemChanged(m_item);
    select();
}

} // namespace ZAT16
