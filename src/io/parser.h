#pragma once

#include "attributereader.h"
#include "item.h"
#include "siblingindex.h"
#include "xmlparser.h"

#include <QList>
#include <QSet>

namespace ZAT16 {

/// Reads a definitions file into an Item tree, keeping the document type declaration, comments
/// and blank lines as items so that the file can be saved again in the author's layout. What the
/// tree has no place for, a comment inside a tag or an attribute the format does not know, is
/// named in a warning, since a save drops it.
class Parser : public XmlParser
{
public:
    Parser();
    ~Parser() override;

    using XmlParser::parse;

    /// Empties the sets, deletes the root and forgets the document type declaration.
    void clear();
    /// Hands the tree of the last parse to the caller; the parser no longer owns it.
    Item *takeRoot();

    Item *root = nullptr; ///< the tree of the last parse, owned until taken
    QSet<unsigned int> tagCodes; ///< tag codes seen in this parse
    QSet<QString> tagNames; ///< tag names seen in this parse
    QString dtd; ///< document type declaration seen in this parse
    /// The line of the text that ended reading early (text that is not blank between elements
    /// stops reading; what was read before it is kept); 0 when the whole input was read.
    int stoppedAtLine = 0;
    /// Reading one entry (the clipboard's) rather than a document: the top element keeps its
    /// own comment; a document's top element is given the document type declaration instead.
    bool entry = false;

protected:
    bool parser() override;

    bool parseElements(Item *parent);
    bool addElement(Item *parent, ItemType type);
    bool parseElementAttributes(ItemData *data);
    bool parseBool(const QString &attributeName);
    bool checkForNewline(Item *parent);
    void appendNewline(Item *parent);
    void trimNewlines(Item *item);
    void storeComment(Item *parent);
    void appendComment(Item *parent, Item *comment);
    int strayTextLine() const;
    /// Raises the warning that `text` makes, or only counts it when warnings are no longer listed.
    template<typename Text>
    void warn(const Text &text)
    {
        if (listsWarnings())
            raiseWarning(text());
        else
            countWarning();
    }

private:
    friend class AttributeReader; // raises its warnings through warn()

    // The names and codes of the children of a list being read, for the duplicate number and
    // name warnings; filled only once the list is long.
    struct Siblings {
        SiblingIndex index;
        bool filled = false;
    };
    static constexpr qsizetype shortList = 64;
    const SiblingIndex &siblingIndex(const Item *parent);
    bool hasSiblingId(const Item *parent, quint64 id);
    bool hasSiblingName(const Item *parent, const QString &name);

    QList<Siblings> m_siblings;
    AttributeReader m_attributes { *this };
    QList<const Item *> m_open; ///< the elements being read, outermost first
    int m_depth = 0; ///< nesting depth of the known elements being read
};

} // namespace ZAT16
