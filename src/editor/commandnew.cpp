#include "commandnew.h"

#include "editormodel.h"
#include "item.h"

namespace ZAT16 {

CommandNew::CommandNew(
    Item *item, int row, Item *parent, EditorModel *model, const QModelIndex &index, Command *parentCommand)
    : Command(parent, model, index, parentCommand)
    , m_newItem(item)
    , m_row(row)
{
    switch (item->type) {
    case Enum:
        setText(QStringLiteral("Insert enum"));
        break;
    case Bit:
        setText(QStringLiteral("Insert bit"));
        break;
    case Tag:
        setText(QStringLiteral("Insert tag"));
        break;
    default:
        setText(QStringLiteral("Insert item"));
        break;
    }
}

CommandNew::~CommandNew()
{
    delete m_newItem;
}

// What the command holds guards both directions, so a repeated redo or undo does nothing.
void CommandNew::redo()
{
    if (!m_newItem)
        return;
    m_model->cmdInsertRow(m_item, m_newItem, m_row);
    m_newItem = nullptr;
}

void CommandNew::undo()
{
    if (m_newItem)
        return;
    m_newItem = m_model->cmdTakeRow(m_item, m_row);
    select();
}

} // namespace ZAT16
