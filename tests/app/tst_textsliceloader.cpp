// TextSliceLoader: a text put into a text edit a slice at a time ends up as it would have been
// set at once, with the highlighter's formats of every block as a highlighter attached the usual
// way gives them, also where /* */ comments run over slice boundaries and the view is scrolled
// while slices are coming in; loading stops at the height limit.

#include "highlighterc.h"
#include "highlighterlua.h"
#include "textsliceloader.h"

#include <QAbstractTextDocumentLayout>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextEdit>
#include <QTextLayout>

#include <functional>

namespace {

// C lines with /* */ comments of one to seven lines, keywords and // comments, so that slices
// of every size used below start and end inside comments as well as outside them. Some lines
// end in CR LF, which the document takes as one line end.
QString cText(int comments)
{
    QString text;
    for (int i = 0; i < comments; ++i) {
        const int middle = i % 7;
        text += QStringLiteral("int value%1; /* opens here\n").arg(i);
        for (int line = 0; line < middle; ++line)
            text += QStringLiteral("   const inside %1 // not a line comment\n").arg(line);
        text += QStringLiteral("   closes */ unsigned after%1; // tail\r\n").arg(i);
        text += QStringLiteral("#define X%1 0x%2 /* one line */ /* and one more\n")
                    .arg(i)
                    .arg(i, 4, 16, QLatin1Char('0'));
        text += QStringLiteral("*/ static void f%1();\n").arg(i);
    }
    return text;
}

// The same for Lua, with its keywords and both kinds of line comments.
QString luaText(int comments)
{
    QString text;
    for (int i = 0; i < comments; ++i) {
        const int middle = i % 5;
        text += QStringLiteral("local t%1 = {} -- note /* not here\n").arg(i);
        text += QStringLiteral("zat16.t%1 = 1 /* opens\n").arg(i);
        for (int line = 0; line < middle; ++line)
            text += QStringLiteral("  while true do end\n");
        text += QStringLiteral("*/ return nil // if not\n");
    }
    return text;
}

// The viewer as it was: the highlighter attached to the text edit's document, then all of the
// text set at once.
void setTheOldWay(QTextEdit *edit, QSyntaxHighlighter *highlighter, const QString &text)
{
    highlighter->setDocument(edit->document());
    highlighter->setParent(edit);
    edit->setPlainText(text);
}

QString describe(const QTextCharFormat &format)
{
    if (!format.hasProperty(QTextFormat::ForegroundBrush))
        return QStringLiteral("plain");
    return format.foreground().color().name() + (format.fontWeight() == QFont::Bold ? " bold" : "");
}

QString describeBlock(const QTextBlock &block)
{
    QString line
        = QStringLiteral("block %1 state %2 \"%3\"").arg(block.blockNumber()).arg(block.userState()).arg(block.text());
    for (const QTextLayout::FormatRange &range : block.layout()->formats())
        line += QStringLiteral(" [%1+%2 %3]").arg(range.start).arg(range.length).arg(describe(range.format));
    return line;
}

// Empty when both documents have the same blocks with the same texts, states, highlighter
// formats and character formats; otherwise the first difference.
QString firstDifference(const QTextDocument *actual, const QTextDocument *expected)
{
    if (actual->blockCount() != expected->blockCount())
        return QStringLiteral("%1 blocks, expected %2").arg(actual->blockCount()).arg(expected->blockCount());
    for (QTextBlock a = actual->begin(), e = expected->begin(); a.isValid(); a = a.next(), e = e.next()) {
        const QString is = describeBlock(a);
        const QString was = describeBlock(e);
        if (is != was || a.layout()->formats() != e.layout()->formats())
            return is + QStringLiteral("\nexpected\n") + was;
        if (a.charFormat() != e.charFormat() || a.blockFormat() != e.blockFormat())
            return QStringLiteral("block %1: another block or character format").arg(a.blockNumber());
        QTextBlock::iterator f = e.begin();
        for (QTextBlock::iterator it = a.begin(); !it.atEnd(); ++it, ++f) {
            if (f.atEnd() || it.fragment().position() != f.fragment().position()
                || it.fragment().length() != f.fragment().length()
                || it.fragment().charFormat() != f.fragment().charFormat())
                return QStringLiteral("block %1: other text fragments").arg(a.blockNumber());
        }
        if (!f.atEnd())
            return QStringLiteral("block %1: fewer text fragments").arg(a.blockNumber());
    }
    return QString();
}

// The blocks that end a slice of `linesPerSlice` lines inside a /* */ comment.
int slicesEndingInAComment(const QTextDocument *document, int linesPerSlice)
{
    int count = 0;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        if (block.blockNumber() % linesPerSlice == linesPerSlice - 1 && block.userState() == 1)
            ++count;
    }
    return count;
}

} // namespace

using MakeHighlighter = std::function<QSyntaxHighlighter *()>;
Q_DECLARE_METATYPE(MakeHighlighter)

class TestTextSliceLoader : public QObject
{
    Q_OBJECT

private slots:
    void sameAsSetAtOnce_data()
    {
        QTest::addColumn<MakeHighlighter>("makeHighlighter");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("linesPerSlice");
        const MakeHighlighter c = []() -> QSyntaxHighlighter * { return new HighlighterC; };
        const MakeHighlighter lua = []() -> QSyntaxHighlighter * { return new HighlighterLua; };
        QTest::newRow("c, a line per slice") << c << cText(30) << 1;
        QTest::newRow("c, 2 lines per slice") << c << cText(30) << 2;
        QTest::newRow("c, 3 lines per slice") << c << cText(30) << 3;
        QTest::newRow("c, 7 lines per slice") << c << cText(60) << 7;
        QTest::newRow("c, 50 lines per slice") << c << cText(400) << 50;
        QTest::newRow("c, no line feed at the end") << c << cText(30) + QStringLiteral("int last; /* open") << 4;
        QTest::newRow("lua, a line per slice") << lua << luaText(30) << 1;
        QTest::newRow("lua, 3 lines per slice") << lua << luaText(30) << 3;
        QTest::newRow("lua, 4 lines per slice") << lua << luaText(60) << 4;
        QTest::newRow("lua, 51 lines per slice") << lua << luaText(400) << 51;
    }

    void sameAsSetAtOnce()
    {
        QFETCH(MakeHighlighter, makeHighlighter);
        QFETCH(QString, text);
        QFETCH(int, linesPerSlice);

        QTextEdit expected;
        setTheOldWay(&expected, makeHighlighter(), text);
        QCOMPARE(expected.toPlainText(), QString(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
        // The text is one that tests what it should: slices end inside comments.
        QVERIFY(slicesEndingInAComment(expected.document(), linesPerSlice) >= 3);

        QTextEdit edit;
        edit.resize(400, 200);
        QSyntaxHighlighter *highlighter = makeHighlighter();
        highlighter->setDocument(edit.document());
        highlighter->setParent(&edit);
        auto *loader = new TextSliceLoader(&edit, text, linesPerSlice);
        QCOMPARE(loader->parent(), &edit);
        QCOMPARE(edit.document()->blockCount(), linesPerSlice + 1);
        QVERIFY(!loader->isFinished());
        QVERIFY(!edit.isUndoRedoEnabled());
        QSignalSpy finished(loader, &TextSliceLoader::finished);
        QSignalSpy truncated(loader, &TextSliceLoader::truncated);

        // Scrolled to the end of what is there while the slices come in.
        edit.show();
        QVERIFY(QTest::qWaitForWindowExposed(&edit));
        int turns = 0;
        while (!loader->isFinished()) {
            edit.verticalScrollBar()->setValue(edit.verticalScrollBar()->maximum());
            QCoreApplication::processEvents();
            ++turns;
        }
        QVERIFY(turns >= 2);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(truncated.count(), 0);
        QCOMPARE(loader->loadedLength(), text.size());

        QCOMPARE(edit.toPlainText(), expected.toPlainText());
        QCOMPARE(firstDifference(edit.document(), expected.document()), QString());
    }

    // The formats themselves, where a comment runs over the end of the first slice and through
    // the whole second one.
    void commentOverSlices()
    {
        QTextEdit edit;
        new HighlighterC(edit.document());
        auto *loader = new TextSliceLoader(&edit,
                                           QStringLiteral("int a; /* one\n"
                                                          "two\n"
                                                          "three\n"
                                                          "four */ int b;\n"
                                                          "void c;\n"),
                                           2);
        QTRY_VERIFY(loader->isFinished());
        const QTextDocument *document = edit.document();
        QCOMPARE(document->blockCount(), 6);
        QCOMPARE(describeBlock(document->findBlockByNumber(0)),
                 QStringLiteral("block 0 state 1 \"int a; /* one\" [0+3 #000080 bold] [7+6 #800000]"));
        QCOMPARE(describeBlock(document->findBlockByNumber(1)),
                 QStringLiteral("block 1 state 1 \"two\" [0+3 #800000]"));
        QCOMPARE(describeBlock(document->findBlockByNumber(2)),
                 QStringLiteral("block 2 state 1 \"three\" [0+5 #800000]"));
        QCOMPARE(describeBlock(document->findBlockByNumber(3)),
                 QStringLiteral("block 3 state 0 \"four */ int b;\" [0+7 #800000] [8+3 #000080 bold]"));
        QCOMPARE(describeBlock(document->findBlockByNumber(4)),
                 QStringLiteral("block 4 state 0 \"void c;\" [0+4 #000080 bold]"));
    }

    void shortTextInOneGo()
    {
        QTextEdit edit;
        new HighlighterLua(edit.document());
        auto *loader = new TextSliceLoader(&edit, QStringLiteral("local a\n-- b\n"), 2);
        QSignalSpy finished(loader, &TextSliceLoader::finished);
        QVERIFY(loader->isFinished());
        QCOMPARE(loader->loadedLines(), 2);
        QCOMPARE(edit.toPlainText(), QStringLiteral("local a\n-- b\n"));
        QCOMPARE(describeBlock(edit.document()->findBlockByNumber(1)),
                 QStringLiteral("block 1 state 0 \"-- b\" [0+4 #800000]"));
        QCoreApplication::processEvents();
        QCOMPARE(finished.count(), 0);

        QTextEdit empty;
        auto *none = new TextSliceLoader(&empty, QString(), 2);
        QVERIFY(none->isFinished());
        QCOMPARE(none->loadedLines(), 0);
        QVERIFY(empty.document()->isEmpty());
    }

    void stopsAtTheHeightLimit()
    {
        QString text;
        for (int i = 0; i < 1000; ++i)
            text += QStringLiteral("line %1\n").arg(i);
        QTextEdit edit;
        edit.resize(300, 200);
        // Hidden, the text edit gives its document no page size, and nothing is laid out.
        edit.show();
        const qreal limit = 600;
        auto *loader = new TextSliceLoader(&edit, text, 10, limit);
        QSignalSpy finished(loader, &TextSliceLoader::finished);
        QSignalSpy truncated(loader, &TextSliceLoader::truncated);
        QTRY_VERIFY(loader->isFinished());
        QCOMPARE(finished.count(), 0);
        QCOMPARE(truncated.count(), 1);
        const int shown = truncated.first().at(0).toInt();
        QCOMPARE(truncated.first().at(1).toInt(), 1000);
        QCOMPARE(shown, loader->loadedLines());
        QVERIFY(shown > 10 && shown < 1000);
        QCOMPARE(shown % 10, 0);

        // Whole lines from the start, up to the slice that reached the limit.
        QString lines;
        for (int i = 0; i < shown; ++i)
            lines += QStringLiteral("line %1\n").arg(i);
        QCOMPARE(edit.toPlainText(), lines);
        QCOMPARE(loader->loadedLength(), lines.size());
        const QAbstractTextDocumentLayout *layout = edit.document()->documentLayout();
        QVERIFY(layout->documentSize().height() >= limit);
        QVERIFY(layout->blockBoundingRect(edit.document()->findBlockByNumber(shown - 10)).top() < limit);
    }
};

QTEST_MAIN(TestTextSliceLoader)
#include "tst_textsliceloader.moc"
