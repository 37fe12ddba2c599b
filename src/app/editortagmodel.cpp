#include "editortagmodel.h"

#include <QIcon>

#include <array>

namespace ZAT16 {

namespace {

    struct TypeRow {
        int type;
        const char *prefix;
        const char *name;
        const char *icon;
    };

    // Row -> data type. The extended geometric types sit between BitArray and the network address,
    // and only the first 13 rows are offered: requests, answers and messages can only be typed.
    const TypeRow rowTable[EditorTagModel::DefinedRows] = {
        { 0x00, "0 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Binary"), ":/icons/i16_data.png" },
        { 0x01, "1 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Integer"), ":/icons/i16_int.png" },
        { 0x02, "2 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Bool"), ":/icons/i16_bool.png" },
        { 0x03, "3 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "String"), ":/icons/i16_string.png" },
        { 0x04, "4 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Date"), ":/icons/i16_date.png" },
        { 0x05, "5 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Time"), ":/icons/i16_time.png" },
        { 0x06, "6 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "DateTime"), ":/icons/i16_datetime.png" },
        { 0x07, "7 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "BitArray"), ":/icons/i16_list_bullets.png" },
        { 0x80, "80 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Point"), ":/icons/i16_point.png" },
        { 0x81, "81 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Rect"), ":/icons/i16_rect.png" },
        { 0x82, "82 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Size"), ":/icons/i16_size.png" },
        { 0x09, "9 - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Network address"), ":/icons/i16_network.png" },
        { 0x0C, "C - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "List"), ":/icons/i16_list.png" },
        { 0x0D, "D - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Request"), ":/icons/i16_question.png" },
        { 0x0E, "E - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Answer"), ":/icons/i16_answer.png" },
        { 0x0F, "F - ", QT_TRANSLATE_NOOP("ZAT16::EditorTagModel", "Message"), ":/icons/i16_message.png" },
    };

    constexpr int TypeCount = 131; // data types 0 to 0x82

    // Data type -> row, -1 where there is none.
    // clang-format off
constexpr std::array<int, TypeCount> typeRowTable = {
     0,  1,  2,  3,  4,  5,  6,  7, -1, 11, -1, -1, 12, 13, 14, 15, // 0x00
    -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, // 0x10
    -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, // 0x20
    -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, // 0x30
    -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, // 0x40
    -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, // 0x50
    -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, // 0x60
    -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, // 0x70
     8,  9, 10,                                                     // 0x80
};
    // clang-format on

} // namespace

EditorTagModel::EditorTagModel(QObject *parent)
    : QAbstractItemModel(parent)
{
}

int EditorTagModel::rowDataType(int row)
{
    if (row < 0 || row >= DefinedRows)
        return -1;
    return rowTable[row].type;
}

int EditorTagModel::dataTypeRow(int type)
{
    if (type < 0 || type >= TypeCount)
        return -1;
    return typeRowTable[type];
}

int EditorTagModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : OfferedRows; // a flat list
}

int EditorTagModel::columnCount(const QModelIndex &) const
{
    return 1;
}

QModelIndex EditorTagModel::parent(const QModelIndex &) const
{
    return QModelIndex();
}

QModelIndex EditorTagModel::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return QModelIndex();
    return createIndex(row, column);
}

Qt::ItemFlags EditorTagModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled;
}

QVariant EditorTagModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= DefinedRows)
        return QVariant();
    const TypeRow &row = rowTable[index.row()];
    switch (role) {
    case Qt::DisplayRole:
        return QString(QLatin1String(row.prefix) + tr(row.name));
    case Qt::DecorationRole:
        return QIcon(QLatin1String(row.icon));
    case Qt::EditRole:
        // The combo box puts this into its edit field when a row is selected: keep the typed text.
        return m_editData;
    default:
        return QVariant();
    }
}

bool EditorTagModel::setData(const QModelIndex &, const QVariant &value, int role)
{
    if (role != Qt::EditRole)
        return false;
    setEditData(value.toString());
    return true;
}

void EditorTagModel::setEditData(const QString &text)
{
    m_editData = text;
}

} // namespace ZAT16
