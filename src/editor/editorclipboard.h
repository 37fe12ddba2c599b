#pragma once

#include <QByteArray>
#include <QString>

class QMimeData;

namespace ZAT16 {

class Item;

/// What the editor puts on the clipboard and reads back from it. An entry travels as text
/// (its name and code, for other programs and for drops onto a cell) and as XML: the item as
/// the one element of a definitions document, its comment an attribute, so that a comment line
/// or a blank line can stand as a document too.
class EditorClipboard
{
public:
    static QString textMimeType();
    static QString xmlMimeType();

    /// New mime data with `text` and, when `item` is not null, the item's XML.
    static QMimeData *encode(const Item *item, const QString &text);
    /// The entry's XML that `data` carries, empty when there is none; when there is, it decides a
    /// paste, whether it parses or not.
    static QByteArray itemXml(const QMimeData *data);
    /// The item that `xml` holds, or null when it does not parse; the caller owns the result.
    static Item *decodeItem(const QByteArray &xml);
};

} // namespace ZAT16
