// The View actions: each shows its generator's output for the open tree in a read-only viewer
// with the specified title, font and highlighter, and an open viewer does not follow later edits.

#include "editormodel.h"
#include "editorwindow.h"
#include "highlighterc.h"
#include "highlighterlua.h"
#include "opendialog.h"
#include "ui_editorwindow.h"
#include "writercpp.h"
#include "writercpplut.h"
#include "writercs.h"
#include "writerheader.h"
#include "writerlua.h"

#include <QDialog>
#include <QFontMetrics>
#include <QPointer>
#include <QSettings>
#include <QStandardPaths>
#include <QTest>
#include <QTextEdit>
#include <QUndoStack>

#include <functional>

using namespace ZAT16;

namespace {

template<typename W>
QString generate(const Item *root)
{
    W writer;
    return QString::fromUtf8(writer.encode(root));
}

} // namespace

class TestViewers : public QObject
{
    Q_OBJECT

private:
    EditorWindow *m_window = nullptr;

    QDialog *openViewer(QAction *action) { return dialogOpenedBy(m_window, action); }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("zatedit-tests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_viewers"));
        QSettings().clear();
    }

    void init()
    {
        m_window = new EditorWindow;
        m_window->initialize(QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef"), QString());
        // A code font with every property set, so that the viewer's font can be compared whole.
        m_window->model()->setFixedFont(QFont(QStringLiteral("DejaVu Sans Mono"), 13));
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
    }

    void cleanup()
    {
        m_window->undoStack()->setClean();
        delete m_window;
        m_window = nullptr;
    }

    void viewers_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("highlighter");
        QTest::newRow("header") << "m_act_view_header"
                                << "ZAT16 generated header"
                                << "HighlighterC";
        QTest::newRow("lua") << "m_act_view_lua"
                             << "ZAT16 generated Lua"
                             << "HighlighterLua";
        QTest::newRow("c++") << "m_act_view_cpp"
                             << "ZAT16 generated C++"
                             << "";
        QTest::newRow("c++ lookup tables") << "m_act_view_cpp_lut"
                                           << "ZAT16 generated C++ Lookup Tables"
                                           << "";
        QTest::newRow("c#") << "m_act_view_cs"
                            << "ZAT16 generated C#"
                            << "";
    }

    void viewers()
    {
        QFETCH(QString, action);
        QFETCH(QString, title);
        QFETCH(QString, highlighter);
        const Item *root = m_window->model()->root();
        const QHash<QString, QString> expected = {
            { QStringLiteral("m_act_view_header"), generate<WriterHeader>(root) },
            { QStringLiteral("m_act_view_lua"), generate<WriterLua>(root) },
            { QStringLiteral("m_act_view_cpp"), generate<WriterCpp>(root) },
            { QStringLiteral("m_act_view_cpp_lut"), generate<WriterCppLut>(root) },
            { QStringLiteral("m_act_view_cs"), generate<WriterCs>(root) },
        };

        QDialog *viewer = openViewer(m_window->findChild<QAction *>(action));
        QVERIFY(viewer);
        QCOMPARE(viewer->windowTitle(), title);
        QVERIFY(viewer->isVisible());
        QVERIFY(!viewer->isModal());
        QVERIFY(viewer->testAttribute(Qt::WA_DeleteOnClose));

        auto *edit = viewer->findChild<QTextEdit *>();
        QVERIFY(edit);
        QVERIFY(edit->isReadOnly());
        QCOMPARE(edit->toPlainText(), expected.value(action));
        QCOMPARE(edit->font().family(), QStringLiteral("DejaVu Sans Mono"));
        QCOMPARE(edit->font().pointSize(), 13);
        const QFontMetrics metrics(edit->font());
        QCOMPARE(viewer->size(),
                 QSize(80 * metrics.horizontalAdvance(QLatin1Char('M')) + 64, 25 * metrics.lineSpacing() + 16));

        const QList<QSyntaxHighlighter *> highlighters = edit->findChildren<QSyntaxHighlighter *>();
        if (highlighter.isEmpty()) {
            QVERIFY(highlighters.isEmpty());
        } else {
            QCOMPARE(highlighters.size(), 1);
            QCOMPARE(QString::fromLatin1(highlighters.first()->metaObject()->className()), highlighter);
            QCOMPARE(highlighters.first()->document(), edit->document());
        }

        QPointer<QDialog> guard(viewer);
        viewer->close();
        QTRY_VERIFY(guard.isNull());
    }

    void viewersDoNotFollowEdits()
    {
        QDialog *header = openViewer(m_window->ui()->m_act_view_header);
        QDialog *lua = openViewer(m_window->ui()->m_act_view_lua);
        QVERIFY(header && lua);
        QVERIFY(header != lua);
        const QString headerText = header->findChild<QTextEdit *>()->toPlainText();
        const QString luaText = lua->findChild<QTextEdit *>()->toPlainText();

        EditorModel *model = m_window->model();
        QVERIFY(model->setData(model->index(2, 0), QStringLiteral("Renamed"), Qt::EditRole));
        QCOMPARE(header->findChild<QTextEdit *>()->toPlainText(), headerText);
        m_window->ui()->m_act_new->trigger();
        QCOMPARE(model->rowCount(), 0);
        QCOMPARE(header->findChild<QTextEdit *>()->toPlainText(), headerText);
        QCOMPARE(lua->findChild<QTextEdit *>()->toPlainText(), luaText);
        // A new viewer shows the document as it is now.
        QDialog *after = openViewer(m_window->ui()->m_act_view_header);
        QVERIFY(after);
        QCOMPARE(after->findChild<QTextEdit *>()->toPlainText(), generate<WriterHeader>(model->root()));
    }
};

QTEST_MAIN(TestViewers)
#include "tst_viewers.moc"
