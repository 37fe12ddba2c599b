#pragma once

#include <QString>
#include <QStringView>

namespace ZAT16 {

/// The one table of the data types of tag codes (see DataType): everything the system shows of a
/// type, side by side. The places that show a type speak different vocabularies on purpose, and
/// each keeps its own; type 9, for one, is "NetworkAddress" in the compatibility report,
/// "IPAddress" in the generated code, "Network-Address" in the tree's tooltip and "Network address"
/// in the tag selector. The generators' fixed ZAT16DT_ definitions are part of their output text
/// and stay there.
///
/// The texts that are translated are kept as source texts with their translation context; the
/// place that shows one translates it in that context (tr() of the class named in the context).
class DataTypes
{
public:
    struct Entry {
        /// The data type: a DataType value, or 8, the escape nibble of the extended form, whose
        /// only text is its typeName.
        int value;
        /// Name of the DataType enumerator; null for 8. Used by the compatibility report.
        QStringView enumName;
        /// typeName() of a tag code whose top nibble is this value (the extended codes all have
        /// the nibble 8, "Int64"); null for the extended types. Written by the generators.
        QStringView typeName;
        /// The tree's tooltip of a tag (EditorModel), translated in the context "ZAT16::EditorModel";
        /// null where the tree shows none.
        const char *tooltip;
        /// The tree's icon of a tag (EditorModel) and the tag selector's (EditorTagModel); null where
        /// there is none.
        const char *icon;
        /// Row in the tag selector (EditorTagModel), -1 for none. The extended types sit between
        /// BitArray and the network address.
        int selectorRow;
        /// The tag selector's number before the name ("9 - ").
        const char *selectorPrefix;
        /// The tag selector's name, translated in the context "ZAT16::EditorTagModel".
        const char *selectorName;
    };

    /// The entry of a data type, or null when the value has none (10, 11, the extended types past
    /// ExtSize, anything negative).
    static const Entry *find(int type);
    /// The entry shown in row `row` of the tag selector, or null.
    static const Entry *atSelectorRow(int row);

    /// Name of the DataType enumerator, or a null string.
    static QString enumName(int type);
    /// Display name of a top nibble of a tag code (0..15), or a null string (10, 11).
    static QString typeName(int nibble);
    /// Source text of the tree's tooltip of a tag, or null; see Entry::tooltip.
    static const char *tooltip(int type);
    /// Resource path of the icon of a tag, or null.
    static const char *iconPath(int type);
};

} // namespace ZAT16
