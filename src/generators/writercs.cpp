#include "writercs.h"

#include "item.h"

namespace ZAT16 {

// The frame is the prologue and the epilogue alone.
WriterCs::WriterCs()
    : CodeWriter({ "", "", true, "", "", "", " = ", ",", { BitNumber, BitMask }, 2 })
{
}

void WriterCs::beginPass(Pass pass)
{
    if (pass != Pairs)
        return;
    appendIndented("public enum TagID\n");
    appendIndented("{");
}

void WriterCs::endTags()
{
    // Without entries the braces end up on one line: "{}".
    appendIndented("}\n");
}

void WriterCs::beginGroup(const Item &tag, Value value)
{
    m_text += QLatin1Char('\n');
    appendIndented("public enum ");
    m_text += tag.name;
    m_text += QLatin1String(value == EnumValue ? "Enums" : value == BitNumber ? "Bits" : "Masks");
    m_text += QLatin1Char('\n');
    appendIndented("{");
}

void WriterCs::endGroup(const Item &, Value, int)
{
    m_text += QLatin1Char('\n');
    appendIndented("}\n");
}

} // namespace ZAT16
