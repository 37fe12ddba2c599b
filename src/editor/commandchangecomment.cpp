#include "commandchangecomment.h"

#include "editormodel.h"
#include "item.h"

namespace ZAT16 {

CommandChangeComment::CommandChangeComment(
    const QString &comment, Item *item, EditorModel *model, const QModelIndex &index, Command *parent)
    : Command(item, model, index, parent)
    , m_oldComment(item->comment)
    , m_newComment(comment)
{
    if (comment.isEmpty())
        setText(QStringLiteral("Remove comment"));
    else if (!m_oldComment.isEmpty())
        setText(QStringLiteral("Change comment"));
    else
        setText(QStringLiteral("Set comment"));
}

void CommandChangeComment::redo()
{
    m_item->comment = m_newComment;
    m_model->cmdItemChanged(m_item);
}

void CommandChangeComment::undo()
{
    m_item->comment = m_oldComment;
    m_model->cmdItemChanged(m_item);
    select();
}

} // namespace ZAT16
