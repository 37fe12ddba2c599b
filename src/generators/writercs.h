#pragma once

#include "codewriter.h"

namespace ZAT16 {

/// Generates C# enumerations: TagID with every tag code, and per tag <tag>Enums with its
/// enumeration values, <tag>Bits with its bit numbers and <tag>Masks with its bit masks. Reads
/// the writer texts prologue, epilogue, nameSuffix, outerIndent and innerIndent.
class WriterCs : public CodeWriter
{
public:
    WriterCs();

private:
    void beginPass(Pass pass) override;
    void endTags() override;
    void beginGroup(const Item &tag, Value value) override;
    void endGroup(const Item &tag, Value value, int count) override;
};

} // namespace ZAT16
