// An inventory library of another release, of which only the version is asked.

#include "OrvelInventory.h"

uint32_t OrvelInventoryVersion(void)
{
    return 900; // 0.9.0
}
