#pragma once

#include "item.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringView>

namespace ZAT16 {

class Parser;

/// Reads the attributes of the element at which a Parser stands into an ItemData: the name,
/// checked as an identifier; the comment; the display mode; the id, in C notation and in the
/// notations the writer produces, read in the light of the display in effect; and the secure
/// flag. An attribute the tree has no place for is named in a warning, since a save drops it.
///
/// Names and comments are shared within one parse: equal texts are one QString, and a shared name
/// is checked as an identifier once.
class AttributeReader
{
public:
    explicit AttributeReader(Parser &parser);

    /// Reads into `data`, whose type is set already. `open` are the elements being read around
    /// it, outermost first, for the display mode in effect. False after raising an error on the
    /// parser (an invalid name, "Invalid ID", "Invalid boolean value").
    bool read(ItemData *data, const QList<const Item *> &open);
    /// The value of the attribute: "true" and "TRUE" give true, "false" and "FALSE" false; any
    /// other value raises "Invalid boolean value" and gives false.
    bool readBool(const QString &attributeName);
    /// One QString per distinct text in this parse.
    QString sharedText(QStringView text);
    /// Forgets the texts shared so far.
    void clear();

private:
    // A text shared by the items of this parse, and whether it passed as a name already.
    struct SharedText {
        QString text;
        mutable bool identifier = false;
    };
    const SharedText &sharedEntry(QStringView text);

    Parser &m_parser;
    /// The texts shared so far in this parse; each key views the text of its own value.
    QHash<QStringView, SharedText> m_texts;
};

} // namespace ZAT16
