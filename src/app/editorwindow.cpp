#include "editorwindow.h"

#include "ui_editorwindow.h"

#include "codeviewer.h"
#include "columnfitter.h"
#include "editordelegate.h"
#include "editordocument.h"
#include "editormodel.h"
#include "editorsettings.h"
#include "findbar.h"
#include "problemsdock.h"
#include "recentfiles.h"
#include "recovery.h"
#include "statusline.h"
#include "treeediting.h"
#include "windowlayout.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QFontDialog>
#include <QHeaderView>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QScreen>
#include <QStatusBar>
#include <QTextCursor>
#include <QTextEdit>
#include <QTimer>
#include <QToolBar>
#include <QToolTip>
#include <QUndoStack>
#include <QUndoView>
#include <QUrl>

#include <utility>

namespace ZAT16 {

EditorWindow::EditorWindow(QWidget *parent)
    : QMainWindow(parent)
    , m_ui(new Ui_ZAT16EditorWindow)
{
    m_ui->setupUi(this);
    m_model = new EditorModel(this);
    m_undoStack = new QUndoStack(this);
    m_undoStack->setUndoLimit(1000);
    connect(m_undoStack, &QUndoStack::indexChanged, this, &EditorWindow::onUndoHistoryChanged);
    connect(m_undoStack, &QUndoStack::cleanChanged, this, &EditorWindow::updateCleanState);
    m_model->setUndoStack(m_undoStack);
    connect(m_model, &EditorModel::undone, this, &EditorWindow::setCurrentItem);
    // A dropped row is selected whole at its new place, as after Move up or down.
    connect(m_model, &EditorModel::entryDropped, this, &EditorWindow::setCurrentItem);
    // Until a file is opened the window shows an empty document, to which the first tag can be
    // added.
    auto *empty = new Item;
    empty->type = Root;
    m_model->setTags(empty);

    RowTreeView *view = m_ui->m_view;
    view->setModel(m_model);
    view->setItemDelegate(new EditorDelegate(view));
    connect(view, &QTreeView::expanded, this, &EditorWindow::onExpanded);
    connect(view, &QAbstractItemView::doubleClicked, this, &EditorWindow::onDoubleClicked);
    connect(view, &RowTreeView::currentIndexChanged, this, &EditorWindow::updateActions);
    connect(view, qOverload<const QModelIndex &>(&RowTreeView::selectionChanged), this, &EditorWindow::updateActions);

    setWindowIcon(QIcon(QStringLiteral(":/icons/i16_table_edit.png")));
    resize(800, 500);
    view->header()->resizeSection(0, 250);
    view->header()->resizeSection(1, 60);

    m_ui->m_wdg_file_changed->hide();
    connect(m_ui->m_wdg_file_changed, &FileChangedWidget::reloadClicked, this, &EditorWindow::onReloadClicked);

    m_undoDock = new QDockWidget(tr("Undo History"), this);
    m_undoDock->setObjectName(QStringLiteral("UndoDock"));
    m_undoView = new QUndoView(m_undoStack, m_undoDock);
    m_undoDock->setWidget(m_undoView);
    // Docked at the right when first shown: a floating history over the menu bar takes the
    // clicks meant for the menus.
    addDockWidget(Qt::RightDockWidgetArea, m_undoDock);
    m_undoDock->setFloating(false);
    m_undoDock->hide();
    // The bottom docks reach under the right one, across the whole window.
    setCorner(Qt::BottomLeftCorner, Qt::BottomDockWidgetArea);
    setCorner(Qt::BottomRightCorner, Qt::BottomDockWidgetArea);

    m_messageDock = new QDockWidget(tr("Messages"), this);
    m_messageDock->setObjectName(QStringLiteral("MessageDock"));
    m_messages = new QTextEdit(m_messageDock);
    m_messages->setReadOnly(true);
    m_messages->document()->setMaximumBlockCount(1000);
    // An empty paragraph without margins, so that the first message starts at the top.
    m_messages->append(QStringLiteral("<span style=\"margin: 0;\"/>"));
    m_messageDock->setWidget(m_messages);
    addDockWidget(Qt::BottomDockWidgetArea, m_messageDock);
    m_messageDock->setFloating(false);
    m_messageDock->hide();

    // Beside the messages, below the tree.
    m_problemsDock = new ProblemsDock(m_model, this);
    addDockWidget(Qt::BottomDockWidgetArea, m_problemsDock);
    m_problemsDock->setFloating(false);
    m_problemsDock->hide();
    connect(m_problemsDock, &ProblemsDock::itemChosen, this, &EditorWindow::showItem);

    m_recovery = new Recovery(m_model, m_undoStack, this);
    connect(m_recovery, &Recovery::problem, this, &EditorWindow::message);
    m_document = new EditorDocument(this);
    connect(m_document, &EditorDocument::opened, this, &EditorWindow::opened);
    connect(m_document, &EditorDocument::saved, this, &EditorWindow::saved);
    m_viewer = new CodeViewer(this, m_document);
    m_editing = new TreeEditing(this);
    setUpFileOpening();

    FindBar *find = m_ui->m_wdg_find;
    find->hide();
    find->attach(m_model, view);
    connect(find, &FindBar::found, this, &EditorWindow::showItem);
    connect(find, &FindBar::closed, view, qOverload<>(&QWidget::setFocus));

    QAction *undo = m_undoStack->createUndoAction(this, QString());
    undo->setShortcut(QKeySequence(QStringLiteral("Ctrl+Z")));
    undo->setIcon(QIcon(QStringLiteral(":/icons/i16_undo.png")));
    QAction *redo = m_undoStack->createRedoAction(this, QString());
    redo->setShortcut(QKeySequence(QStringLiteral("Ctrl+Y")));
    redo->setIcon(QIcon(QStringLiteral(":/icons/i16_redo.png")));
    m_ui->m_menu_edit->insertAction(m_ui->m_act_insert_before, undo);
    m_ui->m_menu_edit->insertAction(m_ui->m_act_insert_before, redo);
    m_ui->m_menu_edit->insertSeparator(m_ui->m_act_insert_before);
    QAction *history = m_undoDock->toggleViewAction();
    history->setIcon(QIcon(QStringLiteral(":/icons/i16_undo_history.png")));
    m_ui->m_menu_view->insertAction(m_ui->m_act_fixed_font, history);
    m_ui->m_menu_view->insertSeparator(m_ui->m_act_fixed_font);
    m_ui->m_menu_view->insertAction(m_ui->m_act_next_problem, m_problemsDock->toggleViewAction());
    createToolBar(undo, redo);
    m_ui->m_menu_view->insertAction(m_ui->m_act_fixed_font, m_toolBar->toggleViewAction());
    m_ui->m_menu_view->insertSeparator(m_ui->m_act_fixed_font);
    for (QDockWidget *dock : { m_undoDock, m_messageDock, static_cast<QDockWidget *>(m_problemsDock) })
        dock->installEventFilter(this);
    // Without a stored layout, a bottom dock shown for the first time takes a quarter of the
    // window's height rather than half of it.
    for (QDockWidget *dock : { m_messageDock, static_cast<QDockWidget *>(m_problemsDock) }) {
        connect(dock, &QDockWidget::visibilityChanged, this, [this, dock](bool visible) {
            if (!visible || m_layoutRestored || m_sizedDocks.contains(dock) || dock->isFloating())
                return;
            m_sizedDocks.append(dock);
            resizeDocks({ dock }, { std::max(120, height() / 4) }, Qt::Vertical);
        });
    }

    m_statusLine = new StatusLine(statusBar(), m_model, m_problemsDock, this);
    m_columnFitter = new ColumnFitter(view, m_model, this);
    connect(m_document, &EditorDocument::shown, this, [this](const QString &path) {
        m_statusLine->setPath(path);
        m_columnFitter->fit();
    });
    connect(m_document, &EditorDocument::saved, this, [this](Item *, const QString &path) {
        m_statusLine->setPath(path);
    });
    view->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(view, &QWidget::customContextMenuRequested, this, &EditorWindow::onTreeContextMenu);
    // Move up and Move down are TreeEditing's, which also keeps them enabled or not; in the Edit
    // menu they follow Delete.
    m_ui->m_menu_edit->insertAction(m_ui->m_act_new, m_editing->moveUpAction());
    m_ui->m_menu_edit->insertAction(m_ui->m_act_new, m_editing->moveDownAction());
    m_ui->m_menu_edit->insertSeparator(m_ui->m_act_new);

    connect(m_ui->m_act_open, &QAction::triggered, this, &EditorWindow::onOpen);
    connect(m_ui->m_act_save, &QAction::triggered, this, &EditorWindow::onSave);
    connect(m_ui->m_act_save_as, &QAction::triggered, this, &EditorWindow::onSaveAs);
    connect(m_ui->m_act_close, &QAction::triggered, this, &QWidget::close);
    connect(m_ui->m_act_insert_before, &QAction::triggered, this, &EditorWindow::onInsertBefore);
    connect(m_ui->m_act_insert_after, &QAction::triggered, this, &EditorWindow::onInsertAfter);
    connect(m_ui->m_act_add_bits, &QAction::triggered, this, &EditorWindow::onAddBits);
    connect(m_ui->m_act_add_enums, &QAction::triggered, this, &EditorWindow::onAddEnums);
    connect(m_ui->m_act_cut, &QAction::triggered, this, &EditorWindow::onCut);
    connect(m_ui->m_act_copy, &QAction::triggered, this, &EditorWindow::onCopy);
    connect(m_ui->m_act_paste, &QAction::triggered, this, &EditorWindow::onPaste);
    connect(m_ui->m_act_delete, &QAction::triggered, this, &EditorWindow::onDelete);
    connect(m_ui->m_act_new, &QAction::triggered, this, &EditorWindow::onNew);
    connect(m_ui->m_act_view_header, &QAction::triggered, this, &EditorWindow::onViewHeader);
    connect(m_ui->m_act_view_lua, &QAction::triggered, this, &EditorWindow::onViewLua);
    connect(m_ui->m_act_view_cpp, &QAction::triggered, this, &EditorWindow::onViewCpp);
    connect(m_ui->m_act_view_cpp_lut, &QAction::triggered, this, &EditorWindow::onViewCppLut);
    connect(m_ui->m_act_view_cs, &QAction::triggered, this, &EditorWindow::onViewCs);
    connect(m_ui->m_act_fixed_font, &QAction::triggered, this, &EditorWindow::onFixedFont);
    connect(m_ui->m_act_comment_font, &QAction::triggered, this, &EditorWindow::onCommentFont);
    connect(m_ui->m_act_find, &QAction::triggered, this, &EditorWindow::onFind);
    connect(m_ui->m_act_find_next, &QAction::triggered, this, &EditorWindow::onFindNext);
    connect(m_ui->m_act_find_previous, &QAction::triggered, this, &EditorWindow::onFindPrevious);
    connect(m_ui->m_act_next_problem, &QAction::triggered, this, &EditorWindow::onNextProblem);
    connect(m_ui->m_act_previous_problem, &QAction::triggered, this, &EditorWindow::onPreviousProblem);
    connect(m_ui->m_act_compare, &QAction::triggered, this, &EditorWindow::onCompare);
    connect(m_ui->m_act_expand_all, &QAction::triggered, view, &RowTreeView::expandWholeTree);
    connect(m_ui->m_act_collapse_all, &QAction::triggered, view, &QTreeView::collapseAll);
    connect(m_ui->m_act_edit, &QAction::triggered, this, [this] { m_editing->edit(m_ui->m_view->currentIndex()); });
    connect(m_ui->m_act_expand_subtree, &QAction::triggered, this, [this] {
        m_ui->m_view->expandRecursively(m_ui->m_view->currentIndex().siblingAtColumn(0));
    });
    connect(m_ui->m_act_collapse_subtree, &QAction::triggered, this, [this] {
        collapseSubtree(m_ui->m_view->currentIndex().siblingAtColumn(0));
    });

    // Settings that are missing or unreadable leave the defaults. The layout comes back only
    // with its check intact, as Qt's restore functions crash on some damaged bytes.
    m_layoutRestored = WindowLayout::restore(this, view->header());
    if (!m_layoutRestored) {
        // A first start: two thirds of the screen, and the columns fitted to what is opened.
        m_columnFitter->reset();
        if (const QScreen *screen = QGuiApplication::primaryScreen()) {
            const QRect available = screen->availableGeometry();
            resize(std::max(800, available.width() * 2 / 3), std::max(500, available.height() * 2 / 3));
            move(available.center() - rect().center());
        }
    }
    QFont font;
    if (EditorSettings::readFont(EditorSettings::FixedFont, &font))
        m_model->setFixedFont(font);
    if (EditorSettings::readFont(EditorSettings::CommentFont, &font))
        m_model->setCommentFont(font);

    // The form's placeholder title never shows, not even on a box that opening a file at start
    // brings up before the title is first set for the file.
    updateCleanState();
}

EditorWindow::~EditorWindow()
{
    // The undo stack clears itself when it goes, which the recovery would take for a save; its
    // file is for the next start.
    delete m_recovery;
    // The children signal while they go (the undo stack clears itself, views drop their
    // selection); nothing of this half-destroyed window may answer them.
    for (QObject *child : findChildren<QObject *>())
        child->disconnect(this);
    delete m_ui;
}

// Messages and notes

void EditorWindow::popupMessage(const QString &text)
{
    QWidget *anchor = QApplication::focusWidget();
    if (!anchor)
        anchor = m_ui->m_view;
    QToolTip::showText(QPoint(), QString());
    if (text.isEmpty())
        return;
    const QPoint at = anchor->mapToGlobal(QPoint(0, anchor->height() - 16));
    QToolTip::showText(at, text, anchor, anchor->rect().adjusted(-16, -16, 16, 16));
}

void EditorWindow::showNote(const QString &text)
{
    m_statusLine->showNote(text);
}

void EditorWindow::message(const QString &text)
{
    m_messageDock->setVisible(true);
    m_messageDock->showNormal();
    // Plain text: messages quote element names such as <tag>.
    QTextCursor cursor(m_messages->document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertBlock();
    cursor.insertText(text);
    m_messages->ensureCursorVisible();
}

void EditorWindow::error(const QString &text)
{
    message(text);
    QMessageBox::warning(this, windowTitle(), text, QMessageBox::Ok);
}

// State of the actions and the title

void EditorWindow::updateActions()
{
    const bool valid = m_ui->m_view->currentIndex().isValid();
    for (QAction *action : { m_ui->m_act_delete,
                             m_ui->m_act_cut,
                             m_ui->m_act_copy,
                             m_ui->m_act_paste,
                             m_ui->m_act_add_bits,
                             m_ui->m_act_add_enums })
        action->setEnabled(valid);
    const Item *root = m_model->root();
    const bool empty = !root || root->children.isEmpty();
    m_ui->m_act_insert_before->setEnabled(valid || empty);
    m_ui->m_act_insert_after->setEnabled(valid || empty);
}

void EditorWindow::updateCleanState()
{
    QString title;
    const QString displayName = m_document->displayName();
    if (!displayName.isEmpty())
        title = displayName + QLatin1Char(' ');
    if (!m_undoStack->isClean())
        title += QLatin1String("* ");
    title += QLatin1Char('[') + tr("ZAT16 tag editor") + QLatin1Char(']');
    setWindowTitle(title);
}

void EditorWindow::setCurrentItem(const QModelIndex &index)
{
    m_ui->m_view->selectionModel()->setCurrentIndex(index,
                                                    QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

// Editing

void EditorWindow::onNew()
{
    m_model->undoableClear(m_ui->m_view->currentIndex());
}

void EditorWindow::onInsertAfter()
{
    const QModelIndex inserted = m_model->insertAfter(m_ui->m_view->selectedItem());
    if (inserted.isValid())
        setCurrentItem(inserted);
}

void EditorWindow::onInsertBefore()
{
    const QModelIndex inserted = m_model->insertBefore(m_ui->m_view->selectedItem());
    if (inserted.isValid())
        setCurrentItem(inserted);
}

void EditorWindow::onAddEnums()
{
    addList(Enums);
}

void EditorWindow::onAddBits()
{
    addList(Bits);
}

void EditorWindow::addList(ItemType type)
{
    const QModelIndex selected = m_ui->m_view->selectedItem();
    if (!selected.isValid())
        return;
    const QModelIndex list = m_model->insertList(selected, type);
    if (list.isValid())
        setCurrentItem(list);
}

// QTreeView::expandAll() reports each top-level entry before it has laid out the entry's
// children, and expanding a child that is not laid out yet searches every row of the view. So
// only the first expansion of an event-loop turn expands its children at once; the others of
// the burst do it when the loop is idle, when expandAll() has expanded most of them already.
void EditorWindow::onExpanded(const QModelIndex &index)
{
    // Asked of every row that expandAll() expands, leaves included: the item says it without a
    // parent index being made.
    const Item *item = m_model->index2item(index);
    if (!item || item->parent != m_model->root())
        return;
    if (m_expansionBurst) {
        m_pendingExpansions.append(index);
        return;
    }
    m_expansionBurst = true;
    QTimer::singleShot(0, this, &EditorWindow::expandPending);
    expandChildren(index);
}

void EditorWindow::expandPending()
{
    m_expansionBurst = false;
    const QList<QPersistentModelIndex> pending = std::exchange(m_pendingExpansions, {});
    for (const QPersistentModelIndex &index : pending) {
        if (index.isValid())
            expandChildren(index);
    }
}

void EditorWindow::expandChildren(const QModelIndex &index)
{
    RowTreeView *view = m_ui->m_view;
    const int rows = m_model->rowCount(index);
    for (int row = 0; row < rows; ++row) {
        const QModelIndex child = m_model->index(row, 0, index);
        if (!view->isExpanded(child))
            view->expand(child);
    }
}

void EditorWindow::collapseSubtree(const QModelIndex &index)
{
    if (!index.isValid())
        return;
    const int rows = m_model->rowCount(index);
    for (int row = 0; row < rows; ++row)
        collapseSubtree(m_model->index(row, 0, index));
    m_ui->m_view->collapse(index);
}

void EditorWindow::onUndoHistoryChanged() { }

// Toolbar and context menu

void EditorWindow::createToolBar(QAction *undo, QAction *redo)
{
    m_toolBar = new QToolBar(tr("Toolbar"), this);
    m_toolBar->setObjectName(QStringLiteral("MainToolBar"));
    m_toolBar->setIconSize(QSize(16, 16));
    m_toolBar->addActions({ m_ui->m_act_open, m_ui->m_act_save });
    m_toolBar->addSeparator();
    m_toolBar->addActions({ undo, redo });
    m_toolBar->addSeparator();
    m_toolBar->addActions({ m_ui->m_act_insert_before,
                            m_ui->m_act_insert_after,
                            m_ui->m_act_add_enums,
                            m_ui->m_act_add_bits,
                            m_ui->m_act_delete });
    m_toolBar->addSeparator();
    m_toolBar->addActions({ m_ui->m_act_find, m_ui->m_act_next_problem });
    addToolBar(Qt::TopToolBarArea, m_toolBar);
}

void EditorWindow::onTreeContextMenu(const QPoint &position)
{
    RowTreeView *view = m_ui->m_view;
    const QModelIndex index = view->indexAt(position);
    // The menu's actions go to the clicked row; below the rows, to the last top-level row, so
    // that Insert after adds at the end and not next to a row scrolled out of sight.
    const int rows = m_model->rowCount();
    const QModelIndex anchor
        = index.isValid() ? index.siblingAtColumn(0) : (rows > 0 ? m_model->index(rows - 1, 0) : QModelIndex());
    if (anchor.isValid() && anchor != view->currentIndex().siblingAtColumn(0))
        setCurrentItem(anchor);
    updateActions();
    QMenu *menu = treeContextMenu(index);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(view->viewport()->mapToGlobal(position));
}

QMenu *EditorWindow::treeContextMenu(const QModelIndex &index)
{
    auto *menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("TreeContextMenu"));
    menu->addActions({ m_ui->m_act_insert_before, m_ui->m_act_insert_after });
    if (index.isValid()) {
        menu->addSeparator();
        menu->addActions({ m_ui->m_act_add_enums, m_ui->m_act_add_bits });
        menu->addSeparator();
        menu->addActions({ m_ui->m_act_cut, m_ui->m_act_copy, m_ui->m_act_paste, m_ui->m_act_delete });
        menu->addSeparator();
        menu->addActions({ m_editing->moveUpAction(), m_editing->moveDownAction() });
        menu->addSeparator();
        menu->addAction(m_ui->m_act_edit);
        m_ui->m_act_edit->setEnabled(m_model->index2item(index) && m_model->index2item(index)->isNamedKind());
        const bool parent = m_model->hasChildren(index.siblingAtColumn(0));
        m_ui->m_act_expand_subtree->setEnabled(parent);
        m_ui->m_act_collapse_subtree->setEnabled(parent);
        menu->addActions({ m_ui->m_act_expand_subtree, m_ui->m_act_collapse_subtree });
    } else {
        menu->addSeparator();
        menu->addActions({ m_ui->m_act_paste, m_ui->m_act_expand_all, m_ui->m_act_collapse_all });
    }
    return menu;
}

// A floating dock never covers the menu bar, where it would take the clicks meant for the menus.
bool EditorWindow::eventFilter(QObject *watched, QEvent *event)
{
    // A definitions file dropped onto the tree opens too; all other drops onto its cells are the
    // tree's.
    if (watched == m_ui->m_view->viewport() && takeFileDrop(event))
        return true;
    auto *dock = qobject_cast<QDockWidget *>(watched);
    if (dock && dock->isFloating() && (event->type() == QEvent::Move || event->type() == QEvent::Show)) {
        const QWidget *bar = menuBar();
        const QRect barRect(bar->mapToGlobal(QPoint(0, 0)), bar->size());
        if (bar->isVisible() && dock->frameGeometry().intersects(barRect))
            dock->move(dock->x(), barRect.bottom() + 1 + (dock->y() - dock->frameGeometry().y()));
    }
    return QMainWindow::eventFilter(watched, event);
}

// Fonts

void EditorWindow::onFixedFont()
{
    bool ok = false;
    const QFont font = QFontDialog::getFont(&ok, m_model->fixedFont(), this, tr("Chose font for code"));
    if (!ok)
        return;
    m_model->setFixedFont(font);
    EditorSettings::writeFont(EditorSettings::FixedFont, font);
}

void EditorWindow::onCommentFont()
{
    bool ok = false;
    // The same title as the code font's dialog.
    const QFont font = QFontDialog::getFont(&ok, m_model->commentFont(), this, tr("Chose font for code"));
    if (!ok)
        return;
    m_model->setCommentFont(font);
    EditorSettings::writeFont(EditorSettings::CommentFont, font);
}

// Opening, saving and reloading

void EditorWindow::closeEvent(QCloseEvent *event)
{
    WindowLayout::store(this, m_ui->m_view->header());
    if (!canDiscard()) {
        event->ignore();
        return;
    }
    m_document->storeLastOpened();
    // Closed normally, whatever the answer: nothing is left for the next start.
    m_recovery->discard();
    QMainWindow::closeEvent(event);
}

void EditorWindow::terminate()
{
    m_recovery->write();
    m_document->storeLastOpened();
    // Not quit(): that closes the windows, and this one would ask about the unsaved changes.
    QCoreApplication::exit(0);
}

// Floating docks follow the main window: hidden with it, they come back when it is shown again.

void EditorWindow::hideEvent(QHideEvent *event)
{
    docksFollowWindow(false);
    QMainWindow::hideEvent(event);
}

void EditorWindow::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    docksFollowWindow(true);
    // Restoring the layout did not crash this start.
    WindowLayout::windowShown(this);
}

void EditorWindow::docksFollowWindow(bool shown)
{
    const std::pair<QDockWidget *, bool *> docks[] = {
        { m_undoDock, &m_undoDockWasVisible },
        { m_messageDock, &m_messageDockWasVisible },
        { m_problemsDock, &m_problemsDockWasVisible },
    };
    for (const auto &[dock, wasVisible] : docks) {
        if (shown && *wasVisible) {
            dock->showNormal();
            *wasVisible = false;
        } else if (!shown && dock->isFloating() && dock->isVisible()) {
            dock->hide();
            *wasVisible = true;
        }
    }
}

// Find, problems and the comparison with another version

FindBar *EditorWindow::findBar() const
{
    return m_ui->m_wdg_find;
}

void EditorWindow::showItem(const QModelIndex &index)
{
    if (!index.isValid())
        return;
    RowTreeView *view = m_ui->m_view;
    QModelIndexList parents;
    for (QModelIndex up = index.parent(); up.isValid(); up = up.parent())
        parents.prepend(up);
    for (const QModelIndex &parent : std::as_const(parents))
        view->expand(parent);
    setCurrentItem(index.siblingAtColumn(0));
    view->scrollTo(index.siblingAtColumn(0));
}

void EditorWindow::showFindBar(const QString &text)
{
    m_ui->m_wdg_find->openWith(text);
}

void EditorWindow::onFind()
{
    m_ui->m_wdg_find->open();
}

void EditorWindow::onFindNext()
{
    m_ui->m_wdg_find->show();
    m_ui->m_wdg_find->findNext();
}

void EditorWindow::onFindPrevious()
{
    m_ui->m_wdg_find->show();
    m_ui->m_wdg_find->findPrevious();
}

void EditorWindow::showProblems()
{
    m_problemsDock->refresh();
    m_problemsDock->show();
    m_problemsDock->raise();
}

void EditorWindow::onNextProblem()
{
    m_problemsDock->show();
    showItem(m_problemsDock->step(m_ui->m_view->currentIndex(), true));
}

void EditorWindow::onPreviousProblem()
{
    m_problemsDock->show();
    showItem(m_problemsDock->step(m_ui->m_view->currentIndex(), false));
}

// Recent files, and definitions files dropped onto the window

namespace {

// The definitions file that a drag from a file manager carries: one local file whose name ends
// in ".zatdef". Empty for anything else, which the window refuses and the tree takes as its own.
QString definitionsFileIn(const QMimeData *data)
{
    if (!data || !data->hasUrls())
        return QString();
    const QList<QUrl> urls = data->urls();
    // The name as the bytes it is, as a file named on the command line is taken.
    const QString path = urls.size() == 1 ? RecentFiles::localPath(urls.first()) : QString();
    return path.endsWith(QLatin1String(".zatdef"), Qt::CaseInsensitive) ? path : QString();
}

} // namespace

void EditorWindow::setUpFileOpening()
{
    m_recentFiles = new RecentFiles(this);
    QMenu *file = m_ui->m_menu_file;
    const QList<QAction *> actions = file->actions();
    file->insertMenu(actions.value(actions.indexOf(m_ui->m_act_open) + 1), m_recentFiles->menu());
    connect(m_recentFiles, &RecentFiles::chosen, this, &EditorWindow::openFile);

    setAcceptDrops(true);
    m_ui->m_view->viewport()->installEventFilter(this);
}

bool EditorWindow::takeFileDrop(QEvent *event)
{
    if (event->type() != QEvent::DragEnter && event->type() != QEvent::DragMove && event->type() != QEvent::Drop)
        return false;
    // The enter and move events are drop events too.
    auto *drop = static_cast<QDropEvent *>(event);
    const QString path = definitionsFileIn(drop->mimeData());
    // Never a move: the file manager would remove the file that was opened.
    if (path.isEmpty() || !(drop->possibleActions() & Qt::CopyAction))
        return false;
    drop->setDropAction(Qt::CopyAction);
    drop->accept();
    // Once the drop has ended: the file manager waits for it while a question is open.
    if (event->type() == QEvent::Drop)
        QMetaObject::invokeMethod(
            this, [this, path]() { openFile(path); }, Qt::QueuedConnection);
    return true;
}

void EditorWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (!takeFileDrop(event))
        QMainWindow::dragEnterEvent(event);
}

void EditorWindow::dragMoveEvent(QDragMoveEvent *event)
{
    if (!takeFileDrop(event))
        QMainWindow::dragMoveEvent(event);
}

void EditorWindow::dropEvent(QDropEvent *event)
{
    if (!takeFileDrop(event))
        QMainWindow::dropEvent(event);
}

} // namespace ZAT16
