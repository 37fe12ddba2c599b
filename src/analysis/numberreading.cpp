#include "numberreading.h"

#include <limits>

namespace ZAT16 {

namespace {

constexpr quint64 longLongMax = quint64(std::numeric_limits<qint64>::max());
constexpr quint64 intMax = quint64(std::numeric_limits<qint32>::max());

// The digits of `text` in `base`; false when one is not a digit of the base or the value passes
// 64 bits.
bool digitsValue(QStringView text, int base, quint64 *value)
{
    if (text.isEmpty())
        return false;
    quint64 result = 0;
    for (QChar c : text) {
        const char16_t u = c.unicode();
        int digit;
        if (u >= u'0' && u <= u'9')
            digit = u - u'0';
        else if (u >= u'A' && u <= u'F')
            digit = u - u'A' + 10;
        else
            return false;
        if (digit >= base || result > (std::numeric_limits<quint64>::max() - quint64(digit)) / quint64(base))
            return false;
        result = result * quint64(base) + quint64(digit);
    }
    *value = result;
    return true;
}

NumberReading::Reading exact(quint64 value, bool negative)
{
    return { NumberReading::Exact, negative ? quint64(0) - value : value, negative && value != 0 };
}

} // namespace

NumberReading::Reading NumberReading::read(QStringView text, Language language)
{
    Reading invalid;
    if (text.startsWith(u"0x")) {
        quint64 value;
        if (!digitsValue(text.mid(2), 16, &value))
            return invalid;
        // A hexadecimal number that C# cannot hold in an int is an unsigned or long constant, which
        // an int enumeration refuses.
        if (language == CSharp && value > intMax)
            return { TooLarge, value, false };
        // Lua wraps a hexadecimal number round to its 64-bit integers: the pattern stays.
        return exact(value, false);
    }
    // Decimal: the zeros of the padding, an optional minus sign, the digits.
    const qsizetype minus = text.indexOf(u'-');
    const QStringView zeros = minus < 0 ? QStringView() : text.left(minus);
    const QStringView digits = minus < 0 ? text : text.mid(minus + 1);
    for (QChar c : zeros) {
        if (c != u'0')
            return invalid;
    }
    quint64 value;
    if (!digitsValue(digits, 10, &value))
        return invalid;
    const bool negative = minus >= 0;
    switch (language) {
    case C:
        if (!negative && digits.size() > 1 && digits.startsWith(u'0')) {
            quint64 octal;
            if (!digitsValue(digits, 8, &octal))
                return invalid;
            return { octal == value ? Exact : Octal, octal, false };
        }
        if (value > longLongMax)
            return { TooLarge, value, negative };
        return exact(value, negative);
    case CSharp:
        // -2147483648 is an int, 0 - 2147483648 is not.
        if (value > intMax + (negative && zeros.isEmpty() ? 1 : 0))
            return { TooLarge, value, negative };
        return exact(value, negative);
    case Lua:
        if (value > longLongMax)
            return { Float, value, negative };
        return exact(value, negative);
    }
    return invalid;
}

bool NumberReading::fitsLongLong(const Reading &reading)
{
    return reading.negative || reading.value <= longLongMax;
}

} // namespace ZAT16
