// libFuzzer target: Numbers::to32/to64 (every overload), atoi and cton against an independent
// computation of the same rules.

#include "fuzzchecks.h"
#include "fuzztarget.h"

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    FuzzTarget::quietQt();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzTarget::failIf(FuzzChecks::checkNumbers(FuzzTarget::input(data, size)));
    return 0;
}
