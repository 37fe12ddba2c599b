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

} // namespace Numbers
