// Runs the built zatgen binary and checks its exit statuses, messages and outputs.

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

struct Run {
    int status = -1;
    QByteArray out;
    QByteArray err;
};

Run zatgen(const QStringList &arguments, const QString &workingDirectory = QString())
{
    QProcess process;
    if (!workingDirectory.isEmpty())
        process.setWorkingDirectory(workingDirectory);
    process.start(QStringLiteral(ZATGEN_PATH), arguments);
    Run run;
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return run;
    run.status = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

QStringList canonicalFiles()
{
    QStringList files;
    for (const QString &dir : {QStringLiteral(ZAT16_EXAMPLES), QStringLiteral(ZAT16_TEST_DATA "/io/roundtrip")}) {
        const QDir d(dir);
        for (const QString &name : d.entryList({QStringLiteral("*.zatdef")}, QDir::Files, QDir::Name))
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
        QTest::newRow("two inputs") << QStringList{QStringLiteral("a.zatdef"), QStringLiteral("b.zatdef")}
                                    << QByteArray("zatgen: only one input file is allowed");
        QTest::newRow("unknown option") << QStringList{QStringLiteral("--frobnicate"), QStringLiteral("a.zatdef")}
                                        << QByteArray("zatgen: Unknown option 'frobnicate'.");
        QTest::newRow("missing option value") << QStringList{QStringLiteral("a.zatdef"), QStringLiteral("--xml")}
                                              << QByteArray("zatgen: Missing value after '--xml'.");
    }

    void usage()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, firstLine);
        const Run run = zatgen(arguments);
        QCOMPARE(run.status, 2);
        QCOMPARE(run.err.left(run.err.indexOf('\n')), firstLine);
        QVERIFY(run.out.isEmpty());
    }

    void helpAndVersion()
    {
        Run run = zatgen({QStringLiteral("--help")});
        QCOMPARE(run.status, 0);
        QVERIFY(run.out.startsWith("Usage: "));
        QVERIFY(run.out.contains("--xml <path>"));
        QVERIFY(run.out.contains("--werror"));
        QVERIFY(run.out.contains("--check"));

        run = zatgen({QStringLiteral("--version")});
        QCOMPARE(run.status, 0);
        QCOMPARE(run.out, QByteArray("zatgen " ZAT16_VERSION_TEXT "\n"));
    }

    void missingFile()
    {
        const Run run = zatgen({QStringLiteral("no-such-file.zatdef")}, m_dir.path());
        QCOMPARE(run.status, 1);
        QCOMPARE(run.err, QByteArray("Error: Failed to open input file\n"));
    }

    // Columns count the characters read on the line: the reader stands after the "/>".
    void badInput()
    {
        const QString path = m_dir.filePath(QStringLiteral("range.zatdef"));
        QVERIFY(writeFile(path, "<zat16>\n  <tag name=\"A\" id=\"0x10000\"/>\n</zat16>\n"));
        const QString out = m_dir.filePath(QStringLiteral("range-out.zatdef"));
        const Run run = zatgen({QStringLiteral("--xml"), out, path});
        QCOMPARE(run.status, 1);
        QCOMPARE(run.err, QString(QStringLiteral("Error: ") + path + QStringLiteral(", Line 2, Column 30:\n  (EndElement) Tag out of range\n")).toUtf8());
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
        const QByteArray expected = QString(QStringLiteral("Warning: ") + path
                                            + QStringLiteral(", Line 3, Column 27:\n  Double tag code 0x1001\n"
                                                             "Warning: ")
                                            + path + QStringLiteral(", Line 4, Column 9:\n  Unexpected element <frob>.\n"))
                                        .toUtf8();

        Run run = zatgen({QStringLiteral("--check"), path});
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err, expected);
        QVERIFY(run.out.isEmpty());

        run = zatgen({QStringLiteral("--werror"), QStringLiteral("--xml"), QStringLiteral("-"), path});
        QCOMPARE(run.status, 1);
        QCOMPARE(run.err, expected);
        QVERIFY(run.out.isEmpty());

        run = zatgen({QStringLiteral("--xml"), QStringLiteral("-"), path});
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err, expected);
        QCOMPARE(run.out,
                 QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?> <!-- -*- nxml -*- -->\n"
                            "<zat16>\n"
                            "  <tag name=\"A\" id=\"0x1001\"/>\n"
                            "  <tag name=\"B\" id=\"0x1001\"/>\n"
                            "</zat16>\n"));
    }

    void checkWritesNothing()
    {
        const QString out = m_dir.filePath(QStringLiteral("check-out.zatdef"));
        const Run run = zatgen({QStringLiteral("--check"),
                                QStringLiteral("--xml"),
                                out,
                                QStringLiteral(ZAT16_EXAMPLES "/battery-charger.zatdef")});
        QCOMPARE(run.status, 0);
        QVERIFY(run.err.isEmpty());
        QVERIFY(!QFile::exists(out));
    }

    void unwritableOutput()
    {
        const QString out = m_dir.filePath(QStringLiteral("missing-dir/out.zatdef"));
        const Run run = zatgen({QStringLiteral("--xml"), out, QStringLiteral(ZAT16_EXAMPLES "/battery-charger.zatdef")});
        QCOMPARE(run.status, 3);
        QCOMPARE(run.err, QString(QStringLiteral("Failed to open output file ") + out + QStringLiteral(".\n")).toUtf8());
    }

    void xmlToFile()
    {
        const QString in = QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef");
        const QString out = m_dir.filePath(QStringLiteral("copy.zatdef"));
        const Run run = zatgen({QStringLiteral("--xml"), out, in});
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
        const Run run = zatgen({QStringLiteral("--xml"), QStringLiteral("-"), path});
        QCOMPARE(run.status, 0);
        QCOMPARE(run.out, original);
    }

private:
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(TestZatgen)
#include "tst_zatgen.moc"
