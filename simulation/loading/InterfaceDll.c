/* The whole body of every simulated interface DLL. Its exports are forwarders (see exports/), so the simulation itself lives
 * once, in orvel-simulation.dll; this part only reports that the DLL comes and goes. */
#include <windows.h>

__declspec(dllimport) BOOL SimulationAttach(HMODULE module);
__declspec(dllimport) void SimulationDetach(HMODULE module);

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved)
{
    (void)reserved;
    if (reason == DLL_PROCESS_ATTACH)
        return SimulationAttach(module); /* FALSE: this machine has no such DLL, so loading it fails */
    if (reason == DLL_PROCESS_DETACH)
        SimulationDetach(module);
    return TRUE;
}
