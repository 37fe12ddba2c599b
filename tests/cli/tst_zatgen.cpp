// Runs the built zatgen binary and checks its exit statuses, messages and outputs.

#include "testfiles.h"
#include "zatgenrun.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

using TestFiles::readFile;
using TestFiles::writeFile;
using ZatgenRun::Run;

QStringList canonicalFiles()
{
    QStringList files;
    for (const QString &dir : { QStringLiteral(ZAT16_EXAMPLES), QStringLiteral(ZAT16_TEST_DATA "/io/roundtrip") }) {
        const QDir d(dir);
        for (const QString &name : d.entryList({ QStringLiteral("*.zatdef") }, QDir::Files, QDir::Name))
            files << d.filePath(name);
    }
    return files;
}

} // namespace

class TestZatgen : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(QFile::exists(QStringLiteral(ZATGEN_PATH)));
    }

    void usage_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("firstLine");
        QTest::newRow("no input") << QStringList() << QByteArray("zatgen: no input file given");
        QTest::newRow("two inputs") << QStringList { QStringLiteral("a.zatdef"), QStringLiteral("b.zatdef") }
                                    << QByteArray("zatgen: only one input file is allowed");
        QTest::newRow("unknown option") << QStringList { QStringLiteral("--frobnicate"), QStringLiteral("a.zatdef") }
                                        << QByteArray("zatgen: Unknown option 'frobnicate'.");
        QTest::newRow("missing option value") << QStringList { QStringLiteral("a.zatdef"), QStringLiteral("--xml") }
                                              << QByteArray("zatgen: Missing value after '--xml'.");
        QTest::newRow("compare without the old file")
            << QStringList { QStringLiteral("a.zatdef"), QStringLiteral("--compare") }
            << QByteArray("zatgen: Missing value after '--compare'.");
        QTest::newRow("compare with an output")
            << QStringList { QStringLiteral("--compare"),
                             QStringLiteral("old.zatdef"),
                             QStringLiteral("--xml"),
                             QStringLiteral("-"),
                             QStringLiteral("a.zatdef") }
            << QByteArray("zatgen: --compare cannot be combined with --check, --check-outputs or an output");
        QTest::newRow("compare with check")
            << QStringList { QStringLiteral("--check"),
                             QStringLiteral("--compare"),
                             QStringLiteral("old.zatdef"),
                             QStringLiteral("a.zatdef") }
            << QByteArray("zatgen: --compare cannot be combined with --check, --check-outputs or an output");
        QTest::newRow("compare with check-outputs")
            << QStringList { QStringLiteral("--check-outputs"),
                             QStringLiteral("--compare"),
                             QStringLiteral("old.zatdef"),
                             QStringLiteral("a.zatdef") }
            << QByteArray("zatgen: --compare cannot be combined with --check, --check-outputs or an output");
    }

    void usage()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, firstLine);
        const Run run = ZatgenRun::run(arguments);
        QCOMPARE(run.status, 2);
        QCOMPARE(run.err.left(run.err.indexOf('\n')), firstLine);
        QVERIFY(run.out.isEmpty());
    }

    void helpAndVersion()
    {
        Run run = ZatgenRun::run({ QStringLiteral("--help") });
        QCOMPARE(run.status, 0);
        QVERIFY(run.out.startsWith("Usage: "));
        QVERIFY(run.out.contains("--xml <path>"));
        QVERIFY(run.out.contains("--werror"));
        QVERIFY(run.out.contains("--check"));
        QVERIFY(run.out.contains("--compare <old>"));

        run = ZatgenRun::run({ QStringLiteral("--version") });
        QCOMPARE(run.status, 0);
        QCOMPARE(run.out, QByteArray("zatgen " ZAT16_VERSION_TEXT "\n"));
    }

    void missingFile()
    {
        const Run run = ZatgenRun::run({ QStringLiteral("no-such-file.zatdef") }, m_dir.path());
        QCOMPARE(run.status, 1);
        QCOMPARE(run.err,
                 QByteArray("Error: Failed to open input file no-such-file.zatdef: No such file or directory\n"));
    }

    // Columns count the characters read on the line: the reader stands after the "/>".
    void badInput()
    {
        const QString path = m_dir.filePath(QStringLiteral("range.zatdef"));
        QVERIFY(writeFile(path, "<zat16>\n  <tag name=\"A\" id=\"0x10000\"/>\n</zat16>\n"));
        const QString out = m_dir.filePath(QStringLiteral("range-out.zatdef"));
        const Run run = ZatgenRun::run({ QStringLiteral("--xml"), out, path });
        QCOMPARE(run.status, 1);
        QCOMPARE(run.err,
                 QString(QStringLiteral("Error: ") + path
                         + QStringLiteral(", Line 2, Column 30:\n  (EndElement) Tag out of range\n"))
                     .toUtf8());
        QVERIFY(!QFile::exists(out));
    }

    void warnings()
    {
        const QString path = m_dir.filePath(QStringLiteral("warn.zatdef"));
        QVERIFY(writeFile(path,
                          "<zat16>\n"
                          "  <tag name=\"A\" id=\"0x1001\"/>\n"
                          "  <tag name=\"B\" id=\"4097\"/>\n"
                          "  <frob/>\n"
                          "</zat16>\n"));
        const QByteArray expected
            = QString(QStringLiteral("Warning: ") + path
                      + QStringLiteral(", Line 3, Column 27:\n  Double tag code 0x1001\n"
                                       "Warning: ")
                      + path + QStringLiteral(", Line 4, Column 9:\n  Unexpected element <frob>.\n"))
                  .toUtf8();

        // --check lists the problems of the tree after the warnings of reading.
        const QByteArray problems
            = QString(path + QStringLiteral(": problem: Tag A (0x1001): code collision with a sibling\n") + path
                      + QStringLiteral(": problem: Tag B (0x1001): code collision with a sibling\n"))
                  .toUtf8();
        Run run = ZatgenRun::run({ QStringLiteral("--check"), path });
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err, expected + problems);
        QVERIFY(run.out.isEmpty());

        run = ZatgenRun::run({ QStringLiteral("--werror"), QStringLiteral("--xml"), QStringLiteral("-"), path });
        QCOMPARE(run.status, 1);
        QCOMPARE(run.err, expected);
        QVERIFY(run.out.isEmpty());

        run = ZatgenRun::run({ QStringLiteral("--xml"), QStringLiteral("-"), path });
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err, expected);
        QCOMPARE(run.out,
                 QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?> <!-- -*- nxml -*- -->\n"
                            "<zat16>\n"
                            "  <tag name=\"A\" id=\"0x1001\"/>\n"
                            "  <tag name=\"B\" id=\"0x1001\"/>\n"
                            "</zat16>\n"));
    }

    // What reading drops is named, so that a save or an output never loses it unnoticed; --werror
    // makes it fail. A tag's code reads in C notation under a decimal display.
    void lossesOnReadingWarned()
    {
        const QString path = m_dir.filePath(QStringLiteral("losses.zatdef"));
        QVERIFY(writeFile(path,
                          "<zat16>\n"
                          "  <tag name=\"A\" id=\"0x1001\" unit=\"mV\">\n"
                          "    <!-- note -->\n"
                          "    <enums>\n"
                          "      <enum name=\"Off\" id=\"0\"/>\n"
                          "    </enums>\n"
                          "  </tag>\n"
                          "  <tag name=\"B\" id=\"0161751\" display=\"4u\"/>\n"
                          "</zat16>\n"));
        const QByteArray expected
            = QString(QStringLiteral("Warning: ") + path
                      + QStringLiteral(", Line 2, Column 38:\n  Attribute \"unit\" is not kept\n"
                                       "Warning: ")
                      + path + QStringLiteral(", Line 3, Column 17:\n  Comment inside <tag> is not kept\n"))
                  .toUtf8();

        Run run = ZatgenRun::run({ QStringLiteral("--xml"), QStringLiteral("-"), path });
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err, expected);
        QCOMPARE(run.out,
                 QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?> <!-- -*- nxml -*- -->\n"
                            "<zat16>\n"
                            "  <tag name=\"A\" id=\"0x1001\">\n"
                            "    <enums>\n"
                            "      <enum name=\"Off\" id=\"0\"/>\n"
                            "    </enums>\n"
                            "  </tag>\n"
                            "  <tag name=\"B\" id=\"0xE3E9\" display=\"4u\"/>\n"
                            "</zat16>\n"));

        run = ZatgenRun::run({ QStringLiteral("--werror"), QStringLiteral("--xml"), QStringLiteral("-"), path });
        QCOMPARE(run.status, 1);
        QCOMPARE(run.err, expected);
        QVERIFY(run.out.isEmpty());
    }

    void checkWritesNothing()
    {
        const QString out = m_dir.filePath(QStringLiteral("check-out.zatdef"));
        const Run run = ZatgenRun::run({ QStringLiteral("--check"),
                                         QStringLiteral("--xml"),
                                         out,
                                         QStringLiteral(ZAT16_EXAMPLES "/battery-charger.zatdef") });
        QCOMPARE(run.status, 0);
        QVERIFY(run.err.isEmpty());
        QVERIFY(!QFile::exists(out));
    }

    void unwritableOutput()
    {
        const QString out = m_dir.filePath(QStringLiteral("missing-dir/out.zatdef"));
        const Run run = ZatgenRun::run(
            { QStringLiteral("--xml"), out, QStringLiteral(ZAT16_EXAMPLES "/battery-charger.zatdef") });
        QCOMPARE(run.status, 3);
        QCOMPARE(run.err,
                 QString(QStringLiteral("Could not create a temporary file beside ") + out
                         + QStringLiteral(": No such file or directory\n"))
                     .toUtf8());
    }

    void xmlToFile()
    {
        const QString in = QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef");
        const QString out = m_dir.filePath(QStringLiteral("copy.zatdef"));
        const Run run = ZatgenRun::run({ QStringLiteral("--xml"), out, in });
        QCOMPARE(run.status, 0);
        QVERIFY(run.err.isEmpty());
        QVERIFY(run.out.isEmpty());
        QCOMPARE(readFile(out), readFile(in));
    }

    void roundTrip_data()
    {
        QTest::addColumn<QString>("path");
        const QStringList files = canonicalFiles();
        QVERIFY(!files.isEmpty());
        for (const QString &path : files)
            QTest::newRow(qPrintable(QFileInfo(path).fileName())) << path;
    }

    void roundTrip()
    {
        QFETCH(QString, path);
        const QByteArray original = readFile(path);
        QVERIFY(!original.isEmpty());
        const Run run = ZatgenRun::run({ QStringLiteral("--xml"), QStringLiteral("-"), path });
        QCOMPARE(run.status, 0);
        QCOMPARE(run.out, original);
    }

    // --check: one line per problem, after the warnings of reading; the exit status stays 0
    // unless --werror is given.
    void checkListsProblems()
    {
        const QString path = m_dir.filePath(QStringLiteral("problems.zatdef"));
        QVERIFY(writeFile(path,
                          "<zat16>\n"
                          "  <tag name=\"Mode\"/>\n"
                          "  <tag id=\"0x1002\"/>\n"
                          "  <tag name=\"Level\" id=\"0x1003\">\n"
                          "    <enums>\n"
                          "      <enum name=\"Low\" id=\"0\"/>\n"
                          "      <enum name=\"High\" id=\"0\"/>\n"
                          "      <enum id=\"5\" comment=\"reserved\"/>\n"
                          "    </enums>\n"
                          "  </tag>\n"
                          "  <tag><bits><bit name=\"Ready\" id=\"0\"/></bits></tag>\n"
                          "  <tag name=\"end\" id=\"0x1005\"/>\n"
                          "</zat16>\n"));
        const QByteArray warnings = QString(QStringLiteral("Warning: ") + path
                                            + QStringLiteral(", Line 7, Column 32:\n  Double number 0\nWarning: ")
                                            + path + QStringLiteral(", Line 11, Column 52:\n  Double tag name \n"))
                                        .toUtf8();
        const QByteArray problems
            = QString(
                  path + QStringLiteral(": problem: Tag Mode: name without code\n") + path
                  + QStringLiteral(": problem: Tag (0x1002): code without name\n") + path
                  + QStringLiteral(": problem: Enum Low (0) of Tag Level (0x1003): code collision with a sibling\n")
                  + path
                  + QStringLiteral(": problem: Enum High (0) of Tag Level (0x1003): code collision with a sibling\n")
                  + path + QStringLiteral(": problem: Tag in row 4: has entries but no name and no code\n") + path
                  + QStringLiteral(": warning: Tag end (0x1005): name is a keyword of Lua\n"))
                  .toUtf8();
        // Then those of the generated outputs.
        const QByteArray outputProblems
            = QString(path
                      + QStringLiteral(": problem: Enum (5) of Tag Level (0x1003): the C++ enums header will not "
                                       "compile: the value has no name\n")
                      + path
                      + QStringLiteral(": problem: Enum (5) of Tag Level (0x1003): the C# file will not compile: the "
                                       "value has no name\n")
                      + path
                      + QStringLiteral(": problem: Tag end (0x1005): the Lua script will not load: end is a keyword "
                                       "of Lua\n"))
                  .toUtf8();

        Run run = ZatgenRun::run({ QStringLiteral("--check"), path });
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err, warnings + problems + outputProblems);
        QVERIFY(run.out.isEmpty());

        run = ZatgenRun::run({ QStringLiteral("--check"), QStringLiteral("--werror"), path });
        QCOMPARE(run.status, 1);
        QCOMPARE(run.err, warnings + problems + outputProblems);

        // Without --check the problems are not looked for.
        run = ZatgenRun::run({ QStringLiteral("--xml"), QStringLiteral("-"), path });
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err, warnings);
    }

    void checkWerrorWithOnlyKeywordWarnings()
    {
        const QString path = m_dir.filePath(QStringLiteral("keyword.zatdef"));
        QVERIFY(writeFile(path, "<zat16>\n  <tag name=\"class\" id=\"0x1001\"/>\n</zat16>\n"));
        Run run = ZatgenRun::run({ QStringLiteral("--check"), path });
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err,
                 QString(path + QStringLiteral(": warning: Tag class (0x1001): name is a keyword of C++ and C#\n")
                         + path
                         + QStringLiteral(": problem: Tag class (0x1001): the C++ enums header will not compile: "
                                          "class is a keyword of C++\n")
                         + path
                         + QStringLiteral(": problem: Tag class (0x1001): the C# file will not compile: class is a "
                                          "keyword of C#\n"))
                     .toUtf8());
        // The outputs a project uses decide: for Lua and the C header the keyword is only a warning.
        run = ZatgenRun::run({ QStringLiteral("--check"),
                               QStringLiteral("--werror"),
                               QStringLiteral("--check-output"),
                               QStringLiteral("lua"),
                               QStringLiteral("--check-output"),
                               QStringLiteral("header"),
                               path });
        QCOMPARE(run.status, 1);
        QCOMPARE(run.err,
                 QString(path + QStringLiteral(": warning: Tag class (0x1001): name is a keyword of C++ and C#\n"))
                     .toUtf8());
        run = ZatgenRun::run({ QStringLiteral("--check"), QStringLiteral("--werror"), path });
        QCOMPARE(run.status, 1);
    }

    void checkCleanFileWithWerror()
    {
        const Run run = ZatgenRun::run({ QStringLiteral("--check"),
                                         QStringLiteral("--werror"),
                                         QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef") });
        QCOMPARE(run.status, 0);
        QVERIFY(run.err.isEmpty());
        QVERIFY(run.out.isEmpty());
    }

    // --compare OLD NEW: the report on standard output, exit status 5 when anything breaks.
    void compareBreaking()
    {
        const QString oldPath = m_dir.filePath(QStringLiteral("v1.zatdef"));
        const QString newPath = m_dir.filePath(QStringLiteral("v2.zatdef"));
        QVERIFY(writeFile(oldPath,
                          "<zat16>\n"
                          "  <tag name=\"Power\" id=\"0x2001\"/>\n"
                          "  <tag name=\"Humidity\" id=\"0x1003\"/>\n"
                          "  <tag name=\"Speed\" id=\"0x1006\"/>\n"
                          "  <tag name=\"Mode\" id=\"0x1002\">\n"
                          "    <enums><enum name=\"Off\" id=\"0\"/><enum name=\"On\" id=\"1\"/><enum name=\"Eco\" "
                          "id=\"2\"/></enums>\n"
                          "  </tag>\n"
                          "  <tag name=\"Status\" id=\"0x7001\">\n"
                          "    <bits><bit name=\"Ready\" id=\"0\"/><bit name=\"Fault\" id=\"4\"/></bits>\n"
                          "  </tag>\n"
                          "</zat16>\n"));
        QVERIFY(writeFile(newPath,
                          "<zat16>\n"
                          "  <tag name=\"Power\" id=\"0x2005\"/>\n"
                          "  <tag name=\"Dewpoint\" id=\"0x1003\"/>\n"
                          "  <tag name=\"Speed\" id=\"0x3006\"/>\n"
                          "  <tag name=\"Mode\" id=\"0x1002\">\n"
                          "    <enums><enum name=\"Off\" id=\"0\"/><enum name=\"On\" id=\"3\"/><enum name=\"Boost\" "
                          "id=\"4\"/></enums>\n"
                          "  </tag>\n"
                          "  <tag name=\"Status\" id=\"0x7001\">\n"
                          "    <bits><bit name=\"Ready\" id=\"1\"/><bit name=\"Low\" id=\"5\"/></bits>\n"
                          "  </tag>\n"
                          "  <tag name=\"Volume\" id=\"0x1010\"/>\n"
                          "</zat16>\n"));
        const Run run = ZatgenRun::run({ QStringLiteral("--compare"), oldPath, newPath });
        QCOMPARE(run.status, 5);
        QVERIFY(run.err.isEmpty());
        QCOMPARE(run.out,
                 QString(QStringLiteral("Old: ") + oldPath + QStringLiteral("\nNew: ") + newPath
                         + QStringLiteral("\n\n"
                                          "Breaking changes: 8\n"
                                          "  Tag code changed: Power 0x2001 -> 0x2005\n"
                                          "  Tag removed: Humidity (0x1003)\n"
                                          "  Tag type changed: Speed 0x1006 (Integer) -> 0x3006 (String)\n"
                                          "  Enum value changed: Mode.On 1 -> 3\n"
                                          "  Enum value removed: Mode.Eco (2)\n"
                                          "  Bit changed: Status.Ready 0 -> 1\n"
                                          "  Bit removed: Status.Fault (4)\n"
                                          "  Tag code reused: 0x1003 was Humidity, is now Dewpoint\n"
                                          "\n"
                                          "Additions: 3\n"
                                          "  Enum value added: Mode.Boost (4)\n"
                                          "  Bit added: Status.Low (5)\n"
                                          "  Tag added: Volume (0x1010)\n"))
                     .toUtf8());

        // The input may also come first.
        const Run again = ZatgenRun::run({ newPath, QStringLiteral("--compare"), oldPath });
        QCOMPARE(again.status, 5);
        QCOMPARE(again.out, run.out);
    }

    void compareOnlyAdditions()
    {
        const QString oldPath = m_dir.filePath(QStringLiteral("small.zatdef"));
        const QString newPath = m_dir.filePath(QStringLiteral("grown.zatdef"));
        QVERIFY(writeFile(oldPath, "<zat16>\n  <tag name=\"Power\" id=\"0x2001\"/>\n</zat16>\n"));
        QVERIFY(writeFile(newPath,
                          "<zat16>\n  <tag name=\"Power\" id=\"0x2001\" comment=\"on or off\"/>\n"
                          "  <tag name=\"Level\" id=\"0x1001\"/>\n</zat16>\n"));
        const Run run = ZatgenRun::run({ QStringLiteral("--compare"), oldPath, newPath });
        QCOMPARE(run.status, 0);
        QVERIFY(run.err.isEmpty());
        QCOMPARE(run.out,
                 QString(QStringLiteral("Old: ") + oldPath + QStringLiteral("\nNew: ") + newPath
                         + QStringLiteral("\n\nBreaking changes: none\n\nAdditions: 1\n  Tag added: Level (0x1001)\n"))
                     .toUtf8());
    }

    void compareUnreadableFiles()
    {
        const QString good = QStringLiteral(ZAT16_EXAMPLES "/battery-charger.zatdef");
        const QString bad = m_dir.filePath(QStringLiteral("bad.zatdef"));
        QVERIFY(writeFile(bad, "<zat16>\n  <tag name=\"A\" id=\"0x10000\"/>\n</zat16>\n"));
        const QByteArray error = QString(QStringLiteral("Error: ") + bad
                                         + QStringLiteral(", Line 2, Column 30:\n  (EndElement) Tag out of range\n"))
                                     .toUtf8();

        Run run = ZatgenRun::run({ QStringLiteral("--compare"), bad, good });
        QCOMPARE(run.status, 1);
        QCOMPARE(run.err, error);
        QVERIFY(run.out.isEmpty());

        run = ZatgenRun::run({ QStringLiteral("--compare"), good, bad });
        QCOMPARE(run.status, 1);
        QCOMPARE(run.err, error);
        QVERIFY(run.out.isEmpty());

        run = ZatgenRun::run({ QStringLiteral("--compare"), QStringLiteral("no-such-file.zatdef"), good },
                             m_dir.path());
        QCOMPARE(run.status, 1);
        QCOMPARE(run.err,
                 QByteArray("Error: Failed to open input file no-such-file.zatdef: No such file or directory\n"));
        QVERIFY(run.out.isEmpty());
    }

    void compareWithWerror()
    {
        const QString oldPath = m_dir.filePath(QStringLiteral("warned.zatdef"));
        QVERIFY(writeFile(oldPath, "<zat16>\n  <tag name=\"A\" id=\"0x1001\"/>\n  <frob/>\n</zat16>\n"));
        const QString good = QStringLiteral(ZAT16_EXAMPLES "/battery-charger.zatdef");
        const QByteArray warning = QString(QStringLiteral("Warning: ") + oldPath
                                           + QStringLiteral(", Line 3, Column 9:\n  Unexpected element <frob>.\n"))
                                       .toUtf8();
        Run run = ZatgenRun::run({ QStringLiteral("--werror"), QStringLiteral("--compare"), oldPath, good });
        QCOMPARE(run.status, 1);
        QCOMPARE(run.err, warning);
        QVERIFY(run.out.isEmpty());

        run = ZatgenRun::run({ QStringLiteral("--compare"), oldPath, good });
        QCOMPARE(run.status, 5);
        QCOMPARE(run.err, warning);
        QVERIFY(run.out.startsWith("Old: "));
    }

    void compareWithItself()
    {
        const QString path = QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef");
        const Run run = ZatgenRun::run({ QStringLiteral("--compare"), path, path });
        QCOMPARE(run.status, 0);
        QCOMPARE(run.out,
                 QString(QStringLiteral("Old: ") + path + QStringLiteral("\nNew: ") + path
                         + QStringLiteral("\n\nBreaking changes: none\n\nAdditions: none\n"))
                     .toUtf8());
    }

private:
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(TestZatgen)
#include "tst_zatgen.moc"
