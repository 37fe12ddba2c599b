#include "writercpplut.h"

#include "codetext.h"
#include "item.h"
#include "taglisting.h"

namespace ZAT16 {

void WriterCppLut::writeNameLutHeader(const QString &name, int type)
{
    m_text += outerIndent;
    m_text += QLatin1String("  static const NameLookupTable nameLookup");
    m_text += name;
    m_text += QLatin1String("[] = {\n");
    m_text += outerIndent;
    m_text += QLatin1String("    { \"");
    m_text += name;
    m_text += QLatin1String("\", ");
    m_text += QString::number(type);
    m_text += QLatin1String(" }, // Name and type of the lookup table");
}

void WriterCppLut::writeNameValue(const QString &name, const QString &value)
{
    beginNameValue(name);
    m_text += value;
    m_text += QLatin1String(" },");
}

void WriterCppLut::beginNameValue(const QString &name)
{
    CodeText::flushIfLarge(*this, m_text);
    m_text += QLatin1Char('\n');
    m_text += outerIndent;
    m_text += innerIndent;
    m_text += QLatin1String("  { ");
    const qsizetype start = m_text.size();
    m_text += QLatin1Char('"');
    m_text += name;
    m_text += nameSuffix;
    m_text += QLatin1String("\",");
    CodeText::padFrom(m_text, start, 50 - innerIndent.size());
    m_text += QLatin1Char(' ');
}

void WriterCppLut::writeName(const Item *tag)
{
    const quint32 code = quint32(tag->id);
    beginNameValue(tag->name);
    appendTag2hex(m_text, code);
    m_text += QLatin1String(" },");
    // Codes with 10 or 11 in the type nibble have no type name: the comment stays empty.
    m_text += QLatin1String(" // ");
    m_text += typeName(code);
}

void WriterCppLut::writeTagLutHeader()
{
    m_text += outerIndent;
    m_text += QLatin1String("  static const TagLookupTable tagLookup[] = {");
}

void WriterCppLut::writeTag(const QString &code, const QString &name)
{
    beginTagRow();
    m_text += code;
    endTagRow(name);
}

void WriterCppLut::beginTagRow()
{
    CodeText::flushIfLarge(*this, m_text);
    m_text += QLatin1Char('\n');
    m_text += outerIndent;
    m_text += innerIndent;
    m_text += QLatin1String("  { ");
}

void WriterCppLut::endTagRow(const QString &name)
{
    m_text += QLatin1String(", ");
    const qsizetype start = m_text.size();
    m_text += QLatin1String("nameLookup");
    m_text += name;
    CodeText::padFrom(m_text, start, 44 - innerIndent.size());
    m_text += QLatin1String(" },");
}

void WriterCppLut::writeTag(const Item *tag)
{
    beginTagRow();
    appendTag2hex(m_text, quint32(tag->id));
    endTagRow(tag->name);
}

void WriterCppLut::writeLutFooter()
{
    m_text += outerIndent;
    m_text += QLatin1String("    { 0, 0 },\n");
    m_text += outerIndent;
    m_text += QLatin1String("  };\n\n");
}

bool WriterCppLut::writeDefinitions(const Item *root)
{
    m_text.clear();
    m_text.reserve(CodeText::flushSize + 1024);
    const bool standardFrame = prologue.isEmpty() && epilogue.isEmpty();
    if (standardFrame)
        m_text += QLatin1String("#ifndef ZAT16_LOOKUP_H  /* Automagically generated -- do not edit */\n"
                                "#define ZAT16_LOOKUP_H\n\n");
    else
        m_text += prologue;
    m_text += outerIndent;
    m_text += QLatin1String("namespace ZAT16 {\n\n");

    writeNameLutHeader(QStringLiteral("ToplevelTags"), 0);
    const bool hasTags = root && !root->children.isEmpty();
    const TagListing listing(hasTags ? root : nullptr);
    if (hasTags) {
        for (const QList<const Item *> *pass : { &listing.pairs(), &listing.nested(), &listing.plain() }) {
            for (const Item *tag : *pass)
                writeName(tag);
            if (!pass->isEmpty())
                m_text += QLatin1Char('\n');
        }
    }
    // Without rows the footer follows the header on the same line.
    writeLutFooter();

    if (hasTags) {
        // A tag's enumeration table and bit table share the name "nameLookup" + tag name.
        for (const TagListing::Lists &lists : listing.withLists()) {
            const Item *tag = lists.tag;
            const Item *enums = lists.enums;
            if (!enums || enums->children.isEmpty())
                continue;
            const int count = enums->enumCount();
            bool any = false;
            for (const Item *value : enums->children) {
                if (!value->isValid(Enum))
                    continue;
                if (!any) {
                    writeNameLutHeader(tag->name, 1);
                    any = true;
                }
                beginNameValue(value->name);
                if (count)
                    CodeText::appendDecimal(m_text, value->id);
                else
                    value->appendId(m_text);
                m_text += QLatin1String(" },");
            }
            if (any) {
                m_text += QLatin1Char('\n');
                writeLutFooter();
            }
        }

        for (const TagListing::Lists &lists : listing.withLists()) {
            const Item *tag = lists.tag;
            const Item *bits = lists.bits;
            if (!bits || bits->children.isEmpty())
                continue;
            bool any = false;
            for (const Item *bit : bits->children) {
                if (!bit->isValid(Bit))
                    continue;
                if (!any) {
                    writeNameLutHeader(tag->name, 2);
                    any = true;
                }
                beginNameValue(bit->name);
                CodeText::appendDecimal(m_text, bit->id);
                m_text += QLatin1String(" },");
            }
            if (any) {
                m_text += QLatin1Char('\n');
                writeLutFooter();
            }
        }
    }

    writeTagLutHeader();
    // Three blanks line "~0U" up with the six characters of a tag code.
    writeTag(QStringLiteral("   ~0U"), QStringLiteral("ToplevelTags"));
    if (hasTags) {
        for (const TagListing::Lists &lists : listing.withLists())
            writeTag(lists.tag);
        // A tag with a bit list is listed a second time; the table has always been laid out so.
        for (const TagListing::Lists &lists : listing.withLists()) {
            if (lists.bits)
                writeTag(lists.tag);
        }
    }
    m_text += QLatin1Char('\n');
    writeLutFooter();
    m_text += QLatin1String("}\n\n");
    if (standardFrame)
        m_text += QLatin1String("#endif\n");
    else
        m_text += epilogue;
    write(m_text);
    m_text.clear();
    return true;
}

} // namespace ZAT16
