#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>

/// Runs `operation` with callgrind's instrumentation switched on (when zatbench was built with the
/// valgrind headers) and is the function that --toggle-collect names: what callgrind counts.
extern "C" void zatbench_profiled(const std::function<void()> &operation);

/// Runs the measurements of zatbench: for each file size the medians of the reader loop, the
/// load, the save, the five generators and the editor steps; the peak memory of a load in a
/// child process; then the table and one GOAL line per goal.
class BenchRunner
{
public:
    /// One run of an operation, in milliseconds.
    struct Sample {
        double cpu; ///< processor time of the thread
        double wall; ///< elapsed time
    };

    /// One measured operation and its median times at each size (negative: not measured).
    struct Row {
        QString name;
        bool perByte; ///< throughput in MB/s is meaningful
        QList<double> ms; ///< processor time
        QList<double> wall; ///< elapsed time
    };

    /// What the memory child process reports for one size.
    struct Memory {
        bool valid = false;
        bool peakReset = false; ///< the peak was reset to the current size before loading
        qint64 fileBytes = 0;
        qint64 peakBeforeKiB = 0;
        qint64 peakAfterKiB = 0;
        qint64 residentBeforeKiB = 0;
        qint64 residentAfterKiB = 0;
        qint64 addedKiB() const { return peakAfterKiB - peakBeforeKiB; }
    };

    /// How much more load, save and each generator may take at 100,000 tags than at 10,000.
    static constexpr double growthGoal = 11;
    /// How much more the edit, repaint and undo may take at 100,000 tags than at 1,000.
    static constexpr double editGrowthGoal = 3;

    explicit BenchRunner(const QList<int> &sizes);

    /// Measures every size and prints the table and the goals; false when the synthetic file
    /// does not load and save back identically (the figures would mean nothing).
    bool run();

    /// The child process of the memory measurement: loads `tags` tags once and prints one
    /// "MEMORY ..." line.
    static int memoryChild(int tags);
    /// Runs one operation once at `tags` tags inside zatbench_profiled(), for callgrind's
    /// --toggle-collect; the preparation runs outside it.
    static int profile(const QString &operation, int tags);
    static QStringList profileOperations();
    /// A field of /proc/self/status in KiB (VmRSS, VmHWM), or -1.
    static qint64 statusKiB(const char *field);
    /// Resets VmHWM to the current resident size (Linux 4.0 and later); false when it cannot.
    static bool resetPeak();
    /// Runs a child process of this program with `arguments`, which prints one "MEMORY ..." line
    /// as memoryChild() does, and reads it.
    static Memory childMemory(const QStringList &arguments);
    /// Processor time of the thread and wall-clock time of one run of `operation`.
    static Sample sample(const std::function<void()> &operation);
    static double median(QList<double> values);
    /// `n` with commas between groups of three digits.
    static QString grouped(qint64 n);
    /// Prints the growth column of a table row: the value at 100,000 tags over the one at 10,000,
    /// when `sizes` has both and they were measured.
    static void printGrowth(const QList<int> &sizes, const QList<double> &values);

private:
    bool measureSize(int column);
    void printTable() const;
    void printGoals() const;
    double value(const QString &row, int tags) const;
    int repetitions(int tags) const;

    QList<int> m_sizes;
    QList<qint64> m_fileBytes;
    QList<int> m_warnings;
    QList<Memory> m_memory;
    QList<Row> m_rows;
};
