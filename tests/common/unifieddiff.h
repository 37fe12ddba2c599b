#pragma once

// The difference between an expected and an actual text as a unified diff, for tests that
// compare texts byte for byte and print what differs on a mismatch.

#include "testfiles.h"

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace TestDiff {

enum LineEnds {
    PlainLineEnds,
    MarkedLineEnds, ///< every line end shows as "$", so that trailing blanks show
};

/// "diff -u expected actual"; when diff cannot be run, a note followed by both texts.
inline QByteArray unifiedDiff(const QByteArray &expected, const QByteArray &actual, LineEnds lineEnds = PlainLineEnds)
{
    QTemporaryDir dir;
    auto shown
        = [lineEnds](QByteArray bytes) { return lineEnds == MarkedLineEnds ? bytes.replace("\n", "$\n") : bytes; };
    const QString expectedPath = dir.filePath(QStringLiteral("expected"));
    const QString actualPath = dir.filePath(QStringLiteral("actual"));
    if (!dir.isValid() || !TestFiles::writeFile(expectedPath, shown(expected))
        || !TestFiles::writeFile(actualPath, shown(actual)))
        return "(no diff: temporary files could not be written)\n--- expected\n" + expected + "\n--- actual\n" + actual;
    QProcess diff;
    diff.start(QStringLiteral("diff"), { QStringLiteral("-u"), expectedPath, actualPath });
    if (!diff.waitForFinished(30000))
        return "(diff did not run)\n--- expected\n" + expected + "\n--- actual\n" + actual;
    return diff.readAllStandardOutput();
}

} // namespace TestDiff
