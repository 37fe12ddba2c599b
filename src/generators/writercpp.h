#pragma once

#include "writer.h"

#include <QString>

namespace ZAT16 {

/// Generates a C++ header of enumerations in namespace ZAT16: the data types (Type::T), the
/// nested-tag codes (Cmd::T), the plain tag codes (Tag::T), and per tag its enumeration values,
/// bit numbers and bit masks. Reads the writer texts prologue, epilogue, nameSuffix, outerIndent
/// and innerIndent.
class WriterCpp : public Writer
{
public:
    bool writeDefinitions(const Item *root) override;
    /// Appends the entry of one tag in Cmd::T or Tag::T.
    void writeTag(const Item *tag);

private:
    /// Appends "\n" + indents + "    " + `name` and the suffix padded + " = "; the value and ","
    /// follow.
    void beginEntry(const QString &name);
    /// Appends the outer indent and the fixed text `text`. (A free operator+(QString, const
    /// char *) for this would be ambiguous with Qt's own.)
    void writeFixed(const char *text);

    QString m_text; ///< the output of the running writeDefinitions()
};

} // namespace ZAT16
