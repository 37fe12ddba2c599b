#include "headerrules.h"

#include "codetext.h"
#include "problems.h"
#include "taglisting.h"

#include <QHash>
#include <QSet>

namespace ZAT16 {

namespace {

// The macros of the header, by the prefix of their names.
enum MacroKind { Msg, TagCode, Enu, Cnt, BitNo, Msk };

const char16_t *const prefixes[] = { u"MSG_", u"TAG_", u"ENU_", u"CNT_", u"BIT_", u"MSK_" };

// One macro the header defines; its name and its text are made only when its name may be
// defined twice.
struct Macro {
    MacroKind kind;
    const Item *item; ///< the entry it comes from (the tag for MSG_, TAG_ and CNT_)
    const Item *tag;
    int number; ///< the count of a CNT_ or ENU_ macro's list, the mask digits of an MSK_ macro
};

// FNV-1a over the characters of the name, part by part, as if the parts were one string: two
// macros with one name have one hash.
struct NameHash {
    quint64 value = 14695981039346656037ULL;
    void add(QStringView part)
    {
        for (QChar c : part) {
            value ^= c.unicode();
            value *= 1099511628211ULL;
        }
    }
};

quint64 nameHash(const Macro &macro)
{
    NameHash hash;
    hash.add(QStringView(prefixes[macro.kind]));
    hash.add(macro.tag->name);
    if (macro.item != macro.tag) {
        hash.add(u"_");
        hash.add(macro.item->name);
    }
    return hash.value;
}

QString macroName(const Macro &macro)
{
    QString name = QStringView(prefixes[macro.kind]).toString() + macro.tag->name;
    if (macro.item != macro.tag)
        name += QLatin1Char('_') + macro.item->name;
    return name;
}

} // namespace

HeaderRules::HeaderRules(const TagListing &listing, QList<Found> *found)
    : OutputRules(listing, Outputs::Header, found)
{
}

void HeaderRules::run()
{
    QList<Macro> macros;
    for (const Item *tag : m_listing.pairs() + m_listing.nested())
        macros.append({ Msg, tag, tag, 0 });
    for (const Item *tag : m_listing.plain())
        macros.append({ TagCode, tag, tag, 0 });
    for (const TagListing::Lists &lists : m_listing.withLists()) {
        if (!lists.enums)
            continue;
        const int count = lists.enums->enumCount();
        for (const Item *entry : lists.enums->children) {
            if (!entry->isValid(Enum) || entry->name.isEmpty())
                continue;
            enumNumber(entry, count, NumberReading::C);
            macros.append({ Enu, entry, lists.tag, count });
        }
        if (count)
            macros.append({ Cnt, lists.tag, lists.tag, count });
    }
    for (const TagListing::Lists &lists : m_listing.withLists()) {
        if (!lists.bits)
            continue;
        const int digits = CodeText::maskDigits(lists.bits);
        for (const Item *bit : lists.bits->children) {
            if (!bit->isValid(Bit))
                continue;
            bitNumber(bit, true, NumberReading::C);
            mask32(bit, digits);
            macros.append({ BitNo, bit, lists.tag, 0 });
            macros.append({ Msk, bit, lists.tag, digits });
        }
    }

    // What the header writes after the name of a macro.
    auto macroText = [](const Macro &macro) {
        switch (macro.kind) {
        case Msg:
        case TagCode:
            return tag2hex(quint32(macro.item->id));
        case Enu:
            return enumText(macro.item, macro.number);
        case Cnt:
            return decimal(quint64(macro.number));
        case BitNo:
            return macro.item->formatId();
        case Msk:
            break;
        }
        return CodeText::maskText(macro.number, macro.item->id);
    };

    // Names that may be defined twice: those whose hash is there twice.
    QSet<quint64> seen;
    QSet<quint64> repeated;
    seen.reserve(macros.size());
    for (const Macro &macro : std::as_const(macros)) {
        const quint64 hash = nameHash(macro);
        if (seen.contains(hash))
            repeated.insert(hash);
        else
            seen.insert(hash);
    }
    if (repeated.isEmpty())
        return;
    struct Named {
        QString name;
        QString text;
        const Item *item;
    };
    QList<Named> named;
    for (const Macro &macro : std::as_const(macros)) {
        if (repeated.contains(nameHash(macro)))
            named.append({ macroName(macro), macroText(macro), macro.kind == Cnt ? macro.tag : macro.item });
    }

    // A name defined with two texts: every definition of it is named, with one that differs.
    QHash<QString, int> first;
    QHash<QString, int> differing;
    for (int i = 0; i < named.size(); ++i) {
        const Named &macro = named.at(i);
        const auto at = first.constFind(macro.name);
        if (at == first.constEnd())
            first.insert(macro.name, i);
        else if (!differing.contains(macro.name) && named.at(*at).text != macro.text)
            differing.insert(macro.name, i);
    }
    for (const Named &macro : std::as_const(named)) {
        const auto at = differing.constFind(macro.name);
        if (at == differing.constEnd())
            continue;
        const Named &firstMacro = named.at(first.value(macro.name));
        const Named &other = firstMacro.text == macro.text ? named.at(*at) : firstMacro;
        add(macro.item,
            failure() + macro.name + QStringLiteral(" is defined again with another value for ")
                + Problems::describe(other.item));
    }
}

} // namespace ZAT16
