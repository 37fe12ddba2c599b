#pragma once

#include <QByteArray>

/// Writes deterministic synthetic definitions files in the canonical saved layout, byte for byte
/// what WriterXml writes for the same tree, so that loading and saving one gives it back.
///
/// The mix follows real product files: every tag has a comment; about a third carry an
/// enumeration list of 5 to 50 values and about a fifth a bit list of 1 to 32 bits; a quarter of
/// the lists have a display mode ("x", "d" or "u", without digit count); requests mostly come
/// with their answer right after them; the tags stand in sections separated by a blank line and
/// a comment, and long lists have blank lines and comments of their own. Names are unique;
/// codes count up within each data type and repeat only once a type's 4,096 numbers are used
/// up, which a file of 100,000 tags cannot avoid.
class Synthesizer
{
public:
    /// The definitions file with exactly `tags` tags; the same bytes for the same count.
    static QByteArray definitions(int tags);

private:
    explicit Synthesizer(int tags);

    // splitmix64: the same sequence on every platform and library.
    quint64 next();
    /// Uniform in [low, high].
    int range(int low, int high);
    /// True with probability `percent` / 100.
    bool chance(int percent);

    /// A run of 4 to 16 tags; all but the first section open with a blank line and a comment.
    void writeSection(int first);
    void writeEnums();
    void writeBits();
    void writeTagComment(const char *noun, const char *quantity, int instance);
    /// `text` with the markup characters and quotes as the XML writer escapes them.
    void appendEscaped(const char *text);

    QByteArray m_out;
    quint64 m_state;
    int m_tags;
    int m_written = 0;
    quint32 m_numbers[256] = {}; ///< next number of each data type (extended types by high byte)
    quint32 m_requestNumber = 0; ///< shared by requests and answers, so that pairs match
};
