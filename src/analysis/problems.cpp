#include "problems.h"

#include "item.h"
#include "marks.h"
#include "siblingindex.h"

#include <QHash>

#include <iterator>

namespace ZAT16 {

namespace {

// Reserved words as each language's current standard lists them (C23, C++23, C# 12 without the
// contextual ones, Lua 5.4). Generated code uses the names as identifiers, so a name from these
// lists breaks the output for that language.
const char *const cKeywords[] = {
    "alignas",
    "alignof",
    "auto",
    "bool",
    "break",
    "case",
    "char",
    "const",
    "constexpr",
    "continue",
    "default",
    "do",
    "double",
    "else",
    "enum",
    "extern",
    "false",
    "float",
    "for",
    "goto",
    "if",
    "inline",
    "int",
    "long",
    "nullptr",
    "register",
    "restrict",
    "return",
    "short",
    "signed",
    "sizeof",
    "static",
    "static_assert",
    "struct",
    "switch",
    "thread_local",
    "true",
    "typedef",
    "typeof",
    "typeof_unqual",
    "union",
    "unsigned",
    "void",
    "volatile",
    "while",
    "_Alignas",
    "_Alignof",
    "_Atomic",
    "_BitInt",
    "_Bool",
    "_Complex",
    "_Decimal128",
    "_Decimal32",
    "_Decimal64",
    "_Generic",
    "_Imaginary",
    "_Noreturn",
    "_Static_assert",
    "_Thread_local",
};

const char *const cppKeywords[] = {
    "alignas",     "alignof",   "and",        "and_eq",    "asm",      "auto",         "bitand",
    "bitor",       "bool",      "break",      "case",      "catch",    "char",         "char8_t",
    "char16_t",    "char32_t",  "class",      "compl",     "concept",  "const",        "consteval",
    "constexpr",   "constinit", "const_cast", "continue",  "co_await", "co_return",    "co_yield",
    "decltype",    "default",   "delete",     "do",        "double",   "dynamic_cast", "else",
    "enum",        "explicit",  "export",     "extern",    "false",    "float",        "for",
    "friend",      "goto",      "if",         "inline",    "int",      "long",         "mutable",
    "namespace",   "new",       "noexcept",   "not",       "not_eq",   "nullptr",      "operator",
    "or",          "or_eq",     "private",    "protected", "public",   "register",     "reinterpret_cast",
    "requires",    "return",    "short",      "signed",    "sizeof",   "static",       "static_assert",
    "static_cast", "struct",    "switch",     "template",  "this",     "thread_local", "throw",
    "true",        "try",       "typedef",    "typeid",    "typename", "union",        "unsigned",
    "using",       "virtual",   "void",       "volatile",  "wchar_t",  "while",        "xor",
    "xor_eq",
};

const char *const csKeywords[] = {
    "abstract", "as",      "base",    "bool",       "break",    "byte",     "case",      "catch",     "char",
    "checked",  "class",   "const",   "continue",   "decimal",  "default",  "delegate",  "do",        "double",
    "else",     "enum",    "event",   "explicit",   "extern",   "false",    "finally",   "fixed",     "float",
    "for",      "foreach", "goto",    "if",         "implicit", "in",       "int",       "interface", "internal",
    "is",       "lock",    "long",    "namespace",  "new",      "null",     "object",    "operator",  "out",
    "override", "params",  "private", "protected",  "public",   "readonly", "ref",       "return",    "sbyte",
    "sealed",   "short",   "sizeof",  "stackalloc", "static",   "string",   "struct",    "switch",    "this",
    "throw",    "true",    "try",     "typeof",     "uint",     "ulong",    "unchecked", "unsafe",    "ushort",
    "using",    "virtual", "void",    "volatile",   "while",
};

const char *const luaKeywords[] = {
    "and", "break", "do",  "else", "elseif", "end",    "false",  "for",  "function", "goto",  "if",
    "in",  "local", "nil", "not",  "or",     "repeat", "return", "then", "true",     "until", "while",
};

// One bit per language, in the order of the message.
QHash<QString, int> makeKeywordTable()
{
    QHash<QString, int> table;
    auto add = [&table](const char *const *words, size_t count, int bit) {
        for (size_t i = 0; i < count; ++i)
            table[QString::fromLatin1(words[i])] |= bit;
    };
    add(cKeywords, std::size(cKeywords), 1);
    add(cppKeywords, std::size(cppKeywords), 2);
    add(csKeywords, std::size(csKeywords), 4);
    add(luaKeywords, std::size(luaKeywords), 8);
    return table;
}

const QHash<QString, int> &keywordTable()
{
    static const QHash<QString, int> table = makeKeywordTable();
    return table;
}

// The characters that reserved words start with (all of them ASCII), so that most names are
// passed without a look-up in the table.
struct KeywordStarts {
    bool start[128] = {};
    KeywordStarts()
    {
        const QList<QString> words = keywordTable().keys();
        for (const QString &word : words)
            start[word.at(0).unicode()] = true;
    }
    bool mayStart(const QString &name) const
    {
        return !name.isEmpty() && name.at(0).unicode() < 128 && start[name.at(0).unicode()];
    }
};

// "A, B and C".
QString listing(const QStringList &words)
{
    if (words.size() < 2)
        return words.join(QString());
    return QStringList(words.mid(0, words.size() - 1)).join(QStringLiteral(", ")) + QStringLiteral(" and ")
        + words.last();
}

QString kindWord(const Item *item)
{
    switch (item->type) {
    case Tag:
        return QStringLiteral("Tag");
    case Enum:
        return QStringLiteral("Enum");
    case Bit:
        return QStringLiteral("Bit");
    default:
        return QStringLiteral("Item");
    }
}

// The entry's own part of a description; `row` is its row in its parent.
QString ownDescription(const Item *item, qsizetype row)
{
    QString text;
    // Room for most descriptions and the message that follows them, in one allocation.
    text.reserve(item->name.size() + 64);
    text += kindWord(item);
    if (!item->name.isEmpty()) {
        text += QLatin1Char(' ');
        text += item->name;
    }
    if (item->hasId) {
        text += QLatin1String(" (");
        item->appendId(text);
        text += QLatin1Char(')');
    }
    if (item->name.isEmpty() && !item->hasId) {
        text += QLatin1String(" in row ");
        text += QString::number(row + 1);
    }
    return text;
}

// The problems of the entry `item` at `row` of its parent's list; `context` is what follows its
// description (" of Tag Mode (0x1002)" inside that tag).
void entryProblems(const Item *item,
                   qsizetype row,
                   Item::CollisionFlags collisions,
                   const QString &context,
                   QList<Problems::Problem> *out)
{
    if (!Marks::isEntry(item))
        return;
    const bool hasName = !item->name.isEmpty();
    const bool hasCode = item->hasId;
    QString description;
    auto add = [&](Problems::Kind kind, const QString &what) {
        if (description.isEmpty()) {
            description = ownDescription(item, row);
            description += context;
        }
        QString message;
        message.reserve(description.size() + 2 + what.size());
        message += description;
        message += QLatin1String(": ");
        message += what;
        out->append({ item, kind, message });
    };
    QString invalid;
    const Marks::Reasons reasons = Marks::reasons(item, collisions, &invalid);
    if (reasons & Marks::NameWithoutCode)
        add(Problems::NameWithoutCode, QStringLiteral("name without code"));
    if (reasons & Marks::CodeWithoutName)
        add(Problems::CodeWithoutName, QStringLiteral("code without name"));
    if (reasons & Marks::NameCollision)
        add(Problems::NameCollision, QStringLiteral("name collision with a sibling"));
    if (reasons & Marks::CodeCollision)
        add(Problems::CodeCollision, QStringLiteral("code collision with a sibling"));
    if (reasons & Marks::IncompleteParent) {
        QString lacking = !hasName && !hasCode ? QStringLiteral("no name and no code")
                                               : (!hasName ? QStringLiteral("no name") : QStringLiteral("no code"));
        add(Problems::IncompleteParent, QStringLiteral("has entries but ") + lacking);
    }
    if (reasons & Marks::InvalidName)
        add(Problems::InvalidName, invalid);
    if (hasName) {
        const QStringList languages = Problems::keywordLanguages(item->name);
        if (!languages.isEmpty())
            add(Problems::Keyword, QStringLiteral("name is a keyword of ") + listing(languages));
    }
}

// The problems of the children of one item; `context` is what follows the description of each of
// them. Collision flags come from one pass over the child list, as an index gives them.
void childProblems(const Item *parent, const QString &context, QList<Problems::Problem> *out)
{
    const QList<Item *> &children = parent->children;
    const qsizetype count = children.size();
    const QList<Item::CollisionFlags> collisions = SiblingIndex::collisions(parent);
    for (qsizetype i = 0; i < count; ++i) {
        const Item *item = children.at(i);
        if (Marks::isEntry(item))
            entryProblems(item, i, collisions.at(i), context, out);
    }
}

// What follows the description of an entry: " of " and the tag it belongs to, which may in turn
// belong to a tag.
QString context(const Item *item)
{
    for (const Item *up = item->parent; up; up = up->parent) {
        if (up->type == Tag)
            return QStringLiteral(" of ") + ownDescription(up, up->row()) + context(up);
    }
    return QString();
}

} // namespace

QList<Problems::Problem> Problems::find(const Item *root)
{
    QList<Problem> problems;
    if (!root)
        return problems;
    // Document order: the problems of an item's children come right after the item's own, which
    // its parent's list produced. An explicit stack keeps deep files off the call stack.
    struct Frame {
        const Item *item;
        QString context; ///< the description's ending for the children
        qsizetype next; ///< the child to descend into next
        QList<Problem> pending; ///< problems of the children, in child order
        qsizetype pendingAt; ///< the first problem of `pending` not yet emitted
    };
    QList<Frame> stack;
    auto enter = [&](const Item *item, const QString &context) {
        Frame frame { item, context, 0, {}, 0 };
        childProblems(item, context, &frame.pending);
        stack.append(std::move(frame));
    };
    enter(root, QString());
    while (!stack.isEmpty()) {
        Frame &frame = stack.last();
        if (frame.next >= frame.item->children.size()) {
            stack.removeLast();
            continue;
        }
        const qsizetype row = frame.next++;
        const Item *child = frame.item->children.at(row);
        while (frame.pendingAt < frame.pending.size() && frame.pending.at(frame.pendingAt).item == child)
            problems.append(frame.pending.at(frame.pendingAt++));
        if (!child->children.isEmpty()) {
            const QString context = child->type == Tag
                ? QStringLiteral(" of ") + ownDescription(child, row) + frame.context
                : frame.context;
            enter(child, context);
        }
    }
    return problems;
}

QList<Problems::Problem> Problems::ofEntry(const Item *item, Item::CollisionFlags collisions)
{
    QList<Problem> problems;
    entryProblems(item, item->row(), collisions, context(item), &problems);
    return problems;
}

QString Problems::describe(const Item *item)
{
    return ownDescription(item, item->row()) + context(item);
}

QStringList Problems::keywordLanguages(const QString &name)
{
    QStringList languages;
    static const KeywordStarts starts;
    if (!starts.mayStart(name))
        return languages;
    const int bits = keywordTable().value(name);
    if (bits & 1)
        languages << QStringLiteral("C");
    if (bits & 2)
        languages << QStringLiteral("C++");
    if (bits & 4)
        languages << QStringLiteral("C#");
    if (bits & 8)
        languages << QStringLiteral("Lua");
    return languages;
}

} // namespace ZAT16
