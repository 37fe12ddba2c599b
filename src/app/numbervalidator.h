#pragma once

#include "editorvalidator.h"

#include <QIntValidator>

namespace ZAT16 {

/// Checks an enumeration value or a bit number as the cells and the edit dialog read it
/// (Numbers::readValue: decimal, "0x" hexadecimal, "0b" binary, with a sign), so that what is
/// checked is what is stored. Values take all 64 bits; of the range of QIntValidator only the
/// bottom counts, and only for whether negative numbers are allowed (a bottom of 0 for bit
/// numbers). A number that a sibling already has is accepted with a warning.
class NumberValidator : public QIntValidator, public EditorValidator<NumberValidator>
{
    Q_OBJECT

public:
    /// `item` is the item being edited (not owned); without one there is no collision check.
    explicit NumberValidator(const Item *item, QObject *parent = nullptr);

    State validate(QString &input, int &pos) const override;

signals:
    /// An explanation of the last validation; empty when the input is fine.
    void message(const QString &text) const;
};

} // namespace ZAT16
