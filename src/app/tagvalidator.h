#pragma once

#include <QValidator>

namespace ZAT16 {

class Item;

/// Checks a tag code typed in hexadecimal ("1005", "0x1005"). A code that a sibling of the item
/// already uses is accepted with a warning: collisions are shown in the tree, not refused.
class TagValidator : public QValidator {
    Q_OBJECT

public:
    /// `item` is the tag being edited (not owned); without one there is no collision check.
    explicit TagValidator(const Item *item, QObject *parent = nullptr);

    const Item *item() const { return m_item; }

    State validate(QString &input, int &pos) const override;

signals:
    /// An explanation of the last validation; empty when the input is fine.
    void message(const QString &text) const;

private:
    const Item *m_item;
};

} // namespace ZAT16
