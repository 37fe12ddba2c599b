#include "editormodel.h"
#include "editorwindow.h"
#include "modal.h"
#include "statusline.h"
#include "testfiles.h"
#include "ui_editorwindow.h"

#include <QSettings>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

using namespace ZAT16;

namespace {

const QByteArray defs = "<?xml version=\"1.0\" encoding=\"UTF-8\"?> <!-- -*- nxml -*- -->\n"
                        "<zat16>\n"
                        "  <tag name=\"Power\" id=\"0x2001\"/>\n"
                        "  <!-- a comment line -->\n"
                        "  <tag name=\"Mode\" id=\"0x1002\"/>\n"
                        "  <tag name=\"Level\" id=\"0x1003\"/>\n"
                        "</zat16>\n";

} // namespace

class TestStatusLine : public QObject
{
    Q_OBJECT

    QTemporaryDir *m_dir = nullptr;
    EditorWindow *m_window = nullptr;
    QString m_path;

    StatusLine *line() const { return m_window->statusLine(); }

    void remove(int row)
    {
        m_window->ui()->m_view->setCurrentIndex(m_window->model()->index(row, 0));
        m_window->onDelete();
    }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("zatedit-tests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_statusline"));
    }

    void init()
    {
        QSettings().clear();
        m_dir = new QTemporaryDir;
        m_path = m_dir->filePath(QStringLiteral("defs.zatdef"));
        QVERIFY(TestFiles::writeFile(m_path, defs));
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
        delete m_dir;
    }

    void showsThePathAndTheCounts()
    {
        QVERIFY(m_window->statusBar()->isVisible());
        QCOMPARE(line()->pathText(), m_path);
        // the comment line is no tag
        QTRY_COMPARE(line()->tagsText(), QStringLiteral("3 tags"));
        QCOMPARE(line()->problemsText(), QStringLiteral("No problems"));
    }

    void countsFollowTheEdits()
    {
        QTRY_COMPARE(line()->tagsText(), QStringLiteral("3 tags"));
        EditorModel *model = m_window->model();
        QVERIFY(model->setData(model->index(2, 1), QStringLiteral("0x1003")));
        QTRY_COMPARE(line()->problemsText(), QStringLiteral("2 problems"));
        remove(0);
        QVERIFY(model->setData(model->index(2, 1), QStringLiteral("0x1004")));
        QTRY_COMPARE(line()->problemsText(), QStringLiteral("No problems"));
        QCOMPARE(line()->tagsText(), QStringLiteral("2 tags"));
        m_window->undoStack()->undo();
        QTRY_COMPARE(line()->problemsText(), QStringLiteral("2 problems"));
        m_window->undoStack()->undo();
        m_window->undoStack()->undo();
        QTRY_COMPARE(line()->problemsText(), QStringLiteral("No problems"));
        QCOMPARE(line()->tagsText(), QStringLiteral("3 tags"));
    }

    void singularCounts()
    {
        EditorModel *model = m_window->model();
        remove(2);
        remove(2);
        QVERIFY(model->setData(model->index(0, 1), QString()));
        QTRY_COMPARE(line()->tagsText(), QStringLiteral("1 tag"));
        QTRY_COMPARE(line()->problemsText(), QStringLiteral("1 problem"));
    }

    void savingLeavesANote()
    {
        EditorModel *model = m_window->model();
        QVERIFY(model->setData(model->index(0, 0), QStringLiteral("PowerOn")));
        const QString copy = m_dir->filePath(QStringLiteral("copy.zatdef"));
        QVERIFY(m_window->save(copy));
        QCOMPARE(m_window->statusBar()->currentMessage(), QStringLiteral("Saved to %1").arg(copy));
        QCOMPARE(line()->pathText(), copy);
    }

    void newDocumentHasNoFile()
    {
        EditorWindow window;
        QCOMPARE(window.statusLine()->pathText(), QStringLiteral("No file"));
        window.statusLine()->count();
        QCOMPARE(window.statusLine()->tagsText(), QStringLiteral("0 tags"));
        QCOMPARE(window.statusLine()->problemsText(), QStringLiteral("No problems"));
    }
};

QTEST_MAIN(TestStatusLine)
#include "tst_statusline.moc"
