#pragma once

#include "outputrules.h"

namespace ZAT16 {

/// The rules of the Lua script: a key or a whole table written again replaces what was there;
/// keys are names, or for a nameless enumeration value its comment in a string; numbers are read as
/// Lua reads them, and bit masks are signed 32-bit numbers.
class LuaRules : public OutputRules
{
public:
    LuaRules(const TagListing &listing, QList<Found> *found);
    void run() override;
};

} // namespace ZAT16
