#pragma once

#include "item.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace ZAT16 {

/// The problems of a definitions tree: every tag, enumeration value and bit that the editor marks
/// in red, for the reason it is marked, and, as warnings, the names that are keywords of one of
/// the generated languages (C, C++, C#, Lua) and so would not compile there.
///
/// Which entries are marked and why is the rule of Marks: each of its reasons is one problem (for
/// an invalid name, the reader's message is the reason). Collisions are looked for among siblings
/// only. The walk indexes the names and codes of each child list once (SiblingIndex), so it is
/// linear in the size of the tree.
class Problems
{
public:
    enum Kind {
        NameWithoutCode, ///< a name but no code
        CodeWithoutName, ///< a code but no name
        NameCollision, ///< a sibling has the same name
        CodeCollision, ///< a sibling has the same code
        IncompleteParent, ///< entries below it, but no name or no code
        InvalidName, ///< a name that the reader refuses, so the saved file would not open again
        Keyword, ///< a warning: the name is a keyword of a generated language
    };

    struct Problem {
        const Item *item = nullptr;
        Kind kind = NameWithoutCode;
        /// The entry and what is wrong with it: "Tag Mode (0x1002): code collision with a sibling".
        QString message;

        bool isWarning() const { return kind == Keyword; }
    };

    /// Every problem of the tree under `root` (which may be null), in document order; the
    /// problems of one entry in the order of `Kind`.
    static QList<Problem> find(const Item *root);
    /// The problems of the one entry `item` as find() lists them (none for an item that is no
    /// entry), given its collision flags with its siblings.
    static QList<Problem> ofEntry(const Item *item, Item::CollisionFlags collisions);

    /// How messages name an entry: the kind ("Tag", "Enum", "Bit"), the name, the code as the
    /// tree shows it in parentheses, and for an entry inside a tag that tag after " of ":
    /// "Enum On (1) of Tag Mode (0x1002)". An entry with neither name nor code is named by its
    /// row, counted from 1: "Tag in row 4".
    static QString describe(const Item *item);

    /// The languages, in the order C, C++, C#, Lua, of which `name` is a reserved word; empty
    /// when there is none.
    static QStringList keywordLanguages(const QString &name);
};

} // namespace ZAT16
