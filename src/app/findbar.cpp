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
#include <QStringMatcher>
#include <QStyle>

namespace ZAT16 {

namespace {

// The entry after `item` in document order, the first one for null; null after the last one.
const Item *next(const Item *root, const Item *item)
{
    if (!item)
        return root->children.value(0);
    if (!item->children.isEmpty())
        return item->children.first();
    for (const Item *at = item; at != root; at = at->parent) {
        const QList<Item *> &siblings = at->parent->children;
        const int row = at->row();
        if (row + 1 < siblings.size())
            return siblings.at(row + 1);
    }
    return nullptr;
}

// The entry before `item` in document order, the last one for null; null before the first one.
const Item *previous(const Item *root, const Item *item)
{
    const Item *at;
    if (!item) {
        at = root;
    } else {
        const int row = item->row();
        if (row == 0)
            return item->parent == root ? nullptr : item->parent;
        at = item->parent->children.at(row - 1);
    }
    while (!at->children.isEmpty())
        at = at->children.last();
    return at == root ? nullptr : at;
}

// Whether `item` is in the tree under `root`: an item taken out keeps its parent.
bool inTree(const Item *root, const Item *item)
{
    for (const Item *at = item; at != root; at = at->parent) {
        if (!at->parent || at->row() < 0)
            return false;
    }
    return true;
}

// The characters of a code as the tree shows it, ignoring case: a text with another one cannot
// be part of any code, which spares formatting the codes of a whole file.
bool mayBeInCode(const QString &text)
{
    for (const QChar c : text) {
        const char16_t u = c.toLower().unicode();
        if (!((u >= '0' && u <= '9') || (u >= 'a' && u <= 'f') || u == 'x' || u == 'o' || u == 'y' || u == '-'))
            return false;
    }
    return true;
}

// A character of the text that only two ASCII characters match ignoring case (its two cases),
// or one (a digit or sign): then `c | bits` equals `folded` exactly for those. "k" and "s" are not
// plain, since the Kelvin sign and the long s fold to them, nor is "i", whose dotted capital
// folds in its own way.
struct PlainChar {
    bool plain = false;
    char16_t folded = 0;
    char16_t bits = 0;

    explicit PlainChar(QChar c)
    {
        const char16_t u = c.toLower().unicode();
        if (u >= 128 || u <= ' ' || u == 'k' || u == 's' || u == 'i')
            return;
        plain = true;
        bits = u >= 'a' && u <= 'z' ? 0x20 : 0;
        folded = u;
    }

    bool matches(char16_t c) const { return char16_t(c | bits) == folded; }
};

// The place of the first plain character of a text at or after `from`, -1 if there is none.
qsizetype plainAt(const QString &text, qsizetype from)
{
    for (qsizetype at = from; at < text.size(); ++at) {
        if (PlainChar(text.at(at)).plain)
            return at;
    }
    return -1;
}

// The test of FindBar::matches for one text, prepared once for a whole search.
class Matcher
{
public:
    explicit Matcher(const QString &text)
        : m_text(text)
        , m_matcher(text, Qt::CaseInsensitive)
        , m_firstAt(plainAt(text, 0))
        , m_secondAt(m_firstAt < 0 ? -1 : plainAt(text, m_firstAt + 1))
        , m_first(m_firstAt < 0 ? QChar() : text.at(m_firstAt))
        , m_second(m_secondAt < 0 ? QChar() : text.at(m_secondAt))
        , m_code(mayBeInCode(text))
        , m_hex(text.size() > 2 && text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive) ? text.mid(2) : QString())
        , m_hexMatcher(m_hex, Qt::CaseInsensitive)
    {
    }

    // Whether `in` contains the text, ignoring case. Where the text holds plain characters, one
    // pass looks for the first two of them at their distance and compares the whole text only
    // there: most names and comments hold neither.
    bool contains(QStringView in) const
    {
        if (m_firstAt < 0)
            return m_matcher.indexIn(in) >= 0;
        const qsizetype size = m_text.size();
        const char16_t *chars = in.utf16();
        const qsizetype last = in.size() - size;
        for (qsizetype at = 0; at <= last; ++at) {
            if (!m_first.matches(chars[at + m_firstAt]))
                continue;
            if (m_secondAt >= 0 && !m_second.matches(chars[at + m_secondAt]))
                continue;
            if (QStringView(chars + at, size).compare(m_text, Qt::CaseInsensitive) == 0)
                return true;
        }
        return false;
    }

    bool matches(const Item *item) const
    {
        if (!item || m_text.isEmpty())
            return false;
        if (contains(item->name) || contains(item->comment))
            return true;
        if (!item->hasId || !m_code)
            return false;
        if (contains(item->formatId()))
            return true;
        // "0x1A" finds the code whatever notation the entry is shown in.
        if (!m_hex.isEmpty()) {
            const QString hex = item->type == Tag ? tag2hex(unsigned(item->id)).mid(2) : QString::number(item->id, 16);
            return m_hexMatcher.indexIn(hex) >= 0;
        }
        return false;
    }

private:
    QString m_text;
    QStringMatcher m_matcher;
    qsizetype m_firstAt;
    qsizetype m_secondAt;
    PlainChar m_first;
    PlainChar m_second;
    bool m_code;
    QString m_hex;
    QStringMatcher m_hexMatcher;
};

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
    return Matcher(text).matches(item);
}

// The walk goes from entry to entry through the tree itself, without a list of all entries.
const Item *FindBar::search(const Item *root, const Item *from, const QString &text, bool forward)
{
    if (!root)
        return nullptr;
    const Matcher matcher(text);
    auto advance = [&](const Item *item) { return forward ? next(root, item) : previous(root, item); };
    if (!from || from == root || !inTree(root, from)) {
        for (const Item *at = advance(nullptr); at; at = advance(at)) {
            if (matcher.matches(at))
                return at;
        }
        return nullptr;
    }
    // Start just past `from` and go round once, ending with `from` itself; null stands for the
    // place between the last entry and the first.
    for (const Item *at = advance(from); at != from; at = advance(at)) {
        if (at && matcher.matches(at))
            return at;
    }
    return matcher.matches(from) ? from : nullptr;
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
