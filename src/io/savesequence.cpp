#include "savesequence.h"

#include "writerxml.h"

#include <QFile>

#include <cerrno>
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

} // namespace

SaveSequence::Operations &SaveSequence::operations()
{
    static Operations ops = {::unlink, ::rename};
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

    if (exists(backup) && ops.unlink(backup.constData()) != 0)
        return fail(DeleteBackup);
    if (exists(file) && ops.rename(file.constData(), backup.constData()) != 0)
        return fail(RenameToBackup);
    if (ops.rename(temporary.constData(), file.constData()) != 0)
        return fail(RenameTemporary);
    return true;
}

} // namespace ZAT16
