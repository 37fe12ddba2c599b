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

QByteArray uniquePart()
{
    static const char letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    QByteArray part(8, Qt::Uninitialized);
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

bool exists(const QByteArray &path)
{
    struct stat st;
    return ::lstat(path.constData(), &st) == 0;
}

bool readsAsDefinitions(const QByteArray &content)
{
    ZAT16::Parser parser;
    return parser.parse(content) && parser.stoppedAtLine == 0;
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
        s->keepsBackup = backup == KeepBackup;
    }

    ~Run()
    {
        if (temporaryFd >= 0)
            ::close(temporaryFd);
        if (!temporary.isEmpty())
            ops.unlink(temporary.constData());
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
    bool createTemporary(const QByteArray &name, mode_t mode, int *fd, QByteArray *path);
    void lockFolder();
    bool needsRewriteInPlace(const struct stat &file);
    int foreignLinks(const struct stat &file);
    bool takeOver(const struct stat &file);
    bool replaceByRename(bool fileExists);
    bool rewriteInPlace(const QByteArray &bytes, const struct stat &file);
    bool copyToBackup(const struct stat &file);

    SaveSequence *s;
    const Operations &ops;
    const Backup backup;
    const bool definitions;
    QByteArray target;
    QByteArray backupName;
    QByteArray temporary; ///< removed when the save ends, unless it was renamed into place
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
bool SaveSequence::Run::createTemporary(const QByteArray &name, mode_t mode, int *fd, QByteArray *path)
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        const QByteArray candidate = name + ".tmp" + uniquePart();
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

// Other names of the file than its backup and the links left by saves of this project that
// were killed (named like their temporary files, see replaceByRename); those are removed.
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
        if (!name.startsWith(prefix) || !name.endsWith(".bak"))
            continue;
        const QByteArray leftover = folder + name;
        if (::lstat(leftover.constData(), &st) == 0 && st.st_dev == file.st_dev && st.st_ino == file.st_ino
            && ops.unlink(leftover.constData()) == 0)
            --links;
    }
    ::closedir(dir);
    return links;
}

// Whether a new file cannot take the place of `file` without losing something that belongs to
// it: its other hard links, an access control list. Gives the temporary file the owner, group
// and mode of `file` where it can.
bool SaveSequence::Run::needsRewriteInPlace(const struct stat &file)
{
    if (foreignLinks(file) > 0 || hasAccessControlList(target))
        return true;
    struct stat st;
    if (::fstat(temporaryFd, &st) != 0)
        return true;
    if (st.st_uid != file.st_uid || st.st_gid != file.st_gid) {
        const uid_t owner = st.st_uid != file.st_uid ? file.st_uid : uid_t(-1);
        const gid_t group = st.st_gid != file.st_gid ? file.st_gid : gid_t(-1);
        if (ops.fchown(temporaryFd, owner, group) != 0)
            return true;
    }
    // After the owner: changing the owner clears the set-user-ID and set-group-ID bits. The
    // system may refuse some bits (set-group-ID for a group the user is not in) without saying.
    const mode_t mode = file.st_mode & 07777;
    return ::fchmod(temporaryFd, mode) != 0 || ::fstat(temporaryFd, &st) != 0 || (st.st_mode & 07777) != mode;
}

bool SaveSequence::Run::save(const QByteArray &bytes, const std::function<QString(const QByteArray &)> &check)
{
    if (!findTarget())
        return false;

    struct stat before;
    const bool existed = ::stat(target.constData(), &before) == 0;
    // Never more open than the file while the content is on its way; a new file gets the usual
    // mode (the umask applies).
    const mode_t mode = existed ? (before.st_mode & 0777) : 0666;
    if (!createTemporary(target, mode, &temporaryFd, &temporary))
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
    struct stat file;
    const bool fileExists = ::stat(target.constData(), &file) == 0;
    if (fileExists && !S_ISREG(file.st_mode)) {
        s->detail = LocalFile::notAFileReason(file.st_mode);
        return fail(ResolvePath, S_ISDIR(file.st_mode) ? EISDIR : 0);
    }
    if (fileExists && needsRewriteInPlace(file))
        return rewriteInPlace(bytes, file);

    if (!sync(temporaryFd))
        return failWithErrno(WriteTemporary);
    if (!replaceByRename(fileExists))
        return false;
    s->stamp = FileStamp::ofWritten(s->targetPath, bytes);
    return true;
}

bool SaveSequence::Run::replaceByRename(bool fileExists)
{
    // An old backup that is not a file (a folder, say) cannot be replaced: deleting it fails
    // with the reason to report.
    if (backup == KeepBackup && isFolder(backupName) && ops.unlink(backupName.constData()) != 0)
        return failWithErrno(DeleteBackup);

    if (backup == KeepBackup && fileExists) {
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
            // File systems without hard links get the plain sequence: delete the old backup,
            // rename the file to the backup. For a moment the file's name is then empty.
            const int error = errno;
            const bool noLinks = error == EPERM || error == EXDEV || error == ENOTSUP || error == EOPNOTSUPP
                || error == EMLINK || error == ENOSYS;
            if (!noLinks)
                return fail(RenameToBackup, error);
            if (exists(backupName) && ops.unlink(backupName.constData()) != 0)
                return failWithErrno(DeleteBackup);
            if (ops.rename(target.constData(), backupName.constData()) != 0)
                return failWithErrno(RenameToBackup);
            if (ops.rename(temporary.constData(), target.constData()) != 0) {
                const int renameError = errno;
                // Put the file back under its name rather than leave the name empty.
                ::rename(backupName.constData(), target.constData());
                return fail(RenameTemporary, renameError);
            }
            temporary.clear();
            ::fsync(folderFd);
            return true;
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

// The careful way for a file that a new file cannot replace: its content is copied to the
// backup first, then the file itself is rewritten and synced. Space for the new content is
// taken before anything is overwritten, so that a full disk stops the save before it starts.
bool SaveSequence::Run::rewriteInPlace(const QByteArray &bytes, const struct stat &file)
{
    s->rewrittenInPlace = true;
    if (backup == KeepBackup && !copyToBackup(file))
        return false;

    const int fd = ::open(target.constData(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return failWithErrno(WriteInPlace);
    const int reserved = bytes.isEmpty() ? 0 : ::posix_fallocate(fd, 0, off_t(bytes.size()));
    bool ok = reserved == 0 || reserved == EOPNOTSUPP || reserved == EINVAL;
    if (!ok)
        errno = reserved;
    ok = ok && ::lseek(fd, 0, SEEK_SET) == 0 && writeAll(ops, fd, bytes) && ::ftruncate(fd, off_t(bytes.size())) == 0
        && sync(fd);
    const int error = errno;
    ::close(fd);
    if (!ok)
        return fail(WriteInPlace, error);
    s->stamp = FileStamp::ofWritten(s->targetPath, bytes);
    return true;
}

bool SaveSequence::Run::copyToBackup(const struct stat &file)
{
    if (isFolder(backupName) && ops.unlink(backupName.constData()) != 0)
        return failWithErrno(DeleteBackup);
    QByteArray content;
    const int source = ::open(target.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    const bool read = source >= 0 && readAll(source, &content);
    const int readError = errno;
    if (source >= 0)
        ::close(source);
    if (!read)
        return fail(CopyToBackup, readError);
    // What a save killed while it rewrote the file left behind does not take the place of the
    // backup, which then holds the last complete version.
    if (definitions && !readsAsDefinitions(content))
        return true;

    int fd = -1;
    QByteArray copy;
    if (!createTemporary(target, file.st_mode & 0777, &fd, &copy))
        return failWithErrno(CopyToBackup);
    // The backup is as private as the file; its owner and group are kept where the system lets.
    ops.fchown(fd, file.st_uid, file.st_gid);
    bool ok = writeAll(ops, fd, content) && ::fchmod(fd, file.st_mode & 07777) == 0 && sync(fd);
    int error = errno;
    ::close(fd);
    if (ok && ops.rename(copy.constData(), backupName.constData()) != 0) {
        ok = false;
        error = errno;
    }
    if (!ok) {
        ops.unlink(copy.constData());
        return fail(CopyToBackup, error);
    }
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
            + (keepsBackup ? tr("\nThe version before this save is in %1.").arg(native(backupPath)) : QString());
    }
    return QString();
}

} // namespace ZAT16
