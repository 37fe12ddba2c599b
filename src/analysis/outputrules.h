#pragma once

#include "item.h"
#include "numberreading.h"
#include "outputs.h"

#include <QList>
#include <QSet>
#include <QString>

#include <utility>

namespace ZAT16 {

class TagListing;

/// The rules of one generated output: which entries of a definitions tree make it fail to
/// compile or load, or hold a value other than the file's (OutputProblems gathers them). A
/// subclass walks the tags as its generator lists them (TagListing) and reports through the
/// helpers below, which word the problems alike for every output.
class OutputRules
{
public:
    /// A problem before the entry is described in front of it: "will not compile: ...".
    struct Found {
        const Item *item;
        Outputs::Kind output;
        QString clause;
    };

    OutputRules(const TagListing &listing, Outputs::Kind output, QList<Found> *found);
    virtual ~OutputRules();

    /// Reports every problem of the output.
    virtual void run() = 0;

protected:
    /// One problem of `item`; the same clause is said once for an entry.
    void add(const Item *item, const QString &clause);
    /// "will not compile: " or, for Lua, "will not load: ".
    QString failure() const;
    /// The name of the output's language in messages: "C", "C++", "C#" or "Lua".
    QLatin1String languageName() const;
    /// The problems of the value `text` that the output writes for `item`, read as `language`
    /// reads it; with `longLong` the value must fit in a long long too.
    void number(const Item *item, const QString &text, NumberReading::Language language, bool longLong = false);
    /// The problems of an enumeration value as the output writes it (enumText()).
    void enumNumber(const Item *entry, int count, NumberReading::Language language, bool longLong = false);
    /// The problems of a bit number, written in decimal or, `displayed`, as the bit displays it.
    void bitNumber(const Item *bit, bool displayed, NumberReading::Language language, bool longLong = false);
    /// Whether the text of `entry`'s value, in decimal or, `displayed`, as the entry displays it,
    /// is a plain number in the range of an int, which every language reads as written and every
    /// type holds: most values are, and they need no text to be made and read.
    static bool plainNumber(const Item *entry, bool displayed);
    /// Whether `name` cannot be an identifier of the language (empty, a keyword, reserved); if
    /// so, reports it. `what` names the entry: "tag", "value", "bit".
    bool refusedName(const Item *item, const QString &name, const char *what);
    /// Entries written as members of one C++ namespace or C# enumeration, named `scope` +
    /// name in messages: each name must be an identifier and be there once.
    void members(const QList<std::pair<const Item *, QString>> &entries, const QString &scope, const char *what);
    /// "writes the mask of bit 40 as 0x00000000: masks hold 32 bits" for bit numbers of 32 and more.
    void mask32(const Item *bit, int digits);

    /// The enumeration values or bits of `list` (which may be null) that the generators write.
    static QList<const Item *> validEntries(const Item *list, ItemType type);
    static QString decimal(quint64 value);
    /// The text of an enumeration value: in decimal when its list counts its values (`count`),
    /// else as the value displays it.
    static QString enumText(const Item *entry, int count);

    const TagListing &m_listing;
    const Outputs::Kind m_output;

private:
    QList<Found> *m_found;
    QSet<QString> m_said;
};

} // namespace ZAT16
