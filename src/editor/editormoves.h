#pragma once

#include "item.h"

#include <QByteArray>
#include <QModelIndex>

class QMimeData;

namespace ZAT16 {

class EditorModel;

/// Moving entries of the tree, each move one undo step (CommandMove): one row up or down in their
/// list, and by drag and drop to where the insertion rules put an inserted entry. Tags, and the
/// comment and blank lines between them, move at the root level; values and bits, and the comment
/// and blank lines of their lists, within and between lists. The lists themselves keep their place
/// in their tag, where the bit list comes before the enumeration list, and are not moved.
///
/// A row dragged from the view carries, beside its cell's text, the entry it was dragged from
/// (entryMimeType()): its rows from the root, its address and the id of this model, so that only
/// a drop into the same model takes it as a move; elsewhere the text counts.
class EditorMoves
{
public:
    explicit EditorMoves(EditorModel &model);

    /// Whether the entry at `index` can move by `offset` rows within its list.
    bool canMoveBy(const QModelIndex &index, int offset) const;
    /// Moves the entry at `index` by `offset` rows within its list; its new index, or invalid when
    /// it cannot move so.
    QModelIndex moveBy(const QModelIndex &index, int offset);
    /// Moves the entry at `index` to where an entry inserted at `row` of `parent` goes: a tag to
    /// the root level, before the top-level tag that holds the place; a value or bit into the
    /// matching list of the tag that holds the place, at the place when it is in that list, else
    /// at the list's end, the list made when the tag has none. Its new index, or invalid when it
    /// cannot go there: a list, a place in its own subtree, or the place where it is.
    QModelIndex moveTo(const QModelIndex &index, int row, const QModelIndex &parent);
    bool canMoveTo(const QModelIndex &index, int row, const QModelIndex &parent) const;

    static QString entryMimeType();
    /// Adds the entry at `index` to the drag data `data`, when the entry can be dragged.
    void addEntry(QMimeData *data, const QModelIndex &index) const;
    /// Whether `data` was dragged from a row of this model; `entry` becomes the entry it was
    /// dragged from, or invalid when that entry is no longer where it was.
    bool isOwnDrag(const QMimeData *data, QModelIndex *entry) const;
    /// A drop of an entry dragged from this model, as QAbstractItemModel::dropMimeData() gets it:
    /// between rows (`row` at least 0) or onto the entry `parent` (onto the empty area below the
    /// rows when `parent` is invalid).
    bool canDrop(const QModelIndex &entry, int row, const QModelIndex &parent) const;
    /// The moved entry's new index, or invalid when the drop moved nothing.
    QModelIndex drop(const QModelIndex &entry, int row, const QModelIndex &parent);

private:
    // Where a moved entry goes: a row of an existing parent, or the first row of a new list.
    struct Destination {
        Item *parent = nullptr; ///< null when the list is to be made
        int row = 0; ///< the entry's row after the move
        Item *tag = nullptr; ///< the tag that gets the new list
        ItemType newList = Invalid;
        int listRow = 0; ///< the new list's row in the tag
    };

    bool canMove(const Item *item) const;
    bool destination(const Item *item, Item *parent, int position, Destination *to) const;
    // The place of a drop as a row of a parent item, as insertRow takes it.
    bool dropPlace(int row, const QModelIndex &parent, Item **parentItem, int *position) const;
    QModelIndex move(Item *item, const Destination &to);

    EditorModel &m_model;
    QByteArray m_id;
};

} // namespace ZAT16
