#include "rowtreeview.h"

#include <QStack>

RowTreeView::RowTreeView(QWidget *parent)
    : QTreeView(parent)
{
}

QModelIndex RowTreeView::selectedItem() const
{
    QModelIndexList const selected = selectedIndexes();
    return selected.isEmpty() ? QModelIndex() : selected.first();
}

void RowTreeView::reset()
{
    QTreeView::reset();
    // The selection model is cleared silently by a reset, so listeners would never hear of it.
    emit selectionChanged(selectedItem());
}

void RowTreeView::selectionChanged(QItemSelection const &selected, QItemSelection const &deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    emit selectionChanged(selectedItem());
}

void RowTreeView::currentChanged(QModelIndex const &current, QModelIndex const &previous)
{
    QTreeView::currentChanged(current, previous);
    emit currentIndexChanged(current, previous);
}

// Both walks use an explicit stack rather than recursion, so that deep trees cannot exhaust the
// call stack.
void RowTreeView::expandSubtree(QModelIndex const &index)
{
    if (!model())
        return;
    forEachBelow(index, &QTreeView::expand);
    expand(index);
}

void RowTreeView::expandCurrentSubtree()
{
    expandSubtree(currentIndex());
}

void RowTreeView::collapseSubtree(QModelIndex const &index)
{
    if (!model())
        return;
    collapse(index);
    forEachBelow(index, &QTreeView::collapse);
}

// Calls `action` on every row below `index`, each parent before its children.
void RowTreeView::forEachBelow(QModelIndex const &index, void (QTreeView::*action)(QModelIndex const &))
{
    QAbstractItemModel const *itemModel = model();
    QStack<QModelIndex> pending;
    pending.push(index);
    while (!pending.isEmpty()) {
        QModelIndex const parent = pending.pop();
        int const rows = itemModel->rowCount(parent);
        for (int row = 0; row < rows; ++row) {
            QModelIndex const child = itemModel->index(row, 0, parent);
            pending.push(child);
            (this->*action)(child);
        }
    }
}

void RowTreeView::collapseCurrentSubtree()
{
    collapseSubtree(currentIndex());
}

// While a layout is pending, expanding a row only records it: the layout at the end places all
// rows once.
void RowTreeView::expandWholeTree()
{
    QAbstractItemModel const *itemModel = model();
    if (!itemModel)
        return;
    scheduleDelayedItemsLayout();
    QStack<QModelIndex> pending;
    pending.push(rootIndex());
    while (!pending.isEmpty()) {
        QModelIndex const parent = pending.pop();
        int const rows = itemModel->rowCount(parent);
        for (int row = 0; row < rows; ++row) {
            QModelIndex const child = itemModel->index(row, 0, parent);
            if (!itemModel->hasChildren(child))
                continue;
            pending.push(child);
            expand(child);
        }
    }
    executeDelayedItemsLayout();
}
