#include "outputproblems.h"

#include "cpplutrules.h"
#include "cpprules.h"
#include "csrules.h"
#include "headerrules.h"
#include "item.h"
#include "luarules.h"
#include "problems.h"
#include "taglisting.h"

#include <algorithm>
#include <memory>
#include <tuple>

namespace ZAT16 {

namespace {

const char *const outputNames[Outputs::KindCount] = {
    "the C header", "the Lua script", "the C++ enums header", "the C++ lookup-table header", "the C# file",
};

// The rules of each output, in the order of Outputs::Kind.
template<typename R>
std::unique_ptr<OutputRules> create(const TagListing &listing, QList<OutputRules::Found> *found)
{
    return std::make_unique<R>(listing, found);
}

using RulesFactory = std::unique_ptr<OutputRules> (*)(const TagListing &, QList<OutputRules::Found> *);
const RulesFactory rulesOf[Outputs::KindCount] = {
    create<HeaderRules>, create<LuaRules>, create<CppRules>, create<CppLutRules>, create<CsRules>,
};

} // namespace

QList<OutputProblems::Problem> OutputProblems::find(const Item *root, OutputSet outputs)
{
    QList<Problem> problems;
    if (!root)
        return problems;
    const TagListing listing(root);
    QList<OutputRules::Found> found;
    for (int kind = 0; kind < Outputs::KindCount; ++kind) {
        if (outputs & (1u << kind))
            rulesOf[kind](listing, &found)->run();
    }

    // Document order: by the rows of the tag, the list and the entry; on one entry by output.
    struct Place {
        int tag = -1;
        int list = -1;
        int entry = -1;
        bool operator<(const Place &o) const { return std::tie(tag, list, entry) < std::tie(o.tag, o.list, o.entry); }
    };
    auto place = [](const Item *item) {
        Place p;
        if (item->type == Tag) {
            p.tag = item->row();
        } else if (item->parent && item->parent->parent) {
            p.entry = item->row();
            p.list = item->parent->row();
            p.tag = item->parent->parent->row();
        }
        return p;
    };
    QList<std::pair<Place, int>> order;
    order.reserve(found.size());
    for (int i = 0; i < found.size(); ++i)
        order.append({ place(found.at(i).item), i });
    std::stable_sort(order.begin(), order.end(), [&found](const auto &a, const auto &b) {
        if (a.first < b.first)
            return true;
        if (b.first < a.first)
            return false;
        return found.at(a.second).output < found.at(b.second).output;
    });
    problems.reserve(order.size());
    for (const auto &[where, index] : order) {
        const OutputRules::Found &f = found.at(index);
        problems.append(
            { f.item,
              f.output,
              Problems::describe(f.item) + QStringLiteral(": ") + outputName(f.output) + QLatin1Char(' ') + f.clause });
    }
    return problems;
}

QString OutputProblems::outputName(Outputs::Kind kind)
{
    return QLatin1String(outputNames[kind]);
}

} // namespace ZAT16
