// Moving entries in the window: Move up and Move down in the Edit menu with their shortcuts and
// enabled states, and rows dragged within the tree, through the model and through drag and drop
// events on the view. Offscreen.

#include "editormodel.h"
#include "editormoves.h"
#include "editorwindow.h"
#include "item.h"
#include "testfiles.h"
#include "ui_editorwindow.h"

#include <QAction>
#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QImage>
#include <QMenu>
#include <QMimeData>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

using namespace ZAT16;

namespace {

// Rows of the root: 0 Power, 1 Mode { 0 enums {0 Off, 1 On} }, 2 comment line, 3 blank line,
// 4 Flags { 0 bits {0 Ready} }.
const QByteArray &defs = TestFiles::windowDefinitions;

// The names of the children of `item`, comment lines as "#", blank lines as "-", lists by kind.
QString rows(const Item *item)
{
    QStringList names;
    for (const Item *child : item->children) {
        if (child->type == Enums)
            names << QStringLiteral("Enums");
        else if (child->type == Bits)
            names << QStringLiteral("Bits");
        else if (child->isComment())
            names << QStringLiteral("#");
        else if (child->isNewline())
            names << QStringLiteral("-");
        else
            names << child->name;
    }
    return names.join(QLatin1Char(' '));
}

} // namespace

class TestMoveEntries : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir *m_dir = nullptr;
    EditorWindow *m_window = nullptr;

    Ui_ZAT16EditorWindow *ui() const { return m_window->ui(); }
    EditorModel *model() const { return m_window->model(); }
    RowTreeView *view() const { return ui()->m_view; }
    QAction *moveUp() const { return m_window->findChild<QAction *>(QStringLiteral("m_act_move_up")); }
    QAction *moveDown() const { return m_window->findChild<QAction *>(QStringLiteral("m_act_move_down")); }
    QString topRows() const { return rows(model()->root()); }
    QModelIndex top(int row, int column = 0) const { return model()->index(row, column); }
    // Where a drop on `index` lands: its middle, or just inside its top edge.
    QPoint middleOf(const QModelIndex &index) const { return view()->visualRect(index).center(); }
    QPoint topEdgeOf(const QModelIndex &index) const
    {
        const QRect rect = view()->visualRect(index);
        return QPoint(rect.center().x(), rect.top() + 1);
    }
    // The drag of one cell, as the view starts it: the model's data of the selected index.
    QMimeData *dragOf(const QModelIndex &index) const
    {
        view()->selectionModel()->select(index, QItemSelectionModel::ClearAndSelect);
        return model()->mimeData(view()->selectionModel()->selectedIndexes());
    }
    // A drag entering the viewport and moving to `at`; whether the view would take a drop there.
    bool dragTo(const QPoint &at, const QMimeData *data) const
    {
        QDragEnterEvent enter(at, Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(view()->viewport(), &enter);
        QDragMoveEvent move(at, Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(view()->viewport(), &move);
        return move.isAccepted();
    }
    // A drop at `at`; whether the view took it.
    bool dropAt(const QPoint &at, const QMimeData *data) const
    {
        QDropEvent drop(at, Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(view()->viewport(), &drop);
        return drop.isAccepted();
    }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("zatedit-tests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_moveentries"));
    }

    void init()
    {
        QSettings().clear();
        m_dir = new QTemporaryDir;
        QVERIFY(m_dir->isValid());
        const QString path = m_dir->filePath(QStringLiteral("defs.zatdef"));
        QVERIFY(TestFiles::writeFile(path, defs));
        m_window = new EditorWindow;
        m_window->initialize(path, QString());
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
        QCOMPARE(topRows(), QStringLiteral("Power Mode # - Flags"));
    }

    void cleanup()
    {
        if (m_window) {
            m_window->undoStack()->setClean();
            delete m_window;
            m_window = nullptr;
        }
        delete m_dir;
        m_dir = nullptr;
    }

    void actions()
    {
        QVERIFY(moveUp());
        QVERIFY(moveDown());
        QCOMPARE(moveUp()->text(), QStringLiteral("Move up"));
        QCOMPARE(moveDown()->text(), QStringLiteral("Move down"));
        QCOMPARE(moveUp()->shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+Up")));
        QCOMPARE(moveDown()->shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+Down")));
        // In the Edit menu between Delete and Clear all, a group of their own.
        const QList<QAction *> edit = ui()->m_menu_edit->actions();
        const qsizetype at = edit.indexOf(ui()->m_act_delete);
        QVERIFY(at > 0 && at + 5 < edit.size());
        QVERIFY(edit.at(at + 1)->isSeparator());
        QCOMPARE(edit.at(at + 2), moveUp());
        QCOMPARE(edit.at(at + 3), moveDown());
        QVERIFY(edit.at(at + 4)->isSeparator());
        QCOMPARE(edit.at(at + 5), ui()->m_act_new);
    }

    void enabledState_data()
    {
        QTest::addColumn<QList<int>>("path");
        QTest::addColumn<bool>("up");
        QTest::addColumn<bool>("down");

        QTest::newRow("first row") << QList<int> { 0 } << false << true;
        QTest::newRow("middle row") << QList<int> { 2 } << true << true;
        QTest::newRow("last row") << QList<int> { 4 } << true << false;
        QTest::newRow("enumeration list") << QList<int> { 1, 0 } << false << false;
        QTest::newRow("bit list") << QList<int> { 4, 0 } << false << false;
        QTest::newRow("first value") << QList<int> { 1, 0, 0 } << false << true;
        QTest::newRow("last value") << QList<int> { 1, 0, 1 } << true << false;
        QTest::newRow("only bit") << QList<int> { 4, 0, 0 } << false << false;
        QTest::newRow("nothing current") << QList<int> {} << false << false;
    }

    void enabledState()
    {
        QFETCH(QList<int>, path);
        QFETCH(bool, up);
        QFETCH(bool, down);

        QModelIndex index;
        for (int row : path)
            index = model()->index(row, 0, index);
        // Another entry first, so that the current index changes.
        m_window->setCurrentItem(top(2));
        m_window->setCurrentItem(index);
        QCOMPARE(view()->currentIndex(), index);
        QCOMPARE(moveUp()->isEnabled(), up);
        QCOMPARE(moveDown()->isEnabled(), down);
    }

    // The shortcuts move the current entry; it stays current and selected, and the actions follow
    // its new row.
    void shortcuts()
    {
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window));
        view()->setFocus();
        m_window->setCurrentItem(top(0));
        Item *power = model()->root()->child(0);

        QTest::keyClick(view(), Qt::Key_Down, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(topRows(), QStringLiteral("Mode Power # - Flags"));
        QCOMPARE(model()->index2item(view()->currentIndex()), power);
        QCOMPARE(view()->currentIndex().row(), 1);
        QVERIFY(view()->selectionModel()->isRowSelected(1, QModelIndex()));
        QVERIFY(moveUp()->isEnabled());
        QCOMPARE(m_window->undoStack()->count(), 1);
        QCOMPARE(m_window->undoStack()->text(0), QStringLiteral("Move tag"));

        for (int i = 0; i < 3; ++i)
            QTest::keyClick(view(), Qt::Key_Down, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(topRows(), QStringLiteral("Mode # - Flags Power"));
        QVERIFY(!moveDown()->isEnabled());
        // At the last row the shortcut does nothing.
        QTest::keyClick(view(), Qt::Key_Down, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(m_window->undoStack()->count(), 4);

        QTest::keyClick(view(), Qt::Key_Up, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(topRows(), QStringLiteral("Mode # - Power Flags"));
        QVERIFY(moveDown()->isEnabled());

        // Undo takes the entry back one step and selects it there; the actions follow.
        m_window->undoStack()->undo();
        QCOMPARE(topRows(), QStringLiteral("Mode # - Flags Power"));
        QCOMPARE(view()->currentIndex(), top(4));
        QVERIFY(!moveDown()->isEnabled());
        while (m_window->undoStack()->canUndo())
            m_window->undoStack()->undo();
        QCOMPARE(topRows(), QStringLiteral("Power Mode # - Flags"));
        QCOMPARE(view()->currentIndex(), top(0));
        QVERIFY(!moveUp()->isEnabled());

        // A value in its list.
        const QModelIndex on = model()->index(1, 0, model()->index(0, 0, top(1)));
        m_window->setCurrentItem(on);
        QTest::keyClick(view(), Qt::Key_Up, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(rows(model()->root()->child(1)->child(0)), QStringLiteral("On Off"));
        QCOMPARE(view()->currentIndex().row(), 0);
        QCOMPARE(m_window->undoStack()->text(m_window->undoStack()->count() - 1), QStringLiteral("Move enum"));
    }

    // The moved tag stays expanded, and so do its lists.
    void expansionKept()
    {
        view()->expand(top(1));
        view()->expand(model()->index(0, 0, top(1)));
        m_window->setCurrentItem(top(1));
        moveDown()->trigger();
        QCOMPARE(topRows(), QStringLiteral("Power # Mode - Flags"));
        QVERIFY(view()->isExpanded(top(2)));
        QVERIFY(view()->isExpanded(model()->index(0, 0, top(2))));
        m_window->undoStack()->undo();
        QVERIFY(view()->isExpanded(top(1)));
    }

    // A drag of a row from the view, dropped onto another row through the model: the entry moves
    // and the target keeps its name.
    void dropThroughModel()
    {
        std::unique_ptr<QMimeData> flags(dragOf(top(4)));
        QVERIFY(flags);
        QVERIFY(flags->hasFormat(EditorMoves::entryMimeType()));
        QVERIFY(model()->dropMimeData(flags.get(), Qt::CopyAction, -1, -1, top(1)));
        QCOMPARE(topRows(), QStringLiteral("Power Flags Mode # -"));
        QCOMPARE(m_window->undoStack()->count(), 1);
        // A row selected whole is several cells: nothing to drag, as before.
        m_window->setCurrentItem(top(0));
        QVERIFY(!model()->mimeData(view()->selectionModel()->selectedIndexes()));
    }

    // Drop events on the viewport, as Qt's drag and drop delivers them: onto a row, the dragged
    // row moves before it once, and the view does not remove the dragged row itself.
    void dropOntoRow()
    {
        std::unique_ptr<QMimeData> flags(dragOf(top(4, 1)));
        QVERIFY(dragTo(middleOf(top(1)), flags.get()));
        QVERIFY(dropAt(middleOf(top(1)), flags.get()));
        QCOMPARE(topRows(), QStringLiteral("Power Flags Mode # -"));
        QCOMPARE(model()->root()->child(1)->name, QStringLiteral("Flags"));
        QCOMPARE(model()->root()->child(2)->name, QStringLiteral("Mode"));
        QCOMPARE(rows(model()->root()->child(1)), QStringLiteral("Bits"));
        QCOMPARE(m_window->undoStack()->count(), 1);
        QCOMPARE(m_window->undoStack()->text(0), QStringLiteral("Move tag"));
        // The moved row is current and selected whole, as after Move up or down.
        QCOMPARE(view()->currentIndex().siblingAtColumn(0), top(1));
        QCOMPARE(view()->selectionModel()->selectedIndexes().size(), model()->columnCount());
        QVERIFY(view()->selectionModel()->isRowSelected(1, QModelIndex()));

        // A value onto another tag goes into its list, made for it.
        view()->expand(top(2));
        view()->expand(model()->index(0, 0, top(2)));
        const QModelIndex off = model()->index(0, 0, model()->index(0, 0, top(2)));
        std::unique_ptr<QMimeData> value(dragOf(off));
        QVERIFY(dragTo(middleOf(top(0)), value.get()));
        QVERIFY(dropAt(middleOf(top(0)), value.get()));
        QCOMPARE(rows(model()->root()->child(0)), QStringLiteral("Enums"));
        QCOMPARE(rows(model()->root()->child(0)->child(0)), QStringLiteral("Off"));
        QCOMPARE(rows(model()->root()->child(2)->child(0)), QStringLiteral("On"));
        QCOMPARE(m_window->undoStack()->count(), 2);
        QCOMPARE(m_window->undoStack()->text(1), QStringLiteral("Move enum"));
        m_window->undoStack()->undo();
        m_window->undoStack()->undo();
        QCOMPARE(topRows(), QStringLiteral("Power Mode # - Flags"));
        QCOMPARE(rows(model()->root()->child(0)), QString());
    }

    // Between two top-level rows, and below the last one: the view takes the drop, which the
    // root's flags alone would not allow, because the model takes it there.
    void dropBetweenTopLevelRows()
    {
        std::unique_ptr<QMimeData> flags(dragOf(top(4)));
        QVERIFY(dragTo(topEdgeOf(top(1)), flags.get()));
        // The view draws the place as its own drop indicator, a line at the row's top edge.
        const int y = view()->visualRect(top(1)).top();
        const QImage during = view()->viewport()->grab().toImage();
        QDragLeaveEvent leave;
        QCoreApplication::sendEvent(view()->viewport(), &leave);
        const QImage after = view()->viewport()->grab().toImage();
        QVERIFY(during.copy(0, y, during.width(), 1) != after.copy(0, y, after.width(), 1));
        QCOMPARE(during.copy(0, y + 6, during.width(), 1), after.copy(0, y + 6, after.width(), 1));
        QVERIFY(dragTo(topEdgeOf(top(1)), flags.get()));
        QVERIFY(dropAt(topEdgeOf(top(1)), flags.get()));
        QCOMPARE(topRows(), QStringLiteral("Power Flags Mode # -"));

        std::unique_ptr<QMimeData> power(dragOf(top(0)));
        const QRect last = view()->visualRect(top(4));
        const QPoint below(last.center().x(), last.bottom() + 20);
        QVERIFY(!view()->indexAt(below).isValid());
        QVERIFY(dragTo(below, power.get()));
        QVERIFY(dropAt(below, power.get()));
        QCOMPARE(topRows(), QStringLiteral("Flags Mode # - Power"));
        QCOMPARE(m_window->undoStack()->count(), 2);

        // Where the entry is already, nothing is offered.
        std::unique_ptr<QMimeData> mode(dragOf(top(1)));
        QVERIFY(!dragTo(topEdgeOf(top(2)), mode.get()));
        QVERIFY(!dragTo(topEdgeOf(top(1)), mode.get()));
        QVERIFY(dragTo(topEdgeOf(top(3)), mode.get()));
    }

    // Text from another program: onto a cell it sets the cell, between rows nothing takes it.
    void textFromOutside()
    {
        QMimeData text;
        text.setText(QStringLiteral("Renamed"));
        QVERIFY(!dragTo(topEdgeOf(top(1)), &text));
        QVERIFY(!dragTo(QPoint(5, view()->visualRect(top(4)).bottom() + 20), &text));
        QVERIFY(dragTo(middleOf(top(0)), &text));
        QVERIFY(dropAt(middleOf(top(0)), &text));
        QCOMPARE(topRows(), QStringLiteral("Renamed Mode # - Flags"));
        QCOMPARE(m_window->undoStack()->text(0), QStringLiteral("Change name"));
        // Onto a list, no cell takes it.
        view()->expand(top(1));
        QVERIFY(!dragTo(middleOf(model()->index(0, 0, top(1))), &text));
    }
};

QTEST_MAIN(TestMoveEntries)
#include "tst_moveentries.moc"
