// Tests of the problems list: every kind of marked entry with its exact message, the legal
// nameless enumeration value, keyword warnings per language, document order, and a file of
// 100,000 tags, to show that large trees are handled (speed is the benchmark's business).

#include "bodyparser.h"
#include "item.h"
#include "problems.h"

#include <QtTest>

#include <memory>

using namespace ZAT16;
using TestTrees::parseBody;

namespace {

QStringList messages(const QList<Problems::Problem> &problems)
{
    QStringList list;
    for (const Problems::Problem &problem : problems)
        list << (problem.isWarning() ? QStringLiteral("warning: ") : QStringLiteral("problem: ")) + problem.message;
    return list;
}

Item *tag(const QString &name, quint64 code, bool hasCode = true)
{
    auto *item = new Item;
    item->type = Tag;
    item->name = name;
    item->id = code;
    item->hasId = hasCode;
    return item;
}

} // namespace

class TestProblems : public QObject
{
    Q_OBJECT

private slots:
    void kinds_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QStringList>("expected");

        QTest::newRow("complete entries") << QByteArray("<tag name=\"Mode\" id=\"0x1002\"><enums>"
                                                        "<enum name=\"Off\" id=\"0\"/><enum name=\"On\" id=\"1\"/>"
                                                        "</enums></tag>")
                                          << QStringList();
        QTest::newRow("name without code")
            << QByteArray("<tag name=\"Mode\"/>") << QStringList { "problem: Tag Mode: name without code" };
        QTest::newRow("code without name")
            << QByteArray("<tag id=\"0x1002\"/>") << QStringList { "problem: Tag (0x1002): code without name" };
        QTest::newRow("tag with a code and a comment but no name")
            << QByteArray("<tag id=\"0x1002\" comment=\"later\"/>")
            << QStringList { "problem: Tag (0x1002): code without name" };
        QTest::newRow("enumeration value with a code and a comment but no name is legal")
            << QByteArray("<tag name=\"Mode\" id=\"0x1002\"><enums><enum id=\"7\" comment=\"reserved\"/></enums></tag>")
            << QStringList();
        QTest::newRow("enumeration value with a code but no name and no comment")
            << QByteArray("<tag name=\"Mode\" id=\"0x1002\"><enums><enum id=\"7\"/></enums></tag>")
            << QStringList { "problem: Enum (7) of Tag Mode (0x1002): code without name" };
        QTest::newRow("bit with a code and a comment but no name")
            << QByteArray("<tag name=\"Flags\" id=\"0x7001\"><bits><bit id=\"3\" comment=\"spare\"/></bits></tag>")
            << QStringList { "problem: Bit (3) of Tag Flags (0x7001): code without name" };
        QTest::newRow("bit with a name but no code")
            << QByteArray("<tag name=\"Flags\" id=\"0x7001\"><bits><bit name=\"Ready\"/></bits></tag>")
            << QStringList { "problem: Bit Ready of Tag Flags (0x7001): name without code" };
        QTest::newRow("name collision") << QByteArray(
            "<tag name=\"Mode\" id=\"0x1001\"/><tag name=\"Mode\" id=\"0x1002\"/>")
                                        << QStringList { "problem: Tag Mode (0x1001): name collision with a sibling",
                                                         "problem: Tag Mode (0x1002): name collision with a sibling" };
        QTest::newRow("code collision") << QByteArray("<tag name=\"A\" id=\"0x1001\"/><tag name=\"B\" id=\"4097\"/>")
                                        << QStringList { "problem: Tag A (0x1001): code collision with a sibling",
                                                         "problem: Tag B (0x1001): code collision with a sibling" };
        QTest::newRow("name and code collision")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"/><tag name=\"A\" id=\"0x1001\"/>")
            << QStringList { "problem: Tag A (0x1001): name collision with a sibling",
                             "problem: Tag A (0x1001): code collision with a sibling",
                             "problem: Tag A (0x1001): name collision with a sibling",
                             "problem: Tag A (0x1001): code collision with a sibling" };
        QTest::newRow("names without code that collide")
            << QByteArray("<tag name=\"Mode\"/><tag name=\"Mode\"/>")
            << QStringList { "problem: Tag Mode: name without code",
                             "problem: Tag Mode: name collision with a sibling",
                             "problem: Tag Mode: name without code",
                             "problem: Tag Mode: name collision with a sibling" };
        QTest::newRow("enumeration values collide in their list")
            << QByteArray("<tag name=\"Mode\" id=\"0x1002\"><enums display=\"x\">"
                          "<enum name=\"Off\" id=\"0x0A\"/><enum name=\"On\" id=\"10\"/>"
                          "</enums></tag>")
            << QStringList { "problem: Enum Off (0xA) of Tag Mode (0x1002): code collision with a sibling",
                             "problem: Enum On (0xA) of Tag Mode (0x1002): code collision with a sibling" };
        QTest::newRow("equal values in different lists do not collide")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"><enums><enum name=\"Off\" id=\"0\"/></enums></tag>"
                          "<tag name=\"B\" id=\"0x1002\"><enums><enum name=\"Off\" id=\"0\"/></enums></tag>")
            << QStringList();
        QTest::newRow("entries below a tag without name and code")
            << QByteArray("<tag><enums><enum name=\"Off\" id=\"0\"/></enums></tag>")
            << QStringList { "problem: Tag in row 1: has entries but no name and no code" };
        QTest::newRow("entries below a tag with a name only") << QByteArray(
            "<tag name=\"A\" id=\"0x1001\"/><tag name=\"Mode\"><enums><enum name=\"Off\" id=\"0\"/></enums></tag>")
                                                              << QStringList { "problem: Tag Mode: name without code" };
        QTest::newRow("entries below a tag with a code only")
            << QByteArray("<tag id=\"0x1002\"><bits><bit name=\"Ready\" id=\"0\"/></bits></tag>")
            << QStringList { "problem: Tag (0x1002): code without name" };
        QTest::newRow("a misplaced tag inside a tag")
            << QByteArray("<tag name=\"Outer\" id=\"0x1001\"><tag name=\"Inner\"/></tag>")
            << QStringList { "problem: Tag Inner of Tag Outer (0x1001): name without code" };
        QTest::newRow("comment lines and blank lines are fine")
            << QByteArray("<!-- a note -->\n\n<tag name=\"A\" id=\"0x1001\"><enums><!-- values -->\n\n"
                          "<enum name=\"Off\" id=\"0\"/></enums></tag>")
            << QStringList();
        QTest::newRow("keyword of Lua") << QByteArray("<tag name=\"end\" id=\"0x1001\"/>")
                                        << QStringList { "warning: Tag end (0x1001): name is a keyword of Lua" };
        QTest::newRow("keyword of every language")
            << QByteArray("<tag name=\"while\" id=\"0x1001\"/>")
            << QStringList { "warning: Tag while (0x1001): name is a keyword of C, C++, C# and Lua" };
        QTest::newRow("keyword of C++ and C#")
            << QByteArray("<tag name=\"class\" id=\"0x1001\"/>")
            << QStringList { "warning: Tag class (0x1001): name is a keyword of C++ and C#" };
        QTest::newRow("keyword of C only") << QByteArray("<tag name=\"restrict\" id=\"0x1001\"/>")
                                           << QStringList { "warning: Tag restrict (0x1001): name is a keyword of C" };
        QTest::newRow("keyword of C# only") << QByteArray("<tag name=\"string\" id=\"0x1001\"/>")
                                            << QStringList { "warning: Tag string (0x1001): name is a keyword of C#" };
        QTest::newRow("keyword with an underscore")
            << QByteArray("<tag name=\"_Bool\" id=\"0x1001\"/>")
            << QStringList { "warning: Tag _Bool (0x1001): name is a keyword of C" };
        QTest::newRow("keywords are case-sensitive")
            << QByteArray("<tag name=\"End\" id=\"0x1001\"/><tag name=\"WHILE\" id=\"0x1002\"/>") << QStringList();
        QTest::newRow("keyword as an enumeration value")
            << QByteArray("<tag name=\"Mode\" id=\"0x1002\"><enums><enum name=\"int\" id=\"0\"/></enums></tag>")
            << QStringList { "warning: Enum int (0) of Tag Mode (0x1002): name is a keyword of C, C++ and C#" };
        QTest::newRow("keyword after the problems of the same entry")
            << QByteArray("<tag name=\"nil\"/>")
            << QStringList { "problem: Tag nil: name without code", "warning: Tag nil: name is a keyword of Lua" };
        QTest::newRow("document order")
            << QByteArray("<tag name=\"A\"><enums><enum name=\"X\"/></enums></tag>"
                          "<tag name=\"B\" id=\"0x1002\"><bits><bit id=\"1\"/></bits><enums><enum name=\"do\" "
                          "id=\"0\"/></enums></tag>"
                          "<tag name=\"C\"/>")
            << QStringList { "problem: Tag A: name without code",
                             "problem: Enum X of Tag A: name without code",
                             "problem: Bit (1) of Tag B (0x1002): code without name",
                             "warning: Enum do (0) of Tag B (0x1002): name is a keyword of C, C++, C# and Lua",
                             "problem: Tag C: name without code" };
    }

    void kinds()
    {
        QFETCH(QByteArray, body);
        QFETCH(QStringList, expected);
        const std::unique_ptr<Item> root = parseBody(body);
        QVERIFY(root);
        QCOMPARE(messages(Problems::find(root.get())), expected);
    }

    // Names that the reader refuses come in by editing, a paste or a drop; the file would not open
    // again, so they are problems, with the reader's message.
    void namesTheReaderRefuses()
    {
        const std::unique_ptr<Item> root
            = parseBody("<tag name=\"A\" id=\"0x1001\"><enums><enum name=\"X\" id=\"1\"/></enums></tag>"
                        "<tag name=\"B\" id=\"0x1002\"/><tag name=\"C\" id=\"0x1003\"/>"
                        "<tag name=\"D\"/>");
        QVERIFY(root);
        root->child(0)->name = QStringLiteral("Tag");
        root->child(0)->child(0)->child(0)->name = QStringLiteral("Tag");
        root->child(1)->name = QStringLiteral("1abc");
        root->child(2)->name = QStringLiteral("a-b");
        root->child(3)->name = QStringLiteral("9");
        QCOMPARE(messages(Problems::find(root.get())),
                 (QStringList { "problem: Tag Tag (0x1001): The name \"Tag\" is reserved.",
                                "problem: Enum Tag (1) of Tag Tag (0x1001): The name \"Tag\" is reserved.",
                                "problem: Tag 1abc (0x1002): Name must not start with a digit.",
                                "problem: Tag a-b (0x1003): Invalid characters in name.",
                                "problem: Tag 9: name without code",
                                "problem: Tag 9: Name must not start with a digit." }));
        const QList<Problems::Problem> problems = Problems::find(root.get());
        QCOMPARE(problems.at(0).kind, Problems::InvalidName);
        QVERIFY(!problems.at(0).isWarning());
    }

    void problemsPointAtTheirItems()
    {
        const std::unique_ptr<Item> root
            = parseBody("<tag name=\"A\" id=\"0x1001\"/><tag name=\"B\"/><tag id=\"0x1003\"/>");
        QVERIFY(root);
        const QList<Problems::Problem> problems = Problems::find(root.get());
        QCOMPARE(problems.size(), 2);
        QCOMPARE(problems.at(0).item, root->child(1));
        QCOMPARE(problems.at(0).kind, Problems::NameWithoutCode);
        QVERIFY(!problems.at(0).isWarning());
        QCOMPARE(problems.at(1).item, root->child(2));
        QCOMPARE(problems.at(1).kind, Problems::CodeWithoutName);
    }

    // A parent that is itself an entry with a code and a comment but no name: legal as a value,
    // but not with entries below it.
    void nameOnlyLacksOnParent()
    {
        std::unique_ptr<Item> root(new Item);
        root->type = Root;
        Item *mode = tag(QStringLiteral("Mode"), 0x1002);
        root->appendChild(mode);
        auto *list = new Item;
        list->type = Enums;
        mode->appendChild(list);
        auto *value = new Item;
        value->type = Enum;
        value->id = 1;
        value->hasId = true;
        value->comment = QStringLiteral("odd");
        list->appendChild(value);
        auto *below = new Item;
        below->type = Enum;
        below->name = QStringLiteral("Below");
        below->id = 0;
        below->hasId = true;
        value->appendChild(below);
        QCOMPARE(messages(Problems::find(root.get())),
                 QStringList { "problem: Enum (1) of Tag Mode (0x1002): has entries but no name" });
    }

    void emptyTrees()
    {
        QVERIFY(Problems::find(nullptr).isEmpty());
        Item root;
        root.type = Root;
        QVERIFY(Problems::find(&root).isEmpty());
    }

    void describe()
    {
        const std::unique_ptr<Item> root
            = parseBody("<tag name=\"Mode\" id=\"0x1002\"><enums display=\"4u\"><enum name=\"On\" id=\"1\"/>"
                        "</enums></tag>\n\n<tag/>");
        QVERIFY(root);
        QCOMPARE(Problems::describe(root->child(0)), QStringLiteral("Tag Mode (0x1002)"));
        QCOMPARE(Problems::describe(root->child(0)->child(0)->child(0)),
                 QStringLiteral("Enum On (0001) of Tag Mode (0x1002)"));
        QCOMPARE(Problems::describe(root->child(2)), QStringLiteral("Tag in row 3"));
    }

    void keywordLanguages_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("languages");
        QTest::newRow("plain name") << "Mode" << QStringList();
        QTest::newRow("if") << "if" << QStringList { "C", "C++", "C#", "Lua" };
        QTest::newRow("function") << "function" << QStringList { "Lua" };
        QTest::newRow("elseif") << "elseif" << QStringList { "Lua" };
        QTest::newRow("and") << "and" << QStringList { "C++", "Lua" };
        QTest::newRow("typename") << "typename" << QStringList { "C++" };
        QTest::newRow("namespace") << "namespace" << QStringList { "C++", "C#" };
        QTest::newRow("int") << "int" << QStringList { "C", "C++", "C#" };
        QTest::newRow("true") << "true" << QStringList { "C", "C++", "C#", "Lua" };
        QTest::newRow("foreach") << "foreach" << QStringList { "C#" };
        QTest::newRow("typeof") << "typeof" << QStringList { "C", "C#" };
        QTest::newRow("_Generic") << "_Generic" << QStringList { "C" };
        QTest::newRow("co_await") << "co_await" << QStringList { "C++" };
        QTest::newRow("override") << "override" << QStringList { "C#" };
        QTest::newRow("not a keyword: final") << "final" << QStringList();
        QTest::newRow("not a keyword: Int") << "Int" << QStringList();
    }

    void keywordLanguages()
    {
        QFETCH(QString, name);
        QFETCH(QStringList, languages);
        QCOMPARE(Problems::keywordLanguages(name), languages);
    }

    // 100,000 tags, every name and every code repeated: a scan of the siblings per entry would
    // take minutes.
    void largeTree()
    {
        std::unique_ptr<Item> root(new Item);
        root->type = Root;
        for (int i = 0; i < 100000; ++i)
            root->appendChild(tag(QStringLiteral("T%1").arg(i / 2), quint64(i / 2)));
        const QList<Problems::Problem> problems = Problems::find(root.get());
        QCOMPARE(problems.size(), 200000);
        QCOMPARE(problems.first().message, QStringLiteral("Tag T0 (0x0000): name collision with a sibling"));
    }
};

QTEST_GUILESS_MAIN(TestProblems)
#include "tst_problems.moc"
