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
        WriterXml writer;
        writer.entry = true;
        mime->setData(xmlMimeType(), writer.encode(item));
    }
    return mime;
}

bool EditorClipboard::hasItem(const QMimeData *data)
{
    return !data->data(xmlMimeType()).isEmpty();
}

Item *EditorClipboard::decodeItem(const QMimeData *data)
{
    const QByteArray xml = data->data(xmlMimeType());
    if (xml.isEmpty())
        return nullptr;
    // Parse errors are not reported: only whether an item came out counts.
    Parser parser;
    parser.entry = true;
    parser.parse(xml);
    return parser.takeRoot();
}

} // namespace ZAT16
