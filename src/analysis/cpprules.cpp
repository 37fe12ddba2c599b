#include "cpprules.h"

#include "codetext.h"
#include "problems.h"
#include "taglisting.h"

#include <QHash>

namespace ZAT16 {

CppRules::CppRules(const TagListing &listing, QList<Found> *found)
    : OutputRules(listing, Outputs::Cpp, found)
{
}

void CppRules::run()
{
    QList<std::pair<const Item *, QString>> cmd;
    QList<std::pair<const Item *, QString>> tags;
    for (const Item *tag : m_listing.pairs() + m_listing.nested())
        cmd.append({ tag, tag->name });
    for (const Item *tag : m_listing.plain())
        tags.append({ tag, tag->name });
    members(cmd, QStringLiteral("Cmd::"), "tag");
    members(tags, QStringLiteral("Tag::"), "tag");

    // The namespaces written: the header's own, then those of the tags' lists.
    QHash<QString, const Item *> namespaces { { QStringLiteral("Type"), nullptr },
                                              { QStringLiteral("Cmd"), nullptr },
                                              { QStringLiteral("Tag"), nullptr } };
    auto open = [&](const Item *tag, const QString &name) {
        refusedName(tag, name, "tag");
        const auto at = namespaces.constFind(name);
        if (at == namespaces.constEnd()) {
            namespaces.insert(name, tag);
            return;
        }
        const Item *holder = *at;
        if (holder == tag) {
            add(tag, failure() + QStringLiteral("the tag has both an enumeration list and a bit list"));
        } else if (!holder) {
            add(tag, failure() + QStringLiteral("namespace %1 is the header's own").arg(name));
        } else {
            add(tag,
                failure()
                    + QStringLiteral("namespace %1 is also written for %2").arg(name, Problems::describe(holder)));
            add(holder,
                failure() + QStringLiteral("namespace %1 is also written for %2").arg(name, Problems::describe(tag)));
        }
    };
    for (const TagListing::Lists &lists : m_listing.withLists()) {
        const QList<const Item *> values = validEntries(lists.enums, Enum);
        if (values.isEmpty())
            continue;
        open(lists.tag, lists.tag->name);
        const int count = lists.enums->enumCount();
        QList<std::pair<const Item *, QString>> names;
        for (const Item *entry : values) {
            if (count && entry->name == QLatin1String("EnumCount"))
                add(entry, failure() + QStringLiteral("EnumCount is the name of the count of the values"));
            else
                names.append({ entry, entry->name });
            enumNumber(entry, count, NumberReading::C);
        }
        members(names, lists.tag->name + QStringLiteral("::"), "value");
    }
    for (const TagListing::Lists &lists : m_listing.withLists()) {
        const QList<const Item *> bits = validEntries(lists.bits, Bit);
        if (bits.isEmpty())
            continue;
        open(lists.tag, lists.tag->name + QStringLiteral("Bits"));
        open(lists.tag, lists.tag->name);
        const int digits = CodeText::maskDigits(lists.bits);
        QList<std::pair<const Item *, QString>> names;
        for (const Item *bit : bits) {
            names.append({ bit, bit->name });
            bitNumber(bit, false, NumberReading::C);
            mask32(bit, digits);
        }
        members(names, lists.tag->name + QStringLiteral("Bits::"), "bit");
    }
}

} // namespace ZAT16
