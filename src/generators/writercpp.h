#pragma once

#include "codewriter.h"

namespace ZAT16 {

/// Generates a C++ header of enumerations in namespace ZAT16: the data types (Type::T), the
/// nested-tag codes (Cmd::T), the plain tag codes (Tag::T), and per tag its enumeration values,
/// bit numbers and bit masks. Reads the writer texts prologue, epilogue, nameSuffix, outerIndent
/// and innerIndent.
class WriterCpp : public CodeWriter
{
public:
    WriterCpp();

private:
    void beginPass(Pass pass) override;
    void endTags() override;
    void beginGroup(const Item &tag, Value value) override;
    void endGroup(const Item &tag, Value value, int count) override;
    void writeTrailer(const TagListing &listing) override;
};

} // namespace ZAT16
