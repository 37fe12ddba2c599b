#include "writerlua.h"

#include "codetext.h"
#include "item.h"
#include "taglisting.h"

namespace {

constexpr int KeyWidth = 50;

} // namespace

namespace ZAT16 {

void WriterLua::writeTag(const ItemData &tag)
{
    CodeText::flushIfLarge(*this, m_text);
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

void WriterLua::beginEntry(QStringView key)
{
    CodeText::flushIfLarge(*this, m_text);
    m_text += QLatin1String("  ");
    const qsizetype start = m_text.size();
    m_text += key;
    CodeText::padFrom(m_text, start, KeyWidth);
    m_text += QLatin1String(" = ");
}

bool WriterLua::writeDefinitions(const Item *root)
{
    m_text.clear();
    m_text.reserve(CodeText::flushSize + 1024);
    m_text += QLatin1String("\n-- Automagically generated -- do not edit\n\nzat16.lutTag = {");
    const bool hasTags = root && !root->children.isEmpty();
    const TagListing listing(hasTags ? root : nullptr);
    if (hasTags) {
        // Each entry starts its own line, so the "\n" after a pass ends the pass's last line
        // and the next pass begins with an empty line.
        for (const QList<const Item *> *pass : { &listing.pairs(), &listing.nested(), &listing.plain() }) {
            for (const Item *tag : *pass)
                writeTag(*tag);
            if (!pass->isEmpty())
                m_text += QLatin1Char('\n');
        }
    }
    m_text += QLatin1String("}\n\n");

    if (hasTags) {
        for (const TagListing::Lists &lists : listing.withLists()) {
            const Item *tag = lists.tag;
            const Item *enums = lists.enums;
            if (!enums)
                continue;
            const int count = enums->enumCount();
            m_text += QLatin1String("zat16.lut");
            m_text += tag->name;
            m_text += QLatin1String(" = {\n");
            for (const Item *value : enums->children) {
                if (!value->hasId)
                    continue;
                if (!value->name.isEmpty()) {
                    beginEntry(value->name);
                } else if (!value->comment.isEmpty()) {
                    // A nameless value is keyed by its comment, as a string key that keeps the
                    // comment's double quotes: ['"comment"'].
                    beginEntry(QLatin1String("['\"") + value->comment + QLatin1String("\"']"));
                } else {
                    continue;
                }
                if (count)
                    CodeText::appendDecimal(m_text, value->id);
                else
                    value->appendId(m_text);
                m_text += QLatin1String(",\n");
            }
            m_text += QLatin1String("}\n\n");
        }

        for (const TagListing::Lists &lists : listing.withLists()) {
            const Item *tag = lists.tag;
            const Item *bits = lists.bits;
            if (!bits)
                continue;
            m_text += QLatin1String("zat16.lutBit");
            m_text += tag->name;
            m_text += QLatin1String(" = {\n");
            for (const Item *bit : bits->children) {
                if (!bit->hasId)
                    continue;
                // 32-bit signed arithmetic: bit 31 is negative and bit 32 wraps round to 1.
                const qint32 mask = qint32(quint32(1) << (bit->id % 32));
                beginEntry(bit->name);
                CodeText::appendDecimal(m_text, qint64(mask));
                m_text += QLatin1String(",\n");
            }
            m_text += QLatin1String("}\n\n");
        }
    }

    write(m_text);
    m_text.clear();
    return true;
}

} // namespace ZAT16
