#pragma once

#include "codewriter.h"

#include <QStringView>

#include <initializer_list>

namespace ZAT16 {

/// Generates the C header of a definitions tree: one #define per tag code, enumeration value,
/// bit number and bit mask, after the fixed data-type macros. The output depends on the tree
/// alone; the configurable writer texts are not used.
class WriterHeader : public CodeWriter
{
public:
    WriterHeader();

private:
    void writeTag(const Item &tag, Pass pass) override;
    void endList(const Item &tag, const Item &list, int count) override;
    bool takesEntry(const Item &entry, Value value) const override;
    void writeEntry(const Item &tag, const Item &entry, Value value, int count, int digits) override;

    /// Appends "#define " + the name made of `parts`, padded to `width`, + " "; the value and the
    /// line break follow.
    void beginMacro(std::initializer_list<QStringView> parts, int width);
};

} // namespace ZAT16
