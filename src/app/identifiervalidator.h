#pragma once

#include "editorvalidator.h"

#include <QValidator>

namespace ZAT16 {

/// Checks a name typed for a tag, an enumeration value or a bit. A name that a sibling already
/// has is accepted with a warning.
class IdentifierValidator : public QValidator, public EditorValidator<IdentifierValidator>
{
    Q_OBJECT

public:
    /// `item` is the item being edited (not owned); without one there is no collision check.
    explicit IdentifierValidator(const Item *item, QObject *parent = nullptr);

    State validate(QString &input, int &pos) const override;

signals:
    /// An explanation of the last validation; empty when the input is fine.
    void message(const QString &text) const;
};

} // namespace ZAT16
