#include "marks.h"

#include "tagcodes.h"

namespace ZAT16 {

namespace {

// The reasons that mark a column on their own. An incomplete parent marks every column, and so
// does a missing name or code of an entry with entries below it.
Marks::Reasons columnReasons(int column)
{
    switch (column) {
    case 0:
        return Marks::InvalidName | Marks::NameWithoutCode | Marks::CodeWithoutName | Marks::NameCollision;
    case 1:
        return Marks::NameWithoutCode | Marks::CodeWithoutName | Marks::CodeCollision;
    default:
        return {};
    }
}

Marks::Reasons collisionReasons(Item::CollisionFlags collisions)
{
    Marks::Reasons reasons;
    if (collisions.testFlag(Item::NameCollision))
        reasons |= Marks::NameCollision;
    if (collisions.testFlag(Item::IdCollision))
        reasons |= Marks::CodeCollision;
    return reasons;
}

} // namespace

bool Marks::isEntry(const Item *item)
{
    return item->isNamedKind() && !item->isComment();
}

Marks::Reasons Marks::reasons(const Item *item, Item::CollisionFlags collisions, QString *invalidName)
{
    return entryReasons(item, collisions, invalidName, true);
}

// The reasons of reasons(); the name is checked against the reader's rules only when `checkName`
// is set, since that is the one costly rule and only the name column shows it.
Marks::Reasons Marks::entryReasons(const Item *item,
                                   Item::CollisionFlags collisions,
                                   QString *invalidName,
                                   bool checkName)
{
    Reasons reasons;
    if (!isEntry(item))
        return reasons;
    const bool hasName = !item->name.isEmpty();
    const bool hasCode = item->hasId;
    if (hasName && !hasCode)
        reasons |= NameWithoutCode;
    else if (!hasName && hasCode && !(item->type == Enum && !item->comment.isEmpty()))
        // an enumeration value with a code and a comment may go without a name
        reasons |= CodeWithoutName;
    reasons |= collisionReasons(collisions);
    if (!(reasons & (NameWithoutCode | CodeWithoutName)) && !item->children.isEmpty() && (!hasName || !hasCode))
        reasons |= IncompleteParent;
    if (checkName && hasName && !isValidIdentifier(item->name, invalidName))
        reasons |= InvalidName;
    return reasons;
}

Marks::CellMark Marks::cellMark(const Item *item, int column, const std::function<Item::CollisionFlags()> &collisions)
{
    if (item->isComment())
        return CommentMark;
    if (!item->isNamedKind())
        return NoMark;
    Reasons found = entryReasons(item, Item::CollisionFlags(), nullptr, column == 0);
    // The entry's own faults in its name and code decide first. The siblings are asked only after
    // them: the editor counts the children of a parent on the first question.
    if (found & (InvalidName | NameWithoutCode | CodeWithoutName) & columnReasons(column))
        return ProblemMark;
    found |= collisionReasons(collisions());
    if (found & columnReasons(column))
        return ProblemMark;
    if (!item->children.isEmpty() && (found & (NameWithoutCode | CodeWithoutName | IncompleteParent)))
        return ProblemMark;
    return NoMark;
}

Marks::Reasons Marks::cellReasons(const Item *item, int column, Item::CollisionFlags collisions, QString *invalidName)
{
    const Reasons found = entryReasons(item, collisions, invalidName, column == 0);
    Reasons shown = found & columnReasons(column);
    const Reasons everyColumn = NameWithoutCode | CodeWithoutName | IncompleteParent;
    if (!item->children.isEmpty())
        shown |= found & everyColumn;
    return shown;
}

} // namespace ZAT16
