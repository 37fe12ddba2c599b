// libFuzzer target: the definitions parser on arbitrary bytes, a fresh parser per input.

#include "fuzzchecks.h"
#include "fuzztarget.h"

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    FuzzTarget::quietQt();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzTarget::failIf(FuzzChecks::checkLoad(FuzzTarget::input(data, size)));
    return 0;
}
