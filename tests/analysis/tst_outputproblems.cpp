// Tests of the problems of the generated outputs: each way in which a definitions file makes an
// output fail to compile or load, or hold another value than the file's, with its exact message,
// and the files for which an output is fine although it looks doubtful. Whether the rules meet
// the real compilers is shown by tests/cli/differential.py.

#include "bodyparser.h"
#include "item.h"
#include "outputproblems.h"

#include <QtTest>

#include <memory>

using namespace ZAT16;
using TestTrees::parseBody;

namespace {

constexpr OutputProblems::OutputSet header = 1u << Outputs::Header;
constexpr OutputProblems::OutputSet lua = 1u << Outputs::Lua;
constexpr OutputProblems::OutputSet cpp = 1u << Outputs::Cpp;
constexpr OutputProblems::OutputSet cppLut = 1u << Outputs::CppLut;
constexpr OutputProblems::OutputSet cs = 1u << Outputs::Cs;

QStringList messages(const QList<OutputProblems::Problem> &problems)
{
    QStringList list;
    for (const OutputProblems::Problem &problem : problems)
        list << problem.message;
    return list;
}

} // namespace

class TestOutputProblems : public QObject
{
    Q_OBJECT

private slots:
    void outputNames()
    {
        QCOMPARE(OutputProblems::outputName(Outputs::Header), QStringLiteral("the C header"));
        QCOMPARE(OutputProblems::outputName(Outputs::Lua), QStringLiteral("the Lua script"));
        QCOMPARE(OutputProblems::outputName(Outputs::Cpp), QStringLiteral("the C++ enums header"));
        QCOMPARE(OutputProblems::outputName(Outputs::CppLut), QStringLiteral("the C++ lookup-table header"));
        QCOMPARE(OutputProblems::outputName(Outputs::Cs), QStringLiteral("the C# file"));
    }

    void rules_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<uint>("outputs");
        QTest::addColumn<QStringList>("expected");

        // ---- A tag with both lists
        QTest::newRow("both lists on one tag")
            << QByteArray("<tag name=\"Mode\" id=\"0x1002\"><enums><enum name=\"Off\" id=\"0\"/></enums>"
                          "<bits><bit name=\"Busy\" id=\"1\"/></bits></tag>")
            << uint(OutputProblems::AllOutputs)
            << QStringList { "Tag Mode (0x1002): the C++ enums header will not compile: the tag has both an "
                             "enumeration list and a bit list",
                             "Tag Mode (0x1002): the C++ lookup-table header will not compile: the tag has both an "
                             "enumeration list and a bit list, which are both nameLookupMode" };
        QTest::newRow("both lists, one of them without entries, are fine")
            << QByteArray("<tag name=\"Mode\" id=\"0x1002\"><enums><enum name=\"Off\" id=\"0\"/></enums>"
                          "<bits/></tag>")
            << uint(cpp) << QStringList();

        // ---- Padded decimal displays
        QTest::newRow("padded unsigned decimal")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"><enums display=\"4u\"><enum name=\"Ten\" id=\"10\"/>"
                          "<enum name=\"Three\" id=\"3\"/></enums></tag>")
            << uint(OutputProblems::AllOutputs)
            << QStringList { "Enum Ten (0010) of Tag A (0x1001): the C header writes 0010, which C reads as octal 8",
                             "Enum Ten (0010) of Tag A (0x1001): the C++ enums header writes 0010, which C++ reads as "
                             "octal 8",
                             "Enum Ten (0010) of Tag A (0x1001): the C++ lookup-table header writes 0010, which C++ "
                             "reads as octal 8" };
        QTest::newRow("padded signed decimal")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"><enums display=\"4d\"><enum name=\"Ten\" id=\"10\"/>"
                          "<enum name=\"Three\" id=\"3\"/></enums></tag>")
            << uint(header)
            << QStringList { "Enum Ten (0010) of Tag A (0x1001): the C header writes 0010, which C "
                             "reads as octal 8" };
        QTest::newRow("padding without a mode")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"><enums><enum name=\"Ten\" id=\"10\" display=\"4\"/>"
                          "<enum name=\"Three\" id=\"3\"/></enums></tag>")
            << uint(header)
            << QStringList { "Enum Ten (0010) of Tag A (0x1001): the C header writes 0010, which C "
                             "reads as octal 8" };
        QTest::newRow("padded bit number")
            << QByteArray("<tag name=\"F\" id=\"0x7001\"><bits display=\"4u\"><bit name=\"B10\" id=\"10\"/>"
                          "</bits></tag>")
            << uint(OutputProblems::AllOutputs)
            << QStringList { "Bit B10 (0010) of Tag F (0x7001): the C header writes 0010, which C reads as octal 8" };
        QTest::newRow("padded 9 is no octal number")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"><enums display=\"4u\"><enum name=\"Nine\" id=\"9\"/>"
                          "<enum name=\"Three\" id=\"3\"/></enums></tag>")
            << uint(header | cs | lua)
            << QStringList { "Enum Nine (0009) of Tag A (0x1001): the C header will not compile: 0009 is no number in "
                             "C" };
        QTest::newRow("padded digits below 8 read alike")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"><enums display=\"4u\"><enum name=\"Seven\" id=\"7\"/>"
                          "<enum name=\"Three\" id=\"3\"/></enums></tag>")
            << uint(OutputProblems::AllOutputs) << QStringList();
        QTest::newRow("padding before a minus sign is a subtraction")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"><enums display=\"4d\"><enum name=\"Minus\" id=\"-15\"/>"
                          "<enum name=\"Three\" id=\"3\"/></enums></tag>")
            << uint(OutputProblems::AllOutputs) << QStringList();
        QTest::newRow("a counted list is written in decimal")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"><enums display=\"4u\"><enum name=\"Zero\" id=\"0\"/>"
                          "<enum name=\"One\" id=\"1\"/></enums></tag>")
            << uint(OutputProblems::AllOutputs) << QStringList();

        // ---- Octal and binary displays
        QTest::newRow("octal display")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"><enums display=\"o\"><enum name=\"Eight\" id=\"8\"/>"
                          "</enums></tag>")
            << uint(OutputProblems::AllOutputs)
            << QStringList { "Enum Eight (0o10) of Tag A (0x1001): the C header will not compile: 0o10 is no number in "
                             "C",
                             "Enum Eight (0o10) of Tag A (0x1001): the Lua script will not load: 0o10 is no number in "
                             "Lua",
                             "Enum Eight (0o10) of Tag A (0x1001): the C++ enums header will not compile: 0o10 is no "
                             "number in C++",
                             "Enum Eight (0o10) of Tag A (0x1001): the C++ lookup-table header will not compile: 0o10 "
                             "is no number in C++",
                             "Enum Eight (0o10) of Tag A (0x1001): the C# file will not compile: 0o10 is no number in "
                             "C#" };
        QTest::newRow("binary display of a bit number")
            << QByteArray("<tag name=\"F\" id=\"0x7001\"><bits display=\"y\"><bit name=\"B5\" id=\"5\"/></bits></tag>")
            << uint(OutputProblems::AllOutputs)
            << QStringList { "Bit B5 (0y101) of Tag F (0x7001): the C header will not compile: 0y101 is no number in "
                             "C" };

        // ---- Names that collide once prefixed or joined
        QTest::newRow("joined names of the C header")
            << QByteArray("<tag name=\"A_B\" id=\"0x1001\"><enums><enum name=\"C\" id=\"1\"/></enums></tag>"
                          "<tag name=\"A\" id=\"0x1002\"><enums><enum name=\"B_C\" id=\"2\"/></enums></tag>")
            << uint(header)
            << QStringList { "Enum C (1) of Tag A_B (0x1001): the C header will not compile: ENU_A_B_C is defined "
                             "again with another value for Enum B_C (2) of Tag A (0x1002)",
                             "Enum B_C (2) of Tag A (0x1002): the C header will not compile: ENU_A_B_C is defined "
                             "again with another value for Enum C (1) of Tag A_B (0x1001)" };
        QTest::newRow("joined names with the same value")
            << QByteArray("<tag name=\"A_B\" id=\"0x1001\"><enums><enum name=\"C\" id=\"2\"/></enums></tag>"
                          "<tag name=\"A\" id=\"0x1002\"><enums><enum name=\"B_C\" id=\"2\"/></enums></tag>")
            << uint(header) << QStringList();
        QTest::newRow("a Lua table written again")
            << QByteArray("<tag name=\"BitX\" id=\"0x1001\"><enums><enum name=\"On\" id=\"1\"/></enums></tag>"
                          "<tag name=\"X\" id=\"0x7001\"><bits><bit name=\"Ready\" id=\"0\"/></bits></tag>")
            << uint(lua)
            << QStringList { "Enum On (1) of Tag BitX (0x1001): the Lua script writes zat16.lutBitX again for Tag X "
                             "(0x7001), which replaces the table of this entry" };

        // ---- One name, two codes
        QTest::newRow("two tags with one name and different codes")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"/><tag name=\"A\" id=\"0x1002\"/>")
            << uint(OutputProblems::AllOutputs)
            << QStringList {
                   "Tag A (0x1001): the C header will not compile: TAG_A is defined again with another value for Tag "
                   "A (0x1002)",
                   "Tag A (0x1001): the Lua script writes the key A of zat16.lutTag again with another value for Tag "
                   "A (0x1002)",
                   "Tag A (0x1001): the C++ enums header will not compile: Tag::A is also written for Tag A (0x1002)",
                   "Tag A (0x1001): the C# file will not compile: TagID.A is also written for Tag A (0x1002)",
                   "Tag A (0x1002): the C header will not compile: TAG_A is defined again with another value for Tag "
                   "A (0x1001)",
                   "Tag A (0x1002): the C++ enums header will not compile: Tag::A is also written for Tag A (0x1001)",
                   "Tag A (0x1002): the C# file will not compile: TagID.A is also written for Tag A (0x1001)"
               };
        QTest::newRow("one name for a nested and a plain tag")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"/><tag name=\"A\" id=\"0xC001\"/>") << uint(header | cpp)
            << QStringList();

        // ---- Nameless enumeration values
        QTest::newRow("nameless enumeration value with a code")
            << QByteArray(
                   "<tag name=\"Level\" id=\"0x1003\"><enums><enum id=\"5\" comment=\"reserved\"/></enums></tag>")
            << uint(OutputProblems::AllOutputs)
            << QStringList { "Enum (5) of Tag Level (0x1003): the C++ enums header will not compile: the value has no "
                             "name",
                             "Enum (5) of Tag Level (0x1003): the C# file will not compile: the value has no name" };
        QTest::newRow("comment key that Lua cannot read")
            << QByteArray("<tag name=\"Level\" id=\"0x1003\"><enums><enum id=\"5\" comment=\"it's\"/>"
                          "<enum id=\"6\" comment=\"a&#10;b\"/><enum id=\"7\" comment=\"a\\b\"/></enums></tag>")
            << uint(lua)
            << QStringList { "Enum (5) of Tag Level (0x1003): the Lua script will not load: the ' in the comment that "
                             "is its key ends the string",
                             "Enum (6) of Tag Level (0x1003): the Lua script will not load: the comment that is its "
                             "key holds a line break",
                             "Enum (7) of Tag Level (0x1003): the Lua script reads the \\ in the comment that is its "
                             "key as an escape" };

        // ---- Values beyond the types
        QTest::newRow("value beyond the int of C#")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"><enums><enum name=\"Big\" id=\"4294967296\"/></enums></tag>")
            << uint(OutputProblems::AllOutputs)
            << QStringList { "Enum Big (4294967296) of Tag A (0x1001): the C# file will not compile: 4294967296 does "
                             "not fit in the int of a C# enumeration" };
        QTest::newRow("hexadecimal value beyond long long")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"><enums display=\"x\"><enum name=\"All\" id=\"-1\"/>"
                          "</enums></tag>")
            << uint(header | lua | cpp | cppLut)
            << QStringList { "Enum All (0xFFFFFFFFFFFFFFFF) of Tag A (0x1001): the C++ lookup-table header will not "
                             "compile: 0xFFFFFFFFFFFFFFFF does not fit in the long long of a row" };
        QTest::newRow("unsigned decimal value beyond long long")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"><enums display=\"u\"><enum name=\"All\" id=\"-1\"/>"
                          "</enums></tag>")
            << uint(header | lua)
            << QStringList { "Enum All (18446744073709551615) of Tag A (0x1001): the C header will not compile: "
                             "18446744073709551615 is too large for long long",
                             "Enum All (18446744073709551615) of Tag A (0x1001): the Lua script writes "
                             "18446744073709551615, which Lua reads as a float" };
        QTest::newRow("the smallest int of C#")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"><enums><enum name=\"Min\" id=\"-2147483648\"/></enums></tag>")
            << uint(OutputProblems::AllOutputs) << QStringList();

        // ---- Bit numbers of 32 and more
        QTest::newRow("bit 40")
            << QByteArray("<tag name=\"F\" id=\"0x7001\"><bits><bit name=\"B40\" id=\"40\"/></bits></tag>")
            << uint(OutputProblems::AllOutputs)
            << QStringList { "Bit B40 (40) of Tag F (0x7001): the C header writes the mask of bit 40 as 0x00000000: "
                             "masks hold 32 bits",
                             "Bit B40 (40) of Tag F (0x7001): the Lua script writes the mask of bit 40 as 256: masks "
                             "are signed 32-bit numbers there",
                             "Bit B40 (40) of Tag F (0x7001): the C++ enums header writes the mask of bit 40 as "
                             "0x00000000: masks hold 32 bits",
                             "Bit B40 (40) of Tag F (0x7001): the C# file writes the mask of bit 40 as 0x00000000: "
                             "masks hold 32 bits" };
        QTest::newRow("bit 31")
            << QByteArray("<tag name=\"F\" id=\"0x7001\"><bits><bit name=\"B31\" id=\"31\"/></bits></tag>")
            << uint(OutputProblems::AllOutputs)
            << QStringList { "Bit B31 (31) of Tag F (0x7001): the Lua script writes the mask of bit 31 as -2147483648: "
                             "masks are signed 32-bit numbers there",
                             "Bit B31 (31) of Tag F (0x7001): the C# file will not compile: the mask 0x80000000 of "
                             "bit 31 does not fit in the int of a C# enumeration" };
        QTest::newRow("bit 30") << QByteArray(
            "<tag name=\"F\" id=\"0x7001\"><bits><bit name=\"B30\" id=\"30\"/></bits></tag>")
                                << uint(OutputProblems::AllOutputs) << QStringList();

        // ---- Keywords and the outputs' own names
        QTest::newRow("keyword of Lua") << QByteArray("<tag name=\"end\" id=\"0x1001\"/>")
                                        << uint(OutputProblems::AllOutputs)
                                        << QStringList {
                                               "Tag end (0x1001): the Lua script will not load: end is a keyword of Lua"
                                           };
        QTest::newRow("keyword as a namespace of the C++ enums header")
            << QByteArray("<tag name=\"int\" id=\"0x1001\"><enums><enum name=\"A\" id=\"0\"/></enums></tag>")
            << uint(cpp)
            << QStringList { "Tag int (0x1001): the C++ enums header will not compile: int is a keyword "
                             "of C++" };
        QTest::newRow("keyword the C# standard does not list")
            << QByteArray("<tag name=\"__arglist\" id=\"0x1001\"/>") << uint(cs)
            << QStringList { "Tag __arglist (0x1001): the C# file will not compile: __arglist is a keyword of C#" };
        QTest::newRow("value__ in C#")
            << QByteArray("<tag name=\"value__\" id=\"0x1001\"/>") << uint(OutputProblems::AllOutputs)
            << QStringList { "Tag value__ (0x1001): the C# file will not compile: value__ is reserved in C# "
                             "enumerations" };
        QTest::newRow("the name of the value count")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"><enums><enum name=\"EnumCount\" id=\"0\"/></enums></tag>")
            << uint(OutputProblems::AllOutputs)
            << QStringList { "Enum EnumCount (0) of Tag A (0x1001): the C++ enums header will not compile: EnumCount "
                             "is the name of the count of the values" };
        QTest::newRow("EnumCount in a list that is not counted")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"><enums><enum name=\"EnumCount\" id=\"5\"/></enums></tag>")
            << uint(cpp) << QStringList();
        QTest::newRow("namespace of the C++ enums header")
            << QByteArray("<tag name=\"Cmd\" id=\"0x1001\"><enums><enum name=\"A\" id=\"0\"/></enums></tag>")
            << uint(cpp)
            << QStringList { "Tag Cmd (0x1001): the C++ enums header will not compile: namespace Cmd is the header's "
                             "own" };
        QTest::newRow("table of the top-level tags")
            << QByteArray("<tag name=\"ToplevelTags\" id=\"0x1001\"><enums><enum name=\"A\" id=\"0\"/></enums></tag>")
            << uint(cppLut)
            << QStringList { "Tag ToplevelTags (0x1001): the C++ lookup-table header will not compile: "
                             "nameLookupToplevelTags is the table of the top-level tags" };
        QTest::newRow("fixed names that do no harm")
            << QByteArray("<tag name=\"TagID\" id=\"0x1001\"/><tag name=\"ZAT16DT_Binary\" id=\"0x1002\"/>"
                          "<tag name=\"T\" id=\"0x1003\"><enums><enum name=\"T\" id=\"0\"/><enum name=\"C\" id=\"1\"/>"
                          "</enums></tag>")
            << uint(OutputProblems::AllOutputs) << QStringList();
        QTest::newRow("lookup table named but not written")
            << QByteArray("<tag name=\"A\" id=\"0x1001\"><enums/></tag>") << uint(OutputProblems::AllOutputs)
            << QStringList { "Tag A (0x1001): the C++ lookup-table header will not compile: tagLookup names "
                             "nameLookupA, which is not written: the tag's list has no entries" };
        QTest::newRow("nameless answer of a pair")
            << QByteArray("<tag name=\"Get\" id=\"0xD101\"/><tag id=\"0xE101\"/>") << uint(OutputProblems::AllOutputs)
            << QStringList { "Tag (0xE101): the Lua script will not load: the tag has no name",
                             "Tag (0xE101): the C++ enums header will not compile: the tag has no name",
                             "Tag (0xE101): the C# file will not compile: the tag has no name" };

        // ---- Only the outputs asked for
        QTest::newRow("only the C header asked for")
            << QByteArray("<tag name=\"Mode\" id=\"0x1002\"><enums><enum name=\"Off\" id=\"0\"/></enums>"
                          "<bits><bit name=\"Busy\" id=\"1\"/></bits></tag>")
            << uint(header) << QStringList();
    }

    void rules()
    {
        QFETCH(QByteArray, body);
        QFETCH(uint, outputs);
        QFETCH(QStringList, expected);
        const std::unique_ptr<Item> root = parseBody(body);
        QVERIFY(root);
        QCOMPARE(messages(OutputProblems::find(root.get(), outputs)), expected);
    }

    void problemsKnowTheirEntryAndOutput()
    {
        const std::unique_ptr<Item> root
            = parseBody("<tag name=\"Mode\" id=\"0x1002\"><enums><enum name=\"Off\" id=\"0\"/></enums>"
                        "<bits><bit name=\"Busy\" id=\"1\"/></bits></tag>");
        QVERIFY(root);
        const QList<OutputProblems::Problem> problems = OutputProblems::find(root.get());
        QCOMPARE(problems.size(), 2);
        QCOMPARE(problems.at(0).item, root->child(0));
        QCOMPARE(problems.at(0).output, Outputs::Cpp);
        QCOMPARE(problems.at(1).item, root->child(0));
        QCOMPARE(problems.at(1).output, Outputs::CppLut);
    }

    void noTree() { QVERIFY(OutputProblems::find(nullptr).isEmpty()); }
};

QTEST_GUILESS_MAIN(TestOutputProblems)
#include "tst_outputproblems.moc"
