// The problems of the generated code in the "Problems" dock: under their own heading, below the
// other problems and apart from them, the rows of their entries marked in amber (not the red of
// a collision, readable in a dark palette too) while the dock is shown, following edits, and a
// double-click taking the tree to the entry.

#include "contrast.h"
#include "editormodel.h"
#include "editorwindow.h"
#include "item.h"
#include "modal.h"
#include "problemsdock.h"
#include "testfiles.h"
#include "ui_editorwindow.h"

#include <QColor>
#include <QLabel>
#include <QListWidget>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

using namespace ZAT16;

namespace {

// Mode has both lists (the C++ headers), Ten of A is written as 0010 (octal in C and C++), and
// the two values of Level collide, which the other list shows.
const QByteArray defs
    = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<zat16>\n"
      "  <tag name=\"Power\" id=\"0x2001\"/>\n"
      "  <tag name=\"Mode\" id=\"0x1002\">\n"
      "    <enums><enum name=\"Off\" id=\"0\"/></enums>\n"
      "    <bits><bit name=\"Busy\" id=\"1\"/></bits>\n"
      "  </tag>\n"
      "  <tag name=\"A\" id=\"0x1001\">\n"
      "    <enums display=\"4u\"><enum name=\"Ten\" id=\"10\"/><enum name=\"Three\" id=\"3\"/></enums>\n"
      "  </tag>\n"
      "  <tag name=\"Level\" id=\"0x1003\">\n"
      "    <enums><enum name=\"Low\" id=\"0\"/><enum name=\"High\" id=\"0\"/></enums>\n"
      "  </tag>\n"
      "</zat16>\n";

const QStringList outputRows = {
    "Tag Mode (0x1002): the C++ enums header will not compile: the tag has both an enumeration list and a bit list",
    "Tag Mode (0x1002): the C++ lookup-table header will not compile: the tag has both an enumeration list and a bit "
    "list, which are both nameLookupMode",
    "Enum Ten (0010) of Tag A (0x1001): the C header writes 0010, which C reads as octal 8",
    "Enum Ten (0010) of Tag A (0x1001): the C++ enums header writes 0010, which C++ reads as octal 8",
    "Enum Ten (0010) of Tag A (0x1001): the C++ lookup-table header writes 0010, which C++ reads as octal 8",
};

const QColor amber(255, 191, 71);
const QColor markRed(192, 0, 0);
const QColor darkBase(30, 30, 30);

QStringList rows(QListWidget *list)
{
    QStringList texts;
    for (int i = 0; i < list->count(); ++i)
        texts << list->item(i)->text();
    return texts;
}

} // namespace

class TestOutputProblemsDock : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    EditorWindow *m_window = nullptr;

    EditorModel *model() const { return m_window->model(); }
    ProblemsDock *dock() const { return m_window->problemsDock(); }
    QListWidget *outputList() const { return dock()->outputList(); }
    QLabel *heading() const { return dock()->findChild<QLabel *>(QStringLiteral("m_lbl_output")); }
    RowTreeView *view() const { return m_window->ui()->m_view; }
    QModelIndex tag(int row, int column = 0) const { return model()->index(row, column); }
    QColor background(const QModelIndex &index) const { return index.data(Qt::BackgroundRole).value<QColor>(); }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("zatedit-tests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_outputproblemsdock"));
        QSettings().clear();
        QVERIFY(m_dir.isValid());
        QVERIFY(TestFiles::writeFile(m_dir.filePath(QStringLiteral("outputs.zatdef")), defs));
    }

    void init()
    {
        m_window = new EditorWindow;
        m_window->initialize(m_dir.filePath(QStringLiteral("outputs.zatdef")), QString());
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

    // Their own heading and list, apart from the other problems, once the document has rested.
    void ownHeading()
    {
        m_window->showProblems();
        QTRY_VERIFY(dock()->isVisible());
        QCOMPARE(rows(dock()->list()),
                 QStringList({ "Enum Low (0) of Tag Level (0x1003): code collision with a sibling",
                               "Enum High (0) of Tag Level (0x1003): code collision with a sibling" }));
        QTRY_COMPARE_WITH_TIMEOUT(rows(outputList()), outputRows, 5000);
        QVERIFY(heading()->isVisible());
        QCOMPARE(heading()->text(), QStringLiteral("Generated code"));
        QVERIFY(outputList()->isVisible());
        QCOMPARE(dock()->outputProblems().size(), outputRows.size());
        QCOMPARE(dock()->outputProblems().at(0).item, model()->index2item(tag(1)));
    }

    // The rows of the entries are marked in a colour of their own, in the cells no other mark
    // colours; the red of a collision stays.
    void marksInAmber()
    {
        QVERIFY(!background(tag(1)).isValid());
        m_window->showProblems();
        QTRY_VERIFY(dock()->isVisible());
        dock()->problems();
        QCoreApplication::processEvents();
        const int refreshes = dock()->refreshCount();
        dock()->refreshOutputs();
        // New colours are no edit: the other problems are not looked for again.
        QCoreApplication::processEvents();
        QCOMPARE(dock()->refreshCount(), refreshes);
        for (int column = 0; column < 3; ++column) {
            QCOMPARE(background(tag(1, column)), amber);
            QCOMPARE(tag(1, column).data(Qt::ForegroundRole).value<QColor>(), QColor(Qt::black));
        }
        const QModelIndex ten = model()->index(0, 0, model()->index(0, 0, tag(2)));
        QCOMPARE(model()->index2item(ten)->name, QStringLiteral("Ten"));
        QCOMPARE(background(ten), amber);
        QVERIFY(!background(tag(0)).isValid());
        QVERIFY(!background(tag(2)).isValid());
        // The code cell of a colliding value keeps its red.
        const QModelIndex low = model()->index(0, 1, model()->index(0, 0, tag(3)));
        QCOMPARE(background(low), markRed);

        // Not the red, and black text on it reads well, also where the palette is dark.
        QVERIFY(amber != markRed);
        QVERIFY(Contrast::ratio(QColor(Qt::black), amber) >= 4.5);
        QVERIFY(Contrast::ratio(darkBase, amber) >= 4.5);

        // Hidden, the dock marks nothing.
        dock()->hide();
        QTRY_VERIFY(!background(tag(1)).isValid());
        QVERIFY(!background(ten).isValid());
    }

    // An edit that takes the fault away takes the problem and the mark away with it.
    void followsEdits()
    {
        m_window->showProblems();
        QTRY_VERIFY(dock()->isVisible());
        QCOMPARE(dock()->outputProblems().size(), outputRows.size());
        const QModelIndex enums = model()->index(0, 0, tag(2));
        ItemData data = *model()->index2item(enums);
        data.display = DisplayMode { 2, 0 };
        QVERIFY(model()->setItemData(enums, data));
        const QModelIndex ten = model()->index(0, 0, enums);
        QCOMPARE(rows(outputList()), outputRows); // not yet: the document has not rested
        QTRY_COMPARE_WITH_TIMEOUT(rows(outputList()), outputRows.mid(0, 2), 5000);
        QVERIFY(!background(ten).isValid());
        QCOMPARE(background(tag(1)), amber);

        m_window->undoStack()->undo();
        QCOMPARE(dock()->outputProblems().size(), outputRows.size());
        QCOMPARE(rows(outputList()), outputRows);
        QCOMPARE(background(model()->index(0, 0, model()->index(0, 0, tag(2)))), amber);

        // Without the tag with both lists and the padded values nothing is left: the heading goes.
        QVERIFY(model()->removeRow(2));
        QVERIFY(model()->removeRow(1));
        QVERIFY(dock()->outputProblems().isEmpty());
        QVERIFY(!heading()->isVisible());
        QVERIFY(!outputList()->isVisible());
    }

    void doubleClickChoosesTheEntry()
    {
        m_window->showProblems();
        QTRY_VERIFY(dock()->isVisible());
        dock()->refreshOutputs();
        const QRect rect = outputList()->visualItemRect(outputList()->item(2));
        QTest::mouseClick(outputList()->viewport(), Qt::LeftButton, {}, rect.center());
        QTest::mouseDClick(outputList()->viewport(), Qt::LeftButton, {}, rect.center());
        QTRY_COMPARE(model()->index2item(view()->currentIndex())->name, QStringLiteral("Ten"));
    }
};

QTEST_MAIN(TestOutputProblemsDock)
#include "tst_outputproblemsdock.moc"
