#include "writercpplut.h"

#include "item.h"
#include "taglisting.h"

namespace ZAT16 {

namespace {

const char16_t topLevelTable[] = u"ToplevelTags";

} // namespace

WriterCppLut::WriterCppLut()
    : CodeWriter({ "#ifndef ZAT16_LOOKUP_H  /* Automagically generated -- do not edit */\n"
                   "#define ZAT16_LOOKUP_H\n\n",
                   "#endif\n",
                   true,
                   "  { ",
                   "\"",
                   "\",",
                   " ",
                   " },",
                   { BitNumber },
                   1 })
{
}

void WriterCppLut::writeNameTableHeader(QStringView name, int type)
{
    appendIndented("  static const NameLookupTable nameLookup");
    m_text += name;
    m_text += QLatin1String("[] = {\n");
    appendIndented("    { \"");
    m_text += name;
    m_text += QLatin1String("\", ");
    m_text += QString::number(type);
    m_text += QLatin1String(" }, // Name and type of the lookup table");
}

void WriterCppLut::writeTableFooter()
{
    appendIndented("    { 0, 0 },\n");
    appendIndented("  };\n\n");
}

void WriterCppLut::beginPass(Pass pass)
{
    if (pass != Pairs)
        return;
    appendIndented("namespace ZAT16 {\n\n");
    writeNameTableHeader(topLevelTable, 0);
}

void WriterCppLut::writeTag(const Item &tag, Pass pass)
{
    CodeWriter::writeTag(tag, pass);
    // Codes with 10 or 11 in the type nibble have no type name: the comment stays empty.
    m_text += QLatin1String(" // ");
    m_text += typeName(quint32(tag.id));
}

void WriterCppLut::endTags()
{
    // Without rows the footer follows the header on the same line.
    writeTableFooter();
}

// A tag's enumeration table and bit table share the name "nameLookup" + tag name.
void WriterCppLut::beginGroup(const Item &tag, Value value)
{
    writeNameTableHeader(tag.name, value == EnumValue ? 1 : 2);
}

void WriterCppLut::endGroup(const Item &, Value, int)
{
    m_text += QLatin1Char('\n');
    writeTableFooter();
}

void WriterCppLut::writeTagRow(const Item *tag)
{
    flushIfLarge();
    beginLine();
    // Three blanks line "~0U" up with the six characters of a tag code.
    if (tag)
        appendTag2hex(m_text, quint32(tag->id));
    else
        m_text += QLatin1String("   ~0U");
    m_text += QLatin1String(", ");
    const qsizetype start = m_text.size();
    m_text += QLatin1String("nameLookup");
    if (tag)
        m_text += tag->name;
    else
        m_text += QStringView(topLevelTable);
    padToColumn(start, 44);
    m_text += QLatin1String(" },");
}

void WriterCppLut::writeTrailer(const TagListing &listing)
{
    appendIndented("  static const TagLookupTable tagLookup[] = {");
    writeTagRow(nullptr);
    for (const TagListing::Lists &lists : listing.withLists())
        writeTagRow(lists.tag);
    // A tag with a bit list is listed a second time; the table has always been laid out so.
    for (const TagListing::Lists &lists : listing.withLists()) {
        if (lists.bits)
            writeTagRow(lists.tag);
    }
    m_text += QLatin1Char('\n');
    writeTableFooter();
    m_text += QLatin1String("}\n\n");
}

} // namespace ZAT16
