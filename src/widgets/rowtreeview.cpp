#include "rowtreeview.h"

#include <QDragMoveEvent>
#include <QDropEvent>
#include <QPainter>
#include <QStack>
#include <QStyleOption>

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

void RowTreeView::dragMoveEvent(QDragMoveEvent *event)
{
    QTreeView::dragMoveEvent(event);
    QRect const previous = m_topLevelDropLine;
    m_topLevelDropLine = QRect();
    if (!event->isAccepted())
        acceptTopLevelDrop(event);
    if (m_topLevelDropLine != previous)
        viewport()->update();
}

// QTreeView has just placed the drop (dropIndicatorPosition()) as its drop event will place it;
// where that is between two rows of the root or below all rows, the model decides instead of the
// root's flags.
bool RowTreeView::acceptTopLevelDrop(QDragMoveEvent *event)
{
    QAbstractItemModel *itemModel = model();
    if (!itemModel || !showDropIndicator())
        return false;
    QModelIndex const index = indexAt(event->position().toPoint());
    int row = -1;
    int column = -1;
    QRect line;
    if (index.isValid()) {
        if (index.parent() != rootIndex())
            return false;
        QRect const rect = visualRect(index);
        switch (dropIndicatorPosition()) {
        case AboveItem:
            row = index.row();
            line = QRect(rect.left(), rect.top(), rect.width(), 0);
            break;
        case BelowItem:
            row = index.row() + 1;
            line = QRect(rect.left(), rect.bottom(), rect.width(), 0);
            break;
        default:
            return false;
        }
        column = index.column();
    } else if (dropIndicatorPosition() != OnViewport) {
        return false;
    }
    if (!itemModel->canDropMimeData(event->mimeData(), event->dropAction(), row, column, rootIndex()))
        return false;
    event->acceptProposedAction();
    m_topLevelDropLine = line;
    return true;
}

void RowTreeView::dragLeaveEvent(QDragLeaveEvent *event)
{
    QTreeView::dragLeaveEvent(event);
    m_topLevelDropLine = QRect();
}

void RowTreeView::dropEvent(QDropEvent *event)
{
    QTreeView::dropEvent(event);
    m_topLevelDropLine = QRect();
}

// Drawn as QTreeView draws its own drop indicator.
void RowTreeView::paintEvent(QPaintEvent *event)
{
    QTreeView::paintEvent(event);
    if (m_topLevelDropLine.isNull() || state() != DraggingState)
        return;
    QPainter painter(viewport());
    QStyleOption option;
    option.initFrom(this);
    option.rect = m_topLevelDropLine;
    style()->drawPrimitive(QStyle::PE_IndicatorItemViewItemDrop, &option, &painter, this);
}
