#pragma once

#include "editorvalidator.h"

#include <QValidator>

namespace ZAT16 {

/// Checks a tag code typed in hexadecimal ("1005", "0x1005"). A code that a sibling of the item
/// already uses is accepted with a warning: collisions are shown in the tree, not refused.
class TagValidator : public QValidator, public EditorValidator<TagValidator>
{
    Q_OBJECT

public:
    /// `item` is the tag being edited (not owned); without one there is no collision check.
    explicit TagValidator(const Item *item, QObject *parent = nullptr);

    State validate(QString &input, int &pos) const override;

signals:
    /// An explanation of the last validation; empty when the input is fine.
    void message(const QString &text) const;
};

} // namespace ZAT16
