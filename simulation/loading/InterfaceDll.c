/* The code of every simulated interface DLL. The DLL's exports are forwarders (see exports/) to orvel-simulation.dll, which
 * contains the simulation. This function only reports that the DLL is loaded or unloaded. */
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
