// The C header generator: the worked example byte for byte and the edge cases.

#include "generatortest.h"
#include "writerheader.h"

#include <QTest>

using namespace ZAT16;
using GeneratorTest::blanks;

namespace {

const QByteArray opening
    = "#ifndef ZAT16_TAGS_H  /* Automagically generated -- do not edit */\n#define ZAT16_TAGS_H\n\n#define "
      "ZAT16DT_Binary           0\n#define ZAT16DT_Integer          1\n#define ZAT16DT_Bool             2\n#define "
      "ZAT16DT_String           3\n#define ZAT16DT_Date             4\n#define ZAT16DT_Time             5\n#define "
      "ZAT16DT_DateTime         6\n#define ZAT16DT_BitArray         7\n#define ZAT16DT_NetworkAddress   9\n\n#define "
      "ZAT16DT_List             12\n#define ZAT16DT_Request          13\n#define ZAT16DT_Answer           14\n#define "
      "ZAT16DT_Message          15\n\n#define ZAT16DT_ExtPoint         0x80\n#define ZAT16DT_ExtRect          "
      "0x81\n#define "
      "ZAT16DT_ExtSize          0x82\n\n";

QByteArray header(const QByteArray &tags)
{
    const auto root = GeneratorTest::tree(tags);
    if (!root)
        return "(definitions did not parse)";
    return GeneratorTest::generate<WriterHeader>(root.get());
}

} // namespace

class TestWriterHeader : public QObject
{
    Q_OBJECT

private slots:
    void workedExample()
    {
        const auto root = GeneratorTest::treeFromFile(QStringLiteral(ZAT16_TEST_DATA "/generators/worked.zatdef"));
        QVERIFY(root);
        COMPARE_OUTPUT(GeneratorTest::generate<WriterHeader>(root.get()),
                       GeneratorTest::readFile(QStringLiteral(ZAT16_TEST_DATA "/generators/worked.h")));
    }

    void writeAndEncodeAgree()
    {
        const auto root = GeneratorTest::treeFromFile(QStringLiteral(ZAT16_TEST_DATA "/generators/worked.zatdef"));
        QVERIFY(root);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("tags.h"));
        WriterHeader writer;
        QVERIFY(writer.write(root.get(), path));
        COMPARE_OUTPUT(GeneratorTest::readFile(path),
                       GeneratorTest::readFile(QStringLiteral(ZAT16_TEST_DATA "/generators/worked.h")));
    }

    void emptyTree()
    {
        Item root;
        root.type = Root;
        COMPARE_OUTPUT(GeneratorTest::generate<WriterHeader>(&root), opening + "#endif\n");
    }

    void requestNotPaired()
    {
        // Lone has no answer; Again repeats an already written request code and is left out.
        COMPARE_OUTPUT(header(R"(<tag name="Ask" id="0xD001"/>
                                 <tag name="Reply" id="0xE001"/>
                                 <tag name="Again" id="0xD001"/>
                                 <tag name="Lone" id="0xD002"/>)"),
                       opening
                           + "#define MSG_Ask                                       0xD001  /* Request  */\n"
                             "#define MSG_Reply                                     0xE001  /* Answer   */\n"
                             "\n"
                             "#define MSG_Lone                                      0xD002  /* Request  */\n"
                             "\n"
                             "#endif\n");
    }

    void enumsNotARun()
    {
        COMPARE_OUTPUT(header(R"(<tag name="Err" id="0x1006">
                                   <enums display="4x">
                                     <enum name="Timeout" id="0x10"/>
                                     <enum name="Range" id="0x20"/>
                                   </enums>
                                 </tag>)"),
                       opening
                           + "#define TAG_Err                                       0x1006  /* Integer  */\n"
                             "\n"
                             "#define ENU_Err_Timeout                               0x0010\n"
                             "#define ENU_Err_Range                                 0x0020\n"
                             "\n"
                             "#endif\n");
    }

    void enumsRunFromOneAndNamelessValues()
    {
        // The run 1,2,3 counts three values; the nameless one has no macro but counts.
        COMPARE_OUTPUT(header(R"(<tag name="Day" id="0x1001">
                                   <enums display="x">
                                     <enum name="Mon" id="1"/>
                                     <enum id="2" comment="Reserved"/>
                                     <!-- a comment -->
                                     <enum name="Wed" id="3"/>
                                   </enums>
                                 </tag>)"),
                       opening
                           + "#define TAG_Day                                       0x1001  /* Integer  */\n"
                             "\n"
                             "#define ENU_Day_Mon                                   1\n"
                             "#define ENU_Day_Wed                                   3\n"
                             "#define CNT_Day                                        3\n"
                             "\n"
                             "#endif\n");
    }

    void emptyListsStillGetTheirBlankLine()
    {
        COMPARE_OUTPUT(header(R"(<tag name="E" id="0x1001"><enums/></tag>
                                 <tag name="B" id="0x7001"><bits/></tag>)"),
                       opening
                           + "#define TAG_E                                         0x1001  /* Integer  */\n"
                             "#define TAG_B                                         0x7001  /* BitArray */\n"
                             "\n"
                             "\n"
                             "\n"
                             "#endif\n");
    }

    void maskWidth_data()
    {
        QTest::addColumn<int>("highest");
        QTest::addColumn<QString>("lowMask");
        QTest::addColumn<QString>("highMask");
        QTest::newRow("bit 7: two digits") << 7 << "0x01"
                                           << "0x80";
        QTest::newRow("bit 8: three digits") << 8 << "0x001"
                                             << "0x100";
        QTest::newRow("bit 11: three digits") << 11 << "0x001"
                                              << "0x800";
        QTest::newRow("bit 15: four digits") << 15 << "0x0001"
                                             << "0x8000";
        QTest::newRow("bit 19: five digits") << 19 << "0x00001"
                                             << "0x80000";
        QTest::newRow("bit 23: six digits") << 23 << "0x000001"
                                            << "0x800000";
        QTest::newRow("bit 24: eight digits") << 24 << "0x00000001"
                                              << "0x01000000";
        QTest::newRow("bit 31: eight digits") << 31 << "0x00000001"
                                              << "0x80000000";
        QTest::newRow("bit 32: zero mask") << 32 << "0x00000001"
                                           << "0x00000000";
        QTest::newRow("bit 63: zero mask") << 63 << "0x00000001"
                                           << "0x00000000";
        QTest::newRow("bit 64: wraps to bit 0") << 64 << "0x00000001"
                                                << "0x00000001";
    }

    void maskWidth()
    {
        QFETCH(int, highest);
        QFETCH(QString, lowMask);
        QFETCH(QString, highMask);
        const QByteArray tags = QStringLiteral(R"(<tag name="F" id="0x7001"><bits>
                                                    <bit name="Low" id="0"/>
                                                    <bit name="High" id="%1"/>
                                                  </bits></tag>)")
                                    .arg(highest)
                                    .toUtf8();
        COMPARE_OUTPUT(header(tags),
                       opening
                           + "#define TAG_F                                         0x7001  /* BitArray */\n"
                             "\n"
                             "#define BIT_F_Low                                     0\n"
                             "#define BIT_F_High                                    "
                           + QByteArray::number(highest)
                           + "\n"
                             "#define MSK_F_Low                                     "
                           + lowMask.toUtf8()
                           + "\n"
                             "#define MSK_F_High                                    "
                           + highMask.toUtf8() + "\n\n#endif\n");
    }

    void bitsInTheirDisplayFormat()
    {
        COMPARE_OUTPUT(header(R"(<tag name="F" id="0x7001"><bits display="2x">
                                   <bit name="A" id="1"/>
                                   <bit name="B" id="10"/>
                                 </bits></tag>)"),
                       opening
                           + "#define TAG_F                                         0x7001  /* BitArray */\n"
                             "\n"
                             "#define BIT_F_A                                       0x01\n"
                             "#define BIT_F_B                                       0x0A\n"
                             "#define MSK_F_A                                       0x002\n"
                             "#define MSK_F_B                                       0x400\n"
                             "\n"
                             "#endif\n");
    }

    void longNames()
    {
        // "TAG_" and 41 characters fill the field exactly; one more leaves no padding at all.
        COMPARE_OUTPUT(header("<tag name=\"" + QByteArray(41, 'A') + "\" id=\"0x1001\"/>\n<tag name=\""
                              + QByteArray(42, 'B') + "\" id=\"0x1002\"/>"),
                       opening
                           + "#define TAG_AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA 0x1001  /* Integer  */\n"
                             "#define TAG_BBBBBBBBBBBBBBBBBBBBBBBBBBBBBBBBBBBBBBBBBB 0x1002  /* Integer  */\n"
                             "\n"
                             "#endif\n");
    }

    void typeComments()
    {
        // Type nibbles 10 and 11 have no name and get no comment; extended codes show as Int64.
        COMPARE_OUTPUT(header(R"(<tag name="Ten" id="0xA001"/>
                                 <tag name="Point" id="0x8001"/>
                                 <tag name="Addr" id="0x9001"/>)"),
                       opening
                           + "#define TAG_Ten                                       0xA001\n"
                             "#define TAG_Point                                     0x8001  /* Int64    */\n"
                             "#define TAG_Addr                                      0x9001  /* IPAddress */\n"
                             "\n"
                             "#endif\n");
    }

    void duplicateCodeKeepsItsLists()
    {
        COMPARE_OUTPUT(header(R"(<tag name="A" id="0x1001"/>
                                 <tag name="B" id="0x1001"><enums><enum name="X" id="0"/></enums></tag>)"),
                       opening
                           + "#define TAG_A                                         0x1001  /* Integer  */\n"
                             "\n"
                             "#define ENU_B_X                                       0\n"
                             "#define CNT_B                                          1\n"
                             "\n"
                             "#endif\n");
    }
};

QTEST_GUILESS_MAIN(TestWriterHeader)
#include "tst_writerheader.moc"
