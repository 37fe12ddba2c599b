#pragma once

// Reading and writing whole files in tests.

#include <QByteArray>
#include <QFile>
#include <QString>

namespace TestFiles {

/// The whole content of `path`; "<missing>" when it cannot be read, so that a comparison that
/// fails says so.
inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

/// Replaces the content of `path` with `bytes`; false when not all of it was written.
inline bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

} // namespace TestFiles
