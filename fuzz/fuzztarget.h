#pragma once

// What every libFuzzer target shares: the input as a QByteArray without a copy (so that the
// address sanitizer sees reads past its end), quiet Qt debug output, and the abort on a failed
// check.

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace FuzzTarget {

inline QByteArray input(const uint8_t *data, size_t size)
{
    return QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
}

// The editor model prints debug lines on some insertions; at thousands of runs a second they
// would only bury the fuzzer's own output. Warnings and worse still go to standard error.
inline void messageHandler(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtDebugMsg || type == QtInfoMsg)
        return;
    std::fprintf(stderr, "%s\n", qPrintable(message));
    if (type == QtFatalMsg)
        std::abort();
}

inline void quietQt()
{
    qInstallMessageHandler(messageHandler);
}

/// Aborts with the failure text, so that libFuzzer keeps the input as a crash.
inline void failIf(const QString &failure)
{
    if (failure.isEmpty())
        return;
    std::fprintf(stderr, "\n==== check failed ====\n%s\n", failure.toLocal8Bit().constData());
    std::fflush(stderr);
    std::abort();
}

inline bool envFlag(const char *name)
{
    return qEnvironmentVariableIntValue(name) != 0;
}

} // namespace FuzzTarget
