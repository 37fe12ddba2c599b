#pragma once

#include "outputrules.h"

namespace ZAT16 {

/// The rules of the C# file: enumerations of int at the top level of the file, each written
/// once, with members named as C# allows.
class CsRules : public OutputRules
{
public:
    CsRules(const TagListing &listing, QList<Found> *found);
    void run() override;
};

} // namespace ZAT16
