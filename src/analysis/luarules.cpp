#include "luarules.h"

#include "problems.h"
#include "taglisting.h"

#include <QHash>

namespace ZAT16 {

LuaRules::LuaRules(const TagListing &listing, QList<Found> *found)
    : OutputRules(listing, Outputs::Lua, found)
{
}

void LuaRules::run()
{
    struct Entry {
        int table; ///< the index of its table constructor
        QString key;
        QString text;
        quint64 meant; ///< the value the file means
        const Item *item;
    };
    QList<QString> tables { QStringLiteral("lutTag") };
    QList<const Item *> tableOwners { nullptr };
    QList<Entry> entries;
    auto checkKey
        = [&](const Item *item, const QString &name, const char *what) { return !refusedName(item, name, what); };
    for (const Item *tag : m_listing.pairs() + m_listing.nested() + m_listing.plain()) {
        if (checkKey(tag, tag->name, "tag"))
            entries.append({ 0, tag->name, tag2hex(quint32(tag->id)), tag->id, tag });
    }
    for (const TagListing::Lists &lists : m_listing.withLists()) {
        if (!lists.enums)
            continue;
        const int count = lists.enums->enumCount();
        tables.append(QStringLiteral("lut") + lists.tag->name);
        tableOwners.append(lists.tag);
        for (const Item *entry : lists.enums->children) {
            if (!entry->hasId || (entry->name.isEmpty() && entry->comment.isEmpty()))
                continue;
            QString key = entry->name;
            if (key.isEmpty()) {
                // The key is the comment in double quotes, inside a string in single quotes.
                const QString &comment = entry->comment;
                if (comment.contains(QLatin1Char('\'')))
                    add(entry, failure() + QStringLiteral("the ' in the comment that is its key ends the string"));
                else if (comment.contains(QLatin1Char('\n')) || comment.contains(QLatin1Char('\r')))
                    add(entry, failure() + QStringLiteral("the comment that is its key holds a line break"));
                else if (comment.contains(QLatin1Char('\\')))
                    add(entry, QStringLiteral("reads the \\ in the comment that is its key as an escape"));
                else
                    key = QLatin1Char('"') + comment + QLatin1Char('"');
                if (key.isEmpty())
                    continue;
            } else if (!checkKey(entry, key, "value")) {
                continue;
            }
            const QString text = enumText(entry, count);
            number(entry, text, NumberReading::Lua);
            entries.append({ int(tables.size() - 1), key, text, entry->id, entry });
        }
    }
    for (const TagListing::Lists &lists : m_listing.withLists()) {
        if (!lists.bits)
            continue;
        tables.append(QStringLiteral("lutBit") + lists.tag->name);
        tableOwners.append(lists.tag);
        for (const Item *bit : lists.bits->children) {
            if (!bit->hasId || !checkKey(bit, bit->name, "bit"))
                continue;
            // Masks are signed 32-bit numbers: bit 31 is negative and bit 32 is bit 0 again.
            const qint32 mask = qint32(quint32(1) << (bit->id % 32));
            if (bit->id >= 31) {
                add(bit,
                    QStringLiteral("writes the mask of bit %1 as %2: masks are signed 32-bit numbers there")
                        .arg(decimal(bit->id), QString::number(mask)));
            }
            const quint64 meant = bit->id < 64 ? quint64(1) << bit->id : 0;
            entries.append({ int(tables.size() - 1), bit->name, QString::number(mask), meant, bit });
        }
    }
    // What stays: the last table of each name, in it the last entry of each key.
    QHash<QString, int> lastTable;
    for (int i = 0; i < tables.size(); ++i)
        lastTable.insert(tables.at(i), i);
    QHash<QString, int> lastEntry;
    for (int i = 0; i < entries.size(); ++i)
        lastEntry.insert(QString::number(entries.at(i).table) + QLatin1Char(' ') + entries.at(i).key, i);
    for (const Entry &entry : std::as_const(entries)) {
        const QString &table = tables.at(entry.table);
        const int kept = lastTable.value(table);
        const auto holder = lastEntry.constFind(QString::number(kept) + QLatin1Char(' ') + entry.key);
        const Entry *other = holder == lastEntry.constEnd() ? nullptr : &entries.at(*holder);
        if (other == &entry)
            continue;
        if (other) {
            const NumberReading::Reading reading = NumberReading::read(other->text, NumberReading::Lua);
            if (reading.outcome == NumberReading::Exact && reading.value == entry.meant)
                continue;
        }
        if (kept != entry.table) {
            add(entry.item,
                QStringLiteral("writes zat16.%1 again for %2, which replaces the table of this entry")
                    .arg(table, Problems::describe(tableOwners.at(kept))));
        } else {
            add(entry.item,
                QStringLiteral("writes the key %1 of zat16.%2 again with another value for %3")
                    .arg(entry.key, table, Problems::describe(other->item)));
        }
    }
}

} // namespace ZAT16
