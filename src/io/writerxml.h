#pragma once

#include "tagcodes.h"
#include "writer.h"
#include "xmloutput.h"

#include <QLatin1String>
#include <QList>
#include <QString>
#include <QStringView>

namespace ZAT16 {

/// Saves an Item tree as a definitions file in the canonical layout: fixed declaration line,
/// two blanks of indentation per level, attributes in a fixed order, and the author's comments
/// and blank lines where they were.
///
/// The text is built in one string and handed to the device as UTF-8 in large pieces; it is
/// the text a QXmlStreamWriter without automatic formatting gives for the same calls, down to
/// the byte, including what that writer does with characters XML cannot carry.
class WriterXml : public Writer
{
public:
    WriterXml();
    ~WriterXml();

    /// Writes the whole document; false when a value held characters that XML cannot carry or
    /// the device refused a write.
    bool writeDefinitions(const Item *root) override;
    /// Writes one item and its subtree; true when something was written.
    bool writeItem(const Item *item);
    /// Writes the attributes of the element just started.
    void writeItemAttributes(const Item *item);
    /// Starts a new line at the current depth.
    void writeIndent();

    int depth = 0;
    /// Writing one entry out of a document (the clipboard's): the top item is written as an
    /// element with its comment as an attribute, also when it is a comment line or a blank line,
    /// and never as a document type declaration; a decimal display from above the entry gives
    /// its numbers no zeros, which would read as octal without it.
    bool entry = false;

    /// Where one item's text begins and ends in the written document, in UTF-16 code units.
    struct Span {
        const Item *item;
        qsizetype begin;
        qsizetype end;
    };
    /// When set, every item written is recorded here in the order written (parents before their
    /// children), so that a position in the text can be traced back to its item.
    QList<Span> *spans = nullptr;

private:
    class Call;

    bool writeItemText(const Item *item);
    DisplayMode entryDisplay(const Item *item) const;
    void closeStartTag();

    const Item *m_top = nullptr; ///< the item writeDefinitions() was given
    XmlOutput m_out; ///< the text written but not yet handed to the device
    int m_calls = 0; ///< public functions running; the outermost one flushes
    bool m_startTagOpen = false; ///< a start tag waits for its ">" or "/>"
};

} // namespace ZAT16
