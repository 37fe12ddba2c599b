#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

namespace ZAT16 {

/// Helpers for files of the local file system, as every reader and writer of the project opens
/// them.
///
/// File names are bytes to the system. Qt decodes them as UTF-8 and replaces what is not, so a
/// name such as "out\xFE.h" would come back as another name. Here every byte that is not part of
/// valid UTF-8 decodes to one character U+DC80..U+DCFF, and encoding turns that character back
/// into the byte: any name the file system allows goes through a QString and back unchanged.
/// For valid UTF-8 both functions give what QFile::decodeName and QFile::encodeName give.
class LocalFile
{
public:
    static QString decodeName(const QByteArray &name);
    static QByteArray encodeName(const QString &name);

    /// Opens `path` for reading when it is a regular file (or a link to one); -1 otherwise, with
    /// the reason in `reason`: the system's text ("No such file or directory") or, for what is
    /// not a file, "Is a directory", "Is a named pipe", "Is a socket" or "Is a device". A pipe
    /// is never opened for reading, which would wait for a writer.
    static int openForReading(const QString &path, QString *reason);

    /// The reason why something of the given st_mode cannot be read or written as a file; empty
    /// for a regular file.
    static QString notAFileReason(unsigned int mode);

    /// Reads the open file `fd` from its start, whatever its offset, and hands each piece to
    /// `take`; false, with errno set, when a read fails.
    static bool readWhole(int fd, const std::function<void(const char *data, qint64 size)> &take);

    /// The system's text for an error number.
    static QString errorText(int errorNumber);
};

} // namespace ZAT16
