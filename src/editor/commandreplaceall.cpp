#include "commandreplaceall.h"

#include "editormodel.h"
#include "item.h"

namespace ZAT16 {

CommandReplaceAll::CommandReplaceAll(Item *root, EditorModel *model, const QModelIndex &index, Command *parent)
    : Command(nullptr, model, index, parent)
    , m_other(root)
{
    if (root) {
        setText(QStringLiteral("Replace data"));
    } else {
        m_other = new Item;
        m_other->type = Root;
        setText(QStringLiteral("New"));
    }
}

CommandReplaceAll::~CommandReplaceAll()
{
    delete m_other;
}

void CommandReplaceAll::redo()
{
    m_other = m_model->cmdReplaceTags(m_other);
}

void CommandReplaceAll::undo()
{
    m_other = m_model->cmdReplaceTags(m_other);
    select();
}

} // namespace ZAT16
