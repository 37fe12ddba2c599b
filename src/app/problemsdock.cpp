#include "problemsdock.h"

#include "editormodel.h"
#include "item.h"
#include "problemlist.h"

#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace ZAT16 {

ProblemsDock::ProblemsDock(EditorModel *model, QWidget *parent)
    : QDockWidget(tr("Problems"), parent)
    , m_model(model)
    , m_problems(new ProblemList(model, this))
    , m_list(new QListWidget(this))
    , m_timer(new QTimer(this))
    , m_lbl_output(new QLabel(tr("Generated code"), this))
    , m_outputList(new QListWidget(this))
    , m_outputTimer(new QTimer(this))
{
    setObjectName(QStringLiteral("ProblemsDock"));
    m_list->setObjectName(QStringLiteral("m_problems"));
    m_list->setUniformItemSizes(true);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_lbl_output->setObjectName(QStringLiteral("m_lbl_output"));
    QFont heading = m_lbl_output->font();
    heading.setBold(true);
    m_lbl_output->setFont(heading);
    m_outputList->setObjectName(QStringLiteral("m_output_problems"));
    m_outputList->setUniformItemSizes(true);
    m_outputList->setSelectionMode(QAbstractItemView::SingleSelection);
    // The heading and its list are shown only when there is something under it.
    m_lbl_output->hide();
    m_outputList->hide();
    auto *content = new QWidget(this);
    auto *layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_list, 2);
    layout->addWidget(m_lbl_output);
    layout->addWidget(m_outputList, 1);
    setWidget(content);

    m_outputTimer->setSingleShot(true);
    m_outputTimer->setInterval(outputDelayMs);
    connect(m_outputTimer, &QTimer::timeout, this, &ProblemsDock::refreshOutputs);
    connect(m_problems, &ProblemList::changed, this, &ProblemsDock::scheduleOutputRefresh);
    connect(m_model, &QAbstractItemModel::modelReset, this, &ProblemsDock::scheduleOutputRefresh);
    connect(m_outputList, &QAbstractItemView::activated, this, &ProblemsDock::onOutputActivated);
    connect(m_outputList, &QAbstractItemView::doubleClicked, this, &ProblemsDock::onOutputActivated);

    m_timer->setSingleShot(true);
    m_timer->setInterval(0);
    connect(m_timer, &QTimer::timeout, this, &ProblemsDock::refresh);
    connect(m_problems, &ProblemList::changed, this, &ProblemsDock::scheduleRefresh);
    connect(m_problems, &ProblemList::replaced, this, &ProblemsDock::onReplaced);
    connect(m_problems, &ProblemList::rebuilt, this, &ProblemsDock::onRebuilt);
    connect(m_list, &QAbstractItemView::activated, this, &ProblemsDock::onActivated);
    connect(m_list, &QAbstractItemView::doubleClicked, this, &ProblemsDock::onActivated);
    // A hidden list is brought up to date when it is shown.
    connect(this, &QDockWidget::visibilityChanged, this, [this](bool visible) {
        if (visible && m_problems->isStale())
            m_timer->start();
        // The marks of the generated code belong to the dock: hidden, it shows none.
        if (!visible) {
            m_outputTimer->stop();
            markOutputs(false);
        } else if (m_outputStale)
            m_outputTimer->start();
        else
            markOutputs(true);
    });
    scheduleRefresh();
}

const QList<OutputProblems::Problem> &ProblemsDock::outputProblems()
{
    if (m_outputStale)
        refreshOutputs();
    return m_outputProblems;
}

void ProblemsDock::scheduleOutputRefresh()
{
    // Repainting the marked rows is no change of the document.
    if (m_markingOutputs)
        return;
    m_outputStale = true;
    // Every change starts the wait again, so that typing is not held up by a look at the whole
    // document.
    if (isVisible())
        m_outputTimer->start();
}

void ProblemsDock::refreshOutputs()
{
    m_outputTimer->stop();
    m_outputStale = false;
    m_outputProblems = OutputProblems::find(m_model->root());
    QStringList texts;
    texts.reserve(m_outputProblems.size());
    for (const OutputProblems::Problem &problem : std::as_const(m_outputProblems))
        texts.append(problem.message);
    m_outputList->setUpdatesEnabled(false);
    m_outputList->clear();
    m_outputList->addItems(texts);
    const QIcon problemIcon = style()->standardIcon(QStyle::SP_MessageBoxCritical);
    for (int i = 0; i < m_outputList->count(); ++i)
        m_outputList->item(i)->setIcon(problemIcon);
    m_outputList->setUpdatesEnabled(true);
    m_lbl_output->setVisible(!texts.isEmpty());
    m_outputList->setVisible(!texts.isEmpty());
    markOutputs(isVisible());
}

void ProblemsDock::markOutputs(bool shown)
{
    QList<const Item *> items;
    if (shown) {
        items.reserve(m_outputProblems.size());
        for (const OutputProblems::Problem &problem : std::as_const(m_outputProblems))
            items.append(problem.item);
    }
    m_markingOutputs = true;
    m_model->setOutputMarks(items);
    m_markingOutputs = false;
}

void ProblemsDock::onOutputActivated(const QModelIndex &row)
{
    // An entry of a list made before the last change may have left the document.
    if (m_outputStale) {
        refreshOutputs();
        return;
    }
    if (row.isValid() && row.row() < m_outputProblems.size())
        emit itemChosen(m_model->item2index(m_outputProblems.at(row.row()).item));
}

const QList<Problems::Problem> &ProblemsDock::problems()
{
    if (m_problems->isStale())
        refresh();
    return m_problems->problems();
}

void ProblemsDock::scheduleRefresh()
{
    // While the dock is hidden, the changes are only collected.
    if (isVisible())
        m_timer->start();
}

void ProblemsDock::refresh()
{
    m_timer->stop();
    const int row = m_list->currentRow();
    m_list->setUpdatesEnabled(false);
    m_problems->update();
    ++m_refreshCount;
    // The place in the list stays where it was, as far as the list still reaches, and nothing
    // is selected, as in a list made anew.
    m_list->clearSelection();
    const int count = m_list->count();
    if (row >= 0 && count > 0)
        m_list->setCurrentRow(std::min(row, count - 1), QItemSelectionModel::NoUpdate);
    m_list->setUpdatesEnabled(true);
}

QIcon ProblemsDock::icon(const Problems::Problem &problem) const
{
    return style()->standardIcon(problem.isWarning() ? QStyle::SP_MessageBoxWarning : QStyle::SP_MessageBoxCritical);
}

// The rows follow the list: changed rows get their new text, the rest come or go.
void ProblemsDock::onReplaced(int first, int removed, int inserted)
{
    const QList<Problems::Problem> &problems = m_problems->problems();
    const int kept = std::min(removed, inserted);
    for (int i = 0; i < kept; ++i) {
        const Problems::Problem &problem = problems.at(first + i);
        QListWidgetItem *item = m_list->item(first + i);
        item->setText(problem.message);
        item->setIcon(icon(problem));
    }
    for (int i = kept; i < removed; ++i)
        delete m_list->takeItem(first + kept);
    for (int i = kept; i < inserted; ++i) {
        const Problems::Problem &problem = problems.at(first + i);
        m_list->insertItem(first + i, new QListWidgetItem(icon(problem), problem.message));
    }
}

// All rows at once: one insertion of all texts is much faster than one insertion per row.
void ProblemsDock::onRebuilt()
{
    const QList<Problems::Problem> &problems = m_problems->problems();
    QStringList texts;
    texts.reserve(problems.size());
    for (const Problems::Problem &problem : problems)
        texts.append(problem.message);
    m_list->clear();
    m_list->addItems(texts);
    const QIcon problemIcon = style()->standardIcon(QStyle::SP_MessageBoxCritical);
    const QIcon warningIcon = style()->standardIcon(QStyle::SP_MessageBoxWarning);
    for (int i = 0; i < problems.size(); ++i)
        m_list->item(i)->setIcon(problems.at(i).isWarning() ? warningIcon : problemIcon);
}

void ProblemsDock::onActivated(const QModelIndex &row)
{
    // A change since the list was made may have removed the entry: the fresh list comes first.
    if (m_problems->isStale()) {
        refresh();
        return;
    }
    const QList<Problems::Problem> &problems = m_problems->problems();
    if (!row.isValid() || row.row() >= problems.size())
        return;
    emit itemChosen(m_model->item2index(problems.at(row.row()).item));
}

QModelIndex ProblemsDock::step(const QModelIndex &current, bool forward)
{
    if (m_problems->isStale())
        refresh();
    const QList<Problems::Problem> &problems = m_problems->problems();
    const int count = int(problems.size());
    if (count == 0)
        return QModelIndex();
    const Item *item = current.isValid() ? m_model->index2item(current) : nullptr;
    const int row = m_list->currentRow();
    int target;
    if (row >= 0 && row < count && problems.at(row).item == item) {
        target = forward ? (row + 1) % count : (row + count - 1) % count;
    } else if (!item || item == m_model->root()) {
        target = forward ? 0 : count - 1;
    } else {
        // The list is in document order: the first problem at or after the current entry, past
        // the entry's own, is the next one; the one before it the previous one.
        int at = int(m_problems->lowerBound(item));
        if (forward) {
            while (at < count && problems.at(at).item == item)
                ++at;
        }
        target = forward ? (at == count ? 0 : at) : (at == 0 ? count - 1 : at - 1);
    }
    m_list->setCurrentRow(target);
    m_list->scrollToItem(m_list->item(target));
    return m_model->item2index(problems.at(target).item);
}

} // namespace ZAT16
