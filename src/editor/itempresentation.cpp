#include "itempresentation.h"

#include <QColor>

namespace ZAT16 {

namespace {

const char *tagIconPath(unsigned int code)
{
    switch (dataType(code)) {
    case Binary:
        return ":/icons/i16_data.png";
    case Integer:
        return ":/icons/i16_int.png";
    case Bool:
        return ":/icons/i16_bool.png";
    case String:
        return ":/icons/i16_string.png";
    case Date:
        return ":/icons/i16_date.png";
    case Time:
        return ":/icons/i16_time.png";
    case DateTime:
        return ":/icons/i16_datetime.png";
    case BitArray:
        return ":/icons/i16_list_bullets.png";
    case NetworkAddress:
        return ":/icons/i16_network.png";
    case List:
        return ":/icons/i16_list.png";
    case Request:
        return ":/icons/i16_question.png";
    case Answer:
        return ":/icons/i16_answer.png";
    case Message:
        return ":/icons/i16_message.png";
    case ExtPoint:
        return ":/icons/i16_point.png";
    case ExtRect:
        return ":/icons/i16_rect.png";
    case ExtSize:
        return ":/icons/i16_size.png";
    }
    return ":/icons/i16_empty.png";
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
    if (isNamed(item)) {
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
    if (!isNamed(item))
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
    if (column == 0 && isNamed(item) && !item->isComment() && !item->name.isEmpty()
        && !isValidIdentifier(item->name, &invalid))
        return invalid;
    if (item->type != Tag || !item->hasId || (column != 0 && column != 1))
        return QVariant();
    switch (dataType(quint32(item->id))) {
    case Binary:
        return tr("Binary");
    case Integer:
        return tr("Integer");
    case Bool:
        return tr("Bool");
    case String:
        return tr("String");
    case Date:
        return tr("Date");
    case Time:
        return tr("Time");
    case DateTime:
        return tr("DateTime");
    case BitArray:
        return tr("BitArray");
    case NetworkAddress:
        return tr("Network-Address");
    case List:
        return tr("List");
    case Request:
        return tr("Request");
    case Answer:
        return tr("Answer");
    case Message:
        return tr("Message");
    case ExtPoint:
        return tr("Point");
    case ExtRect:
        return tr("Rect");
    case ExtSize:
        return tr("Size");
    }
    return QVariant();
}

QVariant ItemPresentation::font(const Item *item, int column) const
{
    if (column == 2)
        return m_commentFont;
    if ((column == 0 || column == 1) && isNamed(item))
        return m_fixedFont;
    return QVariant();
}

ItemPresentation::Mark ItemPresentation::markWithoutCollisions(const Item *item, int column) const
{
    if (item->isComment())
        return CommentLine;
    if (!isNamed(item))
        return Plain;
    const bool hasName = !item->name.isEmpty();
    const bool hasCode = item->hasId;
    const bool codeOrName = column == 0 || column == 1;
    if (column == 0 && hasName && !isValidIdentifier(item->name, nullptr))
        return Marked; // the reader refuses it: the saved file would not open again
    if (hasName && !hasCode && codeOrName)
        return Marked;
    // a nameless enumeration value with a code and a comment is legal
    if (!hasName && hasCode && codeOrName && !(item->type == Enum && !item->comment.isEmpty()))
        return Marked;
    if (!item->children.isEmpty() && (!hasName || !hasCode))
        return Marked;
    return Undecided;
}

bool ItemPresentation::collides(Item::CollisionFlags flags, int column)
{
    return (flags.testFlag(Item::NameCollision) && column == 0) || (flags.testFlag(Item::IdCollision) && column == 1);
}

QVariant ItemPresentation::colour(Mark mark, int role)
{
    const bool background = role == Qt::BackgroundRole;
    switch (mark) {
    case CommentLine:
        return background ? QColor(222, 255, 222) : QColor(0, 0, 0);
    case Marked:
        return background ? QColor(192, 0, 0) : QColor(255, 255, 255);
    default:
        return QVariant();
    }
}

} // namespace ZAT16
