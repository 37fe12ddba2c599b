// Every input that ever made a fuzz target fail is kept under tests/data/fuzz-regressions/<target>/
// and replayed here through the target's own check (fuzz/fuzzchecks.cpp). Each input runs in a
// child process of this test (the same executable started with --replay), so that an input that
// still crashes, hangs or exhausts memory fails its own row instead of ending the whole test.
//
// Inputs that fail because of a bug that is not fixed yet are listed in knownFailures() with
// the reason; their rows are expected failures, and the row turns into an unexpected pass (a
// failure of this test) once the bug is fixed, as a reminder to remove the entry.
//
// The inputs are named *.input, not *.zatdef, so that tools and tests that take every definitions
// file under tests/data/ do not run into inputs that may still crash or exhaust memory.

#include "fuzzchecks.h"

#include <QtTest>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QProcess>

#include <cstdio>
#include <cstring>
#include <memory>

#include <sys/resource.h>

#if defined(__SANITIZE_ADDRESS__)
#define ZAT16_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZAT16_ASAN 1
#endif
#endif

namespace {

const char *const targets[] = { "fuzz_load", "fuzz_roundtrip", "fuzz_generators", "fuzz_numbers", "fuzz_paste" };

QString regressionFolder()
{
    return QStringLiteral(ZAT16_TEST_DATA "/fuzz-regressions");
}

QString pasteDocumentPath()
{
    return QStringLiteral(ZAT16_EXAMPLES "/weather-station.zatdef");
}

// Row name ("<target>/<file>") -> why the input still fails.
QHash<QString, QString> knownFailures()
{
    // Every input kept so far passes: the padding of numbers is bounded, and the entity guard
    // also reads the encoding that the XML declaration names.
    return {};
}

// The child: runs one target's check on one file; exit code 0 when it passes, 1 with the
// failure on standard output when it does not. A crash or a hang shows in the parent.
int replay(int argc, char **argv)
{
    const QByteArray target = argv[2];
    QFile file(QString::fromLocal8Bit(argv[3]));
    if (!file.open(QIODevice::ReadOnly)) {
        std::printf("cannot read %s\n", argv[3]);
        return 2;
    }
    const QByteArray data = file.readAll();

#ifndef ZAT16_ASAN
    // A runaway allocation fails quickly instead of filling the machine's memory (under the
    // address sanitizer, its own allocation limit in ASAN_OPTIONS does this).
    const rlim_t limit = rlim_t(3) << 30;
    const struct rlimit rl = { limit, limit };
    setrlimit(RLIMIT_AS, &rl);
#endif

    std::unique_ptr<QCoreApplication> app;
    QString failure;
    if (target == "fuzz_load") {
        failure = FuzzChecks::checkLoad(data);
    } else if (target == "fuzz_roundtrip") {
        failure = FuzzChecks::checkRoundTrip(data);
    } else if (target == "fuzz_generators") {
        failure = FuzzChecks::checkGenerators(data);
    } else if (target == "fuzz_numbers") {
        failure = FuzzChecks::checkNumbers(data);
    } else if (target == "fuzz_paste") {
        app = std::make_unique<QGuiApplication>(argc, argv);
        QFile document(pasteDocumentPath());
        if (!document.open(QIODevice::ReadOnly)) {
            std::printf("cannot read %s\n", qPrintable(pasteDocumentPath()));
            return 2;
        }
        failure = FuzzChecks::checkPaste(document.readAll(), data, true);
    } else {
        std::printf("unknown target %s\n", target.constData());
        return 2;
    }
    if (failure.isEmpty())
        return 0;
    std::printf("%s\n", failure.toUtf8().constData());
    return 1;
}

} // namespace

class TestFuzzRegressions : public QObject
{
    Q_OBJECT

private slots:
    void foldersPresent();
    void knownFailuresExist();
    void replay_data();
    void replay();
};

void TestFuzzRegressions::foldersPresent()
{
    for (const char *target : targets)
        QVERIFY2(QDir(regressionFolder()).exists(QLatin1String(target)), target);
}

// An entry for a file that was renamed or removed would hide nothing; keep the list honest.
void TestFuzzRegressions::knownFailuresExist()
{
    const QHash<QString, QString> known = knownFailures();
    for (auto it = known.cbegin(); it != known.cend(); ++it)
        QVERIFY2(QFile::exists(regressionFolder() + QLatin1Char('/') + it.key()), qPrintable(it.key()));
}

void TestFuzzRegressions::replay_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("path");
    int rows = 0;
    for (const char *target : targets) {
        QDir folder(regressionFolder() + QLatin1Char('/') + QLatin1String(target));
        const QStringList files = folder.entryList(QDir::Files, QDir::Name);
        for (const QString &file : files) {
            QTest::newRow(qPrintable(QLatin1String(target) + QLatin1Char('/') + file))
                << QString::fromLatin1(target) << folder.filePath(file);
            ++rows;
        }
    }
    if (rows == 0)
        QTest::newRow("no regression inputs") << QString() << QString();
}

void TestFuzzRegressions::replay()
{
    QFETCH(QString, target);
    QFETCH(QString, path);
    QVERIFY2(!target.isEmpty(), "no inputs under tests/data/fuzz-regressions");

    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    QString asan = environment.value(QStringLiteral("ASAN_OPTIONS"));
    asan += QStringLiteral("%1max_allocation_size_mb=2048:allocator_may_return_null=0").arg(asan.isEmpty() ? "" : ":");
    environment.insert(QStringLiteral("ASAN_OPTIONS"), asan);
    child.setProcessEnvironment(environment);
    child.setProcessChannelMode(QProcess::SeparateChannels);
    child.start(QCoreApplication::applicationFilePath(), { QStringLiteral("--replay"), target, path });
    QVERIFY2(child.waitForStarted(), qPrintable(child.errorString()));

    const int seconds = 60;
    const bool finished = child.waitForFinished(seconds * 1000);
    if (!finished) {
        child.kill();
        child.waitForFinished();
    }
    const QString output = QString::fromUtf8(child.readAllStandardOutput());
    QString errors = QString::fromUtf8(child.readAllStandardError());
    if (errors.size() > 4000)
        errors = errors.left(4000) + QStringLiteral("\n...");

    QString failure;
    if (!finished)
        failure = QStringLiteral("hangs: still running after %1 seconds").arg(seconds);
    else if (child.exitStatus() == QProcess::CrashExit)
        failure = QStringLiteral("crashes:\n") + errors;
    else if (child.exitCode() != 0)
        failure = output + errors;

    const QHash<QString, QString> known = knownFailures();
    const QString row = QString::fromLatin1(QTest::currentDataTag());
    if (known.contains(row))
        QEXPECT_FAIL(QTest::currentDataTag(), qPrintable(known.value(row)), Continue);
    QVERIFY2(failure.isEmpty(), qPrintable(failure));
}

int main(int argc, char **argv)
{
    if (argc == 4 && std::strcmp(argv[1], "--replay") == 0)
        return replay(argc, argv);
    QCoreApplication app(argc, argv);
    TestFuzzRegressions test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_fuzzregressions.moc"
