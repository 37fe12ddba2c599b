// The Lua table generator: the worked example byte for byte and the edge cases.

#include "generatortest.h"
#include "writerlua.h"

#include <QTest>

using namespace ZAT16;

namespace {

const QByteArray opening = "\n-- Automagically generated -- do not edit\n\nzat16.lutTag = {";

QByteArray lua(const QByteArray &tags)
{
    const auto root = GeneratorTest::tree(tags);
    if (!root)
        return "(definitions did not parse)";
    return GeneratorTest::generate<WriterLua>(root.get());
}

} // namespace

class TestWriterLua : public QObject
{
    Q_OBJECT

private slots:
    void workedExample()
    {
        const auto root = GeneratorTest::treeFromFile(QStringLiteral(ZAT16_TEST_DATA "/generators/worked.zatdef"));
        QVERIFY(root);
        COMPARE_OUTPUT(GeneratorTest::generate<WriterLua>(root.get()),
                       GeneratorTest::readFile(QStringLiteral(ZAT16_TEST_DATA "/generators/worked.lua")));
    }

    void emptyTree()
    {
        Item root;
        root.type = Root;
        COMPARE_OUTPUT(GeneratorTest::generate<WriterLua>(&root),
                       "\n-- Automagically generated -- do not edit\n\nzat16.lutTag = {}\n\n");
    }

    void onlyTheTagTable()
    {
        // Every pass that writes something ends its last line; the next pass starts with an
        // empty line. Type nibble 10 has no name and so no comment.
        COMPARE_OUTPUT(lua(R"(<tag name="A" id="0x1001"/>
                              <tag name="Ask" id="0xD001"/>
                              <tag name="Ten" id="0xA001"/>)"),
                       opening
                           + "\n"
                             "  Ask                                                = 0xD001,    -- Request \n"
                             "\n"
                             "  A                                                  = 0x1001,    -- Integer \n"
                             "  Ten                                                = 0xA001,\n"
                             "}\n\n");
    }

    void enumsWithoutValues()
    {
        COMPARE_OUTPUT(lua(R"(<tag name="Mode" id="0x1001"><enums><!-- none yet --></enums></tag>)"),
                       opening
                           + "\n"
                             "  Mode                                               = 0x1001,    -- Integer \n"
                             "}\n\n"
                             "zat16.lutMode = {\n"
                             "}\n\n");
    }

    void namelessValues()
    {
        // A nameless value is keyed by its comment in brackets, single and double quotes; one
        // without a comment has no entry. The values 0,1,2 still form a run.
        COMPARE_OUTPUT(lua(R"(<tag name="Mode" id="0x1001"><enums display="2x">
                                <enum name="Off" id="0"/>
                                <enum id="1" comment="Reserved"/>
                                <enum id="2"/>
                              </enums></tag>)"),
                       opening
                           + "\n"
                             "  Mode                                               = 0x1001,    -- Integer \n"
                             "}\n\n"
                             "zat16.lutMode = {\n"
                             "  Off                                                = 0,\n"
                             "  ['\"Reserved\"']                                     = 1,\n"
                             "}\n\n");
    }

    void enumsNotARunKeepTheirFormat()
    {
        COMPARE_OUTPUT(lua(R"(<tag name="Err" id="0x1001"><enums display="2x">
                                <enum name="One" id="1"/>
                                <enum name="Two" id="2"/>
                                <enum name="Ten" id="16"/>
                              </enums></tag>)"),
                       opening
                           + "\n"
                             "  Err                                                = 0x1001,    -- Integer \n"
                             "}\n\n"
                             "zat16.lutErr = {\n"
                             "  One                                                = 0x01,\n"
                             "  Two                                                = 0x02,\n"
                             "  Ten                                                = 0x10,\n"
                             "}\n\n");
    }

    void duplicateCode()
    {
        // One entry for the code, but both tags keep their tables; enumerations come first.
        COMPARE_OUTPUT(lua(R"(<tag name="A" id="0x7001"><bits><bit name="X" id="1"/></bits></tag>
                              <tag name="B" id="0x7001"><enums><enum name="Y" id="0"/></enums></tag>)"),
                       opening
                           + "\n"
                             "  A                                                  = 0x7001,    -- BitArray\n"
                             "}\n\n"
                             "zat16.lutB = {\n"
                             "  Y                                                  = 0,\n"
                             "}\n\n"
                             "zat16.lutBitA = {\n"
                             "  X                                                  = 2,\n"
                             "}\n\n");
    }

    void masksIn32BitSignedArithmetic()
    {
        // Bit 31 is negative, bit 32 wraps round to 1; a nameless bit has a key of blanks.
        COMPARE_OUTPUT(lua(R"(<tag name="F" id="0x7001"><bits>
                                <bit name="Top" id="31"/>
                                <bit name="Wrap" id="32"/>
                                <bit id="0"/>
                                <!-- a comment -->
                              </bits></tag>)"),
                       opening
                           + "\n"
                             "  F                                                  = 0x7001,    -- BitArray\n"
                             "}\n\n"
                             "zat16.lutBitF = {\n"
                             "  Top                                                = -2147483648,\n"
                             "  Wrap                                               = 1,\n"
                             "                                                     = 1,\n"
                             "}\n\n");
    }

    void longNames()
    {
        COMPARE_OUTPUT(lua("<tag name=\"" + QByteArray(50, 'A') + "\" id=\"0x1001\"/>\n<tag name=\""
                           + QByteArray(51, 'B') + "\" id=\"0x1002\"/>"),
                       opening + "\n  " + QByteArray(50, 'A') + " = 0x1001,    -- Integer \n  " + QByteArray(51, 'B')
                           + " = 0x1002,    -- Integer \n}\n\n");
    }
};

QTEST_GUILESS_MAIN(TestWriterLua)
#include "tst_writerlua.moc"
