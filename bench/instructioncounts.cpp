#include "instructioncounts.h"

#include "benchrunner.h"
#include "windowbench.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <cstdio>

namespace {

const int sizes[] = { 10000, 100000 };

// A run that takes longer is given up: its operation is still far too slow to count.
const int timeoutMinutes = 10;

} // namespace

QStringList InstructionCounts::defaultOperations()
{
    return { QStringLiteral("load"),
             QStringLiteral("save"),
             QStringLiteral("header"),
             QStringLiteral("lua"),
             QStringLiteral("cpp"),
             QStringLiteral("cs"),
             QStringLiteral("cpplut"),
             QStringLiteral("edit"),
             QStringLiteral("window-rename-shown"),
             QStringLiteral("window-insert-shown"),
             QStringLiteral("window-paste-shown"),
             QStringLiteral("window-find-rare"),
             QStringLiteral("window-find-often"),
             QStringLiteral("window-expand") };
}

double InstructionCounts::growthGoal(const QString &operation)
{
    if (operation.startsWith(QLatin1String("window-")))
        return WindowBench::growthGoal;
    // The edit's goal is its growth from 1,000 to 100,000 tags; from 10,000 it can only be less.
    if (operation == QLatin1String("edit") || operation == QLatin1String("paint"))
        return BenchRunner::editGrowthGoal;
    return BenchRunner::growthGoal;
}

qint64 InstructionCounts::count(
    const QString &program, const QString &operation, int tags, const QString &folder, QString *error)
{
    const QString outputFile = folder + QStringLiteral("/callgrind.out.%1.%2").arg(operation).arg(tags);
    QStringList arguments
        = { QStringLiteral("--tool=callgrind"), QStringLiteral("--callgrind-out-file=") + outputFile };
#if __has_include(<valgrind/callgrind.h>)
    // zatbench_profiled() switches the instrumentation on and off: the preparation runs without.
    arguments.append(QStringLiteral("--instr-atstart=no"));
#else
    arguments.append(QStringLiteral("--toggle-collect=zatbench_profiled"));
#endif
    arguments << program << QStringLiteral("--profile") << operation << QString::number(tags);

    QProcess valgrind;
    valgrind.setProcessChannelMode(QProcess::MergedChannels);
    // The child's temporary files (a window operation writes its definitions file) go into the
    // folder too, which goes at the end even when a run was given up and killed.
    const QString temporary = folder + QStringLiteral("/tmp");
    QDir().mkpath(temporary);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TMPDIR"), temporary);
    valgrind.setProcessEnvironment(environment);
    valgrind.start(QStringLiteral("valgrind"), arguments);
    if (!valgrind.waitForStarted()) {
        *error = QStringLiteral("valgrind does not start");
        return -1;
    }
    if (!valgrind.waitForFinished(timeoutMinutes * 60 * 1000)) {
        valgrind.kill();
        valgrind.waitForFinished();
        *error = QStringLiteral("over %1 minutes").arg(timeoutMinutes);
        return -1;
    }
    const QByteArray output = valgrind.readAll();
    if (valgrind.exitStatus() != QProcess::NormalExit || valgrind.exitCode() != 0) {
        *error = QStringLiteral("failed:\n") + QString::fromLocal8Bit(output.right(2000));
        return -1;
    }

    // The totals of the events, Ir first: "totals: 123 ..." (or "summary:" in older files).
    QFile file(outputFile);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("no callgrind output");
        return -1;
    }
    qint64 summary = -1;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed();
        for (const char *key : { "totals:", "summary:" }) {
            if (line.startsWith(key)) {
                bool ok = false;
                const qint64 ir = line.mid(qsizetype(qstrlen(key))).trimmed().split(' ').value(0).toLongLong(&ok);
                if (ok && (summary < 0 || key[0] == 't'))
                    summary = ir;
            }
        }
    }
    if (summary <= 0)
        *error = QStringLiteral("no instructions counted (was zatbench built with the valgrind headers?)");
    return summary > 0 ? summary : -1;
}

int InstructionCounts::run(const QString &program, const QStringList &operations)
{
    const QStringList chosen = operations.isEmpty() ? defaultOperations() : operations;
    if (QStandardPaths::findExecutable(QStringLiteral("valgrind")).isEmpty()) {
        std::fprintf(stderr, "zatbench: valgrind is not installed (scripts/bootstrap installs it)\n");
        return 1;
    }
    QTemporaryDir folder;
    if (!folder.isValid()) {
        std::fprintf(stderr, "zatbench: cannot make a temporary folder\n");
        return 1;
    }

    struct Count {
        QString operation;
        qint64 ir[2];
    };
    QList<Count> counts;
    bool failed = false;
    for (const QString &operation : chosen) {
        Count result { operation, { -1, -1 } };
        for (int i = 0; i < 2; ++i) {
            QElapsedTimer timer;
            timer.start();
            QString error;
            result.ir[i] = count(program, operation, sizes[i], folder.path(), &error);
            if (result.ir[i] < 0) {
                // Too slow to count is a result; a run that fails is not.
                const bool tooSlow = error.startsWith(QLatin1String("over"));
                failed = failed || !tooSlow;
                std::fprintf(stderr,
                             "zatbench: callgrind, %s at %s tags: %s\n",
                             qPrintable(operation),
                             qPrintable(BenchRunner::grouped(sizes[i])),
                             qPrintable(error));
                // The larger size would take even longer.
                if (tooSlow)
                    break;
            } else {
                std::fprintf(stderr,
                             "zatbench: callgrind, %s at %s tags: %s instructions (%.0f s)\n",
                             qPrintable(operation),
                             qPrintable(BenchRunner::grouped(sizes[i])),
                             qPrintable(BenchRunner::grouped(result.ir[i])),
                             double(timer.elapsed()) / 1e3);
            }
        }
        counts.append(result);
    }

    std::printf("\n# instructions (callgrind Ir) of one run of each operation\n");
    std::printf("%-24s %18s %18s %10s\n", "operation", "10,000 tags", "100,000 tags", "100k/10k");
    for (const Count &c : counts) {
        std::printf("%-24s", qPrintable(c.operation));
        for (qint64 ir : c.ir)
            std::printf(" %18s", ir < 0 ? "-" : qPrintable(BenchRunner::grouped(ir)));
        if (c.ir[0] > 0 && c.ir[1] > 0)
            std::printf(" %10.2f", double(c.ir[1]) / double(c.ir[0]));
        std::printf("\n");
    }
    std::printf("\n");
    for (const Count &c : counts) {
        const double goal = growthGoal(c.operation);
        if (c.ir[0] > 0 && c.ir[1] > 0) {
            const double ratio = double(c.ir[1]) / double(c.ir[0]);
            std::printf("GOAL growth_instructions:%s %.3f %g %s\n",
                        qPrintable(c.operation),
                        ratio,
                        goal,
                        ratio <= goal ? "PASS" : "FAIL");
        } else {
            std::printf("GOAL growth_instructions:%s - %g SKIPPED\n", qPrintable(c.operation), goal);
        }
    }
    std::fflush(stdout);
    return failed ? 1 : 0;
}
