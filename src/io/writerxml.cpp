#include "writerxml.h"

#include "item.h"

#include <QIODevice>

namespace ZAT16 {

namespace {

// The text is handed to the device whenever this much has gathered.
constexpr qsizetype flushSize = 32 * 1024;

bool isXmlChar(char32_t c)
{
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD)
        || (c >= 0x10000 && c <= 0x10FFFF);
}

// The text with every character that XML cannot carry replaced by U+FFFD. Written as it is, such
// characters would be dropped, or a whole value, and leave a file that does not read back.
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

// ASCII characters that an attribute value cannot carry as they are: markup, quotes and the
// control characters (tab, line feed and carriage return become character references, the
// others cannot stand in XML at all).
struct AsciiTable {
    bool special[128] = {};
    constexpr AsciiTable()
    {
        for (int c = 0; c < 0x20; ++c)
            special[c] = true;
        special[int('<')] = special[int('>')] = special[int('&')] = special[int('"')] = true;
    }
};
constexpr AsciiTable ascii;

bool isHighSurrogate(char16_t c)
{
    return c >= 0xD800 && c <= 0xDBFF;
}

bool isLowSurrogate(char16_t c)
{
    return c >= 0xDC00 && c <= 0xDFFF;
}

// Characters that the escaping of a value drops (and reports) instead of writing.
bool isDropped(char16_t c)
{
    return (c < 0x20 && c != u'\t' && c != u'\n' && c != u'\r') || c == 0xFFFE || c == 0xFFFF;
}

} // namespace

bool WriterXml::canCarry(QStringView text)
{
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        const QChar c = text.at(i);
        if (c.isHighSurrogate() && i + 1 < n && text.at(i + 1).isLowSurrogate()) {
            ++i;
            continue;
        }
        if (c.isSurrogate() || !isXmlChar(c.unicode()))
            return false;
    }
    return true;
}

// Counts the public functions running, so that the outermost one hands the text to the device
// when it returns: writeItem() and writeIndent() also work on their own.
class WriterXml::Call
{
public:
    explicit Call(WriterXml *writer)
        : m_writer(writer)
    {
        ++m_writer->m_calls;
    }
    ~Call()
    {
        if (--m_writer->m_calls == 0)
            m_writer->flush();
    }
    Call(const Call &) = delete;
    Call &operator=(const Call &) = delete;

private:
    WriterXml *m_writer;
};

WriterXml::WriterXml() = default;

WriterXml::~WriterXml() = default;

bool WriterXml::writeDefinitions(const Item *root)
{
    m_text.reserve(flushSize + flushSize / 4);
    m_startTagOpen = false;
    m_textLost = false;
    m_failed = false;
    m_deviceFailed = false;
    m_handedOver = 0;
    m_top = root;
    depth = 1;
    {
        Call call(this);
        appendMarkup(QLatin1String("<?xml version=\""));
        appendText(u"1.0");
        appendMarkup(QLatin1String("\" encoding=\"UTF-8\"?>"));
        // An editor mode line on the declaration's line.
        appendMarkup(QLatin1String(" <!-- -*- nxml -*- -->"));
        if (!entry && !root->comment.isEmpty()) {
            closeStartTag();
            appendText(xmlText(root->comment));
        }
        writeItem(root);
        closeStartTag();
        appendText(u"\n");
    }
    m_text = QString();
    return !m_failed;
}

void WriterXml::writeIndent()
{
    Call call(this);
    if (depth == 0)
        return;
    closeStartTag();
    if (m_textLost)
        return;
    m_text += QLatin1Char('\n');
    m_text.resize(m_text.size() + qMax(0, 2 * depth - 2), QLatin1Char(' '));
}

bool WriterXml::writeItem(const Item *item)
{
    if (!spans)
        return writeItemText(item);
    // A child begins after the ">" that its parent's start tag still waits for.
    const qsizetype index = spans->size();
    spans->append({item, m_handedOver + m_text.size() + (m_startTagOpen ? 1 : 0), 0});
    const bool written = writeItemText(item);
    (*spans)[index].end = m_handedOver + m_text.size();
    return written;
}

bool WriterXml::writeItemText(const Item *item)
{
    Call call(this);
    // An entry on its own is an element whatever it holds: a comment line or a blank line could
    // not stand as a document.
    const bool asElement = entry && item == m_top;
    if (item->isComment() && !asElement) {
        writeIndent();
        closeStartTag();
        appendMarkup(QLatin1String("<!--"));
        appendText(commentText(item->comment));
        appendMarkup(QLatin1String("-->"));
        return true;
    }
    if (item->isNewline() && !asElement) {
        // The next element starts with its own line break, so this shows as one empty line.
        if (depth == 0)
            return false;
        closeStartTag();
        appendText(u"\n");
        return true;
    }

    QLatin1String element;
    switch (item->type) {
    case Root:
        element = QLatin1String("zat16");
        break;
    case Tag:
        element = QLatin1String("tag");
        break;
    case Enums:
        element = QLatin1String("enums");
        break;
    case Enum:
        element = QLatin1String("enum");
        break;
    case Bits:
        element = QLatin1String("bits");
        break;
    case Bit:
        element = QLatin1String("bit");
        break;
    default:
        return false;
    }

    writeIndent();
    closeStartTag();
    appendMarkup(QLatin1String("<"));
    appendText(element);
    m_startTagOpen = true;
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
    if (m_startTagOpen) {
        appendMarkup(QLatin1String("/>"));
        m_startTagOpen = false;
    } else {
        appendMarkup(QLatin1String("</"));
        appendText(element);
        appendMarkup(QLatin1String(">"));
    }
    flushIfLarge();
    return true;
}

void WriterXml::writeItemAttributes(const Item *item)
{
    Call call(this);
    if (!item->name.isEmpty())
        appendAttribute(QLatin1String("name"), item->name, false);
    if (item->hasId) {
        // Numbers are letters, digits and signs: nothing to escape.
        m_text += QLatin1Char(' ');
        appendText(QLatin1String("id"));
        m_text += QLatin1String("=\"");
        if (!m_textLost) {
            if (entry && item->type != Tag)
                appendNumber(m_text, item->id, entryDisplay(item));
            else
                item->appendId(m_text);
        }
        m_text += QLatin1Char('"');
    }
    if (item->type != Root && !item->comment.isEmpty())
        appendAttribute(QLatin1String("comment"), item->comment, true);
    if (item->secure)
        appendAttribute(QLatin1String("secure"), u"true", false);
    // A digit count without a mode is kept as well: it pads decimal numbers.
    const bool hasMode = item->display.mode >= 1 && item->display.mode <= 5;
    if (hasMode || (item->display.mode == 0 && item->display.digits != 0)) {
        static const char letters[] = "duxoy";
        QString display;
        if (item->display.digits != 0)
            display = QString::number(item->display.digits);
        if (hasMode)
            display += QLatin1Char(letters[item->display.mode - 1]);
        appendAttribute(QLatin1String("display"), display, false);
    }
}

// The display of an entry's number: the one in effect, but without the zeros of a padded decimal
// display that comes from above the entry. The entry is read on its own, and such zeros would
// then read as octal; every other notation reads the same anywhere.
DisplayMode WriterXml::entryDisplay(const Item *item) const
{
    DisplayMode display = item->displayMode();
    const bool fromAbove = item->displayModeWithin(m_top).mode == 0 && display.mode != 0;
    if (fromAbove && (display.mode == 1 || display.mode == 2))
        display.digits = 0;
    return display;
}

// A pending start tag is closed by whatever follows inside the element.
void WriterXml::closeStartTag()
{
    if (m_startTagOpen) {
        appendMarkup(QLatin1String(">"));
        m_startTagOpen = false;
    }
}

// Fixed markup: written whatever happened to a value before.
void WriterXml::appendMarkup(QLatin1String markup)
{
    m_text += markup;
}

// Names and texts: once a value held a lone surrogate, which UTF-8 cannot encode, none of them
// is written any more; the file is then reported as failed. (The text a QXmlStreamWriter leaves
// in that case, kept to the byte.)
void WriterXml::appendText(QStringView text)
{
    if (!m_textLost)
        m_text += text;
}

void WriterXml::appendText(QLatin1String text)
{
    if (!m_textLost)
        m_text += text;
}

// ` name="value"` with the markup characters and quotes of the value as entities, and tab, line
// feed and carriage return as character references. With `replaceInvalid` (comments) every
// character that XML cannot carry becomes U+FFFD first. Without it (names), other control
// characters and U+FFFE and U+FFFF are dropped, and a surrogate that does not pair up with its
// neighbour among the characters kept loses the whole value and every later text; both fail the
// file.
void WriterXml::appendAttribute(QLatin1String name, QStringView value, bool replaceInvalid)
{
    m_text += QLatin1Char(' ');
    appendText(name);
    m_text += QLatin1String("=\"");
    if (!m_textLost) {
        const qsizetype start = m_text.size();
        const char16_t *p = value.utf16();
        const char16_t *const end = p + value.size();
        const char16_t *run = p;
        while (p != end) {
            const char16_t c = *p;
            if (c < 0x80 ? !ascii.special[c] : (c < 0xD800 || (c >= 0xE000 && c < 0xFFFE))) {
                ++p;
                continue;
            }
            m_text.append(reinterpret_cast<const QChar *>(run), p - run);
            const char16_t *next = p + 1;
            switch (c) {
            case u'<':
                m_text += QLatin1String("&lt;");
                break;
            case u'>':
                m_text += QLatin1String("&gt;");
                break;
            case u'&':
                m_text += QLatin1String("&amp;");
                break;
            case u'"':
                m_text += QLatin1String("&quot;");
                break;
            case u'\t':
                m_text += QLatin1String("&#9;");
                break;
            case u'\n':
                m_text += QLatin1String("&#10;");
                break;
            case u'\r':
                m_text += QLatin1String("&#13;");
                break;
            default:
                if (replaceInvalid) {
                    if (isHighSurrogate(c) && next != end && isLowSurrogate(*next)) {
                        m_text.append(reinterpret_cast<const QChar *>(p), 2);
                        ++next;
                    } else {
                        m_text += QChar(QChar::ReplacementCharacter);
                    }
                } else if (isDropped(c)) {
                    m_failed = true;
                } else {
                    // A surrogate; dropped characters between the halves of a pair do not part them.
                    const char16_t *low = next;
                    while (low != end && isDropped(*low))
                        ++low;
                    if (!isHighSurrogate(c) || low == end || !isLowSurrogate(*low)) {
                        m_text.truncate(start);
                        m_textLost = true;
                        m_failed = true;
                        break;
                    }
                    if (low != next)
                        m_failed = true;
                    m_text += QChar(c);
                    m_text += QChar(*low);
                    next = low + 1;
                }
                break;
            }
            if (m_textLost)
                break;
            p = next;
            run = p;
        }
        if (!m_textLost)
            m_text.append(reinterpret_cast<const QChar *>(run), p - run);
    }
    m_text += QLatin1Char('"');
}

void WriterXml::flushIfLarge()
{
    if (m_text.size() >= flushSize)
        flush();
}

// Hands the text to the device as UTF-8. After a refused write nothing more is written.
void WriterXml::flush()
{
    if (!m_text.isEmpty() && !m_deviceFailed) {
        const QByteArray bytes = m_text.toUtf8();
        if (!device || device->write(bytes) != bytes.size()) {
            m_deviceFailed = true;
            m_failed = true;
        }
    }
    m_handedOver += m_text.size();
    m_text.resize(0);
}

} // namespace ZAT16
