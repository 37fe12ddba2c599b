#pragma once

#include "benchrunner.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

class QTemporaryDir;
class WindowDriver;

/// The window section of zatbench: a real editor window (WindowDriver) on the synthetic files,
/// offscreen. For each size, rounds on a fresh window: open, F8, the edits with the Problems dock
/// shown and hidden, find next, expand and collapse all, the five viewers, save, reload, Clear
/// all and its undo; each action timed until the window shows its result. An action is repeated
/// in every round until its runs add up to the time budget, so that the slow ones of a large
/// file run once. Then the table, the peak memory of a process with the file open (in a child
/// process) and one GOAL line per goal.
class WindowBench
{
public:
    explicit WindowBench(const QList<int> &sizes);
    ~WindowBench();

    /// Measures every size and prints the table and the goals; false when an action did not do
    /// what it should (the figures would mean nothing).
    bool run();

    /// The child process of the memory measurement: opens `tags` tags in a window, shows it and
    /// prints one "MEMORY ..." line as BenchRunner::memoryChild() does.
    static int memoryChild(int tags);
    /// Runs the round on a window of `tags` tags up to `operation` (one of profileOperations()),
    /// which runs inside zatbench_profiled(); only what it needs runs before it.
    static int profile(const QString &operation, int tags);
    /// "window-" and the key of each action.
    static QStringList profileOperations();

    /// How much more an action may take at 100,000 tags than at 10,000.
    static constexpr double growthGoal = 12;

private:
    /// Settings, recovery files and the definitions files go to a fresh folder, so that the
    /// user's own settings neither change nor change what is measured.
    static std::unique_ptr<QTemporaryDir> isolate();
    /// Writes the synthetic file of `tags` tags into `folder` and returns its path, empty on
    /// failure; `bytes` receives what it holds.
    static QString writeFile(const QTemporaryDir &folder, int tags, QByteArray *bytes);

    bool measureSize(int column);
    /// One round on a fresh window at the size of `column`; a warm-up round (`record` false)
    /// keeps nothing. False when the window failed a check.
    bool round(int column, bool record);
    /// Whether the actions of `group` run in this round: within the time budget when measuring,
    /// only the profiled one's group when profiling.
    bool due(int column, const QByteArray &group) const;
    void step(int column, bool record, const QByteArray &key, const std::function<void()> &operation);

    void printTable() const;
    void printGoals() const;
    double value(const QByteArray &key, int tags) const;

    QList<int> m_sizes;
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path; ///< the file of the size being measured
    QByteArray m_bytes; ///< what it holds
    QList<qint64> m_fileBytes;
    QList<BenchRunner::Memory> m_memory;
    QList<QHash<QByteArray, QList<BenchRunner::Sample>>> m_samples; ///< per size, per action key
    QByteArray m_target; ///< the key of the profiled action; empty when measuring
    bool m_profiled = false;
};
