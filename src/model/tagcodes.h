#pragma once

#include <QString>

namespace ZAT16 {

/// Data type of a tag, carried in the top bits of its 16-bit tag code. The values are part of
/// the protocol and are written into generated code. 8 is the escape to the extended form
/// (bits 15..8 hold the type), 10 and 11 are unnamed.
enum DataType : int {
    Binary = 0,
    Integer = 1,
    Bool = 2,
    String = 3,
    Date = 4,
    Time = 5,
    DateTime = 6,
    BitArray = 7,
    NetworkAddress = 9,
    List = 12,
    Request = 13,
    Answer = 14,
    Message = 15,
    ExtPoint = 0x80,
    ExtRect = 0x81,
    ExtSize = 0x82,
};

/// How numbers below an item are shown: `mode` 0 not set (inherit), 1 signed decimal, 2 unsigned
/// decimal, 3 hexadecimal, 4 octal, 5 binary; `digits` is the minimum digit count (0: no padding).
struct DisplayMode {
    qint32 mode = 0;
    qint32 digits = 0;
};

/// `code >> 12`, or `code >> 8` for the extended form (top nibble 8).
DataType dataType(unsigned int code);

/// True for the nested kinds List, Request, Answer and Message; extended types are never nested.
bool isNestedTag(int code);

/// The answer belonging to a request code (type nibble replaced by 14), or -1 for other codes.
int answerCode(int requestCode);

/// Rewrites the type bits of `code`; extended types keep only the low byte.
unsigned int setDataType(unsigned int code, DataType type);

/// Display name of the type nibble (bits 15..12) of a tag code; null for 10 and 11.
QString typeName(unsigned int code);

/// "0x" and at least four upper-case hexadecimal digits, never truncated.
QString tag2hex(unsigned int code);
/// Appends tag2hex(code) to `text`.
void appendTag2hex(QString &text, unsigned int code);

/// Padding never goes beyond this many digits, the length of a 64-bit number in binary.
constexpr int maximumDigits = 64;

/// Formats `value` in the given display mode. Padding applies to the digits only, after any
/// minus sign, so -5 with four digits is "00-5".
QString formatNumber(unsigned long long value, const DisplayMode &mode);
/// Appends formatNumber(value, mode) to `text`.
void appendNumber(QString &text, unsigned long long value, const DisplayMode &mode);

/// Checks a name for use as an identifier in the definitions and the generated code. `error`
/// (may be null) receives the message, or a null string when the name is fine.
bool isValidIdentifier(const QString &name, QString *error);

} // namespace ZAT16
