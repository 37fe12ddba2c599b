#pragma once

// Waits for a program that a test started, and collects its exit status and output.

#include <QByteArray>
#include <QProcess>

namespace ProcessRun {

struct Run {
    int status = -1; ///< -1 when the program did not end by itself within the time given
    QByteArray out;
    QByteArray err;
};

/// Waits for `process` to end by itself within `timeoutMs` and collects what it gave.
inline Run finish(QProcess &process, int timeoutMs)
{
    Run result;
    if (!process.waitForFinished(timeoutMs) || process.exitStatus() != QProcess::NormalExit) {
        process.kill();
        process.waitForFinished();
        return result;
    }
    result.status = process.exitCode();
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    return result;
}

} // namespace ProcessRun
