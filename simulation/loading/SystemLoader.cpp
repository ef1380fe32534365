#include "loading/SystemLoader.h"

#include <algorithm>
#include <string>

#include "loading/ModuleSetup.h"
#include "machine/CurrentMachine.h"
#include "machine/Text.h"
#include "trace/Trace.h"

namespace orvel::simulation {

namespace {

/// dxcore.dll has no DLL of its own here: this one has its function.
HMODULE LoadDxCore()
{
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(&LoadDxCore), &self);
    return self;
}

/// Whether the machine has the DLL in another folder than Windows' own.
bool IsOutside(const std::wstring& name)
{
    const auto machine = CurrentMachine();
    const auto& outside = machine->outsideSystemFolder;
    return std::ranges::find(outside, ToUtf8(name)) != outside.end();
}

HMODULE WINAPI Load(LPCWSTR name, HANDLE file, DWORD flags)
{
    const std::wstring folded = name ? FoldCase(name) : L"";
    const bool isDxCore = folded == L"dxcore.dll";
    const auto standing = isDxCore ? CurrentMachine()->dxcore.standing : StandingOf(folded);
    if (flags != LOAD_LIBRARY_SEARCH_SYSTEM32 || !standing || standing == Standing::System) {
        RecordCall("loader LoadLibraryExW " + ToUtf8(folded), {nullptr, flags});
        return LoadLibraryExW(name, file, flags);
    }
    AddToTrace("load " + ToUtf8(folded));
    if (standing == Standing::Missing || IsOutside(folded)) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    return isDxCore ? LoadDxCore() : LoadSimulated(folded);
}

} // namespace

std::vector<Redirection> SystemLoaderRedirections()
{
    return {{AsProcedure(&LoadLibraryExW), AsProcedure(&Load)}};
}

} // namespace orvel::simulation
