#pragma once

// Small text helpers shared by the source generators. They append to one growing QString so
// that a line is built without temporary strings.

#include "item.h"

#include <QString>

namespace ZAT16::CodeText {

/// Pads what was appended to `out` since `start` with blanks to `width` characters; longer
/// text is left as it is (like QString::leftJustified, which never truncates).
inline void padFrom(QString &out, qsizetype start, qsizetype width)
{
    if (out.size() < start + width)
        out.resize(start + width, QLatin1Char(' '));
}

/// Appends `text` padded with blanks to `width` characters, never truncated.
inline void appendJustified(QString &out, const QString &text, qsizetype width)
{
    const qsizetype start = out.size();
    out += text;
    padFrom(out, start, width);
}

/// The number of hexadecimal digits of the bit masks of a bit list: as many as the highest valid
/// bit number needs, in steps of one digit up to six, then eight (there is no seven).
inline int maskDigits(const Item *bits)
{
    quint64 highest = 0;
    for (const Item *bit : bits->children) {
        if (bit->isValid(Bit) && bit->id > highest)
            highest = bit->id;
    }
    if (highest <= 7)
        return 2;
    if (highest <= 11)
        return 3;
    if (highest <= 15)
        return 4;
    if (highest <= 19)
        return 5;
    if (highest <= 23)
        return 6;
    return 8;
}

/// The mask of a bit: "0x" and at least `digits` upper-case hexadecimal digits of the low 32 bits
/// of 1 shifted by the bit number modulo 64, so bits 32 to 63 give a mask of zero. Kept that way
/// for compatibility.
inline QString maskText(int digits, quint64 bitNumber)
{
    quint32 mask = quint32(quint64(1) << (bitNumber % 64));
    char16_t buffer[2 + 8];
    char16_t *const end = buffer + 10;
    char16_t *begin = end;
    do {
        *--begin = u"0123456789ABCDEF"[mask & 0xF];
        mask >>= 4;
    } while (mask);
    while (end - begin < digits)
        *--begin = u'0';
    *--begin = u'x';
    *--begin = u'0';
    return QString(reinterpret_cast<const QChar *>(begin), end - begin);
}

/// Appends the decimal digits of `value` (with a minus sign when negative), as QString::number
/// writes them, without a temporary string.
inline void appendDecimal(QString &out, qint64 value)
{
    char16_t buffer[20];
    char16_t *const end = buffer + 20;
    char16_t *begin = end;
    quint64 magnitude = value < 0 ? quint64(0) - quint64(value) : quint64(value);
    do {
        *--begin = char16_t(u'0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude);
    if (value < 0)
        *--begin = u'-';
    out.append(reinterpret_cast<const QChar *>(begin), end - begin);
}

/// Appends the decimal digits of `value`.
inline void appendDecimal(QString &out, quint64 value)
{
    char16_t buffer[20];
    char16_t *const end = buffer + 20;
    char16_t *begin = end;
    do {
        *--begin = char16_t(u'0' + value % 10);
        value /= 10;
    } while (value);
    out.append(reinterpret_cast<const QChar *>(begin), end - begin);
}

} // namespace ZAT16::CodeText
