#include "numbervalidator.h"

#include "item.h"

namespace ZAT16 {

NumberValidator::NumberValidator(const Item *item, QObject *parent)
    : QIntValidator(parent)
    , m_item(item)
{
}

QValidator::State NumberValidator::validate(QString &input, int &) const
{
    if (input.isEmpty())
        return Acceptable;
    bool ok = false;
    // Decimal, 0x hexadecimal, leading-zero octal. The conversion would skip blanks, which the
    // parser of the typed number refuses later, so they are no number here.
    const bool blank = input.front().isSpace() || input.back().isSpace();
    const qlonglong value = blank ? 0 : input.toLongLong(&ok, 0);
    if (!ok) {
        emit message(tr("Non numeric input"));
        return Intermediate;
    }
    if (value < bottom() || value > top()) {
        emit message(tr("Number out of range"));
        return Intermediate;
    }
    if (m_item && m_item->parent) {
        // Negative numbers are stored sign-extended to 64 bits.
        const quint64 id = quint64(value);
        for (const Item *sibling : qAsConst(m_item->parent->children)) {
            if (sibling != m_item && sibling->hasId && sibling->id == id) {
                emit message(tr("This number already exists"));
                return Acceptable;
            }
        }
    }
    emit message(QString());
    return Acceptable;
}

} // namespace ZAT16
