#pragma once

#include <QByteArray>
#include <QString>

namespace ZAT16 {

class Item;

/// Checks that a saved definitions text gives back the tree it was written from, before it
/// replaces a file: the text must read without an error, and every entry that carries a name, a
/// code or a comment must come back with the same type, name, code, comment, display and secure
/// flag, in the same order. Empty entries, which the file format reads as blank lines, may come
/// and go; the reader's own order of a tag's lists (bit lists first) is expected.
class ReadBackCheck
{
public:
    /// Empty when `written` reads back as `root`; otherwise which entry would not come back and
    /// why, for example: the tag "Tag" would not load again (The name "Tag" is reserved.)
    static QString check(const Item *root, const QByteArray &written);

    /// How a message names an entry: the tag "Power", the value "Ten" of tag "Mode", the
    /// comment "spare" of tag "Mode", the document.
    static QString describe(const Item *item);
};

} // namespace ZAT16
