#include "writerxml.h"

#include "item.h"

namespace ZAT16 {

// Counts the public functions running, so that the outermost one hands the text to the device
// when it returns: writeItem() and writeIndent() also work on their own.
class WriterXml::Call
{
public:
    explicit Call(WriterXml *writer)
        : m_writer(writer)
    {
        ++m_writer->m_calls;
    }
    ~Call()
    {
        if (--m_writer->m_calls == 0)
            m_writer->m_out.flush(m_writer->device);
    }
    Call(const Call &) = delete;
    Call &operator=(const Call &) = delete;

private:
    WriterXml *m_writer;
};

WriterXml::WriterXml() = default;

WriterXml::~WriterXml() = default;

bool WriterXml::writeDefinitions(const Item *root)
{
    m_out.start();
    m_startTagOpen = false;
    m_top = root;
    depth = 1;
    {
        Call call(this);
        m_out.appendMarkup(QLatin1String("<?xml version=\""));
        m_out.appendText(u"1.0");
        m_out.appendMarkup(QLatin1String("\" encoding=\"UTF-8\"?>"));
        // An editor mode line on the declaration's line.
        m_out.appendMarkup(QLatin1String(" <!-- -*- nxml -*- -->"));
        if (!entry && !root->comment.isEmpty()) {
            closeStartTag();
            m_out.appendText(XmlOutput::validText(root->comment));
        }
        writeItem(root);
        closeStartTag();
        m_out.appendText(u"\n");
    }
    m_out.release();
    return !m_out.failed();
}

void WriterXml::writeIndent()
{
    Call call(this);
    if (depth == 0)
        return;
    closeStartTag();
    m_out.appendLineBreak(qMax(0, 2 * depth - 2));
}

bool WriterXml::writeItem(const Item *item)
{
    if (!spans)
        return writeItemText(item);
    // A child begins after the ">" that its parent's start tag still waits for.
    const qsizetype index = spans->size();
    spans->append({ item, m_out.position() + (m_startTagOpen ? 1 : 0), 0 });
    const bool written = writeItemText(item);
    (*spans)[index].end = m_out.position();
    return written;
}

bool WriterXml::writeItemText(const Item *item)
{
    Call call(this);
    // An entry on its own is an element whatever it holds: a comment line or a blank line could
    // not stand as a document.
    const bool asElement = entry && item == m_top;
    if (item->isComment() && !asElement) {
        writeIndent();
        closeStartTag();
        m_out.appendMarkup(QLatin1String("<!--"));
        m_out.appendText(XmlOutput::commentText(item->comment));
        m_out.appendMarkup(QLatin1String("-->"));
        return true;
    }
    if (item->isNewline() && !asElement) {
        // The next element starts with its own line break, so this shows as one empty line.
        if (depth == 0)
            return false;
        closeStartTag();
        m_out.appendText(u"\n");
        return true;
    }

    QLatin1String element;
    switch (item->type) {
    case Root:
        element = QLatin1String("zat16");
        break;
    case Tag:
        element = QLatin1String("tag");
        break;
    case Enums:
        element = QLatin1String("enums");
        break;
    case Enum:
        element = QLatin1String("enum");
        break;
    case Bits:
        element = QLatin1String("bits");
        break;
    case Bit:
        element = QLatin1String("bit");
        break;
    default:
        return false;
    }

    writeIndent();
    closeStartTag();
    m_out.appendMarkup(QLatin1String("<"));
    m_out.appendText(element);
    m_startTagOpen = true;
    writeItemAttributes(item);

    const int saved = depth;
    if (depth != 0)
        ++depth;
    bool wroteChild = false;
    for (const Item *child : item->children) {
        if (writeItem(child))
            wroteChild = true;
    }
    depth = saved;

    // Without written children the element is closed in the short form on the same line.
    if (wroteChild)
        writeIndent();
    if (m_startTagOpen) {
        m_out.appendMarkup(QLatin1String("/>"));
        m_startTagOpen = false;
    } else {
        m_out.appendMarkup(QLatin1String("</"));
        m_out.appendText(element);
        m_out.appendMarkup(QLatin1String(">"));
    }
    m_out.flushIfLarge(device);
    return true;
}

void WriterXml::writeItemAttributes(const Item *item)
{
    Call call(this);
    if (!item->name.isEmpty())
        m_out.appendAttribute(QLatin1String("name"), item->name, false);
    if (item->hasId) {
        // Numbers are letters, digits and signs: nothing to escape.
        m_out.appendPlainAttribute(QLatin1String("id"), [&](QString &text) {
            if (entry && item->type != Tag)
                appendNumber(text, item->id, entryDisplay(item));
            else
                item->appendId(text);
        });
    }
    if (item->type != Root && !item->comment.isEmpty())
        m_out.appendAttribute(QLatin1String("comment"), item->comment, true);
    if (item->secure)
        m_out.appendAttribute(QLatin1String("secure"), u"true", false);
    // A digit count without a mode is kept as well: it pads decimal numbers.
    const bool hasMode = item->display.mode >= 1 && item->display.mode <= 5;
    if (hasMode || (item->display.mode == 0 && item->display.digits != 0)) {
        static const char letters[] = "duxoy";
        QString display;
        if (item->display.digits != 0)
            display = QString::number(item->display.digits);
        if (hasMode)
            display += QLatin1Char(letters[item->display.mode - 1]);
        m_out.appendAttribute(QLatin1String("display"), display, false);
    }
}

// The display of an entry's number: the one in effect, but without the zeros of a padded decimal
// display that comes from above the entry. The entry is read on its own, and such zeros would
// then read as octal; every other notation reads the same anywhere.
DisplayMode WriterXml::entryDisplay(const Item *item) const
{
    DisplayMode display = item->displayMode();
    const bool fromAbove = item->displayModeWithin(m_top).mode == 0 && display.mode != 0;
    if (fromAbove && (display.mode == 1 || display.mode == 2))
        display.digits = 0;
    return display;
}

// A pending start tag is closed by whatever follows inside the element.
void WriterXml::closeStartTag()
{
    if (m_startTagOpen) {
        m_out.appendMarkup(QLatin1String(">"));
        m_startTagOpen = false;
    }
}

} // namespace ZAT16
