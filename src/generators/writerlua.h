#pragma once

#include "writer.h"

#include <QStringView>

namespace ZAT16 {

struct ItemData;

/// Generates a Lua script of lookup tables under the global table `zat16` (which the loading
/// code creates): tag names to codes, per tag its enumeration names to values and its bit
/// names to masks. The configurable writer texts are not used.
class WriterLua : public Writer
{
public:
    bool writeDefinitions(const Item *root) override;
    /// Appends one entry of the tag table; it begins with its line break.
    void writeTag(const ItemData &tag);

private:
    /// Appends "  " + `key` padded to 50 + " = "; the value and ",\n" follow.
    void beginEntry(QStringView key);

    QString m_text; ///< the output of the running writeDefinitions()
};

} // namespace ZAT16
