#pragma once

#include "command.h"

namespace ZAT16 {

/// Sets, changes or removes the code of an item. The whole 64 bits of the old and the new code
/// are kept, so that undo and redo give back exactly the value they replaced.
class CommandChangeID : public Command
{
public:
    CommandChangeID(quint64 code,
                    bool hasCode,
                    Item *item,
                    EditorModel *model,
                    const QModelIndex &index,
                    Command *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    quint64 m_oldCode;
    bool m_oldHasCode;
    quint64 m_newCode;
    bool m_newHasCode;
};

} // namespace ZAT16
