#include "csrules.h"

#include "codetext.h"
#include "problems.h"
#include "taglisting.h"

#include <QHash>

namespace ZAT16 {

CsRules::CsRules(const TagListing &listing, QList<Found> *found)
    : OutputRules(listing, Outputs::Cs, found)
{
}

void CsRules::run()
{
    QList<std::pair<const Item *, QString>> tagIds;
    for (const Item *tag : m_listing.pairs() + m_listing.nested() + m_listing.plain())
        tagIds.append({ tag, tag->name });
    members(tagIds, QStringLiteral("TagID."), "tag");

    QHash<QString, const Item *> types { { QStringLiteral("TagID"), nullptr } };
    auto declare = [&](const Item *tag, const QString &name) {
        const auto at = types.constFind(name);
        if (at == types.constEnd()) {
            types.insert(name, tag);
            return;
        }
        add(tag,
            failure() + QStringLiteral("the enumeration %1 is also written for %2").arg(name, Problems::describe(*at)));
        add(*at,
            failure() + QStringLiteral("the enumeration %1 is also written for %2").arg(name, Problems::describe(tag)));
    };
    for (const TagListing::Lists &lists : m_listing.withLists()) {
        const QList<const Item *> values = validEntries(lists.enums, Enum);
        if (values.isEmpty())
            continue;
        const QString type = lists.tag->name + QStringLiteral("Enums");
        declare(lists.tag, type);
        const int count = lists.enums->enumCount();
        QList<std::pair<const Item *, QString>> names;
        for (const Item *entry : values) {
            names.append({ entry, entry->name });
            enumNumber(entry, count, NumberReading::CSharp);
        }
        members(names, type + QLatin1Char('.'), "value");
    }
    for (const TagListing::Lists &lists : m_listing.withLists()) {
        const QList<const Item *> bits = validEntries(lists.bits, Bit);
        if (bits.isEmpty())
            continue;
        declare(lists.tag, lists.tag->name + QStringLiteral("Bits"));
        declare(lists.tag, lists.tag->name + QStringLiteral("Masks"));
        const int digits = CodeText::maskDigits(lists.bits);
        QList<std::pair<const Item *, QString>> names;
        for (const Item *bit : bits) {
            names.append({ bit, bit->name });
            bitNumber(bit, false, NumberReading::CSharp);
            const QString mask = CodeText::maskText(digits, bit->id);
            if (bit->id % 64 == 31) {
                add(bit,
                    failure()
                        + QStringLiteral("the mask %1 of bit %2 does not fit in the int of a C# enumeration")
                              .arg(mask, decimal(bit->id)));
            } else {
                mask32(bit, digits);
            }
        }
        members(names, lists.tag->name + QStringLiteral("Bits."), "bit");
    }
}

} // namespace ZAT16
