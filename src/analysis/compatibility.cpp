#include "compatibility.h"

#include "datatypes.h"
#include "item.h"

#include <QHash>

namespace ZAT16 {

namespace {

// The top-level tags with a name and a code, found by the keys on which siblings collide; the
// first of a repeated name or code counts.
struct TagIndex {
    QList<const Item *> tags; ///< first of each name, in file order
    QHash<QString, const Item *> byName;
    QHash<quint64, const Item *> byCode;

    explicit TagIndex(const Item *root)
    {
        if (!root)
            return;
        for (const Item *item : root->children) {
            if (item->type != Tag || !item->hasNameKey() || !item->hasIdKey())
                continue;
            if (!byCode.contains(item->id))
                byCode.insert(item->id, item);
            if (byName.contains(item->name))
                continue;
            byName.insert(item->name, item);
            tags.append(item);
        }
    }
};

// The enumeration values (or bits) of a tag with a name and a number, over all its lists.
struct ValueIndex {
    QList<const Item *> values; ///< first of each name, in file order
    QHash<QString, const Item *> byName;

    ValueIndex(const Item *tag, bool bits)
    {
        const ItemType listType = bits ? Bits : Enums;
        const ItemType valueType = bits ? Bit : Enum;
        for (const Item *list : tag->children) {
            if (list->type != listType)
                continue;
            for (const Item *value : list->children) {
                if (value->type != valueType || !value->hasNameKey() || !value->hasIdKey()
                    || byName.contains(value->name))
                    continue;
                byName.insert(value->name, value);
                values.append(value);
            }
        }
    }
};

QString typeText(unsigned int code)
{
    const int type = dataType(code);
    const QString name = DataTypes::enumName(type);
    if (!name.isNull())
        return name;
    // The data types without a name: 8, 10 and 11, and the extended ones past ExtSize.
    if (type < 16)
        return QStringLiteral("type %1").arg(type);
    return QStringLiteral("type 0x") + QString::number(type, 16).toUpper();
}

QString section(const QString &title, const QList<CompatibilityReport::Change> &changes)
{
    QString text = title + QStringLiteral(": ")
        + (changes.isEmpty() ? QStringLiteral("none") : QString::number(changes.size())) + QLatin1Char('\n');
    for (const CompatibilityReport::Change &change : changes)
        text += QStringLiteral("  ") + change.text + QLatin1Char('\n');
    return text;
}

} // namespace

CompatibilityReport::CompatibilityReport(const Item *oldRoot, const Item *newRoot)
{
    const TagIndex before(oldRoot);
    const TagIndex after(newRoot);

    for (const Item *tag : before.tags) {
        const Item *now = after.byName.value(tag->name);
        if (!now) {
            m_breaks.append({ TagRemoved, QStringLiteral("Tag removed: %1 (%2)").arg(tag->name, tag->formatId()) });
            continue;
        }
        if (now->id != tag->id) {
            if (dataType(unsigned(tag->id)) != dataType(unsigned(now->id))) {
                m_breaks.append({ TagTypeChanged,
                                  QStringLiteral("Tag type changed: %1 %2 (%3) -> %4 (%5)")
                                      .arg(tag->name,
                                           tag->formatId(),
                                           typeText(unsigned(tag->id)),
                                           now->formatId(),
                                           typeText(unsigned(now->id))) });
            } else {
                m_breaks.append({ TagCodeChanged,
                                  QStringLiteral("Tag code changed: %1 %2 -> %3")
                                      .arg(tag->name, tag->formatId(), now->formatId()) });
            }
        }
        compareValues(tag, now, false);
        compareValues(tag, now, true);
    }

    for (const Item *tag : after.tags) {
        const Item *was = before.byName.value(tag->name);
        if (was) {
            addedValues(was, tag, false);
            addedValues(was, tag, true);
            continue;
        }
        if (const Item *holder = before.byCode.value(tag->id)) {
            m_breaks.append({ TagCodeReused,
                              QStringLiteral("Tag code reused: %1 was %2, is now %3")
                                  .arg(tag->formatId(), holder->name, tag->name) });
        } else {
            m_additions.append({ TagAdded, QStringLiteral("Tag added: %1 (%2)").arg(tag->name, tag->formatId()) });
        }
    }
}

void CompatibilityReport::compareValues(const Item *oldTag, const Item *newTag, bool bits)
{
    const ValueIndex before(oldTag, bits);
    const ValueIndex after(newTag, bits);
    for (const Item *value : before.values) {
        const QString name = oldTag->name + QLatin1Char('.') + value->name;
        const Item *now = after.byName.value(value->name);
        if (!now) {
            m_breaks.append(
                { bits ? BitRemoved : EnumValueRemoved,
                  (bits ? QStringLiteral("Bit removed: %1 (%2)") : QStringLiteral("Enum value removed: %1 (%2)"))
                      .arg(name, value->formatId()) });
        } else if (now->id != value->id) {
            m_breaks.append({ bits ? BitChanged : EnumValueChanged,
                              (bits ? QStringLiteral("Bit changed: %1 %2 -> %3")
                                    : QStringLiteral("Enum value changed: %1 %2 -> %3"))
                                  .arg(name, value->formatId(), now->formatId()) });
        }
    }
}

void CompatibilityReport::addedValues(const Item *oldTag, const Item *newTag, bool bits)
{
    const ValueIndex before(oldTag, bits);
    const ValueIndex after(newTag, bits);
    for (const Item *value : after.values) {
        if (before.byName.contains(value->name))
            continue;
        const QString name = newTag->name + QLatin1Char('.') + value->name;
        m_additions.append({ bits ? BitAdded : EnumValueAdded,
                             (bits ? QStringLiteral("Bit added: %1 (%2)") : QStringLiteral("Enum value added: %1 (%2)"))
                                 .arg(name, value->formatId()) });
    }
}

QString CompatibilityReport::text(const QString &oldName, const QString &newName) const
{
    return QStringLiteral("Old: ") + oldName + QStringLiteral("\nNew: ") + newName + QStringLiteral("\n\n")
        + section(QStringLiteral("Breaking changes"), m_breaks) + QLatin1Char('\n')
        + section(QStringLiteral("Additions"), m_additions);
}

} // namespace ZAT16
