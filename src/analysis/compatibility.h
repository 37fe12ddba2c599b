#pragma once

#include <QList>
#include <QString>

namespace ZAT16 {

class Item;

/// What a new version of a definitions file changes for the programs built from an old one.
///
/// Programs use the tags by name and code (the generated macros, enumerations and lookup
/// tables), and the enumeration values and bits of a tag by name and number. A change breaks
/// them when an old tag is gone, keeps its name under another code (a code whose data type
/// differs is reported as a change of type), or when a new name takes a code that an old tag had;
/// and when an enumeration value or bit of a tag that stayed is gone or has another number. New
/// tags, values and bits are additions. Tags are the top-level tags that have a name and a code,
/// values and bits those with a name and a number; where a name or code is repeated the first one
/// counts. Everything is looked up in hashes, so the comparison is linear in the size of the trees.
class CompatibilityReport
{
public:
    enum Kind {
        TagRemoved, ///< "Tag removed: Humidity (0x1003)"
        TagCodeChanged, ///< "Tag code changed: Pressure 0x1004 -> 0x1005"
        TagTypeChanged, ///< "Tag type changed: Speed 0x1006 (Integer) -> 0x3006 (String)"
        TagCodeReused, ///< "Tag code reused: 0x1003 was Humidity, is now Dewpoint"
        EnumValueChanged, ///< "Enum value changed: Mode.On 1 -> 2"
        EnumValueRemoved, ///< "Enum value removed: Mode.Standby (3)"
        BitChanged, ///< "Bit changed: Status.Ready 0 -> 1"
        BitRemoved, ///< "Bit removed: Status.Fault (4)"
        TagAdded, ///< "Tag added: Dewpoint (0x1007)"
        EnumValueAdded, ///< "Enum value added: Mode.Eco (4)"
        BitAdded, ///< "Bit added: Status.Low (5)"
    };

    struct Change {
        Kind kind = TagRemoved;
        QString text;

        bool breaks() const { return kind < TagAdded; }
    };

    /// Compares the trees; either root may be null (an empty file).
    CompatibilityReport(const Item *oldRoot, const Item *newRoot);

    /// The breaking changes: first those of the old tags in their order (with the changes of
    /// their values and bits right after each tag), then the codes reused by new tags.
    const QList<Change> &breaks() const { return m_breaks; }
    /// The additions, in the order of the new file.
    const QList<Change> &additions() const { return m_additions; }
    bool isBreaking() const { return !m_breaks.isEmpty(); }

    /// The report as text:
    ///
    ///     Old: <oldName>
    ///     New: <newName>
    ///
    ///     Breaking changes: <count, or "none">
    ///       <one change a line>
    ///
    ///     Additions: <count, or "none">
    ///       <one change a line>
    QString text(const QString &oldName, const QString &newName) const;

private:
    // The removed and renumbered values (or bits) of a tag that stayed.
    void compareValues(const Item *oldTag, const Item *newTag, bool bits);
    // The new values (or bits) of a tag that stayed.
    void addedValues(const Item *oldTag, const Item *newTag, bool bits);

    QList<Change> m_breaks;
    QList<Change> m_additions;
};

} // namespace ZAT16
