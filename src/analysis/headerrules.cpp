#include "headerrules.h"

#include "codetext.h"
#include "problems.h"
#include "taglisting.h"

#include <QHash>

namespace ZAT16 {

HeaderRules::HeaderRules(const TagListing &listing, QList<Found> *found)
    : OutputRules(listing, Outputs::Header, found)
{
}

void HeaderRules::run()
{
    // Every macro the header defines: its name, its text and the entry it comes from.
    struct Macro {
        QString name;
        QString text;
        const Item *item;
    };
    QList<Macro> macros;
    for (const Item *tag : m_listing.pairs() + m_listing.nested())
        macros.append({ QStringLiteral("MSG_") + tag->name, tag2hex(quint32(tag->id)), tag });
    for (const Item *tag : m_listing.plain())
        macros.append({ QStringLiteral("TAG_") + tag->name, tag2hex(quint32(tag->id)), tag });
    for (const TagListing::Lists &lists : m_listing.withLists()) {
        if (!lists.enums)
            continue;
        const int count = lists.enums->enumCount();
        for (const Item *entry : validEntries(lists.enums, Enum)) {
            if (entry->name.isEmpty())
                continue;
            const QString text = enumText(entry, count);
            number(entry, text, NumberReading::C);
            macros.append({ QStringLiteral("ENU_") + lists.tag->name + QLatin1Char('_') + entry->name, text, entry });
        }
        if (count)
            macros.append({ QStringLiteral("CNT_") + lists.tag->name, decimal(quint64(count)), lists.tag });
    }
    for (const TagListing::Lists &lists : m_listing.withLists()) {
        if (!lists.bits)
            continue;
        const int digits = CodeText::maskDigits(lists.bits);
        for (const Item *bit : validEntries(lists.bits, Bit)) {
            const QString text = bit->formatId();
            number(bit, text, NumberReading::C);
            const QString suffix = lists.tag->name + QLatin1Char('_') + bit->name;
            macros.append({ QStringLiteral("BIT_") + suffix, text, bit });
            mask32(bit, digits);
            macros.append({ QStringLiteral("MSK_") + suffix, CodeText::maskText(digits, bit->id), bit });
        }
    }

    // A name defined with two texts: every definition of it is named, with one that differs.
    QHash<QString, int> first;
    QHash<QString, int> differing;
    for (int i = 0; i < macros.size(); ++i) {
        const Macro &macro = macros.at(i);
        const auto at = first.constFind(macro.name);
        if (at == first.constEnd())
            first.insert(macro.name, i);
        else if (!differing.contains(macro.name) && macros.at(*at).text != macro.text)
            differing.insert(macro.name, i);
    }
    if (differing.isEmpty())
        return;
    for (const Macro &macro : std::as_const(macros)) {
        const auto at = differing.constFind(macro.name);
        if (at == differing.constEnd())
            continue;
        const Macro &firstMacro = macros.at(first.value(macro.name));
        const Macro &other = firstMacro.text == macro.text ? macros.at(*at) : firstMacro;
        add(macro.item,
            failure() + macro.name + QStringLiteral(" is defined again with another value for ")
                + Problems::describe(other.item));
    }
}

} // namespace ZAT16
