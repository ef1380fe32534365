// test-runner TESTS.dll [ARGUMENTS of the test framework]: runs the tests of a DLL.
//
// The simulated DLLs must be loaded before anything that imports them, so the tests cannot be linked into this program.

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

/// Otherwise Wine starts its debugger, after which a crashed program may end with success.
LONG WINAPI EndCrashed(EXCEPTION_POINTERS* crash)
{
    std::fprintf(stderr, "test-runner: crashed, exception 0x%08lX at %p\n", crash->ExceptionRecord->ExceptionCode,
                 crash->ExceptionRecord->ExceptionAddress);
    ::TerminateProcess(::GetCurrentProcess(), 3);
    return EXCEPTION_EXECUTE_HANDLER;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        return Fail("no tests named");
    }
    ::SetUnhandledExceptionFilter(&EndCrashed);
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    if (orvel::tools::LoadSimulation() != ERROR_SUCCESS) {
        return Fail("orvel-simulation.dll cannot be loaded");
    }
    std::string problem;
    if (orvel::tools::SimulateMachineText("{}", "empty machine", problem) != ORVEL_SIMULATION_IN_PLACE) {
        return Fail(problem.c_str());
    }
    // Relative to the program's folder. This DLL replaces the one of the same name.
    const char* const first = std::getenv("ORVEL_TEST_FIRST_DLL");
    if (first && !::LoadLibraryW((orvel::tools::ProgramFolder() / first).c_str())) {
        return Fail("the DLL that the tests want first cannot be loaded");
    }
    const HMODULE tests = ::LoadLibraryA(argv[1]);
    if (!tests) {
        return Fail("the tests cannot be loaded");
    }
    const int status = orvel::shared::enumeration::FindFunction<int (*)(int, char**)>(tests, "RunTests")(argc - 1, argv + 1);
    std::fflush(stdout);
    // Ends without unloading, because remaining destructors must not call DLLs that are unloaded.
    ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(status));
}
