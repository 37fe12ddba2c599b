// The "Problems" dock of the main window: its place beside the messages, each kind of problem
// with its text, the list following edits, undo and redo (recomputed once per burst of changes),
// double-click and F8 / Shift+F8 taking the tree to the entries.

#include "editormodel.h"
#include "editorwindow.h"
#include "item.h"
#include "modal.h"
#include "problemsdock.h"
#include "testfiles.h"
#include "ui_editorwindow.h"

#include <QDockWidget>
#include <QListWidget>
#include <QSettings>
#include <QStandardPaths>
#include <QStyle>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

using namespace ZAT16;

namespace {

const QByteArray defs = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                        "<zat16>\n"
                        "  <tag name=\"Power\" id=\"0x2001\"/>\n"
                        "  <tag name=\"Mode\" id=\"0x1002\">\n"
                        "    <enums>\n"
                        "      <enum name=\"Off\" id=\"0\"/>\n"
                        "      <enum name=\"On\" id=\"0\"/>\n"
                        "      <enum id=\"5\" comment=\"reserved\"/>\n"
                        "    </enums>\n"
                        "  </tag>\n"
                        "  <tag name=\"Draft\"/>\n"
                        "  <tag id=\"0x1004\"/>\n"
                        "  <tag name=\"end\" id=\"0x1005\"/>\n"
                        "  <tag><bits><bit name=\"Ready\" id=\"0\"/></bits></tag>\n"
                        "</zat16>\n";

const QStringList loaded = {
    "Enum Off (0) of Tag Mode (0x1002): code collision with a sibling",
    "Enum On (0) of Tag Mode (0x1002): code collision with a sibling",
    "Tag Draft: name without code",
    "Tag (0x1004): code without name",
    "Tag end (0x1005): name is a keyword of Lua",
    "Tag in row 6: has entries but no name and no code",
};

QStringList rows(QListWidget *list)
{
    QStringList texts;
    for (int i = 0; i < list->count(); ++i)
        texts << list->item(i)->text();
    return texts;
}

} // namespace

class TestProblemsDock : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    EditorWindow *m_window = nullptr;

    EditorModel *model() const { return m_window->model(); }
    ProblemsDock *dock() const { return m_window->problemsDock(); }
    QListWidget *list() const { return dock()->list(); }
    RowTreeView *view() const { return m_window->ui()->m_view; }

    // What a double-click sends: a click, then the double-click's press (QTest's double-click
    // alone lacks the first press that an item view remembers).
    void doubleClick(const QPoint &at)
    {
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(list()->viewport(), Qt::LeftButton, {}, at);
    }

    QString current() const
    {
        const QModelIndex index = view()->currentIndex();
        if (!index.isValid())
            return QStringLiteral("(none)");
        const Item *item = model()->index2item(index);
        return Problems::describe(item);
    }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("zatedit-tests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_problemsdock"));
        QSettings().clear();
        QVERIFY(m_dir.isValid());
        QVERIFY(TestFiles::writeFile(m_dir.filePath(QStringLiteral("problems.zatdef")), defs));
    }

    void init()
    {
        m_window = new EditorWindow;
        m_window->initialize(m_dir.filePath(QStringLiteral("problems.zatdef")), QString());
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
    }

    void cleanup()
    {
        TestModal::cancelAll();
        m_window->undoStack()->setClean();
        delete m_window;
        m_window = nullptr;
    }

    void dockBesideTheMessages()
    {
        QCOMPARE(dock()->objectName(), QStringLiteral("ProblemsDock"));
        QCOMPARE(dock()->windowTitle(), QStringLiteral("Problems"));
        QCOMPARE(m_window->findChild<QDockWidget *>(QStringLiteral("ProblemsDock")), dock());
        QVERIFY(!dock()->isVisible());
        QVERIFY(!dock()->isFloating());
        QCOMPARE(m_window->dockWidgetArea(dock()), Qt::BottomDockWidgetArea);
        QCOMPARE(dock()->toggleViewAction()->text(), QStringLiteral("Problems"));

        m_window->messageDock()->show();
        m_window->showProblems();
        QTRY_VERIFY(dock()->isVisible() && m_window->messageDock()->isVisible());
        // Side by side, not stacked or tabbed.
        QVERIFY(m_window->tabifiedDockWidgets(dock()).isEmpty());
        QTRY_COMPARE(dock()->geometry().top(), m_window->messageDock()->geometry().top());
        QVERIFY(dock()->geometry().left() >= m_window->messageDock()->geometry().right());
    }

    void eachKindWithItsText()
    {
        m_window->showProblems();
        QCOMPARE(rows(list()), loaded);
        QCOMPARE(dock()->problems().size(), loaded.size());
        QVERIFY(!dock()->problems().at(0).isWarning());
        QVERIFY(dock()->problems().at(4).isWarning());
        // Problems and warnings have different icons.
        QVERIFY(list()->item(4)->icon().pixmap(16).toImage() != list()->item(3)->icon().pixmap(16).toImage());
        QCOMPARE(list()->item(3)->icon().pixmap(16).toImage(), list()->item(0)->icon().pixmap(16).toImage());
    }

    void followsEditsAndUndo()
    {
        m_window->showProblems();
        QCOMPARE(rows(list()), loaded);
        // Renaming Power to Mode makes both tags collide.
        QVERIFY(model()->setData(model()->index(0, 0), QStringLiteral("Mode"), Qt::EditRole));
        QStringList renamed = loaded;
        renamed.prepend(QStringLiteral("Tag Mode (0x1002): name collision with a sibling"));
        renamed.prepend(QStringLiteral("Tag Mode (0x2001): name collision with a sibling"));
        QTRY_COMPARE(rows(list()), renamed);

        m_window->undoStack()->undo();
        QTRY_COMPARE(rows(list()), loaded);
        m_window->undoStack()->redo();
        QTRY_COMPARE(rows(list()), renamed);
        m_window->undoStack()->undo();
        QTRY_COMPARE(rows(list()), loaded);

        // Giving Draft a code and deleting the nameless tags clears their problems.
        QVERIFY(model()->setData(model()->index(2, 1), QStringLiteral("0x1003"), Qt::EditRole));
        QVERIFY(model()->removeRow(5));
        QVERIFY(model()->removeRow(3));
        QTRY_COMPARE(rows(list()), QStringList({ loaded.at(0), loaded.at(1), loaded.at(4) }));
        m_window->ui()->m_act_new->trigger();
        QTRY_COMPARE(rows(list()), QStringList());
        while (m_window->undoStack()->canUndo())
            m_window->undoStack()->undo();
        QTRY_COMPARE(rows(list()), loaded);
    }

    // An edit changes only the rows of the entries it touched: the other rows of the list are
    // the same list items as before, and a row above a removed entry keeps its place.
    void onlyTouchedRowsChange()
    {
        m_window->showProblems();
        QCOMPARE(rows(list()), loaded);
        QList<QListWidgetItem *> before;
        for (int i = 0; i < list()->count(); ++i)
            before << list()->item(i);
        // Draft gets a code: its row goes, the others stay.
        QVERIFY(model()->setData(model()->index(2, 1), QStringLiteral("0x1003"), Qt::EditRole));
        QTRY_COMPARE(rows(list()),
                     QStringList({ loaded.at(0), loaded.at(1), loaded.at(3), loaded.at(4), loaded.at(5) }));
        QCOMPARE(list()->item(0), before.at(0));
        QCOMPARE(list()->item(1), before.at(1));
        QCOMPARE(list()->item(2), before.at(3));
        QCOMPARE(list()->item(4), before.at(5));
        // Removing the tag above the nameless one renumbers it: that row changes its text.
        QVERIFY(model()->removeRow(3));
        const QStringList removed = { loaded.at(0),
                                      loaded.at(1),
                                      loaded.at(4),
                                      QStringLiteral("Tag in row 5: has entries but no name and no code") };
        QTRY_COMPARE(rows(list()), removed);
        QCOMPARE(list()->item(0), before.at(0));
        QCOMPARE(list()->item(2), before.at(4));
        QCOMPARE(dock()->problems().at(3).message, removed.at(3));
        // Undo brings the list back, equal to a list made anew.
        m_window->undoStack()->undo();
        m_window->undoStack()->undo();
        QTRY_COMPARE(rows(list()), loaded);
        const QList<Problems::Problem> fresh = Problems::find(model()->root());
        QCOMPARE(dock()->problems().size(), fresh.size());
        for (int i = 0; i < fresh.size(); ++i) {
            QCOMPARE(dock()->problems().at(i).item, fresh.at(i).item);
            QCOMPARE(dock()->problems().at(i).message, fresh.at(i).message);
        }
    }

    // The values of a list show their codes in the list's display mode: a new mode of the list
    // changes their problems' texts, though no value changed.
    void listDisplayModeRewordsItsValues()
    {
        m_window->showProblems();
        QCOMPARE(rows(list()), loaded);
        const QModelIndex enums = model()->index(0, 0, model()->index(1, 0));
        ItemData data = *model()->index2item(enums);
        data.display.mode = 4;
        QVERIFY(model()->setItemData(enums, data));
        QStringList octal = loaded;
        octal[0] = QStringLiteral("Enum Off (0o0) of Tag Mode (0x1002): code collision with a sibling");
        octal[1] = QStringLiteral("Enum On (0o0) of Tag Mode (0x1002): code collision with a sibling");
        QTRY_COMPARE(rows(list()), octal);
        m_window->undoStack()->undo();
        QTRY_COMPARE(rows(list()), loaded);
    }

    // A burst of changes recomputes the list once.
    void burstRecomputesOnce()
    {
        m_window->showProblems();
        QCoreApplication::processEvents();
        const int before = dock()->refreshCount();
        m_window->undoStack()->beginMacro(QStringLiteral("several"));
        for (int i = 0; i < 5; ++i)
            QVERIFY(model()->insertRow(0));
        QVERIFY(model()->setData(model()->index(0, 0), QStringLiteral("New"), Qt::EditRole));
        m_window->undoStack()->endMacro();
        QCOMPARE(dock()->refreshCount(), before);
        QTRY_COMPARE(dock()->refreshCount(), before + 1);
        QCOMPARE(list()->item(0)->text(), QStringLiteral("Tag New: name without code"));
        QTest::qWait(20);
        QCOMPARE(dock()->refreshCount(), before + 1);

        m_window->undoStack()->undo();
        QTRY_COMPARE(dock()->refreshCount(), before + 2);
        QCOMPARE(rows(list()), loaded);
    }

    // A hidden dock does not walk the tree after each change; it catches up when shown.
    void hiddenDockWaits()
    {
        QVERIFY(!dock()->isVisible());
        QCoreApplication::processEvents();
        const int before = dock()->refreshCount();
        QVERIFY(model()->setData(model()->index(0, 0), QStringLiteral("Mode"), Qt::EditRole));
        QTest::qWait(20);
        QCOMPARE(dock()->refreshCount(), before);
        m_window->ui()->m_act_next_problem->trigger();
        QCOMPARE(dock()->refreshCount(), before + 1);
        QCOMPARE(list()->item(0)->text(), QStringLiteral("Tag Mode (0x2001): name collision with a sibling"));
        m_window->undoStack()->undo();
        QTRY_COMPARE(rows(list()), loaded);
        QCOMPARE(dock()->refreshCount(), before + 2);
        dock()->hide();
        QVERIFY(model()->setData(model()->index(0, 0), QStringLiteral("Mode"), Qt::EditRole));
        QTest::qWait(20);
        QCOMPARE(dock()->refreshCount(), before + 2);
        dock()->toggleViewAction()->trigger();
        QTRY_COMPARE(dock()->refreshCount(), before + 3);
        QCOMPARE(list()->item(0)->text(), QStringLiteral("Tag Mode (0x2001): name collision with a sibling"));
    }

    // Read between a change and the timer, the list is computed afresh.
    void staleListIsNotUsed()
    {
        m_window->showProblems();
        QVERIFY(model()->removeRow(1));
        QCOMPARE(dock()->problems().size(), 4);
        QCOMPARE(dock()->problems().first().message, loaded.at(2));
    }

    void doubleClickSelectsTheEntry()
    {
        m_window->showProblems();
        QTRY_VERIFY(list()->isVisible());
        QVERIFY(!view()->isExpanded(model()->index(1, 0)));
        QTRY_VERIFY(!list()->visualItemRect(list()->item(1)).isEmpty());
        const QRect rect = list()->visualItemRect(list()->item(1));
        const QString before = current();
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, rect.center());
        if (!list()->style()->styleHint(QStyle::SH_ItemView_ActivateItemOnSingleClick, nullptr, list()))
            QCOMPARE(current(), before); // one click only picks the row
        doubleClick(rect.center());
        QCOMPARE(current(), QStringLiteral("Enum On (0) of Tag Mode (0x1002)"));
        const QModelIndex on = view()->currentIndex();
        QVERIFY(view()->isExpanded(on.parent()));
        QVERIFY(view()->isExpanded(on.parent().parent()));
        QVERIFY(view()->selectionModel()->isRowSelected(on.row(), on.parent()));

        doubleClick(list()->visualItemRect(list()->item(5)).center());
        QCOMPARE(current(), QStringLiteral("Tag in row 6"));
    }

    void nextProblemWalksAndWraps()
    {
        m_window->setCurrentItem(model()->index(0, 0));
        QCOMPARE(current(), QStringLiteral("Tag Power (0x2001)"));
        QStringList seen;
        for (int i = 0; i < 7; ++i) {
            m_window->ui()->m_act_next_problem->trigger();
            seen << current();
        }
        QCOMPARE(seen,
                 QStringList({ "Enum Off (0) of Tag Mode (0x1002)",
                               "Enum On (0) of Tag Mode (0x1002)",
                               "Tag Draft",
                               "Tag (0x1004)",
                               "Tag end (0x1005)",
                               "Tag in row 6",
                               "Enum Off (0) of Tag Mode (0x1002)" }));
        QVERIFY(dock()->isVisible());
        QCOMPARE(list()->currentRow(), 0);
        QVERIFY(view()->isExpanded(model()->index(1, 0)));
    }

    void previousProblemWalksAndWraps()
    {
        m_window->setCurrentItem(model()->index(0, 0));
        QStringList seen;
        for (int i = 0; i < 3; ++i) {
            m_window->ui()->m_act_previous_problem->trigger();
            seen << current();
        }
        QCOMPARE(seen, QStringList({ "Tag in row 6", "Tag end (0x1005)", "Tag (0x1004)" }));
        QCOMPARE(list()->currentRow(), 3);
    }

    // From an entry the user chose, the walk goes on from there.
    void walkStartsAtTheSelectedEntry()
    {
        m_window->ui()->m_act_next_problem->trigger();
        m_window->setCurrentItem(model()->index(4, 0));
        m_window->ui()->m_act_next_problem->trigger();
        QCOMPARE(current(), QStringLiteral("Tag in row 6"));
        m_window->setCurrentItem(model()->index(4, 0));
        m_window->ui()->m_act_previous_problem->trigger();
        QCOMPARE(current(), QStringLiteral("Tag (0x1004)"));
        // From Mode, whose values have problems, the next problem is its first value's.
        m_window->setCurrentItem(model()->index(1, 0));
        m_window->ui()->m_act_next_problem->trigger();
        QCOMPARE(current(), QStringLiteral("Enum Off (0) of Tag Mode (0x1002)"));
    }

    void floatingDockFollowsTheWindow()
    {
        dock()->setFloating(true);
        dock()->show();
        QTRY_VERIFY(dock()->isVisible());
        m_window->hide();
        QVERIFY(!dock()->isVisible());
        m_window->show();
        QTRY_VERIFY(dock()->isVisible());
    }

    void noProblemsNoWalk()
    {
        m_window->ui()->m_act_new->trigger();
        m_window->ui()->m_act_next_problem->trigger();
        QCOMPARE(current(), QStringLiteral("(none)"));
        QCOMPARE(list()->count(), 0);
    }
};

QTEST_MAIN(TestProblemsDock)
#include "tst_problemsdock.moc"
