#pragma once

#include "outputproblems.h"
#include "problems.h"

#include <QDockWidget>
#include <QModelIndex>

class QLabel;
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
///
/// Below them, under their own heading, the problems of the generated code (OutputProblems):
/// the entries for which a generated output would not compile or load, or would hold another
/// value than the file's. These are found over the whole document, so they are looked for only
/// while the dock is shown and once the document has rested for a moment; the entries they name
/// get the model's output mark while the dock is shown.
class ProblemsDock : public QDockWidget
{
    Q_OBJECT

public:
    explicit ProblemsDock(EditorModel *model, QWidget *parent = nullptr);

    /// The problems shown; recomputed first if the model changed since.
    const QList<Problems::Problem> &problems();
    QListWidget *list() const { return m_list; }
    /// The problems of the generated code shown; recomputed first if the model changed since.
    const QList<OutputProblems::Problem> &outputProblems();
    QListWidget *outputList() const { return m_outputList; }
    /// How long the document rests before the problems of the generated code are looked for.
    static constexpr int outputDelayMs = 1000;
    /// How many times the list was brought up to date (tests count the recomputations).
    int refreshCount() const { return m_refreshCount; }

    /// The problem after (or before) the entry `current` in document order, wrapping around;
    /// from a problem's own entry, the next problem of the list. Selects its row and returns its
    /// entry's index, or an invalid index when there are no problems.
    QModelIndex step(const QModelIndex &current, bool forward);

public slots:
    /// Recomputes the list now.
    void refresh();
    /// Recomputes the problems of the generated code now.
    void refreshOutputs();

signals:
    /// The user chose a problem; the index (column 0) is its entry.
    void itemChosen(const QModelIndex &index);

private slots:
    void scheduleRefresh();
    void scheduleOutputRefresh();
    void onActivated(const QModelIndex &row);
    void onOutputActivated(const QModelIndex &row);
    void onReplaced(int first, int removed, int inserted);
    void onRebuilt();

private:
    QIcon icon(const Problems::Problem &problem) const;
    // Gives the entries of the problems of the generated code the model's output mark, or, when
    // the dock is not `shown`, takes every such mark away.
    void markOutputs(bool shown);

    EditorModel *m_model;
    ProblemList *m_problems;
    QListWidget *m_list;
    QTimer *m_timer;
    int m_refreshCount = 0;
    QLabel *m_lbl_output;
    QListWidget *m_outputList;
    QTimer *m_outputTimer;
    QList<OutputProblems::Problem> m_outputProblems;
    bool m_outputStale = true;
    bool m_markingOutputs = false;
};

} // namespace ZAT16
