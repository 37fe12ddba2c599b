#include "writerlua.h"

#include "codetext.h"
#include "item.h"

namespace {

constexpr int KeyWidth = 50;

} // namespace

namespace ZAT16 {

// Table rows are laid out by beginKey(), not as aligned entries.
WriterLua::WriterLua()
    : CodeWriter(
        { "\n-- Automagically generated -- do not edit\n\n", "", false, "", "", "", "", "", { BitMaskInt32 }, 1 })
{
}

void WriterLua::beginPass(Pass pass)
{
    if (pass == Pairs)
        m_text += QLatin1String("zat16.lutTag = {");
}

// Each entry starts its own line, so the line break after a pass ends the pass's last line and
// the next pass begins with an empty line.
void WriterLua::writeTag(const Item &tag, Pass)
{
    const quint32 code = quint32(tag.id);
    m_text += QLatin1String("\n  ");
    CodeText::appendJustified(m_text, tag.name, KeyWidth);
    m_text += QLatin1String(" = ");
    appendTag2hex(m_text, code);
    m_text += QLatin1Char(',');
    const QString type = typeName(code);
    if (!type.isEmpty()) {
        // The type name is padded too, so short names leave blanks at the end of the line.
        m_text += QLatin1String("    -- ");
        CodeText::appendJustified(m_text, type, 8);
    }
}

void WriterLua::endTags()
{
    m_text += QLatin1String("}\n\n");
}

void WriterLua::beginList(const Item &tag, const Item &list)
{
    m_text += QLatin1String(list.type == Enums ? "zat16.lut" : "zat16.lutBit");
    m_text += tag.name;
    m_text += QLatin1String(" = {\n");
}

void WriterLua::endList(const Item &, const Item &, int)
{
    m_text += QLatin1String("}\n\n");
}

bool WriterLua::takesEntry(const Item &entry, Value value) const
{
    return entry.hasId && (value != EnumValue || !entry.name.isEmpty() || !entry.comment.isEmpty());
}

void WriterLua::writeEntry(const Item &, const Item &entry, Value value, int count, int digits)
{
    if (value != EnumValue || !entry.name.isEmpty()) {
        beginKey(entry.name);
    } else {
        // A nameless value is keyed by its comment, as a string key that keeps the comment's
        // double quotes: ['"comment"'].
        beginKey(QLatin1String("['\"") + entry.comment + QLatin1String("\"']"));
    }
    appendValue(entry, value, count, digits);
    m_text += QLatin1String(",\n");
}

void WriterLua::beginKey(QStringView key)
{
    m_text += QLatin1String("  ");
    const qsizetype start = m_text.size();
    m_text += key;
    CodeText::padFrom(m_text, start, KeyWidth);
    m_text += QLatin1String(" = ");
}

} // namespace ZAT16
