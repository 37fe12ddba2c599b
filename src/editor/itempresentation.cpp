#include "itempresentation.h"

#include "datatypes.h"

#include <QColor>

namespace ZAT16 {

namespace {

const char *tagIconPath(unsigned int code)
{
    const char *path = DataTypes::iconPath(dataType(code));
    return path ? path : ":/icons/i16_empty.png";
}

} // namespace

ItemPresentation::ItemPresentation()
    : m_fixedFont(QStringLiteral("Monospace"))
{
    m_fixedFont.setStyleHint(QFont::TypeWriter, QFont::PreferDefault);
}

// The blanks keep empty cells at a usable height and width.
QVariant ItemPresentation::display(const Item *item, int column) const
{
    if (column == 2)
        return item->comment.isEmpty() ? QStringLiteral(" ") : item->comment;
    if (item->isNamedKind()) {
        if (column == 0)
            return item->name.isEmpty() ? QStringLiteral(" ") : item->name;
        if (column == 1) {
            if (!item->hasId)
                return item->type == Tag ? QStringLiteral("      ") : QStringLiteral(" ");
            if (item->type == Tag)
                return item->formatId();
            return QStringLiteral("  ") + item->formatId();
        }
        return QVariant();
    }
    if (column == 0) {
        if (item->type == Enums)
            return tr("Enums");
        if (item->type == Bits)
            return tr("Bits");
    }
    return QVariant();
}

QVariant ItemPresentation::edit(const Item *item, int column) const
{
    if (!item->isNamedKind())
        return QVariant();
    switch (column) {
    case 0:
        return item->name;
    case 1:
        return item->hasId ? QVariant(item->formatId()) : QVariant();
    case 2:
        return item->comment;
    default:
        return QVariant();
    }
}

QIcon ItemPresentation::icon(const QString &path) const
{
    auto it = m_icons.find(path);
    if (it == m_icons.end())
        it = m_icons.insert(path, QIcon(path));
    return it.value();
}

QVariant ItemPresentation::decoration(const Item *item, int column) const
{
    if (column != 0)
        return QVariant();
    const char *path = ":/icons/i16_empty.png";
    switch (item->type) {
    case Tag:
        if (item->hasId)
            path = tagIconPath(quint32(item->id));
        break;
    case Enums:
    case Bits:
        path = ":/icons/i16_folder.png";
        break;
    case Enum:
        if (item->hasId || !item->name.isEmpty())
            path = ":/icons/i16_list.png";
        break;
    case Bit:
        if (item->hasId || !item->name.isEmpty())
            path = ":/icons/i16_tiny_bullet.png";
        break;
    default:
        break;
    }
    return icon(QString::fromLatin1(path));
}

QVariant ItemPresentation::tooltip(const Item *item,
                                   int column,
                                   const std::function<Item::CollisionFlags()> &collisions) const
{
    QStringList lines;
    if (Marks::isEntry(item))
        lines = problemLines(item, column, collisions());
    if (item->type == Tag && item->hasId && (column == 0 || column == 1)) {
        if (const char *text = DataTypes::tooltip(dataType(quint32(item->id))))
            lines.append(tr(text));
    }
    if (lines.isEmpty())
        return QVariant();
    return lines.join(QLatin1Char('\n'));
}

// What is wrong with the entry, as far as the cell in `column` shows it: nothing for a cell that
// is not marked.
QStringList ItemPresentation::problemLines(const Item *item, int column, Item::CollisionFlags collisions)
{
    QString invalid;
    const Marks::Reasons reasons = Marks::cellReasons(item, column, collisions, &invalid);
    const QString kind = item->type == Tag ? tr("tag") : (item->type == Enum ? tr("value") : tr("bit"));
    QStringList lines;
    if (reasons & Marks::InvalidName)
        lines.append(invalid);
    if (reasons & Marks::NameWithoutCode)
        lines.append(tr("Name without code"));
    if (reasons & Marks::CodeWithoutName)
        lines.append(tr("Code without name"));
    if (reasons & Marks::NameCollision)
        lines.append(tr("Another %1 of this list has the name %2").arg(kind, item->name));
    if (reasons & Marks::CodeCollision)
        lines.append(tr("Another %1 of this list has the code %2").arg(kind, item->formatId()));
    if (reasons & Marks::IncompleteParent) {
        if (item->name.isEmpty() && !item->hasId)
            lines.append(tr("Entries below, but no name and no code"));
        else if (item->name.isEmpty())
            lines.append(tr("Entries below, but no name"));
        else
            lines.append(tr("Entries below, but no code"));
    }
    return lines;
}

QVariant ItemPresentation::font(const Item *item, int column) const
{
    if (column == 2)
        return m_commentFont;
    if ((column == 0 || column == 1) && item->isNamedKind())
        return m_fixedFont;
    return QVariant();
}

QVariant ItemPresentation::colour(Marks::CellMark mark, int role)
{
    const bool background = role == Qt::BackgroundRole;
    switch (mark) {
    case Marks::CommentMark:
        return background ? QColor(222, 255, 222) : QColor(0, 0, 0);
    case Marks::ProblemMark:
        return background ? QColor(192, 0, 0) : QColor(255, 255, 255);
    case Marks::OutputMark:
        // Amber with black text: apart from the red, and readable in a dark palette as in a light one.
        return background ? QColor(255, 191, 71) : QColor(0, 0, 0);
    case Marks::NoMark:
        break;
    }
    return QVariant();
}

} // namespace ZAT16
