// Viewers of texts longer than one slice: the first screen is there and coloured when the viewer
// is shown, the rest follows from the event loop, a viewer closed while text is still coming in
// goes away cleanly, and a text too tall for the text edit's layout is cut at whole lines with a
// note saying so.

#include "editormodel.h"
#include "editorwindow.h"
#include "highlighterc.h"
#include "textsliceloader.h"

#include <QAbstractTextDocumentLayout>
#include <QDialog>
#include <QLabel>
#include <QPointer>
#include <QSettings>
#include <QStandardPaths>
#include <QTest>
#include <QTextBlock>
#include <QTextEdit>
#include <QTextLayout>
#include <QUndoStack>

using namespace ZAT16;

namespace {

// Line i: a keyword, a name and a line comment.
QString cLine(int i)
{
    return QStringLiteral("int v%1; // c\n").arg(i, 5, 10, QLatin1Char('0'));
}

QString cLines(int count)
{
    QString text;
    for (int i = 0; i < count; ++i)
        text += cLine(i);
    return text;
}

// The highlighter's formats of a block of cLines(): "int" in bold dark blue, the comment in
// dark red.
bool isColoured(const QTextBlock &block)
{
    const QList<QTextLayout::FormatRange> formats = block.layout()->formats();
    if (formats.size() != 2) {
        qWarning("block %d has %d format ranges", block.blockNumber(), int(formats.size()));
        return false;
    }
    const QTextLayout::FormatRange &keyword = formats.at(0);
    const QTextLayout::FormatRange &comment = formats.at(1);
    return keyword.start == 0 && keyword.length == 3 && keyword.format.foreground().color() == QColor(Qt::darkBlue)
        && keyword.format.fontWeight() == QFont::Bold && comment.start == 12 && comment.length == 4
        && comment.format.foreground().color() == QColor(Qt::darkRed);
}

} // namespace

class TestLongViewers : public QObject
{
    Q_OBJECT

private:
    EditorWindow *m_window = nullptr;

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("zatedit-tests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_longviewers"));
        QSettings().clear();
        // The note's numbers without group separators.
        QLocale::setDefault(QLocale::c());
    }

    void init()
    {
        m_window = new EditorWindow;
        m_window->initialize(QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef"), QString());
        m_window->model()->setFixedFont(QFont(QStringLiteral("DejaVu Sans Mono"), 10));
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
    }

    void cleanup()
    {
        m_window->undoStack()->setClean();
        delete m_window;
        m_window = nullptr;
    }

    void firstScreenColouredWhenShown()
    {
        const int lines = 3 * TextSliceLoader::DefaultLinesPerSlice + 17;
        const QString text = cLines(lines);
        QDialog *viewer = m_window->createViewer(QStringLiteral("long"), new HighlighterC, text);
        QVERIFY(viewer->isVisible());
        auto *edit = viewer->findChild<QTextEdit *>();
        QVERIFY(edit);
        // Not all of it yet, and what is there is coloured.
        const QTextDocument *document = edit->document();
        QCOMPARE(document->blockCount(), TextSliceLoader::DefaultLinesPerSlice + 1);
        for (QTextBlock block = document->begin(); block.isValid() && block.next().isValid(); block = block.next())
            QVERIFY(isColoured(block));

        // The blocks on screen when it is painted.
        QVERIFY(QTest::qWaitForWindowExposed(viewer));
        const QTextBlock lastVisible = edit->cursorForPosition(QPoint(0, edit->viewport()->height() - 1)).block();
        QVERIFY(lastVisible.blockNumber() >= 20);
        for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
            QVERIFY(isColoured(block));
            if (block == lastVisible)
                break;
        }

        // The rest follows, coloured too.
        auto *loader = edit->findChild<TextSliceLoader *>();
        QVERIFY(loader);
        QTRY_VERIFY_WITH_TIMEOUT(loader->isFinished(), 60000);
        QCOMPARE(edit->toPlainText(), text);
        QCOMPARE(document->blockCount(), lines + 1);
        for (QTextBlock block = document->begin(); block.isValid() && block.next().isValid(); block = block.next())
            QVERIFY(isColoured(block));
        QVERIFY(document->lastBlock().layout()->formats().isEmpty());
    }

    void closedWhileLoading()
    {
        const QString text = cLines(100 * TextSliceLoader::DefaultLinesPerSlice);
        QDialog *viewer = m_window->createViewer(QStringLiteral("closed at once"), new HighlighterC, text);
        QPointer<QDialog> guard(viewer);
        QVERIFY(!viewer->findChild<TextSliceLoader *>()->isFinished());
        viewer->close();
        QTRY_VERIFY(guard.isNull());

        // Closed after a few slices, and one left open when the window goes.
        viewer = m_window->createViewer(QStringLiteral("closed later"), new HighlighterC, text);
        guard = viewer;
        QTextEdit *edit = viewer->findChild<QTextEdit *>();
        QTRY_VERIFY(edit->document()->blockCount() > 3 * TextSliceLoader::DefaultLinesPerSlice);
        QVERIFY(!viewer->findChild<TextSliceLoader *>()->isFinished());
        viewer->close();
        QTRY_VERIFY(guard.isNull());
        QTest::qWait(50);

        viewer = m_window->createViewer(QStringLiteral("left open"), new HighlighterC, text);
        guard = viewer;
        QCoreApplication::processEvents();
        delete m_window;
        m_window = nullptr;
        QVERIFY(guard.isNull());
        QTest::qWait(50);
        init();
    }

    void tooTallForTheLayout()
    {
        // A large font makes the text edit's layout reach its height limit after a few slices.
        QFont font(QStringLiteral("DejaVu Sans Mono"));
        font.setPixelSize(100);
        m_window->model()->setFixedFont(font);
        const int lines = 40000;
        QString text;
        for (int i = 0; i < lines; ++i)
            text += QStringLiteral("x\n");
        QDialog *viewer = m_window->createViewer(QStringLiteral("tall"), nullptr, text);
        auto *edit = viewer->findChild<QTextEdit *>();
        auto *loader = edit->findChild<TextSliceLoader *>();
        QVERIFY(!viewer->findChild<QLabel *>(QStringLiteral("truncatedNote")));
        QTRY_VERIFY_WITH_TIMEOUT(loader->isFinished(), 120000);

        const int shown = edit->document()->blockCount() - 1;
        QVERIFY(shown < lines);
        QCOMPARE(shown % TextSliceLoader::DefaultLinesPerSlice, 0);
        QVERIFY(edit->document()->documentLayout()->documentSize().height() >= TextSliceLoader::DefaultHeightLimit);
        QCOMPARE(edit->toPlainText(), text.left(2 * shown));
        auto *note = viewer->findChild<QLabel *>(QStringLiteral("truncatedNote"));
        QVERIFY(note);
        QCOMPARE(note->text(),
                 QStringLiteral("The text is too long to be shown whole: these are its first %1 of 40000 lines. "
                                "Save as... and Copy all take the whole text.")
                     .arg(shown));
        QVERIFY(note->isVisible());
        QVERIFY(note->geometry().top() >= edit->geometry().bottom());
    }
};

QTEST_MAIN(TestLongViewers)
#include "tst_longviewers.moc"
