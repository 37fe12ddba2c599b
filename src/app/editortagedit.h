#pragma once

#include <QComboBox>

namespace ZAT16 {

class EditorTagModel;
class Item;
class TagValidator;

/// An editable combo box for a tag code. Typing a code in hexadecimal selects the row of its
/// data type; choosing a row rewrites the type bits of the code and keeps its low bits.
class EditorTagEdit : public QComboBox
{
    Q_OBJECT

public:
    explicit EditorTagEdit(QWidget *parent = nullptr);

    /// Installs a new TagValidator for `item` (the tag being edited; not owned).
    void setItem(const Item *item);
    /// Sets the edit text.
    void setTag(const QString &text);
    /// The edit text with "0x" in front unless it already has it; empty when the text is.
    QString tag() const;
    /// The edit text is acceptable to the validator.
    bool hasAcceptableInput() const;

    TagValidator *tagValidator() const { return m_validator; }

signals:
    /// The validator's explanation of the current text (empty when it is fine).
    void message(const QString &text);

private slots:
    void onCurrentIndexChanged(int row);
    void onEditTextChanged(const QString &text);

private:
    EditorTagModel *m_model;
    TagValidator *m_validator = nullptr;
    bool m_updating; // guards the two change handlers against each other
};

} // namespace ZAT16
