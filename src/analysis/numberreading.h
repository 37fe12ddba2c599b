#pragma once

#include <QString>
#include <QStringView>

namespace ZAT16 {

/// How the languages of the generated outputs read a number that a generator wrote: hexadecimal
/// ("0x1A"), decimal with the zeros of a padded display in front ("0010", "00-5"), or the octal
/// and binary notations of the displays ("0o17", "0y101").
///
/// C and C++ take a decimal number with a leading zero for octal and refuse a decimal number
/// beyond long long; C# reads every decimal number as decimal and holds an enumeration value in
/// an int; Lua reads a decimal number beyond its 64-bit integers as a float and wraps hexadecimal
/// ones. None of them knows "0o" or "0y". "00-5" is the subtraction 00 - 5 in all four, so the
/// zeros in front of a minus sign do no harm (except in C#, where 0 - 2147483648 is no int).
class NumberReading
{
public:
    enum Language { C, CSharp, Lua }; ///< C++ reads numbers as C does
    enum Outcome {
        Exact, ///< read as written
        Octal, ///< a decimal number with leading zeros, read as octal: another value
        Invalid, ///< no number in the language
        TooLarge, ///< beyond the widest type the language gives the number
        Float, ///< Lua: beyond the integers, read as a float
    };

    struct Reading {
        Outcome outcome = Invalid;
        quint64 value = 0; ///< the value read, as a 64-bit pattern (Exact and Octal)
        bool negative = false; ///< the value read is below zero
    };

    /// How `language` reads `text`.
    static Reading read(QStringView text, Language language);

    /// Whether a value read in C or C++ fits in a signed 64-bit number (long long).
    static bool fitsLongLong(const Reading &reading);
};

} // namespace ZAT16
