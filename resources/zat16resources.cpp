#include "zat16resources.h"

#include <QtGlobal>

void zat16InitResources()
{
    // Q_INIT_RESOURCE must be used outside any namespace
    Q_INIT_RESOURCE(zatedit);
}
