#include "editorclipboard.h"

#include "item.h"
#include "parser.h"
#include "writerxml.h"

#include <QMimeData>

namespace ZAT16 {

QString EditorClipboard::textMimeType()
{
    return QStringLiteral("text/plain");
}

QString EditorClipboard::xmlMimeType()
{
    return QStringLiteral("text/xml");
}

QMimeData *EditorClipboard::encode(const Item *item, const QString &text)
{
    auto *mime = new QMimeData;
    mime->setText(text);
    if (item) {
        // The item as the one element of a definitions document, its comment an attribute: a
        // comment line or a blank line too, which could not stand as a document otherwise.
        WriterXml writer;
        writer.entry = true;
        mime->setData(xmlMimeType(), writer.encode(item));
    }
    return mime;
}

QByteArray EditorClipboard::itemXml(const QMimeData *data)
{
    return data->data(xmlMimeType());
}

Item *EditorClipboard::decodeItem(const QByteArray &xml)
{
    // Parse errors are not reported: only whether an item came out counts.
    Parser parser;
    parser.entry = true;
    parser.parse(xml);
    return parser.takeRoot();
}

} // namespace ZAT16
