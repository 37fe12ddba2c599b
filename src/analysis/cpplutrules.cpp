#include "cpplutrules.h"

#include "problems.h"
#include "taglisting.h"

#include <QHash>

namespace ZAT16 {

CppLutRules::CppLutRules(const TagListing &listing, QList<Found> *found)
    : OutputRules(listing, Outputs::CppLut, found)
{
}

void CppLutRules::run()
{
    QHash<QString, const Item *> tables { { QStringLiteral("ToplevelTags"), nullptr } };
    auto write = [&](const Item *tag) {
        const QString &name = tag->name;
        const auto at = tables.constFind(name);
        if (at == tables.constEnd()) {
            tables.insert(name, tag);
            return;
        }
        const Item *holder = *at;
        const QString table = QStringLiteral("nameLookup") + name;
        if (holder == tag) {
            add(tag,
                failure()
                    + QStringLiteral("the tag has both an enumeration list and a bit list, which are both %1")
                          .arg(table));
        } else if (!holder) {
            add(tag, failure() + QStringLiteral("%1 is the table of the top-level tags").arg(table));
        } else {
            add(tag, failure() + QStringLiteral("%1 is also written for %2").arg(table, Problems::describe(holder)));
            add(holder, failure() + QStringLiteral("%1 is also written for %2").arg(table, Problems::describe(tag)));
        }
    };
    for (const TagListing::Lists &lists : m_listing.withLists()) {
        const QList<const Item *> values = validEntries(lists.enums, Enum);
        if (values.isEmpty())
            continue;
        write(lists.tag);
        const int count = lists.enums->enumCount();
        for (const Item *entry : values)
            enumNumber(entry, count, NumberReading::C, true);
    }
    for (const TagListing::Lists &lists : m_listing.withLists()) {
        const QList<const Item *> bits = validEntries(lists.bits, Bit);
        if (bits.isEmpty())
            continue;
        write(lists.tag);
        for (const Item *bit : bits)
            bitNumber(bit, false, NumberReading::C, true);
    }
    // Every tag with a list has a row in tagLookup that names its table.
    for (const TagListing::Lists &lists : m_listing.withLists()) {
        if (!tables.contains(lists.tag->name)) {
            add(lists.tag,
                failure()
                    + QStringLiteral(
                          "tagLookup names nameLookup%1, which is not written: the tag's list has no entries")
                          .arg(lists.tag->name));
        }
    }
}

} // namespace ZAT16
