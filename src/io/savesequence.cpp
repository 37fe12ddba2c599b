#include "savesequence.h"

#include "filereplacement.h"
#include "localfile.h"
#include "readbackcheck.h"
#include "writerxml.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>

#include <cerrno>
#include <dirent.h>
#include <functional>
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
        *path = target.startsWith('/') ? target : FileReplacement::folderOf(*path) + target;
    }
    *error = ELOOP;
    return false;
}

bool hasAccessControlList(const QByteArray &path)
{
    return ::getxattr(path.constData(), "system.posix_acl_access", nullptr, 0) > 0;
}

} // namespace

SaveSequence::Operations SaveSequence::systemOperations()
{
    return { ::unlink, ::rename, ::link, ::write, ::fchown };
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

// One save: the checks before the file is replaced (where the file is, whether it may still be
// replaced, whether a new file can take its place), with the files it writes and the steps that
// replace the file in FileReplacement.
class SaveSequence::Run : public FileReplacement
{
public:
    Run(SaveSequence *sequence, Backup backup, bool definitions)
        : FileReplacement(sequence, backup, definitions)
    {
        s->failed = Saved;
        s->errorNumber = 0;
        s->detail.clear();
        s->rewrittenInPlace = false;
        s->stamp = FileStamp();
        s->temporaryPath.clear();
        s->previousVersionPath.clear();
    }

    bool save(const QByteArray &bytes, const std::function<QString(const QByteArray &)> &check);

private:
    bool findTarget();
    bool stillExpected();
    int foreignLinks(const struct stat &file);
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
// that were killed (FILE.tmpXXXXXXXX.bak, see FileReplacement::replaceByRename); those are removed.
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
    if (!writeAll(temporaryFd, bytes))
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
            + (previousVersionPath.isEmpty()
                   ? QString()
                   : tr("\nThe version before this save is in %1.").arg(native(previousVersionPath)));
    case Changed:
        return tr("%1 was changed by another program since it was opened").arg(native(path));
    }
    return QString();
}

} // namespace ZAT16
