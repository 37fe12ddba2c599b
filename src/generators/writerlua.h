#pragma once

#include "codewriter.h"

#include <QStringView>

namespace ZAT16 {

/// Generates a Lua script of lookup tables under the global table `zat16` (which the loading
/// code creates): tag names to codes, per tag its enumeration names to values and its bit
/// names to masks. The configurable writer texts are not used.
class WriterLua : public CodeWriter
{
public:
    WriterLua();

private:
    void beginPass(Pass pass) override;
    void writeTag(const Item &tag, Pass pass) override;
    void endTags() override;
    void beginList(const Item &tag, const Item &list) override;
    void endList(const Item &tag, const Item &list, int count) override;
    bool takesEntry(const Item &entry, Value value) const override;
    void writeEntry(const Item &tag, const Item &entry, Value value, int count, int digits) override;

    /// Appends "  " + `key` padded to 50 + " = "; the value and ",\n" follow.
    void beginKey(QStringView key);
};

} // namespace ZAT16
