#pragma once

#include <QTreeView>

/// A tree view that reports selection and current-row changes as simple signals carrying model
/// indexes, and that can expand or collapse a whole subtree at once.
///
/// Drops between the top-level rows, and onto the empty area below the rows, go to the model
/// whenever its canDropMimeData() takes them there. QTreeView takes them only where the model
/// flags its root (the invalid index) as drop-enabled, which a model may not do although it takes
/// drops between its top-level rows.
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

protected:
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

protected slots:
    void selectionChanged(QItemSelection const &selected, QItemSelection const &deselected) override;
    void currentChanged(QModelIndex const &current, QModelIndex const &previous) override;

private:
    // Takes a drop that QTreeView refused for the flags of the root; false if the model does not
    // take it either.
    bool acceptTopLevelDrop(QDragMoveEvent *event);
    void forEachBelow(QModelIndex const &index, void (QTreeView::*action)(QModelIndex const &));

    QRect m_topLevelDropLine; ///< the drop indicator of such a drop between top-level rows
};
