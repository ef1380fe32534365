// Runs the tests of a DLL: test-runner TESTS.dll [ARGUMENTS of the test framework].
//
// The DLLs of the platform have to be simulated before anything that imports them is loaded, so the tests are not in the
// program itself.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <windows.h>

#include <objbase.h>

#include "LoadedSimulation.h"
#include "MachineFiles.h"
#include "platform/Handles.h"

namespace {

int Fail(const char* what)
{
    std::fprintf(stderr, "test-runner: %s (error %lu)\n", what, ::GetLastError());
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        return Fail("no tests named");
    }
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    if (orvel::tools::LoadSimulation() != ERROR_SUCCESS) {
        return Fail("orvel-simulation.dll cannot be loaded");
    }
    std::string problem;
    if (orvel::tools::SimulateMachineText("{}", "empty machine", problem) != ORVEL_SIMULATION_IN_PLACE) {
        return Fail(problem.c_str());
    }
    const char* const first = std::getenv("ORVEL_TEST_FIRST_DLL"); // below the program's folder; in place of one of its name
    if (first && !::LoadLibraryW((orvel::tools::ProgramFolder() / first).c_str())) {
        return Fail("the DLL that the tests want first cannot be loaded");
    }
    const HMODULE tests = ::LoadLibraryA(argv[1]);
    if (!tests) {
        return Fail("the tests cannot be loaded");
    }
    const int status = orvel::shared::enumeration::FindFunction<int (*)(int, char**)>(tests, "RunTests")(argc - 1, argv + 1);
    std::fflush(stdout);
    // Nothing is unloaded, because remaining destructors must not run against unloaded DLLs.
    ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(status));
}
