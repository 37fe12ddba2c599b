#include "attributecounter.h"

#include <cstring>

namespace {

// The characters that end a run of characters a state of the attribute counter passes over.
struct Stops {
    bool stop[256] = {};
    constexpr explicit Stops(const char *chars)
    {
        for (; *chars; ++chars)
            stop[static_cast<unsigned char>(*chars)] = true;
    }
};

// In a start tag: the '=' of an attribute, the quotes around its value, the '>' that ends the tag
// and a '<', which the reader refuses there: it is taken as the start of another tag, so that a
// tag that only seemed open does not go on counting. The same '<' ends a value.
constexpr Stops startTagStops("=\"'><");
constexpr Stops endTagStops("><");
// In the document type declaration: the quotes of its literals, the brackets of its internal
// subset, its end, and the '<' of a comment or processing instruction in the subset. The literals
// themselves may hold any character but their quote.
constexpr Stops doctypeStops("\"'[]><");

// The end of an attribute value: its closing quote, or a '<' (see above), or `end`. Values are
// most of a definitions file; two vectorised searches pass over them faster than a table.
const char *valueEnd(const char *p, const char *end, char quote)
{
    const char *closing = static_cast<const char *>(std::memchr(p, quote, size_t(end - p)));
    const char *limit = closing ? closing : end;
    const char *less = static_cast<const char *>(std::memchr(p, '<', size_t(limit - p)));
    return less ? less : limit;
}

const char *skipTo(const char *p, const char *end, const Stops &stops)
{
    while (p < end && !stops.stop[static_cast<unsigned char>(*p)])
        ++p;
    return p;
}

} // namespace

void AttributeCounter::expect(const char *keyword, State then, State otherwise)
{
    m_state = Keyword;
    m_keyword = keyword;
    m_matched = 0;
    m_then = then;
    m_otherwise = otherwise;
}

void AttributeCounter::enter(State state)
{
    if (state == Doctype && !m_inDoctype) {
        m_inDoctype = true;
        m_depth = 0;
    }
    m_state = state;
    m_run = 0;
}

qint64 AttributeCounter::feed(const char *data, qint64 size)
{
    const char *p = data;
    const char *const end = data + size;
    while (p < end) {
        switch (m_state) {
        case Text:
            p = static_cast<const char *>(std::memchr(p, '<', size_t(end - p)));
            if (!p)
                return -1;
            ++p;
            m_state = Markup;
            break;
        case Markup:
            if (*p == '!') {
                ++p;
                m_state = Bang;
            } else if (*p == '?') {
                ++p;
                enter(ProcessingInstruction);
            } else if (*p == '/') {
                ++p;
                m_state = EndTag;
            } else {
                // The name is read as part of the tag.
                m_state = StartTag;
                m_attributes = 0;
            }
            break;
        case Bang:
            // The third character tells "<!--", "<![CDATA[" and "<!DOCTYPE" apart; any other
            // declaration ends at '>', as an end tag does.
            if (*p == '-')
                expect("--", Comment, EndTag);
            else if (*p == '[')
                expect("[CDATA[", Cdata, EndTag);
            else if (*p == 'D')
                expect("DOCTYPE", Doctype, EndTag);
            else
                m_state = EndTag;
            break;
        case Keyword:
            if (*p != m_keyword[m_matched]) {
                m_state = m_otherwise;
                break;
            }
            ++p;
            if (!m_keyword[++m_matched])
                enter(m_then);
            break;
        case StartTag:
            // Most of a definitions file is start tags: their attributes and values are read in
            // this loop rather than one state change at a time.
            for (;;) {
                p = skipTo(p, end, startTagStops);
                if (p == end)
                    return -1;
                const char c = *p++;
                if (c == '=') {
                    if (++m_attributes > maximumAttributes)
                        return p - 1 - data;
                    continue;
                }
                if (c == '"' || c == '\'') {
                    p = valueEnd(p, end, c);
                    if (p == end) {
                        m_state = c == '"' ? DoubleQuoted : SingleQuoted;
                        return -1;
                    }
                    if (*p++ != '<')
                        continue;
                }
                m_state = c == '>' ? Text : Markup;
                break;
            }
            break;
        case DoubleQuoted:
        case SingleQuoted:
            p = valueEnd(p, end, m_state == DoubleQuoted ? '"' : '\'');
            if (p == end)
                return -1;
            m_state = *p++ == '<' ? Markup : StartTag;
            break;
        case EndTag:
            p = skipTo(p, end, endTagStops);
            if (p == end)
                return -1;
            m_state = *p++ == '<' ? Markup : Text;
            break;
        case Comment:
        case Cdata:
        case ProcessingInstruction: {
            // They end at the first "-->", "]]>" or "?>" after their start: "<!-->" does not end
            // a comment.
            const char mark = m_state == Comment ? '-' : m_state == Cdata ? ']' : '?';
            const int marks = m_state == ProcessingInstruction ? 1 : 2;
            if (m_run == 0) {
                p = static_cast<const char *>(std::memchr(p, mark, size_t(end - p)));
                if (!p)
                    return -1;
            }
            const char c = *p++;
            if (c == mark)
                m_run = qMin(m_run + 1, marks);
            else if (c == '>' && m_run == marks)
                m_state = closedState();
            else
                m_run = 0;
            break;
        }
        case Doctype:
            p = skipTo(p, end, doctypeStops);
            if (p == end)
                return -1;
            switch (*p++) {
            case '"':
                m_state = DoctypeDoubleQuoted;
                break;
            case '\'':
                m_state = DoctypeSingleQuoted;
                break;
            case '[':
                ++m_depth;
                break;
            case ']':
                m_depth = qMax(m_depth - 1, 0);
                break;
            case '>':
                if (m_depth == 0) {
                    m_inDoctype = false;
                    m_state = Text;
                }
                break;
            default:
                m_state = DoctypeMarkup;
                break;
            }
            break;
        case DoctypeMarkup:
            // Comments and processing instructions may hold quotes and brackets; the other
            // declarations are read as part of the document type declaration.
            if (*p == '?') {
                ++p;
                enter(ProcessingInstruction);
            } else if (*p == '!') {
                ++p;
                expect("--", Comment, Doctype);
            } else {
                m_state = Doctype;
            }
            break;
        case DoctypeDoubleQuoted:
        case DoctypeSingleQuoted:
            p = static_cast<const char *>(std::memchr(p, m_state == DoctypeDoubleQuoted ? '"' : '\'', size_t(end - p)));
            if (!p)
                return -1;
            ++p;
            m_state = Doctype;
            break;
        }
    }
    return -1;
}
