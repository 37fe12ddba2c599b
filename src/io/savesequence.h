#pragma once

#include "filestamp.h"

#include <QByteArray>
#include <QString>

#include <sys/types.h>

namespace ZAT16 {

class Item;

/// Replaces a file with new content so that nothing is ever lost or mixed, for every file the
/// project writes: definitions saved by the editor or by zatgen, generated code, a viewer's text.
///
/// 1. The content goes to a temporary file beside the file, named after it with ".tmp" and a
///    part unique to this save, created exclusively (an existing name, also a symbolic link, is
///    never opened). It is synced, then read back and checked: definitions must give back the
///    tree they were written from, other texts their bytes.
/// 2. A symbolic link is followed: its target is replaced, the link stays, and the backup and the
///    temporary file go beside the target.
/// 3. The temporary file, readable by its owner alone while the content is on its way, takes
///    the file's owner, group and mode, and replaces it in one rename, so that the file's name
///    holds a complete version at every moment. With a backup, the old file keeps its content
///    under the backup's name (".bak" appended): it gets that second name by a hard link that
///    replaces the old backup in one rename (where the file system has no hard links, by a copy
///    that does). Where a rename would lose something (the owner or group cannot be given to a
///    new file, the file has other hard links, an access control list), the file is rewritten in
///    place instead, after its content was copied to the backup, or without a backup to a safety
///    copy that goes once the file is rewritten.
/// 4. Saves of files in one directory by processes of this project take turns from the moment
///    they look at the file to the last rename, so that two saves at once each produce one
///    complete version: whichever renames last wins. A caller that knows what the file held
///    (`expectedContent`) has it compared in that moment too.
/// 5. A failure at any step removes the temporary file and leaves the file and its backup as
///    they were (a failed rewrite in place leaves the previous version in the backup). A file
///    that did not exist never costs the old backup.
class SaveSequence
{
public:
    /// The step that failed; `Saved` when the whole sequence succeeded.
    enum Step {
        Saved = 0,
        WriteTemporary, ///< the temporary file could not be written or synced
        DeleteBackup, ///< the old backup is not a file and could not be deleted
        RenameToBackup, ///< the file could not become the backup (by a link or a rename)
        RenameTemporary, ///< the temporary file could not be renamed to the file
        ResolvePath, ///< the path names no file that can be written (a directory, a link loop)
        CreateTemporary, ///< no temporary file could be created beside the file
        Verify, ///< the content written would not read back as it should; see `detail`
        CopyToBackup, ///< the backup copy could not be written
        WriteInPlace, ///< rewriting in place: the file could not be rewritten
        Changed, ///< the file no longer has `expectedContent`, or was replaced during the save
    };

    enum Backup { NoBackup, KeepBackup };

    /// The file system calls of the sequence, with the signatures and errno convention of their
    /// POSIX namesakes. Tests replace them to provoke each failure.
    struct Operations {
        int (*unlink)(const char *path);
        int (*rename)(const char *from, const char *to);
        int (*link)(const char *from, const char *to);
        ssize_t (*write)(int fd, const void *data, size_t size);
        int (*fchown)(int fd, uid_t owner, gid_t group);
    };
    /// The operations used by every sequence; the POSIX calls unless a test changed them.
    static Operations &operations();
    /// The POSIX calls.
    static Operations systemOperations();

    explicit SaveSequence(const QString &path);

    /// Saves `root` as a definitions file (the WriterXml text); the text must read back as the
    /// same tree. False when a step failed (see `failed` and errorMessage()).
    bool run(const Item *root, Backup backup = KeepBackup);

    /// Replaces the file with exactly `bytes`. This is for texts that can be produced again, such
    /// as generated code, so by default no backup is kept.
    bool replaceWith(const QByteArray &bytes, Backup backup = NoBackup);

    /// The failure for the user, naming the file and the system's reason; empty after success.
    QString errorMessage() const;

    QString path; ///< as given
    QString targetPath; ///< the file written: `path` with symbolic links followed
    QString backupPath; ///< beside the target, ".bak" appended
    QString temporaryPath; ///< the temporary file of the last run (removed by now)
    Step failed = Saved;
    int errorNumber = 0; ///< errno of the failed step
    QString detail; ///< for `Verify`: which entry would not come back and why
    /// When known: the content the file is expected to have (as it was read or last saved); a
    /// file with another content is not replaced (`Changed`). Looked at under the lock, just
    /// before the file is replaced. A file that is gone is replaced anyway.
    FileStamp expectedContent;
    bool rewrittenInPlace = false; ///< the file was rewritten in place instead of replaced
    QString previousVersionPath; ///< after a failed rewrite in place: where the old content is
    FileStamp stamp; ///< the file as a successful save left it

private:
    class Run;
};

} // namespace ZAT16
