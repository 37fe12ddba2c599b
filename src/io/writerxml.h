#pragma once

#include "writer.h"

class QXmlStreamWriter;

namespace ZAT16 {

/// Saves an Item tree as a definitions file in the canonical layout: fixed declaration line,
/// two blanks of indentation per level, attributes in a fixed order, and the author's comments
/// and blank lines where they were.
class WriterXml : public Writer
{
public:
    WriterXml();
    ~WriterXml();

    bool writeDefinitions(const Item *root) override;
    bool writeItem(const Item *item);
    void writeItemAttributes(const Item *item);
    void writeIndent();

    QXmlStreamWriter *xml = nullptr;
    int depth = 0;
};

} // namespace ZAT16
