#pragma once

#include <QObject>

class QAction;
class QModelIndex;
class RowTreeView;

namespace ZAT16 {

class EditorModel;
class EditorWindow;
class Item;
struct ItemData;

/// The edits the window's actions make on the selected entry of the tree: cut, copy and paste
/// through the clipboard, delete, moving the current entry up and down, and the item edit dialog.
/// The model turns each into one undo step; afterwards the entry the edit leads to is made
/// current.
class TreeEditing : public QObject
{
    Q_OBJECT

public:
    /// Created by `window` once its model and form exist.
    explicit TreeEditing(EditorWindow *window);

    void cut();
    void copy();
    void paste();
    void remove();
    /// Move up (Ctrl+Shift+Up) and Move down (Ctrl+Shift+Down), made here for the Edit menu: they
    /// move the current entry one row within its list, and are enabled only where it can move so.
    QAction *moveUpAction() const { return m_act_move_up; }
    QAction *moveDownAction() const { return m_act_move_down; }
    void moveUp() { moveBy(-1); }
    void moveDown() { moveBy(1); }
    /// Opens the item edit dialog on a tag, enumeration value or bit; other entries have none.
    void edit(const QModelIndex &index);
    /// Applies what the item edit dialog gives for `item`.
    void apply(const Item *item, const ItemData &data);

private:
    void moveBy(int offset);
    void updateMoveActions();

    EditorWindow *m_window;
    EditorModel *m_model;
    RowTreeView *m_view;
    QAction *m_act_move_up;
    QAction *m_act_move_down;
};

} // namespace ZAT16
