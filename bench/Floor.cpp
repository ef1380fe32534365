#include "Floor.h"

#include "FloorSystem.h"

namespace orvel::bench {

void PrepareFloor()
{
    PrepareSystemFloor();
    PrepareNvidiaFloor();
}

void RunFloor()
{
    RunIntelFloor();
    RunNvidiaFloor();
    RunAmdFloor();
}

} // namespace orvel::bench
