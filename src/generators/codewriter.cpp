#include "codewriter.h"

#include "codetext.h"
#include "item.h"
#include "taglisting.h"

namespace ZAT16 {

namespace {

// Output is handed to the device whenever this many characters have gathered.
constexpr qsizetype flushSize = 32 * 1024;

// The column in which the values of aligned entries start, counted from the inner indent.
constexpr int entryColumn = 50;

} // namespace

CodeWriter::CodeWriter(const Layout &layout)
    : m_layout(layout)
{
}

CodeWriter::~CodeWriter() = default;

bool CodeWriter::writeDefinitions(const Item *root)
{
    m_text.clear();
    m_text.reserve(flushSize + 1024);
    const bool ownFrame = m_layout.replaceableFrame && !(prologue.isEmpty() && epilogue.isEmpty());
    if (ownFrame)
        m_text += prologue;
    else
        m_text += QLatin1String(m_layout.opening);

    const TagListing listing(root);
    const QList<const Item *> *passes[] = { &listing.pairs(), &listing.nested(), &listing.plain() };
    for (Pass pass : { Pairs, Nested, Plain }) {
        beginPass(pass);
        for (const Item *tag : *passes[pass]) {
            flushIfLarge();
            writeTag(*tag, pass);
        }
        // Entry lines begin with their line break, so this ends a pass's last line.
        if (!passes[pass]->isEmpty())
            m_text += QLatin1Char('\n');
    }
    endTags();

    // Every valid tag gets its lists, also one whose code was a duplicate.
    for (const TagListing::Lists &lists : listing.withLists()) {
        if (!lists.enums)
            continue;
        const int count = lists.enums->enumCount();
        beginList(*lists.tag, *lists.enums);
        writeGroup(*lists.tag, *lists.enums, EnumValue, count);
        endList(*lists.tag, *lists.enums, count);
    }
    for (const TagListing::Lists &lists : listing.withLists()) {
        if (!lists.bits)
            continue;
        beginList(*lists.tag, *lists.bits);
        for (int walk = 0; walk < m_layout.bitWalkCount; ++walk)
            writeGroup(*lists.tag, *lists.bits, m_layout.bitWalks[walk], 0);
        endList(*lists.tag, *lists.bits, 0);
    }

    writeTrailer(listing);
    if (ownFrame)
        m_text += epilogue;
    else
        m_text += QLatin1String(m_layout.closing);
    write(m_text);
    m_text.clear();
    return true;
}

void CodeWriter::writeGroup(const Item &tag, const Item &list, Value value, int count)
{
    const int digits = value == BitMask ? CodeText::maskDigits(&list) : 0;
    bool any = false;
    for (const Item *entry : list.children) {
        if (!takesEntry(*entry, value))
            continue;
        if (!any) {
            beginGroup(tag, value);
            any = true;
        }
        flushIfLarge();
        writeEntry(tag, *entry, value, count, digits);
    }
    if (any)
        endGroup(tag, value, count);
}

void CodeWriter::beginPass(Pass) { }

void CodeWriter::writeTag(const Item &tag, Pass)
{
    beginEntry(tag.name);
    appendTag2hex(m_text, quint32(tag.id));
    m_text += QLatin1String(m_layout.entryEnd);
}

void CodeWriter::endTags() { }

void CodeWriter::beginList(const Item &, const Item &) { }

void CodeWriter::endList(const Item &, const Item &, int) { }

void CodeWriter::beginGroup(const Item &, Value) { }

void CodeWriter::endGroup(const Item &, Value, int) { }

bool CodeWriter::takesEntry(const Item &entry, Value value) const
{
    return entry.isValid(value == EnumValue ? Enum : Bit);
}

void CodeWriter::writeEntry(const Item &, const Item &entry, Value value, int count, int digits)
{
    beginEntry(entry.name);
    appendValue(entry, value, count, digits);
    m_text += QLatin1String(m_layout.entryEnd);
}

void CodeWriter::writeTrailer(const TagListing &) { }

void CodeWriter::beginLine()
{
    m_text += QLatin1Char('\n');
    m_text += outerIndent;
    m_text += innerIndent;
    m_text += QLatin1String(m_layout.entryLead);
}

void CodeWriter::beginEntry(QStringView name)
{
    beginLine();
    const qsizetype start = m_text.size();
    m_text += QLatin1String(m_layout.nameOpen);
    m_text += name;
    m_text += nameSuffix;
    m_text += QLatin1String(m_layout.nameClose);
    padToColumn(start, entryColumn);
    m_text += QLatin1String(m_layout.separator);
}

void CodeWriter::padToColumn(qsizetype start, int column)
{
    CodeText::padFrom(m_text, start, column - innerIndent.size());
}

void CodeWriter::appendIndented(const char *text)
{
    m_text += outerIndent;
    m_text += QLatin1String(text);
}

void CodeWriter::appendValue(const Item &entry, Value value, int count, int digits)
{
    switch (value) {
    case EnumValue:
        if (count)
            CodeText::appendDecimal(m_text, entry.id);
        else
            entry.appendId(m_text);
        break;
    case BitNumber:
        CodeText::appendDecimal(m_text, entry.id);
        break;
    case BitNumberAsDisplayed:
        entry.appendId(m_text);
        break;
    case BitMask:
        m_text += CodeText::maskText(digits, entry.id);
        break;
    case BitMaskInt32:
        // 32-bit signed arithmetic: bit 31 is negative and bit 32 wraps round to 1.
        CodeText::appendDecimal(m_text, qint64(qint32(quint32(1) << (entry.id % 32))));
        break;
    }
}

void CodeWriter::flushIfLarge()
{
    if (m_text.size() >= flushSize) {
        write(m_text);
        m_text.resize(0);
    }
}

} // namespace ZAT16
