#pragma once

#include <QByteArray>
#include <QString>

namespace ZAT16 {

class Item;

/// Saves a definitions tree over a file safely: the tree is written to a temporary file beside it
/// (the name with ".tmp" appended), the previous content becomes the single backup generation
/// (".bak" appended) and the temporary file takes the file's name.
///
/// The file's name holds a complete file at every moment: the old file becomes the backup by a
/// hard link that replaces the old backup in one rename (where the file system has no hard links,
/// the old backup is deleted and the file renamed), and the temporary file replaces the file in
/// one rename. The directory is synced afterwards, so that the renames survive a power failure.
/// When a step fails, the sequence stops there.
class SaveSequence
{
public:
    /// The step that failed; `Saved` when the whole sequence succeeded.
    enum Step {
        Saved = 0,
        WriteTemporary, ///< the writer failed; `writerError` holds its message
        DeleteBackup, ///< the old backup could not be deleted
        RenameToBackup, ///< the file could not become the backup (by a link or a rename)
        RenameTemporary, ///< the temporary file could not be renamed to the file
    };

    /// The file system calls of the sequence, with the signatures and errno convention of their
    /// POSIX namesakes. Tests replace them to provoke each failure.
    struct Operations {
        int (*unlink)(const char *path);
        int (*rename)(const char *from, const char *to);
        int (*link)(const char *from, const char *to);
    };
    /// The operations used by every sequence; the POSIX calls unless a test changed them.
    static Operations &operations();

    explicit SaveSequence(const QString &path);

    /// Runs the whole sequence for `root`; false when a step failed (see `failed`).
    bool run(const Item *root);

    /// Replaces the file with exactly `bytes` through the temporary file alone: written, synced
    /// and renamed into place, so that the file's name holds the old or the new content at every
    /// moment. No backup generation is kept; this is for texts that can be produced again, such
    /// as generated code. On a failure the temporary file is removed; `failed` is
    /// `WriteTemporary` (with `writerError`) or `RenameTemporary` (with `errorNumber`).
    bool replaceWith(const QByteArray &bytes);

    QString path;
    QString backupPath;
    QString temporaryPath;
    Step failed = Saved;
    QString writerError; ///< the writer's formatError() when writing failed
    int errorNumber = 0; ///< errno of the failed file operation
};

} // namespace ZAT16
