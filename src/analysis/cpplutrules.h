#pragma once

#include "outputrules.h"

namespace ZAT16 {

/// The rules of the C++ lookup-table header: one table per list, named after the tag, each
/// written once and every one that tagLookup names written; values held in a long long.
class CppLutRules : public OutputRules
{
public:
    CppLutRules(const TagListing &listing, QList<Found> *found);
    void run() override;
};

} // namespace ZAT16
