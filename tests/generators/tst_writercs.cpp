// The C# generator: the worked example byte for byte, the edge cases and the writer texts.

#include "generatortest.h"
#include "writercs.h"

#include <QTest>

using namespace ZAT16;

namespace {

QByteArray cs(const QByteArray &tags, const std::function<void(WriterCs &)> &setup = {})
{
    const auto root = GeneratorTest::tree(tags);
    if (!root)
        return "(definitions did not parse)";
    return GeneratorTest::generate<WriterCs>(root.get(), setup);
}

// A tree with an entry in every section.
const QByteArray smallTree = R"(<tag name="Ask" id="0xD001"/>
                                <tag name="Reply" id="0xE001"/>
                                <tag name="Mode" id="0x1001"><enums><enum name="Off" id="0"/><enum name="On" id="1"/></enums></tag>
                                <tag name="F" id="0x7001"><bits><bit name="A" id="0"/></bits></tag>)";

const QByteArray smallTreeWithSuffix = "public enum TagID\n"
                                       "{\n"
                                       "  Ask_e                                            = 0xD001,\n"
                                       "  Reply_e                                          = 0xE001,\n"
                                       "\n"
                                       "  Mode_e                                           = 0x1001,\n"
                                       "  F_e                                              = 0x7001,\n"
                                       "}\n"
                                       "\n"
                                       "public enum ModeEnums\n"
                                       "{\n"
                                       "  Off_e                                            = 0,\n"
                                       "  On_e                                             = 1,\n"
                                       "}\n"
                                       "\n"
                                       "public enum FBits\n"
                                       "{\n"
                                       "  A_e                                              = 0,\n"
                                       "}\n"
                                       "\n"
                                       "public enum FMasks\n"
                                       "{\n"
                                       "  A_e                                              = 0x01,\n"
                                       "}\n";

} // namespace

class TestWriterCs : public QObject
{
    Q_OBJECT

private slots:
    void workedExample()
    {
        const auto root = GeneratorTest::treeFromFile(QStringLiteral(ZAT16_TEST_DATA "/generators/worked.zatdef"));
        QVERIFY(root);
        COMPARE_OUTPUT(GeneratorTest::generate<WriterCs>(root.get()),
                       GeneratorTest::readFile(QStringLiteral(ZAT16_TEST_DATA "/generators/worked.cs")));
    }

    void emptyTree()
    {
        Item root;
        root.type = Root;
        COMPARE_OUTPUT(GeneratorTest::generate<WriterCs>(&root), "public enum TagID\n{}\n");
    }

    void enumsNotARun()
    {
        // Values in their own display format; a nameless value has only its padding.
        COMPARE_OUTPUT(cs(R"(<tag name="M" id="0x1001"><enums display="2x">
                               <enum name="A" id="2"/><enum name="B" id="5"/><enum id="7"/>
                             </enums></tag>)"),
                       "public enum TagID\n"
                       "{\n"
                       "  M                                                = 0x1001,\n"
                       "}\n"
                       "\n"
                       "public enum MEnums\n"
                       "{\n"
                       "  A                                                = 0x02,\n"
                       "  B                                                = 0x05,\n"
                       "                                                   = 0x07,\n"
                       "}\n");
    }

    void maskWidth_data()
    {
        QTest::addColumn<int>("highest");
        QTest::addColumn<QByteArray>("lowMask");
        QTest::addColumn<QByteArray>("highMask");
        QTest::newRow("bit 7: two digits") << 7 << QByteArray("0x01") << QByteArray("0x80");
        QTest::newRow("bit 8: three digits") << 8 << QByteArray("0x001") << QByteArray("0x100");
        QTest::newRow("bit 24: eight digits") << 24 << QByteArray("0x00000001") << QByteArray("0x01000000");
        QTest::newRow("bit 31: eight digits") << 31 << QByteArray("0x00000001") << QByteArray("0x80000000");
        QTest::newRow("bit 40: zero mask") << 40 << QByteArray("0x00000001") << QByteArray("0x00000000");
    }

    void maskWidth()
    {
        QFETCH(int, highest);
        QFETCH(QByteArray, lowMask);
        QFETCH(QByteArray, highMask);
        COMPARE_OUTPUT(cs("<tag name=\"F\" id=\"0x7001\"><bits><bit name=\"A\" id=\"0\"/><bit name=\"B\" id=\""
                          + QByteArray::number(highest) + "\"/></bits></tag>"),
                       "public enum TagID\n"
                       "{\n"
                       "  F                                                = 0x7001,\n"
                       "}\n"
                       "\n"
                       "public enum FBits\n"
                       "{\n"
                       "  A                                                = 0,\n"
                       "  B                                                = "
                           + QByteArray::number(highest)
                           + ",\n"
                             "}\n"
                             "\n"
                             "public enum FMasks\n"
                             "{\n"
                             "  A                                                = "
                           + lowMask
                           + ",\n"
                             "  B                                                = "
                           + highMask + ",\n}\n");
    }

    void enumsWithoutValidValues()
    {
        COMPARE_OUTPUT(cs(R"(<tag name="M" id="0x1001"><enums><!-- none --></enums></tag>
                             <tag name="N" id="0x1002"><enums/></tag>)"),
                       "public enum TagID\n"
                       "{\n"
                       "  M                                                = 0x1001,\n"
                       "  N                                                = 0x1002,\n"
                       "}\n");
    }

    void longName()
    {
        COMPARE_OUTPUT(cs("<tag name=\"" + QByteArray(48, 'A') + "\" id=\"0x1001\"/>"),
                       "public enum TagID\n{\n  " + QByteArray(48, 'A') + " = 0x1001,\n}\n");
    }

    void requestWithoutAnswerAndDuplicates()
    {
        COMPARE_OUTPUT(cs(R"(<tag name="Plain" id="0x1001"/>
                             <tag name="Lone" id="0xD001"/>
                             <tag name="Twin" id="0x1001"/>
                             <tag name="Note" id="0xF001"/>)"),
                       "public enum TagID\n"
                       "{\n"
                       "  Lone                                             = 0xD001,\n"
                       "  Note                                             = 0xF001,\n"
                       "\n"
                       "  Plain                                            = 0x1001,\n"
                       "}\n");
    }

    void frame_data()
    {
        QTest::addColumn<QString>("prologue");
        QTest::addColumn<QString>("epilogue");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("prologue only") << QStringLiteral("namespace Zat16\n{\n") << QString()
                                       << "namespace Zat16\n{\n" + smallTreeWithSuffix;
        QTest::newRow("epilogue only") << QString() << QStringLiteral("// end\n") << smallTreeWithSuffix + "// end\n";
        QTest::newRow("both") << QStringLiteral("namespace Zat16\n{\n") << QStringLiteral("}\n")
                              << "namespace Zat16\n{\n" + smallTreeWithSuffix + "}\n";
    }

    void frame()
    {
        QFETCH(QString, prologue);
        QFETCH(QString, epilogue);
        QFETCH(QByteArray, expected);
        COMPARE_OUTPUT(cs(smallTree,
                          [&](WriterCs &writer) {
                              writer.prologue = prologue;
                              writer.epilogue = epilogue;
                              writer.nameSuffix = QStringLiteral("_e");
                          }),
                       expected);
    }

    void nameSuffix()
    {
        COMPARE_OUTPUT(cs(smallTree, [](WriterCs &writer) { writer.nameSuffix = QStringLiteral("_e"); }),
                       smallTreeWithSuffix);
    }

    void allTexts()
    {
        COMPARE_OUTPUT(cs(smallTree,
                          [](WriterCs &writer) {
                              writer.prologue = QStringLiteral("// prologue\n");
                              writer.epilogue = QStringLiteral("// epilogue\n");
                              writer.nameSuffix = QStringLiteral("_e");
                              writer.setIndent(2, 4);
                          }),
                       "// prologue\n"
                       "  public enum TagID\n"
                       "  {\n"
                       "      Ask_e                                          = 0xD001,\n"
                       "      Reply_e                                        = 0xE001,\n"
                       "\n"
                       "      Mode_e                                         = 0x1001,\n"
                       "      F_e                                            = 0x7001,\n"
                       "  }\n"
                       "\n"
                       "  public enum ModeEnums\n"
                       "  {\n"
                       "      Off_e                                          = 0,\n"
                       "      On_e                                           = 1,\n"
                       "  }\n"
                       "\n"
                       "  public enum FBits\n"
                       "  {\n"
                       "      A_e                                            = 0,\n"
                       "  }\n"
                       "\n"
                       "  public enum FMasks\n"
                       "  {\n"
                       "      A_e                                            = 0x01,\n"
                       "  }\n"
                       "// epilogue\n");
    }

    void emptyTreeWithIndent()
    {
        Item root;
        root.type = Root;
        COMPARE_OUTPUT(GeneratorTest::generate<WriterCs>(&root, [](WriterCs &writer) { writer.setIndent(4, 2); }),
                       "    public enum TagID\n    {    }\n");
    }
};

QTEST_GUILESS_MAIN(TestWriterCs)
#include "tst_writercs.moc"
