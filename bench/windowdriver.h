#pragma once

#include <QModelIndex>
#include <QPersistentModelIndex>
#include <QString>

class QAction;
class QDialog;
class RowTreeView;
class QWidget;

namespace ZAT16 {
class EditorWindow;
class Item;
class ProblemsDock;
} // namespace ZAT16

/// Drives one editor window on one definitions file as a user does, for the window section of
/// zatbench: each action goes through the window's own action (found by its object name) or the
/// public function behind it, and ends when the window has caught up and shows the result (see
/// settle()), so that timing an action times what the user waits for.
///
/// The driver checks that each action did what it should (an edit is one undo step, a find
/// lands on a match, a viewer shows, a save writes the document); failure() tells the first
/// check that failed.
class WindowDriver
{
public:
    /// A window on the file at `path`, not opened yet.
    explicit WindowDriver(const QString &path);
    ~WindowDriver();

    ZAT16::EditorWindow *window() const { return m_window; }
    /// The first check that failed, or empty.
    QString failure() const { return m_failure; }

    /// Runs pending events and due timers (the view's delayed layout, the Problems dock's
    /// refresh, the painting of what changed), brings a shown Problems dock up to date, then
    /// paints all of `painted` (the tree view when null).
    void settle(QWidget *painted = nullptr);

    // The actions, each followed by settle().

    /// Opens the file as the start-up does (EditorWindow::initialize), shows the window and
    /// paints it whole.
    void open();
    /// F8: shows the Problems dock and goes to the next problem.
    void nextProblem();
    /// Types `name` into the name cell of the edited tag (the model's setData, as the delegate
    /// does on commit).
    void rename(const QString &name);
    void undo();
    void redo();
    void insertBefore();
    void remove();
    void paste();
    void cut();
    /// Move down (Ctrl+Shift+Down).
    void moveDown();
    /// F3: one step of the find bar.
    void findNext();
    void expandAll();
    void collapseAll();
    /// Triggers the View action `actionName` and returns the viewer it opened, painted.
    QDialog *view(const char *actionName);
    void save();
    /// Reloads the file, as the banner's Reload button does.
    void reload();
    /// "Clear all" (New).
    void clearAll();

    // Preparation, not timed.

    /// Makes the top-level tag in the middle of the file current and scrolls to it; the edits
    /// work on it.
    void selectEditedTag();
    /// The edited tag's name.
    QString editedName() const;
    /// Copies the current entry to the clipboard.
    void copy();
    void hideProblems();
    bool problemsShown() const;
    int undoIndex() const;
    /// Undoes or redoes to `index` of the undo stack.
    void undoTo(int index);
    /// The name of the last top-level tag, which a search from the top finds only at the end.
    QString lastTagName() const;
    /// Opens the find bar with `text` (which selects its first match); `fromTop` then makes the
    /// first row current, so that the next step searches from the top.
    void prepareFind(const QString &text, bool fromTop);
    void closeFind();
    void closeViewer(QDialog *viewer);
    /// Whether the file holds `bytes`.
    bool fileHolds(const QByteArray &bytes) const;

private:
    QAction *action(const char *name) const;
    /// Triggers the action `name` and settles; the undo stack must move by `steps`.
    void trigger(const char *name, int steps);
    void check(bool ok, const QString &what);
    void expectSteps(int before, int steps, const char *what);

    QString m_path;
    ZAT16::EditorWindow *m_window;
    RowTreeView *m_view;
    ZAT16::ProblemsDock *m_problems;
    const ZAT16::Item *m_edited = nullptr;
    QPersistentModelIndex m_editedName;
    QString m_findText;
    QString m_failure;
};
