#pragma once

#include "outputrules.h"

namespace ZAT16 {

/// The rules of the C header: its macros share one name space, and a macro defined again with
/// another text is an error of a standard C compiler; values are read as C reads them.
class HeaderRules : public OutputRules
{
public:
    HeaderRules(const TagListing &listing, QList<Found> *found);
    void run() override;
};

} // namespace ZAT16
