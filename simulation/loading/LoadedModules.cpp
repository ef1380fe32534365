#include "loading/LoadedModules.h"

#include <algorithm>
#include <mutex>
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
    std::mutex mutex; // of the redirections; never held while the loader is called
    std::vector<Redirection> redirections = {};
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

/// In the order of the loader.
std::vector<HMODULE> LoadedModules()
{
    std::vector<HMODULE> modules(256);
    DWORD bytes = 0;
    const auto size = [&modules] { return static_cast<DWORD>(modules.size() * sizeof(HMODULE)); };
    while (K32EnumProcessModules(GetCurrentProcess(), modules.data(), size(), &bytes) && bytes > size()) {
        modules.resize(bytes / sizeof(HMODULE) + 16);
    }
    modules.resize(bytes / sizeof(HMODULE));
    return modules;
}

void ReplaceInAllModules(const std::vector<Redirection>& redirections)
{
    for (const HMODULE module : LoadedModules()) {
        if (KeepsItsImports(module)) {
            continue;
        }
        for (const auto& [from, to] : redirections) {
            ReplaceImported(module, from, to);
        }
    }
}

std::vector<Redirection> AllRedirections()
{
    const std::scoped_lock lock(lead.mutex);
    return lead.redirections;
}

bool IsOneOf(const std::vector<Redirection>& redirections, const Redirection& one)
{
    return std::ranges::find(redirections, one.from, &Redirection::from) != redirections.end();
}

/// The loader's lock is held here; the DLL's imports are bound, and its code has not run yet.
void CALLBACK OnDll(ULONG reason, const DllNotification* dll, void*)
{
    const auto module = static_cast<HMODULE>(dll->base);
    if (reason != dllLoaded || KeepsItsImports(module)) {
        return;
    }
    for (const auto& [from, to] : AllRedirections()) {
        ReplaceImported(module, from, to);
    }
}

} // namespace

void LeadImports(const std::vector<Redirection>& redirections)
{
    lead.systemFolder = FoldCase(SystemFolder());
    {
        const std::scoped_lock lock(lead.mutex);
        for (const Redirection& each : redirections) {
            if (!IsOneOf(lead.redirections, each)) {
                lead.redirections.push_back(each);
            }
        }
    }
    if (const auto notify = NtFunction<RegisterFunction>("LdrRegisterDllNotification"); notify && !lead.cookie) {
        notify(0, OnDll, nullptr, &lead.cookie);
    }
    ReplaceInAllModules(redirections);
}

void RestoreImports(const std::vector<Redirection>& redirections)
{
    bool isEmpty = false;
    {
        const std::scoped_lock lock(lead.mutex);
        std::erase_if(lead.redirections, [&](const Redirection& each) { return IsOneOf(redirections, each); });
        isEmpty = lead.redirections.empty();
    }
    if (const auto end = NtFunction<UnregisterFunction>("LdrUnregisterDllNotification"); end && lead.cookie && isEmpty) {
        end(lead.cookie);
        lead.cookie = nullptr;
    }
    std::vector<Redirection> back;
    back.reserve(redirections.size());
    for (const auto& [from, to] : redirections) {
        back.push_back({to, from});
    }
    ReplaceInAllModules(back);
}

} // namespace orvel::simulation
