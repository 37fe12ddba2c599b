#include "taglisting.h"

#include "item.h"

#include <QHash>
#include <QSet>

namespace ZAT16 {

TagListing::TagListing(const Item *root)
{
    if (!root || root->children.isEmpty())
        return;
    const QList<Item *> &tags = root->children;

    // The first child of the root for every code, as findBut(code, nullptr) would find it.
    QHash<quint64, const Item *> firstWithCode;
    firstWithCode.reserve(tags.size());
    for (const Item *tag : tags) {
        if (tag->hasId && !firstWithCode.contains(tag->id))
            firstWithCode.insert(tag->id, tag);
    }

    QSet<quint32> written;
    written.reserve(tags.size());

    for (const Item *tag : tags) {
        if (!tag->isValid(Tag) || ((tag->id >> 12) & 0xF) != Request)
            continue;
        const quint32 code = quint32(tag->id);
        // The answer shares the request's number; only the type nibble becomes Answer.
        const quint32 answer = 0xE000 | (code & 0x0FFF);
        if (written.contains(code) || written.contains(answer))
            continue;
        const Item *answerTag = firstWithCode.value(answer);
        if (!answerTag)
            continue;
        m_pairs.append(tag);
        m_pairs.append(answerTag);
        written.insert(code);
        written.insert(answer);
    }
    for (const Item *tag : tags) {
        if (!tag->isValid(Tag) || !isNestedTag(int(tag->id)))
            continue;
        const quint32 code = quint32(tag->id);
        if (written.contains(code))
            continue;
        m_nested.append(tag);
        written.insert(code);
    }
    for (const Item *tag : tags) {
        if (!tag->isValid(Tag) || isNestedTag(int(tag->id)))
            continue;
        const quint32 code = quint32(tag->id);
        if (written.contains(code))
            continue;
        m_plain.append(tag);
        written.insert(code);
    }
}

} // namespace ZAT16
