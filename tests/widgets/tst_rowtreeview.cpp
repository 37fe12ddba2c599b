#include "rowtreeview.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QtTest>

// A three-level tree:
//   A
//     A1
//       A1a
//       A1b
//     A2
//       A2a
//   B
//     B1
class TestRowTreeView : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void selectedItemWithoutSelection();
    void selectedItemWithSelection();
    void selectedItemIsFirstOfSeveral();
    void selectionChangedSignal();
    void selectionChangedOnClear();
    void currentIndexChangedSignal();
    void resetEmitsSelectionChanged();
    void modelResetEmitsSelectionChanged();
    void expandSubtree();
    void expandSubtreeOnLeaf();
    void expandCurrentSubtree();
    void collapseSubtree();
    void collapseSubtreeOnLeaf();
    void collapseCurrentSubtree();
    void expandWholeTree();

private:
    QModelIndex find(QString const &text) const;
    QStringList names(QSignalSpy const &spy) const;
    QStringList expandedNames() const;

    QStandardItemModel *m_model = nullptr;
    RowTreeView *m_view = nullptr;
};

static QStandardItem *item(QString const &text, QList<QStandardItem *> const &children = {})
{
    auto *result = new QStandardItem(text);
    for (QStandardItem *child : children)
        result->appendRow(child);
    return result;
}

void TestRowTreeView::init()
{
    m_model = new QStandardItemModel(this);
    new QAbstractItemModelTester(m_model, QAbstractItemModelTester::FailureReportingMode::Fatal, m_model);
    m_model->appendRow(item("A", { item("A1", { item("A1a"), item("A1b") }), item("A2", { item("A2a") }) }));
    m_model->appendRow(item("B", { item("B1") }));
    m_view = new RowTreeView;
    m_view->setModel(m_model);
    m_view->resize(300, 400);
}

void TestRowTreeView::cleanup()
{
    delete m_view;
    m_view = nullptr;
    delete m_model;
    m_model = nullptr;
}

QModelIndex TestRowTreeView::find(QString const &text) const
{
    QModelIndexList const found
        = m_model->match(m_model->index(0, 0), Qt::DisplayRole, text, 1, Qt::MatchExactly | Qt::MatchRecursive);
    return found.isEmpty() ? QModelIndex() : found.first();
}

// The names of the indexes carried as first argument by each recorded signal.
QStringList TestRowTreeView::names(QSignalSpy const &spy) const
{
    QStringList result;
    for (QList<QVariant> const &arguments : spy)
        result << arguments.at(0).value<QModelIndex>().data().toString();
    return result;
}

QStringList TestRowTreeView::expandedNames() const
{
    QStringList result;
    for (char const *name : { "A", "A1", "A1a", "A1b", "A2", "A2a", "B", "B1" }) {
        if (m_view->isExpanded(find(name)))
            result << name;
    }
    return result;
}

void TestRowTreeView::selectedItemWithoutSelection()
{
    QVERIFY(!m_view->selectedItem().isValid());
}

void TestRowTreeView::selectedItemWithSelection()
{
    QModelIndex const a1 = find("A1");
    m_view->selectionModel()->select(a1, QItemSelectionModel::ClearAndSelect);
    QCOMPARE(m_view->selectedItem(), a1);
}

void TestRowTreeView::selectedItemIsFirstOfSeveral()
{
    m_view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    QModelIndex const b = find("B");
    m_view->selectionModel()->select(b, QItemSelectionModel::ClearAndSelect);
    m_view->selectionModel()->select(find("A2a"), QItemSelectionModel::Select);
    QCOMPARE(m_view->selectionModel()->selectedIndexes().size(), 2);
    QCOMPARE(m_view->selectedItem(), b);
}

void TestRowTreeView::selectionChangedSignal()
{
    QSignalSpy spy(m_view, qOverload<QModelIndex const &>(&RowTreeView::selectionChanged));
    QVERIFY(spy.isValid());
    QModelIndex const a2 = find("A2");
    m_view->selectionModel()->select(a2, QItemSelectionModel::ClearAndSelect);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).value<QModelIndex>(), a2);

    QModelIndex const b1 = find("B1");
    m_view->selectionModel()->select(b1, QItemSelectionModel::ClearAndSelect);
    QCOMPARE(spy.count(), 2);
    QCOMPARE(spy.at(1).at(0).value<QModelIndex>(), b1);
}

void TestRowTreeView::selectionChangedOnClear()
{
    m_view->selectionModel()->select(find("A"), QItemSelectionModel::ClearAndSelect);
    QSignalSpy spy(m_view, qOverload<QModelIndex const &>(&RowTreeView::selectionChanged));
    m_view->selectionModel()->clearSelection();
    QCOMPARE(spy.count(), 1);
    QVERIFY(!spy.at(0).at(0).value<QModelIndex>().isValid());
    QVERIFY(!m_view->selectedItem().isValid());
}

void TestRowTreeView::currentIndexChangedSignal()
{
    QSignalSpy spy(m_view, &RowTreeView::currentIndexChanged);
    QVERIFY(spy.isValid());
    QModelIndex const a = find("A");
    QModelIndex const b1 = find("B1");

    m_view->setCurrentIndex(a);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).value<QModelIndex>(), a);
    QVERIFY(!spy.at(0).at(1).value<QModelIndex>().isValid());

    m_view->setCurrentIndex(b1);
    QCOMPARE(spy.count(), 2);
    QCOMPARE(spy.at(1).at(0).value<QModelIndex>(), b1);
    QCOMPARE(spy.at(1).at(1).value<QModelIndex>(), a);
}

void TestRowTreeView::resetEmitsSelectionChanged()
{
    m_view->selectionModel()->select(find("A1"), QItemSelectionModel::ClearAndSelect);
    QSignalSpy spy(m_view, qOverload<QModelIndex const &>(&RowTreeView::selectionChanged));
    m_view->reset();
    QCOMPARE(spy.count(), 1);
    // A reset clears the selection, so the signal reports that nothing is selected.
    QVERIFY(!spy.at(0).at(0).value<QModelIndex>().isValid());
    QVERIFY(!m_view->selectedItem().isValid());
}

void TestRowTreeView::modelResetEmitsSelectionChanged()
{
    m_view->selectionModel()->select(find("B"), QItemSelectionModel::ClearAndSelect);
    QSignalSpy spy(m_view, qOverload<QModelIndex const &>(&RowTreeView::selectionChanged));
    m_model->clear();
    QVERIFY(spy.count() >= 1);
    QVERIFY(!spy.last().at(0).value<QModelIndex>().isValid());
}

void TestRowTreeView::expandSubtree()
{
    QSignalSpy spy(m_view, &QTreeView::expanded);
    m_view->expandSubtree(find("A"));
    // Every descendant first, taken from a stack (the last child pushed is walked first), then
    // the index itself.
    QCOMPARE(names(spy), QStringList({ "A1", "A2", "A2a", "A1a", "A1b", "A" }));
    QCOMPARE(expandedNames(), QStringList({ "A", "A1", "A1a", "A1b", "A2", "A2a" }));
}

// The rows with children open, each reported once, in one layout: afterwards every row is
// visible where expandAll() would show it; leaves are not recorded as expanded.
void TestRowTreeView::expandWholeTree()
{
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view));
    QSignalSpy spy(m_view, &QTreeView::expanded);
    m_view->expandWholeTree();
    QStringList reported = names(spy);
    reported.sort();
    QCOMPARE(reported, QStringList({ "A", "A1", "A2", "B" }));
    QCOMPARE(expandedNames(), QStringList({ "A", "A1", "A2", "B" }));
    QStringList shown;
    for (QModelIndex at = m_model->index(0, 0); at.isValid(); at = m_view->indexBelow(at))
        shown << at.data().toString();
    QCOMPARE(shown, QStringList({ "A", "A1", "A1a", "A1b", "A2", "A2a", "B", "B1" }));
    QVERIFY(!m_view->visualRect(find("B1")).isEmpty());
    m_view->collapseAll();
    QCOMPARE(expandedNames(), QStringList());
}

void TestRowTreeView::expandSubtreeOnLeaf()
{
    QSignalSpy spy(m_view, &QTreeView::expanded);
    m_view->expandSubtree(find("A1b"));
    QCOMPARE(names(spy), QStringList({ "A1b" }));
    QCOMPARE(expandedNames(), QStringList({ "A1b" }));
}

void TestRowTreeView::expandCurrentSubtree()
{
    m_view->setCurrentIndex(find("A1"));
    QSignalSpy spy(m_view, &QTreeView::expanded);
    m_view->expandCurrentSubtree();
    QCOMPARE(names(spy), QStringList({ "A1a", "A1b", "A1" }));
    QCOMPARE(expandedNames(), QStringList({ "A1", "A1a", "A1b" }));
}

void TestRowTreeView::collapseSubtree()
{
    m_view->expandSubtree(QModelIndex());
    QCOMPARE(expandedNames(), QStringList({ "A", "A1", "A1a", "A1b", "A2", "A2a", "B", "B1" }));
    QSignalSpy spy(m_view, &QTreeView::collapsed);
    m_view->collapseSubtree(find("A"));
    // The index first, then its descendants in the order of the stack walk.
    QCOMPARE(names(spy), QStringList({ "A", "A1", "A2", "A2a", "A1a", "A1b" }));
    QCOMPARE(expandedNames(), QStringList({ "B", "B1" }));
}

void TestRowTreeView::collapseSubtreeOnLeaf()
{
    m_view->expandSubtree(find("A"));
    QSignalSpy spy(m_view, &QTreeView::collapsed);
    m_view->collapseSubtree(find("A2a"));
    QCOMPARE(names(spy), QStringList({ "A2a" }));
    QCOMPARE(expandedNames(), QStringList({ "A", "A1", "A1a", "A1b", "A2" }));
}

void TestRowTreeView::collapseCurrentSubtree()
{
    m_view->expandSubtree(QModelIndex());
    m_view->setCurrentIndex(find("B"));
    m_view->collapseCurrentSubtree();
    QCOMPARE(expandedNames(), QStringList({ "A", "A1", "A1a", "A1b", "A2", "A2a" }));
}

QTEST_MAIN(TestRowTreeView)
#include "tst_rowtreeview.moc"
