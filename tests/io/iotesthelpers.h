#pragma once

// Byte-for-byte comparison of saved texts that prints a unified diff on a mismatch, and reading
// a text with everything the reader says about it.

#include "item.h"
#include "testfiles.h"
#include "parser.h"

#include <QByteArray>
#include <QDebug>
#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace IoTest {

using TestFiles::readFile;
using TestFiles::writeFile;

// "diff -u expected actual", or a short note when diff cannot be run.
inline QString unifiedDiff(const QByteArray &expected, const QByteArray &actual)
{
    QTemporaryDir dir;
    if (!dir.isValid())
        return QStringLiteral("(no temporary directory for the diff)");
    const QString expectedPath = dir.filePath(QStringLiteral("expected"));
    const QString actualPath = dir.filePath(QStringLiteral("actual"));
    if (!writeFile(expectedPath, expected) || !writeFile(actualPath, actual))
        return QStringLiteral("(cannot write the files for the diff)");
    QProcess diff;
    diff.start(QStringLiteral("diff"), { QStringLiteral("-u"), expectedPath, actualPath });
    if (!diff.waitForFinished(10000))
        return QStringLiteral("(diff did not run)");
    return QString::fromUtf8(diff.readAllStandardOutput());
}

// What the reader made of a text: its verdict, error, warnings and tree.
struct Loaded {
    bool ok = false;
    QString error;
    QString warnings;
    std::unique_ptr<ZAT16::Item> root;
};

inline Loaded load(const QByteArray &data)
{
    ZAT16::Parser parser;
    Loaded result;
    result.ok = parser.parse(data);
    result.error = result.ok ? QString() : parser.formatError();
    result.warnings = parser.warnings;
    result.root.reset(parser.takeRoot());
    return result;
}

} // namespace IoTest

// Compares two byte arrays; on a mismatch prints the difference as a unified diff first.
#define IOTEST_COMPARE_BYTES(actualExpr, expectedExpr)                                                                 \
    do {                                                                                                               \
        const QByteArray actual_ = (actualExpr);                                                                       \
        const QByteArray expected_ = (expectedExpr);                                                                   \
        if (actual_ != expected_)                                                                                      \
            qWarning().noquote() << "difference (- expected, + actual):\n" << IoTest::unifiedDiff(expected_, actual_); \
        QCOMPARE(actual_, expected_);                                                                                  \
    } while (false)
