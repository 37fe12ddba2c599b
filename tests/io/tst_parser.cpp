// Tests of the definitions file parser: errors with their full diagnostic text, warnings,
// comments and blank lines, attributes, and reading from files and buffers.

#include "iotesthelpers.h"
#include "parser.h"
#include "treetext.h"

#include <QtTest>

#include <QRandomGenerator>
#include <QTemporaryDir>

#include <functional>
#include <memory>

using namespace ZAT16;

namespace {

struct Result {
    bool ok = false;
    QString error;
    QString warnings;
    QString tree;
};

Result parseText(const QByteArray &data)
{
    Parser parser;
    Result result;
    result.ok = parser.parse(data);
    if (!result.ok)
        result.error = parser.formatError();
    result.warnings = parser.warnings;
    result.tree = TreeText::outline(parser.root);
    return result;
}

// "Error: data, Line <line>, Column <column>:\n  <message>"
QString at(const char *kind, int line, int column, const QString &message)
{
    return QStringLiteral("%1: data, Line %2, Column %3:\n  %4")
        .arg(QLatin1String(kind))
        .arg(line)
        .arg(column)
        .arg(message);
}

QString errorAt(int line, int column, const QString &message)
{
    return at("Error", line, column, message);
}

QString warningAt(int line, int column, const QString &message)
{
    return at("Warning", line, column, message) + QLatin1Char('\n');
}

// Wraps one line (indented by two blanks, on line 2) in a root element.
QByteArray inRoot(const QByteArray &line)
{
    return "<zat16>\n  " + line + "\n</zat16>\n";
}

// The column after the last character of the line that `inRoot` puts on line 2.
int endColumn(const QByteArray &line)
{
    return 2 + QString::fromUtf8(line).size();
}

// Puts one line (indented by six blanks, on line 4) into an "enums" list of a tag.
QByteArray inEnums(const QByteArray &line)
{
    return "<zat16>\n"
           "  <tag name=\"T\" id=\"0x1001\">\n"
           "    <enums>\n"
           "      "
        + line
        + "\n"
          "    </enums>\n"
          "  </tag>\n"
          "</zat16>\n";
}

// A parser whose grammar is a script of the test, so that the internal steps can be driven
// directly.
class DrivenParser : public Parser
{
public:
    std::function<bool(DrivenParser &)> script;

    using Parser::appendComment;
    using Parser::appendNewline;
    using Parser::parseElements;
    using Parser::trimNewlines;

protected:
    bool parser() override { return script ? script(*this) : false; }
};

// Reads until a token of the given type; false at the end or on an error.
bool readUntil(XmlParser &p, QXmlStreamReader::TokenType type)
{
    while (!p.atEnd()) {
        if (p.readNext(XmlParser::SkipCommentsAndWhitespace) == type)
            return true;
    }
    return false;
}

} // namespace

#define CHECK_RESULT(result, expectedOk, expectedError, expectedWarnings, expectedTree)                                \
    do {                                                                                                               \
        QCOMPARE(result.error, QString(expectedError));                                                                \
        QCOMPARE(result.warnings, QString(expectedWarnings));                                                          \
        QCOMPARE(result.tree, QString(expectedTree));                                                                  \
        QCOMPARE(result.ok, expectedOk);                                                                               \
    } while (false)

class TestParser : public QObject
{
    Q_OBJECT

private slots:
    void fullFile();
    void constructionAndClear();
    void takeRoot();
    void setsEmptiedAfterParse();
    void repeatedParse();

    void notXml_data();
    void notXml();
    void noDecodableData_data();
    void noDecodableData();
    void unexpectedEndOfInputInsideRoot();
    void entityReference();
    void tagOutOfRange_data();
    void tagOutOfRange();
    void invalidId_data();
    void invalidId();
    void identifierErrors_data();
    void identifierErrors();
    void invalidSecure_data();
    void invalidSecure();
    void tooDeeplyNested_data();
    void tooDeeplyNested();
    void readerErrorSurvives();
    void strayTextStopsWithWarning();

    void unexpectedElement();
    void unexpectedElementCaseSensitive();
    void elementNotExpected_data();
    void elementNotExpected();
    void doubleNumberAndName();
    void doubleInOtherListsIsFine();
    void doubleNumberLooksAtLow32Bits();
    void doubleTagCodeAndName();
    void doubleTagCodeWithoutId();
    void doubleTagAcrossFile();
    void doublesInListsLongAndShort_data();
    void doublesInListsLongAndShort();
    void equalTextsShared();
    void idsAsQtConvertsThem();

    void blankLineBetweenTags_data();
    void blankLineBetweenTags();
    void blankLinesInLists();
    void blankLineNotAfterBlankLine_data();
    void blankLineNotAfterBlankLine();
    void blankLineAfterComment();
    void trailingBlankLineOfRootStays();
    void blankLinesInTagRemoved();
    void comments();
    void commentTextUnchanged();
    void commentInsideTagWarned();
    void commentInsideTopTagWarned();

    void documentTypeDeclaration_data();
    void documentTypeDeclaration();
    void rootCommentAttributeIgnored();

    void display_data();
    void display();
    void ids_data();
    void ids();
    void secureValues_data();
    void secureValues();
    void attributes();
    void unknownAttributesWarned_data();
    void unknownAttributesWarned();
    void tagWithoutId();
    void tagsSortedByType();
    void blankLinesBroughtTogetherBySortingAreOne();
    void topElementTag();
    void topElementEnums();
    void byteOrderMark();

    void parseFile();
    void parseFileWithError();
    void parseMissingFile();
    void verboseTrace();

    void unexpectedEndElementAtTopLevel();
    void unexpectedEndOfDocumentInsideElement();
    void appendNewlineTypes_data();
    void appendNewlineTypes();
    void appendCommentTypes_data();
    void appendCommentTypes();
    void trimNewlinesFromEnd();
};

void TestParser::fullFile()
{
    const QByteArray data = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                            "<!DOCTYPE zat16>\n"
                            "<zat16 name=\"Device\" display=\"x\">\n"
                            "  <!-- general tags -->\n"
                            "  <tag name=\"Power\" id=\"0x2001\" comment=\"on or off\" secure=\"true\">\n"
                            "    <enums display=\"2x\">\n"
                            "      <enum name=\"Off\" id=\"0\"/>\n"
                            "\n"
                            "      <!-- the usual one -->\n"
                            "      <enum name=\"On\" id=\"1\"/>\n"
                            "    </enums>\n"
                            "    <!-- lost -->\n"
                            "    <bits>\n"
                            "      <bit name=\"Low\" id=\"0\"/>\n"
                            "    </bits>\n"
                            "  </tag>\n"
                            "\n"
                            "\n"
                            "\n"
                            "  <tag name=\"Mode\" id=\"4097\"/>\n"
                            "</zat16>\n";
    const Result result = parseText(data);
    CHECK_RESULT(result,
                 true,
                 "",
                 warningAt(12, 17, QStringLiteral("Comment inside <tag> is not kept")),
                 "Root Device comment=\"\n<!DOCTYPE zat16>\" display=3/0\n"
                 "  Tag <!-- general tags -->\n"
                 "  Tag Power id=0x2001 comment=\"on or off\" secure\n"
                 "    Bits\n"
                 "      Bit Low id=0x0\n"
                 "    Enums display=3/2\n"
                 "      Enum Off id=0x0\n"
                 "      Enum blank\n"
                 "      Enum <!-- the usual one -->\n"
                 "      Enum On id=0x1\n"
                 "  Tag blank\n"
                 "  Tag Mode id=0x1001\n");
}

void TestParser::constructionAndClear()
{
    Parser parser;
    QVERIFY(parser.root == nullptr);
    QVERIFY(parser.tagCodes.isEmpty());
    QVERIFY(parser.tagNames.isEmpty());
    QVERIFY(parser.dtd.isNull());
    QVERIFY(!parser.verbose);
    QVERIFY(parser.warnings.isEmpty());

    QVERIFY(parser.parse(QByteArray("<!DOCTYPE zat16><zat16><tag name=\"A\" id=\"1\"/></zat16>")));
    QVERIFY(parser.root != nullptr);
    parser.tagCodes.insert(5);
    parser.tagNames.insert(QStringLiteral("X"));
    parser.dtd = QStringLiteral("<!DOCTYPE x>");
    parser.clear();
    QVERIFY(parser.root == nullptr);
    QVERIFY(parser.tagCodes.isEmpty());
    QVERIFY(parser.tagNames.isEmpty());
    QVERIFY(parser.dtd.isNull());
}

void TestParser::takeRoot()
{
    std::unique_ptr<Item> root;
    {
        Parser parser;
        QVERIFY(parser.parse(QByteArray("<zat16><tag name=\"A\" id=\"0x1001\"/></zat16>")));
        Item *kept = parser.root;
        root.reset(parser.takeRoot());
        QCOMPARE(root.get(), kept);
        QVERIFY(parser.root == nullptr);
        QVERIFY(parser.takeRoot() == nullptr);
    }
    // the tree outlives the parser
    QCOMPARE(TreeText::outline(root.get()), QStringLiteral("Root\n  Tag A id=0x1001\n"));
    QVERIFY(root->parent == nullptr);
}

void TestParser::setsEmptiedAfterParse()
{
    Parser parser;
    QVERIFY(parser.parse(QByteArray("<!DOCTYPE zat16><zat16><tag name=\"A\" id=\"0x1001\"/></zat16>")));
    QVERIFY(parser.tagCodes.isEmpty());
    QVERIFY(parser.tagNames.isEmpty());
    QVERIFY(parser.dtd.isNull());
    QCOMPARE(parser.root->comment, QStringLiteral("<!DOCTYPE zat16>"));

    QVERIFY(!parser.parse(QByteArray("<!DOCTYPE zat16><zat16><tag name=\"A\" id=\"0x10000\"/></zat16>")));
    QVERIFY(parser.root == nullptr);
    QVERIFY(parser.tagCodes.isEmpty());
    QVERIFY(parser.tagNames.isEmpty());
    QVERIFY(parser.dtd.isNull());
}

void TestParser::repeatedParse()
{
    // Duplicates are looked for within one parse only.
    Parser parser;
    const QByteArray data = "<zat16><tag name=\"A\" id=\"0x1001\"/></zat16>";
    QVERIFY(parser.parse(data));
    QVERIFY(parser.parse(data));
    QCOMPARE(parser.warnings, QString());
    QCOMPARE(TreeText::outline(parser.root), QStringLiteral("Root\n  Tag A id=0x1001\n"));

    // a failed parse leaves no tree behind
    QVERIFY(!parser.parse(QByteArray("")));
    QVERIFY(parser.root == nullptr);
}

void TestParser::notXml_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("error");

    QTest::newRow("empty file") << QByteArray("")
                                << errorAt(1, 0, QStringLiteral("(Invalid) This doesn't look like an XML file."));
    // The reader reports the start of a document before it sees that the text is no XML; the
    // grammar then finds no element.
    QTest::newRow("plain text") << QByteArray("hello")
                                << errorAt(1, 1, QStringLiteral("(Invalid) No decodable data found"));
    QTest::newRow("json") << QByteArray("{\"a\": 1}\n")
                          << errorAt(1, 1, QStringLiteral("(Invalid) No decodable data found"));
    QTest::newRow("whitespace only") << QByteArray("   \n")
                                     << errorAt(2, 0, QStringLiteral("(Invalid) No decodable data found"));
}

void TestParser::notXml()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, error);
    const Result result = parseText(data);
    CHECK_RESULT(result, false, error, "", "");
}

void TestParser::noDecodableData_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QString>("warnings");

    QTest::newRow("declaration and comment")
        << QByteArray("<?xml version=\"1.0\"?>\n<!-- c -->\n")
        << errorAt(3, 0, QStringLiteral("(Invalid) No decodable data found")) << QString();
    QTest::newRow("declaration only") << QByteArray("<?xml version=\"1.0\"?>")
                                      << errorAt(1, 21, QStringLiteral("(Invalid) No decodable data found"))
                                      << QString();
    QTest::newRow("unknown top element") << QByteArray("<foo/>\n")
                                         << errorAt(2, 0, QStringLiteral("(EndDocument) No decodable data found"))
                                         << warningAt(1, 6, QStringLiteral("Unexpected element <foo>."));
}

void TestParser::noDecodableData()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, error);
    QFETCH(QString, warnings);
    const Result result = parseText(data);
    CHECK_RESULT(result, false, error, warnings, "");
}

void TestParser::unexpectedEndOfInputInsideRoot()
{
    // the reader's premature end shows as an invalid token where an element was expected
    const Result result = parseText("<zat16>\n  <tag name=\"A\"/>\n");
    CHECK_RESULT(result, false, errorAt(3, 0, QStringLiteral("(Invalid) Start of element expected.")), "", "");
}

void TestParser::entityReference()
{
    const Result result = parseText("<!DOCTYPE zat16 SYSTEM \"zat16.dtd\"><zat16>&y;</zat16>");
    CHECK_RESULT(result, false, errorAt(1, 45, QStringLiteral("(EntityReference) Start of element expected.")), "", "");
}

void TestParser::tagOutOfRange_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("error");

    QTest::newRow("0x10000") << inRoot("<tag name=\"A\" id=\"0x10000\"/>")
                             << errorAt(2, 30, QStringLiteral("(EndElement) Tag out of range"));
    QTest::newRow("-1") << inRoot("<tag name=\"A\" id=\"-1\"/>")
                        << errorAt(2, 25, QStringLiteral("(EndElement) Tag out of range"));
    QTest::newRow("largest unsigned") << inRoot("<tag name=\"A\" id=\"18446744073709551615\"/>")
                                      << errorAt(2, 43, QStringLiteral("(EndElement) Tag out of range"));
    QTest::newRow("0x100000000") << inRoot("<tag name=\"A\" id=\"0x100000000\"/>")
                                 << errorAt(2, 34, QStringLiteral("(EndElement) Tag out of range"));
    // checked when the tag has been read, at its end tag
    QTest::newRow("with children") << QByteArray("<zat16>\n"
                                                 "  <tag name=\"A\" id=\"65536\">\n"
                                                 "    <enums/>\n"
                                                 "  </tag>\n"
                                                 "</zat16>\n")
                                   << errorAt(4, 8, QStringLiteral("(EndElement) Tag out of range"));
}

void TestParser::tagOutOfRange()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, error);
    const Result result = parseText(data);
    CHECK_RESULT(result, false, error, "", "");
}

void TestParser::invalidId_data()
{
    QTest::addColumn<QByteArray>("id");

    QTest::newRow("letters") << QByteArray("abc");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("8 in octal") << QByteArray("08");
    QTest::newRow("2^64") << QByteArray("18446744073709551616");
    QTest::newRow("fraction") << QByteArray("1.5");
    QTest::newRow("trailing letter") << QByteArray("12a");
    QTest::newRow("octal prefix without digits") << QByteArray("0o");
    QTest::newRow("binary digit 2") << QByteArray("0y102");
    QTest::newRow("blank after prefix") << QByteArray("0o 7");
    QTest::newRow("sign after padding zeros") << QByteArray("00+5");
}

void TestParser::invalidId()
{
    QFETCH(QByteArray, id);
    const QByteArray line = "<tag name=\"A\" id=\"" + id + "\"/>";
    const Result result = parseText(inRoot(line));
    CHECK_RESULT(result, false, errorAt(2, endColumn(line), QStringLiteral("(StartElement) Invalid ID")), "", "");

    // the same on an enumeration value
    const QByteArray valueLine = "<enum name=\"V\" id=\"" + id + "\"/>";
    const Result value = parseText(inEnums(valueLine));
    CHECK_RESULT(value,
                 false,
                 errorAt(4, 6 + QString::fromUtf8(valueLine).size(), QStringLiteral("(StartElement) Invalid ID")),
                 "",
                 "");
}

void TestParser::identifierErrors_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("message");

    QTest::newRow("empty") << QByteArray("") << QStringLiteral("Empty name not allowed.");
    QTest::newRow("digit first") << QByteArray("1a") << QStringLiteral("Name must not start with a digit.");
    QTest::newRow("reserved") << QByteArray("Tag") << QStringLiteral("The name \"Tag\" is reserved.");
    QTest::newRow("minus") << QByteArray("a-b") << QStringLiteral("Invalid characters in name.");
    QTest::newRow("blank") << QByteArray("a b") << QStringLiteral("Invalid characters in name.");
}

void TestParser::identifierErrors()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, message);
    const QByteArray line = "<tag name=\"" + name + "\" id=\"0x1001\"/>";
    const Result result = parseText(inRoot(line));
    CHECK_RESULT(result, false, errorAt(2, endColumn(line), QStringLiteral("(StartElement) ") + message), "", "");
}

void TestParser::invalidSecure_data()
{
    QTest::addColumn<QByteArray>("value");

    QTest::newRow("True") << QByteArray("True");
    QTest::newRow("False") << QByteArray("False");
    QTest::newRow("1") << QByteArray("1");
    QTest::newRow("yes") << QByteArray("yes");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("padded") << QByteArray(" true");
}

void TestParser::invalidSecure()
{
    // The boolean error does not stop the attribute reading, but the element loop then finds the
    // reader in its error state and reports the end of the input instead.
    QFETCH(QByteArray, value);
    const QByteArray line = "<tag name=\"A\" secure=\"" + value + "\"/>";
    const Result result = parseText(inRoot(line));
    CHECK_RESULT(
        result, false, errorAt(2, endColumn(line), QStringLiteral("(Invalid) Unexpected end of input")), "", "");
}

void TestParser::tooDeeplyNested_data()
{
    QTest::addColumn<int>("levels");
    QTest::newRow("100 levels") << 100;
    QTest::newRow("101 levels") << 101;
}

void TestParser::tooDeeplyNested()
{
    // `levels` elements nested in each other, the outermost one an unknown element of the root
    QFETCH(int, levels);
    QByteArray data = "<zat16><foo>";
    for (int i = 1; i < levels; ++i)
        data += "<x>";
    for (int i = 1; i < levels; ++i)
        data += "</x>";
    data += "</foo></zat16>";

    const Result result = parseText(data);
    const QString warning = warningAt(1, 12, QStringLiteral("Unexpected element <foo>."));
    if (levels <= 100) {
        CHECK_RESULT(result, true, "", warning, "Root\n");
    } else {
        // "<zat16><foo>" and 100 times "<x>"
        CHECK_RESULT(
            result, false, errorAt(1, 312, QStringLiteral("(StartElement) File too deeply nested")), warning, "");
    }
}

void TestParser::readerErrorSurvives()
{
    // Skipping an unknown element gives up on the reader's own error without raising another.
    const Result result = parseText("<zat16>\n"
                                    "  <foo><a></b></foo>\n"
                                    "</zat16>\n");
    CHECK_RESULT(result,
                 false,
                 errorAt(2, 14, QStringLiteral("Opening and ending tag mismatch.")),
                 warningAt(2, 7, QStringLiteral("Unexpected element <foo>.")),
                 "");
}

void TestParser::strayTextStopsWithWarning()
{
    // Reading ends at the text and keeps what was read, but says so: the rest of the file was
    // not read, and saving would lose it. The reader stands after the text, before the next "<".
    const Result inRootResult = parseText("<zat16>\n"
                                          "  <tag name=\"A\" id=\"0x1001\"/>\n"
                                          "  text\n"
                                          "  <tag name=\"B\" id=\"0x1002\"/>\n"
                                          "</zat16>\n");
    CHECK_RESULT(inRootResult,
                 true,
                 "",
                 warningAt(4, 3, QStringLiteral("Unexpected characters encountered")),
                 "Root\n  Tag A id=0x1001\n");

    const Result inTag = parseText("<zat16>\n"
                                   "  <tag name=\"A\" id=\"0x1001\"/>\n"
                                   "  <tag name=\"B\" id=\"0x1002\">x</tag>\n"
                                   "  <tag name=\"C\" id=\"0x1003\"/>\n"
                                   "</zat16>\n");
    CHECK_RESULT(inTag,
                 true,
                 "",
                 warningAt(3, 30, QStringLiteral("Unexpected characters encountered")),
                 "Root\n  Tag A id=0x1001\n");
}

void TestParser::unexpectedElement()
{
    const Result result = parseText("<zat16>\n"
                                    "  <foo a=\"1\"><tag name=\"X\" id=\"0x1001\"/></foo>\n"
                                    "  <tag name=\"X\" id=\"0x1001\"/>\n"
                                    "</zat16>\n");
    // the skipped tag is not counted for duplicates
    CHECK_RESULT(
        result, true, "", warningAt(2, 13, QStringLiteral("Unexpected element <foo>.")), "Root\n  Tag X id=0x1001\n");
}

void TestParser::unexpectedElementCaseSensitive()
{
    const Result result = parseText("<zat16>\n"
                                    "  <Tag name=\"A\"/>\n"
                                    "  <TAG/>\n"
                                    "</zat16>\n");
    CHECK_RESULT(result,
                 true,
                 "",
                 warningAt(2, 17, QStringLiteral("Unexpected element <Tag>."))
                     + warningAt(3, 8, QStringLiteral("Unexpected element <TAG>.")),
                 "Root\n");
}

void TestParser::elementNotExpected_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("warnings");
    QTest::addColumn<QString>("tree");

    QTest::newRow("tag in tag") << QByteArray("<zat16>\n"
                                              "  <tag name=\"A\" id=\"0x1001\">\n"
                                              "    <tag name=\"B\" id=\"0x1002\"/>\n"
                                              "  </tag>\n"
                                              "</zat16>\n")
                                << warningAt(3, 31, QStringLiteral("Element <tag> not expected."))
                                << "Root\n  Tag A id=0x1001\n    Tag B id=0x1002\n";
    QTest::newRow("enum in tag") << QByteArray("<zat16>\n"
                                               "  <tag name=\"A\" id=\"0x1001\">\n"
                                               "    <enum name=\"X\" id=\"1\"/>\n"
                                               "  </tag>\n"
                                               "</zat16>\n")
                                 << warningAt(3, 27, QStringLiteral("Element <enum> not expected."))
                                 << "Root\n  Tag A id=0x1001\n    Enum X id=0x1\n";
    QTest::newRow("bit in enums") << inEnums("<bit name=\"B\" id=\"2\"/>")
                                  << warningAt(4, 28, QStringLiteral("Element <bit> not expected."))
                                  << "Root\n  Tag T id=0x1001\n    Enums\n      Bit B id=0x2\n";
    QTest::newRow("enums in root") << inRoot("<enums/>")
                                   << warningAt(2, 10, QStringLiteral("Element <enums> not expected."))
                                   << "Root\n  Enums\n";
    QTest::newRow("zat16 in root") << inRoot("<zat16/>")
                                   << warningAt(2, 10, QStringLiteral("Element <zat16> not expected."))
                                   << "Root\n  Root\n";
    QTest::newRow("bits in bits") << QByteArray("<zat16>\n"
                                                "  <tag name=\"A\" id=\"0x1001\">\n"
                                                "    <bits>\n"
                                                "      <bits/>\n"
                                                "    </bits>\n"
                                                "  </tag>\n"
                                                "</zat16>\n")
                                  << warningAt(4, 13, QStringLiteral("Element <bits> not expected."))
                                  << "Root\n  Tag A id=0x1001\n    Bits\n      Bits\n";
}

void TestParser::elementNotExpected()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, warnings);
    QFETCH(QString, tree);
    const Result result = parseText(data);
    CHECK_RESULT(result, true, "", warnings, tree);
}

void TestParser::doubleNumberAndName()
{
    const Result result = parseText("<zat16>\n"
                                    "  <tag name=\"A\" id=\"0x1001\">\n"
                                    "    <enums>\n"
                                    "      <enum name=\"X\" id=\"5\"/>\n"
                                    "      <enum name=\"Y\" id=\"0x5\"/>\n"
                                    "      <enum name=\"X\" id=\"6\"/>\n"
                                    "      <enum name=\"X\" id=\"05\"/>\n"
                                    "    </enums>\n"
                                    "    <bits>\n"
                                    "      <bit name=\"B\" id=\"3\"/>\n"
                                    "      <bit name=\"B\" id=\"3\"/>\n"
                                    "    </bits>\n"
                                    "    <enums name=\"L\"/>\n"
                                    "    <enums name=\"L\"/>\n"
                                    "  </tag>\n"
                                    "</zat16>\n");
    CHECK_RESULT(
        result,
        true,
        "",
        warningAt(5, 31, QStringLiteral("Double number 0x5")) + warningAt(6, 29, QStringLiteral("Double name X"))
            + warningAt(7, 30, QStringLiteral("Double number 05")) + warningAt(7, 30, QStringLiteral("Double name X"))
            + warningAt(11, 28, QStringLiteral("Double number 3")) + warningAt(11, 28, QStringLiteral("Double name B"))
            + warningAt(14, 21, QStringLiteral("Double name L")),
        "Root\n"
        "  Tag A id=0x1001\n"
        "    Bits\n"
        "      Bit B id=0x3\n"
        "      Bit B id=0x3\n"
        "    Enums\n"
        "      Enum X id=0x5\n"
        "      Enum Y id=0x5\n"
        "      Enum X id=0x6\n"
        "      Enum X id=0x5\n"
        "    Enums L\n"
        "    Enums L\n");
}

void TestParser::doubleInOtherListsIsFine()
{
    const Result result = parseText("<zat16>\n"
                                    "  <tag name=\"A\" id=\"0x1001\">\n"
                                    "    <enums>\n"
                                    "      <enum name=\"X\" id=\"1\"/>\n"
                                    "      <enum id=\"2\"/>\n"
                                    "      <!-- no name -->\n"
                                    "      <enum id=\"3\"/>\n"
                                    "    </enums>\n"
                                    "    <enums>\n"
                                    "      <enum name=\"X\" id=\"1\"/>\n"
                                    "    </enums>\n"
                                    "    <enums/>\n"
                                    "    <bits>\n"
                                    "      <bit name=\"X\" id=\"1\"/>\n"
                                    "      <bit name=\"A\" id=\"4097\"/>\n"
                                    "    </bits>\n"
                                    "  </tag>\n"
                                    "  <tag name=\"B\" id=\"0x1002\">\n"
                                    "    <enums>\n"
                                    "      <enum name=\"X\" id=\"1\"/>\n"
                                    "    </enums>\n"
                                    "  </tag>\n"
                                    "</zat16>\n");
    CHECK_RESULT(result,
                 true,
                 "",
                 "",
                 "Root\n"
                 "  Tag A id=0x1001\n"
                 "    Bits\n"
                 "      Bit X id=0x1\n"
                 "      Bit A id=0x1001\n"
                 "    Enums\n"
                 "      Enum X id=0x1\n"
                 "      Enum id=0x2\n"
                 "      Enum <!-- no name -->\n"
                 "      Enum id=0x3\n"
                 "    Enums\n"
                 "      Enum X id=0x1\n"
                 "    Enums\n"
                 "  Tag B id=0x1002\n"
                 "    Enums\n"
                 "      Enum X id=0x1\n");
}

void TestParser::doubleNumberLooksAtLow32Bits()
{
    // The sibling search for a number takes a 32-bit value and matches only ids whose upper half
    // is zero: a new value is looked up by its low 32 bits.
    const Result result = parseText(inEnums("<enum name=\"A\" id=\"5\"/>\n"
                                            "      <enum name=\"B\" id=\"0x100000005\"/>\n"
                                            "      <enum name=\"C\" id=\"-1\"/>\n"
                                            "      <enum name=\"D\" id=\"-1\"/>"));
    CHECK_RESULT(result,
                 true,
                 "",
                 warningAt(5, 39, QStringLiteral("Double number 0x100000005")),
                 "Root\n"
                 "  Tag T id=0x1001\n"
                 "    Enums\n"
                 "      Enum A id=0x5\n"
                 "      Enum B id=0x100000005\n"
                 "      Enum C id=0xFFFFFFFFFFFFFFFF\n"
                 "      Enum D id=0xFFFFFFFFFFFFFFFF\n");
}

void TestParser::doubleTagCodeAndName()
{
    const Result result = parseText("<zat16>\n"
                                    "  <tag name=\"A\" id=\"0x1001\"/>\n"
                                    "  <tag name=\"B\" id=\"4097\"/>\n"
                                    "  <tag name=\"A\" id=\"0x1002\"/>\n"
                                    "  <tag name=\"B\" id=\"0x1002\"/>\n"
                                    "  <tag comment=\"x\"/>\n"
                                    "  <tag comment=\"y\"/>\n"
                                    "</zat16>\n");
    CHECK_RESULT(result,
                 true,
                 "",
                 warningAt(3, 27, QStringLiteral("Double tag code 0x1001"))
                     + warningAt(4, 29, QStringLiteral("Double tag name A"))
                     + warningAt(5, 29, QStringLiteral("Double tag code 0x1002"))
                     + warningAt(5, 29, QStringLiteral("Double tag name B"))
                     + warningAt(7, 20, QStringLiteral("Double tag name ")),
                 "Root\n"
                 "  Tag A id=0x1001\n"
                 "  Tag B id=0x1001\n"
                 "  Tag A id=0x1002\n"
                 "  Tag B id=0x1002\n"
                 "  Tag <!--x-->\n"
                 "  Tag <!--y-->\n");
}

void TestParser::doubleTagCodeWithoutId()
{
    // A tag without id counts as code 0, but is not itself checked.
    const Result withoutFirst = parseText("<zat16>\n"
                                          "  <tag name=\"A\"/>\n"
                                          "  <tag name=\"B\" id=\"0\"/>\n"
                                          "</zat16>\n");
    CHECK_RESULT(withoutFirst,
                 true,
                 "",
                 warningAt(3, 24, QStringLiteral("Double tag code 0x0000")),
                 "Root\n  Tag A\n  Tag B id=0x0\n");

    const Result withoutSecond = parseText("<zat16>\n"
                                           "  <tag name=\"A\" id=\"0\"/>\n"
                                           "  <tag name=\"B\"/>\n"
                                           "</zat16>\n");
    CHECK_RESULT(withoutSecond, true, "", "", "Root\n  Tag A id=0x0\n  Tag B\n");
}

void TestParser::doubleTagAcrossFile()
{
    const Result result = parseText("<zat16>\n"
                                    "  <tag name=\"A\" id=\"0x1001\">\n"
                                    "    <tag name=\"B\" id=\"0x1002\"/>\n"
                                    "  </tag>\n"
                                    "  <tag name=\"B\" id=\"0x1002\"/>\n"
                                    "</zat16>\n");
    CHECK_RESULT(result,
                 true,
                 "",
                 warningAt(3, 31, QStringLiteral("Element <tag> not expected."))
                     + warningAt(5, 29, QStringLiteral("Double tag code 0x1002"))
                     + warningAt(5, 29, QStringLiteral("Double tag name B")),
                 "Root\n  Tag A id=0x1001\n    Tag B id=0x1002\n  Tag B id=0x1002\n");
}

void TestParser::doublesInListsLongAndShort_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("names");
    QTest::addColumn<int>("ids");

    // Short lists are searched, long ones hashed; the results must not differ.
    for (int length : { 2, 15, 16, 17, 63, 64, 65, 66, 130, 300 }) {
        QTest::addRow("%d values, 7 names, 5 numbers", length) << length << 7 << 5;
        QTest::addRow("%d values, all distinct", length) << length << length << length;
        QTest::addRow("%d values, one name, distinct numbers", length) << length << 1 << length;
    }
}

// Every value warns about a number or name that one of the values before it in its list (or a
// misplaced tag there) already has, as findBut on the list read so far would find it.
void TestParser::doublesInListsLongAndShort()
{
    QFETCH(int, length);
    QFETCH(int, names);
    QFETCH(int, ids);

    struct Sibling {
        QString name;
        quint64 id;
    };
    QList<Sibling> seen;
    QStringList expected;
    QByteArray body;
    for (int i = 0; i < length; ++i) {
        // A tag inside the list is read with the values: its name and code count, also for the
        // value after it that has the same name.
        const QString name = i == length / 2 + 1 ? QStringLiteral("Tagged") : QStringLiteral("N%1").arg(i % names);
        const quint64 id = quint64(i % ids);
        if (i == length / 2) {
            body += "      <tag name=\"Tagged\" id=\"0x" + QByteArray::number(id, 16) + "\"/>\n";
            expected << QStringLiteral("Element <tag> not expected.");
            seen.append({ QStringLiteral("Tagged"), id });
        }
        const QByteArray raw = i % 2 ? QByteArray::number(id) : "0x" + QByteArray::number(id, 16);
        body += "      <enum name=\"" + name.toLatin1() + "\" id=\"" + raw + "\"/>\n";
        bool doubleId = false;
        bool doubleName = false;
        for (const Sibling &sibling : std::as_const(seen)) {
            doubleId = doubleId || sibling.id == id;
            doubleName = doubleName || sibling.name == name;
        }
        if (doubleId)
            expected << QStringLiteral("Double number ") + QString::fromLatin1(raw);
        if (doubleName)
            expected << QStringLiteral("Double name ") + name;
        seen.append({ name, id });
    }
    const Result result = parseText("<zat16>\n  <tag name=\"T\" id=\"0x1001\">\n    <enums>\n" + body
                                    + "    </enums>\n  </tag>\n</zat16>\n");
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(IoTest::warningMessages(result.warnings), expected);
}

void TestParser::equalTextsShared()
{
    Parser parser;
    QVERIFY(parser.parse(
        QByteArray("<zat16>\n"
                   "  <tag name=\"A\" id=\"0x1001\">\n"
                   "    <enums><enum name=\"On\" id=\"1\" comment=\"state\"/><enum name=\"Off\" id=\"0\"/></enums>\n"
                   "  </tag>\n"
                   "  <tag name=\"B\" id=\"0x1002\">\n"
                   "    <bits><bit name=\"On\" id=\"0\" comment=\"state\"/><bit name=\"Two\" id=\"1\"/></bits>\n"
                   "    <enums><enum name=\"On\" id=\"1\" comment=\"\"/></enums>\n"
                   "  </tag>\n"
                   "</zat16>\n")));
    std::unique_ptr<Item> root(parser.takeRoot());
    const Item *first = root->child(0)->child(0)->child(0);
    const Item *bit = root->child(1)->child(0)->child(0);
    const Item *second = root->child(1)->child(1)->child(0);
    QCOMPARE(first->name, QStringLiteral("On"));
    QCOMPARE(bit->name, QStringLiteral("On"));
    QCOMPARE(second->name, QStringLiteral("On"));
    // One string for the equal names and comments of the whole file.
    QCOMPARE(bit->name.constData(), first->name.constData());
    QCOMPARE(second->name.constData(), first->name.constData());
    QCOMPARE(bit->comment.constData(), first->comment.constData());
    // An empty comment attribute stays an empty, not a null, string; an absent one is null.
    QVERIFY(!second->comment.isNull());
    QVERIFY(second->comment.isEmpty());
    QVERIFY(root->child(0)->child(0)->child(1)->comment.isNull());
    // Each child list holds no more room than it needs.
    QCOMPARE(root->child(1)->child(0)->children.capacity(), 2);
    QCOMPARE(root->children.capacity(), root->children.size());
    // Changing one leaves the others as they were.
    root->child(1)->child(0)->child(0)->name = QStringLiteral("Changed");
    QCOMPARE(first->name, QStringLiteral("On"));
    QCOMPARE(second->name, QStringLiteral("On"));
}

// Without a display mode an id is read as C reads it: the signed 64-bit conversion of Qt with
// base 0, else the unsigned one, else the document is refused.
void TestParser::idsAsQtConvertsThem()
{
    QRandomGenerator random(31);
    const QString digits = QStringLiteral("0123456789abcdefABCDEF");
    for (int i = 0; i < 3000; ++i) {
        QString text;
        const int form = int(random.bounded(6u));
        const int length = 1 + int(random.bounded(22u));
        if (form <= 1)
            text = form == 0 ? QStringLiteral("0x") : QStringLiteral("0X");
        else if (form == 2)
            text = QStringLiteral("-");
        for (int k = 0; k < length; ++k)
            text += digits.at(int(random.bounded(form <= 1 ? 22u : form == 5 ? 8u : 10u)));
        bool ok = false;
        quint64 expected = quint64(text.toLongLong(&ok, 0));
        if (!ok)
            expected = text.toULongLong(&ok, 0);

        const Result result = parseText(inEnums("<enum name=\"V\" id=\"" + text.toLatin1() + "\"/>"));
        if (!ok) {
            QVERIFY2(!result.ok, qPrintable(text));
            QVERIFY2(result.error.endsWith(QLatin1String("Invalid ID")), qPrintable(text + result.error));
            continue;
        }
        QVERIFY2(result.ok, qPrintable(text + result.error));
        QVERIFY2(result.tree.contains(QStringLiteral("Enum V id=0x") + QString::number(expected, 16).toUpper()),
                 qPrintable(text + QLatin1Char('\n') + result.tree));
    }
}

void TestParser::blankLineBetweenTags_data()
{
    QTest::addColumn<QByteArray>("between");
    QTest::addColumn<bool>("blank");

    QTest::newRow("three empty lines") << QByteArray("\n\n\n\n  ") << true;
    QTest::newRow("one empty line") << QByteArray("\n\n  ") << true;
    QTest::newRow("empty line with blanks") << QByteArray("\n   \t \n  ") << true;
    QTest::newRow("one line break") << QByteArray("\n  ") << false;
    QTest::newRow("no line break") << QByteArray("  ") << false;
    QTest::newRow("nothing") << QByteArray("") << false;
}

void TestParser::blankLineBetweenTags()
{
    QFETCH(QByteArray, between);
    QFETCH(bool, blank);
    const Result result = parseText("<zat16>\n  <tag name=\"A\" id=\"0x1001\"/>" + between
                                    + "<tag name=\"B\" id=\"0x1002\"/>\n</zat16>\n");
    CHECK_RESULT(result,
                 true,
                 "",
                 "",
                 blank ? "Root\n  Tag A id=0x1001\n  Tag blank\n  Tag B id=0x1002\n"
                       : "Root\n  Tag A id=0x1001\n  Tag B id=0x1002\n");
}

void TestParser::blankLinesInLists()
{
    const Result result = parseText("<zat16>\n"
                                    "\n"
                                    "  <tag name=\"A\" id=\"0x1001\">\n"
                                    "    <enums>\n"
                                    "\n"
                                    "      <enum name=\"X\" id=\"1\"/>\n"
                                    "\n"
                                    "      <enum name=\"Y\" id=\"2\"/>\n"
                                    "\n"
                                    "\n"
                                    "    </enums>\n"
                                    "    <bits>\n"
                                    "\n"
                                    "      <bit name=\"B0\" id=\"0\"/>\n"
                                    "\n"
                                    "\n"
                                    "      <bit name=\"B1\" id=\"1\"/>\n"
                                    "    </bits>\n"
                                    "  </tag>\n"
                                    "</zat16>\n");
    CHECK_RESULT(result,
                 true,
                 "",
                 "",
                 "Root\n"
                 "  Tag A id=0x1001\n"
                 "    Bits\n"
                 "      Bit B0 id=0x0\n"
                 "      Bit blank\n"
                 "      Bit B1 id=0x1\n"
                 "    Enums\n"
                 "      Enum X id=0x1\n"
                 "      Enum blank\n"
                 "      Enum Y id=0x2\n");
}

void TestParser::blankLineNotAfterBlankLine_data()
{
    QTest::addColumn<QByteArray>("between");
    QTest::addColumn<QString>("warnings");

    QTest::newRow("unknown element between")
        << QByteArray("\n\n  <foo/>\n\n  ") << warningAt(4, 8, QStringLiteral("Unexpected element <foo>."));
    QTest::newRow("processing instruction between") << QByteArray("\n\n  <?pi x?>\n\n  ") << QString();
}

void TestParser::blankLineNotAfterBlankLine()
{
    QFETCH(QByteArray, between);
    QFETCH(QString, warnings);
    const Result result = parseText("<zat16>\n  <tag name=\"A\" id=\"0x1001\"/>" + between
                                    + "<tag name=\"B\" id=\"0x1002\"/>\n</zat16>\n");
    CHECK_RESULT(result, true, "", warnings, "Root\n  Tag A id=0x1001\n  Tag blank\n  Tag B id=0x1002\n");
}

void TestParser::blankLineAfterComment()
{
    const Result result = parseText("<zat16>\n"
                                    "  <!-- first -->\n"
                                    "\n"
                                    "  <tag name=\"A\" id=\"0x1001\"/>\n"
                                    "  <!-- second -->\n"
                                    "\n"
                                    "  <tag name=\"B\" id=\"0x1002\"/>\n"
                                    "</zat16>\n");
    CHECK_RESULT(result,
                 true,
                 "",
                 "",
                 "Root\n"
                 "  Tag <!-- first -->\n"
                 "  Tag blank\n"
                 "  Tag A id=0x1001\n"
                 "  Tag <!-- second -->\n"
                 "  Tag blank\n"
                 "  Tag B id=0x1002\n");
}

void TestParser::trailingBlankLineOfRootStays()
{
    const Result result = parseText("<zat16>\n"
                                    "  <tag name=\"A\" id=\"0x1001\"/>\n"
                                    "\n"
                                    "\n"
                                    "</zat16>\n");
    CHECK_RESULT(result, true, "", "", "Root\n  Tag A id=0x1001\n  Tag blank\n");
}

void TestParser::blankLinesInTagRemoved()
{
    // A tag's blank lines sort behind its lists and are then trimmed away.
    const Result result = parseText("<zat16>\n"
                                    "  <tag name=\"A\" id=\"0x1001\">\n"
                                    "    <bits/>\n"
                                    "\n"
                                    "    <enums/>\n"
                                    "\n"
                                    "    <bits name=\"Second\"/>\n"
                                    "\n"
                                    "  </tag>\n"
                                    "  <tag name=\"B\" id=\"0x1002\"/>\n"
                                    "</zat16>\n");
    CHECK_RESULT(result,
                 true,
                 "",
                 "",
                 "Root\n"
                 "  Tag A id=0x1001\n"
                 "    Bits\n"
                 "    Bits Second\n"
                 "    Enums\n"
                 "  Tag B id=0x1002\n");
}

void TestParser::comments()
{
    const Result result = parseText("<?xml version=\"1.0\"?>\n"
                                    "<!-- before the root -->\n"
                                    "<zat16>\n"
                                    "  <!-- first -->\n"
                                    "  <tag name=\"A\" id=\"0x1001\">\n"
                                    "    <!-- lost in a tag -->\n"
                                    "    <enums>\n"
                                    "      <!-- e -->\n"
                                    "      <enum name=\"X\" id=\"1\"><!-- lost in an enum --></enum>\n"
                                    "      <!-- e2 --><!-- e3 -->\n"
                                    "    </enums>\n"
                                    "    <!-- lost between lists -->\n"
                                    "    <bits>\n"
                                    "      <!-- b -->\n"
                                    "      <bit name=\"B\" id=\"1\"><!-- lost in a bit --></bit>\n"
                                    "    </bits>\n"
                                    "  </tag>\n"
                                    "  <!-- last -->\n"
                                    "</zat16>\n"
                                    "<!-- after the root -->\n");
    CHECK_RESULT(result,
                 true,
                 "",
                 warningAt(6, 26, QStringLiteral("Comment inside <tag> is not kept"))
                     + warningAt(12, 31, QStringLiteral("Comment inside <tag> is not kept")),
                 "Root\n"
                 "  Tag <!-- first -->\n"
                 "  Tag A id=0x1001\n"
                 "    Bits\n"
                 "      Bit <!-- b -->\n"
                 "      Bit B id=0x1\n"
                 "    Enums\n"
                 "      Enum <!-- e -->\n"
                 "      Enum X id=0x1\n"
                 "      Enum <!-- e2 -->\n"
                 "      Enum <!-- e3 -->\n"
                 "  Tag <!-- last -->\n");
}

void TestParser::commentTextUnchanged()
{
    Parser parser;
    QVERIFY(parser.parse(QByteArray("<zat16><!--  Gr\xc3\xb6\xc3\x9f"
                                    "e \xe2\x82\xac\n  two lines -->"
                                    "<!---->"
                                    "<!--x--></zat16>")));
    QVERIFY(parser.root);
    QCOMPARE(parser.root->children.size(), 3);
    QCOMPARE(parser.root->child(0)->comment, QStringLiteral("  Gr\u00f6\u00dfe \u20ac\n  two lines "));
    QCOMPARE(parser.root->child(0)->type, Tag);
    // an empty comment gives an item without text, which reads as a blank line
    QVERIFY(parser.root->child(1)->comment.isEmpty());
    QVERIFY(parser.root->child(1)->isNewline());
    QCOMPARE(parser.root->child(2)->comment, QStringLiteral("x"));
}

// A tag keeps its lists only; a comment between them is dropped, which the user is told, as the
// next save would lose it.
void TestParser::commentInsideTagWarned()
{
    const Result result = parseText("<zat16>\n"
                                    "  <tag name=\"A\" id=\"0x1001\">\n"
                                    "    <!-- before the lists -->\n"
                                    "    <enums>\n"
                                    "      <enum name=\"X\" id=\"1\"/>\n"
                                    "    </enums>\n"
                                    "    <!-- between -->\n"
                                    "    <bits/>\n"
                                    "    <!---->\n"
                                    "  </tag>\n"
                                    "  <!-- kept -->\n"
                                    "</zat16>\n");
    CHECK_RESULT(result,
                 true,
                 "",
                 warningAt(3, 29, QStringLiteral("Comment inside <tag> is not kept"))
                     + warningAt(7, 20, QStringLiteral("Comment inside <tag> is not kept"))
                     + warningAt(9, 11, QStringLiteral("Comment inside <tag> is not kept")),
                 "Root\n"
                 "  Tag A id=0x1001\n"
                 "    Bits\n"
                 "    Enums\n"
                 "      Enum X id=0x1\n"
                 "  Tag <!-- kept -->\n");
}

void TestParser::commentInsideTopTagWarned()
{
    const Result result = parseText("<tag name=\"A\" id=\"0x1001\"><!-- c --></tag>\n");
    CHECK_RESULT(
        result, true, "", warningAt(1, 36, QStringLiteral("Comment inside <tag> is not kept")), "Tag A id=0x1001\n");
}

void TestParser::documentTypeDeclaration_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("dtd");

    // the reader's text of the declaration includes the white space before it
    QTest::newRow("after a line break") << QByteArray("<?xml version=\"1.0\"?>\n<!DOCTYPE zat16>\n<zat16/>\n")
                                        << QStringLiteral("\n<!DOCTYPE zat16>");
    QTest::newRow("first in the file") << QByteArray("<!DOCTYPE zat16>\n<zat16/>\n")
                                       << QStringLiteral("<!DOCTYPE zat16>");
    QTest::newRow("after the mode line") << QByteArray(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?> <!-- -*- nxml -*- --><!DOCTYPE zat16>\n<zat16/>\n")
                                         << QStringLiteral("<!DOCTYPE zat16>");
    QTest::newRow("system identifier") << QByteArray("<!DOCTYPE zat16 SYSTEM \"zat16.dtd\">\n<zat16/>\n")
                                       << QStringLiteral("<!DOCTYPE zat16 SYSTEM \"zat16.dtd\">");
    QTest::newRow("internal subset") << QByteArray("<!DOCTYPE zat16 [\n<!ELEMENT zat16 ANY>\n]>\n<zat16/>\n")
                                     << QStringLiteral("<!DOCTYPE zat16 [\n<!ELEMENT zat16 ANY>\n]>");
}

void TestParser::documentTypeDeclaration()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, dtd);
    Parser parser;
    QVERIFY2(parser.parse(data), qPrintable(parser.formatError()));
    QVERIFY(parser.root);
    QCOMPARE(parser.root->comment, dtd);
    QVERIFY(parser.dtd.isNull());
    QVERIFY(!parser.root->isComment());
}

void TestParser::rootCommentAttributeIgnored()
{
    Parser parser;
    QVERIFY(parser.parse(QByteArray("<zat16 comment=\"not kept\"/>")));
    QVERIFY(parser.root);
    QVERIFY(parser.root->comment.isEmpty());

    QVERIFY(parser.parse(QByteArray("<!DOCTYPE zat16><zat16 comment=\"not kept\"/>")));
    QCOMPARE(parser.root->comment, QStringLiteral("<!DOCTYPE zat16>"));
}

void TestParser::display_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("digits");

    QTest::newRow("4") << QByteArray("4") << 0 << 4;
    QTest::newRow("X") << QByteArray("X") << 3 << 0;
    QTest::newRow("x") << QByteArray("x") << 3 << 0;
    QTest::newRow("4x") << QByteArray("4x") << 3 << 4;
    QTest::newRow("12X") << QByteArray("12X") << 3 << 12;
    QTest::newRow("8b") << QByteArray("8b") << 5 << 8;
    QTest::newRow("8y") << QByteArray("8y") << 5 << 8;
    QTest::newRow("y") << QByteArray("y") << 5 << 0;
    QTest::newRow("d") << QByteArray("d") << 1 << 0;
    QTest::newRow("3d") << QByteArray("3d") << 1 << 3;
    QTest::newRow("o") << QByteArray("o") << 4 << 0;
    QTest::newRow("u") << QByteArray("u") << 2 << 0;
    QTest::newRow("2u") << QByteArray("2u") << 2 << 2;
    QTest::newRow("unknown letter q") << QByteArray("q") << 0 << 0;
    QTest::newRow("digits and unknown letter") << QByteArray("3q") << 0 << 3;
    QTest::newRow("upper case D") << QByteArray("D") << 0 << 0;
    QTest::newRow("upper case B") << QByteArray("B") << 0 << 0;
    QTest::newRow("upper case Y") << QByteArray("Y") << 0 << 0;
    QTest::newRow("upper case O") << QByteArray("O") << 0 << 0;
    QTest::newRow("upper case U") << QByteArray("U") << 0 << 0;
    QTest::newRow("empty") << QByteArray("") << 0 << 0;
    QTest::newRow("letters after the first ignored") << QByteArray("xq") << 3 << 0;
    QTest::newRow("zero digits") << QByteArray("0x") << 3 << 0;
}

void TestParser::display()
{
    QFETCH(QByteArray, value);
    QFETCH(int, mode);
    QFETCH(int, digits);

    Parser parser;
    QVERIFY2(parser.parse(inEnums("<enum name=\"V\" id=\"1\" display=\"" + value + "\"/>")),
             qPrintable(parser.formatError()));
    const Item *item = parser.root->child(0)->child(0)->child(0);
    QVERIFY(item);
    QCOMPARE(item->name, QStringLiteral("V"));
    QCOMPARE(item->display.mode, mode);
    QCOMPARE(item->display.digits, digits);
    QCOMPARE(parser.warnings, QString());
}

void TestParser::ids_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<qulonglong>("id");

    QTest::newRow("0x") << QByteArray("0x1F") << 31ull;
    QTest::newRow("0X") << QByteArray("0X1F") << 31ull;
    QTest::newRow("lower hex digits") << QByteArray("0xabc") << 0xABCull;
    QTest::newRow("octal") << QByteArray("010") << 8ull;
    QTest::newRow("octal 0777") << QByteArray("0777") << 511ull;
    QTest::newRow("decimal") << QByteArray("10") << 10ull;
    QTest::newRow("zero") << QByteArray("0") << 0ull;
    QTest::newRow("negative") << QByteArray("-1") << 0xFFFFFFFFFFFFFFFFull;
    QTest::newRow("negative 5") << QByteArray("-5") << 0xFFFFFFFFFFFFFFFBull;
    QTest::newRow("negative hex") << QByteArray("-0x10") << 0xFFFFFFFFFFFFFFF0ull;
    QTest::newRow("largest signed") << QByteArray("9223372036854775807") << 0x7FFFFFFFFFFFFFFFull;
    QTest::newRow("smallest signed") << QByteArray("-9223372036854775808") << 0x8000000000000000ull;
    QTest::newRow("above signed") << QByteArray("9223372036854775808") << 0x8000000000000000ull;
    QTest::newRow("largest unsigned") << QByteArray("18446744073709551615") << 0xFFFFFFFFFFFFFFFFull;
    QTest::newRow("largest unsigned hex") << QByteArray("0xFFFFFFFFFFFFFFFF") << 0xFFFFFFFFFFFFFFFFull;
}

void TestParser::ids()
{
    QFETCH(QByteArray, text);
    QFETCH(qulonglong, id);

    Parser parser;
    QVERIFY2(parser.parse(inEnums("<enum name=\"V\" id=\"" + text + "\"/>")), qPrintable(parser.formatError()));
    const Item *item = parser.root->child(0)->child(0)->child(0);
    QVERIFY(item);
    QCOMPARE(item->name, QStringLiteral("V"));
    QVERIFY(item->hasId);
    QCOMPARE(qulonglong(item->id), id);
}

void TestParser::secureValues_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<bool>("secure");

    QTest::newRow("true") << QByteArray("true") << true;
    QTest::newRow("TRUE") << QByteArray("TRUE") << true;
    QTest::newRow("false") << QByteArray("false") << false;
    QTest::newRow("FALSE") << QByteArray("FALSE") << false;
}

void TestParser::secureValues()
{
    QFETCH(QByteArray, value);
    QFETCH(bool, secure);

    Parser parser;
    QVERIFY2(parser.parse(inRoot("<tag name=\"A\" id=\"0x1001\" secure=\"" + value + "\"/>")),
             qPrintable(parser.formatError()));
    QCOMPARE(parser.root->child(0)->secure, secure);
}

void TestParser::attributes()
{
    Parser parser;
    QVERIFY2(parser.parse(inRoot("<tag display=\"2u\" secure=\"true\" "
                                 "comment=\"a &amp; b &quot;q&quot;&#10;x&#9;y &lt;&gt; \xc3\xa4\" "
                                 "id=\"0x1A3\" name=\"Power_1\"/>")),
             qPrintable(parser.formatError()));
    const Item *tag = parser.root->child(0);
    QVERIFY(tag);
    QCOMPARE(tag->type, Tag);
    QCOMPARE(tag->name, QStringLiteral("Power_1"));
    QCOMPARE(tag->id, quint64(0x1A3));
    QVERIFY(tag->hasId);
    QCOMPARE(tag->comment, QStringLiteral("a & b \"q\"\nx\ty <> \u00e4"));
    QVERIFY(tag->secure);
    QCOMPARE(tag->display.mode, 2);
    QCOMPARE(tag->display.digits, 2);
    QCOMPARE(tag->parent, parser.root);
    QVERIFY(parser.root->parent == nullptr);

    // absent attributes
    QVERIFY(parser.parse(inRoot("<tag name=\"B\" id=\"1\"/>")));
    const Item *plain = parser.root->child(0);
    QCOMPARE(plain->comment, QStringLiteral(""));
    QVERIFY(!plain->secure);
    QCOMPARE(plain->display.mode, 0);
    QCOMPARE(plain->display.digits, 0);
}

void TestParser::unknownAttributesWarned_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("warnings");
    QTest::addColumn<QString>("tree");

    QTest::newRow("on a tag") << inRoot("<tag name=\"A\" id=\"0x1001\" unit=\"mV\"/>")
                              << warningAt(2, 39, QStringLiteral("Attribute \"unit\" is not kept"))
                              << "Root\n  Tag A id=0x1001\n";
    QTest::newRow("on the root") << QByteArray("<zat16 unit=\"mV\">\n  <tag name=\"A\" id=\"0x1001\"/>\n</zat16>\n")
                                 << warningAt(1, 17, QStringLiteral("Attribute \"unit\" is not kept"))
                                 << "Root\n  Tag A id=0x1001\n";
    QTest::newRow("on lists and their entries")
        << QByteArray("<zat16>\n"
                      "  <tag name=\"T\" id=\"0x1001\">\n"
                      "    <enums unit=\"a\">\n"
                      "      <enum name=\"V\" id=\"1\" unit=\"b\"/>\n"
                      "    </enums>\n"
                      "    <bits unit=\"c\">\n"
                      "      <bit name=\"B\" id=\"0\" unit=\"d\"/>\n"
                      "    </bits>\n"
                      "  </tag>\n"
                      "</zat16>\n")
        << warningAt(3, 20, QStringLiteral("Attribute \"unit\" is not kept"))
            + warningAt(4, 38, QStringLiteral("Attribute \"unit\" is not kept"))
            + warningAt(6, 19, QStringLiteral("Attribute \"unit\" is not kept"))
            + warningAt(7, 37, QStringLiteral("Attribute \"unit\" is not kept"))
        << "Root\n  Tag T id=0x1001\n    Bits\n      Bit B id=0x0\n    Enums\n      Enum V id=0x1\n";
    QTest::newRow("several, in their order")
        << inRoot("<tag unit=\"mV\" name=\"A\" scale=\"2\" id=\"0x1001\" min=\"0\"/>")
        << warningAt(2, 57, QStringLiteral("Attribute \"unit\" is not kept"))
            + warningAt(2, 57, QStringLiteral("Attribute \"scale\" is not kept"))
            + warningAt(2, 57, QStringLiteral("Attribute \"min\" is not kept"))
        << "Root\n  Tag A id=0x1001\n";
    // The reader gives namespace declarations apart from the attributes: they come first.
    QTest::newRow("namespace declarations and a prefixed name")
        << QByteArray("<zat16 xmlns=\"urn:z\" xmlns:x=\"urn:x\" x:unit=\"mV\">\n</zat16>\n")
        << warningAt(1, 49, QStringLiteral("Attribute \"xmlns\" is not kept"))
            + warningAt(1, 49, QStringLiteral("Attribute \"xmlns:x\" is not kept"))
            + warningAt(1, 49, QStringLiteral("Attribute \"x:unit\" is not kept"))
        << "Root\n";
    QTest::newRow("known name with a prefix") << inRoot("<tag xmlns:x=\"urn:x\" x:name=\"A\" id=\"0x1001\"/>")
                                              << warningAt(2, 47, QStringLiteral("Attribute \"xmlns:x\" is not kept"))
            + warningAt(2, 47, QStringLiteral("Attribute \"x:name\" is not kept"))
                                              << "Root\n  Tag id=0x1001\n";
    QTest::newRow("known name in another case")
        << inRoot("<tag Name=\"A\" id=\"0x1001\"/>")
        << warningAt(2, 29, QStringLiteral("Attribute \"Name\" is not kept")) << "Root\n  Tag id=0x1001\n";
    QTest::newRow("on an element out of place") << inRoot("<enums unit=\"a\"/>")
                                                << warningAt(2, 19, QStringLiteral("Element <enums> not expected."))
            + warningAt(2, 19, QStringLiteral("Attribute \"unit\" is not kept"))
                                                << "Root\n  Enums\n";
    QTest::newRow("every known attribute")
        << inRoot("<tag name=\"A\" id=\"0x1001\" comment=\"c\" secure=\"true\" display=\"x\"/>") << QString()
        << "Root\n  Tag A id=0x1001 comment=\"c\" secure display=3/0\n";
}

// An attribute the format does not know is read past, and the user told: the next save drops it.
void TestParser::unknownAttributesWarned()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, warnings);
    QFETCH(QString, tree);
    const Result result = parseText(data);
    CHECK_RESULT(result, true, "", warnings, tree);
}

void TestParser::tagWithoutId()
{
    Parser parser;
    QVERIFY(parser.parse(inRoot("<tag name=\"A\"/>")));
    const Item *tag = parser.root->child(0);
    QCOMPARE(tag->id, quint64(0));
    QVERIFY(!tag->hasId);
    QCOMPARE(tag->name, QStringLiteral("A"));
}

void TestParser::tagsSortedByType()
{
    const Result result = parseText("<zat16>\n"
                                    "  <tag name=\"A\" id=\"0x1001\">\n"
                                    "    <enums name=\"E1\"/>\n"
                                    "    <bits name=\"B1\"/>\n"
                                    "    <enums name=\"E2\"/>\n"
                                    "    <bits name=\"B2\"/>\n"
                                    "    <enums name=\"E3\"/>\n"
                                    "  </tag>\n"
                                    "</zat16>\n");
    CHECK_RESULT(result,
                 true,
                 "",
                 "",
                 "Root\n"
                 "  Tag A id=0x1001\n"
                 "    Bits B1\n"
                 "    Bits B2\n"
                 "    Enums E1\n"
                 "    Enums E2\n"
                 "    Enums E3\n");
}

void TestParser::blankLinesBroughtTogetherBySortingAreOne()
{
    // The top element's blank lines are not trimmed; sorted behind the lists they would stand
    // side by side, and a save would write two blank lines that the next reading takes as one.
    const Result result = parseText("<tag name=\"A\" id=\"0x1001\">\n"
                                    "  <enums/>\n"
                                    "\n"
                                    "  <bits/>\n"
                                    "\n"
                                    "</tag>\n");
    CHECK_RESULT(result, true, "", "", "Tag A id=0x1001\n  Bits\n  Enums\n  Tag blank\n");

    // An empty bit reads as a blank line; it sorts before the root element that came before it,
    // and a blank line first is one that no reading makes.
    const Result first = parseText("<tag name=\"A\" id=\"0x1001\"><zat16/><bit/></tag>");
    CHECK_RESULT(first,
                 true,
                 "",
                 "Warning: data, Line 1, Column 34:\n  Element <zat16> not expected.\n"
                 "Warning: data, Line 1, Column 40:\n  Element <bit> not expected.\n",
                 "Tag A id=0x1001\n  Root\n");
}

void TestParser::topElementTag()
{
    // A known element other than "zat16" at the top becomes the root with its own type. Nothing
    // above it trims its trailing blank line.
    const Result result = parseText("<tag name=\"A\" id=\"0x1001\">\n"
                                    "  <enums/>\n"
                                    "\n"
                                    "  <bits/>\n"
                                    "</tag>\n");
    CHECK_RESULT(result, true, "", "", "Tag A id=0x1001\n  Bits\n  Enums\n  Tag blank\n");

    const Result outOfRange = parseText("<tag name=\"A\" id=\"0x10000\"/>");
    CHECK_RESULT(outOfRange, false, errorAt(1, 28, QStringLiteral("(EndElement) Tag out of range")), "", "");
}

void TestParser::topElementEnums()
{
    const Result result = parseText("<enums display=\"x\"><enum name=\"X\" id=\"10\"/></enums>");
    CHECK_RESULT(result, true, "", "", "Enums display=3/0\n  Enum X id=0xA\n");
}

void TestParser::byteOrderMark()
{
    const Result result = parseText("\xef\xbb\xbf<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                    "<zat16><!-- \xc3\xa4 --></zat16>\n");
    CHECK_RESULT(result, true, "", "", "Root\n  Tag <!-- \u00e4 -->\n");
}

void TestParser::parseFile()
{
    const QString path = QStringLiteral(ZAT16_TEST_DATA "/io/parser/warnings.zatdef");
    Parser parser;
    QVERIFY2(parser.parse(path), qPrintable(parser.formatError()));
    QCOMPARE(parser.fileName, path);
    QCOMPARE(parser.warnings,
             QStringLiteral("Warning: %1, Line 4, Column 29:\n  Double tag code 0x1001\n"
                            "Warning: %1, Line 5, Column 12:\n  Unexpected element <unknown>.\n")
                 .arg(path));
    QCOMPARE(TreeText::outline(parser.root),
             QStringLiteral("Root\n"
                            "  Tag A id=0x1001\n"
                            "  Tag B id=0x1001\n"
                            "  Tag blank\n"
                            "  Tag <!-- Gr\u00f6\u00dfe -->\n"));
}

void TestParser::parseFileWithError()
{
    const QString path = QStringLiteral(ZAT16_TEST_DATA "/io/parser/badid.zatdef");
    Parser parser;
    QVERIFY(!parser.parse(path));
    QCOMPARE(parser.fileName, path);
    QCOMPARE(parser.formatError(),
             QStringLiteral("Error: %1, Line 4, Column 26:\n  (StartElement) Invalid ID").arg(path));
    QVERIFY(parser.root == nullptr);
}

void TestParser::parseMissingFile()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    Parser parser;
    QVERIFY(!parser.parse(dir.filePath(QStringLiteral("missing.zatdef"))));
    QCOMPARE(parser.formatError(),
             QStringLiteral("Error: Failed to open input file %1: No such file or directory")
                 .arg(dir.filePath(QStringLiteral("missing.zatdef"))));
    QVERIFY(parser.root == nullptr);
}

void TestParser::verboseTrace()
{
    Parser parser;
    parser.verbose = true;
    QTest::ignoreMessage(QtDebugMsg, "tt=StartDocument name=\"\" text=\"\"");
    QTest::ignoreMessage(QtDebugMsg, "tt=StartElement name=\"zat16\" text=\"\"");
    QTest::ignoreMessage(QtDebugMsg, "tt=EndElement name=\"zat16\" text=\"\"");
    QTest::ignoreMessage(QtDebugMsg, "tt=EndDocument name=\"\" text=\"\"");
    QVERIFY(parser.parse(QByteArray("<zat16/>")));
    QCOMPARE(TreeText::outline(parser.root), QStringLiteral("Root\n"));
}

void TestParser::unexpectedEndElementAtTopLevel()
{
    DrivenParser parser;
    bool result = true;
    parser.script = [&](DrivenParser &self) {
        if (!readUntil(self, QXmlStreamReader::StartElement))
            return false;
        result = self.parseElements(nullptr);
        return result;
    };
    QVERIFY(!parser.parse(QByteArray("<zat16></zat16>")));
    QVERIFY(!result);
    QCOMPARE(parser.formatError(), errorAt(1, 15, QStringLiteral("(EndElement) Unexpected end element")));
}

void TestParser::unexpectedEndOfDocumentInsideElement()
{
    DrivenParser parser;
    Item parent;
    parent.type = Root;
    bool result = true;
    parser.script = [&](DrivenParser &self) {
        if (!readUntil(self, QXmlStreamReader::EndElement))
            return false;
        result = self.parseElements(&parent);
        return result;
    };
    QVERIFY(!parser.parse(QByteArray("<zat16/>")));
    QVERIFY(!result);
    QCOMPARE(parser.formatError(), errorAt(1, 8, QStringLiteral("(EndDocument) Unexpected end of document")));
}

void TestParser::appendNewlineTypes_data()
{
    QTest::addColumn<int>("parentType");
    QTest::addColumn<int>("type");

    QTest::newRow("Bits") << int(Bits) << int(Bit);
    QTest::newRow("Bit") << int(Bit) << int(Bit);
    QTest::newRow("Enums") << int(Enums) << int(Enum);
    QTest::newRow("Enum") << int(Enum) << int(Enum);
    QTest::newRow("Root") << int(Root) << int(Tag);
    QTest::newRow("Tag") << int(Tag) << int(Tag);
    QTest::newRow("Invalid") << int(Invalid) << int(Invalid);
}

void TestParser::appendNewlineTypes()
{
    QFETCH(int, parentType);
    QFETCH(int, type);

    DrivenParser parser;
    Item parent;
    parent.type = ItemType(parentType);
    parser.appendNewline(&parent);
    QCOMPARE(parent.children.size(), 1);
    const Item *item = parent.child(0);
    QCOMPARE(int(item->type), type);
    QCOMPARE(item->parent, &parent);
    QVERIFY(!item->hasId);
    QVERIFY(item->name.isEmpty());
    QVERIFY(item->comment.isEmpty());
}

void TestParser::appendCommentTypes_data()
{
    QTest::addColumn<int>("parentType");
    QTest::addColumn<int>("type");

    QTest::newRow("Root") << int(Root) << int(Tag);
    QTest::newRow("Enums") << int(Enums) << int(Enum);
    QTest::newRow("Bits") << int(Bits) << int(Bit);
    // anywhere else the comment is dropped
    QTest::newRow("Tag") << int(Tag) << -100;
    QTest::newRow("Enum") << int(Enum) << -100;
    QTest::newRow("Bit") << int(Bit) << -100;
    QTest::newRow("Invalid") << int(Invalid) << -100;
}

void TestParser::appendCommentTypes()
{
    QFETCH(int, parentType);
    QFETCH(int, type);

    DrivenParser parser;
    Item parent;
    parent.type = ItemType(parentType);
    auto *comment = new Item;
    comment->comment = QStringLiteral("text");
    parser.appendComment(&parent, comment);
    if (type == -100) {
        QVERIFY(parent.children.isEmpty());
    } else {
        QCOMPARE(parent.children.size(), 1);
        QCOMPARE(parent.child(0), comment);
        QCOMPARE(int(comment->type), type);
        QCOMPARE(comment->parent, &parent);
        QCOMPARE(comment->comment, QStringLiteral("text"));
    }
}

void TestParser::trimNewlinesFromEnd()
{
    DrivenParser parser;
    Item parent;
    parent.type = Enums;
    auto addChild = [&](const QString &name, const QString &comment) {
        auto *item = new Item;
        item->type = Enum;
        item->name = name;
        item->comment = comment;
        parent.appendChild(item);
    };
    addChild(QString(), QString());
    addChild(QStringLiteral("A"), QString());
    addChild(QString(), QString());
    addChild(QString(), QStringLiteral("c"));
    addChild(QString(), QString());
    addChild(QString(), QString());
    parser.trimNewlines(&parent);
    QCOMPARE(TreeText::outline(&parent),
             QStringLiteral("Enums\n  Enum blank\n  Enum A\n  Enum blank\n  Enum <!--c-->\n"));

    Item onlyBlanks;
    onlyBlanks.type = Root;
    onlyBlanks.appendChild(new Item);
    onlyBlanks.child(0)->type = Tag;
    parser.trimNewlines(&onlyBlanks);
    QVERIFY(onlyBlanks.children.isEmpty());
}

QTEST_GUILESS_MAIN(TestParser)

#include "tst_parser.moc"
