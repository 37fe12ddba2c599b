#pragma once

#include "item.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QVarLengthArray>

namespace ZAT16 {

/// The names and codes of the children of one parent, row by row: for each name and each code,
/// how many children hold it and the exclusive or of their addresses. Children collide when they
/// hold the same key (ItemData::hasNameKey, ItemData::hasIdKey), so the collision flags of a
/// child are two look-ups, and a change of one child tells at once, without a look at the other
/// children, which siblings gained or lost a flag by it.
///
/// The index holds what it was told: whoever changes the children tells it (insert, remove,
/// update) or builds a new one.
class SiblingIndex
{
public:
    /// The keys of one child as the index holds them.
    struct Counted {
        QString name;
        quint64 id = 0;
        bool hasName = false;
        bool hasId = false;
    };
    /// The children that hold one name or one code: how many, and the exclusive or of their
    /// addresses, which is the one holder itself while there is only one.
    struct Holders {
        int count = 0;
        quintptr mix = 0;
    };
    /// Siblings whose collision flags a change turned on or off.
    using Changed = QVarLengthArray<const Item *, 4>;

    SiblingIndex() = default;
    /// The index of the children of `parent`, made in one pass.
    explicit SiblingIndex(const Item *parent);

    /// The keys of `item` (an empty Counted for an item without name and id).
    static Counted counted(const Item *item);

    /// Moves `item` from what `from` counts to what `to` counts (an empty Counted: nothing). A
    /// sibling left alone with a name or code, or joined by `item` where it was alone, changes
    /// its flags and goes into `changed` (when it is not null). The rows are left as they are.
    void change(const Counted &from, const Counted &to, const Item *item, Changed *changed);

    /// `item` has come into the list at `row`.
    void insert(int row, const Item *item, Changed *changed);
    /// `item` has been appended to the list.
    void append(const Item *item) { insert(int(m_counted.size()), item, nullptr); }
    /// `item`, which was at `row`, has left the list.
    void remove(int row, const Item *item, Changed *changed);
    /// The data of `item`, at `row`, has changed: it moves from its keys as they were counted to
    /// its present ones.
    void update(int row, const Item *item, Changed *changed);

    /// The number of rows counted.
    qsizetype size() const { return m_counted.size(); }
    /// The keys of the child at `row` as they were counted.
    const Counted &at(int row) const { return m_counted.at(row); }
    Holders nameHolders(const QString &name) const { return m_names.value(name); }
    Holders idHolders(quint64 id) const { return m_ids.value(id); }

    /// The collision flags of a counted child: its name, or its code, held by another child too.
    Item::CollisionFlags collision(const Item *item) const;

    /// The collision flags of every child of `parent`, by row: the same flags as an index gives,
    /// made in one pass without the records an index keeps for later changes.
    static QList<Item::CollisionFlags> collisions(const Item *parent);

private:
    QHash<QString, Holders> m_names;
    QHash<quint64, Holders> m_ids;
    QList<Counted> m_counted; ///< by row
};

} // namespace ZAT16
