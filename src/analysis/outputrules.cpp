#include "outputrules.h"

#include "codetext.h"
#include "problems.h"

#include <QHash>

#include <algorithm>
#include <limits>

namespace ZAT16 {

namespace {

// Reserved words of C# that its standard does not list but its compilers take as keywords.
const char *const csHiddenKeywords[] = { "__arglist", "__makeref", "__reftype", "__refvalue" };

} // namespace

OutputRules::OutputRules(const TagListing &listing, Outputs::Kind output, QList<Found> *found)
    : m_listing(listing)
    , m_output(output)
    , m_found(found)
{
}

OutputRules::~OutputRules() = default;

void OutputRules::add(const Item *item, const QString &clause)
{
    // One rule may meet an entry twice (a bit's name in two C++ namespaces): it is said once.
    const QString key = QString::number(quintptr(item)) + QLatin1Char(' ') + clause;
    if (m_said.contains(key))
        return;
    m_said.insert(key);
    m_found->append({ item, m_output, clause });
}

QString OutputRules::failure() const
{
    return QLatin1String(m_output == Outputs::Lua ? "will not load: " : "will not compile: ");
}

QLatin1String OutputRules::languageName() const
{
    switch (m_output) {
    case Outputs::Header:
        return QLatin1String("C");
    case Outputs::Lua:
        return QLatin1String("Lua");
    case Outputs::Cs:
        return QLatin1String("C#");
    default:
        return QLatin1String("C++");
    }
}

void OutputRules::number(const Item *item, const QString &text, NumberReading::Language language, bool longLong)
{
    const NumberReading::Reading reading = NumberReading::read(text, language);
    const QLatin1String lang = languageName();
    switch (reading.outcome) {
    case NumberReading::Invalid:
        add(item, failure() + text + QStringLiteral(" is no number in ") + lang);
        return;
    case NumberReading::Octal:
        add(item, QStringLiteral("writes %1, which %2 reads as octal %3").arg(text, lang, decimal(reading.value)));
        return;
    case NumberReading::TooLarge:
        add(item,
            failure() + text
                + (m_output == Outputs::Cs ? QStringLiteral(" does not fit in the int of a C# enumeration")
                                           : QStringLiteral(" is too large for long long")));
        return;
    case NumberReading::Float:
        add(item, QStringLiteral("writes %1, which Lua reads as a float").arg(text));
        return;
    case NumberReading::Exact:
        break;
    }
    if (longLong && !NumberReading::fitsLongLong(reading))
        add(item, failure() + text + QStringLiteral(" does not fit in the long long of a row"));
}

void OutputRules::enumNumber(const Item *entry, int count, NumberReading::Language language, bool longLong)
{
    if (!plainNumber(entry, !count))
        number(entry, enumText(entry, count), language, longLong);
}

void OutputRules::bitNumber(const Item *bit, bool displayed, NumberReading::Language language, bool longLong)
{
    if (!plainNumber(bit, displayed))
        number(bit, displayed ? bit->formatId() : decimal(bit->id), language, longLong);
}

bool OutputRules::plainNumber(const Item *entry, bool displayed)
{
    constexpr qint64 intMin = std::numeric_limits<qint32>::min();
    constexpr qint64 intMax = std::numeric_limits<qint32>::max();
    if (!displayed)
        return entry->id <= quint64(intMax);
    // No zeros of a padding; decimal, or hexadecimal (which every language reads as written).
    const DisplayMode &mode = entry->displayMode();
    if (mode.digits > 1 || mode.mode == 4 || mode.mode == 5)
        return false;
    if (mode.mode == 2 || mode.mode == 3)
        return entry->id <= quint64(intMax);
    const qint64 value = qint64(entry->id);
    return value >= intMin && value <= intMax;
}

bool OutputRules::refusedName(const Item *item, const QString &name, const char *what)
{
    QString reason;
    if (name.isEmpty()) {
        reason = QStringLiteral("the %1 has no name").arg(QLatin1String(what));
    } else if (Problems::keywordLanguages(name).contains(languageName())
               || (m_output == Outputs::Cs
                   && std::find(std::begin(csHiddenKeywords), std::end(csHiddenKeywords), name)
                       != std::end(csHiddenKeywords))) {
        reason = name + QStringLiteral(" is a keyword of ") + languageName();
    } else if (m_output == Outputs::Cs && name == QLatin1String("value__")) {
        reason = QStringLiteral("value__ is reserved in C# enumerations");
    } else {
        return false;
    }
    add(item, failure() + reason);
    return true;
}

void OutputRules::members(const QList<std::pair<const Item *, QString>> &entries,
                          const QString &scope,
                          const char *what)
{
    // Most lists are short: a look along the names before is cheaper than a hash.
    const bool small = entries.size() <= 16;
    QHash<QString, const Item *> first;
    for (qsizetype i = 0; i < entries.size(); ++i) {
        const auto &[item, name] = entries.at(i);
        if (refusedName(item, name, what))
            continue;
        const Item *holder = nullptr;
        if (small) {
            for (qsizetype j = 0; j < i && !holder; ++j) {
                if (entries.at(j).second == name)
                    holder = entries.at(j).first;
            }
        } else {
            holder = first.value(name);
            if (!holder)
                first.insert(name, item);
        }
        if (!holder)
            continue;
        const QString member = scope + name;
        add(item, failure() + member + QStringLiteral(" is also written for ") + Problems::describe(holder));
        add(holder, failure() + member + QStringLiteral(" is also written for ") + Problems::describe(item));
    }
}

void OutputRules::mask32(const Item *bit, int digits)
{
    if (bit->id >= 32) {
        add(bit,
            QStringLiteral("writes the mask of bit %1 as %2: masks hold 32 bits")
                .arg(decimal(bit->id), CodeText::maskText(digits, bit->id)));
    }
}

QList<const Item *> OutputRules::validEntries(const Item *list, ItemType type)
{
    QList<const Item *> entries;
    if (!list)
        return entries;
    for (const Item *entry : list->children) {
        if (entry->isValid(type))
            entries.append(entry);
    }
    return entries;
}

QString OutputRules::decimal(quint64 value)
{
    QString text;
    CodeText::appendDecimal(text, value);
    return text;
}

QString OutputRules::enumText(const Item *entry, int count)
{
    return count ? decimal(entry->id) : entry->formatId();
}

} // namespace ZAT16
