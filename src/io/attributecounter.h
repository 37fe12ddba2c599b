#pragma once

#include <QtGlobal>

/// Follows the markup in a stream of characters, each narrowed to one byte (0x80 for every
/// character beyond ASCII), to count the attributes of each start tag. It keeps its place
/// between reads, so the stream may be cut anywhere.
class AttributeCounter
{
public:
    /// The attributes a start tag may have; the next one trips the counter.
    static constexpr int maximumAttributes = 256;

    /// Reads `size` characters; returns the index of the '=' that gave a start tag one
    /// attribute too many, or -1.
    qint64 feed(const char *data, qint64 size);

private:
    enum State : unsigned char {
        Text,
        Markup, ///< after '<'
        Bang, ///< after "<!"
        Keyword, ///< within a keyword such as "DOCTYPE", after its first characters
        StartTag,
        DoubleQuoted, ///< an attribute value
        SingleQuoted,
        EndTag, ///< also any other "<!" declaration: both end at '>'
        Comment,
        Cdata,
        ProcessingInstruction,
        Doctype,
        DoctypeMarkup, ///< after '<' in the document type declaration
        DoctypeDoubleQuoted, ///< a literal in the document type declaration
        DoctypeSingleQuoted,
    };
    void expect(const char *keyword, State then, State otherwise);
    void enter(State state);
    State closedState() const { return m_inDoctype ? Doctype : Text; }

    State m_state = Text;
    State m_then = Text; ///< where a keyword leads when it is complete
    State m_otherwise = Text; ///< where it leads when it is not
    bool m_inDoctype = false; ///< comments and processing instructions return to the declaration
    int m_run = 0; ///< closing characters seen in a row: the "--" of "-->", the "]]" of "]]>", the '?' of "?>"
    int m_depth = 0; ///< '[' nesting in the document type declaration
    int m_attributes = 0; ///< of the start tag being read
    int m_matched = 0; ///< characters of the keyword seen
    const char *m_keyword = nullptr;
};
