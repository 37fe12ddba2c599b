#pragma once

#include <QTreeView>

/// A tree view that reports selection and current-row changes as simple signals carrying model
/// indexes, and that can expand or collapse a whole subtree at once.
class RowTreeView : public QTreeView
{
    Q_OBJECT

public:
    explicit RowTreeView(QWidget *parent = nullptr);

    /// The first of the view's selected indexes, or an invalid index if nothing is selected.
    QModelIndex selectedItem() const;

    /// Resets the view as QTreeView does, then emits selectionChanged(selectedItem()).
    void reset() override;

public slots:
    /// Expands every descendant of \a index, then \a index itself.
    void expandSubtree(QModelIndex const &index);
    void expandCurrentSubtree();
    /// Collapses \a index first, then every descendant of it.
    void collapseSubtree(QModelIndex const &index);
    void collapseCurrentSubtree();
    /// Expands every row that has rows below it, the whole tree at once: the rows QTreeView's
    /// expandAll() opens, in one layout for all of them. expandAll() also records every leaf as
    /// expanded, which in a tree of a million rows takes most of its time and makes a later
    /// collapseAll() as slow.
    void expandWholeTree();

signals:
    /// The selection changed; \a index is selectedItem() after the change.
    void selectionChanged(QModelIndex const &index);
    /// The current index moved from \a previous to \a current.
    void currentIndexChanged(QModelIndex const &current, QModelIndex const &previous);

protected slots:
    void selectionChanged(QItemSelection const &selected, QItemSelection const &deselected) override;
    void currentChanged(QModelIndex const &current, QModelIndex const &previous) override;

private:
    void forEachBelow(QModelIndex const &index, void (QTreeView::*action)(QModelIndex const &));
};
