#pragma once

#include "item.h"
#include "marks.h"

#include <QCoreApplication>
#include <QFont>
#include <QHash>
#include <QIcon>
#include <QVariant>

namespace ZAT16 {

/// How the editor shows an item: the texts, icons, tooltips, fonts and colours of its three
/// cells (name, code, comment). It knows nothing of rows or of the undo stack; the collision
/// flags that colour a cell come from the caller, asked only when they matter.
class ItemPresentation
{
    // The texts belong to the model, as the views see them.
    Q_DECLARE_TR_FUNCTIONS(ZAT16::EditorModel)

public:
    ItemPresentation();

    QVariant display(const Item *item, int column) const;
    QVariant edit(const Item *item, int column) const;
    QVariant decoration(const Item *item, int column) const;
    /// A tag's data type; in a marked cell first what is wrong, one reason a line. `collisions`
    /// gives the item's collision flags and is called only for entries.
    QVariant tooltip(const Item *item, int column, const std::function<Item::CollisionFlags()> &collisions) const;
    QVariant font(const Item *item, int column) const;
    /// The background or foreground colour of a cell; `collisions` gives the item's collision
    /// flags and is called only when no other rule has decided. An entry that `breaksOutput` (a
    /// generated output would not compile or would hold another value by it) shows the output
    /// mark in the cells that no other mark colours.
    QVariant highlight(const Item *item,
                       int column,
                       int role,
                       const std::function<Item::CollisionFlags()> &collisions,
                       bool breaksOutput = false) const
    {
        const Marks::CellMark mark = Marks::cellMark(item, column, collisions);
        return colour(mark == Marks::NoMark && breaksOutput ? Marks::OutputMark : mark, role);
    }

    QFont fixedFont() const { return m_fixedFont; }
    QFont commentFont() const { return m_commentFont; }
    void setFixedFont(const QFont &font) { m_fixedFont = font; }
    void setCommentFont(const QFont &font) { m_commentFont = font; }

private:
    static QVariant colour(Marks::CellMark mark, int role);
    static QStringList problemLines(const Item *item, int column, Item::CollisionFlags collisions);
    QIcon icon(const QString &path) const;

    QFont m_fixedFont;
    QFont m_commentFont;
    mutable QHash<QString, QIcon> m_icons;
};

} // namespace ZAT16
