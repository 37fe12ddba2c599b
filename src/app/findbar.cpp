#include "findbar.h"

#include "editormodel.h"
#include "item.h"
#include "tagcodes.h"

#include <QAbstractItemView>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QStyle>

namespace ZAT16 {

namespace {

// Every entry below the root in document order.
QList<const Item *> flatten(const Item *root)
{
    QList<const Item *> items;
    if (!root)
        return items;
    QList<QPair<const Item *, qsizetype>> stack { { root, 0 } };
    while (!stack.isEmpty()) {
        auto &[item, next] = stack.last();
        if (next >= item->children.size()) {
            stack.removeLast();
            continue;
        }
        const Item *child = item->children.at(next++);
        items.append(child);
        if (!child->children.isEmpty())
            stack.append({ child, 0 });
    }
    return items;
}

} // namespace

FindBar::FindBar(QWidget *parent)
    : QWidget(parent)
    , m_le_text(new QLineEdit(this))
    , m_pb_previous(new QPushButton(tr("Previous"), this))
    , m_pb_next(new QPushButton(tr("Next"), this))
    , m_lbl_status(new QLabel(this))
    , m_pb_close(new QPushButton(this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *label = new QLabel(tr("Find:"), this);
    label->setBuddy(m_le_text);
    m_le_text->setObjectName(QStringLiteral("m_le_text"));
    m_le_text->setClearButtonEnabled(true);
    m_le_text->setPlaceholderText(tr("Name, code or comment"));
    m_le_text->installEventFilter(this);
    m_pb_previous->setObjectName(QStringLiteral("m_pb_previous"));
    m_pb_next->setObjectName(QStringLiteral("m_pb_next"));
    m_lbl_status->setObjectName(QStringLiteral("m_lbl_status"));
    m_pb_close->setObjectName(QStringLiteral("m_pb_close"));
    m_pb_close->setIcon(style()->standardIcon(QStyle::SP_DialogCloseButton));
    m_pb_close->setToolTip(tr("Close the find bar (Escape)"));
    m_pb_close->setFlat(true);
    for (QPushButton *button : { m_pb_previous, m_pb_next, m_pb_close }) {
        button->setAutoDefault(false);
        button->setFocusPolicy(Qt::NoFocus);
    }
    layout->addWidget(label);
    layout->addWidget(m_le_text, 1);
    layout->addWidget(m_pb_previous);
    layout->addWidget(m_pb_next);
    layout->addWidget(m_lbl_status);
    layout->addStretch();
    layout->addWidget(m_pb_close);

    connect(m_le_text, &QLineEdit::textEdited, this, &FindBar::onTextEdited);
    connect(m_pb_previous, &QPushButton::clicked, this, &FindBar::findPrevious);
    connect(m_pb_next, &QPushButton::clicked, this, &FindBar::findNext);
    connect(m_pb_close, &QPushButton::clicked, this, &FindBar::close);
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    escape->setContext(Qt::WidgetWithChildrenShortcut);
    connect(escape, &QShortcut::activated, this, &FindBar::close);
}

void FindBar::attach(EditorModel *model, QAbstractItemView *view)
{
    m_model = model;
    m_view = view;
}

QString FindBar::text() const
{
    return m_le_text->text();
}

QString FindBar::status() const
{
    return m_lbl_status->text();
}

bool FindBar::matches(const Item *item, const QString &text)
{
    if (!item || text.isEmpty())
        return false;
    if (item->name.contains(text, Qt::CaseInsensitive) || item->comment.contains(text, Qt::CaseInsensitive))
        return true;
    if (!item->hasId)
        return false;
    if (item->formatId().contains(text, Qt::CaseInsensitive))
        return true;
    // "0x1A" finds the code whatever notation the entry is shown in.
    if (text.size() > 2 && text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)) {
        const QString hex = item->type == Tag ? tag2hex(unsigned(item->id)).mid(2) : QString::number(item->id, 16);
        return hex.contains(text.mid(2), Qt::CaseInsensitive);
    }
    return false;
}

const Item *FindBar::search(const Item *root, const Item *from, const QString &text, bool forward)
{
    const QList<const Item *> items = flatten(root);
    const qsizetype count = items.size();
    if (count == 0)
        return nullptr;
    const qsizetype at = from ? items.indexOf(from) : -1;
    // Start just past `from` and go round once, ending with `from` itself.
    qsizetype start;
    if (forward)
        start = at + 1;
    else
        start = at < 0 ? count - 1 : at - 1;
    for (qsizetype step = 0; step < count; ++step) {
        const qsizetype i = ((forward ? start + step : start - step) % count + count) % count;
        if (matches(items.at(i), text))
            return items.at(i);
    }
    return nullptr;
}

void FindBar::open()
{
    show();
    m_le_text->setFocus(Qt::ShortcutFocusReason);
    m_le_text->selectAll();
}

void FindBar::openWith(const QString &text)
{
    m_le_text->setText(text);
    open();
    onTextEdited(text);
}

void FindBar::findNext()
{
    if (text().isEmpty()) {
        open();
        return;
    }
    find(m_view && m_model ? m_model->index2item(m_view->currentIndex()) : nullptr, true);
}

void FindBar::findPrevious()
{
    if (text().isEmpty()) {
        open();
        return;
    }
    find(m_view && m_model ? m_model->index2item(m_view->currentIndex()) : nullptr, false);
}

void FindBar::close()
{
    hide();
    emit closed();
}

void FindBar::onTextEdited(const QString &text)
{
    if (text.isEmpty()) {
        setStatus(QString());
        return;
    }
    find(nullptr, true);
}

void FindBar::find(const Item *from, bool forward)
{
    if (!m_model)
        return;
    // The root stands for "no current entry".
    if (from == m_model->root())
        from = nullptr;
    const Item *item = search(m_model->root(), from, text(), forward);
    if (!item) {
        setStatus(tr("No match"));
        return;
    }
    setStatus(QString());
    emit found(m_model->item2index(item));
}

void FindBar::setStatus(const QString &text)
{
    m_lbl_status->setText(text);
}

bool FindBar::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_le_text && event->type() == QEvent::KeyPress) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            if (key->modifiers() & Qt::ShiftModifier)
                findPrevious();
            else
                findNext();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace ZAT16
