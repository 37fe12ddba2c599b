#pragma once

#include <QAbstractItemModel>

namespace ZAT16 {

/// The fixed list of data types behind the tag selector: one row per data type, showing its
/// number, name and icon. The edit role of every row is the text in the selector's edit field,
/// so that selecting a row never replaces what the user typed.
class EditorTagModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    /// Rows the model reports.
    static constexpr int OfferedRows = 13;

    explicit EditorTagModel(QObject *parent = nullptr);

    /// The data type a row stands for, or -1 outside the rows defined.
    static int rowDataType(int row);
    /// The row of a data type, or -1 when the type has none (also for types above 130).
    static int dataTypeRow(int type);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &index) const override;
    QModelIndex index(int row, int column, const QModelIndex &parent = QModelIndex()) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;

    QString editData() const { return m_editData; }
    void setEditData(const QString &text);

private:
    QString m_editData;
};

} // namespace ZAT16
