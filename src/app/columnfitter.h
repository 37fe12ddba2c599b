#pragma once

#include <QObject>

class QTreeView;

namespace ZAT16 {

class EditorModel;

/// Fits the tree's name and code columns to the open document: the code column as wide as its
/// widest code, the name column as wide as its longest name (with its indentation and icon) up to
/// half the view. A column the user has resized by hand keeps the user's width, also at the next
/// start (the header's state is stored with the window's layout).
class ColumnFitter : public QObject
{
    Q_OBJECT

public:
    ColumnFitter(QTreeView *view, EditorModel *model, QObject *parent = nullptr);

    /// Fits the columns the user has not sized.
    void fit();
    /// The width the name column, 0, or the code column, 1, would be given.
    int fittedWidth(int column) const;
    /// Whether the user has resized `column` by hand.
    bool isUserSized(int column) const;
    /// Forgets the user's widths (a layout that was not restored).
    void reset();

private slots:
    void onSectionResized(int section, int oldSize, int newSize);

private:
    QTreeView *m_view;
    EditorModel *m_model;
    bool m_fitting = false;
};

} // namespace ZAT16
