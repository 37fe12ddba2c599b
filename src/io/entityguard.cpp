#include "entityguard.h"

#include <cstring>

namespace {

// "<!ENTITY" as the reader may meet it: in an ASCII-compatible encoding, and in UTF-16 and
// UTF-32 with either byte order.
struct Pattern {
    const char *bytes;
    int size;
};

const char ascii[] = "<!ENTITY";
const char utf16le[] = {'<', 0, '!', 0, 'E', 0, 'N', 0, 'T', 0, 'I', 0, 'T', 0, 'Y', 0};
const char utf16be[] = {0, '<', 0, '!', 0, 'E', 0, 'N', 0, 'T', 0, 'I', 0, 'T', 0, 'Y'};
const char utf32le[] = {'<', 0, 0, 0, '!', 0, 0, 0, 'E', 0, 0, 0, 'N', 0, 0, 0,
                        'T', 0, 0, 0, 'I', 0, 0, 0, 'T', 0, 0, 0, 'Y', 0, 0, 0};
const char utf32be[] = {0, 0, 0, '<', 0, 0, 0, '!', 0, 0, 0, 'E', 0, 0, 0, 'N',
                        0, 0, 0, 'T', 0, 0, 0, 'I', 0, 0, 0, 'T', 0, 0, 0, 'Y'};

const Pattern patterns[] = {
    {ascii, 8},
    {utf16le, sizeof(utf16le)},
    {utf16be, sizeof(utf16be)},
    {utf32le, sizeof(utf32le)},
    {utf32be, sizeof(utf32be)},
};
constexpr int longest = EntityGuard::longestPattern;

} // namespace

EntityGuard::EntityGuard(QIODevice *source, QObject *parent)
    : QIODevice(parent)
    , m_source(source)
{
    // The reader's reads go straight to the source: a buffer here would only copy the bytes once
    // more.
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

qint64 EntityGuard::bytesAvailable() const
{
    if (m_tripped)
        return 0;
    return QIODevice::bytesAvailable() + m_source->bytesAvailable();
}

bool EntityGuard::atEnd() const
{
    return m_tripped || (QIODevice::bytesAvailable() == 0 && m_source->atEnd());
}

qint64 EntityGuard::readData(char *data, qint64 maxSize)
{
    if (m_tripped)
        return -1;
    const qint64 n = m_source->read(data, maxSize);
    if (n <= 0)
        return n;
    if (!scan(data, n)) {
        m_tripped = true;
        return -1;
    }
    return n;
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
    const auto at = [&](int i) { return i < head.size() ? head.at(i) : char(-1); };
    if (head.startsWith("\xFF\xFE\0\0") || (at(0) == '<' && at(1) == 0 && at(2) == 0 && at(3) == 0))
        probe = QString::fromUcs4(reinterpret_cast<const char32_t *>(head.constData()), head.size() / 4);
    else if (head.startsWith(QByteArray("\0\0\xFE\xFF", 4)) || (at(0) == 0 && at(1) == 0 && at(2) == 0 && at(3) == '<'))
        probe = QStringDecoder(QStringConverter::Utf32BE)(head);
    else if (head.startsWith("\xFF\xFE") || (at(0) == '<' && at(1) == 0))
        probe = QStringDecoder(QStringConverter::Utf16LE)(head);
    else if (head.startsWith("\xFE\xFF") || (at(0) == 0 && at(1) == '<'))
        probe = QStringDecoder(QStringConverter::Utf16BE)(head);
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

// Encodings in which the byte patterns find every "<!ENTITY".
static bool isPlainEncoding(const QString &name)
{
    const QString n = name.toLower();
    return n.isEmpty() || n == QLatin1String("utf-8") || n == QLatin1String("utf8") || n.startsWith(QLatin1String("utf-16"))
        || n.startsWith(QLatin1String("utf-32")) || n == QLatin1String("us-ascii") || n == QLatin1String("ascii")
        || n.startsWith(QLatin1String("iso-8859-")) || n == QLatin1String("latin1") || n == QLatin1String("latin-1");
}

void EntityGuard::sniffEncoding(const QByteArray &start)
{
    m_sniffed = true;
    const QString name = declaredEncoding(start);
    if (isPlainEncoding(name))
        return;
    m_decoder = QStringDecoder(qPrintable(name));
}

bool EntityGuard::scanDecoded(const char *data, qint64 size)
{
    QString window = m_decodedTail;
    window += m_decoder.decode(QByteArrayView(data, size));
    if (window.contains(QLatin1String("<!ENTITY")))
        return false;
    m_decodedTail = window.right(8);
    return true;
}

// Whether `size` bytes at `begin` hold one of the patterns. Every pattern contains a '<' byte
// within its first four bytes; the patterns are looked for only there.
static bool holdsPattern(const char *begin, qint64 size)
{
    const char *end = begin + size;
    for (const char *p = begin; (p = static_cast<const char *>(std::memchr(p, '<', size_t(end - p)))); ++p) {
        // In every pattern the '<' is followed by '!' (8-bit) or by a zero byte.
        if (p + 1 < end && p[1] != '!' && p[1] != 0)
            continue;
        for (const Pattern &pattern : patterns) {
            // The '<' is at offset 0, 1 or 3 of a pattern.
            const char *at = p - (pattern.bytes[0] == '<' ? 0 : pattern.bytes[1] == '<' ? 1 : 3);
            if (at >= begin && end - at >= pattern.size && std::memcmp(at, pattern.bytes, size_t(pattern.size)) == 0)
                return true;
        }
    }
    return false;
}

bool EntityGuard::scan(const char *data, qint64 size)
{
    if (!m_sniffed)
        sniffEncoding(QByteArray::fromRawData(data, size));
    if (m_decoder.isValid() && !scanDecoded(data, size))
        return false;

    // A pattern that begins in the end of the previous chunk ends within the first bytes of
    // this one; those are looked at together. The chunk itself is scanned where it lies.
    if (m_tailSize > 0) {
        char seam[2 * longest];
        const qint64 head = qMin<qint64>(size, longest - 1);
        std::memcpy(seam, m_tail, size_t(m_tailSize));
        std::memcpy(seam + m_tailSize, data, size_t(head));
        if (holdsPattern(seam, m_tailSize + head))
            return false;
    }
    if (holdsPattern(data, size))
        return false;

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
    return true;
}
