#include "filereplacement.h"

#include "localfile.h"
#include "parser.h"

#include <QRandomGenerator>
#include <QThread>

#include <fcntl.h>
#include <linux/falloc.h>
#include <sys/file.h>
#include <unistd.h>

namespace ZAT16 {

namespace {

QByteArray uniquePart(qsizetype length)
{
    static const char letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    QByteArray part(length, Qt::Uninitialized);
    for (char &c : part)
        c = letters[QRandomGenerator::system()->bounded(62)];
    return part;
}

bool isFolder(const QByteArray &path)
{
    struct stat st;
    return ::lstat(path.constData(), &st) == 0 && S_ISDIR(st.st_mode);
}

// Whether `content` reads as definitions, if only in part.
bool readsAsDefinitions(const QByteArray &content)
{
    ZAT16::Parser parser;
    return parser.parse(content);
}

} // namespace

FileReplacement::FileReplacement(SaveSequence *sequence, SaveSequence::Backup backup, bool definitions)
    : s(sequence)
    , ops(SaveSequence::operations())
    , backup(backup)
    , definitions(definitions)
{
}

FileReplacement::~FileReplacement()
{
    if (temporaryFd >= 0)
        ::close(temporaryFd);
    if (!temporary.isEmpty())
        ops.unlink(temporary.constData());
    if (!safetyCopy.isEmpty() && s->failed == SaveSequence::Saved)
        ops.unlink(safetyCopy.constData());
    if (folderFd >= 0)
        ::close(folderFd); // which also ends the lock
}

QByteArray FileReplacement::folderOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash < 0 ? QByteArray() : path.left(slash + 1);
}

bool FileReplacement::readAll(int fd, QByteArray *bytes)
{
    bytes->clear();
    return LocalFile::readWhole(fd, [bytes](const char *data, qint64 size) { bytes->append(data, size); });
}

bool FileReplacement::sync(int fd)
{
    return ::fsync(fd) == 0 || errno == EINVAL || errno == ENOTSUP;
}

bool FileReplacement::fail(SaveSequence::Step step, int error)
{
    s->failed = step;
    s->errorNumber = error;
    return false;
}

bool FileReplacement::writeAll(int fd, const QByteArray &bytes)
{
    const char *p = bytes.constData();
    qsizetype left = bytes.size();
    while (left > 0) {
        const ssize_t n = ops.write(fd, p, size_t(qMin<qsizetype>(left, 1 << 20)));
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        if (n == 0) {
            errno = EIO;
            return false;
        }
        p += n;
        left -= n;
    }
    return true;
}

// A new file beside the target, named after it, that no other save uses: created exclusively,
// so that no existing name (a link to another user's file, say) is ever written through.
bool FileReplacement::createTemporary(mode_t mode, int *fd, QByteArray *path)
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        const QByteArray candidate = target + ".tmp" + uniquePart(uniqueLength);
        *fd = ::open(candidate.constData(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
        if (*fd >= 0) {
            *path = candidate;
            return true;
        }
        if (errno != EEXIST)
            return false;
    }
    errno = EEXIST;
    return false;
}

// Saves of this project in one folder take turns, so that no save looks at the file while
// another is between its renames. Other programs do not take part; where the folder cannot be
// locked, or another save holds it for long, the save goes on without.
void FileReplacement::lockFolder()
{
    const QByteArray folder = folderOf(target);
    folderFd = ::open(folder.isEmpty() ? "." : folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folderFd < 0)
        return;
    for (int waited = 0; waited < 2000; ++waited) {
        if (::flock(folderFd, LOCK_EX | LOCK_NB) == 0 || (errno != EWOULDBLOCK && errno != EINTR))
            return;
        QThread::msleep(5);
    }
}

// Gives the temporary file the owner, group and mode of `file`; false where the system does not
// let it, and a new file would lose what belongs to the old one.
bool FileReplacement::takeOver(const struct stat &file)
{
    struct stat st;
    if (::fstat(temporaryFd, &st) != 0)
        return false;
    if (st.st_uid != file.st_uid || st.st_gid != file.st_gid) {
        const uid_t owner = st.st_uid != file.st_uid ? file.st_uid : uid_t(-1);
        const gid_t group = st.st_gid != file.st_gid ? file.st_gid : gid_t(-1);
        if (ops.fchown(temporaryFd, owner, group) != 0)
            return false;
    }
    // After the owner: changing the owner clears the set-user-ID and set-group-ID bits. The
    // system may refuse some bits (set-group-ID for a group the user is not in) without saying.
    const mode_t mode = file.st_mode & 07777;
    return ::fchmod(temporaryFd, mode) == 0 && ::fstat(temporaryFd, &st) == 0 && (st.st_mode & 07777) == mode;
}

bool FileReplacement::replaceByRename(const struct stat *file)
{
    // An old backup that is not a file (a folder, say) cannot be replaced: deleting it fails
    // with the reason to report.
    if (backup == SaveSequence::KeepBackup && isFolder(backupName) && ops.unlink(backupName.constData()) != 0)
        return failWithErrno(SaveSequence::DeleteBackup);

    struct stat old;
    // After a save killed between its renames the backup may be the file already.
    const bool isBackup = file && ::lstat(backupName.constData(), &old) == 0 && old.st_dev == file->st_dev
        && old.st_ino == file->st_ino;
    if (backup == SaveSequence::KeepBackup && file && !isBackup) {
        // The old file gets a second name first, which then replaces the old backup in one step:
        // the file's name and the backup's name each hold a complete version throughout.
        const QByteArray second = temporary + ".bak";
        if (ops.link(target.constData(), second.constData()) == 0) {
            if (ops.rename(second.constData(), backupName.constData()) != 0) {
                const int error = errno;
                ops.unlink(second.constData());
                return fail(SaveSequence::RenameToBackup, error);
            }
        } else {
            // A file system without hard links: the backup is written as a copy, which replaces
            // the old backup in one rename, so the file's name never stands empty either.
            const int error = errno;
            const bool noLinks = error == EPERM || error == EXDEV || error == ENOTSUP || error == EOPNOTSUPP
                || error == EMLINK || error == ENOSYS;
            if (!noLinks)
                return fail(SaveSequence::RenameToBackup, error);
            QByteArray content;
            const int fd = ::open(target.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
            const bool read = fd >= 0 && readAll(fd, &content);
            const int readError = errno;
            if (fd >= 0)
                ::close(fd);
            if (!read)
                return fail(SaveSequence::CopyToBackup, readError);
            QByteArray copy;
            if (!writeCopy(content, *file, &copy))
                return false;
            if (ops.rename(copy.constData(), backupName.constData()) != 0) {
                const int renameError = errno;
                ops.unlink(copy.constData());
                return fail(SaveSequence::CopyToBackup, renameError);
            }
        }
    }

    if (ops.rename(temporary.constData(), target.constData()) != 0)
        return failWithErrno(SaveSequence::RenameTemporary);
    temporary.clear();
    // Makes the renames durable.
    if (folderFd >= 0)
        ::fsync(folderFd);
    return true;
}

// A copy of `content` beside the file, as private as the file and with its owner and group where
// the system lets; made private to the user where it does not. Removed again when it fails.
bool FileReplacement::writeCopy(const QByteArray &content, const struct stat &file, QByteArray *copy)
{
    int fd = -1;
    if (!createTemporary(0600, &fd, copy))
        return failWithErrno(SaveSequence::CopyToBackup);
    mode_t mode = file.st_mode & 07777;
    if (ops.fchown(fd, file.st_uid, file.st_gid) != 0 && ops.fchown(fd, uid_t(-1), file.st_gid) != 0)
        mode &= 0700; // the group would be another one: nobody else may read it
    bool ok = writeAll(fd, content) && ::fchmod(fd, mode) == 0 && sync(fd);
    const int error = errno;
    ::close(fd);
    if (!ok) {
        ops.unlink(copy->constData());
        copy->clear();
        return fail(SaveSequence::CopyToBackup, error);
    }
    return true;
}

// The careful way for a file that a new file cannot replace: its content is copied to the
// backup first (or, without a backup, to a safety copy that goes once the save is done), then
// the file itself is rewritten and synced. Space for the new content is taken before anything
// is overwritten, so that a full disk stops the save before it starts.
bool FileReplacement::rewriteInPlace(const QByteArray &bytes, const struct stat &file)
{
    s->rewrittenInPlace = true;
    const int fd = ::open(target.constData(), O_RDWR | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return failWithErrno(SaveSequence::WriteInPlace);
    struct stat opened;
    if (::fstat(fd, &opened) != 0 || opened.st_dev != file.st_dev || opened.st_ino != file.st_ino) {
        ::close(fd);
        return fail(SaveSequence::Changed);
    }
    QByteArray content;
    if (!readAll(fd, &content)) {
        const int error = errno;
        ::close(fd);
        return fail(SaveSequence::CopyToBackup, error);
    }

    QByteArray copy;
    // What a save killed while it rewrote the file left behind is not a version: it does not
    // take the place of the backup, which then holds the last complete one. A file that only
    // reads in part (text between its elements) is a version and is kept.
    const bool keep = backup == SaveSequence::NoBackup || !definitions || readsAsDefinitions(content);
    if (keep && !writeCopy(content, file, &copy)) {
        ::close(fd);
        return false;
    }
    if (keep && backup == SaveSequence::KeepBackup) {
        if (isFolder(backupName) && ops.unlink(backupName.constData()) != 0) {
            const int error = errno;
            ops.unlink(copy.constData());
            ::close(fd);
            return fail(SaveSequence::DeleteBackup, error);
        }
        if (ops.rename(copy.constData(), backupName.constData()) != 0) {
            const int error = errno;
            ops.unlink(copy.constData());
            ::close(fd);
            return fail(SaveSequence::CopyToBackup, error);
        }
        s->previousVersionPath = s->backupPath;
    } else if (keep) {
        safetyCopy = copy;
        s->previousVersionPath = LocalFile::decodeName(copy);
    }

    bool ok = true;
    if (bytes.size() > content.size() && ::fallocate(fd, 0, 0, off_t(bytes.size())) != 0)
        ok = errno == EOPNOTSUPP || errno == ENOSYS || errno == EINVAL;
    ok = ok && ::lseek(fd, 0, SEEK_SET) == 0 && writeAll(fd, bytes) && ::ftruncate(fd, off_t(bytes.size())) == 0
        && sync(fd);
    const int error = errno;
    ::close(fd);
    if (!ok)
        return fail(SaveSequence::WriteInPlace, error);
    s->previousVersionPath.clear();
    s->stamp = FileStamp::ofWritten(s->targetPath, bytes);
    return true;
}

} // namespace ZAT16
