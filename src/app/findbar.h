#pragma once

#include <QModelIndex>
#include <QWidget>

class QAbstractItemView;
class QLabel;
class QLineEdit;
class QPushButton;

namespace ZAT16 {

class EditorModel;
class Item;

/// The find bar under the definitions tree. Typing selects the first entry of the whole tree
/// (collapsed parts included) whose name, code or comment contains the text, ignoring case;
/// Return and findNext() go to the next match after the current entry, Shift+Return and
/// findPrevious() to the one before, both wrapping around; Escape closes the bar. A code also
/// matches when the text is typed with "0x" before its hexadecimal digits, or without it.
///
/// The bar only finds: it reports a match through found(), and the window selects the entry
/// and expands its parents.
class FindBar : public QWidget
{
    Q_OBJECT

public:
    explicit FindBar(QWidget *parent = nullptr);

    /// The model searched and the view whose current entry is where findNext() starts.
    void attach(EditorModel *model, QAbstractItemView *view);

    QString text() const;
    QLineEdit *lineEdit() const { return m_le_text; }
    /// "No match" while the text is found nowhere, empty otherwise.
    QString status() const;

    /// Whether `item` matches `text` (an empty text matches nothing).
    static bool matches(const Item *item, const QString &text);
    /// The next entry after `from` in document order that matches `text`, wrapping around to
    /// the top (to the bottom when not `forward`); `from` itself is found only when it is the
    /// only match. With a null `from` the search starts before the first entry (after the last).
    /// Null when nothing matches.
    static const Item *search(const Item *root, const Item *from, const QString &text, bool forward);

public slots:
    /// Shows the bar and puts the focus into its field, with the text selected.
    void open();
    /// Shows the bar with `text` and finds its first match.
    void openWith(const QString &text);
    void findNext();
    void findPrevious();
    void close();

signals:
    /// A match; the index is in column 0.
    void found(const QModelIndex &index);
    void closed();

private slots:
    void onTextEdited(const QString &text);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void find(const Item *from, bool forward);
    void setStatus(const QString &text);

    EditorModel *m_model = nullptr;
    QAbstractItemView *m_view = nullptr;
    QLineEdit *m_le_text;
    QPushButton *m_pb_previous;
    QPushButton *m_pb_next;
    QLabel *m_lbl_status;
    QPushButton *m_pb_close;
};

} // namespace ZAT16
