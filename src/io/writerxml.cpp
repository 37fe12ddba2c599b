#include "writerxml.h"

#include "item.h"

#include <QXmlStreamWriter>

namespace ZAT16 {

WriterXml::WriterXml() = default;

WriterXml::~WriterXml()
{
    delete xml;
}

bool WriterXml::writeDefinitions(const Item *root)
{
    xml = new QXmlStreamWriter(device);
    xml->setAutoFormatting(false);
    depth = 1;

    xml->writeStartDocument(QStringLiteral("1.0"));
    // An editor mode line on the declaration's line; it bypasses the XML writer.
    device->write(" <!-- -*- nxml -*- -->");
    if (!root->comment.isEmpty())
        xml->writeDTD(root->comment);
    writeItem(root);
    xml->writeCharacters(QStringLiteral("\n"));

    delete xml;
    xml = nullptr;
    return true;
}

void WriterXml::writeIndent()
{
    if (depth != 0)
        xml->writeCharacters(QLatin1Char('\n') + QString(2 * depth - 2, QLatin1Char(' ')));
}

bool WriterXml::writeItem(const Item *item)
{
    if (item->isComment()) {
        writeIndent();
        xml->writeComment(item->comment);
        return true;
    }
    if (item->isNewline()) {
        // The next element starts with its own line break, so this shows as one empty line.
        if (depth == 0)
            return false;
        xml->writeCharacters(QStringLiteral("\n"));
        return true;
    }

    QString element;
    switch (item->type) {
    case Root:
        element = QStringLiteral("zat16");
        break;
    case Tag:
        element = QStringLiteral("tag");
        break;
    case Enums:
        element = QStringLiteral("enums");
        break;
    case Enum:
        element = QStringLiteral("enum");
        break;
    case Bits:
        element = QStringLiteral("bits");
        break;
    case Bit:
        element = QStringLiteral("bit");
        break;
    default:
        return false;
    }

    writeIndent();
    xml->writeStartElement(element);
    writeItemAttributes(item);

    const int saved = depth;
    if (depth != 0)
        ++depth;
    bool wroteChild = false;
    for (const Item *child : item->children) {
        if (writeItem(child))
            wroteChild = true;
    }
    depth = saved;

    // Without written children the element is closed in the short form on the same line.
    if (wroteChild)
        writeIndent();
    xml->writeEndElement();
    return true;
}

void WriterXml::writeItemAttributes(const Item *item)
{
    if (!item->name.isEmpty())
        xml->writeAttribute(QStringLiteral("name"), item->name);
    if (item->hasId)
        xml->writeAttribute(QStringLiteral("id"), item->formatId());
    if (item->type != Root && !item->comment.isEmpty())
        xml->writeAttribute(QStringLiteral("comment"), item->comment);
    if (item->secure)
        xml->writeAttribute(QStringLiteral("secure"), QStringLiteral("true"));
    if (item->display.mode >= 1 && item->display.mode <= 5) {
        static const char letters[] = "duxoy";
        QString display;
        if (item->display.digits != 0)
            display = QString::number(item->display.digits);
        display += QLatin1Char(letters[item->display.mode - 1]);
        xml->writeAttribute(QStringLiteral("display"), display);
    }
}

} // namespace ZAT16
