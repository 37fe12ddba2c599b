// The ways of opening a file besides the Open dialog, and where the file dialogs start: File >
// Open Recent with the files last opened or saved, kept from one start to the next; the file last
// opened in any way, opened again by the next start; definitions files dropped onto the window.
// Offscreen, in a home folder of the test's own, where the settings live; boxes are answered
// from timers.

#include "editormodel.h"
#include "editorwindow.h"
#include "filedialog.h"
#include "localfile.h"
#include "modal.h"
#include "opendialog.h"
#include "recentfiles.h"
#include "rowtreeview.h"
#include "testfiles.h"
#include "ui_editorwindow.h"

#include <QAction>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>
#include <QUrl>

#include <fcntl.h>
#include <functional>
#include <memory>
#include <unistd.h>

using namespace ZAT16;

namespace {

using TestFiles::writeFile;

QByteArray defsNamed(const QString &tag)
{
    return "<zat16>\n  <tag name=\"" + tag.toUtf8() + "\" id=\"0x2001\"/>\n</zat16>\n";
}

const QString unsavedQuestion = QStringLiteral("There are unsaved changes. What do you want to do?");

QStringList menuTexts(const QMenu *menu)
{
    QStringList texts;
    for (const QAction *action : menu->actions()) {
        if (action->isSeparator())
            texts << QStringLiteral("|");
        else
            texts << action->text() + (action->isEnabled() ? QString() : QStringLiteral(" (disabled)"));
    }
    return texts;
}

QMenu *recentMenu(const EditorWindow &window)
{
    return window.recentFiles()->menu();
}

// The entries as the user sees them when the submenu opens.
QStringList entries(const EditorWindow &window)
{
    QMenu *menu = recentMenu(window);
    emit menu->aboutToShow();
    return menuTexts(menu);
}

QStringList tooltips(const EditorWindow &window)
{
    QStringList texts;
    for (const QAction *action : recentMenu(window)->actions()) {
        if (!action->isSeparator() && action != window.findChild<QAction *>(QStringLiteral("m_act_clear_recent")))
            texts << action->toolTip();
    }
    return texts;
}

QAction *entry(const EditorWindow &window, const QString &text)
{
    for (QAction *action : recentMenu(window)->actions()) {
        if (action->text() == text)
            return action;
    }
    return nullptr;
}

QString tagName(const EditorWindow &window)
{
    return window.model()->data(window.model()->index(0, 0), Qt::DisplayRole).toString();
}

// A drag from a file manager, which offers to copy, move or link.
std::unique_ptr<QMimeData> urlDrag(const QList<QUrl> &urls)
{
    auto data = std::make_unique<QMimeData>();
    data->setUrls(urls);
    return data;
}

QUrl fileUrl(const QByteArray &path)
{
    return QUrl::fromEncoded("file://" + path.toPercentEncoding("/"));
}

// Removes a file named by its bytes at the end of the scope: QTemporaryDir cannot remove a name
// that is not UTF-8.
struct RemovedAtEnd {
    QByteArray name;
    ~RemovedAtEnd() { ::unlink(name.constData()); }
};

const Qt::DropActions fileManagerActions = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;

struct Drop {
    bool entered = false; ///< the enter event was accepted
    bool dropped = false; ///< the drop was accepted, as a copy
};

// The events of a drag that enters `target` at `pos` and is dropped there.
Drop dropOnto(QWidget *target, const QPoint &pos, const QMimeData *data, Qt::DropActions actions = fileManagerActions)
{
    Drop result;
    QDragEnterEvent enter(pos, actions, data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &enter);
    result.entered = enter.isAccepted();
    QDragMoveEvent move(pos, actions, data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &move);
    QDropEvent drop(QPointF(pos), actions, data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &drop);
    result.dropped = drop.isAccepted() && drop.dropAction() == Qt::CopyAction;
    return result;
}

} // namespace

class TestRecentFiles : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_home;
    QTemporaryDir *m_dir = nullptr;
    EditorWindow *m_window = nullptr;

    QString path(const QString &name) const { return m_dir->filePath(name); }

    // A definitions file `name` in the test's folder whose one tag is called after the file.
    QString makeFile(const QString &name)
    {
        const QString file = path(name);
        if (!writeFile(file, defsNamed(QFileInfo(name).baseName().remove(QLatin1Char('&')))))
            return QString();
        return file;
    }

    QPoint cellCentre(int row) const
    {
        RowTreeView *view = m_window->ui()->m_view;
        return view->visualRect(m_window->model()->index(row, 0)).center();
    }

    // Runs `dialogAction` (Open or Save As) and gives the folder and the typed-in name its dialog
    // started with; the dialog is cancelled.
    bool dialogStart(QAction *dialogAction, QString *folder, QString *name)
    {
        return dialogStart([dialogAction] { dialogAction->trigger(); }, folder, name);
    }

    // The same for the file dialog that `open` opens.
    bool dialogStart(const std::function<void()> &open, QString *folder, QString *name)
    {
        bool shown = false;
        TestModal::onNextModalOf<QFileDialog>([&](QWidget *w) {
            auto *dialog = qobject_cast<QFileDialog *>(w);
            shown = true;
            *folder = dialog->directory().absolutePath();
            *name = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->text();
            dialog->reject();
        });
        open();
        return shown;
    }

    // The file dialog of a viewer's "Save as...".
    bool viewerSaveStart(QString *folder, QString *name)
    {
        QDialog *viewer = dialogOpenedBy(m_window, m_window->ui()->m_act_view_header);
        if (!viewer)
            return false;
        const std::unique_ptr<QDialog> closed(viewer);
        return dialogStart([viewer] { viewer->findChild<QPushButton *>(QStringLiteral("saveAsButton"))->click(); },
                           folder,
                           name);
    }

private slots:
    void initTestCase()
    {
        // A home of its own, without a Documents folder, before the settings are first used.
        QVERIFY(m_home.isValid());
        qputenv("HOME", QFile::encodeName(m_home.path()));
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("zatedit-tests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_recentfiles"));
        QCOMPARE(QDir::homePath(), m_home.path());
        QVERIFY(!QFileInfo::exists(m_home.filePath(QStringLiteral("Documents"))));
    }

    void init()
    {
        QSettings().clear();
        m_dir = new QTemporaryDir;
        QVERIFY(m_dir->isValid());
        m_window = new EditorWindow;
        m_window->initialize(QString(), QString());
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
    }

    void cleanup()
    {
        TestModal::cancelAll();
        if (m_window) {
            m_window->undoStack()->setClean();
            delete m_window;
            m_window = nullptr;
        }
        delete m_dir;
        m_dir = nullptr;
    }

    // --- the submenu ---

    void submenuFollowsOpen()
    {
        QMenu *file = m_window->ui()->m_menu_file;
        QCOMPARE(menuTexts(file),
                 QStringList({ "Open",
                               "Open &Recent (disabled)",
                               "|",
                               "Save",
                               "Save as...",
                               "|",
                               "Close",
                               "|",
                               "Compare with file..." }));
        QCOMPARE(file->actions().at(1)->menu(), recentMenu(*m_window));
        QCOMPARE(entries(*m_window), QStringList({ "|", "Clear List (disabled)" }));

        m_window->openFile(makeFile(QStringLiteral("a.zatdef")));
        QVERIFY(file->actions().at(1)->isEnabled());
        QCOMPARE(file->actions().at(1)->text(), QStringLiteral("Open &Recent"));
        QCOMPARE(entries(*m_window), QStringList({ "&1 a.zatdef", "|", "Clear List" }));
    }

    void listOutlastsTheWindow()
    {
        const QString a = makeFile(QStringLiteral("a.zatdef"));
        const QString b = makeFile(QStringLiteral("b&b.zatdef"));
        const QString c = makeFile(QStringLiteral("c.zatdef"));
        delete m_window;
        m_window = new EditorWindow;
        m_window->initialize(a, QString());
        QVERIFY(m_window->openFile(b));
        QVERIFY(m_window->openFile(c));
        QCOMPARE(entries(*m_window),
                 QStringList({ "&1 c.zatdef", "&2 b&&b.zatdef", "&3 a.zatdef", "|", "Clear List" }));
        QCOMPARE(tooltips(*m_window), QStringList({ c, b, a }));

        // The next start shows them; a file that is gone cannot be chosen.
        delete m_window;
        QVERIFY(QFile::remove(b));
        m_window = new EditorWindow;
        QCOMPARE(menuTexts(recentMenu(*m_window)),
                 QStringList({ "&1 c.zatdef", "&2 b&&b.zatdef (disabled)", "&3 a.zatdef", "|", "Clear List" }));

        // A file that goes while the window is open is looked for when the submenu opens.
        QVERIFY(QFile::remove(a));
        QCOMPARE(entries(*m_window),
                 QStringList(
                     { "&1 c.zatdef", "&2 b&&b.zatdef (disabled)", "&3 a.zatdef (disabled)", "|", "Clear List" }));

        m_window->findChild<QAction *>(QStringLiteral("m_act_clear_recent"))->trigger();
        QCOMPARE(entries(*m_window), QStringList({ "|", "Clear List (disabled)" }));
        QVERIFY(!recentMenu(*m_window)->menuAction()->isEnabled());
        delete m_window;
        m_window = new EditorWindow;
        QCOMPARE(entries(*m_window), QStringList({ "|", "Clear List (disabled)" }));
    }

    void atMostTen()
    {
        for (int i = 1; i <= 12; ++i)
            QVERIFY(m_window->openFile(makeFile(QStringLiteral("f%1.zatdef").arg(i, 2, 10, QLatin1Char('0')))));
        const QStringList expected({ "&1 f12.zatdef",
                                     "&2 f11.zatdef",
                                     "&3 f10.zatdef",
                                     "&4 f09.zatdef",
                                     "&5 f08.zatdef",
                                     "&6 f07.zatdef",
                                     "&7 f06.zatdef",
                                     "&8 f05.zatdef",
                                     "&9 f04.zatdef",
                                     "1&0 f03.zatdef",
                                     "|",
                                     "Clear List" });
        QCOMPARE(entries(*m_window), expected);
        QCOMPARE(QSettings().value(QStringLiteral("ZAT16Editor/RecentFiles")).toStringList().size(), 10);
        delete m_window;
        m_window = new EditorWindow;
        QCOMPARE(entries(*m_window), expected);
    }

    void choosingAnEntryOpensItAndMovesItUp()
    {
        const QString a = makeFile(QStringLiteral("a.zatdef"));
        const QString b = makeFile(QStringLiteral("b.zatdef"));
        const QString c = makeFile(QStringLiteral("c.zatdef"));
        for (const QString &file : { a, b, c })
            QVERIFY(m_window->openFile(file));
        QCOMPARE(tagName(*m_window), QStringLiteral("c"));
        QSignalSpy opened(m_window, &EditorWindow::opened);
        entries(*m_window);
        entry(*m_window, QStringLiteral("&3 a.zatdef"))->trigger();
        QCOMPARE(opened.count(), 1);
        QCOMPARE(m_window->fileName(), a);
        QCOMPARE(m_window->windowTitle(), QStringLiteral("a.zatdef [ZAT16 tag editor]"));
        QCOMPARE(tagName(*m_window), QStringLiteral("a"));
        QVERIFY(m_window->undoStack()->isClean());
        QCOMPARE(entries(*m_window), QStringList({ "&1 a.zatdef", "&2 c.zatdef", "&3 b.zatdef", "|", "Clear List" }));
    }

    void savedFilesAreListed()
    {
        const QString a = makeFile(QStringLiteral("a.zatdef"));
        const QString b = makeFile(QStringLiteral("b.zatdef"));
        const QString copy = path(QStringLiteral("copy.zatdef"));
        QVERIFY(m_window->openFile(a));
        TestModal::onNextModalOf<QFileDialog>([&](QWidget *w) {
            chooseFile(qobject_cast<QFileDialog *>(w), copy);
            qobject_cast<QDialog *>(w)->accept();
        });
        m_window->onSaveAs();
        QCOMPARE(m_window->fileName(), copy);
        QCOMPARE(entries(*m_window), QStringList({ "&1 copy.zatdef", "&2 a.zatdef", "|", "Clear List" }));
        QVERIFY(m_window->openFile(b));
        QVERIFY(m_window->save(a));
        QCOMPARE(entries(*m_window),
                 QStringList({ "&1 a.zatdef", "&2 b.zatdef", "&3 copy.zatdef", "|", "Clear List" }));
    }

    void unsavedChangesAreAskedAbout()
    {
        const QString a = makeFile(QStringLiteral("a.zatdef"));
        const QString b = makeFile(QStringLiteral("b.zatdef"));
        QVERIFY(m_window->openFile(a));
        QVERIFY(m_window->openFile(b));
        QVERIFY(m_window->model()->setData(m_window->model()->index(0, 0), QStringLiteral("Edited"), Qt::EditRole));
        entries(*m_window);

        QString text;
        TestModal::answerMessageBox(QMessageBox::Cancel, &text);
        entry(*m_window, QStringLiteral("&2 a.zatdef"))->trigger();
        QCOMPARE(text, unsavedQuestion);
        QCOMPARE(m_window->fileName(), b);
        QCOMPARE(tagName(*m_window), QStringLiteral("Edited"));
        QVERIFY(!m_window->undoStack()->isClean());
        QCOMPARE(entries(*m_window), QStringList({ "&1 b.zatdef", "&2 a.zatdef", "|", "Clear List" }));

        text.clear();
        TestModal::answerMessageBox(QMessageBox::Discard, &text);
        entry(*m_window, QStringLiteral("&2 a.zatdef"))->trigger();
        QCOMPARE(text, unsavedQuestion);
        QCOMPARE(m_window->fileName(), a);
        QCOMPARE(tagName(*m_window), QStringLiteral("a"));
        QVERIFY(m_window->undoStack()->isClean());
    }

    void damagedListReadsEmpty_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::newRow("a number") << QVariant(42);
        QTest::newRow("bytes") << QVariant(QByteArray("\x01\x02\xFF"));
        QTest::newRow("a text with a line break") << QVariant(QStringLiteral("/tmp/a.zatdef\n/tmp/b.zatdef"));
        QTest::newRow("a list with a control character")
            << QVariant(QStringList({ QStringLiteral("/tmp/a.zatdef"), QStringLiteral("/tmp/\x1b.zatdef") }));
    }

    void damagedListReadsEmpty()
    {
        QFETCH(QVariant, value);
        delete m_window;
        m_window = nullptr;
        QSettings().setValue(QStringLiteral("ZAT16Editor/RecentFiles"), value);
        EditorWindow window;
        QCOMPARE(entries(window), QStringList({ "|", "Clear List (disabled)" }));
    }

    // The list holds the "file:" URLs of the files; what is not one is left out, and so is a
    // repeat.
    void entriesThatAreNoFilesAreDropped()
    {
        delete m_window;
        m_window = nullptr;
        QSettings().setValue(QStringLiteral("ZAT16Editor/RecentFiles"),
                             QStringList({ QStringLiteral("file:///gone/a.zatdef"),
                                           QStringLiteral("/gone/plain path.zatdef"),
                                           QStringLiteral("file:relative.zatdef"),
                                           QStringLiteral("https://example.invalid/c.zatdef"),
                                           QStringLiteral("file://host/gone/d.zatdef"),
                                           QStringLiteral("file:///gone/a.zatdef"),
                                           QStringLiteral("file:///gone/with%20space%C3%A4.zatdef") }));
        EditorWindow window;
        QCOMPARE(entries(window),
                 QStringList({ "&1 a.zatdef (disabled)", "&2 with space\u00e4.zatdef (disabled)", "|", "Clear List" }));
        QCOMPARE(tooltips(window),
                 QStringList({ QStringLiteral("/gone/a.zatdef"), QStringLiteral("/gone/with space\u00e4.zatdef") }));
    }

    // --- the file opened again at start ---

    void lastOpenedIsOpenedAtStart_data()
    {
        QTest::addColumn<QString>("way");
        QTest::newRow("command line") << QStringLiteral("command line");
        QTest::newRow("recent file") << QStringLiteral("recent file");
        QTest::newRow("drop") << QStringLiteral("drop");
    }

    void lastOpenedIsOpenedAtStart()
    {
        QFETCH(QString, way);
        const QString first = makeFile(QStringLiteral("first.zatdef"));
        const QString last = makeFile(QStringLiteral("last.zatdef"));
        delete m_window;
        m_window = new EditorWindow;
        if (way == QLatin1String("command line")) {
            m_window->initialize(last, QString());
        } else {
            m_window->initialize(first, QString());
            if (way == QLatin1String("recent file")) {
                QVERIFY(m_window->openFile(last));
                QVERIFY(m_window->openFile(first));
                entries(*m_window);
                entry(*m_window, QStringLiteral("&2 last.zatdef"))->trigger();
            } else {
                const auto data = urlDrag({ QUrl::fromLocalFile(last) });
                QVERIFY(dropOnto(m_window, QPoint(10, 10), data.get()).dropped);
            }
        }
        QTRY_COMPARE(m_window->fileName(), last);

        // An editor started meanwhile does not open the file that this one has open.
        {
            EditorWindow meanwhile;
            meanwhile.initialize(QString(), QString());
            QCOMPARE(meanwhile.fileName(), QString());
        }

        QVERIFY(m_window->close());
        EditorWindow next;
        next.initialize(QString(), QString());
        QCOMPARE(next.fileName(), last);
        QCOMPARE(tagName(next), QStringLiteral("last"));
        QCOMPARE(next.windowTitle(), QStringLiteral("last.zatdef [ZAT16 tag editor]"));
    }

    // A file named relative to the working folder is kept with its absolute path.
    void relativePathIsKeptAbsolute()
    {
        makeFile(QStringLiteral("rel.zatdef"));
        const QString cwd = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_dir->path()));
        delete m_window;
        m_window = new EditorWindow;
        m_window->initialize(QStringLiteral("rel.zatdef"), QString());
        QVERIFY(m_window->close());
        QDir::setCurrent(cwd);
        QCOMPARE(QSettings().value(QStringLiteral("ZAT16Editor/LastOpenPath")).toString(),
                 path(QStringLiteral("rel.zatdef")));
        QCOMPARE(QSettings().value(QStringLiteral("ZAT16Editor/RecentFiles")).toStringList(),
                 QStringList(QStringLiteral("file://") + path(QStringLiteral("rel.zatdef"))));
        EditorWindow next;
        next.initialize(QString(), QString());
        QCOMPARE(tagName(next), QStringLiteral("rel"));
    }

    // --- where the dialogs start ---

    void dialogsStartInTheLastFolder()
    {
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("sub")));
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("other")));
        const QString file = makeFile(QStringLiteral("sub/a.zatdef"));
        QVERIFY(m_window->openFile(file));
        QString folder;
        QString name;
        QVERIFY(dialogStart(m_window->ui()->m_act_open, &folder, &name));
        QCOMPARE(folder, path(QStringLiteral("sub")));
        QCOMPARE(name, QString());
        QVERIFY(dialogStart(m_window->ui()->m_act_save_as, &folder, &name));
        QCOMPARE(folder, path(QStringLiteral("sub")));
        QCOMPARE(name, QString());

        // Saved elsewhere: the dialogs start there.
        QVERIFY(m_window->save(path(QStringLiteral("other/b.zatdef"))));
        QVERIFY(dialogStart(m_window->ui()->m_act_open, &folder, &name));
        QCOMPARE(folder, path(QStringLiteral("other")));
        QCOMPARE(name, QString());
    }

    // Today the dialogs were given the folder "Documents" in the home folder, and where that
    // does not exist they showed "Documents" typed in as the file's name.
    void missingFolderGivesHome_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<bool>("saveAs");
        for (bool saveAs : { false, true }) {
            const char *dialog = saveAs ? "Save As, " : "Open, ";
            QTest::newRow(QByteArray(dialog).append("nothing opened yet").constData()) << QString() << saveAs;
            QTest::newRow(QByteArray(dialog).append("recent file").constData())
                << QStringLiteral("RecentFiles") << saveAs;
            QTest::newRow(QByteArray(dialog).append("path of the Open dialog").constData())
                << QStringLiteral("LastOpenPath") << saveAs;
        }
    }

    void missingFolderGivesHome()
    {
        QFETCH(QString, stored);
        QFETCH(bool, saveAs);
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("gone")));
        const QString file = makeFile(QStringLiteral("gone/a.zatdef"));
        if (stored == QLatin1String("RecentFiles"))
            QSettings().setValue(QStringLiteral("ZAT16Editor/RecentFiles"), QString(QStringLiteral("file://") + file));
        else if (!stored.isEmpty())
            QSettings().setValue(QStringLiteral("ZAT16Editor/") + stored, file);
        QVERIFY(QDir(path(QStringLiteral("gone"))).removeRecursively());
        QString folder;
        QString name;
        QVERIFY(dialogStart(saveAs ? m_window->ui()->m_act_save_as : m_window->ui()->m_act_open, &folder, &name));
        QCOMPARE(folder, m_home.path());
        QCOMPARE(name, QString());
    }

    // The viewers' Save as and Compare with file start where Open does when they have no place
    // of their own: never in a "Documents" folder that is not there.
    void otherDialogsStartInAFolderThatExists()
    {
        QString folder;
        QString name;
        QVERIFY(viewerSaveStart(&folder, &name));
        QCOMPARE(folder, m_home.path());
        QCOMPARE(name, QString());
        QVERIFY(dialogStart(m_window->ui()->m_act_compare, &folder, &name));
        QCOMPARE(folder, m_home.path());
        QCOMPARE(name, QString());

        // A document's comparison starts in its folder, and so does a viewer's first Save as.
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("sub")));
        QVERIFY(m_window->openFile(makeFile(QStringLiteral("sub/a.zatdef"))));
        QVERIFY(viewerSaveStart(&folder, &name));
        QCOMPARE(folder, path(QStringLiteral("sub")));
        QVERIFY(dialogStart(m_window->ui()->m_act_compare, &folder, &name));
        QCOMPARE(folder, path(QStringLiteral("sub")));
        QCOMPARE(name, QString());

        // A viewer's text saved before into a folder that has gone since.
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("gone")));
        QSettings().setValue(QStringLiteral("ZAT16Editor/LastViewerSavePath"), path(QStringLiteral("gone/a.h")));
        QVERIFY(QDir(path(QStringLiteral("gone"))).removeRecursively());
        QVERIFY(viewerSaveStart(&folder, &name));
        QCOMPARE(folder, path(QStringLiteral("sub")));
        QCOMPARE(name, QString());
    }

    // --- dropped files ---

    void droppedFileOpens_data()
    {
        QTest::addColumn<bool>("ontoTree");
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("onto the window") << false << QByteArray("dropped.zatdef");
        QTest::newRow("onto a cell of the tree") << true << QByteArray("dropped.zatdef");
        QTest::newRow("suffix in capitals") << false << QByteArray("DROPPED.ZATDEF");
        QTest::newRow("name not UTF-8") << false << QByteArray("caf\xE9.zatdef");
    }

    void droppedFileOpens()
    {
        QFETCH(bool, ontoTree);
        QFETCH(QByteArray, name);
        QVERIFY(m_window->openFile(makeFile(QStringLiteral("a.zatdef"))));
        const QByteArray bytes = QFile::encodeName(m_dir->path()) + '/' + name;
        const int fd = ::open(bytes.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        QVERIFY(fd >= 0);
        const QByteArray content = defsNamed(QStringLiteral("Dropped"));
        QCOMPARE(::write(fd, content.constData(), size_t(content.size())), ssize_t(content.size()));
        ::close(fd);
        const RemovedAtEnd removed { bytes };
        const QString file = LocalFile::decodeName(bytes);

        const auto data = urlDrag({ fileUrl(bytes) });
        QWidget *target = ontoTree ? m_window->ui()->m_view->viewport() : static_cast<QWidget *>(m_window);
        const Drop drop = dropOnto(target, ontoTree ? cellCentre(0) : QPoint(10, 10), data.get());
        QVERIFY(drop.entered);
        QVERIFY(drop.dropped);
        QTRY_COMPARE(m_window->fileName(), file);
        QCOMPARE(tagName(*m_window), QStringLiteral("Dropped"));
        QVERIFY(m_window->undoStack()->isClean());
        QCOMPARE(RecentFiles::files(), QStringList({ file, path(QStringLiteral("a.zatdef")) }));

        // Listed under its own name, and it can be chosen, also in the next start.
        delete m_window;
        m_window = new EditorWindow;
        QAction *listed = recentMenu(*m_window)->actions().value(0);
        QVERIFY(listed);
        QCOMPARE(listed->toolTip(), file);
        QVERIFY(listed->isEnabled());
    }

    void droppedFileAsksAboutUnsavedChanges()
    {
        const QString a = makeFile(QStringLiteral("a.zatdef"));
        const QString b = makeFile(QStringLiteral("b.zatdef"));
        QVERIFY(m_window->openFile(a));
        QVERIFY(m_window->model()->setData(m_window->model()->index(0, 0), QStringLiteral("Edited"), Qt::EditRole));
        QString text;
        TestModal::answerMessageBox(QMessageBox::Cancel, &text);
        const auto data = urlDrag({ QUrl::fromLocalFile(b) });
        QVERIFY(dropOnto(m_window, QPoint(10, 10), data.get()).dropped);
        QTRY_COMPARE(text, unsavedQuestion);
        QCOMPARE(m_window->fileName(), a);
        QCOMPARE(tagName(*m_window), QStringLiteral("Edited"));

        TestModal::answerMessageBox(QMessageBox::Discard);
        QVERIFY(dropOnto(m_window->ui()->m_view->viewport(), cellCentre(0), data.get()).dropped);
        QTRY_COMPARE(m_window->fileName(), b);
        QCOMPARE(tagName(*m_window), QStringLiteral("b"));
    }

    void otherDropsAreRefused_data()
    {
        QTest::addColumn<bool>("ontoTree");
        QTest::addColumn<QString>("kind");
        for (bool ontoTree : { false, true }) {
            const QByteArray where = ontoTree ? "tree: " : "window: ";
            for (const char *kind : { "other suffix", "two files", "remote file", "move only", "no urls" })
                QTest::newRow((where + kind).constData()) << ontoTree << QString::fromLatin1(kind);
        }
    }

    void otherDropsAreRefused()
    {
        QFETCH(bool, ontoTree);
        QFETCH(QString, kind);
        const QString a = makeFile(QStringLiteral("a.zatdef"));
        const QString b = makeFile(QStringLiteral("b.zatdef"));
        QVERIFY(writeFile(path(QStringLiteral("notes.txt")), defsNamed(QStringLiteral("Notes"))));
        QVERIFY(m_window->openFile(a));
        QList<QUrl> urls;
        Qt::DropActions actions = fileManagerActions;
        if (kind == QLatin1String("other suffix"))
            urls = { QUrl::fromLocalFile(path(QStringLiteral("notes.txt"))) };
        else if (kind == QLatin1String("two files"))
            urls = { QUrl::fromLocalFile(b), QUrl::fromLocalFile(a) };
        else if (kind == QLatin1String("remote file"))
            urls = { QUrl(QStringLiteral("https://example.invalid/b.zatdef")) };
        else if (kind == QLatin1String("move only")) {
            urls = { QUrl::fromLocalFile(b) };
            actions = Qt::MoveAction;
        }
        auto data = urlDrag(urls);
        if (kind == QLatin1String("no urls"))
            data->setData(QStringLiteral("application/octet-stream"), "b.zatdef");
        QWidget *target = ontoTree ? m_window->ui()->m_view->viewport() : static_cast<QWidget *>(m_window);
        const Drop drop = dropOnto(target, ontoTree ? cellCentre(0) : QPoint(10, 10), data.get(), actions);
        QVERIFY(!drop.entered);
        QVERIFY(!drop.dropped);
        // An accepted drop would open the file once the events are handled.
        QCoreApplication::processEvents();
        QCOMPARE(m_window->fileName(), a);
        QCOMPARE(tagName(*m_window), QStringLiteral("a"));
        QVERIFY(m_window->undoStack()->isClean());
    }

    // Text dropped onto a cell is the tree's, as before: it replaces the cell's text.
    void textDropOntoTreeIsTheTrees()
    {
        const QString a = makeFile(QStringLiteral("a.zatdef"));
        QVERIFY(m_window->openFile(a));
        QMimeData data;
        data.setText(QStringLiteral("Renamed"));
        const Drop drop = dropOnto(m_window->ui()->m_view->viewport(), cellCentre(0), &data, Qt::CopyAction);
        QVERIFY(drop.entered);
        QVERIFY(drop.dropped);
        QCOMPARE(tagName(*m_window), QStringLiteral("Renamed"));
        QCOMPARE(m_window->undoStack()->undoText(), QStringLiteral("Change name"));
        QCOMPARE(m_window->fileName(), a);

        // Onto the window outside the tree, text is refused.
        const Drop outside = dropOnto(m_window, QPoint(10, 10), &data, Qt::CopyAction);
        QVERIFY(!outside.entered);
        QVERIFY(!outside.dropped);
    }
};

QTEST_MAIN(TestRecentFiles)

#include "tst_recentfiles.moc"
