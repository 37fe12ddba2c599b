#pragma once

#include "writer.h"

#include <QString>

namespace ZAT16 {

/// Generates C# enumerations: TagID with every tag code, and per tag <tag>Enums with its
/// enumeration values, <tag>Bits with its bit numbers and <tag>Masks with its bit masks. Reads
/// the writer texts prologue, epilogue, nameSuffix, outerIndent and innerIndent.
class WriterCs : public Writer
{
public:
    bool writeDefinitions(const Item *root) override;
    /// Appends the TagID entry of one tag.
    void writeTag(const Item *tag);

private:
    /// Appends "\n" + indents + `name` and the suffix padded + " = "; the value and "," follow.
    void beginEntry(const QString &name);
    /// Appends "\n" + outer indent + "public enum " + `name` + "\n" + outer indent + "{".
    void writeEnumHeader(const QString &name, const char *suffix);
    /// Appends "\n" + outer indent + "}\n".
    void writeEnumFooter();

    QString m_text; ///< the output of the running writeDefinitions()
};

} // namespace ZAT16
