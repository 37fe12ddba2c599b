#include "taglisting.h"

#include "item.h"

#include <QSet>

#include <vector>

namespace ZAT16 {

namespace {

// The tag codes written so far: a bit for each 16-bit code, a hash for the rare wider ones.
class CodeSet
{
public:
    bool contains(quint32 code) const
    {
        if (code < 0x10000)
            return (m_bits[code >> 6] >> (code & 63)) & 1;
        return m_wide.contains(code);
    }
    void insert(quint32 code)
    {
        if (code < 0x10000)
            m_bits[code >> 6] |= quint64(1) << (code & 63);
        else
            m_wide.insert(code);
    }

private:
    std::vector<quint64> m_bits = std::vector<quint64>(0x10000 / 64);
    QSet<quint32> m_wide;
};

// A valid tag as the passes see it.
struct Candidate {
    const Item *tag;
    quint32 code;
    bool request;
    bool nested;
};

} // namespace

TagListing::TagListing(const Item *root)
{
    if (!root || root->children.isEmpty())
        return;

    // One walk over the root. It keeps the valid tags, and the first child of the root for
    // every answer code (0xE000 to 0xEFFF), as findBut(code, nullptr) would find it: the answer
    // of a request is looked for among all children, whatever they are.
    QList<Candidate> candidates;
    candidates.reserve(root->children.size());
    std::vector<const Item *> firstAnswer(0x1000, nullptr);
    for (const Item *tag : root->children) {
        if (tag->hasId && (tag->id >> 12) == 0xE && !firstAnswer[tag->id & 0xFFF])
            firstAnswer[tag->id & 0xFFF] = tag;
        if (!tag->isValid(Tag))
            continue;
        candidates.append(
            Candidate { tag, quint32(tag->id), ((tag->id >> 12) & 0xF) == Request, isNestedTag(int(tag->id)) });
        const Item *enums = tag->findInTagByItemType(Enums);
        const Item *bits = tag->findInTagByItemType(Bits);
        if (enums || bits)
            m_withLists.append(Lists { tag, enums, bits });
    }

    CodeSet written;
    for (const Candidate &candidate : std::as_const(candidates)) {
        if (!candidate.request)
            continue;
        // The answer shares the request's number; only the type nibble becomes Answer.
        const quint32 answer = 0xE000 | (candidate.code & 0x0FFF);
        if (written.contains(candidate.code) || written.contains(answer))
            continue;
        const Item *answerTag = firstAnswer[answer & 0xFFF];
        if (!answerTag)
            continue;
        m_pairs.append(candidate.tag);
        m_pairs.append(answerTag);
        written.insert(candidate.code);
        written.insert(answer);
    }
    for (const Candidate &candidate : std::as_const(candidates)) {
        if (!candidate.nested || written.contains(candidate.code))
            continue;
        m_nested.append(candidate.tag);
        written.insert(candidate.code);
    }
    for (const Candidate &candidate : std::as_const(candidates)) {
        if (candidate.nested || written.contains(candidate.code))
            continue;
        m_plain.append(candidate.tag);
        written.insert(candidate.code);
    }
}

} // namespace ZAT16
