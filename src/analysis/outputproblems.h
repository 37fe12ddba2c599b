#pragma once

#include "outputs.h"

#include <QList>
#include <QString>

namespace ZAT16 {

class Item;

/// The problems of the generated outputs: every entry of a definitions tree for which one of
/// the five outputs, written as its generator writes it, would not compile or load, or would hold
/// a value other than the file's.
///
/// The rules follow what the generators write: the same listing of the tags (TagListing), the
/// same names with their prefixes, suffixes and joining underscores, and the same text of every
/// value, read as the language of the output reads it (NumberReading). What fails:
/// - names that clash once written: two definitions of one C macro with different values, a key
///   of a Lua table or a whole table written again with other values, a C++ namespace or C#
///   enumeration written twice (a tag with both lists in the C++ outputs), a member written twice
///   in one C++ or C# enumeration, a C++ lookup table written twice or named but not written;
/// - names the language refuses: empty, a keyword, or a name the output uses itself (EnumCount
///   in C++, value__ in C#); a comment that Lua cannot take as the key of a nameless value;
/// - values: "0o" and "0y" numbers, padded decimal numbers that C and C++ read as octal, numbers
///   beyond what the language or the output's type holds (int in C#, long long in C and C++,
///   Lua's integers), and bit masks of 32 bits and more (and of bit 31 in Lua, whose masks are
///   signed 32-bit numbers).
///
/// The C header is taken as compiled by a standard C compiler (a macro defined again with another
/// text is an error), the C++ headers as C++20, the lookup tables with a `long long` value.
class OutputProblems
{
public:
    struct Problem {
        const Item *item = nullptr; ///< the tag, enumeration value or bit the problem is about
        Outputs::Kind output = Outputs::Header;
        /// "Tag Mode (0x1002): the C++ enums header will not compile: the tag has both an
        /// enumeration list and a bit list"
        QString message;
    };

    /// A set of outputs: the bit 1 << kind for each.
    using OutputSet = unsigned int;
    static constexpr OutputSet AllOutputs = (1u << Outputs::KindCount) - 1;

    /// The problems of the `outputs` for the tree under `root` (which may be null), in document
    /// order; the problems of one entry in the order of the outputs.
    static QList<Problem> find(const Item *root, OutputSet outputs = AllOutputs);

    /// How messages name an output: "the C header", "the Lua script", "the C++ enums header",
    /// "the C++ lookup-table header", "the C# file".
    static QString outputName(Outputs::Kind kind);
};

} // namespace ZAT16
