#include "writercs.h"

#include "codetext.h"
#include "item.h"
#include "taglisting.h"

namespace ZAT16 {

void WriterCs::beginEntry(const QString &name)
{
    CodeText::flushIfLarge(*this, m_text);
    m_text += QLatin1Char('\n');
    m_text += outerIndent;
    m_text += innerIndent;
    const qsizetype start = m_text.size();
    m_text += name;
    m_text += nameSuffix;
    CodeText::padFrom(m_text, start, 50 - innerIndent.size());
    m_text += QLatin1String(" = ");
}

void WriterCs::writeTag(const Item *tag)
{
    beginEntry(tag->name);
    appendTag2hex(m_text, quint32(tag->id));
    m_text += QLatin1Char(',');
}

void WriterCs::writeEnumHeader(const QString &name, const char *suffix)
{
    m_text += QLatin1Char('\n');
    m_text += outerIndent;
    m_text += QLatin1String("public enum ");
    m_text += name;
    m_text += QLatin1String(suffix);
    m_text += QLatin1Char('\n');
    m_text += outerIndent;
    m_text += QLatin1Char('{');
}

void WriterCs::writeEnumFooter()
{
    m_text += QLatin1Char('\n');
    m_text += outerIndent;
    m_text += QLatin1String("}\n");
}

bool WriterCs::writeDefinitions(const Item *root)
{
    m_text.clear();
    m_text.reserve(CodeText::flushSize + 1024);
    m_text += prologue;
    m_text += outerIndent;
    m_text += QLatin1String("public enum TagID\n");
    m_text += outerIndent;
    m_text += QLatin1Char('{');

    const bool hasTags = root && !root->children.isEmpty();
    const TagListing listing(hasTags ? root : nullptr);
    if (hasTags) {
        for (const QList<const Item *> *pass : { &listing.pairs(), &listing.nested(), &listing.plain() }) {
            for (const Item *tag : *pass)
                writeTag(tag);
            if (!pass->isEmpty())
                m_text += QLatin1Char('\n');
        }
    }
    // Without entries the braces end up on one line: "{}".
    m_text += outerIndent;
    m_text += QLatin1String("}\n");

    if (hasTags) {
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
                    writeEnumHeader(tag->name, "Enums");
                    any = true;
                }
                beginEntry(value->name);
                if (count)
                    CodeText::appendDecimal(m_text, value->id);
                else
                    value->appendId(m_text);
                m_text += QLatin1Char(',');
            }
            if (any)
                writeEnumFooter();
        }

        for (const TagListing::Lists &lists : listing.withLists()) {
            const Item *tag = lists.tag;
            const Item *bits = lists.bits;
            if (!bits || bits->children.isEmpty())
                continue;
            const int digits = CodeText::maskDigits(bits);
            for (int group = 0; group < 2; ++group) {
                bool any = false;
                for (const Item *bit : bits->children) {
                    if (!bit->isValid(Bit))
                        continue;
                    if (!any) {
                        writeEnumHeader(tag->name, group == 0 ? "Bits" : "Masks");
                        any = true;
                    }
                    beginEntry(bit->name);
                    if (group == 0)
                        CodeText::appendDecimal(m_text, bit->id);
                    else
                        m_text += CodeText::maskText(digits, bit->id);
                    m_text += QLatin1Char(',');
                }
                if (any)
                    writeEnumFooter();
            }
        }
    }

    m_text += epilogue;
    write(m_text);
    m_text.clear();
    return true;
}

} // namespace ZAT16
