#include "xmloutput.h"

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

bool XmlOutput::canCarry(QStringView text)
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

// The text with every character that XML cannot carry replaced by U+FFFD. Written as it is, such
// characters would be dropped, or a whole value, and leave a file that does not read back.
QString XmlOutput::validText(const QString &text)
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
QString XmlOutput::commentText(const QString &text)
{
    QString result = validText(text);
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

void XmlOutput::start()
{
    m_text.reserve(flushSize + flushSize / 4);
    m_textLost = false;
    m_failed = false;
    m_deviceFailed = false;
    m_handedOver = 0;
}

void XmlOutput::release()
{
    m_text = QString();
}

void XmlOutput::appendLineBreak(int blanks)
{
    if (m_textLost)
        return;
    m_text += QLatin1Char('\n');
    m_text.resize(m_text.size() + blanks, QLatin1Char(' '));
}

// ` name="value"` with the markup characters and quotes of the value as entities, and tab, line
// feed and carriage return as character references. With `replaceInvalid` (comments) every
// character that XML cannot carry becomes U+FFFD first. Without it (names), other control
// characters and U+FFFE and U+FFFF are dropped, and a surrogate that does not pair up with its
// neighbour among the characters kept loses the whole value and every later text; both fail the
// file.
void XmlOutput::appendAttribute(QLatin1String name, QStringView value, bool replaceInvalid)
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

void XmlOutput::flushIfLarge(QIODevice *device)
{
    if (m_text.size() >= flushSize)
        flush(device);
}

// Hands the text to the device as UTF-8. After a refused write nothing more is written.
void XmlOutput::flush(QIODevice *device)
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
