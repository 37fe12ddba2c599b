// zatbench: speed and memory of loading, saving, generating and editing definitions files of
// 1,000 to 100,000 tags, in the model and in an editor window. See bench/README.md.

#include "benchrunner.h"
#include "hostileinputs.h"
#include "instructioncounts.h"
#include "windowbench.h"

#include <QApplication>
#include <QCoreApplication>

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

QtMessageHandler g_defaultHandler = nullptr;

// The offscreen platform reports each window function it lacks (raise, size hints), a hundred
// times a run; everything else goes through.
void quietOffscreen(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (message.startsWith(QLatin1String("This plugin does not support")))
        return;
    g_defaultHandler(type, context, message);
}

void usage()
{
    std::fprintf(stderr,
                 "usage: zatbench [--quick] [--window]\n"
                 "       zatbench --profile OPERATION [TAGS]   (TAGS defaults to 10000)\n"
                 "       zatbench --instructions [OPERATION...]\n"
                 "       zatbench --hostile [MB]               (MB defaults to 100)\n"
                 "  --quick         only 1,000 and 10,000 tags\n"
                 "  --window        only the window section\n"
                 "  --hostile       reads MB of each kind of input built to be expensive, in child\n"
                 "                  processes: time and peak memory\n"
                 "  --profile       runs one operation once inside zatbench_profiled(), for\n"
                 "                  valgrind --tool=callgrind --instr-atstart=no\n"
                 "  --instructions  counts the instructions of operations at 10,000 and 100,000 tags\n"
                 "                  with callgrind (by default those with a growth goal)\n"
                 "  operations:     %s\n"
                 "                  %s\n",
                 qPrintable(BenchRunner::profileOperations().join(QLatin1Char(' '))),
                 qPrintable(WindowBench::profileOperations().join(QLatin1Char(' '))));
}

} // namespace

int main(int argc, char *argv[])
{
    // The memory child needs no GUI: a smaller process measures the load more cleanly.
    if (argc == 3 && std::strcmp(argv[1], "--memory") == 0) {
        QCoreApplication app(argc, argv);
        return BenchRunner::memoryChild(std::atoi(argv[2]));
    }
    if (argc == 4 && std::strcmp(argv[1], "--hostile-child") == 0) {
        QCoreApplication app(argc, argv);
        return HostileInputs::child(QString::fromLocal8Bit(argv[2]), std::strcmp(argv[3], "anchored") == 0);
    }
    if ((argc == 2 || argc == 3) && std::strcmp(argv[1], "--hostile") == 0) {
        QCoreApplication app(argc, argv);
        const int megabytes = argc == 3 ? std::atoi(argv[2]) : 100;
        if (megabytes < 1) {
            usage();
            return 2;
        }
        return HostileInputs::run(QCoreApplication::applicationFilePath(), megabytes);
    }
    if (argc >= 2 && std::strcmp(argv[1], "--instructions") == 0) {
        QCoreApplication app(argc, argv);
        const QStringList operations = app.arguments().mid(2);
        for (const QString &operation : operations) {
            if (!BenchRunner::profileOperations().contains(operation)
                && !WindowBench::profileOperations().contains(operation)) {
                usage();
                return 2;
            }
        }
        return InstructionCounts::run(QCoreApplication::applicationFilePath(), operations);
    }

    // The editor model uses fonts and colours, the window widgets: a widget application, but no
    // screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    g_defaultHandler = qInstallMessageHandler(quietOffscreen);
    QApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);

    if (args.size() == 2 && args.at(0) == QLatin1String("--window-memory"))
        return WindowBench::memoryChild(args.at(1).toInt());

    if (args.value(0) == QLatin1String("--profile") && (args.size() == 2 || args.size() == 3)) {
        bool ok = true;
        const int tags = args.size() == 3 ? args.at(2).toInt(&ok) : 10000;
        const QString operation = args.at(1);
        if (ok && tags >= 1 && BenchRunner::profileOperations().contains(operation))
            return BenchRunner::profile(operation, tags);
        if (ok && tags >= 1 && WindowBench::profileOperations().contains(operation))
            return WindowBench::profile(operation, tags);
        usage();
        return 2;
    }

    bool quick = false;
    bool windowOnly = false;
    for (const QString &arg : args) {
        if (arg == QLatin1String("--quick")) {
            quick = true;
        } else if (arg == QLatin1String("--window")) {
            windowOnly = true;
        } else {
            usage();
            return 2;
        }
    }
    const QList<int> sizes = quick ? QList<int> { 1000, 10000 } : QList<int> { 1000, 10000, 100000 };
    if (!windowOnly) {
        BenchRunner runner(sizes);
        if (!runner.run())
            return 1;
    }
    WindowBench window(sizes);
    return window.run() ? 0 : 1;
}
