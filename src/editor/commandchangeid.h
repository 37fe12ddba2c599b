#pragma once

#include "command.h"

namespace ZAT16 {

/// Sets, changes or removes the code of an item. Codes are kept as 32 bits: a wider code that
/// an edit replaces comes back on undo with its upper half cleared.
class CommandChangeID : public Command
{
public:
    CommandChangeID(unsigned code,
        bool hasCode,
        Item *item,
        EditorModel *model,
        const QModelIndex &index,
        Command *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    quint32 m_oldCode;
    bool m_oldHasCode;
    quint32 m_newCode;
    bool m_newHasCode;
};

} // namespace ZAT16
