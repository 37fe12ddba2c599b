#include "entityguard.h"

#include <QtEndian>

#include <cstring>
#include <vector>

using Refusal = EntityGuard::Refusal;

namespace {

// The declarations refused, as the reader may meet them: in an ASCII-compatible encoding, and in
// UTF-16 and UTF-32 with either byte order.
struct Declaration {
    const char *text;
    Refusal refusal;
};

const Declaration declarations[] = {
    { "<!ENTITY", Refusal::EntityDeclaration },
    { "<!ATTLIST", Refusal::AttributeListDeclaration },
};
// The length of the longest declaration keyword, in characters.
constexpr int longestDeclaration = 9;
constexpr int longest = EntityGuard::longestPattern;
static_assert(longest == 4 * longestDeclaration, "a UTF-32 keyword must fit the tail");

struct Pattern {
    QByteArray bytes;
    int lt; ///< the offset of the '<' byte
    Refusal refusal;
};

const std::vector<Pattern> &patterns()
{
    static const std::vector<Pattern> all = [] {
        std::vector<Pattern> list;
        for (const Declaration &declaration : declarations) {
            const struct {
                int unitSize;
                bool bigEndian;
            } encodings[] = { { 1, false }, { 2, false }, { 2, true }, { 4, false }, { 4, true } };
            for (const auto &encoding : encodings) {
                QByteArray bytes;
                for (const char *c = declaration.text; *c; ++c) {
                    QByteArray unit(encoding.unitSize, '\0');
                    unit[encoding.bigEndian ? encoding.unitSize - 1 : 0] = *c;
                    bytes += unit;
                }
                list.push_back({ bytes, encoding.bigEndian ? encoding.unitSize - 1 : 0, declaration.refusal });
            }
        }
        return list;
    }();
    return all;
}

// How the reader tells the encoding from the first four bytes: a byte order mark, or the zero
// bytes around the '<' it expects first. Anything else is 8-bit.
struct Units {
    int size = 1;
    bool bigEndian = false;
};

Units unitsOf(const char *start, qsizetype size)
{
    const auto at = [&](int i) { return i < size ? start[i] : char(-1); };
    const auto startsWith
        = [&](const char *bytes, int n) { return size >= n && std::memcmp(start, bytes, size_t(n)) == 0; };
    if (startsWith("\xFF\xFE\0\0", 4) || (at(0) == '<' && at(1) == 0 && at(2) == 0 && at(3) == 0))
        return { 4, false };
    if (startsWith("\0\0\xFE\xFF", 4) || (at(0) == 0 && at(1) == 0 && at(2) == 0 && at(3) == '<'))
        return { 4, true };
    if (startsWith("\xFF\xFE", 2) || (at(0) == '<' && at(1) == 0))
        return { 2, false };
    if (startsWith("\xFE\xFF", 2) || (at(0) == 0 && at(1) == '<'))
        return { 2, true };
    return {};
}

// No character beyond ASCII is markup; they all stand as 0x80 for the counter.
char narrowed(uint unicode)
{
    return unicode < 0x80 ? char(unicode) : char(0x80);
}

template<typename Unit, bool bigEndian>
void narrowUnits(const char *data, qint64 units, char *narrow)
{
    for (qint64 i = 0; i < units; ++i) {
        const char *unit = data + i * qint64(sizeof(Unit));
        narrow[i] = narrowed(bigEndian ? qFromBigEndian<Unit>(unit) : qFromLittleEndian<Unit>(unit));
    }
}

void narrowUnits(const char *data, qint64 units, char *narrow, int unitSize, bool bigEndian)
{
    if (unitSize == 2)
        bigEndian ? narrowUnits<quint16, true>(data, units, narrow) : narrowUnits<quint16, false>(data, units, narrow);
    else
        bigEndian ? narrowUnits<quint32, true>(data, units, narrow) : narrowUnits<quint32, false>(data, units, narrow);
}

} // namespace

EntityGuard::EntityGuard(QIODevice *source, QObject *parent)
    : QIODevice(parent)
    , m_source(source)
{
    // The reader's reads go straight to the source: a buffer here would only copy the bytes once
    // more.
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

QString EntityGuard::refusalMessage() const
{
    switch (m_refusal) {
    case Refusal::None:
        break;
    case Refusal::EntityDeclaration:
        return QStringLiteral("Entity declarations are not supported");
    case Refusal::AttributeListDeclaration:
        return QStringLiteral("Attribute-list declarations are not supported");
    case Refusal::TooManyAttributes:
        return QStringLiteral("Elements with more than %1 attributes are not supported").arg(maximumAttributes);
    }
    return QString();
}

qint64 EntityGuard::bytesAvailable() const
{
    if (tripped())
        return 0;
    return QIODevice::bytesAvailable() + m_source->bytesAvailable();
}

bool EntityGuard::atEnd() const
{
    return tripped() || (QIODevice::bytesAvailable() == 0 && m_source->atEnd());
}

qint64 EntityGuard::readData(char *data, qint64 maxSize)
{
    if (tripped())
        return -1;
    const qint64 n = m_source->read(data, maxSize);
    if (n <= 0)
        return n;
    m_refusal = scan(data, n);
    return tripped() ? -1 : n;
}

qint64 EntityGuard::writeData(const char *, qint64)
{
    return -1;
}

// The encoding named in the XML declaration at the start of the input, or an empty string.
static QString declaredEncoding(const QByteArray &start)
{
    QString probe;
    const QByteArray head = start.left(1024);
    const Units units = unitsOf(head.constData(), head.size());
    if (units.size == 4)
        probe = QStringDecoder(units.bigEndian ? QStringConverter::Utf32BE : QStringConverter::Utf32LE)(head);
    else if (units.size == 2)
        probe = QStringDecoder(units.bigEndian ? QStringConverter::Utf16BE : QStringConverter::Utf16LE)(head);
    else
        probe = QString::fromLatin1(head);
    const qsizetype begin = probe.indexOf(QLatin1String("<?xml"));
    if (begin < 0 || begin > 4)
        return QString();
    const qsizetype end = probe.indexOf(QLatin1String("?>"), begin);
    const QString declaration = probe.mid(begin, end < 0 ? -1 : end - begin);
    const qsizetype key = declaration.indexOf(QLatin1String("encoding"));
    if (key < 0)
        return QString();
    qsizetype i = declaration.indexOf(QLatin1Char('='), key);
    if (i < 0)
        return QString();
    ++i;
    while (i < declaration.size() && declaration.at(i).isSpace())
        ++i;
    if (i >= declaration.size() || (declaration.at(i) != QLatin1Char('"') && declaration.at(i) != QLatin1Char('\'')))
        return QString();
    const QChar quote = declaration.at(i);
    const qsizetype close = declaration.indexOf(quote, i + 1);
    return close < 0 ? QString() : declaration.mid(i + 1, close - i - 1).trimmed();
}

// Encodings in which the byte patterns find every declaration and the code units tell the markup.
static bool isPlainEncoding(const QString &name)
{
    const QString n = name.toLower();
    return n.isEmpty() || n == QLatin1String("utf-8") || n == QLatin1String("utf8")
        || n.startsWith(QLatin1String("utf-16")) || n.startsWith(QLatin1String("utf-32"))
        || n == QLatin1String("us-ascii") || n == QLatin1String("ascii") || n.startsWith(QLatin1String("iso-8859-"))
        || n == QLatin1String("latin1") || n == QLatin1String("latin-1");
}

void EntityGuard::sniffEncoding(const QByteArray &start)
{
    m_sniffed = true;
    const QString name = declaredEncoding(start);
    if (isPlainEncoding(name))
        return;
    m_decoder = QStringDecoder(qPrintable(name));
}

Refusal EntityGuard::scanDecoded(const char *data, qint64 size)
{
    QString window = m_decodedTail;
    const qsizetype counted = window.size();
    window += m_decoder.decode(QByteArrayView(data, size));
    Hit first;
    first.at = window.size();
    for (const Declaration &declaration : declarations) {
        const qsizetype at = window.indexOf(QLatin1String(declaration.text));
        if (at >= 0 && at < first.at)
            first = { at, declaration.refusal };
    }
    // The characters of the tail were counted with the previous read.
    char narrow[4096];
    for (qsizetype i = counted; i < window.size() && i < first.at; i += qsizetype(sizeof narrow)) {
        const qsizetype count = qMin<qsizetype>(window.size() - i, qsizetype(sizeof narrow));
        for (qsizetype k = 0; k < count; ++k)
            narrow[k] = narrowed(window.at(i + k).unicode());
        const qint64 at = m_counter.feed(narrow, count);
        if (at >= 0) {
            if (i + at < first.at)
                first = { i + at, Refusal::TooManyAttributes };
            break;
        }
    }
    m_decodedTail = window.right(longestDeclaration - 1);
    return first.refusal;
}

// The first of the patterns in `size` bytes at `begin`, with its offset. Every pattern contains a
// '<' byte within its first four bytes; the patterns are looked for only there.
static EntityGuard::Refusal firstPattern(const char *begin, qint64 size, qint64 *offset)
{
    const char *end = begin + size;
    for (const char *p = begin; (p = static_cast<const char *>(std::memchr(p, '<', size_t(end - p)))); ++p) {
        // In every pattern the '<' is followed by '!' (8-bit) or by a zero byte.
        if (p + 1 < end && p[1] != '!' && p[1] != 0)
            continue;
        for (const Pattern &pattern : patterns()) {
            const char *at = p - pattern.lt;
            if (at >= begin && end - at >= pattern.bytes.size()
                && std::memcmp(at, pattern.bytes.constData(), size_t(pattern.bytes.size())) == 0) {
                *offset = at - begin;
                return pattern.refusal;
            }
        }
    }
    return Refusal::None;
}

// Feeds the counter the code units of `size` bytes. A unit split between reads is read with the
// read that completes it; when it trips the counter its offset is negative.
EntityGuard::Hit EntityGuard::countUnits(const char *data, qint64 size)
{
    const auto tripped = [](qint64 at) { return Hit { at, Refusal::TooManyAttributes }; };
    if (m_unitSize == 1) {
        const qint64 at = m_counter.feed(data, size);
        return at < 0 ? Hit() : tripped(at);
    }
    char narrow[4096];
    qint64 i = 0;
    if (m_unitFill > 0) {
        i = qMin<qint64>(size, m_unitSize - m_unitFill);
        std::memcpy(m_unit + m_unitFill, data, size_t(i));
        m_unitFill += int(i);
        if (m_unitFill < m_unitSize)
            return Hit();
        m_unitFill = 0;
        narrowUnits(m_unit, 1, narrow, m_unitSize, m_bigEndian);
        if (m_counter.feed(narrow, 1) >= 0)
            return tripped(i - m_unitSize);
    }
    while (size - i >= m_unitSize) {
        const qint64 units = qMin<qint64>((size - i) / m_unitSize, qint64(sizeof narrow));
        narrowUnits(data + i, units, narrow, m_unitSize, m_bigEndian);
        const qint64 at = m_counter.feed(narrow, units);
        if (at >= 0)
            return tripped(i + at * m_unitSize);
        i += units * m_unitSize;
    }
    m_unitFill = int(size - i);
    std::memcpy(m_unit, data + i, size_t(m_unitFill));
    return Hit();
}

EntityGuard::Hit EntityGuard::countAttributes(const char *data, qint64 size)
{
    qint64 i = 0;
    if (m_unitSize == 0) {
        // The first four bytes tell the code units, as they do for the reader; until they are all
        // in they wait in m_unit. Four bytes hold too few characters to trip the counter.
        i = qMin<qint64>(size, 4 - m_unitFill);
        std::memcpy(m_unit + m_unitFill, data, size_t(i));
        m_unitFill += int(i);
        if (m_unitFill < 4)
            return Hit();
        const Units units = unitsOf(m_unit, 4);
        m_unitSize = units.size;
        m_bigEndian = units.bigEndian;
        char start[4];
        std::memcpy(start, m_unit, 4);
        m_unitFill = 0;
        countUnits(start, 4);
    }
    Hit hit = countUnits(data + i, size - i);
    hit.at += i;
    return hit;
}

Refusal EntityGuard::scan(const char *data, qint64 size)
{
    if (!m_sniffed)
        sniffEncoding(QByteArray::fromRawData(data, size));
    // Under a declared encoding only the decoded characters tell where the declarations and the
    // attributes are; the byte patterns are looked for as well.
    if (m_decoder.isValid()) {
        const Refusal refusal = scanDecoded(data, size);
        if (refusal != Refusal::None)
            return refusal;
    }

    // Of several refusals in one read the first one counts.
    Hit first;
    first.at = size;
    const auto take = [&first](qint64 at, Refusal refusal) {
        if (refusal != Refusal::None && at < first.at)
            first = { at, refusal };
    };
    // A pattern that begins in the end of the previous chunk ends within the first bytes of
    // this one; those are looked at together. The chunk itself is scanned where it lies.
    qint64 offset = 0;
    if (m_tailSize > 0) {
        char seam[2 * longest];
        const qint64 head = qMin<qint64>(size, longest - 1);
        std::memcpy(seam, m_tail, size_t(m_tailSize));
        std::memcpy(seam + m_tailSize, data, size_t(head));
        const Refusal refusal = firstPattern(seam, m_tailSize + head, &offset);
        take(offset - m_tailSize, refusal);
    }
    const Refusal refusal = firstPattern(data, size, &offset);
    take(offset, refusal);
    if (!m_decoder.isValid()) {
        const Hit counted = countAttributes(data, size);
        take(counted.at, counted.refusal);
    }
    if (first.refusal != Refusal::None)
        return first.refusal;

    // Keep the last bytes of the previous chunks followed by this one.
    if (size >= longest) {
        std::memcpy(m_tail, data + size - longest, longest);
        m_tailSize = longest;
    } else {
        const int keep = int(qMin<qint64>(m_tailSize, longest - size));
        std::memmove(m_tail, m_tail + m_tailSize - keep, size_t(keep));
        std::memcpy(m_tail + keep, data, size_t(size));
        m_tailSize = keep + int(size);
    }
    return Refusal::None;
}
