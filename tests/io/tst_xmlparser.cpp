// Tests of the diagnostic XML reader, driven through a small grammar defined here.

#include "testfiles.h"
#include "xmlparser.h"

#include <QtTest>

#include <QTemporaryDir>

#include <functional>

namespace {

// A reader whose grammar is a function given by the test.
class ScriptedParser : public XmlParser
{
public:
    std::function<bool(ScriptedParser &)> grammar;
    int grammarRuns = 0;
    int depthAtStart = -1;

protected:
    bool parser() override
    {
        ++grammarRuns;
        depthAtStart = depth;
        return grammar ? grammar(*this) : true;
    }
};

// A reader that collects warnings itself instead of in `warnings`.
class CollectingParser : public ScriptedParser
{
public:
    QStringList received;

protected:
    void warning(const QString &text) override { received << text; }
};

// One token as text: its name, the element name and the text, for comparing token sequences.
QString describe(const XmlParser &p)
{
    QString text = XmlParser::tokenName(p.tokenType());
    if (p.tokenType() == QXmlStreamReader::StartElement || p.tokenType() == QXmlStreamReader::EndElement)
        text += QLatin1Char(' ') + p.name().toString();
    if (p.tokenType() == QXmlStreamReader::Characters || p.tokenType() == QXmlStreamReader::Comment)
        text += QStringLiteral(" \"") + p.text().toString() + QLatin1Char('"');
    return text;
}

// Reads until the start of the element `name`; false at the end or on an error.
bool readUntil(XmlParser &p, const QString &name)
{
    while (!p.atEnd()) {
        const QXmlStreamReader::TokenType t = p.readNext(XmlParser::SkipCommentsAndWhitespace);
        if (t == QXmlStreamReader::StartElement && p.name() == name)
            return true;
        if (t == QXmlStreamReader::Invalid)
            return false;
    }
    return false;
}

QByteArray nested(int levels)
{
    QByteArray data = "<r>";
    for (int i = 0; i < levels; ++i)
        data += "<e>";
    for (int i = 0; i < levels; ++i)
        data += "</e>";
    data += "</r>";
    return data;
}

} // namespace

class TestXmlParser : public QObject
{
    Q_OBJECT

private slots:
    void freshParserOpenFailure();
    void usedParserOpenFailure();
    void parseFileSetsFileName();
    void parseDataSetsFileName();
    void depthResetOnEachParse();

    void tokenNames_data();
    void tokenNames();

    void formatWithoutDevice();
    void formatLayout();
    void warningsAccumulate();
    void warningIsVirtual();

    void fixedErrors_data();
    void fixedErrors();
    void fixedWarnings();
    void raiseErrorWithoutDevice();

    void readNextSkipMode();
    void readNextKeepMode();

    void skipElementSkipsSubtree();
    void skipElementNesting_data();
    void skipElementNesting();
    void skipElementAtPrematureEnd();

    void readCharacters_data();
    void readCharacters();
};

void TestXmlParser::freshParserOpenFailure()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    ScriptedParser p;
    const QString path = dir.filePath(QStringLiteral("missing/none.zatdef"));
    QVERIFY(!p.parse(path));
    QCOMPARE(p.grammarRuns, 0);
    QVERIFY(p.hasError());
    // The message names the file and says why.
    const QString expected
        = QStringLiteral("Failed to open input file ") + path + QStringLiteral(": No such file or directory");
    QCOMPARE(p.errorString(), expected);
    QCOMPARE(p.formatError(), QStringLiteral("Error: ") + expected);
    QVERIFY(p.fileName.isEmpty());
}

void TestXmlParser::usedParserOpenFailure()
{
    // A parser that has read before still has its earlier input: the failed open changes
    // neither the device nor the file name, so the message carries the old source, its last
    // position and the token name.
    ScriptedParser p;
    p.grammar = [](ScriptedParser &self) {
        while (!self.atEnd())
            self.readNext(XmlParser::SkipCommentsAndWhitespace);
        return !self.hasError();
    };
    QVERIFY(p.parse(QByteArray("<r/>")));
    QCOMPARE(p.tokenType(), QXmlStreamReader::EndDocument);

    QVERIFY(!p.parse(QStringLiteral("/nonexistent/definitely/not/here.zatdef")));
    QCOMPARE(p.grammarRuns, 1);
    QCOMPARE(p.fileName, QStringLiteral("data"));
    QCOMPARE(p.errorString(),
             QStringLiteral(
                 "(EndDocument) Failed to open input file /nonexistent/definitely/not/here.zatdef: No such file "
                 "or directory"));
    QCOMPARE(p.formatError(),
             QStringLiteral("Error: data, Line 1, Column 4:\n  (EndDocument) Failed to open input file "
                            "/nonexistent/definitely/not/here.zatdef: No such file or directory"));
}

void TestXmlParser::parseFileSetsFileName()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("a.xml"));
    QVERIFY(TestFiles::writeFile(path, "<r>\n  <b/>\n</r>\n"));
    ScriptedParser p;
    QString seenName;
    p.grammar = [&](ScriptedParser &self) {
        seenName = self.fileName;
        if (!readUntil(self, QStringLiteral("b")))
            return false;
        self.raiseError(QStringLiteral("stop"));
        return false;
    };
    QVERIFY(!p.parse(path));
    QCOMPARE(p.grammarRuns, 1);
    QCOMPARE(seenName, path);
    QCOMPARE(p.fileName, path);
    QCOMPARE(p.formatError(), QStringLiteral("Error: %1, Line 2, Column 6:\n  (StartElement) stop").arg(path));
}

void TestXmlParser::parseDataSetsFileName()
{
    ScriptedParser p;
    QString seenName;
    p.grammar = [&](ScriptedParser &self) {
        seenName = self.fileName;
        return readUntil(self, QStringLiteral("r"));
    };
    QVERIFY(p.parse(QByteArray("<r/>")));
    QCOMPARE(p.grammarRuns, 1);
    QCOMPARE(seenName, QStringLiteral("data"));
    QCOMPARE(p.fileName, QStringLiteral("data"));

    // the grammar's result is the result
    ScriptedParser q;
    q.grammar = [](ScriptedParser &) { return false; };
    QVERIFY(!q.parse(QByteArray("<r/>")));
}

void TestXmlParser::depthResetOnEachParse()
{
    ScriptedParser p;
    p.grammar = [](ScriptedParser &self) {
        if (!readUntil(self, QStringLiteral("e")))
            return false;
        return self.skipElement();
    };
    QVERIFY(!p.parse(nested(101)));
    QCOMPARE(p.depthAtStart, 0);
    QVERIFY(p.depth != 0);

    p.depth = 42;
    QVERIFY(p.parse(nested(3)));
    QCOMPARE(p.depthAtStart, 0);

    p.depth = 7;
    p.parse(QStringLiteral("/nonexistent/definitely/not/here.zatdef"));
    QCOMPARE(p.depth, 0);
}

void TestXmlParser::tokenNames_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("name");

    QTest::newRow("0") << 0 << QStringLiteral("NoToken");
    QTest::newRow("1") << 1 << QStringLiteral("Invalid");
    QTest::newRow("2") << 2 << QStringLiteral("StartDocument");
    QTest::newRow("3") << 3 << QStringLiteral("EndDocument");
    QTest::newRow("4") << 4 << QStringLiteral("StartElement");
    QTest::newRow("5") << 5 << QStringLiteral("EndElement");
    QTest::newRow("6") << 6 << QStringLiteral("Characters");
    QTest::newRow("7") << 7 << QStringLiteral("Comment");
    QTest::newRow("8") << 8 << QStringLiteral("DTD");
    QTest::newRow("9") << 9 << QStringLiteral("EntityReference");
    QTest::newRow("10") << 10 << QStringLiteral("ProcessingInstruction");
    QTest::newRow("11") << 11 << QStringLiteral("11");
    QTest::newRow("99") << 99 << QStringLiteral("99");
}

void TestXmlParser::tokenNames()
{
    QFETCH(int, type);
    QFETCH(QString, name);
    QCOMPARE(XmlParser::tokenName(QXmlStreamReader::TokenType(type)), name);
}

void TestXmlParser::formatWithoutDevice()
{
    ScriptedParser p;
    QCOMPARE(p.formatEW(QStringLiteral("Note"), QStringLiteral("text")), QStringLiteral("Note: text"));
    QCOMPARE(p.formatError(QStringLiteral("bad")), QStringLiteral("Error: bad"));
    QCOMPARE(p.formatWarning(QStringLiteral("odd")), QStringLiteral("Warning: odd"));

    p.fileName = QStringLiteral("/home/u/a.zatdef");
    QCOMPARE(p.formatEW(QStringLiteral("Note"), QStringLiteral("text")),
             QStringLiteral("Note: /home/u/a.zatdef, text"));
    QCOMPARE(p.formatError(QStringLiteral("bad")), QStringLiteral("Error: /home/u/a.zatdef, bad"));
}

void TestXmlParser::formatLayout()
{
    ScriptedParser p;
    QString warningText;
    QString noteText;
    QString explicitError;
    p.grammar = [&](ScriptedParser &self) {
        if (!readUntil(self, QStringLiteral("bc")))
            return false;
        warningText = self.formatWarning(QStringLiteral("a warning"));
        noteText = self.formatEW(QStringLiteral("Note"), QStringLiteral("a note"));
        explicitError = self.formatError(QStringLiteral("an error"));
        self.raiseError(QStringLiteral("message"));
        return false;
    };
    QVERIFY(!p.parse(QByteArray("<r>\n  <a/>\n <bc>x</bc></r>\n")));
    QCOMPARE(p.errorString(), QStringLiteral("(StartElement) message"));
    QCOMPARE(p.formatError(), QStringLiteral("Error: data, Line 3, Column 5:\n  (StartElement) message"));
    QCOMPARE(warningText, QStringLiteral("Warning: data, Line 3, Column 5:\n  a warning"));
    QCOMPARE(noteText, QStringLiteral("Note: data, Line 3, Column 5:\n  a note"));
    QCOMPARE(explicitError, QStringLiteral("Error: data, Line 3, Column 5:\n  an error"));
}

void TestXmlParser::warningsAccumulate()
{
    ScriptedParser p;
    p.grammar = [](ScriptedParser &self) {
        if (!readUntil(self, QStringLiteral("a")))
            return false;
        self.raiseWarning(QStringLiteral("one"));
        if (!readUntil(self, QStringLiteral("b")))
            return false;
        self.raiseWarning(QStringLiteral("two"));
        while (!self.atEnd())
            self.readNext(XmlParser::SkipCommentsAndWhitespace);
        return !self.hasError();
    };
    QVERIFY(p.parse(QByteArray("<r><a/>\n<b/></r>")));
    QVERIFY(!p.hasError());
    QCOMPARE(p.warnings,
             QStringLiteral("Warning: data, Line 1, Column 7:\n  one\n"
                            "Warning: data, Line 2, Column 4:\n  two\n"));

    // warnings of a later parse are added to the earlier ones
    p.grammar = [](ScriptedParser &self) {
        self.raiseWarning(QStringLiteral("three"));
        return true;
    };
    QVERIFY(p.parse(QByteArray("<r/>")));
    QVERIFY(p.warnings.startsWith(QStringLiteral("Warning: data, Line 1, Column 7:\n  one\n")));
    QVERIFY(p.warnings.endsWith(QStringLiteral("  three\n")));
    QCOMPARE(p.warnings.count(QLatin1String("Warning: ")), 3);
}

void TestXmlParser::warningIsVirtual()
{
    CollectingParser p;
    p.grammar = [](ScriptedParser &self) {
        if (!readUntil(self, QStringLiteral("a")))
            return false;
        self.raiseWarning(QStringLiteral("one"));
        self.raiseUnexpectedCharactersWarning();
        return true;
    };
    QVERIFY(p.parse(QByteArray("<r><a/></r>")));
    QCOMPARE(p.received,
             QStringList({ QStringLiteral("Warning: data, Line 1, Column 7:\n  one"),
                           QStringLiteral("Warning: data, Line 1, Column 7:\n  Unexpected characters encountered") }));
    QVERIFY(p.warnings.isEmpty());
}

void TestXmlParser::fixedErrors_data()
{
    QTest::addColumn<int>("which");
    QTest::addColumn<QString>("message");

    QTest::newRow("unexpected end") << 0 << QStringLiteral("(StartElement) Unexpected end of document");
    QTest::newRow("end element expected") << 1 << QStringLiteral("(StartElement) End element expected.");
    QTest::newRow("start element expected") << 2 << QStringLiteral("(StartElement) Start of element expected.");
}

void TestXmlParser::fixedErrors()
{
    QFETCH(int, which);
    QFETCH(QString, message);

    ScriptedParser p;
    p.grammar = [which](ScriptedParser &self) {
        if (!readUntil(self, QStringLiteral("a")))
            return false;
        switch (which) {
        case 0:
            self.raiseUnexpectedEndError();
            break;
        case 1:
            self.raiseEndElementExpectedError();
            break;
        default:
            self.raiseStartElementExpectedError();
            break;
        }
        return false;
    };
    QVERIFY(!p.parse(QByteArray("<r>\n<a>")));
    QVERIFY(p.hasError());
    QCOMPARE(p.errorString(), message);
    QCOMPARE(p.formatError(), QStringLiteral("Error: data, Line 2, Column 3:\n  ") + message);
    // after the error the reader shows the token as Invalid
    QCOMPARE(p.tokenType(), QXmlStreamReader::Invalid);
}

void TestXmlParser::fixedWarnings()
{
    ScriptedParser p;
    p.grammar = [](ScriptedParser &self) {
        if (!readUntil(self, QStringLiteral("item")))
            return false;
        self.raiseUnexpectedCharactersWarning();
        self.raiseUnexpectedElementWarning(QString());
        self.raiseUnexpectedElementWarning(QStringLiteral("<tag>"));
        self.raiseUnexpectedElementWarning(QStringLiteral("enum or bit"));
        return true;
    };
    QVERIFY(p.parse(QByteArray("<r>\n  <item/>\n</r>")));
    QVERIFY(!p.hasError());
    const QString at = QStringLiteral("Warning: data, Line 2, Column 9:\n  ");
    QCOMPARE(p.warnings,
             at + QStringLiteral("Unexpected characters encountered\n") + at
                 + QStringLiteral("Unexpected element <item>.\n") + at
                 + QStringLiteral("Unexpected element <item>. Expected <tag>.\n") + at
                 + QStringLiteral("Unexpected element <item>. Expected enum or bit.\n"));
}

void TestXmlParser::raiseErrorWithoutDevice()
{
    ScriptedParser p;
    p.raiseError(QStringLiteral("plain"));
    QVERIFY(p.hasError());
    QCOMPARE(p.errorString(), QStringLiteral("plain"));
    QCOMPARE(p.formatError(), QStringLiteral("Error: plain"));
}

// The input for the token reading tests: processing instructions before, inside and after the
// root element, comments and whitespace.
static const char tokenInput[] = "<?xml version=\"1.0\"?>\n"
                                 "<?pi one?>\n"
                                 "<!-- c1 -->\n"
                                 "<a>\n"
                                 "  <?pi two?>\n"
                                 "  <!--c2-->\n"
                                 "  <b>text<?pi inner?></b>\n"
                                 "</a>\n"
                                 "<?pi three?>\n";

static QStringList readAllTokens(XmlParser::ReadMode mode)
{
    QStringList tokens;
    ScriptedParser p;
    p.grammar = [&](ScriptedParser &self) {
        for (int i = 0; i < 100 && !self.atEnd(); ++i) {
            self.readNext(mode);
            tokens << describe(self);
        }
        return !self.hasError();
    };
    if (!p.parse(QByteArray(tokenInput)))
        tokens << QStringLiteral("parse failed: ") + p.errorString();
    return tokens;
}

void TestXmlParser::readNextSkipMode()
{
    const QStringList expected = {
        QStringLiteral("StartDocument"),       QStringLiteral("StartElement a"), QStringLiteral("StartElement b"),
        QStringLiteral("Characters \"text\""), QStringLiteral("EndElement b"),   QStringLiteral("EndElement a"),
        QStringLiteral("EndDocument"),
    };
    QCOMPARE(readAllTokens(XmlParser::SkipCommentsAndWhitespace), expected);
}

void TestXmlParser::readNextKeepMode()
{
    const QStringList expected = {
        QStringLiteral("StartDocument"),       QStringLiteral("Comment \" c1 \""),
        QStringLiteral("StartElement a"),      QStringLiteral("Characters \"\n  \""),
        QStringLiteral("Characters \"\n  \""), QStringLiteral("Comment \"c2\""),
        QStringLiteral("Characters \"\n  \""), QStringLiteral("StartElement b"),
        QStringLiteral("Characters \"text\""), QStringLiteral("EndElement b"),
        QStringLiteral("Characters \"\n\""),   QStringLiteral("EndElement a"),
        QStringLiteral("EndDocument"),
    };
    QCOMPARE(readAllTokens(XmlParser::KeepCommentsAndWhitespace), expected);
}

void TestXmlParser::skipElementSkipsSubtree()
{
    ScriptedParser p;
    QStringList after;
    p.grammar = [&](ScriptedParser &self) {
        if (!readUntil(self, QStringLiteral("u")))
            return false;
        if (!self.skipElement())
            return false;
        if (self.depth != 0)
            return false;
        while (!self.atEnd()) {
            self.readNext(XmlParser::SkipCommentsAndWhitespace);
            after << describe(self);
        }
        return true;
    };
    QVERIFY(p.parse(QByteArray("<r><u a=\"1\">text<!-- c --><?pi?><v><w/>more</v><x></x></u><after/></r>")));
    QCOMPARE(after,
             QStringList({ QStringLiteral("StartElement after"),
                           QStringLiteral("EndElement after"),
                           QStringLiteral("EndElement r"),
                           QStringLiteral("EndDocument") }));
    QVERIFY(p.warnings.isEmpty());
}

void TestXmlParser::skipElementNesting_data()
{
    QTest::addColumn<int>("levels");
    QTest::addColumn<bool>("ok");

    QTest::newRow("1 level") << 1 << true;
    QTest::newRow("99 levels") << 99 << true;
    QTest::newRow("100 levels") << 100 << true;
    QTest::newRow("101 levels") << 101 << false;
    QTest::newRow("150 levels") << 150 << false;
}

void TestXmlParser::skipElementNesting()
{
    QFETCH(int, levels);
    QFETCH(bool, ok);

    ScriptedParser p;
    bool skipped = false;
    QString next;
    p.grammar = [&](ScriptedParser &self) {
        if (!readUntil(self, QStringLiteral("e")))
            return false;
        skipped = self.skipElement();
        if (!skipped)
            return false;
        self.readNext(XmlParser::SkipCommentsAndWhitespace);
        next = describe(self);
        return true;
    };
    QCOMPARE(p.parse(nested(levels)), ok);
    QCOMPARE(skipped, ok);
    if (ok) {
        QCOMPARE(p.depth, 0);
        QCOMPARE(next, QStringLiteral("EndElement r"));
        QVERIFY(!p.hasError());
    } else {
        // the 101st start tag is the one that fails: "<r>" and 101 times "<e>" on line 1
        QCOMPARE(p.depth, 101);
        QCOMPARE(p.errorString(), QStringLiteral("(StartElement) File too deeply nested"));
        QCOMPARE(p.formatError(),
                 QStringLiteral("Error: data, Line 1, Column 306:\n  (StartElement) File too deeply nested"));
    }
}

void TestXmlParser::skipElementAtPrematureEnd()
{
    ScriptedParser p;
    bool skipped = true;
    p.grammar = [&](ScriptedParser &self) {
        if (!readUntil(self, QStringLiteral("e")))
            return false;
        skipped = self.skipElement();
        return skipped;
    };
    QVERIFY(!p.parse(QByteArray("<r><e><f>")));
    QVERIFY(!skipped);
    // the inner level is left, the outer one returns at once
    QCOMPARE(p.depth, 1);
    QCOMPARE(p.error(), QXmlStreamReader::PrematureEndOfDocumentError);
    QCOMPARE(p.formatError(), QStringLiteral("Error: data, Line 1, Column 9:\n  Premature end of document."));
}

void TestXmlParser::readCharacters_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isNull");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QString>("after");

    const QString none;
    QTest::newRow("text") << QByteArray("<r><a>text</a><z/></r>") << "text" << false << none << "EndElement a";
    QTest::newRow("entity in text") << QByteArray("<r><a>x&amp;y</a></r>") << "x&y" << false << none << "EndElement a";
    QTest::newRow("whitespace text") << QByteArray("<r><a>  </a></r>") << "  " << false << none << "EndElement a";
    QTest::newRow("comment after text") << QByteArray("<r><a>text<!--c--></a></r>") << "text" << false << none
                                        << "EndElement a";
    QTest::newRow("start and end tag") << QByteArray("<r><a></a></r>") << none << true << none << "EndElement a";
    QTest::newRow("empty element") << QByteArray("<r><a/></r>") << none << true << none << "EndElement a";
    QTest::newRow("element instead of text")
        << QByteArray("<r>\n<a><b/></a></r>") << none << true
        << "Error: data, Line 2, Column 7:\n  (StartElement) Characters for <a> element expected."
        << "Invalid";
    QTest::newRow("comment instead of text")
        << QByteArray("<r><a><!--c-->text</a></r>") << none << true
        << "Error: data, Line 1, Column 14:\n  (Comment) Characters for <a> element expected."
        << "Invalid";
    QTest::newRow("element after text")
        << QByteArray("<r><a>text<b/></a></r>") << none << true
        << "Error: data, Line 1, Column 14:\n  (StartElement) End of <a> element expected."
        << "Invalid";
}

void TestXmlParser::readCharacters()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, text);
    QFETCH(bool, isNull);
    QFETCH(QString, error);
    QFETCH(QString, after);

    ScriptedParser p;
    QString result = QStringLiteral("not called");
    QString afterToken;
    p.grammar = [&](ScriptedParser &self) {
        if (!readUntil(self, QStringLiteral("a")))
            return false;
        result = self.readCharacters();
        afterToken = describe(self);
        return !self.hasError();
    };
    QCOMPARE(p.parse(data), error.isEmpty());
    QCOMPARE(result, text);
    QCOMPARE(result.isNull(), isNull);
    QCOMPARE(afterToken, after);
    if (!error.isEmpty())
        QCOMPARE(p.formatError(), error);
}

QTEST_GUILESS_MAIN(TestXmlParser)

#include "tst_xmlparser.moc"
