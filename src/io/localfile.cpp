#include "localfile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ZAT16 {

namespace {

// The length of the valid UTF-8 sequence at `p` (1 to 4), or 0 when the byte there does not
// start one: overlong forms, encoded surrogates and values above U+10FFFF are not valid.
int utf8Length(const unsigned char *p, qsizetype left, char32_t *value)
{
    const unsigned char c = p[0];
    if (c < 0x80) {
        *value = c;
        return 1;
    }
    int length;
    char32_t v;
    char32_t minimum;
    if ((c & 0xE0) == 0xC0) {
        length = 2;
        v = c & 0x1F;
        minimum = 0x80;
    } else if ((c & 0xF0) == 0xE0) {
        length = 3;
        v = c & 0x0F;
        minimum = 0x800;
    } else if ((c & 0xF8) == 0xF0) {
        length = 4;
        v = c & 0x07;
        minimum = 0x10000;
    } else {
        return 0;
    }
    if (left < length)
        return 0;
    for (int i = 1; i < length; ++i) {
        if ((p[i] & 0xC0) != 0x80)
            return 0;
        v = (v << 6) | (p[i] & 0x3F);
    }
    if (v < minimum || v > 0x10FFFF || (v >= 0xD800 && v <= 0xDFFF))
        return 0;
    *value = v;
    return length;
}

void appendUtf8(QByteArray &bytes, char32_t c)
{
    if (c < 0x80) {
        bytes += char(c);
    } else if (c < 0x800) {
        bytes += char(0xC0 | (c >> 6));
        bytes += char(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        bytes += char(0xE0 | (c >> 12));
        bytes += char(0x80 | ((c >> 6) & 0x3F));
        bytes += char(0x80 | (c & 0x3F));
    } else {
        bytes += char(0xF0 | (c >> 18));
        bytes += char(0x80 | ((c >> 12) & 0x3F));
        bytes += char(0x80 | ((c >> 6) & 0x3F));
        bytes += char(0x80 | (c & 0x3F));
    }
}

} // namespace

QString LocalFile::decodeName(const QByteArray &name)
{
    QString result;
    result.reserve(name.size());
    const auto *p = reinterpret_cast<const unsigned char *>(name.constData());
    const qsizetype n = name.size();
    for (qsizetype i = 0; i < n;) {
        char32_t c;
        const int length = utf8Length(p + i, n - i, &c);
        if (length == 0) {
            result += QChar(char16_t(0xDC00 + p[i]));
            ++i;
            continue;
        }
        if (c >= 0x10000) {
            result += QChar::highSurrogate(c);
            result += QChar::lowSurrogate(c);
        } else {
            result += QChar(char16_t(c));
        }
        i += length;
    }
    return result;
}

QByteArray LocalFile::encodeName(const QString &name)
{
    QByteArray bytes;
    bytes.reserve(name.size());
    const qsizetype n = name.size();
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t u = name.at(i).unicode();
        if (u < 0x80) {
            bytes += char(u);
        } else if (QChar::isHighSurrogate(u) && i + 1 < n && QChar::isLowSurrogate(name.at(i + 1).unicode())) {
            appendUtf8(bytes, QChar::surrogateToUcs4(u, name.at(i + 1).unicode()));
            ++i;
        } else if (u >= 0xDC80 && u <= 0xDCFF) {
            // A byte that was not UTF-8 when the name was decoded.
            bytes += char(u - 0xDC00);
        } else if (QChar::isSurrogate(u)) {
            appendUtf8(bytes, QChar::ReplacementCharacter);
        } else {
            appendUtf8(bytes, u);
        }
    }
    return bytes;
}

QString LocalFile::notAFileReason(unsigned int mode)
{
    if (S_ISREG(mode))
        return QString();
    if (S_ISDIR(mode))
        return errorText(EISDIR);
    if (S_ISFIFO(mode))
        return QStringLiteral("Is a named pipe");
    if (S_ISSOCK(mode))
        return QStringLiteral("Is a socket");
    if (S_ISCHR(mode) || S_ISBLK(mode))
        return QStringLiteral("Is a device");
    return QStringLiteral("Is not a regular file");
}

int LocalFile::openForReading(const QString &path, QString *reason)
{
    const QByteArray native = encodeName(path);
    struct stat st;
    // Looked at before opening: opening a device may already do something, and opening a pipe
    // waits for a writer.
    if (::stat(native.constData(), &st) != 0) {
        *reason = errorText(errno);
        return -1;
    }
    if (!S_ISREG(st.st_mode)) {
        *reason = notAFileReason(st.st_mode);
        return -1;
    }
    // Not blocking, in case a pipe took the file's place since.
    const int fd = ::open(native.constData(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (fd < 0) {
        *reason = errorText(errno);
        return -1;
    }
    const bool statted = ::fstat(fd, &st) == 0;
    if (!statted || !S_ISREG(st.st_mode)) {
        *reason = statted ? notAFileReason(st.st_mode) : errorText(errno);
        ::close(fd);
        return -1;
    }
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    return fd;
}

bool LocalFile::readWhole(int fd, const std::function<void(const char *, qint64)> &take)
{
    char buffer[64 * 1024];
    off_t offset = 0;
    for (;;) {
        const ssize_t n = ::pread(fd, buffer, sizeof buffer, offset);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        if (n == 0)
            return true;
        take(buffer, n);
        offset += n;
    }
}

QString LocalFile::errorText(int errorNumber)
{
    return QString::fromLocal8Bit(std::strerror(errorNumber));
}

} // namespace ZAT16
