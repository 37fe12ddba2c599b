#pragma once

#include "savesequence.h"

#include <QByteArray>

#include <cerrno>
#include <sys/stat.h>

namespace ZAT16 {

/// The files one save writes and the steps that put the new content in the file's place: the
/// temporary file beside the file, the lock of the folder, the backup (by a hard link or a copy)
/// and the rename, or the rewrite in place with the old content kept in the backup or in a
/// safety copy. Whatever is left when the save ends (the temporary file, a safety copy no longer
/// needed, the lock) goes with this object.
///
/// The save sequence derives its run from it and decides, from what it finds, which way the file
/// is replaced; every failure is recorded in the sequence (`failed` and `errorNumber`).
class FileReplacement
{
public:
    FileReplacement(SaveSequence *sequence, SaveSequence::Backup backup, bool definitions);
    ~FileReplacement();

    FileReplacement(const FileReplacement &) = delete;
    FileReplacement &operator=(const FileReplacement &) = delete;

    /// The folder part of a path, with its final "/"; empty for a name in the working directory.
    static QByteArray folderOf(const QByteArray &path);

protected:
    /// The length of the part of a temporary file's name that is its own.
    static constexpr qsizetype uniqueLength = 8;

    static bool readAll(int fd, QByteArray *bytes);
    /// A full disk or an I/O error may show only here. Some file systems cannot sync at all.
    static bool sync(int fd);

    bool fail(SaveSequence::Step step, int error = 0);
    bool failWithErrno(SaveSequence::Step step) { return fail(step, errno); }

    bool writeAll(int fd, const QByteArray &bytes);
    bool createTemporary(mode_t mode, int *fd, QByteArray *path);
    void lockFolder();
    bool takeOver(const struct stat &file);
    bool replaceByRename(const struct stat *file);
    bool rewriteInPlace(const QByteArray &bytes, const struct stat &file);

    SaveSequence *s;
    const SaveSequence::Operations &ops;
    const SaveSequence::Backup backup;
    const bool definitions; ///< the content is a definitions text
    QByteArray target;
    QByteArray backupName;
    QByteArray temporary; ///< removed when the save ends, unless it was renamed into place
    QByteArray safetyCopy; ///< the old content while a file without backup is rewritten in place
    int temporaryFd = -1;
    int folderFd = -1;

private:
    bool writeCopy(const QByteArray &content, const struct stat &file, QByteArray *copy);
};

} // namespace ZAT16
