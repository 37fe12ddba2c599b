// libFuzzer target: whatever loads goes through the C header, Lua, C++ enums, C# and C++
// lookup-table generators.

#include "fuzzchecks.h"
#include "fuzztarget.h"

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    FuzzTarget::quietQt();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzTarget::failIf(FuzzChecks::checkGenerators(FuzzTarget::input(data, size)));
    return 0;
}
