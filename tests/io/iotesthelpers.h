#pragma once

// Byte-for-byte comparison of saved texts that prints a unified diff on a mismatch, reading a
// text with everything the reader says about it, and the messages of the reader's warnings.

#include "item.h"
#include "parser.h"
#include "testfiles.h"
#include "unifieddiff.h"

#include <QByteArray>
#include <QDebug>
#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace IoTest {

using TestFiles::readFile;
using TestFiles::writeFile;

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

// The message lines of the warnings, without their positions.
inline QStringList warningMessages(const QString &warnings)
{
    QStringList messages;
    for (const QString &line : warnings.split(QLatin1Char('\n'))) {
        if (line.startsWith(QLatin1String("  ")))
            messages << line.mid(2);
    }
    return messages;
}

} // namespace IoTest

// Compares two byte arrays; on a mismatch prints the difference as a unified diff first.
#define IOTEST_COMPARE_BYTES(actualExpr, expectedExpr)                                                                 \
    do {                                                                                                               \
        const QByteArray actual_ = (actualExpr);                                                                       \
        const QByteArray expected_ = (expectedExpr);                                                                   \
        if (actual_ != expected_)                                                                                      \
            qWarning().noquote() << "difference (- expected, + actual):\n"                                             \
                                 << TestDiff::unifiedDiff(expected_, actual_);                                         \
        QCOMPARE(actual_, expected_);                                                                                  \
    } while (false)
