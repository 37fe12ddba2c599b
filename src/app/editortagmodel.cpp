#include "editortagmodel.h"

#include "datatypes.h"

#include <QIcon>

namespace ZAT16 {

EditorTagModel::EditorTagModel(QObject *parent)
    : QAbstractItemModel(parent)
{
}

int EditorTagModel::rowDataType(int row)
{
    const DataTypes::Entry *entry = DataTypes::atSelectorRow(row);
    return entry ? entry->value : -1;
}

int EditorTagModel::dataTypeRow(int type)
{
    const DataTypes::Entry *entry = DataTypes::find(type);
    return entry ? entry->selectorRow : -1;
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
    const DataTypes::Entry *row = index.isValid() ? DataTypes::atSelectorRow(index.row()) : nullptr;
    if (!row)
        return QVariant();
    switch (role) {
    case Qt::DisplayRole:
        return QString(QLatin1String(row->selectorPrefix) + tr(row->selectorName));
    case Qt::DecorationRole:
        return QIcon(QLatin1String(row->icon));
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
