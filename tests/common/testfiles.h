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

/// A small document for the window's tests. Rows of the root: 0 Power, 1 Mode { 0 enums {0 Off,
/// 1 On} }, 2 comment line, 3 blank line, 4 Flags { 0 bits {0 Ready} }.
inline const QByteArray windowDefinitions = "<?xml version=\"1.0\" encoding=\"UTF-8\"?> <!-- -*- nxml -*- -->\n"
                                            "<zat16>\n"
                                            "  <tag name=\"Power\" id=\"0x2001\"/>\n"
                                            "  <tag name=\"Mode\" id=\"0x1002\">\n"
                                            "    <enums>\n"
                                            "      <enum name=\"Off\" id=\"0\"/>\n"
                                            "      <enum name=\"On\" id=\"1\"/>\n"
                                            "    </enums>\n"
                                            "  </tag>\n"
                                            "  <!-- a comment line -->\n"
                                            "\n"
                                            "  <tag name=\"Flags\" id=\"0x7001\">\n"
                                            "    <bits>\n"
                                            "      <bit name=\"Ready\" id=\"0\"/>\n"
                                            "    </bits>\n"
                                            "  </tag>\n"
                                            "</zat16>\n";

} // namespace TestFiles
