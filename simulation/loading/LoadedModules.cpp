#include "loading/LoadedModules.h"

#include <string>
#include <vector>

#include <psapi.h>

#include "loading/ImportTable.h"
#include "machine/Text.h"

namespace orvel::simulation {

namespace {

constexpr DWORD PathLength = 4096; // characters

// What ntdll.dll reports of a DLL that comes or goes, as Windows documents it; no header of mingw-w64 declares it.
constexpr ULONG DllLoaded = 1;
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
Lead& TheLead()
{
    static auto* const lead = new Lead;
    return *lead;
}

template <typename Function>
Function* NtFunction(const char* name)
{
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
}

std::wstring SystemFolder()
{
    std::wstring folder(PathLength, L'\0');
    folder.resize(GetSystemDirectoryW(folder.data(), PathLength));
    return FoldCase(folder);
}

/// Windows' own modules, and this one, keep their way to the computer.
bool KeepsItsImports(HMODULE module)
{
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&TheLead), &self);
    std::wstring path(PathLength, L'\0');
    path.resize(GetModuleFileNameW(module, path.data(), PathLength));
    return module == self || FoldCase(path).starts_with(TheLead().systemFolder);
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
    if (reason == DllLoaded && !KeepsItsImports(module)) {
        ReplaceImported(module, TheLead().from, TheLead().to);
    }
}

} // namespace

void LeadImports(FARPROC from, FARPROC to)
{
    Lead& lead = TheLead();
    lead.from = from;
    lead.to = to;
    lead.systemFolder = SystemFolder();
    if (const auto notify = NtFunction<RegisterFunction>("LdrRegisterDllNotification"); notify && !lead.cookie) {
        notify(0, OnDll, nullptr, &lead.cookie);
    }
    ReplaceInAllModules(from, to);
}

void RestoreImports()
{
    Lead& lead = TheLead();
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
