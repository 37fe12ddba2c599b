#pragma once

#include "codewriter.h"

#include <QStringView>

namespace ZAT16 {

/// Generates a C++ header of constant lookup tables: a name table of all top-level tags, one
/// name table per tag for its enumeration values and one for its bits, and a tag table from
/// tag codes to the name tables. The record types NameLookupTable and TagLookupTable are
/// defined by the code that includes the header. Reads the writer texts prologue, epilogue,
/// nameSuffix, outerIndent and innerIndent.
class WriterCppLut : public CodeWriter
{
public:
    WriterCppLut();

private:
    void beginPass(Pass pass) override;
    void writeTag(const Item &tag, Pass pass) override;
    void endTags() override;
    void beginGroup(const Item &tag, Value value) override;
    void endGroup(const Item &tag, Value value, int count) override;
    void writeTrailer(const TagListing &listing) override;

    /// Opens the name table "nameLookup" + `name` with its first row giving name and `type`.
    void writeNameTableHeader(QStringView name, int type);
    /// One tag-table row pointing at the name table of `tag`, or with a null `tag` at the table
    /// of the top-level tags.
    void writeTagRow(const Item *tag);
    /// Closes any table.
    void writeTableFooter();
};

} // namespace ZAT16
