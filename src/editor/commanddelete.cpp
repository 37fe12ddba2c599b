#include "commanddelete.h"

#include "editormodel.h"
#include "item.h"

namespace ZAT16 {

CommandDelete::CommandDelete(
    int row, Item *parent, EditorModel *model, const QModelIndex &index, Command *parentCommand)
    : Command(parent, model, index, parentCommand)
    , m_row(row)
{
}

CommandDelete::~CommandDelete()
{
    delete m_taken;
}

void CommandDelete::setMode(Mode mode)
{
    const Item *item = m_item->child(m_row);
    if (!item)
        return;
    QString text;
    if (item->isComment() || item->isNewline()) {
        // a comment or blank line has no name of its own in the history
    } else if (item->type == Enum) {
        text = mode == Cut ? QStringLiteral("Cut enum") : QStringLiteral("Remove enum");
    } else if (item->type == Bit) {
        text = mode == Cut ? QStringLiteral("Cut bit") : QStringLiteral("Remove bit");
    } else if (item->type == Tag) {
        text = mode == Cut ? QStringLiteral("Cut tag") : QStringLiteral("Remove tag");
    }
    setText(text);
}

void CommandDelete::redo()
{
    if (m_taken)
        return;
    m_taken = m_model->cmdTakeRow(m_item, m_row);
}

void CommandDelete::undo()
{
    if (!m_taken)
        return;
    m_model->cmdInsertRow(m_item, m_taken, m_row);
    m_taken = nullptr;
    select();
}

} // namespace ZAT16
