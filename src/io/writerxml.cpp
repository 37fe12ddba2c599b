#include "writerxml.h"

#include "item.h"

#include <QXmlStreamWriter>

namespace ZAT16 {

namespace {

bool isXmlChar(char32_t c)
{
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD)
        || (c >= 0x10000 && c <= 0x10FFFF);
}

// The text with every character that XML cannot carry replaced by U+FFFD. The XML writer would
// otherwise drop such characters, or a whole value, and leave a file that does not read back.
QString xmlText(const QString &text)
{
    const qsizetype n = text.size();
    qsizetype i = 0;
    for (; i < n; ++i) {
        const char16_t u = text.at(i).unicode();
        if (u < 0x20 || u >= 0xD800)
            break;
    }
    if (i == n)
        return text;

    QString result = text.left(i);
    result.reserve(n);
    while (i < n) {
        const QChar c = text.at(i);
        if (c.isHighSurrogate() && i + 1 < n && text.at(i + 1).isLowSurrogate()) {
            result += c;
            result += text.at(i + 1);
            i += 2;
            continue;
        }
        result += isXmlChar(c.unicode()) && !c.isSurrogate() ? c : QChar(QChar::ReplacementCharacter);
        ++i;
    }
    return result;
}

// XML comments cannot hold "--" or end with "-": a blank goes between such dashes.
QString commentText(const QString &text)
{
    QString result = xmlText(text);
    if (!result.contains(QLatin1String("--")) && !result.endsWith(QLatin1Char('-')))
        return result;
    QString spaced;
    spaced.reserve(result.size() + 8);
    for (qsizetype i = 0; i < result.size(); ++i) {
        spaced += result.at(i);
        if (result.at(i) == QLatin1Char('-') && (i + 1 == result.size() || result.at(i + 1) == QLatin1Char('-')))
            spaced += QLatin1Char(' ');
    }
    return spaced;
}

} // namespace

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
        xml->writeDTD(xmlText(root->comment));
    writeItem(root);
    xml->writeCharacters(QStringLiteral("\n"));

    // The writer flags output it could not produce; the frame reports failed device writes.
    const bool ok = !xml->hasError();
    delete xml;
    xml = nullptr;
    return ok;
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
        xml->writeComment(commentText(item->comment));
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
        xml->writeAttribute(QStringLiteral("comment"), xmlText(item->comment));
    if (item->secure)
        xml->writeAttribute(QStringLiteral("secure"), QStringLiteral("true"));
    // A digit count without a mode is kept as well: it pads decimal numbers.
    const bool hasMode = item->display.mode >= 1 && item->display.mode <= 5;
    if (hasMode || (item->display.mode == 0 && item->display.digits != 0)) {
        static const char letters[] = "duxoy";
        QString display;
        if (item->display.digits != 0)
            display = QString::number(item->display.digits);
        if (hasMode)
            display += QLatin1Char(letters[item->display.mode - 1]);
        xml->writeAttribute(QStringLiteral("display"), display);
    }
}

} // namespace ZAT16
