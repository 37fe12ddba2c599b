#pragma once

#include <QByteArray>
#include <QString>

/// Strict parsers for numbers typed by the user: decimal, "0x" hexadecimal and "0b" binary, with
/// an optional sign. No blanks, no octal. Over-long input wraps around without notice.
namespace Numbers {

/// Value of one digit character (0-9, A-Z, a-z), or -1.
int cton(int c);
/// Plain digits in the given base; 0xFFFFFFFF for a null text or a bad digit.
unsigned int atoi(const char *text, unsigned int length, unsigned int base);

quint64 to64(const void *data, unsigned int length, bool *ok);
quint64 to64(const QByteArray &text, bool *ok);
quint64 to64(const QString &text, bool *ok);

quint32 to32(const void *data, unsigned int length, bool *ok);
quint32 to32(const QByteArray &text, bool *ok);
quint32 to32(const QString &text, bool *ok);

/// What readValue() made of a text.
enum class Reading {
    Number, ///< a number that fits
    NotANumber, ///< empty, a bad character, or a sign or prefix without digits
    TooLarge, ///< digits that do not fit in 64 bits
};

/// A number as the user types it for the value of an enumeration entry or a bit, the one reading
/// that the editors, the edit dialog and the cells share, so that what is checked is what is
/// stored: the notations of to64 (decimal, "0x" hexadecimal, "0b" binary, an optional sign), but
/// refused instead of wrapped when it does not fit in 64 bits (from -2^63 to 2^64 - 1), and a
/// sign or prefix alone is no number. `value` receives the number as an item keeps it: a negative
/// one in two's complement; `negative` whether it was below zero.
Reading readValue(const QString &text, quint64 *value, bool *negative = nullptr);

/// A tag code as the user types it: hexadecimal digits, with or without "0x" or "0X" in front.
/// No sign and no blanks, and "0b" is the start of a hexadecimal number here, not a prefix. Refused
/// when it does not fit in 64 bits, and a prefix alone is no number. `value` receives the number,
/// or 0 when there is none.
Reading readHex(const QString &text, quint64 *value);

} // namespace Numbers
