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
    // One entry of a table constructor: its key, the value the file means, and the value Lua
    // reads from what is written (as a 64-bit pattern, when it is an integer).
    struct Entry {
        QString key;
        const Item *item;
        quint64 meant;
        quint64 read;
        bool integer;
    };
    // A table constructor, and what it holds once it has run: the last entry of each key.
    struct Table {
        QString name;
        const Item *owner;
        QList<Entry> entries;
    };
    auto checkKey
        = [&](const Item *item, const QString &name, const char *what) { return !refusedName(item, name, what); };
    auto readEnum = [&](const Item *entry, int count, Entry *out) {
        if (plainNumber(entry, !count)) {
            out->read = entry->id;
            out->integer = true;
            return;
        }
        const QString text = enumText(entry, count);
        number(entry, text, NumberReading::Lua);
        const NumberReading::Reading reading = NumberReading::read(text, NumberReading::Lua);
        out->read = reading.value;
        out->integer = reading.outcome == NumberReading::Exact;
    };

    // The tables in the order of the script; those of one name are looked at together at the
    // end, the others as soon as they are complete.
    QHash<QString, int> tableCount { { QStringLiteral("lutTag"), 1 } };
    for (const TagListing::Lists &lists : m_listing.withLists()) {
        if (lists.enums)
            ++tableCount[QStringLiteral("lut") + lists.tag->name];
        if (lists.bits)
            ++tableCount[QStringLiteral("lutBit") + lists.tag->name];
    }
    // In one table constructor the last entry of a key is the one that stays.
    auto keysAgain = [&](const Table &table) {
        const QList<Entry> &entries = table.entries;
        QHash<QString, qsizetype> last;
        const bool small = entries.size() <= 16;
        if (!small) {
            for (qsizetype i = 0; i < entries.size(); ++i)
                last.insert(entries.at(i).key, i);
        }
        for (qsizetype i = 0; i < entries.size(); ++i) {
            const Entry &entry = entries.at(i);
            qsizetype held = i;
            if (small) {
                for (qsizetype j = i + 1; j < entries.size(); ++j) {
                    if (entries.at(j).key == entry.key)
                        held = j;
                }
            } else {
                held = last.value(entry.key);
            }
            const Entry &holder = entries.at(held);
            if (held == i || (holder.integer && holder.read == entry.meant))
                continue;
            add(entry.item,
                QStringLiteral("writes the key %1 of zat16.%2 again with another value for %3")
                    .arg(entry.key, table.name, Problems::describe(holder.item)));
        }
    };
    QHash<QString, QList<Table>> repeatedTables;
    auto finish = [&](Table &&table) {
        if (tableCount.value(table.name) > 1)
            repeatedTables[table.name].append(std::move(table));
        else
            keysAgain(table);
    };

    Table tags { QStringLiteral("lutTag"), nullptr, {} };
    for (const Item *tag : m_listing.pairs() + m_listing.nested() + m_listing.plain()) {
        if (checkKey(tag, tag->name, "tag"))
            tags.entries.append({ tag->name, tag, tag->id, tag->id, true });
    }
    finish(std::move(tags));
    for (const TagListing::Lists &lists : m_listing.withLists()) {
        if (!lists.enums)
            continue;
        const int count = lists.enums->enumCount();
        Table table { QStringLiteral("lut") + lists.tag->name, lists.tag, {} };
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
            Entry written { key, entry, entry->id, 0, false };
            readEnum(entry, count, &written);
            table.entries.append(written);
        }
        finish(std::move(table));
    }
    for (const TagListing::Lists &lists : m_listing.withLists()) {
        if (!lists.bits)
            continue;
        Table table { QStringLiteral("lutBit") + lists.tag->name, lists.tag, {} };
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
            table.entries.append({ bit->name, bit, meant, quint64(qint64(mask)), true });
        }
        finish(std::move(table));
    }

    // A table written again replaces the earlier ones of its name: their entries are right only
    // where the last one holds their key with their value.
    for (auto it = repeatedTables.cbegin(); it != repeatedTables.cend(); ++it) {
        const QList<Table> &tables = it.value();
        const Table &kept = tables.last();
        keysAgain(kept);
        QHash<QString, const Entry *> held;
        for (const Entry &entry : kept.entries)
            held.insert(entry.key, &entry);
        for (qsizetype i = 0; i + 1 < tables.size(); ++i) {
            for (const Entry &entry : tables.at(i).entries) {
                const Entry *holder = held.value(entry.key);
                if (holder && holder->integer && holder->read == entry.meant)
                    continue;
                add(entry.item,
                    QStringLiteral("writes zat16.%1 again for %2, which replaces the table of this entry")
                        .arg(it.key(), Problems::describe(kept.owner)));
            }
        }
    }
}

} // namespace ZAT16
