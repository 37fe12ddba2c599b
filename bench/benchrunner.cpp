#include "benchrunner.h"

#include "synthesizer.h"

#include "editormodel.h"
#include "item.h"
#include "parser.h"
#include "writercpp.h"
#include "writercpplut.h"
#include "writercs.h"
#include "writerheader.h"
#include "writerlua.h"
#include "writerxml.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QModelIndex>
#include <QProcess>
#include <QThread>
#include <QUndoStack>
#include <QXmlStreamReader>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <malloc.h>
#include <time.h>

using namespace ZAT16;

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_START_INSTRUMENTATION
#define CALLGRIND_STOP_INSTRUMENTATION
#endif

// Callgrind collects only inside this function (--toggle-collect=zatbench_profiled). Started
// with --instr-atstart=no, it also simulates nothing outside it, which makes the preparation of
// a large file fast.
extern "C" Q_NEVER_INLINE void zatbench_profiled(const std::function<void()> &operation)
{
    CALLGRIND_START_INSTRUMENTATION;
    operation();
    CALLGRIND_STOP_INSTRUMENTATION;
}

namespace {

// Keeps results alive so that the compiler cannot drop the work that produced them.
volatile qint64 g_sink = 0;

const char *const generatorNames[] = { "WriterHeader", "WriterLua", "WriterCpp", "WriterCs", "WriterCppLut" };

QByteArray generate(int which, const Item *root)
{
    switch (which) {
    case 0: {
        WriterHeader writer;
        return writer.encode(root);
    }
    case 1: {
        WriterLua writer;
        return writer.encode(root);
    }
    case 2: {
        WriterCpp writer;
        return writer.encode(root);
    }
    case 3: {
        WriterCs writer;
        return writer.encode(root);
    }
    default: {
        WriterCppLut writer;
        return writer.encode(root);
    }
    }
}

QByteArray save(const Item *root)
{
    WriterXml writer;
    return writer.encode(root);
}

// A bare reader over the same bytes and the same kind of device as Parser::parse(QByteArray):
// every token, every element name, every attribute value and every text. No reader built on
// QXmlStreamReader can be faster than this.
qint64 anchor(const QByteArray &bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly | QIODevice::Text);
    QXmlStreamReader reader(&buffer);
    qint64 sum = 0;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement: {
            sum += reader.name().size();
            const QXmlStreamAttributes attributes = reader.attributes();
            for (const QXmlStreamAttribute &attribute : attributes)
                sum += attribute.value().size();
            break;
        }
        case QXmlStreamReader::Characters:
        case QXmlStreamReader::Comment:
        case QXmlStreamReader::DTD:
            sum += reader.text().size();
            break;
        default:
            break;
        }
    }
    if (reader.hasError()) {
        std::fprintf(stderr, "zatbench: the reader failed: %s\n", qPrintable(reader.errorString()));
        std::exit(1);
    }
    return sum;
}

Item *load(const QByteArray &bytes, QString *warnings = nullptr)
{
    Parser parser;
    if (!parser.parse(bytes)) {
        std::fprintf(stderr, "zatbench: the synthetic file does not load:\n%s\n", qPrintable(parser.formatError()));
        std::exit(1);
    }
    if (warnings)
        *warnings = parser.warnings;
    return parser.takeRoot();
}

// The first paint of a tree view: display, edit, background and foreground data of the first
// 50 rows in all columns.
qint64 paint(const EditorModel &model)
{
    qint64 sum = 0;
    const int rows = std::min(50, model.rowCount());
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < 3; ++column) {
            const QModelIndex index = model.index(row, column);
            sum += model.data(index, Qt::DisplayRole).isValid();
            sum += model.data(index, Qt::EditRole).isValid();
            sum += model.data(index, Qt::BackgroundRole).isValid();
            sum += model.data(index, Qt::ForegroundRole).isValid();
        }
    }
    return sum;
}

// A code for row 0 that keeps the type and changes the number.
QString editedCode(const EditorModel &model)
{
    const Item *item = model.root()->children.at(0);
    const quint32 code = quint32(item->id);
    return QString::asprintf("0x%04X", (code & 0xF000) | ((code + 0x777) & 0x0FFF));
}

double threadCpuMs()
{
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

// The processor time of this thread, which other programs on a shared machine do not inflate,
// and the wall-clock time.
template<typename F>
BenchRunner::Sample timed(F &&f)
{
    QElapsedTimer timer;
    const double cpu = threadCpuMs();
    timer.start();
    f();
    const double wall = double(timer.nsecsElapsed()) / 1e6;
    return BenchRunner::Sample { threadCpuMs() - cpu, wall };
}

// Where the saved bytes first differ from the synthetic ones, as two readable lines.
void reportMismatch(const QByteArray &expected, const QByteArray &actual)
{
    qsizetype at = 0;
    while (at < expected.size() && at < actual.size() && expected.at(at) == actual.at(at))
        ++at;
    const qsizetype lineStart = expected.lastIndexOf('\n', at - 1) + 1;
    const int line = int(expected.left(lineStart).count('\n')) + 1;
    auto lineAt = [lineStart](const QByteArray &bytes) {
        const qsizetype end = bytes.indexOf('\n', lineStart);
        return bytes.mid(lineStart, end < 0 ? -1 : end - lineStart);
    };
    std::fprintf(stderr,
                 "zatbench: the synthetic file does not save back identically (line %d):\n"
                 "  synthesised: %s\n  saved:       %s\n",
                 line,
                 lineAt(expected).constData(),
                 lineAt(actual).constData());
}

const char *const editorRows[] = { "setTags", "first paint", "setTags + first paint", "edit (setData)",
                                   "repaint", "undo",        "edit + repaint + undo" };

} // namespace

double BenchRunner::median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    const qsizetype n = values.size();
    return n % 2 ? values.at(n / 2) : (values.at(n / 2 - 1) + values.at(n / 2)) / 2;
}

void BenchRunner::printGrowth(const QList<int> &sizes, const QList<double> &values)
{
    if (!sizes.contains(10000) || !sizes.contains(100000))
        return;
    const double small = values.at(sizes.indexOf(10000));
    const double large = values.at(sizes.indexOf(100000));
    if (small > 0 && large >= 0)
        std::printf("  %9.2f", large / small);
}

QString BenchRunner::grouped(qint64 n)
{
    QString text = QString::number(n);
    for (qsizetype i = text.size() - 3; i > 0; i -= 3)
        text.insert(i, QLatin1Char(','));
    return text;
}

bool BenchRunner::resetPeak()
{
    QFile file(QStringLiteral("/proc/self/clear_refs"));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    return file.write("5") == 1;
}

BenchRunner::Sample BenchRunner::sample(const std::function<void()> &operation)
{
    return timed(operation);
}

BenchRunner::BenchRunner(const QList<int> &sizes)
    : m_sizes(sizes)
{
    const int n = int(sizes.size());
    auto add = [&](const QString &name, bool perByte) {
        m_rows.append(Row { name, perByte, QList<double>(n, -1), QList<double>(n, -1) });
    };
    add(QStringLiteral("anchor (reader loop)"), true);
    add(QStringLiteral("load"), true);
    add(QStringLiteral("save"), true);
    for (const char *name : generatorNames)
        add(QLatin1String(name), true);
    for (const char *name : editorRows)
        add(QLatin1String(name), false);
    m_fileBytes = QList<qint64>(n, 0);
    m_warnings = QList<int>(n, 0);
    m_memory = QList<Memory>(n);
}

int BenchRunner::repetitions(int tags) const
{
    if (tags >= 100000)
        return 3;
    if (tags >= 10000)
        return 7;
    return 11;
}

bool BenchRunner::run()
{
    std::printf("zatbench: Qt %s, %d cores; times are medians in ms, 1 MB = 1,000,000 bytes of the file\n",
                qVersion(),
                QThread::idealThreadCount());
    std::fflush(stdout);
    for (int column = 0; column < m_sizes.size(); ++column) {
        // The peak memory of a load is taken in a fresh process first, so that nothing this
        // process allocated before can hide it.
        m_memory[column] = childMemory({ QStringLiteral("--memory"), QString::number(m_sizes.at(column)) });
        if (!measureSize(column))
            return false;
    }
    printTable();
    printGoals();
    return true;
}

BenchRunner::Memory BenchRunner::childMemory(const QStringList &arguments)
{
    Memory memory;
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(QCoreApplication::applicationFilePath(), arguments);
    if (!child.waitForFinished(-1) || child.exitCode() != 0)
        return memory;
    for (const QByteArray &line : child.readAllStandardOutput().split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        if (fields.size() == 8 && fields.at(0) == "MEMORY") {
            memory.valid = true;
            memory.fileBytes = fields.at(2).toLongLong();
            memory.residentBeforeKiB = fields.at(3).toLongLong();
            memory.peakBeforeKiB = fields.at(4).toLongLong();
            memory.peakAfterKiB = fields.at(5).toLongLong();
            memory.residentAfterKiB = fields.at(6).toLongLong();
            memory.peakReset = fields.at(7) == "reset";
        }
    }
    return memory;
}

qint64 BenchRunner::statusKiB(const char *field)
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray key = QByteArray(field) + ':';
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith(key))
            return line.mid(key.size()).trimmed().split(' ').value(0).toLongLong();
    }
    return -1;
}

int BenchRunner::memoryChild(int tags)
{
    QByteArray bytes = Synthesizer::definitions(tags);
    malloc_trim(0);
    const bool reset = resetPeak();
    const qint64 residentBefore = statusKiB("VmRSS");
    const qint64 peakBefore = statusKiB("VmHWM");
    Item *root = load(bytes);
    const qint64 peakAfter = statusKiB("VmHWM");
    const qint64 residentAfter = statusKiB("VmRSS");
    g_sink = qint64(root->children.size());
    // The tree is left to the end of the process: freeing it would only cost time.
    std::printf("MEMORY %d %lld %lld %lld %lld %lld %s\n",
                tags,
                qint64(bytes.size()),
                residentBefore,
                peakBefore,
                peakAfter,
                residentAfter,
                reset ? "reset" : "kept");
    std::fflush(stdout);
    std::_Exit(0);
}

bool BenchRunner::measureSize(int column)
{
    const int tags = m_sizes.at(column);
    const int reps = repetitions(tags);
    const bool warmUp = tags < 100000;
    auto record = [&](const QString &name, const QList<Sample> &times) {
        QList<double> cpu, wall;
        for (const Sample &sample : times) {
            cpu.append(sample.cpu);
            wall.append(sample.wall);
        }
        for (Row &row : m_rows) {
            if (row.name == name) {
                row.ms[column] = median(cpu);
                row.wall[column] = median(wall);
            }
        }
    };

    const QByteArray bytes = Synthesizer::definitions(tags);
    m_fileBytes[column] = bytes.size();

    // The figures mean something only if the file is what a save writes.
    {
        QString warnings;
        std::unique_ptr<Item> root(load(bytes, &warnings));
        const QByteArray saved = save(root.get());
        if (saved != bytes) {
            reportMismatch(bytes, saved);
            return false;
        }
        m_warnings[column] = int(warnings.count(QLatin1String("Warning: ")));
    }
    std::fprintf(stderr,
                 "zatbench: %s tags, %.1f MB, loads and saves back identically (%d warnings); %d repetitions\n",
                 qPrintable(grouped(tags)),
                 double(bytes.size()) / 1e6,
                 m_warnings.at(column),
                 reps);

    // One round runs every operation once, on the tree its own load produced; the rounds take
    // turns, so that a busy spell of a shared machine spreads over all operations alike.
    QHash<QString, QList<Sample>> samples;
    for (int r = warmUp ? -1 : 0; r < reps; ++r) {
        auto measure = [&](const QString &name, const auto &operation) {
            const Sample sample = timed(operation);
            if (r >= 0)
                samples[name].append(sample);
            return sample;
        };

        measure(QStringLiteral("anchor (reader loop)"), [&] { g_sink = anchor(bytes); });

        Item *document = nullptr;
        {
            Parser parser;
            measure(QStringLiteral("load"), [&] {
                parser.parse(bytes);
                document = parser.takeRoot();
            });
        }

        measure(QStringLiteral("save"), [&] { g_sink = save(document).size(); });
        for (int which = 0; which < 5; ++which)
            measure(QLatin1String(generatorNames[which]), [&] { g_sink = generate(which, document).size(); });

        // The model takes the tree over and deletes it with itself.
        QUndoStack stack;
        auto model = std::make_unique<EditorModel>();
        model->setUndoStack(&stack);
        const Sample setTags = measure(QStringLiteral("setTags"), [&] { model->setTags(document); });
        const Sample firstPaint = measure(QStringLiteral("first paint"), [&] { g_sink = paint(*model); });

        const QModelIndex code = model->index(0, 1);
        const QString oldText = model->data(code, Qt::EditRole).toString();
        const QString newText = editedCode(*model);
        bool changed = false;
        const Sample edit = measure(QStringLiteral("edit (setData)"), [&] { changed = model->setData(code, newText); });
        const Sample repaint = measure(QStringLiteral("repaint"), [&] { g_sink = paint(*model); });
        const QString editedText = model->data(code, Qt::EditRole).toString();
        const Sample undo = measure(QStringLiteral("undo"), [&] { stack.undo(); });
        if (!changed || stack.count() != 1 || editedText != newText
            || model->data(code, Qt::EditRole).toString() != oldText) {
            std::fprintf(stderr, "zatbench: the edit of row 0 did not take effect and undo\n");
            return false;
        }
        if (r >= 0) {
            samples[QStringLiteral("setTags + first paint")].append(
                Sample { setTags.cpu + firstPaint.cpu, setTags.wall + firstPaint.wall });
            samples[QStringLiteral("edit + repaint + undo")].append(
                Sample { edit.cpu + repaint.cpu + undo.cpu, edit.wall + repaint.wall + undo.wall });
        }
    }
    for (auto it = samples.cbegin(); it != samples.cend(); ++it)
        record(it.key(), it.value());
    return true;
}

double BenchRunner::value(const QString &row, int tags) const
{
    const qsizetype column = m_sizes.indexOf(tags);
    if (column < 0)
        return -1;
    for (const Row &r : m_rows) {
        if (r.name == row)
            return r.ms.at(column);
    }
    return -1;
}

void BenchRunner::printTable() const
{
    std::printf("\n%-24s", "tags");
    for (int tags : m_sizes)
        std::printf(" %20s", qPrintable(grouped(tags)));
    const bool growth = m_sizes.contains(10000) && m_sizes.contains(100000);
    if (growth)
        std::printf("  %9s", "growth");
    std::printf("\n%-24s", "file MB");
    for (qint64 bytes : m_fileBytes)
        std::printf(" %20.2f", double(bytes) / 1e6);
    std::printf("\n%-24s", "parser warnings");
    for (int warnings : m_warnings)
        std::printf(" %20d", warnings);
    std::printf("\n%-24s", "repetitions");
    for (int tags : m_sizes)
        std::printf(" %20d", repetitions(tags));
    std::printf("\n");

    // Processor time first: the goals are judged on it. Elapsed time follows for comparison;
    // on an idle machine the two agree.
    for (const bool wall : { false, true }) {
        std::printf("\n%-24s", wall ? "wall-clock time" : "processor time");
        for (qsizetype i = 0; i < m_sizes.size(); ++i)
            std::printf(" %11s %8s", "ms", "MB/s");
        if (growth)
            std::printf("  %9s", "100k/10k");
        std::printf("\n");
        for (const Row &row : m_rows) {
            const QList<double> &times = wall ? row.wall : row.ms;
            std::printf("%-24s", qPrintable(row.name));
            for (qsizetype i = 0; i < m_sizes.size(); ++i) {
                const double ms = times.at(i);
                if (ms < 0)
                    std::printf(" %11s %8s", "-", "-");
                else if (row.perByte && ms > 0)
                    std::printf(" %11.3f %8.1f", ms, double(m_fileBytes.at(i)) / 1e6 / (ms / 1e3));
                else
                    std::printf(" %11.3f %8s", ms, "");
            }
            printGrowth(m_sizes, times);
            std::printf("\n");
        }
    }

    std::printf("\n%-24s", "memory of one load");
    for (qsizetype i = 0; i < m_sizes.size(); ++i)
        std::printf(" %20s", "");
    std::printf("\n");
    auto memoryLine = [&](const char *label, auto field) {
        std::printf("%-24s", label);
        for (const Memory &memory : m_memory) {
            if (memory.valid)
                std::printf(" %20s", qPrintable(field(memory)));
            else
                std::printf(" %20s", "failed");
        }
        std::printf("\n");
    };
    memoryLine("  peak added MB",
               [](const Memory &m) { return QString::number(double(m.addedKiB()) * 1024 / 1e6, 'f', 1); });
    memoryLine("  peak added / file", [](const Memory &m) {
        return QString::number(double(m.addedKiB()) * 1024 / double(m.fileBytes), 'f', 2);
    });
    memoryLine("  kept by the tree MB", [](const Memory &m) {
        return QString::number(double(m.residentAfterKiB - m.residentBeforeKiB) * 1024 / 1e6, 'f', 1);
    });
    memoryLine("  peak reset first",
               [](const Memory &m) { return m.peakReset ? QStringLiteral("yes") : QStringLiteral("no"); });
    std::fflush(stdout);
}

void BenchRunner::printGoals() const
{
    // The ratios of one size are taken at 100,000 tags; a quick run takes them at its largest
    // size and says so, and skips what needs sizes it did not run.
    const int large = m_sizes.contains(100000) ? 100000 : m_sizes.last();
    const bool full = large == 100000;
    std::printf("\n");
    if (!full)
        std::printf("# quick run: ratios at %s tags instead of 100,000; goals that need 100,000 tags are skipped\n",
                    qPrintable(grouped(large)));
    auto goal = [](const QString &name, double measured, double target) {
        if (measured < 0) {
            std::printf("GOAL %s - %g SKIPPED\n", qPrintable(name), target);
            return;
        }
        std::printf("GOAL %s %.3f %g %s\n", qPrintable(name), measured, target, measured <= target ? "PASS" : "FAIL");
    };
    auto ratio = [](double a, double b) { return a >= 0 && b > 0 ? a / b : -1.0; };

    const double load = value(QStringLiteral("load"), large);
    goal(QStringLiteral("load_vs_anchor"), ratio(load, value(QStringLiteral("anchor (reader loop)"), large)), 1.5);
    goal(QStringLiteral("save_vs_load"), ratio(value(QStringLiteral("save"), large), load), 0.5);
    for (const char *name : generatorNames)
        goal(QStringLiteral("generator_vs_load:") + QLatin1String(name),
             ratio(value(QLatin1String(name), large), load),
             0.25);

    QStringList grown = { QStringLiteral("load"), QStringLiteral("save") };
    for (const char *name : generatorNames)
        grown.append(QLatin1String(name));
    for (const QString &name : grown) {
        const double measured = full ? ratio(value(name, 100000), value(name, 10000)) : -1;
        goal(QStringLiteral("growth:") + name, measured, growthGoal);
    }

    const QString editRow = QStringLiteral("edit + repaint + undo");
    goal(QStringLiteral("edit_repaint_growth"),
         full ? ratio(value(editRow, 100000), value(editRow, 1000)) : -1,
         editGrowthGoal);
    goal(QStringLiteral("first_paint_vs_load"),
         ratio(value(QStringLiteral("setTags + first paint"), large), load),
         0.05);

    const Memory &memory = m_memory.at(m_sizes.indexOf(large));
    goal(QStringLiteral("memory"), memory.valid ? double(memory.addedKiB()) * 1024 / double(memory.fileBytes) : -1, 4);
    std::fflush(stdout);
}

QStringList BenchRunner::profileOperations()
{
    return { QStringLiteral("anchor"), QStringLiteral("load"), QStringLiteral("save"), QStringLiteral("header"),
             QStringLiteral("lua"),    QStringLiteral("cpp"),  QStringLiteral("cs"),   QStringLiteral("cpplut"),
             QStringLiteral("paint"),  QStringLiteral("edit") };
}

int BenchRunner::profile(const QString &operation, int tags)
{
    const QByteArray bytes = Synthesizer::definitions(tags);
    const int generator = QStringList { QStringLiteral("header"),
                                        QStringLiteral("lua"),
                                        QStringLiteral("cpp"),
                                        QStringLiteral("cs"),
                                        QStringLiteral("cpplut") }
                              .indexOf(operation);
    if (operation == QLatin1String("anchor")) {
        zatbench_profiled([&] { g_sink = anchor(bytes); });
    } else if (operation == QLatin1String("load")) {
        Item *root = nullptr;
        zatbench_profiled([&] { root = load(bytes); });
        delete root;
    } else if (operation == QLatin1String("save")) {
        std::unique_ptr<Item> root(load(bytes));
        zatbench_profiled([&] { g_sink = save(root.get()).size(); });
    } else if (generator >= 0) {
        std::unique_ptr<Item> root(load(bytes));
        zatbench_profiled([&] { g_sink = generate(generator, root.get()).size(); });
    } else if (operation == QLatin1String("paint") || operation == QLatin1String("edit")) {
        QUndoStack stack;
        EditorModel model;
        model.setUndoStack(&stack);
        Item *root = load(bytes);
        if (operation == QLatin1String("paint")) {
            zatbench_profiled([&] {
                model.setTags(root);
                g_sink = paint(model);
            });
        } else {
            model.setTags(root);
            g_sink = paint(model);
            const QModelIndex code = model.index(0, 1);
            const QString newText = editedCode(model);
            zatbench_profiled([&] {
                model.setData(code, newText);
                g_sink = paint(model);
                stack.undo();
            });
        }
    } else {
        std::fprintf(stderr, "zatbench: unknown operation %s\n", qPrintable(operation));
        return 2;
    }
    return 0;
}
