#include "statusline.h"

#include "editormodel.h"
#include "marks.h"
#include "problemsdock.h"

#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QStatusBar>
#include <QTimer>

namespace ZAT16 {

namespace {

// How long a note stays, in milliseconds.
const int noteTimeout = 10000;

} // namespace

StatusLine::StatusLine(QStatusBar *bar, EditorModel *model, ProblemsDock *problems, QObject *parent)
    : QObject(parent)
    , m_bar(bar)
    , m_model(model)
    , m_problems(problems)
    , m_path(new QLabel(bar))
    , m_tags(new QLabel(bar))
    , m_problemCount(new QLabel(bar))
    , m_timer(new QTimer(this))
{
    m_path->setObjectName(QStringLiteral("m_lbl_path"));
    m_tags->setObjectName(QStringLiteral("m_lbl_tags"));
    m_problemCount->setObjectName(QStringLiteral("m_lbl_problems"));
    m_path->setTextInteractionFlags(Qt::TextSelectableByMouse);
    bar->addPermanentWidget(m_path, 1);
    bar->addPermanentWidget(m_tags);
    bar->addPermanentWidget(m_problemCount);
    setPath(QString());

    m_timer->setSingleShot(true);
    m_timer->setInterval(countDelay);
    connect(m_timer, &QTimer::timeout, this, &StatusLine::count);
    connect(model, &QAbstractItemModel::modelReset, this, &StatusLine::scheduleCount);
    connect(model, &QAbstractItemModel::rowsInserted, this, &StatusLine::scheduleCount);
    connect(model, &QAbstractItemModel::rowsRemoved, this, &StatusLine::scheduleCount);
    connect(model, &QAbstractItemModel::rowsMoved, this, &StatusLine::scheduleCount);
    connect(model, &QAbstractItemModel::dataChanged, this, &StatusLine::scheduleCount);
    connect(model, &QAbstractItemModel::layoutChanged, this, &StatusLine::scheduleCount);
    scheduleCount();
}

void StatusLine::setPath(const QString &path)
{
    m_path->setText(path.isEmpty() ? tr("No file") : QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath()));
    m_path->setToolTip(m_path->text());
}

void StatusLine::showNote(const QString &text)
{
    m_bar->showMessage(text, noteTimeout);
}

QString StatusLine::pathText() const
{
    return m_path->text();
}

QString StatusLine::tagsText() const
{
    return m_tags->text();
}

QString StatusLine::problemsText() const
{
    return m_problemCount->text();
}

void StatusLine::scheduleCount()
{
    m_timer->start();
}

void StatusLine::count()
{
    m_timer->stop();
    int tags = 0;
    if (const Item *root = m_model->root()) {
        for (const Item *child : root->children)
            tags += Marks::isEntry(child) ? 1 : 0;
    }
    m_tags->setText(tags == 1 ? tr("1 tag") : tr("%L1 tags").arg(tags));
    const qsizetype problems = m_problems->problems().size();
    m_problemCount->setText(problems == 0 ? tr("No problems")
                                          : (problems == 1 ? tr("1 problem") : tr("%L1 problems").arg(problems)));
}

} // namespace ZAT16
