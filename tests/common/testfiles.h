#pragma once

// Reading and writing whole files in tests.

#include <QByteArray>
#include <QFile>
#include <QString>

namespace TestFiles {

/// The whole content of `path`; "<missing>" when it cannot be read, so that a comparison that
/// fails says so. `opened`, when given, tells whether the file could be opened.
inline QByteArray readFile(const QString &path, bool *opened = nullptr)
{
    QFile file(path);
    const bool open = file.open(QIODevice::ReadOnly);
    if (opened)
        *opened = open;
    return open ? file.readAll() : QByteArray("<missing>");
}

/// Replaces the content of `path` with `bytes`; false when not all of it was written.
inline bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

} // namespace TestFiles
