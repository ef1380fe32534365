#include "loading/ModuleSetup.h"

#include <algorithm>
#include <array>
#include <atomic>

#include "drivers/opencl/OpenCl.h"
#include "loading/Export.h"
#include "loading/ExportTable.h"
#include "loading/ImportTable.h"
#include "machine/Text.h"
#include "trace/Violations.h"

// How the simulated DLLs come to be found. A DLL that the process has loaded satisfies every later request for its bare
// name, be it LoadLibrary or another DLL's import. So the DLLs that the machine has are loaded here, by full path, before
// the product asks for them. For those it lacks, this folder is put on the search path in front of the system's: the search
// ends at our DLL, whose SimulationAttach refuses to be loaded, and the computer's own one is not reached.
//
// A machine may leave all of it to that search: then nothing is loaded here, and a DLL leaves the process with the product's
// last reference.
//
// nvml.dll, dxgi.dll and dwmapi.dll are imports of the product. They are always there, also before a machine is in place,
// when a program that is linked against the product starts. In such a program they are bound to the computer's own DLLs by
// the time a machine is put in place, so the product's imports are led to ours.

namespace orvel::simulation {

namespace {

// A loader may count references in 16 bits, so there can be many of them, but not any number.
constexpr int PinCount = 4096;          // more than a run gives back too many
constexpr int PinCountWithGaps = 16384; // the same, if functions are missing: each search for one may give back
constexpr int MostReferences = 0x10000; // to be given back at once
constexpr DWORD PathLength = 4096;      // characters

/// What the simulation does so that a DLL that the machine has is found.
enum class Hold {
    No, // Windows' own search finds it
    Once,
    Pinned, // more often than anybody gives it back
};

struct Module {
    const wchar_t* name;
    bool isImported;       // by the product, at load time
    bool isPinned = false; // on this machine: it stays however often the product gives it back
    std::atomic<bool> isAllowed = isImported;
    std::atomic<HMODULE> attached = nullptr; // our DLL, while it is loaded
    std::vector<std::string> hiddenNames = {};
    HiddenExports hiddenExports = {};
    HMODULE held = nullptr; // the reference that the simulation itself has
};

struct Modules {
    Module opencl{L"opencl.dll", false};
    Module dxgi{L"dxgi.dll", true};
    Module dwmapi{L"dwmapi.dll", true};
    Module nvapi{L"nvapi64.dll", false};
    Module nvml{L"nvml.dll", true};
    Module adl{L"atiadlxx.dll", false};
    Module adlx{L"amdadlx64.dll", false};
    RedirectedImports productImports = {};
    std::array<Module*, 7> all = {&opencl, &dxgi, &dwmapi, &nvapi, &nvml, &adl, &adlx};
};

/// Never destroyed: the DLLs tell of their end after this one's own static objects are gone.
Modules& TheModules()
{
    static auto* const modules = new Modules;
    return *modules;
}

std::wstring PathOf(HMODULE module)
{
    std::wstring path(PathLength, L'\0');
    path.resize(GetModuleFileNameW(module, path.data(), PathLength));
    return path;
}

std::wstring SimulationFolder()
{
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&TheModules), &self);
    const std::wstring path = PathOf(self);
    return path.substr(0, path.find_last_of(L"\\/") + 1);
}

std::wstring SystemPath(const wchar_t* dllName)
{
    std::wstring folder(PathLength, L'\0');
    folder.resize(GetSystemDirectoryW(folder.data(), PathLength));
    return folder + L"\\" + dllName;
}

Module* FindModule(HMODULE handle)
{
    const std::wstring path = PathOf(handle);
    const std::wstring name = FoldCase(path.substr(path.find_last_of(L"\\/") + 1));
    for (Module* const module : TheModules().all) {
        if (name == module->name) {
            return module;
        }
    }
    return nullptr;
}

void AddReferences(const Module& module, int count)
{
    HMODULE handle = nullptr;
    for (int index = 0; index < count; ++index) {
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(module.attached.load()),
                           &handle);
    }
}

/// Holds the DLL so often that a product that gives back too many references cannot unload it.
void Pin(const Module& module)
{
    AddReferences(module, module.hiddenNames.empty() ? PinCount : PinCountWithGaps);
}

/// Gives our references back. A pinned DLL leaves the process: the product may have given back, or kept, any number.
void Release(Module& module)
{
    if (module.held) {
        FreeLibrary(module.held);
    }
    module.held = nullptr;
    for (int count = 0; module.isPinned && module.attached && count < MostReferences; ++count) {
        FreeLibrary(module.attached);
    }
}

/// The product, where the program was linked against it or has loaded it already; else null.
HMODULE Product()
{
    return GetModuleHandleW(L"orvel-graphic-cards-enumeration.dll");
}

/// Where the program was linked against the product, the product's imports were bound before there was a machine.
void RedirectProduct(Modules& modules)
{
    for (const Module* const module : modules.all) {
        if (module->isImported && module->isAllowed && module->attached && Product()) {
            modules.productImports.Redirect(Product(), module->name, module->attached);
        }
    }
}

std::string InFrontOf(const Module& module)
{
    return "the computer's own " + ToUtf8(module.name) + " is in the process already, in front of the simulated one";
}

std::optional<std::string> LoadSimulated(Module& module)
{
    const std::wstring path = SimulationFolder() + module.name;
    module.held = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (!module.held) {
        return ToUtf8(path) + " cannot be loaded, error " + std::to_string(GetLastError());
    }
    if (module.held != module.attached) {
        return "the computer's own " + ToUtf8(module.name) + " was loaded instead of " + ToUtf8(path) +
               " (under Wine, set WINEDLLOVERRIDES=\"opencl,dxgi,dwmapi=n,b\")";
    }
    const bool isRedirected = module.isImported && Product() != nullptr;
    if (!isRedirected && GetModuleHandleW(module.name) != module.attached) {
        return InFrontOf(module);
    }
    return std::nullopt;
}

/// Lets the computer's own DLL be found. One that the computer lacks is then not found at all.
std::optional<std::string> LoadSystem(Module& module)
{
    const bool canForward = &module == &TheModules().dxgi || &module == &TheModules().dwmapi;
    if (module.attached) {
        return canForward ? std::nullopt
                          : std::optional("the simulated " + ToUtf8(module.name) + " is in use by the process already");
    }
    module.held = LoadLibraryExW(SystemPath(module.name).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    return std::nullopt;
}

/// For a DLL that the search has to find: nothing else of this name may be loaded.
std::optional<std::string> LeaveToSearch(const Module& module)
{
    const HMODULE loaded = GetModuleHandleW(module.name);
    return !loaded || loaded == module.attached ? std::nullopt : std::optional(InFrontOf(module));
}

std::optional<std::string> PutInPlace(Module& module, Standing standing, const std::vector<std::string>& missing,
                                      Hold hold = Hold::Once)
{
    Release(module);
    const bool isSimulated = standing == Standing::Simulated || (standing == Standing::Missing && module.isImported);
    module.hiddenNames = missing;
    module.isAllowed = isSimulated;
    module.isPinned = hold == Hold::Pinned;
    if (const HMODULE still = module.attached; still) {
        // Somebody kept the DLL of the machine before. If this machine has none, a DLL without functions comes closest.
        module.hiddenExports.Restore();
        module.hiddenExports.Hide(still, standing == Standing::Missing && !isSimulated ? ExportedNames(still) : missing);
    }
    if (isSimulated) {
        return hold == Hold::No ? LeaveToSearch(module) : LoadSimulated(module);
    }
    return standing == Standing::System ? LoadSystem(module) : std::nullopt;
}

/// The one export of nvapi64.dll can be missing as well as the functions behind it.
std::vector<std::string> MissingExports(const NvapiModel& nvapi)
{
    std::vector<std::string> missing = nvapi.unresolved;
    std::erase_if(missing, [](const std::string& name) { return name != "nvapi_QueryInterface"; });
    return missing;
}

} // namespace

std::optional<std::string> PutModulesInPlace(const Machine& machine)
{
    Modules& modules = TheModules();
    modules.productImports.Restore();
    SetDllDirectoryW(SimulationFolder().c_str());
    const Hold hold = machine.searched ? Hold::No : Hold::Once;
    const bool isOpenClPinned = !machine.searched && machine.opencl.model.pinned;
    const std::array problems = {
        PutInPlace(modules.opencl, machine.opencl.standing, machine.opencl.model.missing,
                   isOpenClPinned ? Hold::Pinned : Hold::No),
        PutInPlace(modules.dxgi, machine.dxgi.standing, {}),
        PutInPlace(modules.dwmapi, machine.dwm.standing, {}),
        PutInPlace(modules.nvapi, machine.nvapi.standing, MissingExports(machine.nvapi.model), hold),
        PutInPlace(modules.nvml, machine.nvml.standing, machine.nvml.model.missing),
        PutInPlace(modules.adl, machine.adl.standing, machine.adl.model.missing, hold),
        PutInPlace(modules.adlx, machine.adlx.standing, machine.adlx.model.missing, hold),
    };
    for (const auto& problem : problems) {
        if (problem) {
            return problem;
        }
    }
    RedirectProduct(modules);
    return std::nullopt;
}

void TakeModulesAway()
{
    TheModules().productImports.Restore();
    for (Module* const module : TheModules().all) {
        Release(*module);
        module->isAllowed = module->isImported;
        module->isPinned = false;
        module->hiddenNames.clear();
        if (module->attached) {
            module->hiddenExports.Restore();
        }
    }
    SetDllDirectoryW(nullptr);
}

void AddOpenClReference()
{
    if (TheModules().opencl.isPinned) {
        AddReferences(TheModules().opencl, 1);
    }
}

bool IsLoadedFor(const std::string& call, const wchar_t* dllName)
{
    const auto& modules = TheModules().all;
    const bool isLoaded = std::ranges::any_of(
        modules, [&](const Module* module) { return std::wstring_view(dllName) == module->name && module->attached; });
    if (!isLoaded) {
        AddViolation(call, ToUtf8(dllName) + " is not loaded any more");
    }
    return isLoaded;
}

FARPROC SystemFunction(const wchar_t* dllName, const char* functionName)
{
    // From here on both are in the process. Ours must stay, or the name would mean the other one for the next machine.
    for (const Module* const module : TheModules().all) {
        if (module->attached && std::wstring_view(dllName) == module->name) {
            AddReferences(*module, 1);
        }
    }
    const HMODULE own = LoadLibraryExW(SystemPath(dllName).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    return own ? GetProcAddress(own, functionName) : nullptr;
}

/// Called by a simulated DLL as it is loaded; refuses one that the machine lacks. The loader's lock is held here.
SIMULATED BOOL SimulationAttach(HMODULE handle)
{
    Module* const module = FindModule(handle);
    if (!module || !module->isAllowed) {
        return FALSE;
    }
    module->attached = handle;
    module->hiddenExports.Hide(handle, module->hiddenNames);
    if (module->isPinned) {
        Pin(*module);
    }
    return TRUE;
}

/// Called by a simulated DLL as it leaves the process.
SIMULATED void SimulationDetach(HMODULE handle)
{
    Module* const module = FindModule(handle);
    if (!module || module->attached != handle) {
        return;
    }
    module->attached = nullptr;
    module->hiddenExports.Forget();
    if (module == &TheModules().opencl) {
        ResetOpenCl();
    }
}

} // namespace orvel::simulation
