#include "problemlist.h"

#include "editormodel.h"
#include "item.h"
#include "marks.h"

#include <algorithm>
#include <utility>

namespace ZAT16 {

namespace {

// The collision kinds of a problem, as bits.
int collisionBit(Problems::Kind kind)
{
    switch (kind) {
    case Problems::NameCollision:
        return 1;
    case Problems::CodeCollision:
        return 2;
    default:
        return 0;
    }
}

int collisionBits(Item::CollisionFlags flags)
{
    return (flags.testFlag(Item::NameCollision) ? 1 : 0) | (flags.testFlag(Item::IdCollision) ? 2 : 0);
}

// The child lists of `root` (itself included) with more than a few hundred entries.
QList<const Item *> longLists(const Item *root)
{
    constexpr qsizetype longList = 256;
    QList<const Item *> lists;
    if (!root)
        return lists;
    QList<const Item *> stack { root };
    while (!stack.isEmpty()) {
        const Item *item = stack.takeLast();
        if (item->children.size() > longList)
            lists.append(item);
        for (const Item *child : item->children) {
            if (!child->children.isEmpty())
                stack.append(child);
        }
    }
    return lists;
}

bool within(const Item *item, const Item *top)
{
    for (const Item *at = item; at; at = at->parent) {
        if (at == top)
            return true;
    }
    return false;
}

bool sameProblems(const QList<Problems::Problem> &a, qsizetype from, qsizetype count, const QList<Problems::Problem> &b)
{
    if (count != b.size())
        return false;
    for (qsizetype i = 0; i < count; ++i) {
        const Problems::Problem &p = a.at(from + i);
        if (p.kind != b.at(i).kind || p.message != b.at(i).message)
            return false;
    }
    return true;
}

} // namespace

ProblemList::ProblemList(EditorModel *model, QObject *parent)
    : QObject(parent)
    , m_model(model)
{
    connect(m_model, &QAbstractItemModel::dataChanged, this, &ProblemList::onDataChanged);
    connect(m_model, &QAbstractItemModel::rowsInserted, this, &ProblemList::onRowsInserted);
    connect(m_model, &QAbstractItemModel::rowsAboutToBeRemoved, this, &ProblemList::onRowsAboutToBeRemoved);
    connect(m_model, &QAbstractItemModel::rowsRemoved, this, &ProblemList::onRowsRemoved);
    connect(m_model, &QAbstractItemModel::rowsAboutToBeMoved, this, &ProblemList::onRowsAboutToBeMoved);
    connect(m_model, &QAbstractItemModel::rowsMoved, this, &ProblemList::onRowsMoved);
    // A new document starts the list afresh; so would a new layout, which the model does not
    // make today.
    connect(m_model, &QAbstractItemModel::modelReset, this, &ProblemList::startAfresh);
    connect(m_model, &QAbstractItemModel::layoutChanged, this, &ProblemList::startAfresh);
}

void ProblemList::startAfresh()
{
    invalidate();
    emit changed();
}

void ProblemList::invalidate()
{
    m_rebuild = true;
    m_rowDescribed.clear();
    m_dirty.clear();
    m_unindexed.clear();
    m_indexes.clear();
}

void ProblemList::rebuild()
{
    invalidate();
    const Item *root = m_model->root();
    m_problems = Problems::find(root);
    for (const Problems::Problem &problem : std::as_const(m_problems)) {
        if (isRowDescribed(problem.item))
            m_rowDescribed.insert(problem.item);
    }
    // Long lists get their index now, while the list shows their collisions as they are: made
    // after a change, an index has to be compared with the list, which takes as long as the
    // list. Short lists get theirs when they change.
    for (const Item *parent : longLists(root))
        m_indexes.insert(parent, SiblingIndex(parent));
    m_rebuild = false;
    emit rebuilt();
}

void ProblemList::update()
{
    if (m_rebuild) {
        rebuild();
        return;
    }
    // Each remembered entry needs the index of its parent to tell its collisions.
    for (const Item *item : std::as_const(m_dirty)) {
        if (item->parent && !m_indexes.contains(item->parent))
            m_unindexed.insert(item->parent);
    }
    const QSet<const Item *> unindexed = std::exchange(m_unindexed, {});
    for (const Item *parent : unindexed)
        indexParent(parent);
    if (m_rebuild) {
        rebuild();
        return;
    }
    const QSet<const Item *> dirty = std::exchange(m_dirty, {});
    for (const Item *item : dirty) {
        const SiblingIndex *counts = m_indexes.contains(item->parent) ? &m_indexes[item->parent] : nullptr;
        replace(item, Problems::ofEntry(item, counts ? counts->collision(item) : item->findCollision()));
    }
}

void ProblemList::onDataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight, const QList<int> &roles)
{
    // New colours alone (the output marks) change no problem.
    if (!roles.isEmpty() && !roles.contains(Qt::DisplayRole) && !roles.contains(Qt::EditRole))
        return;
    if (!m_rebuild) {
        const Item *first = m_model->index2item(topLeft);
        const Item *parent = first ? first->parent : nullptr;
        // A change that names no rows of one list (the whole tree repainted after a font change)
        // is taken as a change of everything.
        if (!topLeft.isValid() || !parent || parent->children.value(topLeft.row()) != first
            || bottomRight.row() - topLeft.row() >= rebuildThreshold) {
            invalidate();
        } else {
            const int last = qMin(bottomRight.row(), int(parent->children.size()) - 1);
            SiblingIndex *counts = index(parent);
            if (counts && counts->size() != parent->children.size()) {
                m_indexes.remove(parent);
                counts = nullptr;
            }
            for (int row = topLeft.row(); row <= last; ++row) {
                const Item *item = parent->children.at(row);
                if (counts) {
                    SiblingIndex::Changed changed;
                    counts->update(row, item, &changed);
                    markChanged(changed);
                }
                // A tag's name and code are part of the descriptions of the entries below it, and
                // the entries below an item show their codes in its display mode unless they have
                // one of their own.
                markDirty(item, !item->children.isEmpty());
            }
            if (!counts)
                m_unindexed.insert(parent);
        }
    }
    emit changed();
}

void ProblemList::onRowsInserted(const QModelIndex &parentIndex, int first, int last)
{
    if (!m_rebuild)
        takeInserted(m_model->index2item(parentIndex), first, last);
    emit changed();
}

void ProblemList::takeInserted(const Item *parent, int first, int last)
{
    SiblingIndex *counts = index(parent);
    if (counts && counts->size() != parent->children.size() - (last - first + 1)) {
        m_indexes.remove(parent);
        counts = nullptr;
    }
    for (int row = first; row <= last; ++row) {
        const Item *item = parent->children.at(row);
        if (counts) {
            SiblingIndex::Changed changed;
            counts->insert(row, item, &changed);
            markChanged(changed);
        }
        markDirty(item, true);
    }
    if (!counts)
        m_unindexed.insert(parent);
    // A first child makes an entry without name or code an incomplete parent.
    markDirty(parent, false);
    markRowDescribed(parent, last + 1);
}

void ProblemList::onRowsAboutToBeRemoved(const QModelIndex &parentIndex, int first, int last)
{
    if (!m_rebuild)
        takeLeaving(m_model->index2item(parentIndex), first, last);
}

// The rows are still there: their problems leave the list now, while their places in the
// document still say where in the list they are.
void ProblemList::takeLeaving(const Item *parent, int first, int last)
{
    SiblingIndex *counts = index(parent);
    if (counts && counts->size() != parent->children.size()) {
        m_indexes.remove(parent);
        counts = nullptr;
    }
    for (int row = last; row >= first; --row) {
        const Item *item = parent->children.at(row);
        SiblingIndex::Changed changed;
        if (counts)
            counts->remove(row, item, &changed);
        forget(item);
        markChanged(changed);
        const qsizetype from = lowerBound(item);
        const qsizetype to = subtreeEnd(item, from);
        if (to > from) {
            m_problems.remove(from, to - from);
            emit replaced(int(from), int(to - from), 0);
        }
    }
    if (!counts)
        m_unindexed.insert(parent);
}

void ProblemList::onRowsRemoved(const QModelIndex &parentIndex, int first, int last)
{
    Q_UNUSED(last)
    if (!m_rebuild) {
        const Item *parent = m_model->index2item(parentIndex);
        // A last child leaves an entry without name or code complete again.
        markDirty(parent, false);
        markRowDescribed(parent, first);
    }
    emit changed();
}

// A moved entry leaves its list as a removed one does, and arrives as an inserted one: its
// problems and those of its subtree are taken out of the list now and computed again at its new
// place, which may be in another list.
void ProblemList::onRowsAboutToBeMoved(
    const QModelIndex &sourceParent, int first, int last, const QModelIndex &destinationParent, int destinationRow)
{
    Q_UNUSED(destinationParent)
    Q_UNUSED(destinationRow)
    m_moving.clear();
    if (m_rebuild)
        return;
    const Item *parent = m_model->index2item(sourceParent);
    for (int row = first; row <= last; ++row)
        m_moving.append(parent->children.at(row));
    takeLeaving(parent, first, last);
}

void ProblemList::onRowsMoved(
    const QModelIndex &sourceParent, int first, int last, const QModelIndex &destinationParent, int destinationRow)
{
    Q_UNUSED(last)
    Q_UNUSED(destinationRow)
    const QList<const Item *> moved = std::exchange(m_moving, {});
    if (!m_rebuild && !moved.isEmpty()) {
        const Item *to = m_model->index2item(destinationParent);
        const int at = moved.first()->row();
        takeInserted(to, at, at + int(moved.size()) - 1);
        // The list the rows left: a last child leaves an entry without name or code complete
        // again, and the entries described by their rows below the old place move up.
        const Item *from = m_model->index2item(sourceParent);
        markDirty(from, false);
        markRowDescribed(from, first);
    }
    emit changed();
}

void ProblemList::markDirty(const Item *item, bool subtree)
{
    if (m_rebuild || !item || item == m_model->root())
        return;
    m_dirty.insert(item);
    if (subtree) {
        QList<const Item *> stack(item->children.cbegin(), item->children.cend());
        while (!stack.isEmpty()) {
            const Item *below = stack.takeLast();
            m_dirty.insert(below);
            for (const Item *child : below->children)
                stack.append(child);
        }
    }
    if (m_dirty.size() > rebuildThreshold)
        invalidate();
}

void ProblemList::markChanged(const SiblingIndex::Changed &changed)
{
    for (const Item *sibling : changed)
        markDirty(sibling, false);
}

// Such an entry has problems only when it has entries below it (it is an incomplete parent), so
// it is in the list, and the entries below it are described through it. Those listed are known
// (m_rowDescribed); one that is not listed yet is remembered already.
void ProblemList::markRowDescribed(const Item *parent, int from)
{
    QList<const Item *> below;
    for (const Item *item : std::as_const(m_rowDescribed)) {
        if (item->parent == parent && item->row() >= from)
            below.append(item);
    }
    for (const Item *item : std::as_const(below))
        markDirty(item, item->type == Tag);
}

bool ProblemList::isRowDescribed(const Item *item)
{
    return item->name.isEmpty() && !item->hasId && !item->children.isEmpty() && Marks::isEntry(item);
}

SiblingIndex *ProblemList::index(const Item *parent)
{
    const auto it = m_indexes.find(parent);
    return it == m_indexes.end() ? nullptr : &it.value();
}

void ProblemList::indexParent(const Item *parent)
{
    const SiblingIndex &counts = m_indexes.insert(parent, SiblingIndex(parent)).value();
    // The collisions of the children as the list shows them...
    QHash<const Item *, int> shown;
    const bool top = parent == m_model->root();
    const qsizetype from = top ? 0 : lowerBound(parent);
    const qsizetype to = top ? m_problems.size() : subtreeEnd(parent, from);
    for (qsizetype i = from; i < to; ++i) {
        const Problems::Problem &problem = m_problems.at(i);
        if (problem.item->parent == parent && collisionBit(problem.kind))
            shown[problem.item] |= collisionBit(problem.kind);
    }
    // ...and as they are.
    for (const Item *child : parent->children) {
        if (Marks::isEntry(child) && collisionBits(counts.collision(child)) != shown.value(child))
            markDirty(child, false);
    }
}

void ProblemList::forget(const Item *item)
{
    if (m_dirty.isEmpty() && m_unindexed.isEmpty() && m_indexes.isEmpty() && m_rowDescribed.isEmpty())
        return;
    QList<const Item *> stack { item };
    while (!stack.isEmpty()) {
        const Item *at = stack.takeLast();
        m_dirty.remove(at);
        m_rowDescribed.remove(at);
        m_unindexed.remove(at);
        m_indexes.remove(at);
        for (const Item *child : at->children)
            stack.append(child);
    }
}

void ProblemList::replace(const Item *item, const QList<Problems::Problem> &problems)
{
    const qsizetype from = lowerBound(item);
    qsizetype to = from;
    while (to < m_problems.size() && m_problems.at(to).item == item)
        ++to;
    const qsizetype removed = to - from;
    if (!problems.isEmpty() && isRowDescribed(item))
        m_rowDescribed.insert(item);
    else
        m_rowDescribed.remove(item);
    if (sameProblems(m_problems, from, removed, problems))
        return;
    m_problems.remove(from, removed);
    m_problems.insert(from, problems.size(), Problems::Problem());
    std::copy(problems.cbegin(), problems.cend(), m_problems.begin() + from);
    emit replaced(int(from), int(removed), int(problems.size()));
}

ProblemList::Path ProblemList::path(const Item *item) const
{
    Path rows;
    for (const Item *at = item; at && at->parent; at = at->parent)
        rows.append(at->row());
    std::reverse(rows.begin(), rows.end());
    return rows;
}

qsizetype ProblemList::lowerBound(const Item *item) const
{
    const Path here = path(item);
    const auto at = std::partition_point(m_problems.cbegin(), m_problems.cend(), [&](const Problems::Problem &p) {
        const Path there = path(p.item);
        return std::lexicographical_compare(there.cbegin(), there.cend(), here.cbegin(), here.cend());
    });
    return at - m_problems.cbegin();
}

qsizetype ProblemList::subtreeEnd(const Item *item, qsizetype from) const
{
    const auto at = std::partition_point(m_problems.cbegin() + from,
                                         m_problems.cend(),
                                         [&](const Problems::Problem &p) { return within(p.item, item); });
    return at - m_problems.cbegin();
}

} // namespace ZAT16
