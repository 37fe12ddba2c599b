#pragma once

#include <QPersistentModelIndex>
#include <QUndoCommand>

namespace ZAT16 {

class EditorModel;
class Item;

/// Base of every undoable change of the definitions tree. A command touches the tree only
/// through the model's primitives, so that views always get their signals, and after an undo
/// it asks the model to announce the index that should be selected again.
class Command : public QUndoCommand
{
public:
    Command(Item *item, EditorModel *model, const QModelIndex &index, Command *parent = nullptr);

protected:
    /// Emits the model's `undone` signal with the stored index.
    void select();

    Item *m_item; ///< the changed item, or the parent item for insertions and deletions
    EditorModel *m_model;
    QPersistentModelIndex m_index; ///< what to select after undo
};

} // namespace ZAT16
