#pragma once

#include "problems.h"
#include "siblingindex.h"

#include <QHash>
#include <QList>
#include <QModelIndex>
#include <QObject>
#include <QSet>
#include <QVarLengthArray>

namespace ZAT16 {

class EditorModel;

/// The problems of the model's document, as Problems::find() lists them, kept up to date from the
/// model's signals: a change recomputes the problems of the entries it touched, and the list
/// changes only there. An edit in a file of 100,000 tags costs what it touches, not the file.
///
/// The model's signals are collected as they come: the entries whose problems may have changed
/// are remembered, and each parent with a change gets an index of its children's names and codes
/// (SiblingIndex) that follows every change, so that a sibling that gains or loses a collision is
/// known at once. update() then recomputes the remembered entries. The problems of removed rows
/// leave the list at once, so that it never points to an item outside the document. Every
/// change of the list is reported by replaced(), for a view that follows it row by row.
///
/// A new document, and more remembered entries than a rebuild costs, rebuild the whole list.
class ProblemList : public QObject
{
    Q_OBJECT

public:
    explicit ProblemList(EditorModel *model, QObject *parent = nullptr);

    /// The problems as of the last update(), in document order.
    const QList<Problems::Problem> &problems() const { return m_problems; }
    /// Whether changes of the document wait for update().
    bool isStale() const { return m_rebuild || !m_dirty.isEmpty() || !m_unindexed.isEmpty(); }
    /// Brings the list up to date with the document.
    void update();
    /// The place of the first problem at or after `item` in document order (the number of
    /// problems when there is none), in the list as of the last update().
    qsizetype lowerBound(const Item *item) const;

    /// The number of remembered entries above which update() rebuilds the whole list.
    static constexpr qsizetype rebuildThreshold = 4096;

signals:
    /// The problems from `first` on, `removed` of them, were replaced by `inserted` new ones.
    void replaced(int first, int removed, int inserted);
    /// The whole list was made anew.
    void rebuilt();
    /// A change of the document is waiting for update() (emitted for each).
    void changed();

private:
    using Path = QVarLengthArray<int, 8>;

    void invalidate();
    void startAfresh();
    void rebuild();
    void onDataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight, const QList<int> &roles);
    void onRowsInserted(const QModelIndex &parent, int first, int last);
    void onRowsAboutToBeRemoved(const QModelIndex &parent, int first, int last);
    void onRowsRemoved(const QModelIndex &parent, int first, int last);
    void onRowsAboutToBeMoved(
        const QModelIndex &sourceParent, int first, int last, const QModelIndex &destinationParent, int destinationRow);
    void onRowsMoved(
        const QModelIndex &sourceParent, int first, int last, const QModelIndex &destinationParent, int destinationRow);
    // The rows from `first` to `last` of `parent` have arrived: inserted or moved there.
    void takeInserted(const Item *parent, int first, int last);
    // The rows from `first` to `last` of `parent` are about to leave: removed or moved away.
    void takeLeaving(const Item *parent, int first, int last);

    // Remembers `item` for update(); with `subtree`, every item below it too.
    void markDirty(const Item *item, bool subtree);
    void markChanged(const SiblingIndex::Changed &changed);
    // Entries without name and code are described by their row, which an insertion or removal
    // above them changes: those from `from` on are remembered.
    void markRowDescribed(const Item *parent, int from);
    // An entry without name and code, with entries below it.
    static bool isRowDescribed(const Item *item);
    // The index of the children of `parent` that follows the changes, or null when it has none.
    SiblingIndex *index(const Item *parent);
    // Makes the index of `parent` and remembers every child whose collisions the list does not
    // show as they are.
    void indexParent(const Item *parent);
    // Forgets what is remembered of `item` and its subtree, which leaves the document.
    void forget(const Item *item);
    void replace(const Item *item, const QList<Problems::Problem> &problems);

    Path path(const Item *item) const;
    // The end of the problems of `item` and its subtree, from `from` on.
    qsizetype subtreeEnd(const Item *item, qsizetype from) const;

    EditorModel *m_model;
    QList<Problems::Problem> m_problems;
    bool m_rebuild = true;
    QSet<const Item *> m_dirty;
    QSet<const Item *> m_unindexed;
    QSet<const Item *> m_rowDescribed; ///< listed entries that are described by their row
    QHash<const Item *, SiblingIndex> m_indexes;
    QList<const Item *> m_moving; ///< the rows being moved, between the two signals of a move
};

} // namespace ZAT16
