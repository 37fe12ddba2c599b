#include "outputrules.h"

#include "codetext.h"
#include "problems.h"

#include <QHash>

#include <algorithm>

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
    QHash<QString, const Item *> first;
    for (const auto &[item, name] : entries) {
        if (refusedName(item, name, what))
            continue;
        const Item *holder = first.value(name);
        if (!holder) {
            first.insert(name, item);
            continue;
        }
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
