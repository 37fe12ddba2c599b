#include "commandmove.h"

#include "editormodel.h"
#include "item.h"

namespace ZAT16 {

// The item itself is selected after an undo, wherever it is then; no index is kept for it.
CommandMove::CommandMove(Item *item, Item *toParent, int toRow, EditorModel *model, Command *parentCommand)
    : Command(item, model, QModelIndex(), parentCommand)
    , m_from(item->parent)
    , m_fromRow(model->findRow(item))
    , m_to(toParent)
    , m_toRow(toRow)
{
    switch (item->type) {
    case Enum:
        setText(QStringLiteral("Move enum"));
        break;
    case Bit:
        setText(QStringLiteral("Move bit"));
        break;
    case Tag:
        setText(QStringLiteral("Move tag"));
        break;
    default:
        setText(QStringLiteral("Move item"));
        break;
    }
}

// Where the item moves to a new list, the child command makes the list first.
void CommandMove::redo()
{
    if (m_moved)
        return;
    QUndoCommand::redo();
    m_model->cmdMoveRow(m_from, m_fromRow, m_to, m_toRow);
    m_moved = true;
}

// The moved item is selected again at its old place; it is selected last, after the list made
// for it is gone again.
void CommandMove::undo()
{
    if (!m_moved)
        return;
    m_model->cmdMoveRow(m_to, m_toRow, m_from, m_fromRow);
    m_moved = false;
    QUndoCommand::undo();
    m_model->cmdUndone(m_model->item2index(m_item));
}

} // namespace ZAT16
