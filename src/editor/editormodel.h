#pragma once

#include "collisioncache.h"
#include "editoredits.h"
#include "editormoves.h"
#include "item.h"
#include "itempresentation.h"

#include <QAbstractItemModel>
#include <QFont>
#include <QSet>

class QUndoCommand;
class QUndoStack;

namespace ZAT16 {

class CommandDelete;

/// The item model through which the tree view and the application read and change the
/// definitions tree. Three columns: name, code, comment. The root item stands for the invalid
/// index and is never shown. Every change becomes an undo command pushed on the undo stack;
/// the commands change the tree only through the cmd* primitives, which emit the model signals
/// and keep the collision counts up to date.
class EditorModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    explicit EditorModel(QObject *parent = nullptr);
    ~EditorModel() override;

    // Structure
    Item *index2item(const QModelIndex &index) const;
    QModelIndex item2index(const Item *item) const;
    int findRow(const Item *item) const;
    QModelIndex index(int row, int column, const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &index) const override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;

    // Reading
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant displayData(const Item *item, int column) const { return m_presentation.display(item, column); }
    QVariant editData(const Item *item, int column) const { return m_presentation.edit(item, column); }
    QVariant decorationData(const Item *item, int column) const { return m_presentation.decoration(item, column); }
    QVariant tooltipData(const Item *item, int column) const
    {
        return m_presentation.tooltip(item, column, [this, item] { return findCollision(item); });
    }
    QVariant fontData(const Item *item, int column) const { return m_presentation.font(item, column); }
    QVariant highlightData(const Item *item, int row, int column, int role) const;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    /// Name and code collisions of the item with its siblings, from counts of the siblings'
    /// names and codes that edits keep up to date. Always equal to Item::findCollision().
    Item::CollisionFlags findCollision(const Item *item) const;

    /// The root item of the document (may be null); the model owns it.
    Item *root() const { return m_root; }

    /// Marks `items`, and only them, as entries that keep a generated output from compiling or
    /// from holding the file's values (the Problems dock finds them); their rows are repainted.
    /// An item that leaves the document loses its mark, a new document has none.
    void setOutputMarks(const QList<const Item *> &items);
    bool hasOutputMark(const Item *item) const { return m_outputMarks.contains(item); }

    // Fonts and the stack
    QFont fixedFont() const { return m_presentation.fixedFont(); }
    QFont commentFont() const { return m_presentation.commentFont(); }
    void setFixedFont(const QFont &font);
    void setCommentFont(const QFont &font);
    /// Asks the views to repaint the children of `item`.
    void allChildrenChanged(Item *item);
    void setUndoStack(QUndoStack *stack);
    QUndoStack *undoStack() const { return m_undoStack; }
    /// Pushes on the undo stack; without a stack the change is made at once and not kept.
    void push(QUndoCommand *command);

    // Whole-document operations
    /// Installs a new document (the model takes it) and clears the undo history; not undoable.
    void setTags(Item *root);
    void clear();
    /// Installs a new document (null: an empty one) as one undoable step.
    void undoableSetTags(Item *root, const QModelIndex &index) { m_edits.undoableSetTags(root, index); }
    void undoableClear(const QModelIndex &index) { m_edits.undoableClear(index); }

    // Editing operations: each pushes commands, none changes the tree directly
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override
    {
        return m_edits.setData(index, value, role);
    }
    using QAbstractItemModel::setItemData;
    /// Replaces the item's whole data as one undoable step (the item edit dialog's result).
    bool setItemData(const QModelIndex &index, const ItemData &data) { return m_edits.setItemData(index, data); }
    /// Inserts `item` (the model takes it when the result is valid), or a new empty row when it
    /// is null. Tags go to the root level, values and lists into the lists of the enclosing tag.
    QModelIndex insertRow(int row, const QModelIndex &parent, Item *item)
    {
        return m_edits.insertRow(row, parent, item);
    }
    bool insertRow(int row, const QModelIndex &parent = QModelIndex()) { return m_edits.insertRow(row, parent); }
    /// A new empty row below `at` (the selection; invalid: the last row), or at the end of `at`
    /// when it is a list. The new row's index, or invalid when none was inserted.
    QModelIndex insertAfter(const QModelIndex &at) { return m_edits.insertAfter(at); }
    /// A new empty row above `at` (invalid: the first row), or at the start of `at` when it is
    /// a list; into an empty document as insertAfter().
    QModelIndex insertBefore(const QModelIndex &at) { return m_edits.insertBefore(at); }
    /// The enumeration or bit list of the tag that holds `at`, created when missing.
    QModelIndex insertList(const QModelIndex &at, ItemType kind) { return m_edits.insertList(at, kind); }
    /// A new, unpushed delete command for the row, or null.
    CommandDelete *prepareRemoveRow(int row, const QModelIndex &parent)
    {
        return m_edits.prepareRemoveRow(row, parent);
    }
    bool removeRow(int row, const QModelIndex &parent = QModelIndex()) { return m_edits.removeRow(row, parent); }

    // Moving entries (EditorMoves): each move is one undo step, the entry keeps its subtree
    bool canMoveBy(const QModelIndex &index, int offset) const { return m_moves.canMoveBy(index, offset); }
    /// Moves the entry by `offset` rows within its list (Move up: -1, Move down: 1); its new
    /// index, or invalid when it cannot move so.
    QModelIndex moveBy(const QModelIndex &index, int offset) { return m_moves.moveBy(index, offset); }
    /// Moves the entry to where insertRow(row, parent, entry) would put it; its new index, or
    /// invalid when it cannot go there or is there already.
    QModelIndex moveTo(const QModelIndex &index, int row, const QModelIndex &parent)
    {
        return m_moves.moveTo(index, row, parent);
    }
    bool canMoveTo(const QModelIndex &index, int row, const QModelIndex &parent) const
    {
        return m_moves.canMoveTo(index, row, parent);
    }

    // Clipboard and drag-and-drop
    QMimeData *copy(const QModelIndex &index) { return m_edits.copy(index); }
    QMimeData *cut(const QModelIndex &index) { return m_edits.cut(index); }
    QModelIndex paste(const QModelIndex &at, const QMimeData *data) { return m_edits.paste(at, data); }
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    bool canDropMimeData(
        const QMimeData *data, Qt::DropAction action, int row, int column, const QModelIndex &parent) const override;
    bool dropMimeData(
        const QMimeData *data, Qt::DropAction action, int row, int column, const QModelIndex &parent) override;
    Qt::DropActions supportedDropActions() const override;
    Qt::DropActions supportedDragActions() const override;

    // Primitive tree changes, called only by the undo commands
    void cmdInsertRow(Item *parent, Item *item, int row);
    Item *cmdTakeRow(Item *parent, int row);
    /// Moves child `fromRow` of `from` to row `toRow` of `to`, that row counted in the list as it
    /// is after the move; nothing when it stays where it is.
    void cmdMoveRow(Item *from, int fromRow, Item *to, int toRow);
    void cmdItemChanged(Item *item);
    Item *cmdReplaceTags(Item *root);
    void cmdUndone(const QModelIndex &index);

signals:
    /// A command has been undone; `index` is what it wants selected again.
    void undone(const QModelIndex &index);
    /// A row dragged within the model was dropped: its entry moved to `index`.
    void entryDropped(const QModelIndex &index);

private:
    // Forgets the output marks of `item` and its subtree, which leave the document.
    void forgetOutputMarks(const Item *item);
    // Siblings whose collision flags a change turned on or off.
    using Changed = SiblingIndex::Changed;
    // Ask the views to repaint rows, all columns.
    void rowChanged(const Item *item, int row);
    void rowsChanged(const Item *parent, const Changed &changed);
    void allRowsChanged(const Item *parent);

    Item *m_root = nullptr;
    QUndoStack *m_undoStack = nullptr;
    CollisionCache m_collisions;
    QSet<const Item *> m_outputMarks;
    ItemPresentation m_presentation;
    EditorEdits m_edits { *this };
    EditorMoves m_moves { *this };
};

} // namespace ZAT16
