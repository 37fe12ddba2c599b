// Runs the built zatgen binary with the generator outputs: several outputs from one parse,
// outputs whose content would not change left untouched, and --check-outputs.

#include "testfiles.h"
#include "zatgenrun.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

namespace {

using TestFiles::readFile;
using TestFiles::writeFile;
using ZatgenRun::Run;

bool setModified(const QString &path, const QDateTime &time)
{
    QFile file(path);
    return file.open(QIODevice::ReadWrite) && file.setFileTime(time, QFileDevice::FileModificationTime);
}

QDateTime modified(const QString &path)
{
    return QFileInfo(path).fileTime(QFileDevice::FileModificationTime);
}

const QString input = QStringLiteral(ZAT16_TEST_DATA "/generators/worked.zatdef");

// Option, output file name and the golden file with the expected content.
struct Output {
    QString option;
    QString file;
    QString golden;
};

const QList<Output> outputs = {
    { QStringLiteral("--header"), QStringLiteral("tags.h"), QStringLiteral(ZAT16_TEST_DATA "/generators/worked.h") },
    { QStringLiteral("--lua"), QStringLiteral("tags.lua"), QStringLiteral(ZAT16_TEST_DATA "/generators/worked.lua") },
    { QStringLiteral("--cpp"),
      QStringLiteral("enums.hpp"),
      QStringLiteral(ZAT16_TEST_DATA "/generators/worked_enums.hpp") },
    { QStringLiteral("--cpp-lut"),
      QStringLiteral("lookup.hpp"),
      QStringLiteral(ZAT16_TEST_DATA "/generators/worked_lookup.hpp") },
    { QStringLiteral("--cs"), QStringLiteral("Tags.cs"), QStringLiteral(ZAT16_TEST_DATA "/generators/worked.cs") },
};

QStringList allOutputs(const QDir &dir)
{
    QStringList arguments;
    for (const Output &output : outputs)
        arguments << output.option << dir.filePath(output.file);
    return arguments << input;
}

} // namespace

class TestZatgenOutputs : public QObject
{
    Q_OBJECT

private slots:
    void help()
    {
        const Run run = ZatgenRun::run({ QStringLiteral("--help") });
        QCOMPARE(run.status, 0);
        for (const char *option : { "--header <path>",
                                    "--lua <path>",
                                    "--cpp <path>",
                                    "--cpp-lut <path>",
                                    "--cs <path>",
                                    "--check-outputs" })
            QVERIFY2(run.out.contains(option), option);
    }

    void eachOutputToStandardOutput_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<QString>("golden");
        for (const Output &output : outputs)
            QTest::newRow(qPrintable(output.option)) << output.option << output.golden;
    }

    void eachOutputToStandardOutput()
    {
        QFETCH(QString, option);
        QFETCH(QString, golden);
        const Run run = ZatgenRun::run({ option, QStringLiteral("-"), input });
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err, QByteArray());
        QCOMPARE(run.out, readFile(golden));
    }

    void severalOutputsInOneRun()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const Run run = ZatgenRun::run(allOutputs(QDir(dir.path()))
                                       << QStringLiteral("--header") << dir.filePath(QStringLiteral("again.h")));
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err, QByteArray());
        QCOMPARE(run.out, QByteArray());
        for (const Output &output : outputs)
            QCOMPARE(readFile(dir.filePath(output.file)), readFile(output.golden));
        QCOMPARE(readFile(dir.filePath(QStringLiteral("again.h"))), readFile(outputs.first().golden));
    }

    void unchangedOutputsAreLeftUntouched()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QDir d(dir.path());
        QCOMPARE(ZatgenRun::run(allOutputs(d)).status, 0);

        const QDateTime old = QDateTime(QDate(2001, 2, 3), QTime(4, 5, 6), Qt::UTC);
        for (const Output &output : outputs)
            QVERIFY(setModified(d.filePath(output.file), old));
        // One output is stale: different content of the same length, and another one longer.
        const QString stale = d.filePath(QStringLiteral("enums.hpp"));
        QByteArray staleContent = readFile(stale);
        staleContent[10] = 'X';
        QVERIFY(writeFile(stale, staleContent));
        QVERIFY(setModified(stale, old));
        const QString longer = d.filePath(QStringLiteral("tags.lua"));
        QVERIFY(writeFile(longer, readFile(longer) + "-- local change\n"));
        QVERIFY(setModified(longer, old));

        const Run run = ZatgenRun::run(allOutputs(d));
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err, QByteArray());
        for (const Output &output : outputs) {
            const QString path = d.filePath(output.file);
            QCOMPARE(readFile(path), readFile(output.golden));
            if (path == stale || path == longer)
                QVERIFY2(modified(path) > old, qPrintable(output.file));
            else
                QCOMPARE(modified(path), old);
        }
    }

    void checkOutputs()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QDir d(dir.path());
        QCOMPARE(ZatgenRun::run(allOutputs(d)).status, 0);
        const QDateTime old = QDateTime(QDate(2001, 2, 3), QTime(4, 5, 6), Qt::UTC);
        for (const Output &output : outputs)
            QVERIFY(setModified(d.filePath(output.file), old));

        // All up to date: status 0, nothing said, nothing touched.
        Run run = ZatgenRun::run(QStringList { QStringLiteral("--check-outputs") } + allOutputs(d));
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err, QByteArray());
        QCOMPARE(run.out, QByteArray());
        for (const Output &output : outputs)
            QCOMPARE(modified(d.filePath(output.file)), old);

        // One changed, one missing: both named, status 4, and still nothing written.
        const QString changed = d.filePath(QStringLiteral("tags.h"));
        const QString missing = d.filePath(QStringLiteral("Tags.cs"));
        QVERIFY(writeFile(changed, "/* edited */\n"));
        QVERIFY(setModified(changed, old));
        QVERIFY(QFile::remove(missing));
        run = ZatgenRun::run(QStringList { QStringLiteral("--check-outputs") } + allOutputs(d));
        QCOMPARE(run.status, 4);
        QCOMPARE(run.out, QByteArray());
        QCOMPARE(QString::fromLocal8Bit(run.err),
                 QStringLiteral("zatgen: out of date: %1\nzatgen: out of date: %2\n").arg(changed, missing));
        QCOMPARE(readFile(changed), QByteArray("/* edited */\n"));
        QCOMPARE(modified(changed), old);
        QVERIFY(!QFileInfo::exists(missing));
        for (const Output &output : outputs) {
            const QString path = d.filePath(output.file);
            if (path != changed && path != missing)
                QCOMPARE(modified(path), old);
        }

        // A run without the option brings both up to date again.
        QCOMPARE(ZatgenRun::run(allOutputs(d)).status, 0);
        run = ZatgenRun::run(QStringList { QStringLiteral("--check-outputs") } + allOutputs(d));
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err, QByteArray());
    }

    void checkOutputsWritesNothingToStandardOutput()
    {
        const Run run = ZatgenRun::run(
            { QStringLiteral("--check-outputs"), QStringLiteral("--lua"), QStringLiteral("-"), input });
        QCOMPARE(run.status, 0);
        QCOMPARE(run.out, QByteArray());
        QCOMPARE(run.err, QByteArray());
    }

    void outputThatCannotBeWritten()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("missing/tags.h"));
        const Run run = ZatgenRun::run({ QStringLiteral("--header"), path, input });
        QCOMPARE(run.status, 3);
        QCOMPARE(QString::fromLocal8Bit(run.err),
                 QStringLiteral("Could not create a temporary file beside %1: No such file or directory\n").arg(path));
    }
};

QTEST_GUILESS_MAIN(TestZatgenOutputs)
#include "tst_zatgen_outputs.moc"
