#include "savesequence.h"

#include "localfile.h"
#include "parser.h"
#include "readbackcheck.h"
#include "writerxml.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QRandomGenerator>
#include <QThread>

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <sys/file.h>
#include <linux/falloc.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace ZAT16 {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("ZAT16::SaveSequence", text);
}

QString native(const QString &path)
{
    return QDir::toNativeSeparators(path);
}

// The folder part of a path, with its final "/"; empty for a name in the working directory.
QByteArray folderOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash < 0 ? QByteArray() : path.left(slash + 1);
}

QByteArray nameOf(const QByteArray &path)
{
    return path.mid(path.lastIndexOf('/') + 1);
}

// Follows symbolic links at the end of `path` to the file they stand for. A name that does not
// exist (a new file, or the target of a dangling link) is where the file will be created.
bool followLinks(QByteArray *path, int *error)
{
    for (int hops = 0; hops < 40; ++hops) {
        struct stat st;
        if (::lstat(path->constData(), &st) != 0) {
            if (errno == ENOENT)
                return true;
            *error = errno;
            return false;
        }
        if (!S_ISLNK(st.st_mode))
            return true;
        QByteArray target(qMax<qsizetype>(st.st_size, 255) + 1, Qt::Uninitialized);
        const ssize_t n = ::readlink(path->constData(), target.data(), size_t(target.size()));
        if (n < 0) {
            *error = errno;
            return false;
        }
        target.truncate(n);
        *path = target.startsWith('/') ? target : folderOf(*path) + target;
    }
    *error = ELOOP;
    return false;
}

// The length of the part of a temporary file's name that is its own.
constexpr qsizetype uniqueLength = 8;

QByteArray uniquePart()
{
    static const char letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    QByteArray part(uniqueLength, Qt::Uninitialized);
    for (char &c : part)
        c = letters[QRandomGenerator::system()->bounded(62)];
    return part;
}

bool writeAll(const SaveSequence::Operations &ops, int fd, const QByteArray &bytes)
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

bool readAll(int fd, QByteArray *bytes)
{
    bytes->clear();
    return LocalFile::readWhole(fd, [bytes](const char *data, qint64 size) { bytes->append(data, size); });
}

// A full disk or an I/O error may show only here. Some file systems cannot sync at all.
bool sync(int fd)
{
    return ::fsync(fd) == 0 || errno == EINVAL || errno == ENOTSUP;
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

bool hasAccessControlList(const QByteArray &path)
{
    return ::getxattr(path.constData(), "system.posix_acl_access", nullptr, 0) > 0;
}

} // namespace

SaveSequence::Operations SaveSequence::systemOperations()
{
    return {::unlink, ::rename, ::link, ::write, ::fchown};
}

SaveSequence::Operations &SaveSequence::operations()
{
    static Operations ops = systemOperations();
    return ops;
}

SaveSequence::SaveSequence(const QString &path)
    : path(path)
    , targetPath(path)
    , backupPath(path + QLatin1String(".bak"))
{
}

// The state of one save: the file descriptors and names, closed and removed as the save ends.
class SaveSequence::Run
{
public:
    Run(SaveSequence *sequence, Backup backup, bool definitions)
        : s(sequence)
        , ops(operations())
        , backup(backup)
        , definitions(definitions)
    {
        s->failed = Saved;
        s->errorNumber = 0;
        s->detail.clear();
        s->rewrittenInPlace = false;
        s->stamp = FileStamp();
        s->temporaryPath.clear();
        s->previousVersionPath.clear();
    }

    ~Run()
    {
        if (temporaryFd >= 0)
            ::close(temporaryFd);
        if (!temporary.isEmpty())
            ops.unlink(temporary.constData());
        if (!safetyCopy.isEmpty() && s->failed == Saved)
            ops.unlink(safetyCopy.constData());
        if (folderFd >= 0)
            ::close(folderFd); // which also ends the lock
    }

    Run(const Run &) = delete;
    Run &operator=(const Run &) = delete;

    bool save(const QByteArray &bytes, const std::function<QString(const QByteArray &)> &check);

private:
    bool fail(Step step, int error = 0)
    {
        s->failed = step;
        s->errorNumber = error;
        return false;
    }
    bool failWithErrno(Step step) { return fail(step, errno); }

    bool findTarget();
    bool createTemporary(mode_t mode, int *fd, QByteArray *path);
    void lockFolder();
    bool stillExpected();
    int foreignLinks(const struct stat &file);
    bool takeOver(const struct stat &file);
    bool replaceByRename(const struct stat *file);
    bool rewriteInPlace(const QByteArray &bytes, const struct stat &file);
    bool writeCopy(const QByteArray &content, const struct stat &file, QByteArray *copy);

    SaveSequence *s;
    const Operations &ops;
    const Backup backup;
    const bool definitions;
    QByteArray target;
    QByteArray backupName;
    QByteArray temporary; ///< removed when the save ends, unless it was renamed into place
    QByteArray safetyCopy; ///< the old content while a file without backup is rewritten in place
    int temporaryFd = -1;
    int folderFd = -1;
};

bool SaveSequence::Run::findTarget()
{
    target = LocalFile::encodeName(s->path);
    int error = 0;
    if (target.isEmpty())
        return fail(ResolvePath, ENOENT);
    if (!followLinks(&target, &error))
        return fail(ResolvePath, error);
    s->targetPath = LocalFile::decodeName(target);
    backupName = target + ".bak";
    s->backupPath = LocalFile::decodeName(backupName);
    struct stat st;
    if (::stat(target.constData(), &st) == 0 && !S_ISREG(st.st_mode)) {
        s->detail = LocalFile::notAFileReason(st.st_mode);
        return fail(ResolvePath, S_ISDIR(st.st_mode) ? EISDIR : 0);
    }
    return true;
}

// A new file beside the target, named after it, that no other save uses: created exclusively,
// so that no existing name (a link to another user's file, say) is ever written through.
bool SaveSequence::Run::createTemporary(mode_t mode, int *fd, QByteArray *path)
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        const QByteArray candidate = target + ".tmp" + uniquePart();
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
void SaveSequence::Run::lockFolder()
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

// Whether the file still has the content the caller expects (when it expects one): looked at
// under the lock, the last moment before it is replaced. A file that is gone has nothing to lose.
bool SaveSequence::Run::stillExpected()
{
    if (!s->expectedContent.known)
        return true;
    const FileStamp now = FileStamp::ofFile(s->targetPath);
    return s->expectedContent.sameContent(now) || (now.known && !now.exists);
}

// Other names of the file than its backup and the second names left by saves of this project
// that were killed (FILE.tmpXXXXXXXX.bak, see replaceByRename); those are removed.
int SaveSequence::Run::foreignLinks(const struct stat &file)
{
    int links = int(file.st_nlink) - 1;
    struct stat st;
    if (::lstat(backupName.constData(), &st) == 0 && st.st_dev == file.st_dev && st.st_ino == file.st_ino)
        --links;
    if (links <= 0)
        return 0;
    const QByteArray folder = folderOf(target);
    const QByteArray prefix = nameOf(target) + ".tmp";
    DIR *dir = ::opendir(folder.isEmpty() ? "." : folder.constData());
    if (!dir)
        return links;
    while (const dirent *entry = ::readdir(dir)) {
        const QByteArray name(entry->d_name);
        if (name.size() != prefix.size() + uniqueLength + 4 || !name.startsWith(prefix) || !name.endsWith(".bak"))
            continue;
        const QByteArray leftover = folder + name;
        if (::lstat(leftover.constData(), &st) == 0 && st.st_dev == file.st_dev && st.st_ino == file.st_ino
            && ops.unlink(leftover.constData()) == 0)
            --links;
    }
    ::closedir(dir);
    return links;
}

// Gives the temporary file the owner, group and mode of `file`; false where the system does not
// let it, and a new file would lose what belongs to the old one.
bool SaveSequence::Run::takeOver(const struct stat &file)
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

bool SaveSequence::Run::save(const QByteArray &bytes, const std::function<QString(const QByteArray &)> &check)
{
    if (!findTarget())
        return false;

    // Only the owner may read the content while it is on its way: the temporary file gets the
    // group and mode of the file only once its owner and group are the file's. A new file gets
    // the usual mode (the umask applies).
    struct stat before;
    const bool existed = ::stat(target.constData(), &before) == 0;
    if (!createTemporary(existed ? 0600 : 0666, &temporaryFd, &temporary))
        return failWithErrno(CreateTemporary);
    s->temporaryPath = LocalFile::decodeName(temporary);
    if (!writeAll(ops, temporaryFd, bytes))
        return failWithErrno(WriteTemporary);

    // Read back what the disk holds now, not what was meant to be written.
    QByteArray written;
    if (!readAll(temporaryFd, &written))
        return failWithErrno(WriteTemporary);
    if (written != bytes)
        return fail(WriteTemporary, EIO);
    if (check) {
        s->detail = check(written);
        if (!s->detail.isEmpty())
            return fail(Verify);
    }

    lockFolder();
    if (!stillExpected())
        return fail(Changed);
    struct stat file;
    const bool fileExists = ::stat(target.constData(), &file) == 0;
    if (fileExists && !S_ISREG(file.st_mode)) {
        s->detail = LocalFile::notAFileReason(file.st_mode);
        return fail(ResolvePath, S_ISDIR(file.st_mode) ? EISDIR : 0);
    }
    // A new file cannot take the place of one with other hard links, an access control list, or
    // an owner, group or mode that cannot be given to a new file.
    if (fileExists && (foreignLinks(file) > 0 || hasAccessControlList(target) || !takeOver(file)))
        return rewriteInPlace(bytes, file);

    if (!sync(temporaryFd))
        return failWithErrno(WriteTemporary);
    if (!replaceByRename(fileExists ? &file : nullptr))
        return false;
    s->stamp = FileStamp::ofWritten(s->targetPath, bytes);
    return true;
}

bool SaveSequence::Run::replaceByRename(const struct stat *file)
{
    // An old backup that is not a file (a folder, say) cannot be replaced: deleting it fails
    // with the reason to report.
    if (backup == KeepBackup && isFolder(backupName) && ops.unlink(backupName.constData()) != 0)
        return failWithErrno(DeleteBackup);

    struct stat old;
    // After a save killed between its renames the backup may be the file already.
    const bool isBackup = file && ::lstat(backupName.constData(), &old) == 0 && old.st_dev == file->st_dev
        && old.st_ino == file->st_ino;
    if (backup == KeepBackup && file && !isBackup) {
        // The old file gets a second name first, which then replaces the old backup in one step:
        // the file's name and the backup's name each hold a complete version throughout.
        const QByteArray second = temporary + ".bak";
        if (ops.link(target.constData(), second.constData()) == 0) {
            if (ops.rename(second.constData(), backupName.constData()) != 0) {
                const int error = errno;
                ops.unlink(second.constData());
                return fail(RenameToBackup, error);
            }
        } else {
            // A file system without hard links: the backup is written as a copy, which replaces
            // the old backup in one rename, so the file's name never stands empty either.
            const int error = errno;
            const bool noLinks = error == EPERM || error == EXDEV || error == ENOTSUP || error == EOPNOTSUPP
                || error == EMLINK || error == ENOSYS;
            if (!noLinks)
                return fail(RenameToBackup, error);
            QByteArray content;
            const int fd = ::open(target.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
            const bool read = fd >= 0 && readAll(fd, &content);
            const int readError = errno;
            if (fd >= 0)
                ::close(fd);
            if (!read)
                return fail(CopyToBackup, readError);
            QByteArray copy;
            if (!writeCopy(content, *file, &copy))
                return false;
            if (ops.rename(copy.constData(), backupName.constData()) != 0) {
                const int renameError = errno;
                ops.unlink(copy.constData());
                return fail(CopyToBackup, renameError);
            }
        }
    }

    if (ops.rename(temporary.constData(), target.constData()) != 0)
        return failWithErrno(RenameTemporary);
    temporary.clear();
    // Makes the renames durable.
    if (folderFd >= 0)
        ::fsync(folderFd);
    return true;
}

// A copy of `content` beside the file, as private as the file and with its owner and group where
// the system lets; made private to the user where it does not. Removed again when it fails.
bool SaveSequence::Run::writeCopy(const QByteArray &content, const struct stat &file, QByteArray *copy)
{
    int fd = -1;
    if (!createTemporary(0600, &fd, copy))
        return failWithErrno(CopyToBackup);
    mode_t mode = file.st_mode & 07777;
    if (ops.fchown(fd, file.st_uid, file.st_gid) != 0 && ops.fchown(fd, uid_t(-1), file.st_gid) != 0)
        mode &= 0700; // the group would be another one: nobody else may read it
    bool ok = writeAll(ops, fd, content) && ::fchmod(fd, mode) == 0 && sync(fd);
    const int error = errno;
    ::close(fd);
    if (!ok) {
        ops.unlink(copy->constData());
        copy->clear();
        return fail(CopyToBackup, error);
    }
    return true;
}

// The careful way for a file that a new file cannot replace: its content is copied to the
// backup first (or, without a backup, to a safety copy that goes once the save is done), then
// the file itself is rewritten and synced. Space for the new content is taken before anything
// is overwritten, so that a full disk stops the save before it starts.
bool SaveSequence::Run::rewriteInPlace(const QByteArray &bytes, const struct stat &file)
{
    s->rewrittenInPlace = true;
    const int fd = ::open(target.constData(), O_RDWR | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return failWithErrno(WriteInPlace);
    struct stat opened;
    if (::fstat(fd, &opened) != 0 || opened.st_dev != file.st_dev || opened.st_ino != file.st_ino) {
        ::close(fd);
        return fail(Changed);
    }
    QByteArray content;
    if (!readAll(fd, &content)) {
        const int error = errno;
        ::close(fd);
        return fail(CopyToBackup, error);
    }

    QByteArray copy;
    // What a save killed while it rewrote the file left behind is not a version: it does not
    // take the place of the backup, which then holds the last complete one. A file that only
    // reads in part (text between its elements) is a version and is kept.
    const bool keep = backup == NoBackup || !definitions || readsAsDefinitions(content);
    if (keep && !writeCopy(content, file, &copy)) {
        ::close(fd);
        return false;
    }
    if (keep && backup == KeepBackup) {
        if (isFolder(backupName) && ops.unlink(backupName.constData()) != 0) {
            const int error = errno;
            ops.unlink(copy.constData());
            ::close(fd);
            return fail(DeleteBackup, error);
        }
        if (ops.rename(copy.constData(), backupName.constData()) != 0) {
            const int error = errno;
            ops.unlink(copy.constData());
            ::close(fd);
            return fail(CopyToBackup, error);
        }
        s->previousVersionPath = s->backupPath;
    } else if (keep) {
        safetyCopy = copy;
        s->previousVersionPath = LocalFile::decodeName(copy);
    }

    bool ok = true;
    if (bytes.size() > content.size() && ::fallocate(fd, 0, 0, off_t(bytes.size())) != 0)
        ok = errno == EOPNOTSUPP || errno == ENOSYS || errno == EINVAL;
    ok = ok && ::lseek(fd, 0, SEEK_SET) == 0 && writeAll(ops, fd, bytes) && ::ftruncate(fd, off_t(bytes.size())) == 0
        && sync(fd);
    const int error = errno;
    ::close(fd);
    if (!ok)
        return fail(WriteInPlace, error);
    s->previousVersionPath.clear();
    s->stamp = FileStamp::ofWritten(s->targetPath, bytes);
    return true;
}

bool SaveSequence::run(const Item *root, Backup backup)
{
    QByteArray bytes;
    bool written;
    {
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        WriterXml writer;
        writer.device = &buffer;
        written = writer.writeDefinitions(root);
        writer.device = nullptr;
    }
    Run sequence(this, backup, true);
    if (!written) {
        // A value held characters that a file cannot carry; the check names the entry.
        detail = ReadBackCheck::check(root, bytes);
        if (detail.isEmpty())
            detail = QStringLiteral("the definitions could not be written as text");
        failed = Verify;
        return false;
    }
    return sequence.save(bytes, [root](const QByteArray &text) { return ReadBackCheck::check(root, text); });
}

bool SaveSequence::replaceWith(const QByteArray &bytes, Backup backup)
{
    Run sequence(this, backup, false);
    return sequence.save(bytes, nullptr);
}

QString SaveSequence::errorMessage() const
{
    const QString reason = !detail.isEmpty() && failed != Verify ? detail : LocalFile::errorText(errorNumber);
    switch (failed) {
    case Saved:
        return QString();
    case WriteTemporary:
        return tr("Error writing %1:\n  %2").arg(native(path), reason);
    case DeleteBackup:
        return tr("Could not delete old backup %1: %2").arg(native(backupPath), reason);
    case RenameToBackup:
        return tr("Could not rename %1 to %2: %3").arg(native(targetPath), native(backupPath), reason);
    case RenameTemporary:
        return tr("Could not rename %1 to %2: %3").arg(native(temporaryPath), native(targetPath), reason);
    case ResolvePath:
        return tr("Could not save %1: %2").arg(native(path), reason);
    case CreateTemporary:
        return tr("Could not create a temporary file beside %1: %2").arg(native(targetPath), reason);
    case Verify:
        return tr("The file %1 was not saved: %2.").arg(native(path), detail);
    case CopyToBackup:
        return tr("Could not copy %1 to %2: %3").arg(native(targetPath), native(backupPath), reason);
    case WriteInPlace:
        return tr("Error writing %1:\n  %2").arg(native(path), reason)
            + (previousVersionPath.isEmpty() ? QString()
                                             : tr("\nThe version before this save is in %1.").arg(native(previousVersionPath)));
    case Changed:
        return tr("%1 was changed by another program since it was opened").arg(native(path));
    }
    return QString();
}

} // namespace ZAT16
