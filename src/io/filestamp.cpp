#include "filestamp.h"

#include "localfile.h"

#include <QCryptographicHash>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ZAT16 {

namespace {

qint64 modifiedTime(const struct stat &st)
{
    return qint64(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
}

qint64 changedTime(const struct stat &st)
{
    return qint64(st.st_ctim.tv_sec) * 1000000000 + st.st_ctim.tv_nsec;
}

void takeIdentity(FileStamp *stamp, const struct stat &st)
{
    stamp->exists = true;
    stamp->device = quint64(st.st_dev);
    stamp->inode = quint64(st.st_ino);
    stamp->size = qint64(st.st_size);
    stamp->modified = modifiedTime(st);
}

constexpr QCryptographicHash::Algorithm algorithm = QCryptographicHash::Sha256;

} // namespace

QByteArray FileStamp::hashOf(const QByteArray &content)
{
    return QCryptographicHash::hash(content, algorithm);
}

FileStamp FileStamp::ofDescriptor(int fd)
{
    FileStamp stamp;
    struct stat before;
    if (::fstat(fd, &before) != 0 || !S_ISREG(before.st_mode))
        return stamp;
    QCryptographicHash hash(algorithm);
    char buffer[64 * 1024];
    off_t offset = 0;
    for (;;) {
        const ssize_t n = ::pread(fd, buffer, sizeof buffer, offset);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return stamp;
        }
        if (n == 0)
            break;
        hash.addData(QByteArrayView(buffer, n));
        offset += n;
    }
    struct stat after;
    // A file written to while it was read has no content to speak of.
    if (::fstat(fd, &after) != 0 || after.st_size != offset || after.st_size != before.st_size
        || modifiedTime(after) != modifiedTime(before) || changedTime(after) != changedTime(before))
        return stamp;
    takeIdentity(&stamp, after);
    stamp.hash = hash.result();
    stamp.known = true;
    return stamp;
}

FileStamp FileStamp::ofFile(const QString &path)
{
    const QByteArray native = LocalFile::encodeName(path);
    struct stat st;
    if (::stat(native.constData(), &st) != 0) {
        FileStamp stamp;
        stamp.known = errno == ENOENT || errno == ENOTDIR;
        return stamp;
    }
    QString reason;
    const int fd = LocalFile::openForReading(path, &reason);
    if (fd < 0)
        return FileStamp();
    const FileStamp stamp = ofDescriptor(fd);
    ::close(fd);
    return stamp;
}

FileStamp FileStamp::ofWritten(const QString &path, const QByteArray &content)
{
    FileStamp stamp;
    struct stat st;
    if (::stat(LocalFile::encodeName(path).constData(), &st) != 0 || qint64(st.st_size) != content.size())
        return stamp;
    takeIdentity(&stamp, st);
    stamp.hash = hashOf(content);
    stamp.known = true;
    return stamp;
}

bool FileStamp::sameContent(const FileStamp &other) const
{
    if (!known || !other.known || exists != other.exists)
        return false;
    return !exists || (size == other.size && hash == other.hash);
}

} // namespace ZAT16
