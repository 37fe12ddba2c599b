// The C++ lookup-table generator: the worked example byte for byte, the edge cases and the
// writer texts.

#include "generatortest.h"
#include "writercpplut.h"

#include <QTest>

using namespace ZAT16;

namespace {

const QByteArray guard = "#ifndef ZAT16_LOOKUP_H  /* Automagically generated -- do not edit */\n"
                         "#define ZAT16_LOOKUP_H\n"
                         "\n";

const QByteArray emptyBody = "namespace ZAT16 {\n"
                             "\n"
                             "  static const NameLookupTable nameLookupToplevelTags[] = {\n"
                             "    { \"ToplevelTags\", 0 }, // Name and type of the lookup table    { 0, 0 },\n"
                             "  };\n"
                             "\n"
                             "  static const TagLookupTable tagLookup[] = {\n"
                             "    {    ~0U, nameLookupToplevelTags                     },\n"
                             "    { 0, 0 },\n"
                             "  };\n"
                             "\n"
                             "}\n"
                             "\n";

const QByteArray topLevelHeader = "namespace ZAT16 {\n"
                                  "\n"
                                  "  static const NameLookupTable nameLookupToplevelTags[] = {\n"
                                  "    { \"ToplevelTags\", 0 }, // Name and type of the lookup table\n";

const QByteArray emptyTagTable = "  static const TagLookupTable tagLookup[] = {\n"
                                 "    {    ~0U, nameLookupToplevelTags                     },\n"
                                 "    { 0, 0 },\n"
                                 "  };\n"
                                 "\n"
                                 "}\n"
                                 "\n";

QByteArray lut(const QByteArray &tags, const std::function<void(WriterCppLut &)> &setup = {})
{
    const auto root = GeneratorTest::tree(tags);
    if (!root)
        return "(definitions did not parse)";
    return GeneratorTest::generate<WriterCppLut>(root.get(), setup);
}

const QByteArray smallTree = R"(<tag name="Ask" id="0xD001"/>
                                <tag name="Reply" id="0xE001"/>
                                <tag name="Mode" id="0x1001"><enums><enum name="Off" id="0"/><enum name="On" id="1"/></enums></tag>
                                <tag name="F" id="0x7001"><bits><bit name="A" id="0"/></bits></tag>)";

// smallTree with the name suffix "_e", without the guard and "#endif".
const QByteArray smallTreeWithSuffix
    = "namespace ZAT16 {\n"
      "\n"
      "  static const NameLookupTable nameLookupToplevelTags[] = {\n"
      "    { \"ToplevelTags\", 0 }, // Name and type of the lookup table\n"
      "    { \"Ask_e\",                                         0xD001 }, // Request\n"
      "    { \"Reply_e\",                                       0xE001 }, // Answer\n"
      "\n"
      "    { \"Mode_e\",                                        0x1001 }, // Integer\n"
      "    { \"F_e\",                                           0x7001 }, // BitArray\n"
      "    { 0, 0 },\n"
      "  };\n"
      "\n"
      "  static const NameLookupTable nameLookupMode[] = {\n"
      "    { \"Mode\", 1 }, // Name and type of the lookup table\n"
      "    { \"Off_e\",                                         0 },\n"
      "    { \"On_e\",                                          1 },\n"
      "    { 0, 0 },\n"
      "  };\n"
      "\n"
      "  static const NameLookupTable nameLookupF[] = {\n"
      "    { \"F\", 2 }, // Name and type of the lookup table\n"
      "    { \"A_e\",                                           0 },\n"
      "    { 0, 0 },\n"
      "  };\n"
      "\n"
      "  static const TagLookupTable tagLookup[] = {\n"
      "    {    ~0U, nameLookupToplevelTags                     },\n"
      "    { 0x1001, nameLookupMode                             },\n"
      "    { 0x7001, nameLookupF                                },\n"
      "    { 0x7001, nameLookupF                                },\n"
      "    { 0, 0 },\n"
      "  };\n"
      "\n"
      "}\n"
      "\n";

} // namespace

class TestWriterCppLut : public QObject
{
    Q_OBJECT

private slots:
    void workedExample()
    {
        const auto root = GeneratorTest::treeFromFile(QStringLiteral(ZAT16_TEST_DATA "/generators/worked.zatdef"));
        QVERIFY(root);
        COMPARE_OUTPUT(GeneratorTest::generate<WriterCppLut>(root.get()),
                       GeneratorTest::readFile(QStringLiteral(ZAT16_TEST_DATA "/generators/worked_lookup.hpp")));
    }

    void emptyTree()
    {
        Item root;
        root.type = Root;
        COMPARE_OUTPUT(GeneratorTest::generate<WriterCppLut>(&root), guard + emptyBody + "#endif\n");
    }

    void tagTableRows()
    {
        // Only enumerations: once; only bits: twice; both: twice, pointing at one table name.
        COMPARE_OUTPUT(lut(R"(<tag name="E" id="0x1001"><enums><enum name="X" id="0"/></enums></tag>
                              <tag name="B" id="0x7001"><bits><bit name="P" id="1"/></bits></tag>
                              <tag name="EB" id="0x7002"><enums><enum name="Y" id="0"/></enums><bits><bit name="Q" id="2"/></bits></tag>
                              <tag name="None" id="0x1003"/>)"),
                       guard + topLevelHeader
                           + "    { \"E\",                                             0x1001 }, // Integer\n"
                             "    { \"B\",                                             0x7001 }, // BitArray\n"
                             "    { \"EB\",                                            0x7002 }, // BitArray\n"
                             "    { \"None\",                                          0x1003 }, // Integer\n"
                             "    { 0, 0 },\n"
                             "  };\n"
                             "\n"
                             "  static const NameLookupTable nameLookupE[] = {\n"
                             "    { \"E\", 1 }, // Name and type of the lookup table\n"
                             "    { \"X\",                                             0 },\n"
                             "    { 0, 0 },\n"
                             "  };\n"
                             "\n"
                             "  static const NameLookupTable nameLookupEB[] = {\n"
                             "    { \"EB\", 1 }, // Name and type of the lookup table\n"
                             "    { \"Y\",                                             0 },\n"
                             "    { 0, 0 },\n"
                             "  };\n"
                             "\n"
                             "  static const NameLookupTable nameLookupB[] = {\n"
                             "    { \"B\", 2 }, // Name and type of the lookup table\n"
                             "    { \"P\",                                             1 },\n"
                             "    { 0, 0 },\n"
                             "  };\n"
                             "\n"
                             "  static const NameLookupTable nameLookupEB[] = {\n"
                             "    { \"EB\", 2 }, // Name and type of the lookup table\n"
                             "    { \"Q\",                                             2 },\n"
                             "    { 0, 0 },\n"
                             "  };\n"
                             "\n"
                             "  static const TagLookupTable tagLookup[] = {\n"
                             "    {    ~0U, nameLookupToplevelTags                     },\n"
                             "    { 0x1001, nameLookupE                                },\n"
                             "    { 0x7001, nameLookupB                                },\n"
                             "    { 0x7002, nameLookupEB                               },\n"
                             "    { 0x7001, nameLookupB                                },\n"
                             "    { 0x7002, nameLookupEB                               },\n"
                             "    { 0, 0 },\n"
                             "  };\n"
                             "\n"
                             "}\n"
                             "\n"
                             "#endif\n");
    }

    void requestWithoutAnswerAndUnnamedTypes()
    {
        // A lone request goes among the nested tags; type nibbles 10 and 11 leave " // " bare.
        COMPARE_OUTPUT(lut(R"(<tag name="Ten" id="0xA001"/>
                              <tag name="Lone" id="0xD001"/>
                              <tag name="Eleven" id="0xB001"/>)"),
                       guard + topLevelHeader
                           + "    { \"Lone\",                                          0xD001 }, // Request\n"
                             "\n"
                             "    { \"Ten\",                                           0xA001 }, // \n"
                             "    { \"Eleven\",                                        0xB001 }, // \n"
                             "    { 0, 0 },\n"
                             "  };\n"
                             "\n"
                           + emptyTagTable + "#endif\n");
    }

    void enumsInTheirFormatAndNamelessValues()
    {
        COMPARE_OUTPUT(
            lut(R"(<tag name="M" id="0x1001"><enums display="x"><enum name="A" id="2"/><enum id="5"/></enums></tag>)"),
            guard + topLevelHeader
                + "    { \"M\",                                             0x1001 }, // Integer\n"
                  "    { 0, 0 },\n"
                  "  };\n"
                  "\n"
                  "  static const NameLookupTable nameLookupM[] = {\n"
                  "    { \"M\", 1 }, // Name and type of the lookup table\n"
                  "    { \"A\",                                             0x2 },\n"
                  "    { \"\",                                              0x5 },\n"
                  "    { 0, 0 },\n"
                  "  };\n"
                  "\n"
                  "  static const TagLookupTable tagLookup[] = {\n"
                  "    {    ~0U, nameLookupToplevelTags                     },\n"
                  "    { 0x1001, nameLookupM                                },\n"
                  "    { 0, 0 },\n"
                  "  };\n"
                  "\n"
                  "}\n"
                  "\n"
                  "#endif\n");
    }

    void longName()
    {
        // 45 characters with quotes and comma are 48: no padding; longer pushes the value right.
        COMPARE_OUTPUT(lut("<tag name=\"" + QByteArray(45, 'A') + "\" id=\"0x1001\"/>"),
                       guard + topLevelHeader + "    { \"" + QByteArray(45, 'A')
                           + "\", 0x1001 }, // Integer\n"
                             "    { 0, 0 },\n"
                             "  };\n"
                             "\n"
                           + emptyTagTable + "#endif\n");
    }

    void frame_data()
    {
        QTest::addColumn<QString>("prologue");
        QTest::addColumn<QString>("epilogue");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("prologue only: ends with the namespace")
            << QStringLiteral("#pragma once\n") << QString() << "#pragma once\n" + smallTreeWithSuffix;
        QTest::newRow("epilogue only") << QString() << QStringLiteral("// end\n") << smallTreeWithSuffix + "// end\n";
        QTest::newRow("both") << QStringLiteral("#pragma once\n") << QStringLiteral("// end\n")
                              << "#pragma once\n" + smallTreeWithSuffix + "// end\n";
        QTest::newRow("neither") << QString() << QString() << guard + smallTreeWithSuffix + "#endif\n";
    }

    void frame()
    {
        QFETCH(QString, prologue);
        QFETCH(QString, epilogue);
        QFETCH(QByteArray, expected);
        COMPARE_OUTPUT(lut(smallTree,
                           [&](WriterCppLut &writer) {
                               writer.prologue = prologue;
                               writer.epilogue = epilogue;
                               writer.nameSuffix = QStringLiteral("_e");
                           }),
                       expected);
    }

    void emptyTreeWithPrologue()
    {
        Item root;
        root.type = Root;
        const QByteArray output = GeneratorTest::generate<WriterCppLut>(&root, [](WriterCppLut &writer) {
            writer.prologue = QStringLiteral("#pragma once\n");
        });
        COMPARE_OUTPUT(output, "#pragma once\n" + emptyBody);
        QVERIFY(output.endsWith("}\n\n"));
        QVERIFY(!output.contains("#endif"));
    }

    void allTexts()
    {
        COMPARE_OUTPUT(lut(smallTree,
                           [](WriterCppLut &writer) {
                               writer.prologue = QStringLiteral("// prologue\n");
                               writer.epilogue = QStringLiteral("// epilogue\n");
                               writer.nameSuffix = QStringLiteral("_e");
                               writer.setIndent(2, 4);
                           }),
                       "// prologue\n"
                       "  namespace ZAT16 {\n"
                       "\n"
                       "    static const NameLookupTable nameLookupToplevelTags[] = {\n"
                       "      { \"ToplevelTags\", 0 }, // Name and type of the lookup table\n"
                       "        { \"Ask_e\",                                       0xD001 }, // Request\n"
                       "        { \"Reply_e\",                                     0xE001 }, // Answer\n"
                       "\n"
                       "        { \"Mode_e\",                                      0x1001 }, // Integer\n"
                       "        { \"F_e\",                                         0x7001 }, // BitArray\n"
                       "      { 0, 0 },\n"
                       "    };\n"
                       "\n"
                       "    static const NameLookupTable nameLookupMode[] = {\n"
                       "      { \"Mode\", 1 }, // Name and type of the lookup table\n"
                       "        { \"Off_e\",                                       0 },\n"
                       "        { \"On_e\",                                        1 },\n"
                       "      { 0, 0 },\n"
                       "    };\n"
                       "\n"
                       "    static const NameLookupTable nameLookupF[] = {\n"
                       "      { \"F\", 2 }, // Name and type of the lookup table\n"
                       "        { \"A_e\",                                         0 },\n"
                       "      { 0, 0 },\n"
                       "    };\n"
                       "\n"
                       "    static const TagLookupTable tagLookup[] = {\n"
                       "        {    ~0U, nameLookupToplevelTags                   },\n"
                       "        { 0x1001, nameLookupMode                           },\n"
                       "        { 0x7001, nameLookupF                              },\n"
                       "        { 0x7001, nameLookupF                              },\n"
                       "      { 0, 0 },\n"
                       "    };\n"
                       "\n"
                       "}\n"
                       "\n"
                       "// epilogue\n");
    }
};

QTEST_GUILESS_MAIN(TestWriterCppLut)
#include "tst_writercpplut.moc"
