#include "writerheader.h"

#include "codetext.h"
#include "item.h"

namespace {

// The data-type macros; 8 is missing on purpose (it is the escape to the extended types).
const char opening[] = "#ifndef ZAT16_TAGS_H  /* Automagically generated -- do not edit */\n"
                       "#define ZAT16_TAGS_H\n"
                       "\n"
                       "#define ZAT16DT_Binary           0\n"
                       "#define ZAT16DT_Integer          1\n"
                       "#define ZAT16DT_Bool             2\n"
                       "#define ZAT16DT_String           3\n"
                       "#define ZAT16DT_Date             4\n"
                       "#define ZAT16DT_Time             5\n"
                       "#define ZAT16DT_DateTime         6\n"
                       "#define ZAT16DT_BitArray         7\n"
                       "#define ZAT16DT_NetworkAddress   9\n"
                       "\n"
                       "#define ZAT16DT_List             12\n"
                       "#define ZAT16DT_Request          13\n"
                       "#define ZAT16DT_Answer           14\n"
                       "#define ZAT16DT_Message          15\n"
                       "\n"
                       "#define ZAT16DT_ExtPoint         0x80\n"
                       "#define ZAT16DT_ExtRect          0x81\n"
                       "#define ZAT16DT_ExtSize          0x82\n"
                       "\n";

constexpr int NameWidth = 45;

} // namespace

namespace ZAT16 {

// Macro lines are laid out by beginMacro(), not as aligned entries.
WriterHeader::WriterHeader()
    : CodeWriter({ opening, "#endif\n", false, "", "", "", "", "", { BitNumberAsDisplayed, BitMask }, 2 })
{
}

void WriterHeader::beginMacro(std::initializer_list<QStringView> parts, int width)
{
    m_text += QLatin1String("#define ");
    const qsizetype start = m_text.size();
    for (QStringView part : parts)
        m_text += part;
    CodeText::padFrom(m_text, start, width);
    m_text += QLatin1Char(' ');
}

void WriterHeader::writeTag(const Item &tag, Pass pass)
{
    const quint32 code = quint32(tag.id);
    beginMacro({ pass == Plain ? u"TAG_" : u"MSG_", tag.name }, NameWidth);
    appendTag2hex(m_text, code);
    const QString type = typeName(code);
    if (!type.isEmpty()) {
        m_text += QLatin1String("  /* ");
        CodeText::appendJustified(m_text, type, 8);
        m_text += QLatin1String(" */");
    }
    m_text += QLatin1Char('\n');
}

bool WriterHeader::takesEntry(const Item &entry, Value value) const
{
    return CodeWriter::takesEntry(entry, value) && !entry.name.isEmpty();
}

void WriterHeader::writeEntry(const Item &tag, const Item &entry, Value value, int count, int digits)
{
    const char16_t *prefix = value == EnumValue ? u"ENU_" : value == BitMask ? u"MSK_" : u"BIT_";
    beginMacro({ prefix, tag.name, u"_", entry.name }, NameWidth);
    appendValue(entry, value, count, digits);
    m_text += QLatin1Char('\n');
}

void WriterHeader::endList(const Item &tag, const Item &list, int count)
{
    // One column wider than every other macro, as the header always had it.
    if (list.type == Enums && count) {
        beginMacro({ u"CNT_", tag.name }, NameWidth + 1);
        CodeText::appendDecimal(m_text, qint64(count));
        m_text += QLatin1Char('\n');
    }
    m_text += QLatin1Char('\n');
}

} // namespace ZAT16
