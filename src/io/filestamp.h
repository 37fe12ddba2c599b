#pragma once

#include <QByteArray>
#include <QString>

namespace ZAT16 {

/// What a file was when it was read or written: its identity on the disk (device and inode),
/// size, modification time and a hash of its bytes. A program that keeps a file open for editing
/// compares the stamp it took with one taken now to find out whether another program changed
/// the file in between.
struct FileStamp {
    bool known = false; ///< false: nothing was recorded (no file, or it changed while it was read)
    bool exists = false;
    quint64 device = 0;
    quint64 inode = 0;
    qint64 size = 0;
    qint64 modified = 0; ///< nanoseconds since the epoch
    qint64 statusChanged = 0; ///< nanoseconds since the epoch; no program can set it back
    QByteArray hash; ///< of the whole content; tells contents apart, not meant to resist an attacker

    /// The stamp of the file at `path` now, reading the whole file; a missing file gives a known
    /// stamp with `exists` false, a file that cannot be read an unknown one.
    static FileStamp ofFile(const QString &path);
    /// The stamp of the open file `fd`, read from its start whatever its offset; unknown when the
    /// file changed while it was read, or since `since` (the metadata taken when it was opened).
    static FileStamp ofDescriptor(int fd, const FileStamp *since = nullptr);
    /// Identity, size and times of the open file `fd`, without its content (no hash; unknown).
    static FileStamp metadataOf(int fd);
    /// The stamp of a file known to hold exactly `content`, taken from the file at `path` (its
    /// identity and time) without reading it again.
    static FileStamp ofWritten(const QString &path, const QByteArray &content);

    static QByteArray hashOf(const QByteArray &content);

    /// Whether the file still has the content this stamp recorded: both known, and either both
    /// missing or both present with the same size and hash. A file that was only touched, or
    /// replaced by a copy of itself, is still the same file to the user.
    bool sameContent(const FileStamp &other) const;
};

} // namespace ZAT16
