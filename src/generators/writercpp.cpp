#include "writercpp.h"

#include "item.h"

namespace ZAT16 {

WriterCpp::WriterCpp()
    : CodeWriter({ "#ifndef ZAT16_ENUMS_H  /* Automagically generated -- do not edit */\n"
                   "#define ZAT16_ENUMS_H\n\n",
                   "\n#endif\n",
                   true,
                   "    ",
                   "",
                   "",
                   " = ",
                   ",",
                   { BitNumber, BitMask },
                   2 })
{
}

void WriterCpp::beginPass(Pass pass)
{
    if (pass == Nested)
        return;
    if (pass == Plain) {
        appendIndented("    };\n");
        appendIndented("  }\n\n");
        appendIndented("  namespace Tag {\n");
        appendIndented("    enum T {");
        return;
    }
    appendIndented("namespace ZAT16 {\n\n");
    appendIndented("  namespace Type {\n");
    appendIndented("    enum T {\n");
    for (const char *line : { "      Binary         = 0,\n",
                              "      Integer        = 1,\n",
                              "      Bool           = 2,\n",
                              "      String         = 3,\n",
                              "      Date           = 4,\n",
                              "      Time           = 5,\n",
                              "      DateTime       = 6,\n",
                              "      BitArray       = 7,\n",
                              "      NetworkAddress = 9,\n" })
        appendIndented(line);
    // The empty lines between the groups carry no indent.
    m_text += QLatin1Char('\n');
    for (const char *line : { "      List           = 12,\n",
                              "      Request        = 13,\n",
                              "      Answer         = 14,\n",
                              "      Message        = 15,\n" })
        appendIndented(line);
    m_text += QLatin1Char('\n');
    for (const char *line :
         { "      ExtPoint       = 0x80,\n", "      ExtRect        = 0x81,\n", "      ExtSize        = 0x82,\n" })
        appendIndented(line);
    appendIndented("    };\n");
    appendIndented("  }\n\n");
    // The request/answer pairs and the other nested tags share Cmd::T.
    appendIndented("  namespace Cmd {\n");
    appendIndented("    enum T {");
}

void WriterCpp::endTags()
{
    appendIndented("    };\n");
    appendIndented("  }\n");
}

// Enumeration values and masks go in a namespace named after the tag, bit numbers in <tag>Bits.
void WriterCpp::beginGroup(const Item &tag, Value value)
{
    m_text += QLatin1Char('\n');
    appendIndented("  namespace ");
    m_text += tag.name;
    m_text += QLatin1String(value == BitNumber ? "Bits {\n" : " {\n");
    appendIndented("    enum T {");
}

void WriterCpp::endGroup(const Item &, Value value, int count)
{
    m_text += QLatin1Char('\n');
    if (value != EnumValue) {
        appendIndented("    };\n");
        appendIndented("  }\n");
        return;
    }
    appendIndented("    };");
    if (count) {
        m_text += QLatin1Char('\n');
        appendIndented("    enum C {\n");
        appendIndented("      EnumCount = ");
        m_text += QString::number(count);
        // This closing line has never carried the outer indent.
        m_text += QLatin1String("\n    };");
    }
    // The namespace of an enumeration is closed with a semicolon.
    m_text += QLatin1Char('\n');
    appendIndented("  };\n");
}

void WriterCpp::writeTrailer(const TagListing &)
{
    appendIndented("}\n");
}

} // namespace ZAT16
