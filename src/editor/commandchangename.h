#pragma once

#include "command.h"

#include <QString>

namespace ZAT16 {

/// Sets, changes or removes the name of an item.
class CommandChangeName : public Command
{
public:
    CommandChangeName(
        const QString &name, Item *item, EditorModel *model, const QModelIndex &index, Command *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    QString m_oldName;
    QString m_newName;
};

} // namespace ZAT16
