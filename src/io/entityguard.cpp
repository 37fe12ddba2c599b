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
constexpr int longest = 32;

} // namespace

EntityGuard::EntityGuard(QIODevice *source, QObject *parent)
    : QIODevice(parent)
    , m_source(source)
{
    open(QIODevice::ReadOnly);
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

bool EntityGuard::scan(const char *data, qint64 size)
{
    // Every pattern contains a '<' byte within its first four bytes; look for the patterns only
    // there, over the tail of the previous chunk followed by this one.
    QByteArray window = m_tail;
    window.append(data, size);
    const char *begin = window.constData();
    const char *end = begin + window.size();
    for (const char *p = begin; (p = static_cast<const char *>(std::memchr(p, '<', size_t(end - p)))); ++p) {
        for (const Pattern &pattern : patterns) {
            // The '<' is at offset 0, 1 or 3 of a pattern.
            const char *at = p - (pattern.bytes[0] == '<' ? 0 : pattern.bytes[1] == '<' ? 1 : 3);
            if (at >= begin && end - at >= pattern.size && std::memcmp(at, pattern.bytes, size_t(pattern.size)) == 0)
                return false;
        }
    }
    m_tail = window.right(longest);
    return true;
}
