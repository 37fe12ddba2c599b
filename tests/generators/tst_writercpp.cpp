// The C++ enums generator: the worked example byte for byte, the edge cases and the writer
// texts (prologue, epilogue, name suffix, indents).

#include "generatortest.h"
#include "writercpp.h"

#include <QTest>

using namespace ZAT16;

namespace {

const QByteArray guard = "#ifndef ZAT16_ENUMS_H  /* Automagically generated -- do not edit */\n"
                         "#define ZAT16_ENUMS_H\n"
                         "\n";

// Everything up to the Tag namespace when no nested tag is written.
const QByteArray headWithoutCommands = "namespace ZAT16 {\n"
                                       "\n"
                                       "  namespace Type {\n"
                                       "    enum T {\n"
                                       "      Binary         = 0,\n"
                                       "      Integer        = 1,\n"
                                       "      Bool           = 2,\n"
                                       "      String         = 3,\n"
                                       "      Date           = 4,\n"
                                       "      Time           = 5,\n"
                                       "      DateTime       = 6,\n"
                                       "      BitArray       = 7,\n"
                                       "      NetworkAddress = 9,\n"
                                       "\n"
                                       "      List           = 12,\n"
                                       "      Request        = 13,\n"
                                       "      Answer         = 14,\n"
                                       "      Message        = 15,\n"
                                       "\n"
                                       "      ExtPoint       = 0x80,\n"
                                       "      ExtRect        = 0x81,\n"
                                       "      ExtSize        = 0x82,\n"
                                       "    };\n"
                                       "  }\n"
                                       "\n"
                                       "  namespace Cmd {\n"
                                       "    enum T {    };\n"
                                       "  }\n"
                                       "\n";

const QByteArray emptyBody = headWithoutCommands
    + "  namespace Tag {\n"
      "    enum T {    };\n"
      "  }\n"
      "}\n";

QByteArray cpp(const QByteArray &tags, const std::function<void(WriterCpp &)> &setup = {})
{
    const auto root = GeneratorTest::tree(tags);
    if (!root)
        return "(definitions did not parse)";
    return GeneratorTest::generate<WriterCpp>(root.get(), setup);
}

// A tree with an entry in every section.
const QByteArray smallTree = R"(<tag name="Ask" id="0xD001"/>
                                <tag name="Reply" id="0xE001"/>
                                <tag name="Mode" id="0x1001"><enums><enum name="Off" id="0"/><enum name="On" id="1"/></enums></tag>
                                <tag name="F" id="0x7001"><bits><bit name="A" id="0"/></bits></tag>)";

} // namespace

class TestWriterCpp : public QObject
{
    Q_OBJECT

private slots:
    void workedExample()
    {
        const auto root = GeneratorTest::treeFromFile(QStringLiteral(ZAT16_TEST_DATA "/generators/worked.zatdef"));
        QVERIFY(root);
        COMPARE_OUTPUT(GeneratorTest::generate<WriterCpp>(root.get()),
                       GeneratorTest::readFile(QStringLiteral(ZAT16_TEST_DATA "/generators/worked_enums.hpp")));
    }

    void emptyTree()
    {
        Item root;
        root.type = Root;
        COMPARE_OUTPUT(GeneratorTest::generate<WriterCpp>(&root), guard + emptyBody + "\n#endif\n");
    }

    void namelessEnumValue()
    {
        COMPARE_OUTPUT(cpp(R"(<tag name="M" id="0x1001"><enums><enum name="A" id="0"/><enum id="1"/></enums></tag>)"),
                       guard + headWithoutCommands
                           + "  namespace Tag {\n"
                             "    enum T {\n"
                             "      M                                                = 0x1001,\n"
                             "    };\n"
                             "  }\n"
                             "\n"
                             "  namespace M {\n"
                             "    enum T {\n"
                             "      A                                                = 0,\n"
                             "                                                       = 1,\n"
                             "    };\n"
                             "    enum C {\n"
                             "      EnumCount = 2\n"
                             "    };\n"
                             "  };\n"
                             "}\n"
                             "\n"
                             "#endif\n");
    }

    void enumsNotARun()
    {
        COMPARE_OUTPUT(
            cpp(R"(<tag name="M" id="0x1001"><enums display="x"><enum name="A" id="2"/><enum name="B" id="5"/></enums></tag>)"),
            guard + headWithoutCommands
                + "  namespace Tag {\n"
                  "    enum T {\n"
                  "      M                                                = 0x1001,\n"
                  "    };\n"
                  "  }\n"
                  "\n"
                  "  namespace M {\n"
                  "    enum T {\n"
                  "      A                                                = 0x2,\n"
                  "      B                                                = 0x5,\n"
                  "    };\n"
                  "  };\n"
                  "}\n"
                  "\n"
                  "#endif\n");
    }

    void listsWithoutValidEntriesWriteNothing()
    {
        COMPARE_OUTPUT(cpp(R"(<tag name="M" id="0x1001"><enums><!-- later --></enums></tag>
                              <tag name="F" id="0x7001"><bits><bit id="3"/></bits></tag>
                              <tag name="G" id="0x7002"><bits/></tag>)"),
                       guard + headWithoutCommands
                           + "  namespace Tag {\n"
                             "    enum T {\n"
                             "      M                                                = 0x1001,\n"
                             "      F                                                = 0x7001,\n"
                             "      G                                                = 0x7002,\n"
                             "    };\n"
                             "  }\n"
                             "}\n"
                             "\n"
                             "#endif\n");
    }

    void eightDigitMasks_data()
    {
        QTest::addColumn<int>("highest");
        QTest::addColumn<QByteArray>("mask");
        QTest::newRow("bit 24") << 24 << QByteArray("0x01000000");
        QTest::newRow("bit 31") << 31 << QByteArray("0x80000000");
    }

    void eightDigitMasks()
    {
        QFETCH(int, highest);
        QFETCH(QByteArray, mask);
        COMPARE_OUTPUT(cpp("<tag name=\"F\" id=\"0x7001\"><bits><bit name=\"A\" id=\"0\"/><bit name=\"B\" id=\""
                           + QByteArray::number(highest) + "\"/></bits></tag>"),
                       guard + headWithoutCommands
                           + "  namespace Tag {\n"
                             "    enum T {\n"
                             "      F                                                = 0x7001,\n"
                             "    };\n"
                             "  }\n"
                             "\n"
                             "  namespace FBits {\n"
                             "    enum T {\n"
                             "      A                                                = 0,\n"
                             "      B                                                = "
                           + QByteArray::number(highest)
                           + ",\n"
                             "    };\n"
                             "  }\n"
                             "\n"
                             "  namespace F {\n"
                             "    enum T {\n"
                             "      A                                                = 0x00000001,\n"
                             "      B                                                = "
                           + mask
                           + ",\n"
                             "    };\n"
                             "  }\n"
                             "}\n"
                             "\n"
                             "#endif\n");
    }

    void frame_data()
    {
        QTest::addColumn<QString>("prologue");
        QTest::addColumn<QString>("epilogue");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("defaults") << QString() << QString() << guard + emptyBody + "\n#endif\n";
        QTest::newRow("prologue only: no guard and no #endif")
            << QStringLiteral("// prologue\n") << QString() << "// prologue\n" + emptyBody;
        QTest::newRow("epilogue only") << QString() << QStringLiteral("// epilogue\n") << emptyBody + "// epilogue\n";
        QTest::newRow("both") << QStringLiteral("#pragma once\n") << QStringLiteral("// end\n")
                              << "#pragma once\n" + emptyBody + "// end\n";
    }

    void frame()
    {
        QFETCH(QString, prologue);
        QFETCH(QString, epilogue);
        QFETCH(QByteArray, expected);
        COMPARE_OUTPUT(cpp(QByteArray(),
                           [&](WriterCpp &writer) {
                               writer.prologue = prologue;
                               writer.epilogue = epilogue;
                           }),
                       expected);
    }

    void nameSuffix()
    {
        COMPARE_OUTPUT(cpp(smallTree, [](WriterCpp &writer) { writer.nameSuffix = QStringLiteral("_e"); }),
                       guard
                           + "namespace ZAT16 {\n"
                             "\n"
                             "  namespace Type {\n"
                             "    enum T {\n"
                             "      Binary         = 0,\n"
                             "      Integer        = 1,\n"
                             "      Bool           = 2,\n"
                             "      String         = 3,\n"
                             "      Date           = 4,\n"
                             "      Time           = 5,\n"
                             "      DateTime       = 6,\n"
                             "      BitArray       = 7,\n"
                             "      NetworkAddress = 9,\n"
                             "\n"
                             "      List           = 12,\n"
                             "      Request        = 13,\n"
                             "      Answer         = 14,\n"
                             "      Message        = 15,\n"
                             "\n"
                             "      ExtPoint       = 0x80,\n"
                             "      ExtRect        = 0x81,\n"
                             "      ExtSize        = 0x82,\n"
                             "    };\n"
                             "  }\n"
                             "\n"
                             "  namespace Cmd {\n"
                             "    enum T {\n"
                             "      Ask_e                                            = 0xD001,\n"
                             "      Reply_e                                          = 0xE001,\n"
                             "    };\n"
                             "  }\n"
                             "\n"
                             "  namespace Tag {\n"
                             "    enum T {\n"
                             "      Mode_e                                           = 0x1001,\n"
                             "      F_e                                              = 0x7001,\n"
                             "    };\n"
                             "  }\n"
                             "\n"
                             "  namespace Mode {\n"
                             "    enum T {\n"
                             "      Off_e                                            = 0,\n"
                             "      On_e                                             = 1,\n"
                             "    };\n"
                             "    enum C {\n"
                             "      EnumCount = 2\n"
                             "    };\n"
                             "  };\n"
                             "\n"
                             "  namespace FBits {\n"
                             "    enum T {\n"
                             "      A_e                                              = 0,\n"
                             "    };\n"
                             "  }\n"
                             "\n"
                             "  namespace F {\n"
                             "    enum T {\n"
                             "      A_e                                              = 0x01,\n"
                             "    };\n"
                             "  }\n"
                             "}\n"
                             "\n"
                             "#endif\n");
    }

    void allTexts()
    {
        // Outer indent on every fixed, namespace and enum line (not on the empty lines of Type,
        // nor on the line that closes "enum C"); the entry width shrinks with the inner indent.
        COMPARE_OUTPUT(cpp(smallTree,
                           [](WriterCpp &writer) {
                               writer.prologue = QStringLiteral("// prologue\n");
                               writer.epilogue = QStringLiteral("// epilogue\n");
                               writer.nameSuffix = QStringLiteral("_e");
                               writer.setIndent(2, 4);
                           }),
                       "// prologue\n"
                       "  namespace ZAT16 {\n"
                       "\n"
                       "    namespace Type {\n"
                       "      enum T {\n"
                       "        Binary         = 0,\n"
                       "        Integer        = 1,\n"
                       "        Bool           = 2,\n"
                       "        String         = 3,\n"
                       "        Date           = 4,\n"
                       "        Time           = 5,\n"
                       "        DateTime       = 6,\n"
                       "        BitArray       = 7,\n"
                       "        NetworkAddress = 9,\n"
                       "\n"
                       "        List           = 12,\n"
                       "        Request        = 13,\n"
                       "        Answer         = 14,\n"
                       "        Message        = 15,\n"
                       "\n"
                       "        ExtPoint       = 0x80,\n"
                       "        ExtRect        = 0x81,\n"
                       "        ExtSize        = 0x82,\n"
                       "      };\n"
                       "    }\n"
                       "\n"
                       "    namespace Cmd {\n"
                       "      enum T {\n"
                       "          Ask_e                                          = 0xD001,\n"
                       "          Reply_e                                        = 0xE001,\n"
                       "      };\n"
                       "    }\n"
                       "\n"
                       "    namespace Tag {\n"
                       "      enum T {\n"
                       "          Mode_e                                         = 0x1001,\n"
                       "          F_e                                            = 0x7001,\n"
                       "      };\n"
                       "    }\n"
                       "\n"
                       "    namespace Mode {\n"
                       "      enum T {\n"
                       "          Off_e                                          = 0,\n"
                       "          On_e                                           = 1,\n"
                       "      };\n"
                       "      enum C {\n"
                       "        EnumCount = 2\n"
                       "    };\n"
                       "    };\n"
                       "\n"
                       "    namespace FBits {\n"
                       "      enum T {\n"
                       "          A_e                                            = 0,\n"
                       "      };\n"
                       "    }\n"
                       "\n"
                       "    namespace F {\n"
                       "      enum T {\n"
                       "          A_e                                            = 0x01,\n"
                       "      };\n"
                       "    }\n"
                       "  }\n"
                       "// epilogue\n");
    }

    void longName()
    {
        COMPARE_OUTPUT(cpp("<tag name=\"" + QByteArray(49, 'A') + "\" id=\"0x1001\"/>"),
                       guard + headWithoutCommands + "  namespace Tag {\n    enum T {\n      " + QByteArray(49, 'A')
                           + " = 0x1001,\n    };\n  }\n}\n\n#endif\n");
    }
};

QTEST_GUILESS_MAIN(TestWriterCpp)
#include "tst_writercpp.moc"
