#pragma once

#include "insertionpolicy.h"
#include "item.h"

#include <QCoreApplication>
#include <QModelIndex>

class QMimeData;

namespace ZAT16 {

class CommandDelete;
class EditorModel;

/// The editing operations of the editor model. Each one checks what it is given and pushes
/// undo commands on the model's stack; none changes the tree itself, which only the commands
/// do through the model's primitives. EditorModel describes each operation.
class EditorEdits
{
    // The texts belong to the model, as the undo history shows them.
    Q_DECLARE_TR_FUNCTIONS(ZAT16::EditorModel)

public:
    explicit EditorEdits(EditorModel &model);

    void undoableSetTags(Item *root, const QModelIndex &index);
    void undoableClear(const QModelIndex &index);

    bool setData(const QModelIndex &index, const QVariant &value, int role);
    bool setItemData(const QModelIndex &index, const ItemData &data);
    QModelIndex insertRow(int row, const QModelIndex &parent, Item *item);
    bool insertRow(int row, const QModelIndex &parent);
    QModelIndex insertAfter(const QModelIndex &at);
    QModelIndex insertBefore(const QModelIndex &at);
    QModelIndex insertList(const QModelIndex &at, ItemType kind);
    CommandDelete *prepareRemoveRow(int row, const QModelIndex &parent);
    bool removeRow(int row, const QModelIndex &parent);

    QMimeData *copy(const QModelIndex &index);
    QMimeData *cut(const QModelIndex &index);
    QModelIndex paste(const QModelIndex &at, const QMimeData *data);

private:
    QModelIndex mergeList(Item *list, Item *existing, int position, const QModelIndex &parent);
    QModelIndex insertBlankRow(const InsertionPolicy::Slot &slot);

    EditorModel &m_model;
};

} // namespace ZAT16
