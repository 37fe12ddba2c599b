#pragma once

// Runs the built zatgen binary (ZATGEN_PATH) and collects its exit status and output.

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <functional>

namespace ZatgenRun {

struct Run {
    int status = -1; ///< -1 when zatgen did not end by itself within the time given
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

/// Runs zatgen with `arguments`; `childSetup`, when given, runs in the child before zatgen
/// starts (to set resource limits, say).
inline Run run(const QStringList &arguments,
               const QString &workingDirectory = QString(),
               int timeoutMs = 60000,
               const std::function<void()> &childSetup = nullptr)
{
    QProcess process;
    if (!workingDirectory.isEmpty())
        process.setWorkingDirectory(workingDirectory);
    if (childSetup)
        process.setChildProcessModifier(childSetup);
    process.start(QStringLiteral(ZATGEN_PATH), arguments);
    return finish(process, timeoutMs);
}

/// Runs zatgen through the shell, so that arguments can be any bytes (`script` is a shell command
/// line in which "$ZATGEN" is the binary).
inline Run shell(const QString &script, const QString &workingDirectory, int timeoutMs = 60000)
{
    QProcess process;
    process.setWorkingDirectory(workingDirectory);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ZATGEN"), QStringLiteral(ZATGEN_PATH));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral("/bin/sh"), { QStringLiteral("-c"), script });
    return finish(process, timeoutMs);
}

} // namespace ZatgenRun
