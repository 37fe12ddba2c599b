#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// The "hostile" section of zatbench: how long reading takes, and how much memory, for inputs
/// built to be expensive rather than realistic (millions of empty elements, duplicates that each
/// raise a warning, huge values, declarations that multiply values). Each input is written to a
/// file and read by a child process, which reports its time and the growth of its peak memory.
class HostileInputs
{
public:
    /// The shapes, by name.
    static QStringList shapes();
    /// About `bytes` bytes of the given shape.
    static QByteArray make(const QString &shape, qint64 bytes);

    /// Reads every shape of `megabytes` MB in child processes of `program` and prints a table; at
    /// 100 MB and more also one GOAL line for the time and one for the memory of each shape
    /// (scaled to 100 MB: 2 s and 1 GiB).
    static int run(const QString &program, int megabytes);
    /// The child: reads the file at `path` with a bare QXmlStreamReader (when `anchored`) and
    /// with the parser, prints one "READ ..." line.
    static int child(const QString &path, bool anchored);
};
