#pragma once

#include "tagcodes.h"

#include <QFlags>
#include <QList>
#include <QString>

#include <cstddef>

namespace ZAT16 {

/// Kind of an item in the definitions tree; each kind is one element of the definitions file.
enum ItemType : int {
    Invalid = -1,
    Root = 0, ///< "zat16", the whole file
    Tag = 1, ///< "tag"; `id` is its 16-bit tag code
    Enums = 2, ///< "enums", the enumeration list of a tag
    Enum = 3, ///< "enum", one enumeration value
    Bits = 4, ///< "bits", the bit list of a tag
    Bit = 5, ///< "bit", one bit; `id` is the bit number
};

/// The data of one item, without its place in the tree.
struct ItemData {
    ItemType type = Invalid;
    quint64 id = 0; ///< tag code, enumeration value or bit number
    QString name;
    QString comment; ///< for the root: the document type declaration of the file
    DisplayMode display;
    bool hasId = false;
    bool secure = false;

    bool operator==(const ItemData &other) const;
    bool operator!=(const ItemData &other) const { return !(*this == other); }

    /// Formats `value` with this record's own display mode (no inheritance).
    QString formatNumber(unsigned long long value) const;

    /// The keys on which children of one parent collide: two siblings collide when both hold the
    /// same key with the same value. The name is a key unless it is empty, the id when there is
    /// one (all 64 bits count). Item::findCollision, SiblingIndex and the reader's duplicate
    /// warnings go by these two.
    bool hasNameKey() const { return !name.isEmpty(); }
    bool hasIdKey() const { return hasId; }
    /// Tags, enumeration values and bits: the kinds that carry a name, a code and a comment.
    bool isNamedKind() const { return type == Tag || type == Enum || type == Bit; }
};

/// One node of the definitions tree. An item owns its children; comments and blank lines of the
/// file are kept as childless items without name and id.
class Item : public ItemData
{
    // The row this item had in its parent's list when last asked; row() checks it before it
    // trusts it. Declared first, it fills the padding at the end of ItemData.
    mutable int m_rowHint = 0;

public:
    enum CollisionFlag {
        NameCollision = 1,
        IdCollision = 2,
    };
    Q_DECLARE_FLAGS(CollisionFlags, CollisionFlag)

    Item();
    explicit Item(const ItemData &data);
    ~Item();
    // Items come from ItemPool: a loaded file holds them by the million.
    static void *operator new(std::size_t size);
    static void operator delete(void *pointer, std::size_t size);

    Item(const Item &) = delete;
    Item &operator=(const Item &) = delete;

    QList<Item *> children;
    Item *parent = nullptr;

    /// Deletes every child and resets the item's own data. The child list keeps its (dangling)
    /// entries; nothing calls this on a tree that is used afterwards.
    void clear();

    Item *child(int row);
    const Item *child(int row) const;
    /// Removes the child at `row` from the list and returns it; its `parent` is left as it is.
    Item *takeChild(int row);
    void removeChild(int row);
    void insertChildBefore(int row, Item *item);
    void appendChild(Item *item);
    /// The item's row in its parent's list, -1 when it is not in that list (taken out of the
    /// tree), 0 without a parent. Constant time while the list keeps its order; the first call
    /// after the list changed numbers every sibling in one pass, so that a walk along a long list
    /// does not search it once per row.
    int row() const;

    /// Higher types first: a tag's bit list before its enumeration list, blank lines last.
    /// The sort is stable, so the author's order among equal types is kept.
    void sortChildrenByType();
    /// The order of sortChildrenByType(): whether `a` goes before `b`.
    static bool sortsBefore(const Item *a, const Item *b) { return a->type > b->type; }

    /// Row of the first child other than `but` that has an id equal to `id`, or -1.
    int findBut(unsigned int id, const Item *but) const;
    /// Row of the first child other than `but` whose name equals `name`, or -1.
    int findBut(const QString &name, const Item *but) const;
    /// Name and id collisions with the siblings of this item.
    CollisionFlags findCollision() const;
    /// Number of values when the children with an id form the run 0,1,2,... or 1,2,3,...; else 0.
    int enumCount() const;
    /// For a tag: its first child of the given type.
    Item *findInTagByItemType(ItemType type) const;

    bool isNewline() const;
    bool isComment() const;
    bool isValid(ItemType type) const;

    /// The display mode in effect: the nearest one set, walking up from this item.
    const DisplayMode &displayMode() const;
    /// The same, walking up no further than `top` (an item above this one, or this one): the
    /// display in effect for this item in the subtree of `top` taken on its own.
    const DisplayMode &displayModeWithin(const Item *top) const;
    QString formatId() const;
    /// Appends formatId() to `text`.
    void appendId(QString &text) const;

    /// The type the parent of an item of the given type must have.
    static ItemType matchingParentType(ItemType type);

    /// Debugging output of the subtree to standard error.
    void dump(int indent);
};

Q_DECLARE_OPERATORS_FOR_FLAGS(Item::CollisionFlags)

} // namespace ZAT16
