#pragma once

#include "writer.h"

#include <QStringView>

#include <initializer_list>

namespace ZAT16 {

struct ItemData;

/// Generates the C header of a definitions tree: one #define per tag code, enumeration value,
/// bit number and bit mask, after the fixed data-type macros. The output depends on the tree
/// alone; the configurable writer texts are not used.
class WriterHeader : public Writer
{
public:
    bool writeDefinitions(const Item *root) override;
    /// Appends the macro line of one tag, named `prefix` + "_" + its name.
    void writeTag(const ItemData &tag, const QString &prefix);

private:
    /// Appends "#define " + the name made of `parts`, padded to `width`, + " "; the value and the
    /// line break follow.
    void beginMacro(std::initializer_list<QStringView> parts, int width);

    QString m_text; ///< the output of the running writeDefinitions()
};

} // namespace ZAT16
