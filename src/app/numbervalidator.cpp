#include "numbervalidator.h"

#include "numbers.h"

#include "item.h"

namespace ZAT16 {

NumberValidator::NumberValidator(const Item *item, QObject *parent)
    : QIntValidator(parent)
    , EditorValidator(item)
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
        return answer(Intermediate, tr("Non numeric input"));
    case Numbers::Reading::TooLarge:
        return answer(Intermediate, tr("Number out of range"));
    case Numbers::Reading::Number:
        break;
    }
    if (negative && bottom() >= 0)
        return answer(Intermediate, tr("Number out of range"));
    if (const Item *list = parentItem()) {
        for (const Item *sibling : qAsConst(list->children)) {
            if (sibling != item() && sibling->hasId && sibling->id == value)
                return answer(Acceptable, tr("This number already exists"));
        }
    }
    return answer(Acceptable);
}

} // namespace ZAT16
