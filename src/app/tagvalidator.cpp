#include "tagvalidator.h"

#include "item.h"
#include "numbers.h"

namespace ZAT16 {

TagValidator::TagValidator(const Item *item, QObject *parent)
    : QValidator(parent)
    , EditorValidator(item)
{
}

static bool isHexDigit(QChar c)
{
    const int digit = Numbers::cton(c.unicode());
    return digit >= 0 && digit < 16;
}

QValidator::State TagValidator::validate(QString &input, int &) const
{
    if (input.isEmpty())
        return Acceptable; // a tag without code
    if (input.size() > 64)
        return answer(Invalid, tr("Input too long"));
    for (QChar c : qAsConst(input)) {
        if (!isHexDigit(c) && c != QLatin1Char('x') && c != QLatin1Char('X'))
            return answer(Invalid, tr("Non numeric input"));
    }
    if (input.size() > 10)
        return answer(Intermediate, tr("Input too long"));
    if (input.size() == 2 && input.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
        return Intermediate; // the user is about to type the digits
    // 64 bits, so that ten digits are still a number (out of range) rather than an overflow
    quint64 value = 0;
    if (Numbers::readHex(input, &value) != Numbers::Reading::Number)
        return answer(Intermediate, tr("Not a hexadecimal number"));
    if (value > 65535)
        return answer(Intermediate, tr("Tag code out of range"));
    if (parentItem() && parentItem()->findBut(unsigned(value), item()) >= 0)
        return answer(Acceptable, tr("Tag code already exists"));
    return answer(Acceptable);
}

} // namespace ZAT16
