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
/// Whether a request's answer exists is looked up in a hash of the root's codes built once, so
/// the listing is linear in the number of tags.
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

private:
    QList<const Item *> m_pairs;
    QList<const Item *> m_nested;
    QList<const Item *> m_plain;
};

} // namespace ZAT16
