#pragma once

#include <QItemDelegate>

namespace ZAT16 {

/// The in-place editors of the tree: a tag selector for tag codes, validating line edits for
/// names and numbers, a plain line edit for comments. The validators' explanations go to the
/// popupMessage(QString) slot of the editor's window, when it has one.
class EditorDelegate : public QItemDelegate
{
    Q_OBJECT

public:
    explicit EditorDelegate(QObject *parent = nullptr);

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;
    /// The code's editor is as wide as its text needs, also where the column is narrower.
    void updateEditorGeometry(QWidget *editor,
                              const QStyleOptionViewItem &option,
                              const QModelIndex &index) const override;
    /// A selected cell is first filled with the highlight colour, so that the selection covers
    /// the whole cell, also where the model gives the cell a background colour of its own.
    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

} // namespace ZAT16
