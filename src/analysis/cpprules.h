#pragma once

#include "outputrules.h"

namespace ZAT16 {

/// The rules of the C++ enums header: namespaces in ZAT16 that each hold one enum T (so a
/// namespace written twice does not compile), members named as C++20 allows.
class CppRules : public OutputRules
{
public:
    CppRules(const TagListing &listing, QList<Found> *found);
    void run() override;
};

} // namespace ZAT16
