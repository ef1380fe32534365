#include "Floor.h"

#include "FloorSystem.h"
#include "FloorWmi.h"

namespace orvel::bench {

void PrepareFloor()
{
    PrepareSystemFloor();
    PrepareNvidiaFloor();
}

void RunFloor()
{
    FloorWmi wmi;
    RunIntelFloor(wmi);
    RunNvidiaFloor(wmi);
    RunAmdFloor(wmi);
}

} // namespace orvel::bench
