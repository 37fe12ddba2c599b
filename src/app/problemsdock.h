#pragma once

#include "problems.h"

#include <QDockWidget>
#include <QModelIndex>

class QListWidget;
class QTimer;

namespace ZAT16 {

class EditorModel;

/// The "Problems" dock: every entry the tree marks in red, with the reason, and the names that
/// are keywords of a generated language, in the order of the document (Problems).
///
/// The list follows every change of the model, undo and redo included. Changes only mark the
/// list as stale and start a zero-time timer, so that a burst of changes (a paste, a macro, an
/// undo of many steps) recomputes it once, when the event loop is next idle. While the dock is
/// hidden nothing is recomputed until it is shown or its problems are asked for.
class ProblemsDock : public QDockWidget
{
    Q_OBJECT

public:
    explicit ProblemsDock(EditorModel *model, QWidget *parent = nullptr);

    /// The problems shown; recomputed first if the model changed since.
    const QList<Problems::Problem> &problems();
    QListWidget *list() const { return m_list; }
    /// How many times the list was computed (tests count the recomputations).
    int refreshCount() const { return m_refreshCount; }

    /// The problem after (or before) the entry `current` in document order, wrapping around;
    /// from a problem's own entry, the next problem of the list. Selects its row and returns its
    /// entry's index, or an invalid index when there are no problems.
    QModelIndex step(const QModelIndex &current, bool forward);

public slots:
    /// Recomputes the list now.
    void refresh();

signals:
    /// The user chose a problem; the index (column 0) is its entry.
    void itemChosen(const QModelIndex &index);

private slots:
    void scheduleRefresh();
    void onActivated(const QModelIndex &row);

private:
    // The rows leading from the root to `item`, which orders entries as the document does.
    QList<int> path(const Item *item) const;

    EditorModel *m_model;
    QListWidget *m_list;
    QTimer *m_timer;
    QList<Problems::Problem> m_problems;
    bool m_stale = true;
    int m_refreshCount = 0;
};

} // namespace ZAT16
