#include "loading/LoadedModules.h"

#include <string>
#include <vector>

#include <psapi.h>

#include "loading/ImportTable.h"
#include "loading/ModuleAccess.h"
#include "machine/Text.h"

namespace orvel::simulation {

namespace {

// ntdll.dll's notification of loaded and unloaded DLLs, which Windows documents and mingw-w64 does not declare.
constexpr ULONG dllLoaded = 1;
struct DllNotification {
    ULONG flags;
    const void* fullName;
    const void* baseName;
    void* base;
    ULONG size;
};
using DllNotificationFunction = void CALLBACK(ULONG reason, const DllNotification* data, void* context);
using RegisterFunction = LONG NTAPI(ULONG flags, DllNotificationFunction* function, void* context, void** cookie);
using UnregisterFunction = LONG NTAPI(void* cookie);

struct Lead {
    FARPROC from = nullptr;
    FARPROC to = nullptr;
    void* cookie = nullptr;
    std::wstring systemFolder = {};
};

/// Never destroyed: DLLs may be loaded while the process ends.
Lead& lead = *new Lead;

template <typename Function>
Function* NtFunction(const char* name)
{
    return FunctionIn<Function>(GetModuleHandleW(L"ntdll.dll"), name);
}

/// Windows' own modules and this one must reach the computer's own functions.
bool KeepsItsImports(HMODULE module)
{
    return module == OwnModule() || FoldCase(PathOf(module)).starts_with(lead.systemFolder);
}

void ReplaceInAllModules(FARPROC from, FARPROC to)
{
    std::vector<HMODULE> modules(256);
    DWORD bytes = 0;
    const auto size = [&modules] { return static_cast<DWORD>(modules.size() * sizeof(HMODULE)); };
    while (K32EnumProcessModules(GetCurrentProcess(), modules.data(), size(), &bytes) && bytes > size()) {
        modules.resize(bytes / sizeof(HMODULE) + 16);
    }
    modules.resize(bytes / sizeof(HMODULE));
    for (const HMODULE module : modules) {
        if (!KeepsItsImports(module)) {
            ReplaceImported(module, from, to);
        }
    }
}

/// The loader's lock is held here; the DLL's imports are bound, and its code has not run yet.
void CALLBACK OnDll(ULONG reason, const DllNotification* dll, void*)
{
    const auto module = static_cast<HMODULE>(dll->base);
    if (reason == dllLoaded && !KeepsItsImports(module)) {
        ReplaceImported(module, lead.from, lead.to);
    }
}

} // namespace

void LeadImports(FARPROC from, FARPROC to)
{
    lead.from = from;
    lead.to = to;
    lead.systemFolder = FoldCase(SystemFolder());
    if (const auto notify = NtFunction<RegisterFunction>("LdrRegisterDllNotification"); notify && !lead.cookie) {
        notify(0, OnDll, nullptr, &lead.cookie);
    }
    ReplaceInAllModules(from, to);
}

void RestoreImports()
{
    if (const auto end = NtFunction<UnregisterFunction>("LdrUnregisterDllNotification"); end && lead.cookie) {
        end(lead.cookie);
    }
    lead.cookie = nullptr;
    if (lead.from) {
        ReplaceInAllModules(lead.to, lead.from);
    }
    lead.from = nullptr;
}

} // namespace orvel::simulation
