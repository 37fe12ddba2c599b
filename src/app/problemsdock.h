#pragma once

#include "problems.h"

#include <QDockWidget>
#include <QModelIndex>

class QListWidget;
class QTimer;

namespace ZAT16 {

class EditorModel;
class ProblemList;

/// The "Problems" dock: every entry the tree marks in red, with the reason, and the names that
/// are keywords of a generated language, in the order of the document (Problems).
///
/// The list follows every change of the model, undo and redo included. Changes only mark the
/// list as stale and start a zero-time timer, so that a burst of changes (a paste, a macro, an
/// undo of many steps) is brought in once, when the event loop is next idle. While the dock is
/// hidden nothing is recomputed until it is shown or its problems are asked for. Only the
/// problems of the entries a change touched are recomputed (ProblemList), and only their rows of
/// the list widget change.
class ProblemsDock : public QDockWidget
{
    Q_OBJECT

public:
    explicit ProblemsDock(EditorModel *model, QWidget *parent = nullptr);

    /// The problems shown; recomputed first if the model changed since.
    const QList<Problems::Problem> &problems();
    QListWidget *list() const { return m_list; }
    /// How many times the list was brought up to date (tests count the recomputations).
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
    void onReplaced(int first, int removed, int inserted);
    void onRebuilt();

private:
    QIcon icon(const Problems::Problem &problem) const;

    EditorModel *m_model;
    ProblemList *m_problems;
    QListWidget *m_list;
    QTimer *m_timer;
    int m_refreshCount = 0;
};

} // namespace ZAT16
