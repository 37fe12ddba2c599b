#pragma once

#include "command.h"

#include <QString>

namespace ZAT16 {

struct ItemData;

/// Sets, changes or removes one text of an item (its name or its comment), named on the undo
/// stack by what it does: "Set ...", "Change ..." or "Remove ...".
class CommandChangeText : public Command
{
public:
    /// The three texts of the command: for a text that was empty, for one that changes, and for
    /// one that is removed.
    struct Texts {
        const char *set;
        const char *change;
        const char *remove;
    };

    CommandChangeText(QString ItemData::*field,
                      const Texts &texts,
                      const QString &text,
                      Item *item,
                      EditorModel *model,
                      const QModelIndex &index,
                      Command *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    QString ItemData::*m_field;
    QString m_oldText;
    QString m_newText;
};

} // namespace ZAT16
