#pragma once

#include <QList>

namespace ZAT16 {

class Item;

/// The top-level tags of a definitions tree in the order in which every generator lists them:
/// first the request/answer pairs (a request directly followed by its answer), then the other
/// nested tags (lists, messages, requests without an answer, answers without a request), then
/// the plain tags. A tag code is listed once, by whichever pass reaches it first; a second tag
/// with the same code is left out. Only valid tags are listed, except that the answer of a pair
/// is the first child of the root that carries the answer code, whatever it is.
///
/// The root's children are walked once; the passes then run over what that walk kept, so the
/// listing is linear in the number of tags and touches each tag once.
class TagListing
{
public:
    explicit TagListing(const Item *root);

    /// Request, answer, request, answer, ... in the order of the requests.
    const QList<const Item *> &pairs() const { return m_pairs; }
    /// The nested tags not listed as a pair.
    const QList<const Item *> &nested() const { return m_nested; }
    /// The plain tags.
    const QList<const Item *> &plain() const { return m_plain; }

    /// A valid top-level tag with its first enumeration list and its first bit list.
    struct Lists {
        const Item *tag;
        const Item *enums; ///< null when the tag has none
        const Item *bits; ///< null when the tag has none
    };
    /// The valid top-level tags that have an enumeration list or a bit list, in the root's order.
    const QList<Lists> &withLists() const { return m_withLists; }

private:
    QList<const Item *> m_pairs;
    QList<const Item *> m_nested;
    QList<const Item *> m_plain;
    QList<Lists> m_withLists;
};

} // namespace ZAT16
