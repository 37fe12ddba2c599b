#include "commandchangetext.h"

#include "editormodel.h"
#include "item.h"

namespace ZAT16 {

CommandChangeText::CommandChangeText(QString ItemData::*field,
                                     const Texts &texts,
                                     const QString &text,
                                     Item *item,
                                     EditorModel *model,
                                     const QModelIndex &index,
                                     Command *parent)
    : Command(item, model, index, parent)
    , m_field(field)
    , m_oldText(item->*field)
    , m_newText(text)
{
    if (text.isEmpty())
        setText(QString::fromLatin1(texts.remove));
    else if (!m_oldText.isEmpty())
        setText(QString::fromLatin1(texts.change));
    else
        setText(QString::fromLatin1(texts.set));
}

void CommandChangeText::redo()
{
    m_item->*m_field = m_newText;
    m_model->cmdItemChanged(m_item);
}

void CommandChangeText::undo()
{
    m_item->*m_field = m_oldText;
    m_model->cmdItemChanged(m_item);
    select();
}

} // namespace ZAT16
