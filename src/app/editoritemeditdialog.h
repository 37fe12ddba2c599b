#pragma once

#include <QDialog>

class Ui_ZAT16EditorItemEditDialog;

namespace ZAT16 {

class IdentifierValidator;
class Item;
struct ItemData;
class NumberValidator;

/// The modal dialog that edits a tag, an enumeration value or a bit: name, code or value,
/// display mode with digit count, and the secure flag. It never changes the item itself: the
/// result goes out through apply(), which the main window turns into an undoable change.
class EditorItemEditDialog : public QDialog
{
    Q_OBJECT

public:
    explicit EditorItemEditDialog(QWidget *parent = nullptr);
    ~EditorItemEditDialog() override;

    /// Fills the dialog from `item` (not owned; it must outlive the dialog or the next setData).
    void setData(const Item *item);
    const Item *item() const { return m_item; }

    /// Validates the fields, builds the new data and emits apply() when it differs from the
    /// item's. False when a field is refused or nothing changed.
    bool applyData();

public slots:
    /// Ok: applies what changed and closes, also when nothing did; stays open while a field is
    /// refused.
    void accept() override;
    void onApply();
    /// The digit count only matters for a display mode other than "Default".
    void onDisplayModeChanged(int index);
    /// A tooltip at the focus widget; an empty text only hides the current one.
    void popupMessage(const QString &text);

signals:
    void apply(const ZAT16::Item *item, const ZAT16::ItemData &data);

private:
    /// Validates the fields into `data` (the item's data with the dialog's changes); false, with
    /// "Invalid input" at the refused field, when one is refused.
    bool readData(ItemData *data);
    /// Gives `field` the focus and says "Invalid input"; always false.
    bool invalidInput(QWidget *field);
    QString editableNumber(const QString &formatted, quint64 id) const;

    Ui_ZAT16EditorItemEditDialog *m_ui;
    const Item *m_item = nullptr;
    NumberValidator *m_numberValidator = nullptr;
    IdentifierValidator *m_identifierValidator = nullptr;
};

} // namespace ZAT16
