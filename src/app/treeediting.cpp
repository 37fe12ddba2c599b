#include "treeediting.h"

#include "editoritemeditdialog.h"
#include "editormodel.h"
#include "editorwindow.h"
#include "item.h"
#include "rowtreeview.h"
#include "ui_editorwindow.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QIcon>
#include <QMimeData>

namespace ZAT16 {

TreeEditing::TreeEditing(EditorWindow *window)
    : QObject(window)
    , m_window(window)
    , m_model(window->model())
    , m_view(window->ui()->m_view)
    , m_act_move_up(new QAction(tr("Move up"), window))
    , m_act_move_down(new QAction(tr("Move down"), window))
{
    m_act_move_up->setObjectName(QStringLiteral("m_act_move_up"));
    m_act_move_up->setIcon(QIcon(QStringLiteral(":/icons/i16_move_up.png")));
    m_act_move_down->setIcon(QIcon(QStringLiteral(":/icons/i16_move_down.png")));
    m_act_move_up->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Up));
    m_act_move_down->setObjectName(QStringLiteral("m_act_move_down"));
    m_act_move_down->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Down));
    connect(m_act_move_up, &QAction::triggered, this, &TreeEditing::moveUp);
    connect(m_act_move_down, &QAction::triggered, this, &TreeEditing::moveDown);
    // Whether the current entry can move depends on its row, which moves, insertions and
    // deletions change without a change of the current index.
    connect(m_view, &RowTreeView::currentIndexChanged, this, &TreeEditing::updateMoveActions);
    connect(m_model, &QAbstractItemModel::rowsInserted, this, &TreeEditing::updateMoveActions);
    connect(m_model, &QAbstractItemModel::rowsRemoved, this, &TreeEditing::updateMoveActions);
    connect(m_model, &QAbstractItemModel::rowsMoved, this, &TreeEditing::updateMoveActions);
    connect(m_model, &QAbstractItemModel::modelReset, this, &TreeEditing::updateMoveActions);
    updateMoveActions();
}

void TreeEditing::cut()
{
    if (QMimeData *data = m_model->cut(m_view->selectedItem()))
        QGuiApplication::clipboard()->setMimeData(data, QClipboard::Clipboard);
    m_window->updateActions();
}

void TreeEditing::copy()
{
    if (QMimeData *data = m_model->copy(m_view->selectedItem()))
        QGuiApplication::clipboard()->setMimeData(data, QClipboard::Clipboard);
}

void TreeEditing::paste()
{
    const QModelIndex selected = m_view->selectedItem();
    const QMimeData *data = QGuiApplication::clipboard()->mimeData(QClipboard::Clipboard);
    if (!selected.isValid() || !data)
        return;
    const QModelIndex pasted = m_model->paste(selected, data);
    if (!pasted.isValid())
        return;
    m_window->setCurrentItem(pasted);
    const QModelIndex parent = pasted.parent();
    const Item *parentItem = m_model->index2item(parent);
    if (parent.isValid() && parentItem && parentItem->type == Tag)
        m_view->expand(parent);
}

void TreeEditing::remove()
{
    const QModelIndex selected = m_view->selectedItem();
    if (!selected.isValid())
        return;
    const int row = selected.row();
    const QModelIndex parent = selected.parent();
    if (m_model->removeRow(row, parent))
        m_window->setCurrentItem(m_model->index(row, 0, parent));
    m_window->updateActions();
}

// The moved entry stays current and selected, as a whole row.
void TreeEditing::moveBy(int offset)
{
    const QModelIndex moved = m_model->moveBy(m_view->currentIndex(), offset);
    if (moved.isValid())
        m_window->setCurrentItem(moved);
    updateMoveActions();
}

void TreeEditing::updateMoveActions()
{
    const QModelIndex current = m_view->currentIndex();
    m_act_move_up->setEnabled(m_model->canMoveBy(current, -1));
    m_act_move_down->setEnabled(m_model->canMoveBy(current, 1));
}

void TreeEditing::edit(const QModelIndex &index)
{
    const Item *item = m_model->index2item(index);
    if (!index.isValid() || !item || !item->isNamedKind())
        return;
    // Comment lines and blank lines have the type of their neighbours but nothing to edit.
    if (item->isComment() || item->isNewline())
        return;
    EditorItemEditDialog dialog(m_window);
    dialog.setData(item);
    connect(&dialog, &EditorItemEditDialog::apply, m_window, &EditorWindow::onApplyItem);
    dialog.exec();
}

void TreeEditing::apply(const Item *item, const ItemData &data)
{
    m_model->setItemData(m_model->item2index(item), data);
}

} // namespace ZAT16
