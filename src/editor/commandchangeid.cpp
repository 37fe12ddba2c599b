#include "commandchangeid.h"

#include "editormodel.h"
#include "item.h"

namespace ZAT16 {

CommandChangeID::CommandChangeID(
    quint64 code, bool hasCode, Item *item, EditorModel *model, const QModelIndex &index, Command *parent)
    : Command(item, model, index, parent)
    , m_oldCode(item->id)
    , m_oldHasCode(item->hasId)
    , m_newCode(code)
    , m_newHasCode(hasCode)
{
    const char *change = "Change code";
    const char *set = "Set code";
    const char *remove = "Remove code";
    switch (item->type) {
    case Tag:
        change = "Change tag code";
        set = "Set tag code";
        remove = "Remove tag code";
        break;
    case Enum:
        change = "Change enum code";
        set = "Set enum code";
        remove = "Remove enum code";
        break;
    case Bit:
        change = "Change bit number";
        set = "Set bit number";
        remove = "Remove bit number";
        break;
    default:
        break;
    }
    if (!hasCode)
        setText(QString::fromLatin1(remove));
    else if (item->hasId)
        setText(QString::fromLatin1(change));
    else
        setText(QString::fromLatin1(set));
}

void CommandChangeID::redo()
{
    m_item->id = m_newCode;
    m_item->hasId = m_newHasCode;
    m_model->cmdItemChanged(m_item);
}

void CommandChangeID::undo()
{
    m_item->id = m_oldCode;
    m_item->hasId = m_oldHasCode;
    m_model->cmdItemChanged(m_item);
    select();
}

} // namespace ZAT16
