#include "columnfitter.h"

#include "editormodel.h"
#include "editorsettings.h"

#include <QApplication>
#include <QFontMetrics>
#include <QHeaderView>
#include <QSettings>
#include <QStyle>
#include <QTreeView>

#include <algorithm>

namespace ZAT16 {

namespace {

// Room for the cell's margins and, in the name column, the icon beside the text.
const int textMargin = 12;
const int iconRoom = 22;
// The name column is never made narrower than this, nor wider than half the view.
const int minimumNameWidth = 150;
// Of the names of each depth, this many of the longest (in characters) are measured.
const int measuredNames = 8;

int userSizedBits()
{
    const QVariant value = QSettings().value(EditorSettings::key(EditorSettings::UserSizedColumns));
    bool ok = false;
    const int bits = value.toInt(&ok);
    return ok ? bits & 3 : 0;
}

void setUserSizedBits(int bits)
{
    QSettings().setValue(EditorSettings::key(EditorSettings::UserSizedColumns), bits);
}

// Keeps the `count` longest texts seen, longest first.
void keepLongest(QList<QString> &longest, const QString &text, int count)
{
    if (longest.size() == count && text.size() <= longest.last().size())
        return;
    const auto at = std::upper_bound(longest.begin(), longest.end(), text, [](const QString &a, const QString &b) {
        return a.size() > b.size();
    });
    longest.insert(at, text);
    if (longest.size() > count)
        longest.removeLast();
}

} // namespace

ColumnFitter::ColumnFitter(QTreeView *view, EditorModel *model, QObject *parent)
    : QObject(parent)
    , m_view(view)
    , m_model(model)
{
    connect(view->header(), &QHeaderView::sectionResized, this, &ColumnFitter::onSectionResized);
}

bool ColumnFitter::isUserSized(int column) const
{
    return userSizedBits() & (1 << column);
}

void ColumnFitter::reset()
{
    setUserSizedBits(0);
}

void ColumnFitter::onSectionResized(int section, int oldSize, int newSize)
{
    Q_UNUSED(oldSize)
    Q_UNUSED(newSize)
    // Only a drag of the header's handle is the user's: a mouse button is down on the header.
    if (m_fitting || section > 1 || !(QApplication::mouseButtons() & Qt::LeftButton))
        return;
    setUserSizedBits(userSizedBits() | (1 << section));
}

int ColumnFitter::fittedWidth(int column) const
{
    const Item *root = m_model->root();
    const QFontMetrics fixed(m_model->fixedFont());
    const int header
        = m_view->header()->fontMetrics().horizontalAdvance(m_model->headerData(column, Qt::Horizontal).toString())
        + 2 * textMargin;
    if (column == 1) {
        // A tag's code always has the same width; a value's width grows with its size, so the
        // largest and smallest value of each list stand for the whole list.
        int widest = fixed.horizontalAdvance(QStringLiteral("0x0000"));
        if (root) {
            for (const Item *tag : root->children) {
                for (const Item *list : tag->children) {
                    const Item *largest = nullptr;
                    const Item *smallest = nullptr;
                    for (const Item *value : list->children) {
                        if (!value->hasId)
                            continue;
                        if (!largest || value->id > largest->id)
                            largest = value;
                        if (!smallest || value->id < smallest->id)
                            smallest = value;
                    }
                    for (const Item *value : { largest, smallest }) {
                        if (value)
                            widest = std::max(widest, fixed.horizontalAdvance(value->formatId()));
                    }
                }
            }
        }
        return std::max(header, widest + textMargin);
    }

    // Names: the few longest of each depth are measured, with the depth's indentation.
    QList<QString> longest[3];
    if (root) {
        for (const Item *tag : root->children) {
            keepLongest(longest[0], tag->name, measuredNames);
            for (const Item *list : tag->children) {
                for (const Item *value : list->children)
                    keepLongest(longest[2], value->name, measuredNames);
            }
        }
    }
    int widest = 0;
    for (int depth = 0; depth < 3; ++depth) {
        // The lists' own rows are one level above their values.
        const int indent = m_view->indentation() * (depth + (m_view->rootIsDecorated() ? 1 : 0));
        for (const QString &name : std::as_const(longest[depth]))
            widest = std::max(widest, indent + iconRoom + fixed.horizontalAdvance(name));
    }
    // Before the window is first shown, its view is not laid out yet: the window's width stands in.
    const int viewWidth = m_view->isVisible() ? m_view->viewport()->width() : m_view->window()->width();
    const int limit = std::max(minimumNameWidth, viewWidth / 2);
    return std::clamp(widest + textMargin, std::max(header, minimumNameWidth), limit);
}

void ColumnFitter::fit()
{
    m_fitting = true;
    for (int column = 0; column < 2; ++column) {
        if (!isUserSized(column))
            m_view->header()->resizeSection(column, fittedWidth(column));
    }
    m_fitting = false;
}

} // namespace ZAT16
