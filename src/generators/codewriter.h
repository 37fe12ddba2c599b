#pragma once

#include "writer.h"

#include <QString>
#include <QStringView>

namespace ZAT16 {

class TagListing;

/// The skeleton every source generator shares. writeDefinitions() gathers the output in one text
/// that is handed to the device whenever it has grown large, and always produces the same order:
/// the opening of the frame, the top-level tags in the three passes of TagListing, every tag's
/// enumeration list, every tag's bit list (in one or two walks), the generator's trailer and the
/// closing of the frame. A generator supplies its layout and the lines it writes through the
/// protected hooks; the default hooks write nothing, or an aligned entry line.
class CodeWriter : public Writer
{
public:
    virtual ~CodeWriter();

    bool writeDefinitions(const Item *root) final;

protected:
    /// The pass of TagListing a tag comes from.
    enum Pass { Pairs, Nested, Plain };
    /// What the value of a list entry is.
    enum Value {
        EnumValue, ///< in decimal when the list counts its values, else as the value is displayed
        BitNumber, ///< in decimal
        BitNumberAsDisplayed, ///< in the notation the bit list displays
        BitMask, ///< CodeText::maskText() with the digits the list needs
        BitMaskInt32, ///< the mask as a signed 32-bit number in decimal
    };

    /// What stays the same throughout one generator's output.
    struct Layout {
        const char *opening; ///< the fixed first text of the output
        const char *closing; ///< the fixed last text of the output
        /// A prologue or an epilogue, if either is set, replaces both fixed texts.
        bool replaceableFrame;
        /// Aligned entry lines (beginEntry()): after the indents, before the name; the name's
        /// opening and closing mark, which count towards the alignment; after the alignment; at
        /// the end of the entry.
        const char *entryLead;
        const char *nameOpen;
        const char *nameClose;
        const char *separator;
        const char *entryEnd;
        /// The walks over a bit list, one per value written: `bitWalkCount` of `bitWalks`.
        Value bitWalks[2];
        int bitWalkCount;
    };

    explicit CodeWriter(const Layout &layout);

    /// Before the tags of `pass`, also when there are none.
    virtual void beginPass(Pass pass);
    /// The line of one tag; by default an aligned entry with the tag code as its value.
    virtual void writeTag(const Item &tag, Pass pass);
    /// After the three passes.
    virtual void endTags();

    /// Before and after every enumeration list and bit list, also one without entries; `count`
    /// is the number of enumeration values the list counts (0 for bits and uncounted lists).
    virtual void beginList(const Item &tag, const Item &list);
    virtual void endList(const Item &tag, const Item &list, int count);
    /// Around the entries of one walk over a list, written only when the walk takes an entry.
    virtual void beginGroup(const Item &tag, Value value);
    virtual void endGroup(const Item &tag, Value value, int count);
    /// Whether an entry of a list is written; by default every valid enumeration value or bit.
    virtual bool takesEntry(const Item &entry, Value value) const;
    /// One entry of a list; by default an aligned entry line with its value.
    virtual void writeEntry(const Item &tag, const Item &entry, Value value, int count, int digits);

    /// After the lists.
    virtual void writeTrailer(const TagListing &listing);

    /// Starts an aligned entry line: a line break, the outer and inner indent, the lead, and
    /// `name` with the name suffix between the name marks, padded to column 50; then the
    /// separator. The value and the entry's end follow.
    void beginEntry(QStringView name);
    /// A line break, the outer and inner indent and the entry lead.
    void beginLine();
    /// Pads what was appended since `start` so that it ends in `column`, where column 0 is
    /// where the inner indent starts: entries line up whatever the inner indent.
    void padToColumn(qsizetype start, int column);
    /// Appends the outer indent and `text`.
    void appendIndented(const char *text);
    /// Appends the value of an entry of a list.
    void appendValue(const Item &entry, Value value, int count, int digits);
    /// Hands the text to the device once it is large, so that a large output never stands in
    /// memory as a whole.
    void flushIfLarge();

    QString m_text; ///< the output of the running writeDefinitions() not yet written

private:
    void writeGroup(const Item &tag, const Item &list, Value value, int count);

    const Layout m_layout;
};

} // namespace ZAT16
