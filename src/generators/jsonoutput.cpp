#include "jsonoutput.h"

namespace ZAT16 {

void JsonOutput::lineBreak()
{
    m_text += QLatin1Char('\n');
    m_text += QString(2 * m_depth, QLatin1Char(' '));
}

// Members and elements each start a line; a value after a key stays on the key's line.
void JsonOutput::beforeValue()
{
    if (m_afterKey) {
        m_afterKey = false;
        return;
    }
    if (m_depth == 0)
        return;
    if (!m_first)
        m_text += QLatin1Char(',');
    m_first = false;
    lineBreak();
}

void JsonOutput::beginObject()
{
    beforeValue();
    m_text += QLatin1Char('{');
    ++m_depth;
    m_first = true;
}

void JsonOutput::endObject()
{
    --m_depth;
    if (!m_first)
        lineBreak();
    m_text += QLatin1Char('}');
    m_first = false;
    if (m_depth == 0)
        m_text += QLatin1Char('\n');
}

void JsonOutput::beginArray()
{
    beforeValue();
    m_text += QLatin1Char('[');
    ++m_depth;
    m_first = true;
}

void JsonOutput::endArray()
{
    --m_depth;
    if (!m_first)
        lineBreak();
    m_text += QLatin1Char(']');
    m_first = false;
    if (m_depth == 0)
        m_text += QLatin1Char('\n');
}

void JsonOutput::key(QLatin1String name)
{
    key(QStringView(QString(name)));
}

void JsonOutput::key(QStringView name)
{
    beforeValue();
    appendString(m_text, name);
    m_text += QLatin1String(": ");
    m_afterKey = true;
}

void JsonOutput::value(QStringView text)
{
    beforeValue();
    appendString(m_text, text);
}

void JsonOutput::valueSigned(qint64 number)
{
    beforeValue();
    m_text += QString::number(number);
}

void JsonOutput::valueUnsigned(quint64 number)
{
    beforeValue();
    m_text += QString::number(number);
}

void JsonOutput::value(bool flag)
{
    beforeValue();
    m_text += flag ? QLatin1String("true") : QLatin1String("false");
}

void JsonOutput::valueNull()
{
    beforeValue();
    m_text += QLatin1String("null");
}

void JsonOutput::valueRaw(QStringView json)
{
    beforeValue();
    QStringView rest = json;
    while (rest.endsWith(QLatin1Char('\n')))
        rest.chop(1);
    const QString indent = QLatin1Char('\n') + QString(2 * m_depth, QLatin1Char(' '));
    // Line breaks inside strings are escaped, so every line break of the text is layout.
    for (qsizetype at = rest.indexOf(QLatin1Char('\n')); at >= 0; at = rest.indexOf(QLatin1Char('\n'))) {
        m_text += rest.left(at);
        m_text += indent;
        rest = rest.mid(at + 1);
    }
    m_text += rest;
}

void JsonOutput::appendString(QString &out, QStringView text)
{
    static const char hex[] = "0123456789abcdef";
    out += QLatin1Char('"');
    const qsizetype size = text.size();
    for (qsizetype i = 0; i < size; ++i) {
        const QChar c = text[i];
        const char16_t u = c.unicode();
        bool escape = u < 0x20;
        if (c.isHighSurrogate())
            escape = i + 1 >= size || !text[i + 1].isLowSurrogate();
        else if (c.isLowSurrogate())
            escape = i == 0 || !text[i - 1].isHighSurrogate();
        if (u == '"' || u == '\\') {
            out += QLatin1Char('\\');
            out += c;
        } else if (u == '\n') {
            out += QLatin1String("\\n");
        } else if (u == '\t') {
            out += QLatin1String("\\t");
        } else if (u == '\r') {
            out += QLatin1String("\\r");
        } else if (escape) {
            out += QLatin1String("\\u");
            for (int shift = 12; shift >= 0; shift -= 4)
                out += QLatin1Char(hex[(u >> shift) & 0xF]);
        } else {
            out += c;
        }
    }
    out += QLatin1Char('"');
}

} // namespace ZAT16
