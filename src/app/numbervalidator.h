#pragma once

#include <QIntValidator>

namespace ZAT16 {

class Item;

/// Checks an enumeration value or a bit number, typed in decimal or C style ("0x1F", "017").
/// The range is that of QIntValidator (the whole int range unless set). A number that a sibling
/// already has is accepted with a warning.
class NumberValidator : public QIntValidator {
    Q_OBJECT

public:
    /// `item` is the item being edited (not owned); without one there is no collision check.
    explicit NumberValidator(const Item *item, QObject *parent = nullptr);

    const Item *item() const { return m_item; }

    State validate(QString &input, int &pos) const override;

signals:
    /// An explanation of the last validation; empty when the input is fine.
    void message(const QString &text) const;

private:
    const Item *m_item;
};

} // namespace ZAT16
