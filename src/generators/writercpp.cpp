#include "writercpp.h"

#include "codetext.h"
#include "item.h"
#include "taglisting.h"

namespace ZAT16 {

void WriterCpp::writeFixed(const char *text)
{
    m_text += outerIndent;
    m_text += QLatin1String(text);
}

void WriterCpp::beginEntry(const QString &name)
{
    CodeText::flushIfLarge(*this, m_text);
    m_text += QLatin1Char('\n');
    m_text += outerIndent;
    m_text += innerIndent;
    m_text += QLatin1String("    ");
    const qsizetype start = m_text.size();
    m_text += name;
    m_text += nameSuffix;
    CodeText::padFrom(m_text, start, 50 - innerIndent.size());
    m_text += QLatin1String(" = ");
}

void WriterCpp::writeTag(const Item *tag)
{
    beginEntry(tag->name);
    appendTag2hex(m_text, quint32(tag->id));
    m_text += QLatin1Char(',');
}

bool WriterCpp::writeDefinitions(const Item *root)
{
    m_text.clear();
    m_text.reserve(CodeText::flushSize + 1024);
    const bool standardFrame = prologue.isEmpty() && epilogue.isEmpty();
    if (standardFrame)
        m_text += QLatin1String("#ifndef ZAT16_ENUMS_H  /* Automagically generated -- do not edit */\n"
                                "#define ZAT16_ENUMS_H\n\n");
    else
        m_text += prologue;

    writeFixed("namespace ZAT16 {\n\n");
    writeFixed("  namespace Type {\n");
    writeFixed("    enum T {\n");
    for (const char *line : {"      Binary         = 0,\n",
                             "      Integer        = 1,\n",
                             "      Bool           = 2,\n",
                             "      String         = 3,\n",
                             "      Date           = 4,\n",
                             "      Time           = 5,\n",
                             "      DateTime       = 6,\n",
                             "      BitArray       = 7,\n",
                             "      NetworkAddress = 9,\n"})
        writeFixed(line);
    // The empty lines between the groups carry no indent.
    m_text += QLatin1Char('\n');
    for (const char *line : {"      List           = 12,\n",
                             "      Request        = 13,\n",
                             "      Answer         = 14,\n",
                             "      Message        = 15,\n"})
        writeFixed(line);
    m_text += QLatin1Char('\n');
    for (const char *line : {"      ExtPoint       = 0x80,\n",
                             "      ExtRect        = 0x81,\n",
                             "      ExtSize        = 0x82,\n"})
        writeFixed(line);
    writeFixed("    };\n");
    writeFixed("  }\n\n");
    writeFixed("  namespace Cmd {\n");
    writeFixed("    enum T {");

    const bool hasTags = root && !root->children.isEmpty();
    const TagListing listing(hasTags ? root : nullptr);
    for (const QList<const Item *> *pass : {&listing.pairs(), &listing.nested()}) {
        for (const Item *tag : *pass)
            writeTag(tag);
        if (!pass->isEmpty())
            m_text += QLatin1Char('\n');
    }
    writeFixed("    };\n");
    writeFixed("  }\n\n");
    writeFixed("  namespace Tag {\n");
    writeFixed("    enum T {");
    for (const Item *tag : listing.plain())
        writeTag(tag);
    if (!listing.plain().isEmpty())
        m_text += QLatin1Char('\n');
    writeFixed("    };\n");
    writeFixed("  }\n");

    if (hasTags) {
        for (const TagListing::Lists &lists : listing.withLists()) {
            const Item *tag = lists.tag;
            const Item *enums = lists.enums;
            if (!enums)
                continue;
            const int count = enums->enumCount();
            bool any = false;
            for (const Item *value : enums->children) {
                if (!value->isValid(Enum))
                    continue;
                if (!any) {
                    m_text += QLatin1Char('\n');
                    writeFixed("  namespace ");
                    m_text += tag->name;
                    m_text += QLatin1String(" {\n");
                    writeFixed("    enum T {");
                    any = true;
                }
                beginEntry(value->name);
                if (count)
                    CodeText::appendDecimal(m_text, value->id);
                else
                    value->appendId(m_text);
                m_text += QLatin1Char(',');
            }
            if (!any)
                continue;
            m_text += QLatin1Char('\n');
            writeFixed("    };");
            if (count) {
                m_text += QLatin1Char('\n');
                writeFixed("    enum C {\n");
                writeFixed("      EnumCount = ");
                m_text += QString::number(count);
                // This closing line has never carried the outer indent.
                m_text += QLatin1String("\n    };");
            }
            // The namespace of an enumeration is closed with a semicolon.
            m_text += QLatin1Char('\n');
            writeFixed("  };\n");
        }

        for (const TagListing::Lists &lists : listing.withLists()) {
            const Item *tag = lists.tag;
            const Item *bits = lists.bits;
            if (!bits || bits->children.isEmpty())
                continue;
            const int digits = CodeText::maskDigits(bits);
            // Bit numbers in <tag>Bits, then masks in a namespace named after the tag itself.
            for (int group = 0; group < 2; ++group) {
                bool any = false;
                for (const Item *bit : bits->children) {
                    if (!bit->isValid(Bit))
                        continue;
                    if (!any) {
                        m_text += QLatin1Char('\n');
                        writeFixed("  namespace ");
                        m_text += tag->name;
                        m_text += QLatin1String(group == 0 ? "Bits {\n" : " {\n");
                        writeFixed("    enum T {");
                        any = true;
                    }
                    beginEntry(bit->name);
                    if (group == 0)
                        CodeText::appendDecimal(m_text, bit->id);
                    else
                        m_text += CodeText::maskText(digits, bit->id);
                    m_text += QLatin1Char(',');
                }
                if (any) {
                    m_text += QLatin1Char('\n');
                    writeFixed("    };\n");
                    writeFixed("  }\n");
                }
            }
        }
    }

    writeFixed("}\n");
    if (standardFrame)
        m_text += QLatin1String("\n#endif\n");
    else
        m_text += epilogue;
    write(m_text);
    m_text.clear();
    return true;
}

} // namespace ZAT16
