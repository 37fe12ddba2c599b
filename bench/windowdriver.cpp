#include "windowdriver.h"

#include "editormodel.h"
#include "editorwindow.h"
#include "findbar.h"
#include "item.h"
#include "problemsdock.h"
#include "recovery.h"
#include "rowtreeview.h"

#include <QAction>
#include <QClipboard>
#include <QCoreApplication>
#include <QDialog>
#include <QFile>
#include <QGuiApplication>
#include <QPixmap>
#include <QTreeView>
#include <QUndoStack>

using namespace ZAT16;

WindowDriver::WindowDriver(const QString &path)
    : m_path(path)
    , m_window(new EditorWindow)
    , m_view(m_window->findChild<RowTreeView *>(QStringLiteral("m_view")))
    , m_problems(m_window->problemsDock())
{
    // The recovery file (the whole tree, written 30 seconds after a change) would land in
    // whatever action runs then; it is a background task, not part of any action.
    m_window->recovery()->setInterval(24 * 3600 * 1000);
    check(m_view != nullptr, QStringLiteral("the window has no tree view m_view"));
}

WindowDriver::~WindowDriver()
{
    // Unsaved changes are dropped without the question that closing the window asks.
    delete m_window;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void WindowDriver::check(bool ok, const QString &what)
{
    if (!ok && m_failure.isEmpty())
        m_failure = what;
}

void WindowDriver::expectSteps(int before, int steps, const char *what)
{
    const int after = undoIndex();
    check(after == before + steps,
          QStringLiteral("%1 moved the undo stack from %2 to %3 instead of by %4")
              .arg(QLatin1String(what))
              .arg(before)
              .arg(after)
              .arg(steps));
}

QAction *WindowDriver::action(const char *name) const
{
    return m_window->findChild<QAction *>(QLatin1String(name));
}

void WindowDriver::settle(QWidget *painted)
{
    // Posted events and due timers: the view's delayed layout, the dock's zero-time refresh, and
    // the update requests, which paint what the action marked for painting. What they start may
    // post more (the dock's refresh fills its list, which lays itself out): two rounds.
    auto drain = []() {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    };
    drain();
    drain();
    // Should the event loop not have reached the dock's refresh yet, the user would still wait
    // for it before the list is right.
    if (m_problems->isVisible()) {
        m_problems->problems();
        drain();
    }
    // The whole widget with all its children, the tree's visible rows included: repaint() would
    // leave out children that paint their own background, such as the view's viewport.
    const QPixmap shown = (painted ? painted : m_view)->grab();
    check(!shown.isNull(), QStringLiteral("nothing was painted"));
}

void WindowDriver::trigger(const char *name, int steps)
{
    const int before = undoIndex();
    QAction *act = action(name);
    check(act && act->isEnabled(), QStringLiteral("the action %1 is missing or disabled").arg(QLatin1String(name)));
    if (act)
        act->trigger();
    settle();
    expectSteps(before, steps, name);
}

void WindowDriver::open()
{
    m_window->initialize(m_path, QString());
    m_window->show();
    settle(m_window);
    const Item *root = m_window->model()->root();
    check(root && !root->children.isEmpty() && m_window->fileName() == m_path,
          QStringLiteral("the window did not open %1").arg(m_path));
}

void WindowDriver::nextProblem()
{
    trigger("m_act_next_problem", 0);
    check(m_problems->isVisible(), QStringLiteral("F8 did not show the Problems dock"));
}

void WindowDriver::rename(const QString &name)
{
    const int before = undoIndex();
    m_window->model()->setData(m_editedName, name, Qt::EditRole);
    settle();
    expectSteps(before, 1, "rename");
    check(m_edited->name == name, QStringLiteral("the tag was not renamed to %1").arg(name));
}

void WindowDriver::undo()
{
    // What the Undo action does.
    const int before = undoIndex();
    m_window->undoStack()->undo();
    settle();
    expectSteps(before, -1, "undo");
}

void WindowDriver::redo()
{
    const int before = undoIndex();
    m_window->undoStack()->redo();
    settle();
    expectSteps(before, 1, "redo");
}

void WindowDriver::insertBefore()
{
    trigger("m_act_insert_before", 1);
}

void WindowDriver::remove()
{
    trigger("m_act_delete", 1);
}

void WindowDriver::paste()
{
    trigger("m_act_paste", 1);
}

void WindowDriver::cut()
{
    trigger("m_act_cut", 1);
}

void WindowDriver::moveDown()
{
    trigger("m_act_move_down", 1);
}

void WindowDriver::findNext()
{
    trigger("m_act_find_next", 0);
    const Item *found = m_window->model()->index2item(m_view->currentIndex());
    check(FindBar::matches(found, m_findText), QStringLiteral("find next did not find %1").arg(m_findText));
}

void WindowDriver::expandAll()
{
    m_view->expandWholeTree();
    settle();
}

void WindowDriver::collapseAll()
{
    m_view->collapseAll();
    settle();
}

QDialog *WindowDriver::view(const char *actionName)
{
    const QList<QDialog *> before = m_window->findChildren<QDialog *>();
    QAction *act = action(actionName);
    check(act != nullptr, QStringLiteral("the action %1 is missing").arg(QLatin1String(actionName)));
    if (act)
        act->trigger();
    QDialog *viewer = nullptr;
    for (QDialog *dialog : m_window->findChildren<QDialog *>()) {
        if (!before.contains(dialog))
            viewer = dialog;
    }
    check(viewer && viewer->isVisible(), QStringLiteral("%1 showed no viewer").arg(QLatin1String(actionName)));
    settle(viewer ? static_cast<QWidget *>(viewer) : m_window);
    return viewer;
}

void WindowDriver::save()
{
    trigger("m_act_save", 0);
    check(m_window->undoStack()->isClean(), QStringLiteral("the save did not succeed"));
}

void WindowDriver::reload()
{
    const int before = undoIndex();
    m_window->onReloadClicked();
    settle();
    // A reload can be undone.
    expectSteps(before, 1, "reload");
}

void WindowDriver::clearAll()
{
    trigger("m_act_new", 1);
    check(m_window->model()->root()->children.isEmpty(), QStringLiteral("Clear all left entries"));
}

void WindowDriver::selectEditedTag()
{
    EditorModel *model = m_window->model();
    const QList<Item *> &tags = model->root()->children;
    m_edited = nullptr;
    for (qsizetype i = tags.size() / 2; i < tags.size() && !m_edited; ++i) {
        if (tags.at(i)->type == Tag && tags.at(i)->hasId && !tags.at(i)->name.isEmpty())
            m_edited = tags.at(i);
    }
    check(m_edited != nullptr, QStringLiteral("no tag to edit in the second half of the file"));
    if (!m_edited)
        return;
    const QModelIndex index = model->item2index(m_edited);
    m_editedName = index.siblingAtColumn(0);
    m_window->showItem(index);
    settle();
}

QString WindowDriver::editedName() const
{
    return m_edited ? m_edited->name : QString();
}

void WindowDriver::copy()
{
    trigger("m_act_copy", 0);
    check(QGuiApplication::clipboard()->mimeData() != nullptr, QStringLiteral("copy left the clipboard empty"));
}

void WindowDriver::hideProblems()
{
    m_problems->hide();
    settle();
}

bool WindowDriver::problemsShown() const
{
    return m_problems->isVisible();
}

int WindowDriver::undoIndex() const
{
    return m_window->undoStack()->index();
}

void WindowDriver::undoTo(int index)
{
    m_window->undoStack()->setIndex(index);
    settle();
}

QString WindowDriver::lastTagName() const
{
    const QList<Item *> &tags = m_window->model()->root()->children;
    for (qsizetype i = tags.size() - 1; i >= 0; --i) {
        if (tags.at(i)->type == Tag && !tags.at(i)->name.isEmpty())
            return tags.at(i)->name;
    }
    return QString();
}

void WindowDriver::prepareFind(const QString &text, bool fromTop)
{
    m_findText = text;
    m_window->showFindBar(text);
    if (fromTop) {
        m_window->setCurrentItem(m_window->model()->index(0, 0));
        m_view->scrollToTop();
    }
    settle();
}

void WindowDriver::closeFind()
{
    m_window->findBar()->close();
    settle();
}

void WindowDriver::closeViewer(QDialog *viewer)
{
    if (viewer)
        viewer->close();
    // Viewers delete themselves on close.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    settle();
}

bool WindowDriver::fileHolds(const QByteArray &bytes) const
{
    QFile file(m_path);
    return file.open(QIODevice::ReadOnly) && file.readAll() == bytes;
}
