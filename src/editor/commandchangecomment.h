#pragma once

#include "command.h"

#include <QString>

namespace ZAT16 {

/// Sets, changes or removes the comment of an item.
class CommandChangeComment : public Command
{
public:
    CommandChangeComment(
        const QString &comment, Item *item, EditorModel *model, const QModelIndex &index, Command *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    QString m_oldComment;
    QString m_newComment;
};

} // namespace ZAT16
