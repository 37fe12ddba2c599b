#pragma once

#include "item.h"

#include <QString>
#include <QValidator>

namespace ZAT16 {

/// What the editor's validators share, beside their Qt base: the item being edited and the
/// answer of a validation together with its explanation. A validator derives from its Qt
/// validator class first and from EditorValidator<itself> second, and declares the signal
///
///     void message(const QString &text) const;
///
/// which answer() emits. (Qt cannot put a signal into a template; NumberValidator is a
/// QIntValidator and the others are plain QValidators, so the signal is declared by each.)
template<typename Validator>
class EditorValidator
{
public:
    /// The item being edited (not owned), or null.
    const Item *item() const { return m_item; }

protected:
    /// `item` is the item being edited (not owned); without one there is no collision check.
    explicit EditorValidator(const Item *item)
        : m_item(item)
    {
    }

    /// Emits `text` as the explanation of this validation (empty when the input is fine, which
    /// hides the tooltip) and returns `state`.
    QValidator::State answer(QValidator::State state, const QString &text = QString()) const
    {
        emit static_cast<const Validator *>(this)->message(text);
        return state;
    }

    /// The parent of the item, whose children the collision checks search; null without an item.
    const Item *parentItem() const { return m_item ? m_item->parent : nullptr; }

private:
    const Item *m_item;
};

} // namespace ZAT16
