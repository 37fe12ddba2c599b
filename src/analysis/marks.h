#pragma once

#include "item.h"

#include <QFlags>
#include <QString>

#include <functional>

namespace ZAT16 {

/// Which entries of a definitions tree are marked in red, and why: the one rule behind the
/// colours of the editor's cells and the problems list.
///
/// Entries are the tags, enumeration values and bits that are not comment lines. An entry is
/// marked when it has a name but no code, a code but no name (an enumeration value with a code
/// and a comment needs no name), a name or a code that one of its siblings has too, entries below
/// it while it lacks a name or a code, or a name that the reader refuses (so the saved file would
/// not open again).
class Marks
{
public:
    enum Reason {
        NameWithoutCode = 0x01, ///< a name but no code
        CodeWithoutName = 0x02, ///< a code but no name
        NameCollision = 0x04, ///< a sibling has the same name
        CodeCollision = 0x08, ///< a sibling has the same code
        IncompleteParent = 0x10, ///< entries below it, but no name or no code
        InvalidName = 0x20, ///< a name that the reader refuses
    };
    Q_DECLARE_FLAGS(Reasons, Reason)

    /// What a cell shows: nothing, the colour of a comment line, the red of a marked entry, or
    /// the amber of an entry that keeps a generated output from compiling or from holding the
    /// file's values (OutputProblems), where no red or comment colour is shown.
    enum CellMark {
        NoMark,
        CommentMark,
        ProblemMark,
        OutputMark,
    };

    /// Whether `item` is an entry: a tag, enumeration value or bit that is not a comment line.
    static bool isEntry(const Item *item);

    /// Every reason for which `item` is marked; none when it is no entry. `collisions` are its
    /// collision flags with its siblings. An entry that lacks its name or its code is not also an
    /// incomplete parent: NameWithoutCode or CodeWithoutName says it already. For an invalid name,
    /// `invalidName` (when not null) receives the reader's message ("Names must not start with a
    /// digit." and so on).
    static Reasons reasons(const Item *item, Item::CollisionFlags collisions, QString *invalidName = nullptr);

    /// The mark of the cell of `item` in `column` (0 name, 1 code, 2 comment). A comment line
    /// has the comment mark in every column. Of a marked entry, the name's faults and its name
    /// collision mark column 0, the missing name or code columns 0 and 1, a code collision
    /// column 1; an entry with entries below it that lacks its name or its code is marked in
    /// every column. `collisions` gives the item's collision flags; it is called only when the
    /// entry's own faults leave the cell unmarked.
    static CellMark cellMark(const Item *item, int column, const std::function<Item::CollisionFlags()> &collisions);

    /// The reasons that mark the cell of `item` in `column`, by the rules of cellMark(): none
    /// when the cell is not marked. `invalidName` receives the reader's message as in reasons().
    static Reasons cellReasons(const Item *item, int column, Item::CollisionFlags collisions, QString *invalidName);

private:
    static Reasons entryReasons(const Item *item,
                                Item::CollisionFlags collisions,
                                QString *invalidName,
                                bool checkName);
};

Q_DECLARE_OPERATORS_FOR_FLAGS(Marks::Reasons)

} // namespace ZAT16
