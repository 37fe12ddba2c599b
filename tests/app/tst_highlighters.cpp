#include "highlighterc.h"
#include "highlighterlua.h"

#include <QAbstractTextDocumentLayout>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextEdit>
#include <QTextLayout>

namespace {

// The format the highlighter gave the character at `pos` of block `block`.
QTextCharFormat formatAt(const QTextDocument &document, int block, int pos)
{
    const QTextBlock b = document.findBlockByNumber(block);
    for (const QTextLayout::FormatRange &range : b.layout()->formats()) {
        if (pos >= range.start && pos < range.start + range.length)
            return range.format;
    }
    return QTextCharFormat();
}

enum Kind { Plain, Keyword, Comment };

// Expected colouring: the foreground and the weight.
QString describe(const QTextCharFormat &format)
{
    if (!format.hasProperty(QTextFormat::ForegroundBrush))
        return QStringLiteral("plain");
    return format.foreground().color().name() + (format.fontWeight() == QFont::Bold ? " bold" : "");
}

const QString cKeyword = QColor(Qt::darkBlue).name() + " bold";
const QString luaKeyword = QColor(Qt::blue).name() + " bold";
const QString comment = QColor(Qt::darkRed).name();
const QString plain = QStringLiteral("plain");

// Each character of the block `block` in [from, to) has the description `expected`.
bool spanIs(const QTextDocument &document, int block, int from, int to, const QString &expected)
{
    for (int pos = from; pos < to; ++pos) {
        const QString actual = describe(formatAt(document, block, pos));
        if (actual != expected) {
            qWarning("block %d position %d: %s, expected %s", block, pos, qPrintable(actual), qPrintable(expected));
            return false;
        }
    }
    return true;
}

} // namespace

class TestHighlighters : public QObject
{
    Q_OBJECT

private slots:
    void cKeywords_data();
    void cKeywords();
    void luaKeywords_data();
    void luaKeywords();
    void keywordsNeedWordBoundaries();
    void cSingleLineComment();
    void cMultiLineComment();
    void cSeveralCommentsInOneLine();
    void luaBothCommentForms();
    void luaMultiLineComment();
    void editingReopensAComment();
    void generatedHeaderExcerpt();
    void inAReadOnlyTextEdit();
};

static const char *const cWords[] = {
    "char",      "class",    "const",   "double",    "enum",   "explicit", "friend",  "inline", "int",      "long",
    "namespace", "operator", "private", "protected", "public", "short",    "signals", "signed", "slots",    "static",
    "struct",    "template", "typedef", "typename",  "union",  "unsigned", "virtual", "void",   "volatile",
};

static const char *const luaWords[] = {
    "and", "break", "continue", "do",  "else", "elseif", "end",    "false", "for",  "function", "if",
    "in",  "local", "nil",      "not", "or",   "repeat", "return", "then",  "true", "until",    "while",
};

void TestHighlighters::cKeywords_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("expected");
    for (const char *word : cWords)
        QTest::newRow(word) << QString(word) << cKeyword;
    // Not C keywords here
    for (const char *word : { "if", "return", "local", "define", "bool", "Int" })
        QTest::newRow(word) << QString(word) << plain;
}

void TestHighlighters::cKeywords()
{
    QFETCH(QString, word);
    QFETCH(QString, expected);
    QTextDocument document;
    document.documentLayout(); // as in a text edit: without a layout the document reports no changes
    new HighlighterC(&document);
    document.setPlainText("x " + word + " y");
    QVERIFY(spanIs(document, 0, 0, 2, plain));
    QVERIFY(spanIs(document, 0, 2, 2 + word.size(), expected));
    QVERIFY(spanIs(document, 0, 2 + word.size(), 4 + word.size(), plain));
}

void TestHighlighters::luaKeywords_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("expected");
    for (const char *word : luaWords)
        QTest::newRow(word) << QString(word) << luaKeyword;
    for (const char *word : { "int", "void", "struct", "goto", "End" })
        QTest::newRow(word) << QString(word) << plain;
}

void TestHighlighters::luaKeywords()
{
    QFETCH(QString, word);
    QFETCH(QString, expected);
    QTextDocument document;
    document.documentLayout(); // as in a text edit: without a layout the document reports no changes
    new HighlighterLua(&document);
    document.setPlainText("x " + word + " y");
    QVERIFY(spanIs(document, 0, 0, 2, plain));
    QVERIFY(spanIs(document, 0, 2, 2 + word.size(), expected));
    QVERIFY(spanIs(document, 0, 2 + word.size(), 4 + word.size(), plain));
}

void TestHighlighters::keywordsNeedWordBoundaries()
{
    QTextDocument document;
    document.documentLayout(); // as in a text edit: without a layout the document reports no changes
    new HighlighterC(&document);
    document.setPlainText("integer print_int int_t uint8 (int)");
    QVERIFY(spanIs(document, 0, 0, 30, plain));
    QVERIFY(spanIs(document, 0, 31, 34, cKeyword));
}

void TestHighlighters::cSingleLineComment()
{
    QTextDocument document;
    document.documentLayout(); // as in a text edit: without a layout the document reports no changes
    new HighlighterC(&document);
    //                 0         1         2
    //                 0123456789012345678901234567
    document.setPlainText("static int x; // int comment\nint y;");
    QVERIFY(spanIs(document, 0, 0, 6, cKeyword));
    QVERIFY(spanIs(document, 0, 6, 7, plain));
    QVERIFY(spanIs(document, 0, 7, 10, cKeyword));
    QVERIFY(spanIs(document, 0, 10, 14, plain));
    // The comment wins over the keyword inside it, up to the end of the line only.
    QVERIFY(spanIs(document, 0, 14, 28, comment));
    QVERIFY(spanIs(document, 1, 0, 3, cKeyword));
    QVERIFY(spanIs(document, 1, 3, 6, plain));
    QCOMPARE(document.findBlockByNumber(0).userState(), 0);
}

void TestHighlighters::cMultiLineComment()
{
    QTextDocument document;
    document.documentLayout(); // as in a text edit: without a layout the document reports no changes
    new HighlighterC(&document);
    document.setPlainText("int a; /* first\n"
                          "   int middle\n"
                          "\n"
                          "   last */ int after;\n"
                          "void b;");
    QVERIFY(spanIs(document, 0, 0, 3, cKeyword));
    QVERIFY(spanIs(document, 0, 3, 7, plain));
    QVERIFY(spanIs(document, 0, 7, 15, comment));
    QVERIFY(spanIs(document, 1, 0, 13, comment));
    QVERIFY(spanIs(document, 3, 0, 10, comment)); // "   last */"
    QVERIFY(spanIs(document, 3, 10, 11, plain));
    QVERIFY(spanIs(document, 3, 11, 14, cKeyword));
    QVERIFY(spanIs(document, 3, 14, 21, plain));
    QVERIFY(spanIs(document, 4, 0, 4, cKeyword));
    QCOMPARE(document.findBlockByNumber(0).userState(), 1);
    QCOMPARE(document.findBlockByNumber(1).userState(), 1);
    QCOMPARE(document.findBlockByNumber(2).userState(), 1);
    QCOMPARE(document.findBlockByNumber(3).userState(), 0);
    QCOMPARE(document.findBlockByNumber(4).userState(), 0);
}

void TestHighlighters::cSeveralCommentsInOneLine()
{
    QTextDocument document;
    document.documentLayout(); // as in a text edit: without a layout the document reports no changes
    new HighlighterC(&document);
    //                     0         1         2
    //                     0123456789012345678901234567
    document.setPlainText("/* a */ int /* b */ x /* c");
    QVERIFY(spanIs(document, 0, 0, 7, comment));
    QVERIFY(spanIs(document, 0, 8, 11, cKeyword));
    QVERIFY(spanIs(document, 0, 12, 19, comment));
    QVERIFY(spanIs(document, 0, 19, 22, plain));
    QVERIFY(spanIs(document, 0, 22, 26, comment));
    QCOMPARE(document.findBlockByNumber(0).userState(), 1);
}

void TestHighlighters::luaBothCommentForms()
{
    QTextDocument document;
    document.documentLayout(); // as in a text edit: without a layout the document reports no changes
    new HighlighterLua(&document);
    //                     0         1         2
    //                     0123456789012345678901234567
    document.setPlainText("local a = 1 -- end of a\n"
                          "return nil // if not\n"
                          "x = 2 - 1");
    QVERIFY(spanIs(document, 0, 0, 5, luaKeyword));
    QVERIFY(spanIs(document, 0, 5, 12, plain));
    QVERIFY(spanIs(document, 0, 12, 23, comment));
    QVERIFY(spanIs(document, 1, 0, 6, luaKeyword));
    QVERIFY(spanIs(document, 1, 7, 10, luaKeyword));
    QVERIFY(spanIs(document, 1, 11, 20, comment));
    QVERIFY(spanIs(document, 2, 0, 9, plain)); // a single minus is no comment
}

void TestHighlighters::luaMultiLineComment()
{
    QTextDocument document;
    document.documentLayout(); // as in a text edit: without a layout the document reports no changes
    new HighlighterLua(&document);
    document.setPlainText("zat16 = {} /* tables\n"
                          "   for the end\n"
                          "*/ return zat16");
    QVERIFY(spanIs(document, 0, 0, 11, plain));
    QVERIFY(spanIs(document, 0, 11, 20, comment));
    QVERIFY(spanIs(document, 1, 0, 14, comment));
    QVERIFY(spanIs(document, 2, 0, 2, comment));
    QVERIFY(spanIs(document, 2, 3, 9, luaKeyword));
    QVERIFY(spanIs(document, 2, 9, 15, plain));
}

void TestHighlighters::editingReopensAComment()
{
    QTextDocument document;
    document.documentLayout(); // as in a text edit: without a layout the document reports no changes
    new HighlighterC(&document);
    document.setPlainText("int a;\nint b;\nint c;");
    QVERIFY(spanIs(document, 2, 0, 3, cKeyword));
    // Opening a comment in the first line colours the following lines as well.
    QTextCursor cursor(&document);
    cursor.insertText("/* ");
    QVERIFY(spanIs(document, 0, 0, 9, comment));
    QVERIFY(spanIs(document, 1, 0, 6, comment));
    QVERIFY(spanIs(document, 2, 0, 6, comment));
}

void TestHighlighters::generatedHeaderExcerpt()
{
    // The start of a generated C header: its comment block and guard.
    QTextDocument document;
    document.documentLayout(); // as in a text edit: without a layout the document reports no changes
    new HighlighterC(&document);
    document.setPlainText("/*\n"
                          " * ZAT16 tag definitions (generated, do not edit)\n"
                          " */\n"
                          "#ifndef ZAT16_TAGS_H\n"
                          "#define ZAT16_TAGS_H\n"
                          "#define TAG_MODE 0x1002 // Operating mode\n");
    QVERIFY(spanIs(document, 0, 0, 2, comment));
    QVERIFY(spanIs(document, 1, 0, 49, comment));
    QVERIFY(spanIs(document, 2, 0, 3, comment));
    QVERIFY(spanIs(document, 3, 0, 20, plain));
    QVERIFY(spanIs(document, 5, 0, 24, plain));
    QVERIFY(spanIs(document, 5, 24, 41, comment));
}

void TestHighlighters::inAReadOnlyTextEdit()
{
    // The way a viewer uses it: the text edit is the highlighter's parent, the text comes after.
    QTextEdit edit;
    auto *highlighter = new HighlighterLua(edit.document());
    highlighter->setParent(&edit);
    edit.setPlainText("local t = {} -- tags\n/* a\nb */");
    edit.setReadOnly(true);
    QVERIFY(spanIs(*edit.document(), 0, 0, 5, luaKeyword));
    QVERIFY(spanIs(*edit.document(), 0, 13, 20, comment));
    QVERIFY(spanIs(*edit.document(), 1, 0, 3, comment));
    QVERIFY(spanIs(*edit.document(), 2, 0, 4, comment));
}

QTEST_MAIN(TestHighlighters)
#include "tst_highlighters.moc"
