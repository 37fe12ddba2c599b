#pragma once

#include "writer.h"

#include <QString>

namespace ZAT16 {

/// Generates a C++ header of constant lookup tables: a name table of all top-level tags, one
/// name table per tag for its enumeration values and one for its bits, and a tag table from
/// tag codes to the name tables. The record types NameLookupTable and TagLookupTable are
/// defined by the code that includes the header. Reads the writer texts prologue, epilogue,
/// nameSuffix, outerIndent and innerIndent.
class WriterCppLut : public Writer
{
public:
    bool writeDefinitions(const Item *root) override;

    /// Opens the name table "nameLookup" + `name` with its first row giving name and `type`.
    void writeNameLutHeader(const QString &name, int type);
    /// One name-table row; it begins with its line break.
    void writeNameValue(const QString &name, const QString &value);
    /// A top-level name-table row for a tag, with its type name as a trailing comment.
    void writeName(const Item *tag);
    /// Opens the tag table.
    void writeTagLutHeader();
    /// One tag-table row pointing at "nameLookup" + `name`; it begins with its line break.
    void writeTag(const QString &code, const QString &name);
    void writeTag(const Item *tag);
    /// Closes any table.
    void writeLutFooter();

private:
    /// writeNameValue() up to the value, which follows with " },".
    void beginNameValue(const QString &name);
    /// writeTag() up to the code, and after it.
    void beginTagRow();
    void endTagRow(const QString &name);

    QString m_text; ///< the output of the running writeDefinitions()
};

} // namespace ZAT16
