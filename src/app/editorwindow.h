#pragma once

#include "codeviewer.h"
#include "editordocument.h"
#include "item.h"
#include "outputs.h"
#include "treeediting.h"

#include <QMainWindow>
#include <QModelIndex>
#include <QPersistentModelIndex>

class QDockWidget;
class QMenu;
class QToolBar;
class QSyntaxHighlighter;
class QTextEdit;
class QUndoStack;
class QUndoView;
class Ui_ZAT16EditorWindow;

namespace ZAT16 {

class EditorModel;
class FindBar;
class ColumnFitter;
class ProblemsDock;
class RecentFiles;
class Recovery;
class StatusLine;

/// The editor's single main window: the definitions tree with its actions, menus and docks, and
/// the title that follows the undo stack's clean state. The document's file (opening, saving with
/// one backup, reloading, the banner that reports changes made by other programs, the recovery of
/// unsaved changes) is EditorDocument's, the viewers of generated text are CodeViewer's; the
/// window's functions of the same names hand over to them.
class EditorWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit EditorWindow(QWidget *parent = nullptr);
    ~EditorWindow() override;

    /// Opens `path`, or the file last opened when `path` is empty. The title
    /// shows `displayName`, or the file's name when that is empty.
    void initialize(const QString &path, const QString &displayName) { m_document->initialize(path, displayName); }

    /// Parses one file and reports problems; the caller owns the returned root (null on failure).
    Item *loadDefinitionFile(const QString &path) { return m_document->loadDefinitionFile(path); }
    /// Saves with the file change watcher paused.
    bool save(const QString &path) { return m_document->save(path); }
    /// The save sequence proper: temporary file, one backup generation, rename into place.
    bool dosave(const QString &path) { return m_document->dosave(path); }
    /// Asks before unsaved changes are lost; true when they may be dropped.
    bool canDiscard() { return m_document->canDiscard(); }
    /// Opens `path` once unsaved changes may be dropped, as Open does with the file chosen in its
    /// dialog (a recent file, a dropped file); true when it was opened.
    bool openFile(const QString &path) { return m_document->openFile(path); }
    /// Ends the program without a question, for SIGTERM: unsaved changes go to the recovery
    /// file, which the next start offers.
    void terminate();

    /// Opens a read-only viewer of generated text, with the buttons "Save as..." (writes exactly
    /// `text`, UTF-8) and "Copy all".
    QDialog *createViewer(const QString &title, QSyntaxHighlighter *highlighter, const QString &text)
    {
        return m_viewer->createViewer(title, highlighter, text);
    }
    /// Writes `text` UTF-8 encoded to `path` through a temporary file and a rename; failures
    /// are reported with error(). True on success.
    bool saveText(const QString &path, const QString &text) { return m_viewer->saveText(path, text); }

    /// Opens the find bar with `text` and selects the first match.
    void showFindBar(const QString &text);
    /// Shows the problems dock with a fresh list.
    void showProblems();
    /// Compares the file at `oldPath` (the older version) with the open document and shows the
    /// report in a viewer; null when the file cannot be read (the error has been shown).
    QDialog *showCompareReport(const QString &oldPath) { return m_viewer->showCompareReport(oldPath); }
    /// Makes `index` current, expanding its parents and scrolling it into view.
    void showItem(const QModelIndex &index);

    Ui_ZAT16EditorWindow *ui() const { return m_ui; }
    EditorModel *model() const { return m_model; }
    QUndoStack *undoStack() const { return m_undoStack; }
    QToolBar *toolBar() const { return m_toolBar; }
    StatusLine *statusLine() const { return m_statusLine; }
    ColumnFitter *columnFitter() const { return m_columnFitter; }
    /// The context menu of the tree for a click on `index` (invalid: below the rows); the
    /// caller owns it.
    QMenu *treeContextMenu(const QModelIndex &index);
    QString fileName() const { return m_document->fileName(); }
    QString displayName() const { return m_document->displayName(); }
    QDockWidget *undoDock() const { return m_undoDock; }
    QDockWidget *messageDock() const { return m_messageDock; }
    QTextEdit *messages() const { return m_messages; }
    FindBar *findBar() const;
    ProblemsDock *problemsDock() const { return m_problemsDock; }
    Recovery *recovery() const { return m_recovery; }
    RecentFiles *recentFiles() const { return m_recentFiles; }

signals:
    void saved(ZAT16::Item *root, const QString &path);
    void opened(ZAT16::Item *root, const QString &path);

public slots:
    void popupMessage(const QString &text);
    /// Shows a quiet note ("Saved to ...") in the status bar for a while.
    void showNote(const QString &text);
    void message(const QString &text);
    void error(const QString &text);

    void updateActions();
    void updateCleanState();
    void setCurrentItem(const QModelIndex &index);

    void onNew();
    void onInsertBefore();
    void onInsertAfter();
    void onAddEnums();
    void onAddBits();
    void onCut() { m_editing->cut(); }
    void onCopy() { m_editing->copy(); }
    void onPaste() { m_editing->paste(); }
    void onDelete() { m_editing->remove(); }
    void onDoubleClicked(const QModelIndex &index) { m_editing->edit(index); }
    void onApplyItem(const ZAT16::Item *item, const ZAT16::ItemData &data) { m_editing->apply(item, data); }
    void onExpanded(const QModelIndex &index);
    void onFixedFont();
    void onCommentFont();
    void onViewHeader() { onViewOutput(Outputs::Header); }
    void onViewLua() { onViewOutput(Outputs::Lua); }
    void onViewCpp() { onViewOutput(Outputs::Cpp); }
    void onViewCppLut() { onViewOutput(Outputs::CppLut); }
    void onViewCs() { onViewOutput(Outputs::Cs); }
    /// Opens a viewer of the output `kind` of the definitions as they are now.
    void onViewOutput(Outputs::Kind kind) { m_viewer->showOutput(kind); }
    void onOpen() { m_document->open(); }
    bool onSave() { return m_document->save(); }
    void onSaveAs() { m_document->saveAs(); }
    void onReloadClicked() { m_document->reloadWatched(); }
    void onUndoHistoryChanged();
    void onFind();
    void onFindNext();
    void onFindPrevious();
    void onNextProblem();
    void onPreviousProblem();
    void onCompare() { m_viewer->compare(); }

protected:
    void closeEvent(QCloseEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void addList(ItemType type);
    void createToolBar(QAction *undo, QAction *redo);
    void onTreeContextMenu(const QPoint &position);
    void collapseSubtree(const QModelIndex &index);
    /// Floating docks hide with the window (`shown` false) and come back when it shows again.
    void docksFollowWindow(bool shown);
    // Expands the direct children of `index` that are not expanded yet.
    void expandChildren(const QModelIndex &index);
    void expandPending();
    /// The submenu Open Recent, and the definitions files dropped onto the window.
    void setUpFileOpening();
    /// Takes a drag event that carries a definitions file; false for any other.
    bool takeFileDrop(QEvent *event);

    Ui_ZAT16EditorWindow *m_ui;
    EditorModel *m_model;
    QUndoStack *m_undoStack;
    QDockWidget *m_undoDock;
    QUndoView *m_undoView;
    bool m_undoDockWasVisible = false;
    QDockWidget *m_messageDock;
    QTextEdit *m_messages;
    bool m_messageDockWasVisible = false;
    ProblemsDock *m_problemsDock;
    bool m_problemsDockWasVisible = false;
    Recovery *m_recovery;
    EditorDocument *m_document;
    CodeViewer *m_viewer;
    TreeEditing *m_editing;
    QToolBar *m_toolBar = nullptr;
    StatusLine *m_statusLine = nullptr;
    ColumnFitter *m_columnFitter = nullptr;
    bool m_layoutRestored = false;
    // The bottom docks given their first height.
    QList<QDockWidget *> m_sizedDocks;
    // Top-level entries expanded in a burst, whose children are expanded when the loop is idle.
    QList<QPersistentModelIndex> m_pendingExpansions;
    bool m_expansionBurst = false;
    RecentFiles *m_recentFiles = nullptr;
};

} // namespace ZAT16
