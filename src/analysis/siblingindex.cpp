#include "siblingindex.h"

namespace ZAT16 {

namespace {

// One holder joins or leaves the holders of a key. Going from one holder to two or from two to
// one turns the flag of the other holder on or off; from the exclusive or of the addresses,
// which is the lone holder itself, it is found without a look at the other siblings.
template<typename Key>
void join(QHash<Key, SiblingIndex::Holders> &hash, const Key &key, const Item *item, SiblingIndex::Changed *changed)
{
    SiblingIndex::Holders &holders = hash[key];
    if (changed && holders.count == 1)
        changed->append(reinterpret_cast<const Item *>(holders.mix));
    ++holders.count;
    holders.mix ^= quintptr(item);
}

template<typename Key>
void leave(QHash<Key, SiblingIndex::Holders> &hash, const Key &key, const Item *item, SiblingIndex::Changed *changed)
{
    const auto it = hash.find(key);
    if (it == hash.end())
        return;
    it->mix ^= quintptr(item);
    if (--it->count <= 0)
        hash.erase(it);
    else if (changed && it->count == 1)
        changed->append(reinterpret_cast<const Item *>(it->mix));
}

} // namespace

SiblingIndex::SiblingIndex(const Item *parent)
{
    const qsizetype count = parent->children.size();
    m_names.reserve(count);
    m_ids.reserve(count);
    m_counted.reserve(count);
    for (const Item *child : parent->children) {
        const Counted now = counted(child);
        change(Counted(), now, child, nullptr);
        m_counted.append(now);
    }
}

QList<Item::CollisionFlags> SiblingIndex::collisions(const Item *parent)
{
    const QList<Item *> &children = parent->children;
    const qsizetype count = children.size();
    QList<Item::CollisionFlags> flags(count);
    // A short list is compared pair by pair, which is faster than hashing its keys.
    constexpr qsizetype shortList = 16;
    if (count <= shortList) {
        for (qsizetype i = 0; i < count; ++i) {
            const Item *a = children.at(i);
            for (qsizetype k = i + 1; k < count; ++k) {
                const Item *b = children.at(k);
                Item::CollisionFlags both;
                if (a->hasNameKey() && b->hasNameKey() && a->name == b->name)
                    both |= Item::NameCollision;
                if (a->hasIdKey() && b->hasIdKey() && a->id == b->id)
                    both |= Item::IdCollision;
                flags[i] |= both;
                flags[k] |= both;
            }
        }
        return flags;
    }
    QHash<QStringView, int> names;
    QHash<quint64, int> ids;
    names.reserve(count);
    ids.reserve(count);
    for (const Item *child : children) {
        if (child->hasNameKey())
            ++names[QStringView(child->name)];
        if (child->hasIdKey())
            ++ids[child->id];
    }
    for (qsizetype i = 0; i < count; ++i) {
        const Item *child = children.at(i);
        if (child->hasNameKey() && names.value(QStringView(child->name)) > 1)
            flags[i] |= Item::NameCollision;
        if (child->hasIdKey() && ids.value(child->id) > 1)
            flags[i] |= Item::IdCollision;
    }
    return flags;
}

SiblingIndex::Counted SiblingIndex::counted(const Item *item)
{
    return Counted { item->name, item->id, item->hasNameKey(), item->hasIdKey() };
}

void SiblingIndex::change(const Counted &from, const Counted &to, const Item *item, Changed *changed)
{
    if (from.hasName != to.hasName || (from.hasName && from.name != to.name)) {
        if (from.hasName)
            leave(m_names, from.name, item, changed);
        if (to.hasName)
            join(m_names, to.name, item, changed);
    }
    if (from.hasId != to.hasId || (from.hasId && from.id != to.id)) {
        if (from.hasId)
            leave(m_ids, from.id, item, changed);
        if (to.hasId)
            join(m_ids, to.id, item, changed);
    }
}

void SiblingIndex::insert(int row, const Item *item, Changed *changed)
{
    const Counted now = counted(item);
    change(Counted(), now, item, changed);
    m_counted.insert(row, now);
}

void SiblingIndex::remove(int row, const Item *item, Changed *changed)
{
    change(m_counted.at(row), Counted(), item, changed);
    m_counted.removeAt(row);
}

void SiblingIndex::update(int row, const Item *item, Changed *changed)
{
    Counted &old = m_counted[row];
    const Counted now = counted(item);
    change(old, now, item, changed);
    old = now;
}

Item::CollisionFlags SiblingIndex::collision(const Item *item) const
{
    Item::CollisionFlags flags;
    if (item->hasNameKey() && m_names.value(item->name).count > 1)
        flags |= Item::NameCollision;
    if (item->hasIdKey() && m_ids.value(item->id).count > 1)
        flags |= Item::IdCollision;
    return flags;
}

} // namespace ZAT16
