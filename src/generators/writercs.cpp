#include "writercs.h"

#include "codetext.h"
#include "item.h"
#include "taglisting.h"

namespace ZAT16 {

void WriterCs::writeEntry(const QString &name, const QString &value)
{
    m_text += QLatin1Char('\n');
    m_text += outerIndent;
    m_text += innerIndent;
    const qsizetype start = m_text.size();
    m_text += name;
    m_text += nameSuffix;
    CodeText::padFrom(m_text, start, 50 - innerIndent.size());
    m_text += QLatin1String(" = ");
    m_text += value;
    m_text += QLatin1Char(',');
}

void WriterCs::writeTag(const Item *tag)
{
    writeEntry(tag->name, tag2hex(quint32(tag->id)));
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
    m_text += prologue;
    m_text += outerIndent;
    m_text += QLatin1String("public enum TagID\n");
    m_text += outerIndent;
    m_text += QLatin1Char('{');

    const bool hasTags = root && !root->children.isEmpty();
    if (hasTags) {
        const TagListing listing(root);
        m_text.reserve((listing.pairs().size() + listing.nested().size() + listing.plain().size()) * 70);
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
        for (const Item *tag : root->children) {
            if (!tag->isValid(Tag))
                continue;
            const Item *enums = tag->findInTagByItemType(Enums);
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
                writeEntry(value->name, count ? QString::number(value->id) : value->formatId());
            }
            if (any)
                writeEnumFooter();
        }

        for (const Item *tag : root->children) {
            if (!tag->isValid(Tag))
                continue;
            const Item *bits = tag->findInTagByItemType(Bits);
            if (!bits || bits->children.isEmpty())
                continue;
            const char *format = CodeText::maskFormat(bits);
            for (int group = 0; group < 2; ++group) {
                bool any = false;
                for (const Item *bit : bits->children) {
                    if (!bit->isValid(Bit))
                        continue;
                    if (!any) {
                        writeEnumHeader(tag->name, group == 0 ? "Bits" : "Masks");
                        any = true;
                    }
                    writeEntry(bit->name, group == 0 ? QString::number(bit->id) : CodeText::maskText(format, bit->id));
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
