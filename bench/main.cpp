// zatbench: speed and memory of loading, saving, generating and editing definitions files of
// 1,000 to 100,000 tags. See bench/README.md.

#include "benchrunner.h"
#include "hostileinputs.h"

#include <QCoreApplication>
#include <QGuiApplication>

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

void usage()
{
    std::fprintf(stderr,
                 "usage: zatbench [--quick]\n"
                 "       zatbench --profile OPERATION [TAGS]   (TAGS defaults to 10000)\n"
                 "       zatbench --hostile [MB]               (MB defaults to 100)\n"
                 "  --quick      only 1,000 and 10,000 tags\n"
                 "  --hostile    reads MB of each kind of input built to be expensive, in child\n"
                 "               processes: time and peak memory\n"
                 "  --profile    runs one operation once inside zatbench_profiled(), for\n"
                 "               valgrind --tool=callgrind --toggle-collect=zatbench_profiled\n"
                 "  operations:  %s\n",
                 qPrintable(BenchRunner::profileOperations().join(QLatin1Char(' '))));
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

    // The editor model uses fonts and colours, which need a GUI application, but no screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);

    if (args.value(0) == QLatin1String("--profile") && (args.size() == 2 || args.size() == 3)) {
        bool ok = true;
        const int tags = args.size() == 3 ? args.at(2).toInt(&ok) : 10000;
        if (!ok || tags < 1 || !BenchRunner::profileOperations().contains(args.at(1))) {
            usage();
            return 2;
        }
        return BenchRunner::profile(args.at(1), tags);
    }

    QList<int> sizes = { 1000, 10000, 100000 };
    if (args == QStringList { QStringLiteral("--quick") }) {
        sizes = { 1000, 10000 };
    } else if (!args.isEmpty()) {
        usage();
        return 2;
    }
    BenchRunner runner(sizes);
    return runner.run() ? 0 : 1;
}
