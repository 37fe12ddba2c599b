// The buttons of the generated-code viewers ("Save as..." writes exactly the shown text through
// a temporary file and a rename, "Copy all" puts it on the clipboard) and the File menu's
// "Compare with file...", which shows the compatibility report in such a viewer.

#include "editormodel.h"
#include "editorwindow.h"
#include "filedialog.h"
#include "modal.h"
#include "opendialog.h"
#include "testfiles.h"
#include "ui_editorwindow.h"
#include "writercpp.h"
#include "writercpplut.h"
#include "writercs.h"
#include "writerheader.h"
#include "writerlua.h"

#include <QClipboard>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTextEdit>
#include <QUndoStack>

using namespace ZAT16;

namespace {

using TestFiles::readFile;
using TestFiles::writeFile;

template<typename W>
QByteArray generate(const Item *root)
{
    W writer;
    return writer.encode(root);
}

const QByteArray oldDefs = "<zat16>\n"
                           "  <tag name=\"Temperature\" id=\"0x1001\"/>\n"
                           "  <tag name=\"Humidity\" id=\"0x1099\"/>\n"
                           "  <tag name=\"Mode\" id=\"0x1002\">\n"
                           "    <enums><enum name=\"Off\" id=\"0\"/><enum name=\"On\" id=\"1\"/></enums>\n"
                           "  </tag>\n"
                           "</zat16>\n";

const QByteArray newDefs = "<zat16>\n"
                           "  <tag name=\"Temperature\" id=\"0x1001\"/>\n"
                           "  <tag name=\"Mode\" id=\"0x1002\">\n"
                           "    <enums><enum name=\"Off\" id=\"0\"/><enum name=\"On\" id=\"2\"/></enums>\n"
                           "  </tag>\n"
                           "  <tag name=\"Pressure\" id=\"0x1003\"/>\n"
                           "</zat16>\n";

} // namespace

class TestViewerButtons : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir *m_dir = nullptr;
    EditorWindow *m_window = nullptr;
    QString m_path;

    QDialog *openViewer(QAction *action) { return dialogOpenedBy(m_window, action); }

    // Presses "Save as..." and answers the file dialog with `path` (an empty path cancels).
    void saveAs(QDialog *viewer, const QString &path, QString *caption = nullptr)
    {
        TestModal::onNextModal([=](QWidget *w) {
            auto *dialog = qobject_cast<QFileDialog *>(w);
            if (!dialog)
                return;
            if (caption)
                *caption = dialog->windowTitle();
            if (path.isEmpty()) {
                dialog->reject();
                return;
            }
            chooseFile(dialog, path);
            static_cast<QDialog *>(dialog)->accept();
        });
        viewer->findChild<QPushButton *>(QStringLiteral("saveAsButton"))->click();
    }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("zatedit-tests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_viewerbuttons"));
    }

    void init()
    {
        QSettings().clear();
        m_dir = new QTemporaryDir;
        QVERIFY(m_dir->isValid());
        m_path = m_dir->filePath(QStringLiteral("weather.zatdef"));
        QVERIFY(QFile::copy(QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef"), m_path));
        m_window = new EditorWindow;
        m_window->initialize(m_path, QString());
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
    }

    void cleanup()
    {
        TestModal::cancelAll();
        m_window->undoStack()->setClean();
        delete m_window;
        m_window = nullptr;
        delete m_dir;
        m_dir = nullptr;
    }

    void buttonsBelowTheText()
    {
        QDialog *viewer = openViewer(m_window->ui()->m_act_view_header);
        QVERIFY(viewer);
        auto *buttons = viewer->findChild<QDialogButtonBox *>(QStringLiteral("viewerButtons"));
        QVERIFY(buttons);
        auto *save = viewer->findChild<QPushButton *>(QStringLiteral("saveAsButton"));
        auto *copy = viewer->findChild<QPushButton *>(QStringLiteral("copyAllButton"));
        QVERIFY(save && copy);
        QCOMPARE(save->text(), QStringLiteral("Save as..."));
        QCOMPARE(copy->text(), QStringLiteral("Copy all"));
        QVERIFY(!save->autoDefault() && !copy->autoDefault());
        auto *edit = viewer->findChild<QTextEdit *>();
        QTRY_VERIFY(buttons->geometry().top() >= edit->geometry().bottom());
    }

    void saveWritesExactlyTheText_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("file");
        QTest::newRow("header") << "m_act_view_header"
                                << "tags.h";
        QTest::newRow("lua") << "m_act_view_lua"
                             << "tags.lua";
        QTest::newRow("c++") << "m_act_view_cpp"
                             << "enums.hpp";
        QTest::newRow("c++ lookup tables") << "m_act_view_cpp_lut"
                                           << "lookup.hpp";
        QTest::newRow("c#") << "m_act_view_cs"
                            << "Tags.cs";
    }

    void saveWritesExactlyTheText()
    {
        QFETCH(QString, action);
        QFETCH(QString, file);
        const Item *root = m_window->model()->root();
        const QHash<QString, QByteArray> expected = {
            { QStringLiteral("m_act_view_header"), generate<WriterHeader>(root) },
            { QStringLiteral("m_act_view_lua"), generate<WriterLua>(root) },
            { QStringLiteral("m_act_view_cpp"), generate<WriterCpp>(root) },
            { QStringLiteral("m_act_view_cpp_lut"), generate<WriterCppLut>(root) },
            { QStringLiteral("m_act_view_cs"), generate<WriterCs>(root) },
        };
        QVERIFY(!expected.value(action).isEmpty());

        QDialog *viewer = openViewer(m_window->findChild<QAction *>(action));
        QVERIFY(viewer);
        const QString target = m_dir->filePath(file);
        QString caption;
        saveAs(viewer, target, &caption);
        QCOMPARE(caption, QStringLiteral("Save generated text"));
        QCOMPARE(readFile(target), expected.value(action));
        QVERIFY(!QFile::exists(target + QStringLiteral(".tmp")));
        QVERIFY(!QFile::exists(target + QStringLiteral(".bak")));
        QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files | QDir::Hidden, QDir::Name),
                 QStringList({ file, QStringLiteral("weather.zatdef") }));
        QCOMPARE(QSettings().value(QStringLiteral("ZAT16Editor/LastViewerSavePath")).toString(), target);
        // The viewer stays open.
        QVERIFY(viewer->isVisible());
    }

    // The text as generated, even where the text edit would show it differently.
    void saveKeepsOddCharacters()
    {
        const QString text = QStringLiteral("\uFEFFline one\r\nline\u2028two\u00A0and\ttab\nno end");
        QDialog *viewer = m_window->createViewer(QStringLiteral("odd"), nullptr, text);
        const QString target = m_dir->filePath(QStringLiteral("odd.txt"));
        saveAs(viewer, target);
        QCOMPARE(readFile(target), text.toUtf8());
    }

    void cancelWritesNothing()
    {
        QDialog *viewer = openViewer(m_window->ui()->m_act_view_lua);
        QVERIFY(viewer);
        saveAs(viewer, QString());
        QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files | QDir::Hidden), QStringList({ "weather.zatdef" }));
        QVERIFY(QSettings().value(QStringLiteral("ZAT16Editor/LastViewerSavePath")).isNull());
    }

    void saveTextReplacesAFileWithoutBackup()
    {
        const QString target = m_dir->filePath(QStringLiteral("existing.h"));
        QVERIFY(writeFile(target, "the old generated text, longer than the new one\n"));
        QVERIFY(m_window->saveText(target, QStringLiteral("new\n")));
        QCOMPARE(readFile(target), QByteArray("new\n"));
        QVERIFY(!QFile::exists(target + QStringLiteral(".tmp")));
        QVERIFY(!QFile::exists(target + QStringLiteral(".bak")));
    }

    void failedSaveIsReported()
    {
        QDialog *viewer = openViewer(m_window->ui()->m_act_view_cs);
        QVERIFY(viewer);
        const QString target = m_dir->filePath(QStringLiteral("no-such-dir/Tags.cs"));
        QString boxText;
        TestModal::onNextModal([&](QWidget *w) {
            auto *dialog = qobject_cast<QFileDialog *>(w);
            QVERIFY(dialog);
            dialog->setDirectory(m_dir->path());
            dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->setText(target);
            TestModal::answerMessageBox(QMessageBox::Ok, &boxText);
            static_cast<QDialog *>(dialog)->accept();
        });
        viewer->findChild<QPushButton *>(QStringLiteral("saveAsButton"))->click();
        const QString expected = QStringLiteral("Could not create a temporary file beside ") + target
            + QStringLiteral(": No such file or directory");
        QCOMPARE(boxText, expected);
        QVERIFY(m_window->messages()->toPlainText().contains(boxText));
        QVERIFY(!QFile::exists(target));

        // The same through saveText, without a dialog in between.
        QString direct;
        TestModal::answerMessageBox(QMessageBox::Ok, &direct);
        QVERIFY(!m_window->saveText(target, QStringLiteral("text")));
        QCOMPARE(direct, expected);
        QVERIFY(m_window->messages()->toPlainText().contains(direct));
    }

    void copyAllPutsTheTextOnTheClipboard()
    {
        QDialog *viewer = openViewer(m_window->ui()->m_act_view_cpp_lut);
        QVERIFY(viewer);
        QGuiApplication::clipboard()->setText(QStringLiteral("something else"));
        viewer->findChild<QPushButton *>(QStringLiteral("copyAllButton"))->click();
        QCOMPARE(QGuiApplication::clipboard()->text(),
                 QString::fromUtf8(generate<WriterCppLut>(m_window->model()->root())));
    }

    // --- Compare with file... ---

    void compareFromTheFileMenu()
    {
        const QString old = m_dir->filePath(QStringLiteral("old.zatdef"));
        QVERIFY(writeFile(old, oldDefs));
        const QString current = m_dir->filePath(QStringLiteral("new.zatdef"));
        QVERIFY(writeFile(current, newDefs));
        m_window->initialize(current, QString());
        QCOMPARE(m_window->fileName(), current);
        QString caption;
        TestModal::onNextModal([&](QWidget *w) {
            auto *dialog = qobject_cast<QFileDialog *>(w);
            QVERIFY(dialog);
            caption = dialog->windowTitle();
            QCOMPARE(dialog->directory().absolutePath(), QFileInfo(current).absolutePath());
            chooseFile(dialog, old);
            static_cast<QDialog *>(dialog)->accept();
        });
        QDialog *viewer = openViewer(m_window->ui()->m_act_compare);
        QCOMPARE(caption, QStringLiteral("Compare with an older version"));
        QVERIFY(viewer);
        QCOMPARE(viewer->windowTitle(), QStringLiteral("ZAT16 compatibility with old.zatdef"));
        auto *edit = viewer->findChild<QTextEdit *>();
        QVERIFY(edit->isReadOnly());
        QCOMPARE(edit->toPlainText(),
                 QStringLiteral("Old: ") + old + QStringLiteral("\nNew: ") + current
                     + QStringLiteral("\n\nBreaking changes: 2\n"
                                      "  Tag removed: Humidity (0x1099)\n"
                                      "  Enum value changed: Mode.On 1 -> 2\n"
                                      "\n"
                                      "Additions: 1\n"
                                      "  Tag added: Pressure (0x1003)\n"));
        QVERIFY(viewer->findChild<QPushButton *>(QStringLiteral("saveAsButton")));
        QVERIFY(viewer->findChild<QPushButton *>(QStringLiteral("copyAllButton")));
    }

    void compareReportFromAPath()
    {
        const QString old = m_dir->filePath(QStringLiteral("same.zatdef"));
        QVERIFY(QFile::copy(m_path, old));
        QDialog *viewer = m_window->showCompareReport(old);
        QVERIFY(viewer);
        QVERIFY(viewer->isVisible());
        QCOMPARE(viewer->findChild<QTextEdit *>()->toPlainText(),
                 QStringLiteral("Old: ") + old + QStringLiteral("\nNew: ") + m_path
                     + QStringLiteral("\n\nBreaking changes: none\n\nAdditions: none\n"));

        // The open document as it is now, unsaved changes included.
        const QString small = m_dir->filePath(QStringLiteral("old.zatdef"));
        QVERIFY(writeFile(small, oldDefs));
        m_window->initialize(small, QString());
        EditorModel *model = m_window->model();
        QVERIFY(model->setData(model->index(1, 0), QStringLiteral("Moisture"), Qt::EditRole));
        viewer = m_window->showCompareReport(small);
        QVERIFY(viewer);
        QCOMPARE(viewer->windowTitle(), QStringLiteral("ZAT16 compatibility with old.zatdef"));
        QCOMPARE(viewer->findChild<QTextEdit *>()->toPlainText(),
                 QStringLiteral("Old: ") + small + QStringLiteral("\nNew: ") + small
                     + QStringLiteral(" (with unsaved changes)\n\nBreaking changes: 2\n"
                                      "  Tag removed: Humidity (0x1099)\n"
                                      "  Tag code reused: 0x1099 was Humidity, is now Moisture\n"
                                      "\n"
                                      "Additions: none\n"));
    }

    void compareWithAnUnreadableFile()
    {
        const QString bad = m_dir->filePath(QStringLiteral("bad.zatdef"));
        QVERIFY(writeFile(bad, "not xml"));
        const int dialogs = m_window->findChildren<QDialog *>().size();
        bool boxShown = false;
        TestModal::onNextModalOf<QMessageBox>([&](QWidget *w) {
            boxShown = true;
            qobject_cast<QMessageBox *>(w)->button(QMessageBox::Close)->click();
        });
        QVERIFY(!m_window->showCompareReport(bad));
        QVERIFY(boxShown);
        QCOMPARE(m_window->findChildren<QDialog *>().size(), dialogs);
    }
};

QTEST_MAIN(TestViewerButtons)
#include "tst_viewerbuttons.moc"
