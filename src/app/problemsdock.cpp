#include "problemsdock.h"

#include "editormodel.h"
#include "item.h"

#include <QApplication>
#include <QListWidget>
#include <QStyle>
#include <QTimer>

#include <algorithm>

namespace ZAT16 {

ProblemsDock::ProblemsDock(EditorModel *model, QWidget *parent)
    : QDockWidget(tr("Problems"), parent)
    , m_model(model)
    , m_list(new QListWidget(this))
    , m_timer(new QTimer(this))
{
    setObjectName(QStringLiteral("ProblemsDock"));
    m_list->setObjectName(QStringLiteral("m_problems"));
    m_list->setUniformItemSizes(true);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    setWidget(m_list);

    m_timer->setSingleShot(true);
    m_timer->setInterval(0);
    connect(m_timer, &QTimer::timeout, this, &ProblemsDock::refresh);
    // Every primitive change of the model ends in one of these.
    connect(m_model, &QAbstractItemModel::dataChanged, this, &ProblemsDock::scheduleRefresh);
    connect(m_model, &QAbstractItemModel::rowsInserted, this, &ProblemsDock::scheduleRefresh);
    connect(m_model, &QAbstractItemModel::rowsRemoved, this, &ProblemsDock::scheduleRefresh);
    connect(m_model, &QAbstractItemModel::rowsMoved, this, &ProblemsDock::scheduleRefresh);
    connect(m_model, &QAbstractItemModel::modelReset, this, &ProblemsDock::scheduleRefresh);
    connect(m_model, &QAbstractItemModel::layoutChanged, this, &ProblemsDock::scheduleRefresh);
    connect(m_list, &QAbstractItemView::activated, this, &ProblemsDock::onActivated);
    connect(m_list, &QAbstractItemView::doubleClicked, this, &ProblemsDock::onActivated);
    // A hidden list is brought up to date when it is shown.
    connect(this, &QDockWidget::visibilityChanged, this, [this](bool visible) {
        if (visible && m_stale)
            m_timer->start();
    });
    scheduleRefresh();
}

const QList<Problems::Problem> &ProblemsDock::problems()
{
    if (m_stale)
        refresh();
    return m_problems;
}

void ProblemsDock::scheduleRefresh()
{
    // From here until the refresh the entries of m_problems may be gone: nothing reads them.
    // While the dock is hidden, large files are not walked after every edit.
    m_stale = true;
    if (isVisible())
        m_timer->start();
}

void ProblemsDock::refresh()
{
    m_timer->stop();
    const int row = m_list->currentRow();
    m_problems = Problems::find(m_model->root());
    m_stale = false;
    ++m_refreshCount;

    const QIcon problemIcon = style()->standardIcon(QStyle::SP_MessageBoxCritical);
    const QIcon warningIcon = style()->standardIcon(QStyle::SP_MessageBoxWarning);
    m_list->setUpdatesEnabled(false);
    m_list->clear();
    for (const Problems::Problem &problem : std::as_const(m_problems))
        new QListWidgetItem(problem.isWarning() ? warningIcon : problemIcon, problem.message, m_list);
    // The place in the list stays where it was, as far as the list still reaches.
    if (row >= 0 && !m_problems.isEmpty())
        m_list->setCurrentRow(std::min(row, int(m_problems.size()) - 1), QItemSelectionModel::NoUpdate);
    m_list->setUpdatesEnabled(true);
}

void ProblemsDock::onActivated(const QModelIndex &row)
{
    // A change since the list was made may have removed the entry: the fresh list comes first.
    if (m_stale) {
        refresh();
        return;
    }
    if (!row.isValid() || row.row() >= m_problems.size())
        return;
    emit itemChosen(m_model->item2index(m_problems.at(row.row()).item));
}

QList<int> ProblemsDock::path(const Item *item) const
{
    QList<int> rows;
    const Item *root = m_model->root();
    for (const Item *at = item; at && at != root; at = at->parent)
        rows.prepend(m_model->findRow(at));
    return rows;
}

QModelIndex ProblemsDock::step(const QModelIndex &current, bool forward)
{
    if (m_stale)
        refresh();
    const int count = int(m_problems.size());
    if (count == 0)
        return QModelIndex();
    const Item *item = current.isValid() ? m_model->index2item(current) : nullptr;
    const int row = m_list->currentRow();
    int target;
    if (row >= 0 && row < count && m_problems.at(row).item == item) {
        target = forward ? (row + 1) % count : (row + count - 1) % count;
    } else if (!item || item == m_model->root()) {
        target = forward ? 0 : count - 1;
    } else {
        // The list is in document order: a binary search on the rows leading to each entry
        // finds the first problem after the current entry, or the last one before it.
        const QList<int> here = path(item);
        auto first = std::partition_point(m_problems.cbegin(), m_problems.cend(), [&](const Problems::Problem &p) {
            const QList<int> there = path(p.item);
            return forward ? !(here < there) : there < here;
        });
        const int at = int(first - m_problems.cbegin());
        target = forward ? (at == count ? 0 : at) : (at == 0 ? count - 1 : at - 1);
    }
    m_list->setCurrentRow(target);
    m_list->scrollToItem(m_list->item(target));
    return m_model->item2index(m_problems.at(target).item);
}

} // namespace ZAT16
