#include "windowbench.h"

#include "synthesizer.h"
#include "windowdriver.h"

#include "item.h"
#include "parser.h"

#include <QDialog>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

#include <malloc.h>

using namespace ZAT16;

namespace {

// What the goals ask of each kind of action.
enum Kind { Open, Load, NextProblem, ShownEdit, HiddenEdit, Find, Expand, Collapse, Viewer, Save, Reload, New };

struct Action {
    const char *key; ///< in the GOAL lines and after "window-" in --profile
    const char *label; ///< in the table
    const char *group; ///< actions that run together (an undo needs the edit before it)
    Kind kind;
    const char *viewAction = nullptr; ///< the View action of a viewer
};

const Action actions[] = {
    { "open", "open (start-up path)", "open", Open },
    { "load", "  load (parser alone)", "load", Load },
    { "f8", "F8 (shows Problems)", "f8", NextProblem },
    { "rename-shown", "rename, Problems shown", "names-shown", ShownEdit },
    { "undo-shown", "undo, Problems shown", "names-shown", ShownEdit },
    { "redo-shown", "redo, Problems shown", "names-shown", ShownEdit },
    { "insert-shown", "insert, Problems shown", "insert-shown", ShownEdit },
    { "delete-shown", "delete, Problems shown", "insert-shown", ShownEdit },
    { "paste-shown", "paste, Problems shown", "paste-shown", ShownEdit },
    { "cut-shown", "cut, Problems shown", "paste-shown", ShownEdit },
    { "move-shown", "move down, Problems shown", "move-shown", ShownEdit },
    { "undo-move-shown", "undo move, Problems shown", "move-shown", ShownEdit },
    { "rename-hidden", "rename, Problems hidden", "names-hidden", HiddenEdit },
    { "undo-hidden", "undo, Problems hidden", "names-hidden", HiddenEdit },
    { "redo-hidden", "redo, Problems hidden", "names-hidden", HiddenEdit },
    { "insert-hidden", "insert, Problems hidden", "insert-hidden", HiddenEdit },
    { "delete-hidden", "delete, Problems hidden", "insert-hidden", HiddenEdit },
    { "paste-hidden", "paste, Problems hidden", "paste-hidden", HiddenEdit },
    { "cut-hidden", "cut, Problems hidden", "paste-hidden", HiddenEdit },
    { "move-hidden", "move down, Problems hidden", "move-hidden", HiddenEdit },
    { "undo-move-hidden", "undo move, Problems hidden", "move-hidden", HiddenEdit },
    { "find-rare", "find next, rare match", "find-rare", Find },
    { "find-often", "find next, frequent match", "find-often", Find },
    { "expand", "expand all", "expand", Expand },
    { "collapse", "collapse all", "expand", Collapse },
    { "view-header", "view header", "view-header", Viewer, "m_act_view_header" },
    { "view-lua", "view Lua", "view-lua", Viewer, "m_act_view_lua" },
    { "view-cpp", "view C++", "view-cpp", Viewer, "m_act_view_cpp" },
    { "view-cpplut", "view C++ lookup table", "view-cpplut", Viewer, "m_act_view_cpp_lut" },
    { "view-cs", "view C#", "view-cs", Viewer, "m_act_view_cs" },
    { "save", "save", "save", Save },
    { "reload", "reload", "reload", Reload },
    { "new", "Clear all (New)", "new", New },
    { "undo-new", "undo Clear all", "new", New },
};

const Action *actionOf(const QByteArray &key)
{
    for (const Action &action : actions) {
        if (key == action.key)
            return &action;
    }
    return nullptr;
}

// A frequent word of names and comments (one tag in sixteen or so has it).
const char oftenFound[] = "Voltage";

// An action is not repeated once its runs have taken this much processor time: the slow ones
// of the large file run once, and the whole run stays within minutes.
const double budgetMs = 1000;

int repetitions(int tags)
{
    if (tags >= 100000)
        return 3;
    if (tags >= 10000)
        return 5;
    return 7;
}

} // namespace

WindowBench::WindowBench(const QList<int> &sizes)
    : m_sizes(sizes)
    , m_fileBytes(sizes.size(), 0)
    , m_memory(sizes.size())
    , m_samples(sizes.size())
{
}

WindowBench::~WindowBench() = default;

std::unique_ptr<QTemporaryDir> WindowBench::isolate()
{
    auto folder = std::make_unique<QTemporaryDir>();
    if (!folder->isValid()) {
        std::fprintf(stderr, "zatbench: cannot make a temporary folder\n");
        std::exit(1);
    }
    for (const char *variable : { "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME" })
        qputenv(variable, folder->filePath(QString::fromLatin1(variable).toLower()).toLocal8Bit());
    return folder;
}

QString WindowBench::writeFile(const QTemporaryDir &folder, int tags, QByteArray *bytes)
{
    *bytes = Synthesizer::definitions(tags);
    const QString path = folder.filePath(QStringLiteral("bench-%1.zatdef").arg(tags));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(*bytes) != bytes->size()) {
        std::fprintf(stderr, "zatbench: cannot write %s\n", qPrintable(path));
        return QString();
    }
    return path;
}

bool WindowBench::run()
{
    m_folder = isolate();
    std::fprintf(stderr, "zatbench: window section, offscreen\n");
    for (int column = 0; column < m_sizes.size(); ++column) {
        const int tags = m_sizes.at(column);
        m_memory[column] = BenchRunner::childMemory({ QStringLiteral("--window-memory"), QString::number(tags) });
        if (!measureSize(column))
            return false;
    }
    printTable();
    printGoals();
    return true;
}

bool WindowBench::measureSize(int column)
{
    const int tags = m_sizes.at(column);
    m_path = writeFile(*m_folder, tags, &m_bytes);
    if (m_path.isEmpty())
        return false;
    m_fileBytes[column] = m_bytes.size();
    const int reps = repetitions(tags);
    // The first round of the process fills caches (fonts, glyphs, icons, styles) that later
    // rounds find full, as a user's window finds them after its first seconds.
    const bool warmUp = column == 0;
    for (int r = warmUp ? -1 : 0; r < reps; ++r) {
        bool ok = true;
        const BenchRunner::Sample sample = BenchRunner::sample([&] { ok = round(column, r >= 0); });
        if (!ok)
            return false;
        std::fprintf(stderr,
                     "zatbench: window, %s tags, %s %d of %d: %.1f s\n",
                     qPrintable(BenchRunner::grouped(tags)),
                     r < 0 ? "warm-up round" : "round",
                     r < 0 ? 1 : r + 1,
                     r < 0 ? 1 : reps,
                     sample.wall / 1e3);
    }
    QFile::remove(m_path);
    return true;
}

bool WindowBench::due(int column, const QByteArray &group) const
{
    if (!m_target.isEmpty())
        return group == actionOf(m_target)->group;
    // The first action of the group decides for all of it.
    for (const Action &action : actions) {
        if (group == action.group) {
            double spent = 0;
            for (const BenchRunner::Sample &sample : m_samples.at(column).value(action.key))
                spent += sample.cpu;
            return spent < budgetMs;
        }
    }
    return false;
}

void WindowBench::step(int column, bool record, const QByteArray &key, const std::function<void()> &operation)
{
    if (!m_target.isEmpty()) {
        if (m_target == key) {
            zatbench_profiled(operation);
            m_profiled = true;
        } else {
            operation();
        }
        return;
    }
    const BenchRunner::Sample sample = BenchRunner::sample(operation);
    if (record)
        m_samples[column][key].append(sample);
}

bool WindowBench::round(int column, bool record)
{
    const bool profiling = !m_target.isEmpty();
    WindowDriver driver(m_path);
    auto failed = [&driver]() {
        if (driver.failure().isEmpty())
            return false;
        std::fprintf(stderr, "zatbench: the window failed a check: %s\n", qPrintable(driver.failure()));
        return true;
    };
    auto run
        = [&](const QByteArray &key, const std::function<void()> &operation) { step(column, record, key, operation); };

    run("open", [&] { driver.open(); });
    if (failed())
        return false;
    if (!profiling) {
        Item *root = nullptr;
        Parser parser;
        run("load", [&] {
            parser.parse(m_bytes);
            root = parser.takeRoot();
        });
        delete root;
    }

    // F8 shows the Problems dock for the edits that follow.
    if (!profiling || due(column, "f8") || due(column, "names-shown") || due(column, "insert-shown")
        || due(column, "paste-shown") || due(column, "move-shown"))
        run("f8", [&] { driver.nextProblem(); });

    // Each group of edits starts on the tag in the middle of the file and ends with the document
    // as it was, so that every round and both states of the dock edit the same tree.
    for (const bool shown : { true, false }) {
        if (!shown && driver.problemsShown())
            driver.hideProblems();
        const char *state = shown ? "-shown" : "-hidden";
        auto key = [state](const char *name) { return QByteArray(name) + state; };
        if (due(column, key("names"))) {
            driver.selectEditedTag();
            const int start = driver.undoIndex();
            const QString renamed = driver.editedName() + QLatin1String("Renamed");
            run(key("rename"), [&] { driver.rename(renamed); });
            run(key("undo"), [&] { driver.undo(); });
            run(key("redo"), [&] { driver.redo(); });
            driver.undoTo(start);
        }
        if (due(column, key("insert"))) {
            driver.selectEditedTag();
            const int start = driver.undoIndex();
            run(key("insert"), [&] { driver.insertBefore(); });
            run(key("delete"), [&] { driver.remove(); });
            driver.undoTo(start);
        }
        if (due(column, key("paste"))) {
            driver.selectEditedTag();
            const int start = driver.undoIndex();
            driver.copy();
            run(key("paste"), [&] { driver.paste(); });
            run(key("cut"), [&] { driver.cut(); });
            driver.undoTo(start);
        }
        if (due(column, key("move"))) {
            driver.selectEditedTag();
            const int start = driver.undoIndex();
            run(key("move"), [&] { driver.moveDown(); });
            run(QByteArray("undo-move") + state, [&] { driver.undo(); });
            driver.undoTo(start);
        }
        if (failed())
            return false;
    }

    // A rare match is searched from the top: the step goes through nearly the whole file. A
    // frequent one is found a few entries after the first match.
    if (due(column, "find-rare")) {
        driver.prepareFind(driver.lastTagName(), true);
        run("find-rare", [&] { driver.findNext(); });
        driver.closeFind();
    }
    if (due(column, "find-often")) {
        driver.prepareFind(QLatin1String(oftenFound), false);
        run("find-often", [&] { driver.findNext(); });
        driver.closeFind();
    }
    if (due(column, "expand")) {
        run("expand", [&] { driver.expandAll(); });
        run("collapse", [&] { driver.collapseAll(); });
    }
    for (const Action &action : actions) {
        if (action.kind != Viewer || !due(column, action.group))
            continue;
        QDialog *viewer = nullptr;
        run(action.key, [&] { viewer = driver.view(action.viewAction); });
        driver.closeViewer(viewer);
    }
    if (failed())
        return false;

    // The edits were all undone: the save writes the file as it was.
    if (due(column, "save")) {
        run("save", [&] { driver.save(); });
        if (!driver.fileHolds(m_bytes)) {
            std::fprintf(stderr, "zatbench: the window's save did not write back the file it opened\n");
            return false;
        }
    }
    if (due(column, "reload"))
        run("reload", [&] { driver.reload(); });
    if (due(column, "new")) {
        run("new", [&] { driver.clearAll(); });
        run("undo-new", [&] { driver.undo(); });
    }
    return !failed();
}

double WindowBench::value(const QByteArray &key, int tags) const
{
    const qsizetype column = m_sizes.indexOf(tags);
    if (column < 0)
        return -1;
    QList<double> cpu;
    for (const BenchRunner::Sample &sample : m_samples.at(column).value(key))
        cpu.append(sample.cpu);
    return cpu.isEmpty() ? -1 : BenchRunner::median(cpu);
}

void WindowBench::printTable() const
{
    const bool growth = m_sizes.contains(10000) && m_sizes.contains(100000);
    std::printf("\n# window: an editor window offscreen, each action until the window shows its result;\n"
                "# medians of n runs (fewer runs for actions that take long)\n");
    std::printf("%-28s", "tags");
    for (int tags : m_sizes)
        std::printf(" %16s", qPrintable(BenchRunner::grouped(tags)));
    if (growth)
        std::printf("  %9s", "growth");
    std::printf("\n%-28s", "file MB");
    for (qint64 bytes : m_fileBytes)
        std::printf(" %16.2f", double(bytes) / 1e6);
    std::printf("\n");

    for (const bool wall : { false, true }) {
        std::printf("\n%-28s", wall ? "wall-clock time" : "processor time");
        for (qsizetype i = 0; i < m_sizes.size(); ++i)
            std::printf(" %12s %3s", "ms", "n");
        if (growth)
            std::printf("  %9s", "100k/10k");
        std::printf("\n");
        for (const Action &action : actions) {
            std::printf("%-28s", action.label);
            QList<double> medians;
            for (qsizetype i = 0; i < m_sizes.size(); ++i) {
                QList<double> times;
                for (const BenchRunner::Sample &sample : m_samples.at(i).value(action.key))
                    times.append(wall ? sample.wall : sample.cpu);
                medians.append(times.isEmpty() ? -1 : BenchRunner::median(times));
                if (times.isEmpty())
                    std::printf(" %12s %3s", "-", "");
                else
                    std::printf(" %12.3f %3d", medians.last(), int(times.size()));
            }
            BenchRunner::printGrowth(m_sizes, medians);
            std::printf("\n");
        }
    }

    std::printf("\n%-28s\n", "memory with the file open");
    auto memoryLine = [&](const char *label, auto field) {
        std::printf("%-28s", label);
        for (const BenchRunner::Memory &memory : m_memory) {
            if (memory.valid)
                std::printf(" %16s", qPrintable(field(memory)));
            else
                std::printf(" %16s", "failed");
        }
        std::printf("\n");
    };
    auto megabytes = [](qint64 kib) { return QString::number(double(kib) * 1024 / 1e6, 'f', 1); };
    memoryLine("  process peak MB", [&](const BenchRunner::Memory &m) { return megabytes(m.peakAfterKiB); });
    memoryLine("  peak added by opening MB", [&](const BenchRunner::Memory &m) { return megabytes(m.addedKiB()); });
    memoryLine("  peak added / file", [](const BenchRunner::Memory &m) {
        return QString::number(double(m.addedKiB()) * 1024 / double(m.fileBytes), 'f', 2);
    });
    memoryLine("  kept while open MB",
               [&](const BenchRunner::Memory &m) { return megabytes(m.residentAfterKiB - m.residentBeforeKiB); });
    memoryLine("  peak reset first",
               [](const BenchRunner::Memory &m) { return m.peakReset ? QStringLiteral("yes") : QStringLiteral("no"); });
    std::fflush(stdout);
}

void WindowBench::printGoals() const
{
    const bool full = m_sizes.contains(100000);
    const int large = full ? 100000 : m_sizes.last();
    std::printf("\n# window goals, on processor time of the main thread\n");
    if (!full)
        std::printf(
            "# quick run: open_vs_load at %s tags instead of 100,000; goals that need 100,000 tags are skipped\n",
            qPrintable(BenchRunner::grouped(large)));
    auto goal = [](const QString &name, double measured, double target) {
        if (measured < 0) {
            std::printf("GOAL %s - %g SKIPPED\n", qPrintable(name), target);
            return;
        }
        std::printf("GOAL %s %.3f %g %s\n", qPrintable(name), measured, target, measured <= target ? "PASS" : "FAIL");
    };
    auto name
        = [](const char *prefix, const Action &action) { return QLatin1String(prefix) + QLatin1String(action.key); };

    // At 10,000 tags everything but the actions that read, write or generate the whole file.
    for (const Action &action : actions) {
        if (action.kind != Open && action.kind != Load && action.kind != Viewer && action.kind != Save
            && action.kind != Reload)
            goal(name("window_10k:", action), value(action.key, 10000), 50);
    }
    for (const Action &action : actions) {
        double target = -1;
        if (action.kind == ShownEdit || action.kind == Find)
            target = 50;
        else if (action.kind == Expand)
            target = 2000;
        else if (action.kind == Viewer)
            target = 1000;
        if (target > 0)
            goal(name("window_100k:", action), full ? value(action.key, 100000) : -1, target);
    }
    const double open = value("open", large);
    const double load = value("load", large);
    goal(QStringLiteral("window_open_vs_load"), open >= 0 && load > 0 ? open / load : -1, 1.2);
    for (const Action &action : actions) {
        if (action.kind == Load)
            continue;
        const double small = value(action.key, 10000);
        const double grown = full && small > 0 ? value(action.key, 100000) / small : -1;
        goal(name("window_growth:", action), grown, growthGoal);
    }
    std::fflush(stdout);
}

int WindowBench::memoryChild(int tags)
{
    const std::unique_ptr<QTemporaryDir> folder = isolate();
    QByteArray bytes;
    const QString path = writeFile(*folder, tags, &bytes);
    if (path.isEmpty())
        return 1;
    // The empty window is there before the measurement starts: what opening the file adds is
    // measured, and the process's peak is reported too.
    auto *driver = new WindowDriver(path);
    driver->settle();
    malloc_trim(0);
    const bool reset = BenchRunner::resetPeak();
    const qint64 residentBefore = BenchRunner::statusKiB("VmRSS");
    const qint64 peakBefore = BenchRunner::statusKiB("VmHWM");
    driver->open();
    const qint64 peakAfter = BenchRunner::statusKiB("VmHWM");
    const qint64 residentAfter = BenchRunner::statusKiB("VmRSS");
    if (!driver->failure().isEmpty()) {
        std::fprintf(stderr, "zatbench: the window failed a check: %s\n", qPrintable(driver->failure()));
        return 1;
    }
    std::printf("MEMORY %d %lld %lld %lld %lld %lld %s\n",
                tags,
                qint64(bytes.size()),
                residentBefore,
                peakBefore,
                peakAfter,
                residentAfter,
                reset ? "reset" : "kept");
    std::fflush(stdout);
    // The window is left to the end of the process: closing it would only cost time.
    folder->remove();
    std::_Exit(0);
}

QStringList WindowBench::profileOperations()
{
    QStringList operations;
    for (const Action &action : actions) {
        if (action.kind != Load)
            operations.append(QLatin1String("window-") + QLatin1String(action.key));
    }
    return operations;
}

int WindowBench::profile(const QString &operation, int tags)
{
    const QByteArray key = operation.mid(int(qstrlen("window-"))).toLatin1();
    if (!profileOperations().contains(operation) || !actionOf(key)) {
        std::fprintf(stderr, "zatbench: unknown operation %s\n", qPrintable(operation));
        return 2;
    }
    WindowBench bench({ tags });
    bench.m_folder = isolate();
    bench.m_path = writeFile(*bench.m_folder, tags, &bench.m_bytes);
    if (bench.m_path.isEmpty())
        return 1;
    bench.m_target = key;
    if (!bench.round(0, false))
        return 1;
    if (!bench.m_profiled) {
        std::fprintf(stderr, "zatbench: %s did not run\n", qPrintable(operation));
        return 1;
    }
    return 0;
}
