#pragma once

#include <QString>
#include <QStringList>

/// `zatbench --instructions`: the instructions (callgrind's Ir) that one run of an operation
/// executes at 10,000 and at 100,000 tags, each counted in a child process
/// `valgrind --tool=callgrind --instr-atstart=no zatbench --profile OPERATION TAGS`. Time on a
/// shared machine also grows with the processor's caches, which a file ten times larger
/// overflows; the count of instructions tells the growth of the work itself. Prints a table and
/// one GOAL line an operation, against the growth goal of its time.
class InstructionCounts
{
public:
    /// The operations with a growth goal: the model section's load, save, generators and edit;
    /// of the window's, rename, insert and paste with the Problems dock shown (the undo, redo,
    /// delete and cut that follow them can be named), both find next and expand all.
    static QStringList defaultOperations();
    /// The growth that the time of `operation` may show from 10,000 to 100,000 tags.
    static double growthGoal(const QString &operation);

    /// Counts `operations` (the default ones when empty) with `program` (zatbench); 1 when
    /// valgrind is missing or a run fails, 0 otherwise (also when a run was given up as too slow,
    /// or a goal fails).
    static int run(const QString &program, const QStringList &operations);

private:
    /// The instructions of `operation` at `tags` tags, with callgrind's output and the child's
    /// temporary files in `folder`; -1 on failure, with the reason in `error`.
    static qint64 count(
        const QString &program, const QString &operation, int tags, const QString &folder, QString *error);
};
