#include "savesequence.h"

#include "writerxml.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

namespace ZAT16 {

namespace {

bool exists(const QByteArray &path)
{
    struct stat st;
    return ::lstat(path.constData(), &st) == 0;
}

bool isDirectory(const QByteArray &path)
{
    struct stat st;
    return ::lstat(path.constData(), &st) == 0 && S_ISDIR(st.st_mode);
}

// Makes the directory entries of the renames durable.
void syncDirectory(const QByteArray &file)
{
    QByteArray dir = file.left(file.lastIndexOf('/'));
    if (dir.isEmpty())
        dir = file.startsWith('/') ? QByteArray("/") : QByteArray(".");
    const int fd = ::open(dir.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        ::fsync(fd);
        ::close(fd);
    }
}

} // namespace

SaveSequence::Operations &SaveSequence::operations()
{
    static Operations ops = {::unlink, ::rename, ::link};
    return ops;
}

SaveSequence::SaveSequence(const QString &path)
    : path(path)
    , backupPath(path + QLatin1String(".bak"))
    , temporaryPath(path + QLatin1String(".tmp"))
{
}

bool SaveSequence::run(const Item *root)
{
    const Operations &ops = operations();
    failed = Saved;
    errorNumber = 0;
    writerError.clear();

    WriterXml writer;
    if (!writer.write(root, temporaryPath)) {
        failed = WriteTemporary;
        writerError = writer.formatError();
        return false;
    }

    const QByteArray file = QFile::encodeName(path);
    const QByteArray backup = QFile::encodeName(backupPath);
    const QByteArray temporary = QFile::encodeName(temporaryPath);

    auto fail = [this](Step step) {
        failed = step;
        errorNumber = errno;
        return false;
    };

    // An old backup that is not a file (a directory, say) cannot be replaced: try to delete it,
    // which fails with the reason to report.
    if (isDirectory(backup) && ops.unlink(backup.constData()) != 0)
        return fail(DeleteBackup);

    if (exists(file)) {
        // The old file gets a second name first, which then replaces the old backup in one
        // step: the file's name and the backup's name each hold a complete version throughout.
        const QByteArray fresh = backup + ".new";
        if (exists(fresh))
            ops.unlink(fresh.constData());
        if (ops.link(file.constData(), fresh.constData()) == 0) {
            if (ops.rename(fresh.constData(), backup.constData()) != 0) {
                const int error = errno;
                ops.unlink(fresh.constData());
                errno = error;
                return fail(RenameToBackup);
            }
        } else {
            // File systems without hard links get the plain sequence: delete the old backup,
            // rename the file to the backup. For a moment the file's name is then empty.
            const int linkError = errno;
            const bool noLinks = linkError == EPERM || linkError == EXDEV || linkError == ENOTSUP
                || linkError == EOPNOTSUPP || linkError == EMLINK || linkError == ENOSYS;
            if (!noLinks) {
                errno = linkError;
                return fail(RenameToBackup);
            }
            if (exists(backup) && ops.unlink(backup.constData()) != 0)
                return fail(DeleteBackup);
            if (ops.rename(file.constData(), backup.constData()) != 0)
                return fail(RenameToBackup);
        }
    } else if (exists(backup) && ops.unlink(backup.constData()) != 0) {
        return fail(DeleteBackup);
    }

    if (ops.rename(temporary.constData(), file.constData()) != 0)
        return fail(RenameTemporary);
    syncDirectory(file);
    return true;
}

bool SaveSequence::replaceWith(const QByteArray &bytes)
{
    const Operations &ops = operations();
    failed = Saved;
    errorNumber = 0;
    writerError.clear();

    const QByteArray file = QFile::encodeName(path);
    const QByteArray temporary = QFile::encodeName(temporaryPath);

    // The messages are those of the writers, so that both kinds of save read alike.
    QFile out(temporaryPath);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        failed = WriteTemporary;
        writerError = QLatin1String("Failed to open output file ") + temporaryPath + QLatin1Char('.');
        return false;
    }
    QString failure;
    if (out.write(bytes) != bytes.size() || !out.flush())
        failure = out.errorString();
    // A full disk or an I/O error may show up only in the sync or the close.
    if (failure.isEmpty() && ::fsync(out.handle()) != 0 && errno != EINVAL && errno != ENOTSUP)
        failure = QString::fromLocal8Bit(std::strerror(errno));
    out.close();
    if (failure.isEmpty() && out.error() != QFileDevice::NoError)
        failure = out.errorString();
    if (!failure.isEmpty()) {
        failed = WriteTemporary;
        writerError = QLatin1String("Error writing ") + temporaryPath + QLatin1String(":\n  ") + failure;
        ops.unlink(temporary.constData());
        return false;
    }

    if (ops.rename(temporary.constData(), file.constData()) != 0) {
        failed = RenameTemporary;
        errorNumber = errno;
        ops.unlink(temporary.constData());
        return false;
    }
    syncDirectory(file);
    return true;
}

} // namespace ZAT16
