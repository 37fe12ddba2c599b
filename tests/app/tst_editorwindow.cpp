// The main window as a user meets it: actions, title, opening, saving with a backup, the
// unsaved-changes question, reloading and the file change banner. Offscreen; modal boxes are
// answered from timers.

#include "editormodel.h"
#include "editorwindow.h"
#include "filechangedwidget.h"
#include "filedialog.h"
#include "item.h"
#include "modal.h"
#include "rowtreeview.h"
#include "savesequence.h"
#include "testfiles.h"
#include "ui_editorwindow.h"
#include "writerxml.h"

#include <QAbstractButton>
#include <QAbstractItemModelTester>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QDir>
#include <QDockWidget>
#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPointer>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTextEdit>
#include <QTimer>
#include <QToolBar>
#include <QUndoStack>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

using namespace ZAT16;

namespace {

using TestFiles::readFile;
using TestFiles::writeFile;

const QByteArray &defs = TestFiles::windowDefinitions;

QByteArray encode(const Item *root)
{
    WriterXml writer;
    return writer.encode(root);
}

QStringList menuTexts(QMenu *menu)
{
    QStringList texts;
    for (QAction *action : menu->actions())
        texts << (action->isSeparator() ? QStringLiteral("|") : action->text());
    return texts;
}

// Types a file name into a file dialog the way a user would, in the file's own directory.
// Failing stand-ins for the file system calls of the save sequence.
int linkFails(const char *, const char *)
{
    errno = EACCES;
    return -1;
}

// A file system without hard links: the sequence falls back to renaming the file.
int linkUnsupported(const char *, const char *)
{
    errno = EPERM;
    return -1;
}

int renameFailsToBackup(const char *from, const char *to)
{
    if (QByteArray(to).endsWith(".bak")) {
        errno = EXDEV;
        return -1;
    }
    return ::rename(from, to);
}

// Refuses only the last rename, of the temporary file into place.
int renameFailsFromTemporary(const char *from, const char *to)
{
    if (QByteArray(from).contains(".tmp") && !QByteArray(from).endsWith(".bak")) {
        errno = EACCES;
        return -1;
    }
    return ::rename(from, to);
}

// A full disk.
ssize_t writeFailsFull(int, const void *, size_t)
{
    errno = ENOSPC;
    return -1;
}

// The text of a box's button without its mnemonic marker.
QString buttonText(const QAbstractButton *button)
{
    return button->text().remove(QLatin1Char('&'));
}

// Clicks the button of `box` with the text `text`.
void clickButton(QMessageBox *box, const QString &text)
{
    for (QAbstractButton *button : box->buttons()) {
        if (buttonText(button) == text)
            button->click();
    }
}

// Answers the next message box with the button that reads `button`, keeping the box's text.
void answerByButton(const QString &button, QString *text)
{
    TestModal::onNextModalOf<QMessageBox>([=](QWidget *w) {
        auto *box = qobject_cast<QMessageBox *>(w);
        if (!box)
            return;
        *text = box->text();
        clickButton(box, button);
    });
}

// Another program that writes `outsideTarget` once, while the save writes its temporary file:
// after the question before the save, before the save's last look at the file.
QString outsideTarget;
bool outsideWritten = false;
ssize_t writeWhileAnotherProgramWrites(int fd, const void *data, size_t size)
{
    if (!outsideWritten) {
        outsideWritten = true;
        QFile file(outsideTarget);
        if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            file.write("<zat16/>\n");
    }
    return ::write(fd, data, size);
}

// Temporary files of saves of `path` left beside it.
QStringList temporaries(const QString &path)
{
    const QFileInfo info(path);
    return info.dir().entryList({ info.fileName() + QStringLiteral(".tmp*") },
                                QDir::Files | QDir::System | QDir::Hidden);
}

} // namespace

class TestEditorWindow : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir *m_dir = nullptr;
    EditorWindow *m_window = nullptr;
    QString m_path;

    QString path(const QString &name) const { return m_dir->filePath(name); }
    Ui_ZAT16EditorWindow *ui() const { return m_window->ui(); }
    EditorModel *model() const { return m_window->model(); }

    // A window on a fresh copy of the test file.
    void openWindow()
    {
        QVERIFY(writeFile(m_path, defs));
        m_window = new EditorWindow;
        m_window->initialize(m_path, QString());
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
    }

    // Saves; true when it succeeded without any box or dialog coming up (one that does is closed).
    bool savesWithoutQuestion()
    {
        bool asked = false;
        TestModal::onNextModal(
            [&](QWidget *w) {
                asked = true;
                w->close();
            },
            nullptr,
            300);
        const bool saved = m_window->onSave();
        return saved && !asked;
    }

    void editSomething()
    {
        const QModelIndex power = model()->index(0, 0);
        QVERIFY(model()->setData(power, QStringLiteral("PowerOn"), Qt::EditRole));
        QVERIFY(!m_window->undoStack()->isClean());
    }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("zatedit-tests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_editorwindow"));
    }

    void init()
    {
        QSettings().clear();
        m_dir = new QTemporaryDir;
        QVERIFY(m_dir->isValid());
        m_path = path(QStringLiteral("defs.zatdef"));
        openWindow();
    }

    void cleanup()
    {
        TestModal::cancelAll();
        if (m_window) {
            m_window->undoStack()->setClean();
            delete m_window;
            m_window = nullptr;
        }
        SaveSequence::operations() = SaveSequence::systemOperations();
        delete m_dir;
        m_dir = nullptr;
    }

    // --- construction ---

    void form()
    {
        QCOMPARE(m_window->objectName(), QStringLiteral("ZAT16EditorWindow"));
        // a first start takes two thirds of the screen, and no less than 800 x 500
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        QCOMPARE(m_window->size(),
                 QSize(std::max(800, screen.width() * 2 / 3), std::max(500, screen.height() * 2 / 3)));
        {
            // the form's widths, until a file is opened and the columns fit it
            EditorWindow fresh;
            QCOMPARE(fresh.ui()->m_view->header()->sectionSize(0), 250);
            QCOMPARE(fresh.ui()->m_view->header()->sectionSize(1), 60);
        }
        QCOMPARE(m_window->undoStack()->undoLimit(), 1000);
        QCOMPARE(m_window->undoDock()->objectName(), QStringLiteral("UndoDock"));
        QCOMPARE(m_window->undoDock()->windowTitle(), QStringLiteral("Undo History"));
        // docked at the right when first shown, away from the menu bar
        QVERIFY(!m_window->undoDock()->isFloating());
        QVERIFY(!m_window->undoDock()->isVisible());
        QCOMPARE(m_window->messageDock()->objectName(), QStringLiteral("MessageDock"));
        QCOMPARE(m_window->messageDock()->windowTitle(), QStringLiteral("Messages"));
        QVERIFY(!m_window->messageDock()->isFloating());
        QVERIFY(!m_window->messageDock()->isVisible());
        QCOMPARE(m_window->messages()->document()->maximumBlockCount(), 1000);
        QVERIFY(ui()->m_wdg_file_changed->isHidden());
        QCOMPARE(m_window->dockWidgetArea(m_window->undoDock()), Qt::RightDockWidgetArea);
        QCOMPARE(m_window->dockWidgetArea(m_window->messageDock()), Qt::BottomDockWidgetArea);
        // the bottom docks span the whole width, under the right one too
        QCOMPARE(m_window->corner(Qt::BottomLeftCorner), Qt::BottomDockWidgetArea);
        QCOMPARE(m_window->corner(Qt::BottomRightCorner), Qt::BottomDockWidgetArea);

        const RowTreeView *view = ui()->m_view;
        QVERIFY(view->acceptDrops());
        QVERIFY(view->tabKeyNavigation());
        QVERIFY(view->dragEnabled());
        QCOMPARE(view->dragDropMode(), QAbstractItemView::DragDrop);
        QCOMPARE(view->defaultDropAction(), Qt::CopyAction);
        QVERIFY(view->alternatingRowColors());
        QCOMPARE(view->selectionMode(), QAbstractItemView::ExtendedSelection);
        QCOMPARE(view->selectionBehavior(), QAbstractItemView::SelectItems);
        QCOMPARE(view->iconSize(), QSize(16, 16));
        QVERIFY(view->rootIsDecorated());
        QVERIFY(view->uniformRowHeights());
        QVERIFY(view->itemsExpandable());
        QVERIFY(!view->allColumnsShowFocus());
        QCOMPARE(ui()->m_wdg_file_changed->minimumHeight(), 16);
    }

    void actions_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("shortcut");
        QTest::addColumn<bool>("hasIcon");
        QTest::newRow("open") << "m_act_open"
                              << "Open"
                              << "Ctrl+O" << true;
        QTest::newRow("save") << "m_act_save"
                              << "Save"
                              << "Ctrl+S" << true;
        QTest::newRow("save as") << "m_act_save_as"
                                 << "Save as..."
                                 << "" << true;
        QTest::newRow("close") << "m_act_close"
                               << "Close"
                               << "Ctrl+Q" << true;
        QTest::newRow("insert before") << "m_act_insert_before"
                                       << "Insert before"
                                       << "Ins" << true;
        QTest::newRow("insert after") << "m_act_insert_after"
                                      << "Insert after"
                                      << "Shift+Ins" << true;
        QTest::newRow("add bits") << "m_act_add_bits"
                                  << "Add bits"
                                  << "Ctrl+B" << true;
        QTest::newRow("add enums") << "m_act_add_enums"
                                   << "Add enums"
                                   << "Ctrl+E" << true;
        QTest::newRow("cut") << "m_act_cut"
                             << "Cut"
                             << "Ctrl+X" << true;
        QTest::newRow("copy") << "m_act_copy"
                              << "Copy"
                              << "Ctrl+C" << true;
        QTest::newRow("paste") << "m_act_paste"
                               << "Paste"
                               << "Ctrl+V" << true;
        QTest::newRow("delete") << "m_act_delete"
                                << "Delete"
                                << "Del" << true;
        QTest::newRow("clear all") << "m_act_new"
                                   << "Clear all"
                                   << "" << true;
        QTest::newRow("view header") << "m_act_view_header"
                                     << "View generated header"
                                     << "" << true;
        QTest::newRow("view lua") << "m_act_view_lua"
                                  << "View generated Lua"
                                  << "" << true;
        QTest::newRow("view cpp") << "m_act_view_cpp"
                                  << "View generated C++ Include File"
                                  << "" << false;
        QTest::newRow("view cpp lut") << "m_act_view_cpp_lut"
                                      << "View generated C++ Lookup Table"
                                      << "" << false;
        QTest::newRow("view cs") << "m_act_view_cs"
                                 << "View generated C#"
                                 << "" << false;
        QTest::newRow("code font") << "m_act_fixed_font"
                                   << "Chose Code Font"
                                   << "" << true;
        QTest::newRow("comment font") << "m_act_comment_font"
                                      << "Chose Comment Font"
                                      << "" << true;
        QTest::newRow("undo") << "m_act_undo"
                              << "Undo"
                              << "Ctrl+Z" << false;
        QTest::newRow("redo") << "m_act_redo"
                              << "Redo"
                              << "Ctrl+Y" << false;
        QTest::newRow("undo history") << "m_act_undo_history"
                                      << "Undo history"
                                      << "" << false;
        // Added to the window's own actions: find, problems, comparison.
        QTest::newRow("find") << "m_act_find"
                              << "Find..."
                              << "Ctrl+F" << true;
        QTest::newRow("find next") << "m_act_find_next"
                                   << "Find next"
                                   << "F3" << false;
        QTest::newRow("find previous") << "m_act_find_previous"
                                       << "Find previous"
                                       << "Shift+F3" << false;
        QTest::newRow("next problem") << "m_act_next_problem"
                                      << "Next problem"
                                      << "F8" << true;
        QTest::newRow("previous problem") << "m_act_previous_problem"
                                          << "Previous problem"
                                          << "Shift+F8" << true;
        QTest::newRow("compare") << "m_act_compare"
                                 << "Compare with file..."
                                 << "" << false;
    }

    void actions()
    {
        QFETCH(QString, name);
        QFETCH(QString, text);
        QFETCH(QString, shortcut);
        QFETCH(bool, hasIcon);
        auto *action = m_window->findChild<QAction *>(name);
        QVERIFY(action);
        QCOMPARE(action->text(), text);
        QCOMPARE(action->shortcut(), QKeySequence(shortcut));
        QCOMPARE(!action->icon().isNull(), hasIcon);
    }

    void sharedIcons()
    {
        QCOMPARE(ui()->m_act_insert_after->icon().pixmap(16).toImage(),
                 ui()->m_act_insert_before->icon().pixmap(16).toImage());
        QCOMPARE(ui()->m_act_comment_font->icon().pixmap(16).toImage(),
                 ui()->m_act_fixed_font->icon().pixmap(16).toImage());
        QCOMPARE(ui()->m_act_open->icon().pixmap(16).toImage(),
                 QIcon(QStringLiteral(":/icons/i16_folder_open.png")).pixmap(16).toImage());
        QCOMPARE(m_window->windowIcon().pixmap(16).toImage(),
                 QIcon(QStringLiteral(":/icons/i16_table_edit.png")).pixmap(16).toImage());
    }

    void menus()
    {
        const QList<QAction *> bar = ui()->m_menubar->actions();
        QCOMPARE(bar.size(), 3);
        QCOMPARE(bar.at(0)->text(), QStringLiteral("&File"));
        QCOMPARE(bar.at(1)->text(), QStringLiteral("&Edit"));
        QCOMPARE(bar.at(2)->text(), QStringLiteral("&View"));
        // Each menu holds its own actions first, then the later additions (find, problems,
        // comparison) after a separator.
        QCOMPARE(menuTexts(ui()->m_menu_file),
                 QStringList(
                     { "Open", "Open &Recent", "|", "Save", "Save as...", "|", "Close", "|", "Compare with file..." }));
        // The stack's undo and redo actions come first; with nothing to undo Qt calls them so.
        QCOMPARE(menuTexts(ui()->m_menu_edit),
                 QStringList({ "Undo",
                               "Redo",
                               "|",
                               "Insert before",
                               "Insert after",
                               "|",
                               "Add bits",
                               "Add enums",
                               "|",
                               "Cut",
                               "Copy",
                               "Paste",
                               "Delete",
                               "|",
                               "Move up",
                               "Move down",
                               "|",
                               "Clear all",
                               "|",
                               "Find...",
                               "Find next",
                               "Find previous" }));
        QCOMPARE(menuTexts(ui()->m_menu_view),
                 QStringList({ "View generated header",
                               "View generated Lua",
                               "View generated C++ Include File",
                               "View generated C++ Lookup Table",
                               "View generated C#",
                               "|",
                               "Undo History",
                               "|",
                               "Toolbar",
                               "|",
                               "Chose Code Font",
                               "Chose Comment Font",
                               "|",
                               "Problems",
                               "Next problem",
                               "Previous problem",
                               "|",
                               "Expand all",
                               "Collapse all" }));
        const QList<QAction *> edit = ui()->m_menu_edit->actions();
        QCOMPARE(edit.at(0)->shortcut(), QKeySequence(QStringLiteral("Ctrl+Z")));
        QCOMPARE(edit.at(1)->shortcut(), QKeySequence(QStringLiteral("Ctrl+Y")));
        QCOMPARE(edit.at(0)->icon().pixmap(16).toImage(),
                 QIcon(QStringLiteral(":/icons/i16_undo.png")).pixmap(16).toImage());
        QCOMPARE(edit.at(1)->icon().pixmap(16).toImage(),
                 QIcon(QStringLiteral(":/icons/i16_redo.png")).pixmap(16).toImage());
        QCOMPARE(ui()->m_menu_view->actions().at(6)->icon().pixmap(16).toImage(),
                 QIcon(QStringLiteral(":/icons/i16_undo_history.png")).pixmap(16).toImage());

        // The undo action's text follows the next command's text.
        editSomething();
        QCOMPARE(edit.at(0)->text(), QStringLiteral("Undo Change name"));
        QVERIFY(edit.at(0)->isEnabled());
    }

    void initiallyDisabled()
    {
        EditorWindow fresh;
        fresh.initialize(QString(), QString());
        for (QAction *action : { fresh.ui()->m_act_delete,
                                 fresh.ui()->m_act_add_enums,
                                 fresh.ui()->m_act_add_bits,
                                 fresh.ui()->m_act_cut,
                                 fresh.ui()->m_act_copy,
                                 fresh.ui()->m_act_paste })
            QVERIFY2(!action->isEnabled(), qPrintable(action->objectName()));
    }

    // --- title ---

    void title()
    {
        QCOMPARE(m_window->windowTitle(), QStringLiteral("defs.zatdef [ZAT16 tag editor]"));
        editSomething();
        QCOMPARE(m_window->windowTitle(), QStringLiteral("defs.zatdef * [ZAT16 tag editor]"));
        m_window->undoStack()->undo();
        QCOMPARE(m_window->windowTitle(), QStringLiteral("defs.zatdef [ZAT16 tag editor]"));
        m_window->undoStack()->redo();
        QCOMPARE(m_window->windowTitle(), QStringLiteral("defs.zatdef * [ZAT16 tag editor]"));
        QVERIFY(m_window->onSave());
        QCOMPARE(m_window->windowTitle(), QStringLiteral("defs.zatdef [ZAT16 tag editor]"));

        EditorWindow unnamed;
        unnamed.initialize(QString(), QString());
        QCOMPARE(unnamed.windowTitle(), QStringLiteral("[ZAT16 tag editor]"));
        EditorWindow named;
        QVERIFY(writeFile(path(QStringLiteral("other.zatdef")), defs));
        named.initialize(path(QStringLiteral("other.zatdef")), QStringLiteral("Shown name"));
        QCOMPARE(named.windowTitle(), QStringLiteral("Shown name [ZAT16 tag editor]"));
    }

    // --- actions on the tree ---

    void insertIntoEmptyTree()
    {
        EditorWindow fresh;
        fresh.initialize(QString(), QString());
        QVERIFY(fresh.ui()->m_act_insert_before->isEnabled());
        QVERIFY(fresh.ui()->m_act_insert_after->isEnabled());
        EditorModel *m = fresh.model();
        QCOMPARE(m->rowCount(), 0);
        fresh.ui()->m_act_insert_before->trigger();
        QCOMPARE(m->rowCount(), 1);
        QCOMPARE(m->index2item(m->index(0, 0))->type, Tag);
        QCOMPARE(fresh.ui()->m_view->currentIndex(), m->index(0, 0));

        EditorWindow second;
        second.initialize(QString(), QString());
        second.ui()->m_act_insert_after->trigger();
        QCOMPARE(second.model()->rowCount(), 1);
        QCOMPARE(second.undoStack()->undoText(), QStringLiteral("Insert tag"));
    }

    void nothingSelectedInNonEmptyTree()
    {
        ui()->m_view->setCurrentIndex(QModelIndex());
        ui()->m_view->clearSelection();
        m_window->updateActions();
        QVERIFY(!ui()->m_act_insert_before->isEnabled());
        QVERIFY(!ui()->m_act_insert_after->isEnabled());
        QVERIFY(!ui()->m_act_delete->isEnabled());
        QVERIFY(!ui()->m_act_paste->isEnabled());

        m_window->setCurrentItem(model()->index(1, 0));
        QVERIFY(ui()->m_act_insert_before->isEnabled());
        QVERIFY(ui()->m_act_delete->isEnabled());
        QVERIFY(ui()->m_act_cut->isEnabled());
        QVERIFY(ui()->m_act_copy->isEnabled());
        QVERIFY(ui()->m_act_paste->isEnabled());
        QVERIFY(ui()->m_act_add_bits->isEnabled());
        QVERIFY(ui()->m_act_add_enums->isEnabled());
    }

    void insertBeforeAndAfterTag()
    {
        m_window->setCurrentItem(model()->index(1, 0)); // Mode
        ui()->m_act_insert_before->trigger();
        QCOMPARE(model()->rowCount(), 6);
        QCOMPARE(ui()->m_view->currentIndex().row(), 1);
        QVERIFY(model()->index2item(model()->index(1, 0))->isNewline());
        QCOMPARE(model()->index2item(model()->index(2, 0))->name, QStringLiteral("Mode"));

        m_window->setCurrentItem(model()->index(2, 0)); // Mode again
        ui()->m_act_insert_after->trigger();
        QCOMPARE(model()->rowCount(), 7);
        QCOMPARE(ui()->m_view->currentIndex().row(), 3);
        QCOMPARE(model()->index2item(model()->index(2, 0))->name, QStringLiteral("Mode"));
        QVERIFY(model()->index2item(model()->index(3, 0))->isNewline());
    }

    void insertIntoList()
    {
        const QModelIndex mode = model()->index(1, 0);
        const QModelIndex enums = model()->index(0, 0, mode);
        QCOMPARE(model()->index2item(enums)->type, Enums);
        m_window->setCurrentItem(enums);
        ui()->m_act_insert_before->trigger();
        QCOMPARE(model()->rowCount(enums), 3);
        QVERIFY(model()->index2item(model()->index(0, 0, enums))->isNewline());
        QCOMPARE(model()->index2item(model()->index(1, 0, enums))->name, QStringLiteral("Off"));
        QCOMPARE(ui()->m_view->currentIndex(), model()->index(0, 0, enums));

        m_window->setCurrentItem(enums);
        ui()->m_act_insert_after->trigger();
        QCOMPARE(model()->rowCount(enums), 4);
        QCOMPARE(model()->index2item(model()->index(2, 0, enums))->name, QStringLiteral("On"));
        QVERIFY(model()->index2item(model()->index(3, 0, enums))->isNewline());
        QCOMPARE(ui()->m_view->currentIndex(), model()->index(3, 0, enums));
        QCOMPARE(model()->rowCount(), 5); // nothing beside the list
    }

    void deleteLastRowLeavesNoCurrentItem()
    {
        const QModelIndex flags = model()->index(4, 0);
        const QModelIndex bits = model()->index(0, 0, flags);
        const QModelIndex ready = model()->index(0, 0, bits);
        m_window->setCurrentItem(ready);
        ui()->m_act_delete->trigger();
        QCOMPARE(model()->rowCount(bits), 0);
        QVERIFY(!ui()->m_view->currentIndex().isValid());
        QCOMPARE(m_window->undoStack()->undoText(), QStringLiteral("Remove bit"));
        QVERIFY(!ui()->m_act_delete->isEnabled());
    }

    void deleteMovesUp()
    {
        m_window->setCurrentItem(model()->index(0, 0));
        ui()->m_act_delete->trigger();
        QCOMPARE(model()->rowCount(), 4);
        QCOMPARE(ui()->m_view->currentIndex(), model()->index(0, 0));
        QCOMPARE(model()->index2item(ui()->m_view->currentIndex())->name, QStringLiteral("Mode"));
    }

    void addLists()
    {
        m_window->setCurrentItem(model()->index(0, 0)); // Power has no lists
        ui()->m_act_add_enums->trigger();
        const QModelIndex power = model()->index(0, 0);
        QCOMPARE(model()->rowCount(power), 1);
        QCOMPARE(ui()->m_view->currentIndex(), model()->index(0, 0, power));
        ui()->m_act_add_bits->trigger();
        QCOMPARE(model()->rowCount(power), 2);
        QCOMPARE(model()->index2item(model()->index(0, 0, power))->type, Bits);
        QCOMPARE(ui()->m_view->currentIndex(), model()->index(0, 0, power));
    }

    void cutCopyPaste()
    {
        m_window->setCurrentItem(model()->index(1, 0)); // Mode
        ui()->m_act_copy->trigger();
        const QMimeData *data = QGuiApplication::clipboard()->mimeData();
        QVERIFY(data);
        QCOMPARE(data->text(), QStringLiteral("Mode 0x1002"));

        m_window->setCurrentItem(model()->index(0, 0)); // Power
        ui()->m_act_paste->trigger();
        QCOMPARE(model()->rowCount(), 6);
        QCOMPARE(model()->index2item(model()->index(0, 0))->name, QStringLiteral("Mode"));
        QCOMPARE(ui()->m_view->currentIndex(), model()->index(0, 0));

        m_window->setCurrentItem(model()->index(1, 0)); // Power
        ui()->m_act_cut->trigger();
        QCOMPARE(model()->rowCount(), 5);
        QCOMPARE(QGuiApplication::clipboard()->mimeData()->text(), QStringLiteral("Power 0x2001"));
        QCOMPARE(m_window->undoStack()->undoText(), QStringLiteral("Cut tag"));

        // An enumeration value pasted onto a tag goes into that tag's list, which is expanded.
        const QModelIndex mode = model()->index(1, 0);
        const QModelIndex off = model()->index(0, 0, model()->index(0, 0, mode));
        m_window->setCurrentItem(off);
        ui()->m_act_copy->trigger();
        const QModelIndex flags = model()->index(3, 0);
        m_window->setCurrentItem(flags);
        ui()->m_act_paste->trigger();
        const QModelIndex pasted = ui()->m_view->currentIndex();
        QVERIFY(pasted.isValid());
        QCOMPARE(model()->index2item(pasted)->name, QStringLiteral("Off"));
        QCOMPARE(model()->index2item(pasted.parent())->type, Enums);
    }

    void clearAllCanBeUndone()
    {
        const QByteArray before = encode(model()->root());
        ui()->m_act_new->trigger();
        QCOMPARE(model()->rowCount(), 0);
        QCOMPARE(m_window->fileName(), m_path);
        QCOMPARE(m_window->undoStack()->undoText(), QStringLiteral("New"));
        m_window->undoStack()->undo();
        QCOMPARE(encode(model()->root()), before);
    }

    void undoSelectsAgain()
    {
        const QModelIndex mode = model()->index(1, 0);
        QVERIFY(model()->setData(model()->index(1, 2), QStringLiteral("note"), Qt::EditRole));
        m_window->setCurrentItem(model()->index(0, 0));
        m_window->undoStack()->undo();
        QCOMPARE(ui()->m_view->currentIndex().row(), mode.row());
        QCOMPARE(ui()->m_view->currentIndex().parent(), QModelIndex());
    }

    void expandingTopLevelExpandsChildren()
    {
        const QModelIndex mode = model()->index(1, 0);
        const QModelIndex enums = model()->index(0, 0, mode);
        QVERIFY(!ui()->m_view->isExpanded(enums));
        ui()->m_view->expand(mode);
        QVERIFY(ui()->m_view->isExpanded(enums));
        ui()->m_view->collapse(enums);
        ui()->m_view->expand(enums); // deeper expansions do nothing more
        QVERIFY(ui()->m_view->isExpanded(enums));
    }

    // A burst of expansions in one turn of the event loop (as expandAll() makes them, each tag
    // before its children are laid out): the first tag's lists open at once, the others' when
    // the loop is idle; a tag removed in between is passed over.
    void expandingInABurst()
    {
        const QModelIndex mode = model()->index(1, 0);
        const QModelIndex flags = model()->index(4, 0);
        const QModelIndex enums = model()->index(0, 0, mode);
        const QModelIndex bits = model()->index(0, 0, flags);
        ui()->m_view->expand(mode);
        ui()->m_view->expand(flags);
        QVERIFY(ui()->m_view->isExpanded(enums));
        QVERIFY(!ui()->m_view->isExpanded(bits));
        QTRY_VERIFY(ui()->m_view->isExpanded(bits));

        ui()->m_view->collapseAll();
        ui()->m_view->expand(mode);
        ui()->m_view->expand(flags);
        ui()->m_view->setCurrentIndex(flags);
        m_window->onDelete();
        QCOMPARE(model()->rowCount(), 4);
        QCoreApplication::processEvents();
        QVERIFY(ui()->m_view->isExpanded(model()->index(0, 0, model()->index(1, 0))));

        // expandAll() opens every list, the burst adding nothing wrong.
        m_window->undoStack()->undo();
        ui()->m_view->collapseAll();
        ui()->m_view->expandAll();
        QCoreApplication::processEvents();
        for (int row = 0; row < model()->rowCount(); ++row) {
            const QModelIndex tag = model()->index(row, 0);
            for (int list = 0; list < model()->rowCount(tag); ++list)
                QVERIFY(ui()->m_view->isExpanded(model()->index(list, 0, tag)));
        }
    }

    void doubleClickOpensNoDialogForLists()
    {
        const QModelIndex mode = model()->index(1, 0);
        const QModelIndex enums = model()->index(0, 0, mode);
        const QModelIndex comment = model()->index(2, 0);
        const QModelIndex blank = model()->index(3, 0);
        QVERIFY(model()->index2item(comment)->isComment());
        QVERIFY(model()->index2item(blank)->isNewline());
        for (const QModelIndex &index : { enums, comment, blank }) {
            bool opened = false;
            TestModal::onNextModal(
                [&](QWidget *w) {
                    opened = true;
                    w->close();
                },
                nullptr,
                300);
            m_window->onDoubleClicked(index);
            QTest::qWait(400);
            QVERIFY(!opened);
        }
    }

    void doubleClickOpensDialogForTag()
    {
        bool opened = false;
        QString title;
        TestModal::onNextModal([&](QWidget *w) {
            opened = true;
            title = w->windowTitle();
            w->close();
        });
        m_window->onDoubleClicked(model()->index(0, 0));
        QVERIFY(opened);
        QCOMPARE(title, QStringLiteral("Edit item"));
    }

    void doubleClickLeavesNoInlineEditor_data()
    {
        QTest::addColumn<bool>("ok");
        QTest::newRow("Ok") << true;
        QTest::newRow("Cancel") << false;
    }

    void doubleClickLeavesNoInlineEditor()
    {
        QFETCH(bool, ok);
        RowTreeView *view = ui()->m_view;
        const QModelIndex power = model()->index(0, 0);
        const QString name = power.data().toString();
        QVERIFY(!name.isEmpty());
        bool opened = false;
        TestModal::onNextModal([&](QWidget *w) {
            // a dialog without buttons is closed, so that the test fails instead of waiting
            auto *box = w->findChild<QDialogButtonBox *>();
            opened = box != nullptr;
            if (box)
                box->button(ok ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel)->click();
            else
                w->close();
        });
        const QPoint at = view->visualRect(power).center();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, at);
        QVERIFY(opened);
        QCoreApplication::processEvents();
        QVERIFY(!view->indexWidget(power));
        QVERIFY(!view->findChild<QLineEdit *>());
        // The next key press goes to the tree, not into a name editor.
        QTest::keyClicks(view, QStringLiteral("x"));
        QCoreApplication::processEvents();
        QCOMPARE(model()->index(0, 0).data().toString(), name);
        QCOMPARE(m_window->undoStack()->count(), 0);
        // F2 still edits in place.
        view->setCurrentIndex(power);
        QTest::keyClick(view, Qt::Key_F2);
        QVERIFY(view->indexWidget(power));
    }

    void applyItemIsUndoable()
    {
        Item *power = model()->index2item(model()->index(0, 0));
        ItemData data = *power;
        data.comment = QStringLiteral("changed");
        data.secure = true;
        m_window->onApplyItem(power, data);
        QCOMPARE(m_window->undoStack()->undoText(), QStringLiteral("Change item"));
        QCOMPARE(power->comment, QStringLiteral("changed"));
        m_window->undoStack()->undo();
        QVERIFY(power->comment.isEmpty());
        QVERIFY(!power->secure);
    }

    // --- messages ---

    void messagesAndErrors()
    {
        m_window->message(QStringLiteral("Unexpected element <foo>."));
        QVERIFY(m_window->messageDock()->isVisible());
        QVERIFY(m_window->messages()->toPlainText().endsWith(QStringLiteral("Unexpected element <foo>.")));

        QString boxText;
        QString boxTitle;
        TestModal::onNextModal([&](QWidget *w) {
            auto *box = qobject_cast<QMessageBox *>(w);
            QVERIFY(box);
            boxText = box->text();
            boxTitle = box->windowTitle();
            QCOMPARE(box->icon(), QMessageBox::Warning);
            box->button(QMessageBox::Ok)->click();
        });
        m_window->error(QStringLiteral("Something failed"));
        QCOMPARE(boxText, QStringLiteral("Something failed"));
        QCOMPARE(boxTitle, m_window->windowTitle());
        QVERIFY(m_window->messages()->toPlainText().endsWith(QStringLiteral("Something failed")));
    }

    void warningsGoToMessages()
    {
        const QString warn = path(QStringLiteral("warn.zatdef"));
        QVERIFY(writeFile(warn, "<zat16>\n  <frob/>\n  <tag name=\"A\" id=\"0x1\"/>\n</zat16>\n"));
        std::unique_ptr<Item> root(m_window->loadDefinitionFile(warn));
        QVERIFY(root);
        QVERIFY(m_window->messageDock()->isVisible());
        QVERIFY(m_window->messages()->toPlainText().contains(
            QStringLiteral("Warning: ") + warn + QStringLiteral(", Line 2, Column 9:\n  Unexpected element <frob>.")));
    }

    void loadFailureShowsCriticalBox()
    {
        const QString bad = path(QStringLiteral("bad.zatdef"));
        QVERIFY(writeFile(bad, "<zat16>\n  <tag name=\"A\" id=\"0x10000\"/>\n</zat16>\n"));
        QString text;
        TestModal::onNextModal([&](QWidget *w) {
            auto *box = qobject_cast<QMessageBox *>(w);
            QVERIFY(box);
            text = box->text();
            QCOMPARE(box->icon(), QMessageBox::Critical);
            QCOMPARE(box->windowTitle(), m_window->windowTitle());
            QVERIFY(box->button(QMessageBox::Close));
            box->button(QMessageBox::Close)->click();
        });
        QVERIFY(!m_window->loadDefinitionFile(bad));
        QCOMPARE(text,
                 QStringLiteral("Error: ") + bad
                     + QStringLiteral(", Line 2, Column 30:\n  (EndElement) Tag out of range"));
    }

    // --- saving ---

    void firstSaveCreatesOnlyTheFile()
    {
        const QString target = path(QStringLiteral("new.zatdef"));
        QSignalSpy saved(m_window, &EditorWindow::saved);
        QVERIFY(m_window->save(target));
        QCOMPARE(readFile(target), defs);
        QVERIFY(!QFile::exists(target + QStringLiteral(".bak")));
        QVERIFY(!QFile::exists(target + QStringLiteral(".tmp")));
        QCOMPARE(saved.count(), 1);
        QCOMPARE(saved.at(0).at(1).toString(), target);
        QCOMPARE(m_window->fileName(), target);
    }

    void secondSaveKeepsOneBackup()
    {
        editSomething();
        QVERIFY(m_window->onSave());
        const QByteArray first = readFile(m_path);
        QVERIFY(first.contains("PowerOn"));
        QCOMPARE(readFile(m_path + QStringLiteral(".bak")), defs);
        QVERIFY(m_window->undoStack()->isClean());

        QVERIFY(model()->setData(model()->index(0, 0), QStringLiteral("PowerOff"), Qt::EditRole));
        QVERIFY(m_window->onSave());
        QVERIFY(readFile(m_path).contains("PowerOff"));
        QCOMPARE(readFile(m_path + QStringLiteral(".bak")), first);
        QDir dir(m_dir->path());
        QCOMPARE(dir.entryList(QDir::Files, QDir::Name),
                 QStringList({ QStringLiteral("defs.zatdef"), QStringLiteral("defs.zatdef.bak") }));
    }

    void saveFailsWhenTheDiskIsFull()
    {
        editSomething();
        QVERIFY(writeFile(m_path + QStringLiteral(".bak"), "backup before"));
        SaveSequence::operations().write = writeFailsFull;
        QString text;
        TestModal::answerMessageBox(QMessageBox::Ok, &text);
        QVERIFY(!m_window->onSave());
        // The file and the system's reason, in the box and in the Messages dock.
        const QString expected
            = QStringLiteral("Error writing ") + m_path + QStringLiteral(":\n  No space left on device");
        QCOMPARE(text, expected);
        QVERIFY(m_window->messages()->toPlainText().endsWith(expected));
        QCOMPARE(readFile(m_path), defs);
        QCOMPARE(readFile(m_path + QStringLiteral(".bak")), QByteArray("backup before"));
        QCOMPARE(temporaries(m_path), QStringList());
        QVERIFY(!m_window->undoStack()->isClean());
    }

    void saveFailsWhenBackupCannotBeDeleted()
    {
        editSomething();
        QVERIFY(QDir().mkpath(m_path + QStringLiteral(".bak/inside")));
        QString text;
        TestModal::answerMessageBox(QMessageBox::Ok, &text);
        QVERIFY(!m_window->onSave());
        QCOMPARE(text,
                 QStringLiteral("Could not delete old backup ") + m_path + QStringLiteral(".bak: ")
                     + QString::fromLocal8Bit(std::strerror(EISDIR)));
        QCOMPARE(readFile(m_path), defs);
        QCOMPARE(temporaries(m_path), QStringList());
        QVERIFY(!m_window->undoStack()->isClean());
    }

    void saveFailsWhenFileCannotBecomeBackup()
    {
        editSomething();
        QVERIFY(writeFile(m_path + QStringLiteral(".bak"), "old backup"));
        SaveSequence::operations().link = linkFails;
        QString text;
        TestModal::answerMessageBox(QMessageBox::Ok, &text);
        QVERIFY(!m_window->onSave());
        QCOMPARE(text,
                 QStringLiteral("Could not rename ") + m_path + QStringLiteral(" to ") + m_path
                     + QStringLiteral(".bak: ") + QString::fromLocal8Bit(std::strerror(EACCES)));
        QCOMPARE(readFile(m_path), defs);
        QCOMPARE(readFile(m_path + QStringLiteral(".bak")), QByteArray("old backup"));
        QCOMPARE(temporaries(m_path), QStringList());
        QVERIFY(!m_window->undoStack()->isClean());
    }

    void saveWithoutHardLinksRenames()
    {
        editSomething();
        SaveSequence::operations().link = linkUnsupported;
        QVERIFY(m_window->onSave());
        QCOMPARE(readFile(m_path + QStringLiteral(".bak")), defs);
        QVERIFY(readFile(m_path).contains("PowerOn"));
        QCOMPARE(temporaries(m_path), QStringList());

        // Without hard links the backup is a copy; where it cannot take the backup's name, that
        // is what the message names, and the old backup stays.
        QVERIFY(model()->setData(model()->index(0, 0), QStringLiteral("PowerOff"), Qt::EditRole));
        const QByteArray saved = readFile(m_path);
        SaveSequence::operations().rename = renameFailsToBackup;
        QString text;
        TestModal::answerMessageBox(QMessageBox::Ok, &text);
        QVERIFY(!m_window->onSave());
        QCOMPARE(text,
                 QStringLiteral("Could not copy ") + m_path + QStringLiteral(" to ") + m_path + QStringLiteral(".bak: ")
                     + QString::fromLocal8Bit(std::strerror(EXDEV)));
        QCOMPARE(readFile(m_path), saved);
        QCOMPARE(readFile(m_path + QStringLiteral(".bak")), defs);
        QCOMPARE(temporaries(m_path), QStringList());
    }

    void saveFailsWhenTemporaryCannotBeRenamed()
    {
        editSomething();
        SaveSequence::operations().rename = renameFailsFromTemporary;
        QString text;
        TestModal::answerMessageBox(QMessageBox::Ok, &text);
        QVERIFY(!m_window->onSave());
        QVERIFY2(text.startsWith(QStringLiteral("Could not rename ") + m_path + QStringLiteral(".tmp")),
                 qPrintable(text));
        QVERIFY(text.endsWith(QStringLiteral(" to ") + m_path + QStringLiteral(": ")
                              + QString::fromLocal8Bit(std::strerror(EACCES))));
        // The old file became the backup by a link, so its name still holds it.
        QCOMPARE(readFile(m_path), defs);
        QCOMPARE(readFile(m_path + QStringLiteral(".bak")), defs);
        QCOMPARE(temporaries(m_path), QStringList());
        QVERIFY(!m_window->undoStack()->isClean());
    }

    // A name that the reader refuses is not saved over the file.
    void saveRefusesWhatWouldNotLoadAgain()
    {
        ItemData data = *model()->index2item(model()->index(0, 0));
        data.name = QStringLiteral("Tag");
        m_window->onApplyItem(model()->index2item(model()->index(0, 0)), data);
        QString text;
        TestModal::answerMessageBox(QMessageBox::Ok, &text);
        QVERIFY(!m_window->onSave());
        QCOMPARE(text,
                 QStringLiteral("The file %1 was not saved: the tag \"Tag\" would not load again (The name \"Tag\" is "
                                "reserved.).")
                     .arg(m_path));
        QCOMPARE(readFile(m_path), defs);
        QVERIFY(!m_window->undoStack()->isClean());
    }

    // Saving through a symbolic link saves its target; a private file stays private.
    void saveThroughLinkKeepsLinkAndMode()
    {
        const QString target = path(QStringLiteral("real.zatdef"));
        const QString link = path(QStringLiteral("link.zatdef"));
        QVERIFY(writeFile(target, defs));
        QCOMPARE(::chmod(QFile::encodeName(target).constData(), 0600), 0);
        QVERIFY(QFile::link(target, link));
        delete m_window;
        m_window = new EditorWindow;
        m_window->initialize(link, QString());
        editSomething();
        QVERIFY(m_window->onSave());
        QVERIFY(QFileInfo(link).isSymLink());
        QVERIFY(readFile(target).contains("PowerOn"));
        QCOMPARE(readFile(target + QStringLiteral(".bak")), defs);
        QCOMPARE(QFileInfo(target).permissions(),
                 QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
    }

    // Without a file name, Save asks where to save instead of writing anything anywhere.
    void saveWithoutFileNameAsksForOne()
    {
        delete m_window;
        m_window = new EditorWindow;
        m_window->initialize(QString(), QString());
        QVERIFY(m_window->fileName().isEmpty());
        QVERIFY(model()->insertRow(0, QModelIndex()));
        const QString cwd = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_dir->path()));
        QVERIFY(writeFile(path(QStringLiteral(".bak")), "someone's file named .bak"));
        QString caption;
        TestModal::onNextModal([&](QWidget *w) {
            caption = w->windowTitle();
            qobject_cast<QDialog *>(w)->reject();
        });
        const bool saved = m_window->onSave();
        QDir::setCurrent(cwd);
        QVERIFY(!saved);
        QCOMPARE(caption, QStringLiteral("Save ZAT16 definitions"));
        QCOMPARE(readFile(path(QStringLiteral(".bak"))), QByteArray("someone's file named .bak"));
        QVERIFY(!QFileInfo::exists(path(QStringLiteral(".tmp"))));
        QVERIFY(m_window->messages()->toPlainText().trimmed().isEmpty());

        // With a name chosen, it is saved there.
        const QString target = path(QStringLiteral("chosen.zatdef"));
        TestModal::onNextModal([&](QWidget *w) {
            chooseFile(qobject_cast<QFileDialog *>(w), target);
            qobject_cast<QDialog *>(w)->accept();
        });
        QVERIFY(m_window->onSave());
        QCOMPARE(m_window->fileName(), target);
        QVERIFY(QFileInfo::exists(target));
    }

    void savedFileIsAcceptedByXmllint()
    {
        editSomething();
        QVERIFY(m_window->onSave());
        if (QStandardPaths::findExecutable(QStringLiteral("xmllint")).isEmpty())
            QSKIP("xmllint is not installed");
        QProcess lint;
        lint.start(QStringLiteral("xmllint"), { QStringLiteral("--noout"), m_path });
        QVERIFY(lint.waitForFinished());
        QCOMPARE(lint.exitCode(), 0);
    }

    // --- the unsaved-changes question ---

    void canDiscardWhenClean() { QVERIFY(m_window->canDiscard()); }

    void canDiscardAnswers_data()
    {
        QTest::addColumn<int>("button");
        QTest::addColumn<bool>("result");
        QTest::addColumn<bool>("saved");
        QTest::newRow("save") << int(QMessageBox::Save) << true << true;
        QTest::newRow("discard") << int(QMessageBox::Discard) << true << false;
        QTest::newRow("cancel") << int(QMessageBox::Cancel) << false << false;
    }

    void canDiscardAnswers()
    {
        QFETCH(int, button);
        QFETCH(bool, result);
        QFETCH(bool, saved);
        editSomething();
        QString text;
        QString title;
        TestModal::onNextModal([&](QWidget *w) {
            auto *box = qobject_cast<QMessageBox *>(w);
            QVERIFY(box);
            text = box->text();
            title = box->windowTitle();
            QCOMPARE(box->defaultButton(), box->button(QMessageBox::Cancel));
            QVERIFY(box->button(QMessageBox::Save));
            QVERIFY(box->button(QMessageBox::Discard));
            box->button(QMessageBox::StandardButton(button))->click();
        });
        QCOMPARE(m_window->canDiscard(), result);
        QCOMPARE(text, QStringLiteral("There are unsaved changes. What do you want to do?"));
        QCOMPARE(title, QStringLiteral("defs.zatdef * [ZAT16 tag editor]"));
        QCOMPARE(readFile(m_path).contains("PowerOn"), saved);
        QCOMPARE(m_window->undoStack()->isClean(), saved);
    }

    void closeWithFailingSaveStaysOpen()
    {
        editSomething();
        SaveSequence::operations().write = writeFailsFull;
        QString warning;
        TestModal::answerMessageBox(QMessageBox::Save, nullptr, [&]() {
            TestModal::answerMessageBox(QMessageBox::Ok, &warning);
        });
        QVERIFY(!m_window->close());
        QVERIFY(m_window->isVisible());
        QCOMPARE(warning, QStringLiteral("Error writing ") + m_path + QStringLiteral(":\n  No space left on device"));
        // The layout was stored before asking.
        QSettings settings;
        QVERIFY(!settings.value(QStringLiteral("ZAT16Editor/Geometry")).toByteArray().isEmpty());
        QVERIFY(!settings.value(QStringLiteral("ZAT16Editor/State")).toByteArray().isEmpty());
        QVERIFY(!settings.value(QStringLiteral("ZAT16Editor/TreeHeader")).toByteArray().isEmpty());
    }

    void closeWithCancelStaysOpenAndDiscardCloses()
    {
        editSomething();
        TestModal::answerMessageBox(QMessageBox::Cancel);
        QVERIFY(!m_window->close());
        QVERIFY(m_window->isVisible());
        TestModal::answerMessageBox(QMessageBox::Discard);
        QVERIFY(m_window->close());
        QVERIFY(!m_window->isVisible());
    }

    void openWithFailingSaveKeepsDocument()
    {
        editSomething();
        const QByteArray before = encode(model()->root());
        SaveSequence::operations().write = writeFailsFull;
        bool dialogShown = false;
        TestModal::answerMessageBox(QMessageBox::Save, nullptr, [&]() {
            TestModal::answerMessageBox(QMessageBox::Ok, nullptr, [&]() {
                TestModal::onNextModal(
                    [&](QWidget *w) {
                        dialogShown = true;
                        w->close();
                    },
                    nullptr,
                    500);
            });
        });
        m_window->onOpen();
        QTest::qWait(600);
        QVERIFY(!dialogShown);
        QCOMPARE(encode(model()->root()), before);
        QCOMPARE(m_window->fileName(), m_path);
    }

    void cancelOpenAfterDiscardKeepsDocument()
    {
        editSomething();
        const QByteArray before = encode(model()->root());
        bool dialogShown = false;
        TestModal::answerMessageBox(QMessageBox::Discard, nullptr, [&]() {
            TestModal::onNextModal([&](QWidget *w) {
                dialogShown = qobject_cast<QFileDialog *>(w) != nullptr;
                qobject_cast<QDialog *>(w)->reject();
            });
        });
        m_window->onOpen();
        QVERIFY(dialogShown);
        QCOMPARE(encode(model()->root()), before);
        QVERIFY(!m_window->undoStack()->isClean());
        QCOMPARE(m_window->fileName(), m_path);
    }

    void openChoosesFileAndStoresPath()
    {
        const QString other = path(QStringLiteral("other.zatdef"));
        QVERIFY(writeFile(other, "<zat16>\n  <tag name=\"Only\" id=\"0x2002\"/>\n</zat16>\n"));
        QSignalSpy opened(m_window, &EditorWindow::opened);
        QString caption;
        TestModal::onNextModal([&](QWidget *w) {
            auto *dialog = qobject_cast<QFileDialog *>(w);
            QVERIFY(dialog);
            caption = dialog->windowTitle();
            QCOMPARE(dialog->nameFilters(),
                     QStringList(
                         { QStringLiteral("ZAT16 Definition Files (*.zatdef)"), QStringLiteral("All Files (*)") }));
            chooseFile(dialog, other);
            static_cast<QDialog *>(dialog)->accept();
        });
        m_window->onOpen();
        QCOMPARE(caption, QStringLiteral("Open ZAT16 definitions"));
        QCOMPARE(opened.count(), 1);
        QCOMPARE(m_window->fileName(), other);
        QCOMPARE(m_window->windowTitle(), QStringLiteral("other.zatdef [ZAT16 tag editor]"));
        QCOMPARE(model()->rowCount(), 1);
        QCOMPARE(ui()->m_wdg_file_changed->fileName(), other);
        QCOMPARE(QSettings().value(QStringLiteral("ZAT16Editor/LastOpenPath")).toString(), other);

        // The next start reopens it.
        EditorWindow next;
        next.initialize(QString(), QString());
        QCOMPARE(next.fileName(), other);
        QCOMPARE(next.model()->rowCount(), 1);
    }

    void failedOpenIsStillRemembered()
    {
        const QString bad = path(QStringLiteral("broken.zatdef"));
        QVERIFY(writeFile(bad, "not xml at all"));
        const QByteArray before = encode(model()->root());
        TestModal::onNextModal([&](QWidget *w) {
            auto *dialog = qobject_cast<QFileDialog *>(w);
            QVERIFY(dialog);
            chooseFile(dialog, bad);
            TestModal::answerMessageBox(QMessageBox::Close);
            static_cast<QDialog *>(dialog)->accept();
        });
        m_window->onOpen();
        QCOMPARE(QSettings().value(QStringLiteral("ZAT16Editor/LastOpenPath")).toString(), bad);
        QCOMPARE(encode(model()->root()), before);
        QCOMPARE(m_window->fileName(), m_path);
    }

    void saveAsStoresPathAndKeepsWatch()
    {
        const QString target = path(QStringLiteral("copy.zatdef"));
        editSomething();
        QString caption;
        TestModal::onNextModal([&](QWidget *w) {
            auto *dialog = qobject_cast<QFileDialog *>(w);
            QVERIFY(dialog);
            caption = dialog->windowTitle();
            chooseFile(dialog, target);
            static_cast<QDialog *>(dialog)->accept();
        });
        m_window->onSaveAs();
        QCOMPARE(caption, QStringLiteral("Save ZAT16 definitions"));
        QVERIFY(readFile(target).contains("PowerOn"));
        QCOMPARE(m_window->fileName(), target);
        QCOMPARE(m_window->windowTitle(), QStringLiteral("copy.zatdef [ZAT16 tag editor]"));
        QCOMPARE(QSettings().value(QStringLiteral("ZAT16Editor/LastSaveAsPath")).toString(), target);
        // The banner stays on the file that was watched before.
        QCOMPARE(ui()->m_wdg_file_changed->fileName(), m_path);
    }

    // --- reload and the watcher ---

    void reloadIsUndoable()
    {
        const QByteArray before = encode(model()->root());
        const QByteArray changed = "<?xml version=\"1.0\" encoding=\"UTF-8\"?> <!-- -*- nxml -*- -->\n"
                                   "<zat16>\n"
                                   "  <tag name=\"Other\" id=\"0x3001\"/>\n"
                                   "</zat16>\n";
        QVERIFY(writeFile(m_path, changed));
        QTRY_VERIFY(ui()->m_wdg_file_changed->isVisible());
        QVERIFY(ui()->m_wdg_file_changed->findChild<QLabel *>(QStringLiteral("m_lbl_message"))
                    ->text()
                    .contains(QStringLiteral("defs.zatdef")));
        QSignalSpy opened(m_window, &EditorWindow::opened);
        ui()->m_wdg_file_changed->findChild<QPushButton *>(QStringLiteral("m_pb_reload"))->click();
        QCOMPARE(opened.count(), 1);
        QCOMPARE(encode(model()->root()), changed);
        QVERIFY(m_window->undoStack()->isClean());
        QCOMPARE(m_window->undoStack()->undoText(), QStringLiteral("Replace data"));
        m_window->undoStack()->undo();
        QCOMPARE(encode(model()->root()), before);
        QVERIFY(!m_window->undoStack()->isClean());
        QCOMPARE(m_window->windowTitle(), QStringLiteral("defs.zatdef * [ZAT16 tag editor]"));
    }

    void failedReloadShowsBannerAgain()
    {
        QVERIFY(writeFile(m_path, "<zat16><tag id=\"0x10000\"/></zat16>"));
        TestModal::answerMessageBox(QMessageBox::Close);
        m_window->onReloadClicked();
        QVERIFY(ui()->m_wdg_file_changed->isVisible());
        QCOMPARE(QString::fromUtf8(encode(model()->root())), QString::fromUtf8(defs));
    }

    void ownSaveIsNotAnOutsideChange()
    {
        editSomething();
        QVERIFY(m_window->onSave());
        QTest::qWait(1500);
        QVERIFY(!ui()->m_wdg_file_changed->isVisible());
        QCOMPARE(ui()->m_wdg_file_changed->fileName(), m_path);
    }

    // Another program changed the file: a save asks before it overwrites that.
    void saveAfterOutsideChangeAsks_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<bool>("saved");
        QTest::newRow("cancel") << "Cancel" << false;
        QTest::newRow("overwrite") << "Overwrite" << true;
        QTest::newRow("reload") << "Reload" << false;
    }

    void saveAfterOutsideChangeAsks()
    {
        QFETCH(QString, answer);
        QFETCH(bool, saved);
        const QByteArray outside = "<zat16>\n  <tag name=\"FromGit\" id=\"0x3001\"/>\n</zat16>\n";
        editSomething();
        QVERIFY(writeFile(m_path, outside));
        QString text;
        QStringList buttons;
        QString defaultButton;
        TestModal::onNextModal([&](QWidget *w) {
            auto *box = qobject_cast<QMessageBox *>(w);
            QVERIFY(box);
            text = box->text();
            for (QAbstractButton *button : box->buttons())
                buttons << buttonText(button);
            defaultButton = buttonText(box->defaultButton());
            clickButton(box, answer);
        });
        QCOMPARE(m_window->onSave(), saved);
        QCOMPARE(text, m_path + QStringLiteral(" was changed by another program since it was opened"));
        buttons.sort();
        QCOMPARE(buttons,
                 QStringList({ QStringLiteral("Cancel"), QStringLiteral("Overwrite"), QStringLiteral("Reload") }));
        QCOMPARE(defaultButton, QStringLiteral("Cancel"));
        if (saved) {
            QVERIFY(readFile(m_path).contains("PowerOn"));
            QCOMPARE(readFile(m_path + QStringLiteral(".bak")), outside);
        } else {
            QCOMPARE(readFile(m_path), outside);
        }
        if (answer == QLatin1String("Reload")) {
            QVERIFY(encode(model()->root()).contains("FromGit"));
            // The edits made before are one undo away; the document stays unsaved, so that
            // closing asks before they are lost. Saving them now asks nothing more.
            QVERIFY(!m_window->undoStack()->isClean());
            QCOMPARE(m_window->windowTitle(), QStringLiteral("defs.zatdef * [ZAT16 tag editor]"));
            m_window->undoStack()->undo();
            QVERIFY(encode(model()->root()).contains("PowerOn"));
            QVERIFY(m_window->onSave());
            QVERIFY(readFile(m_path).contains("PowerOn"));
        }
    }

    // A change in the moment between the question and the save's last look at the file is asked
    // about too; then the save is done again.
    void changeDuringTheSaveAsks()
    {
        editSomething();
        outsideTarget = m_path;
        outsideWritten = false;
        SaveSequence::operations().write = writeWhileAnotherProgramWrites;
        QString text;
        answerByButton(QStringLiteral("Overwrite"), &text);
        QVERIFY(m_window->onSave());
        QCOMPARE(text, m_path + QStringLiteral(" was changed by another program since it was opened"));
        QVERIFY(readFile(m_path).contains("PowerOn"));
        QCOMPARE(readFile(m_path + QStringLiteral(".bak")), QByteArray("<zat16/>\n"));
        QVERIFY(m_window->undoStack()->isClean());
    }

    // The document's file spelled another way (through a link, say) is still the document's file.
    void otherSpellingOfTheFileAsksToo()
    {
        const QString link = path(QStringLiteral("link.zatdef"));
        QVERIFY(QFile::link(m_path, link));
        editSomething();
        QVERIFY(writeFile(m_path, defs + "\n"));
        QString text;
        TestModal::answerMessageBox(QMessageBox::Cancel, &text);
        QVERIFY(!m_window->save(link));
        QCOMPARE(text, link + QStringLiteral(" was changed by another program since it was opened"));
        QCOMPARE(readFile(m_path), defs + "\n");
    }

    // A file that was only touched, or written again with the same content, is no change.
    void saveAfterTouchAsksNothing()
    {
        editSomething();
        QVERIFY(writeFile(m_path, defs));
        QVERIFY(savesWithoutQuestion());
        QVERIFY(readFile(m_path).contains("PowerOn"));
    }

    // After Ignore the editor still knows the file changed: the next save asks, and watching
    // resumes after it, so that a later change is reported again.
    void ignoreThenSaveAsksAndWatchesAgain()
    {
        QVERIFY(writeFile(m_path, defs + "\n"));
        QTRY_VERIFY(ui()->m_wdg_file_changed->isVisible());
        ui()->m_wdg_file_changed->findChild<QPushButton *>(QStringLiteral("m_pb_ignore"))->click();
        QVERIFY(!ui()->m_wdg_file_changed->isVisible());
        QVERIFY(ui()->m_wdg_file_changed->fileName().isEmpty());
        editSomething();
        QString text;
        answerByButton(QStringLiteral("Overwrite"), &text);
        QVERIFY(m_window->onSave());
        QCOMPARE(text, m_path + QStringLiteral(" was changed by another program since it was opened"));
        QCOMPARE(ui()->m_wdg_file_changed->fileName(), m_path);
        QTest::qWait(300);
        QVERIFY(writeFile(m_path, defs));
        QTRY_VERIFY(ui()->m_wdg_file_changed->isVisible());
    }

    // Reading stopped early at stray text: the banner says so, and a save over the file asks
    // first, with No as the default.
    void incompleteReadIsShownAndSaveAsks()
    {
        const QByteArray stray
            = "<zat16>\n  <tag name=\"A\" id=\"0x1001\"/>\n  x\n  <tag name=\"B\" id=\"0x1002\"/>\n</zat16>\n";
        QVERIFY(writeFile(m_path, stray));
        delete m_window;
        m_window = new EditorWindow;
        m_window->initialize(m_path, QString());
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
        QVERIFY(ui()->m_wdg_file_changed->isVisible());
        QCOMPARE(ui()->m_wdg_file_changed->findChild<QLabel *>(QStringLiteral("m_lbl_message"))->text(),
                 QStringLiteral("Only lines 1 to 3 were read: the rest of the file is not in the editor"));
        QVERIFY(m_window->messages()->toPlainText().contains(QStringLiteral("Unexpected characters encountered")));

        QString text;
        QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
        TestModal::onNextModal([&](QWidget *w) {
            auto *box = qobject_cast<QMessageBox *>(w);
            QVERIFY(box);
            text = box->text();
            defaultButton = box->standardButton(box->defaultButton());
            box->button(QMessageBox::No)->click();
        });
        QVERIFY(!m_window->onSave());
        QCOMPARE(text, QStringLiteral("Saving will drop everything after line 3 of ") + m_path);
        QCOMPARE(defaultButton, QMessageBox::No);
        QCOMPARE(readFile(m_path), stray);

        TestModal::answerMessageBox(QMessageBox::Yes);
        QVERIFY(m_window->onSave());
        QVERIFY(!readFile(m_path).contains("\"B\""));
        QVERIFY(!ui()->m_wdg_file_changed->isVisible());
        // The file is now all that the editor holds: the next save asks nothing.
        QVERIFY(savesWithoutQuestion());
    }

    // A box that opening a file at start brings up carries the application's title, not the
    // form's placeholder, and names the file and the reason.
    void startErrorCarriesTheTitle()
    {
        const QString missing = path(QStringLiteral("missing.zatdef"));
        QString title;
        QString text;
        TestModal::onNextModal([&](QWidget *w) {
            // anything but a message box is closed, so that the test fails instead of waiting
            auto *box = qobject_cast<QMessageBox *>(w);
            if (!box) {
                w->close();
                return;
            }
            title = box->windowTitle();
            text = box->text();
            box->button(QMessageBox::Close)->click();
        });
        EditorWindow window;
        window.initialize(missing, QString());
        QCOMPARE(title, QStringLiteral("[ZAT16 tag editor]"));
        QCOMPARE(text,
                 QStringLiteral("Error: Failed to open input file ") + missing
                     + QStringLiteral(": No such file or directory"));
    }

    // What is not a file is refused when opened, also the file that is reopened at start.
    void startDoesNotOpenWhatIsNotAFile_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("reason");
        QTest::newRow("named pipe") << "pipe"
                                    << "Is a named pipe";
        QTest::newRow("folder") << "folder" << QString::fromLocal8Bit(std::strerror(EISDIR));
    }

    void startDoesNotOpenWhatIsNotAFile()
    {
        QFETCH(QString, kind);
        QFETCH(QString, reason);
        const QString special = path(QStringLiteral("special.zatdef"));
        if (kind == QLatin1String("pipe"))
            QCOMPARE(::mkfifo(QFile::encodeName(special).constData(), 0600), 0);
        else
            QVERIFY(QDir().mkdir(special));
        QSettings().setValue(QStringLiteral("ZAT16Editor/LastOpenPath"), special);
        QString text;
        TestModal::answerMessageBox(QMessageBox::Close, &text);
        EditorWindow window;
        window.initialize(QString(), QString());
        QCOMPARE(text, QStringLiteral("Error: Failed to open input file ") + special + QStringLiteral(": ") + reason);
        QVERIFY(window.fileName().isEmpty());
    }

    // Warnings beyond the first thousand are counted, not listed.
    void manyWarningsEndInACount()
    {
        QByteArray many = "<zat16>\n";
        for (int i = 0; i < 1500; ++i)
            many += "  <tag name=\"Same\" id=\"0x" + QByteArray::number(0x1000 + i, 16) + "\"/>\n";
        many += "</zat16>\n";
        QVERIFY(writeFile(m_path, many));
        delete m_window;
        m_window = new EditorWindow;
        m_window->initialize(m_path, QString());
        const QString text = m_window->messages()->toPlainText();
        QVERIFY2(text.endsWith(QStringLiteral("Warning: ") + m_path
                               + QStringLiteral(":\n  499 more warnings were not listed\n")),
                 qPrintable(text.right(200).replace(QLatin1Char('\n'), QLatin1Char('|'))));
        QCOMPARE(text.count(QStringLiteral("Double tag name Same")), 499);
    }

    // --- settings ---

    void corruptSettingsAreSkipped_data()
    {
        QTest::addColumn<QVariant>("value");
        QByteArray garbage;
        for (int i = 0; i < 256; ++i)
            garbage += char((i * 37 + 11) & 0xFF);
        QTest::newRow("garbage bytes") << QVariant(garbage);
        QTest::newRow("short bytes") << QVariant(QByteArray("\x01\x02"));
        QTest::newRow("a number") << QVariant(42);
        QTest::newRow("a list") << QVariant(QStringList({ QStringLiteral("a"), QStringLiteral("b") }));
        QTest::newRow("text with control characters") << QVariant(QString::fromLatin1(garbage.left(40)));
    }

    void corruptSettingsAreSkipped()
    {
        QFETCH(QVariant, value);
        {
            QSettings settings;
            for (const char *key :
                 { "State", "Geometry", "TreeHeader", "FixedFont", "CommentFont", "LastOpenPath", "LastSaveAsPath" })
                settings.setValue(QStringLiteral("ZAT16Editor/") + QLatin1String(key), value);
        }
        bool boxShown = false;
        TestModal::onNextModal(
            [&](QWidget *w) {
                boxShown = true;
                w->close();
            },
            nullptr,
            500);
        EditorWindow window;
        window.initialize(QString(), QString());
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTest::qWait(600);
        QVERIFY(!boxShown);
        QCOMPARE(window.windowTitle(), QStringLiteral("[ZAT16 tag editor]"));
        QVERIFY(window.fileName().isEmpty());
        QCOMPARE(window.model()->fixedFont().family(), QStringLiteral("Monospace"));
        QVERIFY(window.ui()->m_view->header()->sectionSize(0) > 0);
        QVERIFY(!window.isMaximized());
    }

    void fontsAreRestored()
    {
        QFont fixed(QStringLiteral("DejaVu Sans Mono"), 13);
        QFont comment(QStringLiteral("DejaVu Serif"), 9);
        {
            QSettings settings;
            settings.setValue(QStringLiteral("ZAT16Editor/FixedFont"), fixed.toString());
            settings.setValue(QStringLiteral("ZAT16Editor/CommentFont"), comment.toString());
        }
        EditorWindow window;
        QCOMPARE(window.model()->fixedFont().toString(), fixed.toString());
        QCOMPARE(window.model()->commentFont().toString(), comment.toString());
    }

    void floatingDocksFollowTheWindow()
    {
        m_window->undoDock()->setFloating(true);
        m_window->undoDock()->show();
        QTRY_VERIFY(m_window->undoDock()->isVisible());
        m_window->hide();
        QVERIFY(!m_window->undoDock()->isVisible());
        m_window->show();
        QTRY_VERIFY(m_window->undoDock()->isVisible());
    }

    // --- toolbar, context menu, expanding ---

    void toolBarHoldsTheCommonActions()
    {
        QToolBar *bar = m_window->toolBar();
        QVERIFY(bar);
        QStringList texts;
        for (QAction *action : bar->actions())
            texts << (action->isSeparator() ? QStringLiteral("|") : action->objectName());
        // the undo stack's actions have no object name
        QCOMPARE(texts,
                 QStringList({ "m_act_open",
                               "m_act_save",
                               "|",
                               "",
                               "",
                               "|",
                               "m_act_insert_before",
                               "m_act_insert_after",
                               "m_act_add_enums",
                               "m_act_add_bits",
                               "m_act_delete",
                               "|",
                               "m_act_find",
                               "m_act_next_problem" }));
        QCOMPARE(bar->actions().at(3), ui()->m_menu_edit->actions().at(0));
        QCOMPARE(bar->actions().at(4), ui()->m_menu_edit->actions().at(1));
        QVERIFY(bar->isVisible());
        QAction *toggle = bar->toggleViewAction();
        QVERIFY(ui()->m_menu_view->actions().contains(toggle));
        toggle->trigger();
        QVERIFY(!bar->isVisible());
        toggle->trigger();
        QVERIFY(bar->isVisible());
    }

    void contextMenuOfARow()
    {
        const QModelIndex mode = model()->index(1, 0);
        std::unique_ptr<QMenu> menu(m_window->treeContextMenu(mode));
        QCOMPARE(menuTexts(menu.get()),
                 QStringList({ "Insert before",
                               "Insert after",
                               "|",
                               "Add enums",
                               "Add bits",
                               "|",
                               "Cut",
                               "Copy",
                               "Paste",
                               "Delete",
                               "|",
                               "Move up",
                               "Move down",
                               "|",
                               "Edit...",
                               "Expand subtree",
                               "Collapse subtree" }));
        QVERIFY(ui()->m_act_expand_subtree->isEnabled());
        QVERIFY(ui()->m_act_edit->isEnabled());
        const QList<QAction *> actions = menu->actions();
        QCOMPARE(actions.at(11)->icon().pixmap(16).toImage(),
                 QIcon(QStringLiteral(":/icons/i16_move_up.png")).pixmap(16).toImage());
        QCOMPARE(actions.at(12)->icon().pixmap(16).toImage(),
                 QIcon(QStringLiteral(":/icons/i16_move_down.png")).pixmap(16).toImage());
        // a tag without lists has nothing to expand
        menu.reset(m_window->treeContextMenu(model()->index(0, 0)));
        QVERIFY(!ui()->m_act_expand_subtree->isEnabled());
        QVERIFY(!ui()->m_act_collapse_subtree->isEnabled());
        // below the rows
        menu.reset(m_window->treeContextMenu(QModelIndex()));
        QCOMPARE(menuTexts(menu.get()),
                 QStringList({ "Insert before", "Insert after", "|", "Paste", "Expand all", "Collapse all" }));
    }

    void contextMenuRequestMakesTheRowCurrent()
    {
        RowTreeView *view = ui()->m_view;
        const QModelIndex flags = model()->index(4, 0);
        QVERIFY(model()->index2item(flags));
        QCOMPARE(model()->index2item(flags)->name, QStringLiteral("Flags"));
        QTimer::singleShot(0, [] {
            if (QWidget *popup = QApplication::activePopupWidget())
                popup->close();
        });
        emit view->customContextMenuRequested(view->visualRect(flags).center());
        QCOMPARE(view->currentIndex().siblingAtColumn(0), flags);
        QPointer<QMenu> menu = m_window->findChild<QMenu *>(QStringLiteral("TreeContextMenu"));
        QVERIFY(menu);
        QVERIFY(menu->isVisible());
        // closed, it goes
        QTRY_VERIFY(menu.isNull());
    }

    // Below the rows the menu's actions go to the last top-level row: Insert after adds at the end.
    void contextMenuBelowTheRowsGoesToTheEnd()
    {
        RowTreeView *view = ui()->m_view;
        view->collapseAll();
        view->setCurrentIndex(model()->index(0, 0));
        const int rows = model()->rowCount();
        const QModelIndex last = model()->index(rows - 1, 0);
        const QPoint below(view->visualRect(last).center().x(), view->visualRect(last).bottom() + 20);
        QVERIFY(!view->indexAt(below).isValid());
        QTimer::singleShot(0, [] {
            if (QWidget *popup = QApplication::activePopupWidget())
                popup->close();
        });
        emit view->customContextMenuRequested(below);
        QCOMPARE(view->currentIndex().siblingAtColumn(0), last);
        ui()->m_act_insert_after->trigger();
        QCOMPARE(model()->rowCount(), rows + 1);
        QCOMPARE(view->currentIndex().row(), rows);
        QVERIFY(model()->index2item(model()->index(rows, 0))->name.isEmpty());
    }

    void expandAndCollapse()
    {
        RowTreeView *view = ui()->m_view;
        const QModelIndex mode = model()->index(1, 0);
        const QModelIndex values = model()->index(0, 0, mode);
        view->collapseAll();
        ui()->m_act_expand_all->trigger();
        QVERIFY(view->isExpanded(mode));
        QVERIFY(view->isExpanded(values));
        ui()->m_act_collapse_all->trigger();
        QVERIFY(!view->isExpanded(mode));
        QVERIFY(!view->isExpanded(values));

        view->setCurrentIndex(mode);
        ui()->m_act_expand_subtree->trigger();
        QVERIFY(view->isExpanded(mode));
        QVERIFY(view->isExpanded(values));
        QVERIFY(!view->isExpanded(model()->index(4, 0)));
        ui()->m_act_collapse_subtree->trigger();
        QVERIFY(!view->isExpanded(mode));
        QVERIFY(!view->isExpanded(values));
    }

    void editActionOpensTheDialog()
    {
        ui()->m_view->setCurrentIndex(model()->index(0, 0));
        QString title;
        TestModal::onNextModal([&](QWidget *w) {
            title = w->windowTitle();
            w->close();
        });
        ui()->m_act_edit->trigger();
        QTRY_VERIFY(!title.isEmpty());
    }

    void floatingDockStaysOffTheMenuBar()
    {
        QDockWidget *dock = m_window->undoDock();
        dock->setFloating(true);
        dock->show();
        QTRY_VERIFY(dock->isVisible());
        const QWidget *bar = m_window->menuBar();
        const QRect barRect(bar->mapToGlobal(QPoint(0, 0)), bar->size());
        dock->move(barRect.topLeft());
        QTRY_VERIFY(!dock->frameGeometry().intersects(barRect));
        QVERIFY(dock->frameGeometry().top() > barRect.bottom());
    }
};

QTEST_MAIN(TestEditorWindow)
#include "tst_editorwindow.moc"
