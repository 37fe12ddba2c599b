#include "writerheader.h"

#include "codetext.h"
#include "item.h"
#include "taglisting.h"

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

void WriterHeader::beginMacro(std::initializer_list<QStringView> parts, int width)
{
    CodeText::flushIfLarge(*this, m_text);
    m_text += QLatin1String("#define ");
    const qsizetype start = m_text.size();
    for (QStringView part : parts)
        m_text += part;
    CodeText::padFrom(m_text, start, width);
    m_text += QLatin1Char(' ');
}

void WriterHeader::writeTag(const ItemData &tag, const QString &prefix)
{
    CodeText::flushIfLarge(*this, m_text);
    const quint32 code = quint32(tag.id);
    m_text += QLatin1String("#define ");
    const qsizetype start = m_text.size();
    m_text += prefix;
    m_text += QLatin1Char('_');
    m_text += tag.name;
    CodeText::padFrom(m_text, start, NameWidth);
    m_text += QLatin1Char(' ');
    appendTag2hex(m_text, code);
    const QString type = typeName(code);
    if (!type.isEmpty()) {
        m_text += QLatin1String("  /* ");
        CodeText::appendJustified(m_text, type, 8);
        m_text += QLatin1String(" */");
    }
    m_text += QLatin1Char('\n');
}

bool WriterHeader::writeDefinitions(const Item *root)
{
    m_text.clear();
    m_text.reserve(CodeText::flushSize + 1024);
    m_text += QLatin1String(opening);

    if (root && !root->children.isEmpty()) {
        const TagListing listing(root);
        const QString msg = QStringLiteral("MSG");
        const QString tagPrefix = QStringLiteral("TAG");
        for (const Item *tag : listing.pairs())
            writeTag(*tag, msg);
        if (!listing.pairs().isEmpty())
            m_text += QLatin1Char('\n');
        for (const Item *tag : listing.nested())
            writeTag(*tag, msg);
        if (!listing.nested().isEmpty())
            m_text += QLatin1Char('\n');
        for (const Item *tag : listing.plain())
            writeTag(*tag, tagPrefix);
        if (!listing.plain().isEmpty())
            m_text += QLatin1Char('\n');

        // Every valid tag gets its enumerations, also one whose code was a duplicate.
        const QString enu = QStringLiteral("ENU_");
        const QString underscore = QStringLiteral("_");
        const QString cnt = QStringLiteral("CNT_");
        for (const TagListing::Lists &lists : listing.withLists()) {
            const Item *tag = lists.tag;
            const Item *enums = lists.enums;
            if (!enums)
                continue;
            const int count = enums->enumCount();
            for (const Item *value : enums->children) {
                if (!value->isValid(Enum) || value->name.isEmpty())
                    continue;
                beginMacro({ enu, tag->name, underscore, value->name }, NameWidth);
                if (count)
                    CodeText::appendDecimal(m_text, value->id);
                else
                    value->appendId(m_text);
                m_text += QLatin1Char('\n');
            }
            // One column wider than every other macro, as the header always had it.
            if (count) {
                beginMacro({ cnt, tag->name }, NameWidth + 1);
                CodeText::appendDecimal(m_text, qint64(count));
                m_text += QLatin1Char('\n');
            }
            m_text += QLatin1Char('\n');
        }

        const QString bitPrefix = QStringLiteral("BIT_");
        const QString mskPrefix = QStringLiteral("MSK_");
        for (const TagListing::Lists &lists : listing.withLists()) {
            const Item *tag = lists.tag;
            const Item *bits = lists.bits;
            if (!bits)
                continue;
            if (!bits->children.isEmpty()) {
                const int digits = CodeText::maskDigits(bits);
                for (const Item *bit : bits->children) {
                    if (bit->isValid(Bit) && !bit->name.isEmpty()) {
                        beginMacro({ bitPrefix, tag->name, underscore, bit->name }, NameWidth);
                        bit->appendId(m_text);
                        m_text += QLatin1Char('\n');
                    }
                }
                for (const Item *bit : bits->children) {
                    if (bit->isValid(Bit) && !bit->name.isEmpty()) {
                        beginMacro({ mskPrefix, tag->name, underscore, bit->name }, NameWidth);
                        m_text += CodeText::maskText(digits, bit->id);
                        m_text += QLatin1Char('\n');
                    }
                }
            }
            m_text += QLatin1Char('\n');
        }
    }

    m_text += QLatin1String("#endif\n");
    write(m_text);
    m_text.clear();
    return true;
}

} // namespace ZAT16
