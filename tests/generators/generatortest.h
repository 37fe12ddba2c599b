#pragma once

// Helpers shared by the generator tests: trees from definitions text, running a writer into
// memory, and byte-for-byte comparison that prints a unified diff on a mismatch.

#include "item.h"
#include "parser.h"
#include "testfiles.h"
#include "unifieddiff.h"
#include "writer.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <memory>

namespace GeneratorTest {

using TestFiles::readFile;
using TestFiles::writeFile;

/// The tree of a definitions document; null when it does not parse.
inline std::unique_ptr<ZAT16::Item> parseDocument(const QByteArray &document)
{
    ZAT16::Parser parser;
    if (!parser.parse(document))
        return nullptr;
    return std::unique_ptr<ZAT16::Item>(parser.takeRoot());
}

/// The tree of the given top-level elements inside a "zat16" element.
inline std::unique_ptr<ZAT16::Item> tree(const QByteArray &tags)
{
    return parseDocument("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<zat16>\n" + tags + "\n</zat16>\n");
}

/// The tree of a definitions file.
inline std::unique_ptr<ZAT16::Item> treeFromFile(const QString &path)
{
    ZAT16::Parser parser;
    if (!parser.parse(path))
        return nullptr;
    return std::unique_ptr<ZAT16::Item>(parser.takeRoot());
}

/// The output of writer W for `root`, after `setup` has set the writer texts.
template<typename W>
QByteArray generate(const ZAT16::Item *root, const std::function<void(W &)> &setup = {})
{
    W writer;
    if (setup)
        setup(writer);
    return writer.encode(root);
}

/// `count` blanks, for expected lines whose padding would be unreadable as a literal.
inline QByteArray blanks(int count)
{
    return QByteArray(count, ' ');
}

/// Fails the calling test with a readable diff when the bytes differ.
#define COMPARE_OUTPUT(actual, expected)                                                                               \
    do {                                                                                                               \
        const QByteArray actual_ = (actual);                                                                           \
        const QByteArray expected_ = (expected);                                                                       \
        if (actual_ != expected_)                                                                                      \
            QFAIL(("output differs from the expected text (\"$\" marks line ends):\n"                                  \
                   + TestDiff::unifiedDiff(expected_, actual_, TestDiff::MarkedLineEnds))                              \
                      .constData());                                                                                   \
    } while (false)

} // namespace GeneratorTest
