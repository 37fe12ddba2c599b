#include "numbervalidator.h"

#include "numbers.h"

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
    quint64 value = 0;
    bool negative = false;
    switch (Numbers::readValue(input, &value, &negative)) {
    case Numbers::Reading::NotANumber:
        emit message(tr("Non numeric input"));
        return Intermediate;
    case Numbers::Reading::TooLarge:
        emit message(tr("Number out of range"));
        return Intermediate;
    case Numbers::Reading::Number:
        break;
    }
    if (negative && bottom() >= 0) {
        emit message(tr("Number out of range"));
        return Intermediate;
    }
    if (m_item && m_item->parent) {
        for (const Item *sibling : qAsConst(m_item->parent->children)) {
            if (sibling != m_item && sibling->hasId && sibling->id == value) {
                emit message(tr("This number already exists"));
                return Acceptable;
            }
        }
    }
    emit message(QString());
    return Acceptable;
}

} // namespace ZAT16
