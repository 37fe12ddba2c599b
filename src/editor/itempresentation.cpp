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

QVariant ItemPresentation::tooltip(const Item *item, int column) const
{
    // A name that the reader refuses says why it is marked.
    QString invalid;
    if (column == 0 && Marks::isEntry(item) && !item->name.isEmpty() && !isValidIdentifier(item->name, &invalid))
        return invalid;
    if (item->type != Tag || !item->hasId || (column != 0 && column != 1))
        return QVariant();
    if (const char *text = DataTypes::tooltip(dataType(quint32(item->id))))
        return tr(text);
    return QVariant();
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
    case Marks::NoMark:
        break;
    }
    return QVariant();
}

} // namespace ZAT16
