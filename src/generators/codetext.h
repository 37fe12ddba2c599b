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

/// The C format of the bit masks of a bit list: as many hexadecimal digits as the highest
/// valid bit number needs, in steps of one digit up to six, then eight (there is no seven).
inline const char *maskFormat(const Item *bits)
{
    quint64 highest = 0;
    for (const Item *bit : bits->children) {
        if (bit->isValid(Bit) && bit->id > highest)
            highest = bit->id;
    }
    if (highest <= 7)
        return "0x%02X";
    if (highest <= 11)
        return "0x%03X";
    if (highest <= 15)
        return "0x%04X";
    if (highest <= 19)
        return "0x%05X";
    if (highest <= 23)
        return "0x%06X";
    return "0x%08X";
}

/// The mask of a bit in the given format: the low 32 bits of 1 shifted by the bit number
/// modulo 64, so bits 32 to 63 give a mask of zero. Kept that way for compatibility.
inline QString maskText(const char *format, quint64 bitNumber)
{
    return QString::asprintf(format, unsigned(quint32(quint64(1) << (bitNumber % 64))));
}

} // namespace ZAT16::CodeText
