// Runs the built zatgen binary on hostile files: input that stops being read early, a full
// disk, pipes and devices, file names that are not UTF-8, symbolic links, and inputs with
// thousands of warnings.

#include "testfiles.h"
#include "zatgenrun.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <cstring>
#include <dirent.h>
#include <sys/resource.h>
#include <sys/stat.h>

using ZatgenRun::run;

namespace {

using TestFiles::readFile;
using TestFiles::writeFile;

// The names in `folder` as the file system holds them, bytes and all.
QList<QByteArray> rawNames(const QString &folder)
{
    QList<QByteArray> names;
    DIR *dir = ::opendir(QFile::encodeName(folder).constData());
    if (!dir)
        return names;
    while (const dirent *entry = ::readdir(dir)) {
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..")
            names << name;
    }
    ::closedir(dir);
    std::sort(names.begin(), names.end());
    return names;
}

const QString example = QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef");

} // namespace

class TestZatgenFiles : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QByteArray m_header; ///< the C header of the example, as zatgen prints it

    QString folder(const QString &name)
    {
        const QString path = m_dir.filePath(name);
        QDir().mkpath(path);
        return path;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        const ZatgenRun::Run header = run({ QStringLiteral("--header"), QStringLiteral("-"), example });
        QCOMPARE(header.status, 0);
        m_header = header.out;
        QVERIFY(m_header.startsWith("/*") || m_header.startsWith("#"));
    }

    // Text between elements ends reading; what is read is kept, but nothing is made of it.
    void strayTextIsAnError_data()
    {
        QTest::addColumn<QByteArray>("stray");
        QTest::newRow("a letter") << QByteArray("x");
        QTest::newRow("CDATA of blanks") << QByteArray("<![CDATA[   ]]>");
        QTest::newRow("no-break space") << QByteArray("\xC2\xA0");
    }

    void strayTextIsAnError()
    {
        QFETCH(QByteArray, stray);
        const QString dir = folder(
            QStringLiteral("stray-%1").arg(QTest::currentDataTag()).replace(QLatin1Char(' '), QLatin1Char('-')));
        const QString path = dir + QStringLiteral("/in.zatdef");
        const QByteArray text = "<zat16>\n  <tag name=\"A\" id=\"0x1001\"/>\n  " + stray
            + "\n  <tag name=\"B\" id=\"0x1002\"/>\n</zat16>\n";
        QVERIFY(writeFile(path, text));
        const ZatgenRun::Run xml = run({ QStringLiteral("--xml"), path, path });
        QCOMPARE(xml.status, 1);
        QVERIFY2(xml.err.endsWith(QString(QStringLiteral("Error: ") + path
                                          + QStringLiteral(", Line 3:\n  Reading stopped at text that is not allowed "
                                                           "here; the rest of the file was not read\n"))
                                      .toUtf8()),
                 xml.err.constData());
        QCOMPARE(readFile(path), text);

        const ZatgenRun::Run header = run({ QStringLiteral("--header"), dir + QStringLiteral("/out.h"), path });
        QCOMPARE(header.status, 1);
        QVERIFY(!QFileInfo::exists(dir + QStringLiteral("/out.h")));
        QCOMPARE(run({ QStringLiteral("--check"), path }).status, 1);
    }

    // A full disk (here: a file size limit) while an output is written leaves the file as it
    // was, even when the output is the input.
    void fullDiskKeepsTheFiles()
    {
        const QString dir = folder(QStringLiteral("full"));
        const QString input = dir + QStringLiteral("/in.zatdef");
        const QString header = dir + QStringLiteral("/tags.h");
        // Indented differently, so that the canonical text differs from the file.
        const QByteArray text = readFile(example).replace("\n  <tag", "\n <tag");
        QVERIFY(writeFile(input, text));
        QVERIFY(writeFile(header, "/* the header of the last build */\n"));
        const auto smallDisk = []() {
            std::signal(SIGXFSZ, SIG_IGN);
            const struct rlimit limit = { 2000, 2000 };
            ::setrlimit(RLIMIT_FSIZE, &limit);
        };
        const ZatgenRun::Run xml = run({ QStringLiteral("--xml"), input, input }, QString(), 60000, smallDisk);
        QCOMPARE(xml.status, 3);
        QCOMPARE(QString::fromUtf8(xml.err),
                 QStringLiteral("Error writing %1:\n  %2\n").arg(input, QString::fromLocal8Bit(std::strerror(EFBIG))));
        QCOMPARE(readFile(input), text);

        const ZatgenRun::Run generated
            = run({ QStringLiteral("--header"), header, input }, QString(), 60000, smallDisk);
        QCOMPARE(generated.status, 3);
        QCOMPARE(readFile(header), QByteArray("/* the header of the last build */\n"));
        QCOMPARE(QDir(dir).entryList(QDir::Files | QDir::Hidden | QDir::System),
                 QStringList({ QStringLiteral("in.zatdef"), QStringLiteral("tags.h") }));
    }

    // A pipe or a device is written to directly; it is never read, which would wait for a writer.
    void pipeOutputIsWrittenDirectly()
    {
        const QString dir = folder(QStringLiteral("pipes"));
        const QString pipe = dir + QStringLiteral("/out.pipe");
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QProcess reader;
        reader.start(QStringLiteral("cat"), { pipe });
        QVERIFY(reader.waitForStarted());
        const ZatgenRun::Run written = run({ QStringLiteral("--header"), pipe, example }, QString(), 10000);
        QCOMPARE(written.status, 0);
        QVERIFY(reader.waitForFinished(10000));
        QCOMPARE(reader.readAllStandardOutput(), m_header);
        QVERIFY(QFileInfo(pipe).isFile() == false);

        // Comparing with a pipe would read it: it counts as up to date.
        const ZatgenRun::Run check
            = run({ QStringLiteral("--check-outputs"), QStringLiteral("--header"), pipe, example }, QString(), 10000);
        QCOMPARE(check.status, 0);

        const ZatgenRun::Run null
            = run({ QStringLiteral("--header"), QStringLiteral("/dev/null"), example }, QString(), 10000);
        QCOMPARE(null.status, 0);
        QVERIFY(QFileInfo(QStringLiteral("/dev/null")).exists());
    }

    // Definitions that would not load again are not written anywhere, also not to standard
    // output or a pipe.
    void definitionsThatWouldNotLoadAreNotWritten()
    {
        const QString path = folder(QStringLiteral("refused")) + QStringLiteral("/in.zatdef");
        QVERIFY(writeFile(
            path,
            "<zat16>\n  <tag name=\"A\" id=\"0x1001\">\n    <enums comment=\"values later\"/>\n  </tag>\n</zat16>\n"));
        const ZatgenRun::Run result = run({ QStringLiteral("--xml"), QStringLiteral("-"), path });
        QCOMPARE(result.status, 3);
        QCOMPARE(result.out, QByteArray());
        QCOMPARE(QString::fromUtf8(result.err),
                 QStringLiteral(
                     "The definitions were not written to -: the enumeration list of tag \"A\" would not load "
                     "again (a list with only a comment is saved as a comment line).\n"));
    }

    void pipeInputIsRefused()
    {
        const QString pipe = folder(QStringLiteral("pipe-input")) + QStringLiteral("/in.zatdef");
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        const ZatgenRun::Run result = run({ QStringLiteral("--xml"), QStringLiteral("-"), pipe }, QString(), 10000);
        QCOMPARE(result.status, 1);
        QCOMPARE(QString::fromUtf8(result.err),
                 QStringLiteral("Error: Failed to open input file %1: Is a named pipe\n").arg(pipe));
    }

    void folderOutputIsRefused()
    {
        const QString dir = folder(QStringLiteral("a-folder.h"));
        const ZatgenRun::Run result = run({ QStringLiteral("--header"), dir, example });
        QCOMPARE(result.status, 3);
        QCOMPARE(QString::fromUtf8(result.err),
                 QStringLiteral("Could not save %1: %2\n").arg(dir, QString::fromLocal8Bit(std::strerror(EISDIR))));
    }

    // Any name the file system allows: the bytes of a name that is not UTF-8 are kept.
    void namesThatAreNotUtf8()
    {
        const QString dir = folder(QStringLiteral("names"));
        QVERIFY(QFile::copy(example, dir + QStringLiteral("/in.zatdef")));
        ZatgenRun::Run result
            = ZatgenRun::shell(QStringLiteral("\"$ZATGEN\" --header \"$(printf 'out\\376.h')\" in.zatdef && cp "
                                              "in.zatdef \"$(printf 'in\\377.zatdef')\""),
                               dir);
        QCOMPARE(result.status, 0);
        QCOMPARE(rawNames(dir), QList<QByteArray>({ "in.zatdef", "in\xFF.zatdef", "out\xFE.h" }));
        QVERIFY(::access((QFile::encodeName(dir) + "/out\xFE.h").constData(), R_OK) == 0);

        result = ZatgenRun::shell(QStringLiteral("\"$ZATGEN\" --xml - \"$(printf 'in\\377.zatdef')\""), dir);
        QCOMPARE(result.status, 0);
        result = ZatgenRun::shell(QStringLiteral("\"$ZATGEN\" --xml - \"$(printf 'missing\\377.zatdef')\""), dir);
        QCOMPARE(result.status, 1);
        QCOMPARE(result.err,
                 QByteArray("Error: Failed to open input file missing\xFF.zatdef: No such file or directory\n"));
    }

    // An output that is a symbolic link: the link stays, its target gets the new content and
    // keeps its mode; a "FILE.tmp" that exists already is not used.
    void linksAndExistingTemporaryNames()
    {
        const QString dir = folder(QStringLiteral("links"));
        const QString real = dir + QStringLiteral("/real.h");
        const QString link = dir + QStringLiteral("/tags.h");
        const QString victim = dir + QStringLiteral("/victim");
        QVERIFY(writeFile(real, "old"));
        QCOMPARE(::chmod(QFile::encodeName(real).constData(), 0640), 0);
        QVERIFY(QFile::link(real, link));
        QVERIFY(writeFile(victim, "not for zatgen"));
        QVERIFY(QFile::link(victim, real + QStringLiteral(".tmp")));
        const ZatgenRun::Run result = run({ QStringLiteral("--header"), link, example });
        QCOMPARE(result.status, 0);
        QVERIFY(QFileInfo(link).isSymLink());
        QCOMPARE(readFile(real), m_header);
        QCOMPARE(int(QFileInfo(real).permissions()),
                 int(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser | QFile::ReadGroup));
        QCOMPARE(readFile(victim), QByteArray("not for zatgen"));
    }

    // After a thousand warnings the rest are counted in one line.
    void warningsAreCountedAfterAThousand()
    {
        QByteArray text = "<zat16>\n";
        for (int i = 0; i < 1500; ++i)
            text += "  <tag name=\"Same\" id=\"0x" + QByteArray::number(0x1000 + i, 16) + "\"/>\n";
        text += "</zat16>\n";
        const QString path = folder(QStringLiteral("warnings")) + QStringLiteral("/many.zatdef");
        QVERIFY(writeFile(path, text));
        const ZatgenRun::Run result = run({ QStringLiteral("--xml"), QStringLiteral("-"), path });
        QCOMPARE(result.status, 0);
        QCOMPARE(result.err.count("Double tag name Same"), 1000);
        QVERIFY(result.err.endsWith(
            QString(QStringLiteral("Warning: ") + path + QStringLiteral(":\n  499 more warnings were not listed\n"))
                .toUtf8()));
        QCOMPARE(QString::fromUtf8(result.err).count(QLatin1Char('\n')), 2002);
    }
};

QTEST_GUILESS_MAIN(TestZatgenFiles)
#include "tst_zatgen_files.moc"
