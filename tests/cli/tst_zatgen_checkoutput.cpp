// Runs the built zatgen binary with --check-output: the problems of the generated outputs with
// --check, only for the outputs named, before writing without --check, and with --werror.

#include "testfiles.h"
#include "zatgenrun.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

using TestFiles::writeFile;
using ZatgenRun::Run;

// A tag with both lists, and an enumeration value that C and C++ read as octal.
const char definitions[]
    = "<zat16>\n"
      "  <tag name=\"Mode\" id=\"0x1002\">\n"
      "    <enums><enum name=\"Off\" id=\"0\"/></enums>\n"
      "    <bits><bit name=\"Busy\" id=\"1\"/></bits>\n"
      "  </tag>\n"
      "  <tag name=\"A\" id=\"0x1001\">\n"
      "    <enums display=\"4u\"><enum name=\"Ten\" id=\"10\"/><enum name=\"Three\" id=\"3\"/></enums>\n"
      "  </tag>\n"
      "  <tag name=\"end\" id=\"0x1003\"/>\n"
      "</zat16>\n";

} // namespace

class TestZatgenCheckOutput : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_path;

    QByteArray line(const QString &message) const
    {
        return QString(m_path + QStringLiteral(": problem: ") + message + QLatin1Char('\n')).toUtf8();
    }
    QByteArray keywordWarning() const
    {
        return QString(m_path + QStringLiteral(": warning: Tag end (0x1003): name is a keyword of Lua\n")).toUtf8();
    }
    QByteArray cppBothLists() const
    {
        return line(QStringLiteral("Tag Mode (0x1002): the C++ enums header will not compile: the tag has both an "
                                   "enumeration list and a bit list"));
    }
    QByteArray lutBothLists() const
    {
        return line(QStringLiteral("Tag Mode (0x1002): the C++ lookup-table header will not compile: the tag has "
                                   "both an enumeration list and a bit list, which are both nameLookupMode"));
    }
    QByteArray headerOctal() const
    {
        return line(QStringLiteral("Enum Ten (0010) of Tag A (0x1001): the C header writes 0010, which C reads as "
                                   "octal 8"));
    }
    QByteArray cppOctal() const
    {
        return line(QStringLiteral("Enum Ten (0010) of Tag A (0x1001): the C++ enums header writes 0010, which C++ "
                                   "reads as octal 8"));
    }
    QByteArray lutOctal() const
    {
        return line(QStringLiteral("Enum Ten (0010) of Tag A (0x1001): the C++ lookup-table header writes 0010, which "
                                   "C++ reads as octal 8"));
    }
    QByteArray luaKeyword() const
    {
        return line(QStringLiteral("Tag end (0x1003): the Lua script will not load: end is a keyword of Lua"));
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_path = m_dir.filePath(QStringLiteral("outputs.zatdef"));
        QVERIFY(writeFile(m_path, definitions));
    }

    // Without --check-output, --check lists the problems of every output after the others.
    void checkAlone()
    {
        const Run run = ZatgenRun::run({ QStringLiteral("--check"), m_path });
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err,
                 keywordWarning() + cppBothLists() + lutBothLists() + headerOctal() + cppOctal() + lutOctal()
                     + luaKeyword());
    }

    // The problems of every output, after the other problems, in document order.
    void checkAllOutputs()
    {
        const Run run = ZatgenRun::run(
            { QStringLiteral("--check"), QStringLiteral("--check-output"), QStringLiteral("all"), m_path });
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err,
                 keywordWarning() + cppBothLists() + lutBothLists() + headerOctal() + cppOctal() + lutOctal()
                     + luaKeyword());
        QVERIFY(run.out.isEmpty());
    }

    // Only the outputs named, in document order whatever the order of the options.
    void checkSomeOutputs()
    {
        const Run run = ZatgenRun::run({ QStringLiteral("--check"),
                                         QStringLiteral("--check-output"),
                                         QStringLiteral("lua"),
                                         QStringLiteral("--check-output"),
                                         QStringLiteral("cpp"),
                                         m_path });
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err, keywordWarning() + cppBothLists() + cppOctal() + luaKeyword());
    }

    void checkOutputWithoutProblems()
    {
        const Run run = ZatgenRun::run({ QStringLiteral("--check"),
                                         QStringLiteral("--werror"),
                                         QStringLiteral("--check-output"),
                                         QStringLiteral("cs"),
                                         QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef") });
        QCOMPARE(run.status, 0);
        QVERIFY(run.err.isEmpty());
    }

    void werrorFailsOnOutputProblems()
    {
        const QString path = m_dir.filePath(QStringLiteral("octal.zatdef"));
        QVERIFY(writeFile(path,
                          "<zat16><tag name=\"A\" id=\"0x1001\"><enums display=\"o\"><enum name=\"Eight\" id=\"8\"/>"
                          "</enums></tag></zat16>\n"));
        Run run = ZatgenRun::run({ QStringLiteral("--check"), QStringLiteral("--werror"), path });
        QCOMPARE(run.status, 1);
        run = ZatgenRun::run({ QStringLiteral("--check"),
                               QStringLiteral("--werror"),
                               QStringLiteral("--check-output"),
                               QStringLiteral("cs"),
                               path });
        QCOMPARE(run.status, 1);
        QCOMPARE(run.err,
                 QString(path
                         + QStringLiteral(": problem: Enum Eight (0o10) of Tag A (0x1001): the C# file will not "
                                          "compile: 0o10 is no number in C#\n"))
                     .toUtf8());
    }

    // Without --check, the outputs named are checked before anything is written: the problems
    // are listed and the outputs written, or with --werror nothing is written.
    void checkBeforeWriting()
    {
        const QString header = m_dir.filePath(QStringLiteral("tags.h"));
        Run run = ZatgenRun::run(
            { QStringLiteral("--check-output"), QStringLiteral("header"), QStringLiteral("--header"), header, m_path });
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err, headerOctal());
        QVERIFY(QFile::exists(header));
        QVERIFY(QFile::remove(header));

        run = ZatgenRun::run({ QStringLiteral("--werror"),
                               QStringLiteral("--check-output"),
                               QStringLiteral("header"),
                               QStringLiteral("--header"),
                               header,
                               m_path });
        QCOMPARE(run.status, 1);
        QCOMPARE(run.err, headerOctal());
        QVERIFY(!QFile::exists(header));

        // The C# output has no problem here: --werror lets it be written.
        const QString cs = m_dir.filePath(QStringLiteral("tags.cs"));
        run = ZatgenRun::run({ QStringLiteral("--werror"),
                               QStringLiteral("--check-output"),
                               QStringLiteral("cs"),
                               QStringLiteral("--cs"),
                               cs,
                               m_path });
        QCOMPARE(run.status, 0);
        QVERIFY(run.err.isEmpty());
        QVERIFY(QFile::exists(cs));
    }

    void unknownOutput()
    {
        const Run run = ZatgenRun::run(
            { QStringLiteral("--check"), QStringLiteral("--check-output"), QStringLiteral("java"), m_path });
        QCOMPARE(run.status, 2);
        QCOMPARE(run.err, QByteArray("zatgen: unknown output for --check-output: java\n"));
    }

    void notWithCompare()
    {
        const Run run = ZatgenRun::run(
            { QStringLiteral("--compare"), m_path, QStringLiteral("--check-output"), QStringLiteral("cpp"), m_path });
        QCOMPARE(run.status, 2);
        QCOMPARE(run.err, QByteArray("zatgen: --compare cannot be combined with --check-output\n"));
    }
};

QTEST_GUILESS_MAIN(TestZatgenCheckOutput)
#include "tst_zatgen_checkoutput.moc"
