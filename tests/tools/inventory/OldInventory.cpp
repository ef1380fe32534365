// An inventory library of an earlier release. Only its version is queried.

#include "OrvelInventory.h"

uint32_t OrvelInventoryVersion(void)
{
    return 900; // 0.9.0
}
