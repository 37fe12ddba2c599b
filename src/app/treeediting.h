#pragma once

#include <QObject>

class QModelIndex;
class RowTreeView;

namespace ZAT16 {

class EditorModel;
class EditorWindow;
class Item;
struct ItemData;

/// The edits the window's actions make on the selected entry of the tree: cut, copy and paste
/// through the clipboard, delete, and the item edit dialog. The model turns each into one undo
/// step; afterwards the entry the edit leads to is made current.
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
    /// Opens the item edit dialog on a tag, enumeration value or bit; other entries have none.
    void edit(const QModelIndex &index);
    /// Applies what the item edit dialog gives for `item`.
    void apply(const Item *item, const ItemData &data);

private:
    EditorWindow *m_window;
    EditorModel *m_model;
    RowTreeView *m_view;
};

} // namespace ZAT16
