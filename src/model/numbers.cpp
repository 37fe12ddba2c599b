#include "numbers.h"

namespace Numbers {

int cton(int c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'Z')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 10;
    return -1;
}

unsigned int atoi(const char *text, unsigned int length, unsigned int base)
{
    if (!text)
        return 0xFFFFFFFFu;
    unsigned int value = 0;
    for (unsigned int i = 0; i < length; ++i) {
        const int digit = cton(static_cast<unsigned char>(text[i]));
        if (digit < 0 || unsigned(digit) >= base)
            return 0xFFFFFFFFu;
        value = value * base + unsigned(digit);
    }
    return value;
}

namespace {

// Shared by the 32- and 64-bit forms: the arithmetic wraps in the width of T.
template<typename T>
T parse(const void *data, unsigned int length, bool *ok)
{
    bool dummy;
    if (!ok)
        ok = &dummy;
    *ok = false;
    const char *p = static_cast<const char *>(data);
    if (length == 0 || !p) {
        *ok = true;
        return 0;
    }
    const char *end = p + length;
    bool negative = false;
    if (*p == '+' || *p == '-') {
        negative = *p == '-';
        ++p;
    }
    unsigned int base = 10;
    if (end - p >= 2 && p[0] == '0') {
        if (p[1] == 'x' || p[1] == 'X') {
            base = 16;
            p += 2;
        } else if (p[1] == 'b') {
            base = 2;
            p += 2;
        }
    }
    T value = 0;
    for (; p < end; ++p) {
        const int digit = cton(static_cast<unsigned char>(*p));
        if (digit < 0 || unsigned(digit) >= base)
            return 0;
        value = T(value * base + T(digit));
    }
    *ok = true;
    return negative ? T(T(0) - value) : value;
}

} // namespace

quint64 to64(const void *data, unsigned int length, bool *ok)
{
    return parse<quint64>(data, length, ok);
}

quint64 to64(const QByteArray &text, bool *ok)
{
    return parse<quint64>(text.constData(), unsigned(text.size()), ok);
}

quint64 to64(const QString &text, bool *ok)
{
    return to64(text.toUtf8(), ok);
}

quint32 to32(const void *data, unsigned int length, bool *ok)
{
    return parse<quint32>(data, length, ok);
}

quint32 to32(const QByteArray &text, bool *ok)
{
    return parse<quint32>(text.constData(), unsigned(text.size()), ok);
}

quint32 to32(const QString &text, bool *ok)
{
    return to32(text.toUtf8(), ok);
}

Reading readValue(const QString &text, quint64 *value, bool *negative)
{
    *value = 0;
    if (negative)
        *negative = false;
    const QByteArray bytes = text.toUtf8();
    const char *p = bytes.constData();
    const char *const end = p + bytes.size();
    bool minus = false;
    if (p < end && (*p == '+' || *p == '-')) {
        minus = *p == '-';
        ++p;
    }
    unsigned int base = 10;
    if (end - p >= 2 && p[0] == '0' && (p[1] == 'x' || p[1] == 'X' || p[1] == 'b')) {
        base = p[1] == 'b' ? 2 : 16;
        p += 2;
    }
    if (p == end)
        return Reading::NotANumber;
    quint64 magnitude = 0;
    bool tooLarge = false;
    for (; p < end; ++p) {
        const int digit = cton(static_cast<unsigned char>(*p));
        if (digit < 0 || unsigned(digit) >= base)
            return Reading::NotANumber;
        if (magnitude > (~quint64(0) - quint64(digit)) / base)
            tooLarge = true;
        magnitude = magnitude * base + quint64(digit);
    }
    if (tooLarge || (minus && magnitude > quint64(1) << 63))
        return Reading::TooLarge;
    *value = minus ? quint64(0) - magnitude : magnitude;
    if (negative)
        *negative = minus && magnitude != 0;
    return Reading::Number;
}

Reading readHex(const QString &text, quint64 *value)
{
    *value = 0;
    QStringView digits(text);
    if (digits.size() >= 2 && digits[0] == u'0' && (digits[1] == u'x' || digits[1] == u'X'))
        digits = digits.mid(2);
    if (digits.isEmpty())
        return Reading::NotANumber;
    quint64 number = 0;
    bool tooLarge = false;
    for (QChar c : digits) {
        const int digit = cton(c.unicode());
        if (digit < 0 || digit >= 16)
            return Reading::NotANumber;
        if (number >> 60)
            tooLarge = true;
        number = number * 16 + quint64(digit);
    }
    if (tooLarge)
        return Reading::TooLarge;
    *value = number;
    return Reading::Number;
}

} // namespace Numbers
