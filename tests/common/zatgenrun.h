#pragma once

// Runs the built zatgen binary (ZATGEN_PATH) and collects its exit status and output.

#include "processrun.h"

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <functional>

namespace ZatgenRun {

using ProcessRun::finish;
using ProcessRun::Run;

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
