#include "loading/ModuleSetup.h"

#include <algorithm>
#include <array>
#include <atomic>

#include "loading/DriverState.h"
#include "loading/Export.h"
#include "loading/ExportTable.h"
#include "loading/ImportTable.h"
#include "loading/ModuleAccess.h"
#include "machine/CurrentMachine.h"
#include "machine/Text.h"
#include "trace/Violations.h"

// How Windows finds the simulated DLLs. A loaded DLL satisfies every later request for its bare name, by LoadLibrary or by
// another DLL's import. So the DLLs that the machine has are loaded here, by full path, before the product requests them.
// For those that the machine lacks, this folder precedes the system's on the search path: the search ends at our DLL, whose
// SimulationAttach makes loading fail, and does not reach the computer's own DLL.
//
// A machine with the key "searched" relies on the search path alone: nothing is loaded here, and a DLL is unloaded with the
// product's last reference.
//
// The product imports nvml.dll, dxgi.dll and dwmapi.dll, so these can always be loaded, even without a machine. In a program
// that is linked against the product, the imports are bound to the computer's own DLLs before a machine is put in place, so
// they are redirected to ours.

namespace orvel::simulation {

namespace {

// A loader may count references in 16 bits, so their number is limited.
constexpr int pinCount = 4096;          // more than the surplus releases of one run
constexpr int pinCountWithGaps = 16384; // with missing functions, each failed lookup may release one too
constexpr int mostReferences = 0x10000; // that Release tries to release

/// How the simulation holds a DLL that the machine has.
enum class Hold {
    No, // Windows' own search finds it
    Once,
    Pinned, // with more references than the product ever releases
};

/// How a machine defines a DLL.
struct Wish {
    Standing standing = Standing::Missing;
    std::vector<std::string> missing = {}; // functions
    Hold hold = Hold::Once;
};

/// For a DLL that the product loads at run time.
Hold HoldAtRunTime(const Machine& machine)
{
    return machine.searched ? Hold::No : Hold::Once;
}

Wish OpenClOf(const Machine& machine)
{
    const bool isPinned = !machine.searched && machine.opencl.model.pinned;
    return {machine.opencl.standing, machine.opencl.model.missing, isPinned ? Hold::Pinned : Hold::No};
}

Wish DxgiOf(const Machine& machine)
{
    return {machine.dxgi.standing};
}

Wish DwmOf(const Machine& machine)
{
    return {machine.dwm.standing};
}

/// The key lists both the export of nvapi64.dll and the functions that it resolves; only the export is hidden here.
Wish NvapiOf(const Machine& machine)
{
    std::vector<std::string> missing = machine.nvapi.model.unresolved;
    std::erase_if(missing, [](const std::string& name) { return name != "nvapi_QueryInterface"; });
    return {machine.nvapi.standing, missing, HoldAtRunTime(machine)};
}

Wish NvmlOf(const Machine& machine)
{
    return {machine.nvml.standing, machine.nvml.model.missing};
}

Wish AdlOf(const Machine& machine)
{
    return {machine.adl.standing, machine.adl.model.missing, HoldAtRunTime(machine)};
}

Wish AdlxOf(const Machine& machine)
{
    return {machine.adlx.standing, machine.adlx.model.missing, HoldAtRunTime(machine)};
}

struct Module {
    const wchar_t* name;
    Wish (*wishOf)(const Machine&);
    bool isImported = false;   // by the product, at load time
    bool isForwarding = false; // to the computer's own DLL, while the machine leaves the interface to the system
    bool isPinned = false;     // on this machine: it stays loaded, however often the product releases it
    std::atomic<bool> isAllowed = isImported;
    std::atomic<HMODULE> attached = nullptr; // our DLL, while it is loaded
    std::vector<std::string> hiddenNames = {};
    HiddenExports hiddenExports = {};
    HMODULE held = nullptr; // the simulation's own reference
};

/// The DLLs that are simulated, in the order in which they are put in place.
struct Modules {
    std::array<Module, 7> all = {{
        {L"opencl.dll", &OpenClOf},
        {L"dxgi.dll", &DxgiOf, true, true},
        {L"dwmapi.dll", &DwmOf, true, true},
        {L"nvapi64.dll", &NvapiOf},
        {L"nvml.dll", &NvmlOf, true},
        {L"atiadlxx.dll", &AdlOf},
        {L"amdadlx64.dll", &AdlxOf},
    }};
    RedirectedImports productImports = {};
};

/// Never destroyed: the DLLs report their unloading after this DLL's static objects have been destroyed.
Modules& modules = *new Modules;

std::wstring SimulationFolder()
{
    const std::wstring path = PathOf(OwnModule());
    return path.substr(0, path.find_last_of(L"\\/") + 1);
}

std::wstring SystemPath(const wchar_t* dllName)
{
    return SystemFolder() + L"\\" + dllName;
}

Module* FindModule(std::wstring_view name)
{
    const auto found = std::ranges::find(modules.all, name, &Module::name);
    return found == modules.all.end() ? nullptr : &*found;
}

Module* FindModule(HMODULE handle)
{
    const std::wstring path = PathOf(handle);
    return FindModule(FoldCase(path.substr(path.find_last_of(L"\\/") + 1)));
}

void AddReferences(const Module& module, int count)
{
    HMODULE handle = nullptr;
    for (int index = 0; index < count; ++index) {
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(module.attached.load()),
                           &handle);
    }
}

/// Adds so many references to the DLL that a product that releases too many cannot unload it.
void Pin(const Module& module)
{
    AddReferences(module, module.hiddenNames.empty() ? pinCount : pinCountWithGaps);
}

/// Releases our references. A pinned DLL is unloaded: how many references the product has released or kept is unknown.
void Release(Module& module)
{
    if (module.held) {
        FreeLibrary(module.held);
    }
    module.held = nullptr;
    for (int count = 0; module.isPinned && module.attached && count < mostReferences; ++count) {
        FreeLibrary(module.attached);
    }
}

/// The product if it is loaded, else null.
HMODULE Product()
{
    return GetModuleHandleW(L"orvel-graphic-cards-enumeration.dll");
}

/// If the program is linked against the product, the product's imports were bound before a machine was in place.
void RedirectProduct()
{
    for (const Module& module : modules.all) {
        if (module.isImported && module.isAllowed && module.attached && Product()) {
            modules.productImports.Redirect(Product(), module.name, module.attached);
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

/// Loads the computer's own DLL. If the computer lacks it, the product does not find one either.
std::optional<std::string> LoadSystem(Module& module)
{
    if (module.attached) {
        return module.isForwarding
                   ? std::nullopt
                   : std::optional("the simulated " + ToUtf8(module.name) + " is in use by the process already");
    }
    module.held = LoadLibraryExW(SystemPath(module.name).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    return std::nullopt;
}

/// For a DLL that the product finds on the search path: no other DLL of this name may be loaded.
std::optional<std::string> LeaveToSearch(const Module& module)
{
    const HMODULE loaded = GetModuleHandleW(module.name);
    return !loaded || loaded == module.attached ? std::nullopt : std::optional(InFrontOf(module));
}

std::optional<std::string> PutInPlace(Module& module, const Wish& wish)
{
    const auto& [standing, missing, hold] = wish;
    Release(module);
    const bool isSimulated = standing == Standing::Simulated || (standing == Standing::Missing && module.isImported);
    module.hiddenNames = missing;
    module.isAllowed = isSimulated;
    module.isPinned = hold == Hold::Pinned;
    if (const HMODULE still = module.attached; still) {
        // Other code still holds the previous machine's DLL. If this machine lacks it, a DLL without functions is the
        // nearest.
        module.hiddenExports.Restore();
        module.hiddenExports.Hide(still, standing == Standing::Missing && !isSimulated ? ExportedNames(still) : missing);
    }
    if (isSimulated) {
        return hold == Hold::No ? LeaveToSearch(module) : LoadSimulated(module);
    }
    return standing == Standing::System ? LoadSystem(module) : std::nullopt;
}

} // namespace

std::optional<std::string> PutModulesInPlace(const Machine& machine)
{
    modules.productImports.Restore();
    SetDllDirectoryW(SimulationFolder().c_str());
    std::optional<std::string> firstProblem;
    for (Module& module : modules.all) {
        const auto problem = PutInPlace(module, module.wishOf(machine));
        firstProblem = firstProblem ? firstProblem : problem;
    }
    if (!firstProblem) {
        RedirectProduct();
    }
    return firstProblem;
}

void TakeModulesAway()
{
    modules.productImports.Restore();
    for (Module& module : modules.all) {
        Release(module);
        module.isAllowed = module.isImported;
        module.isPinned = false;
        module.hiddenNames.clear();
        if (module.attached) {
            module.hiddenExports.Restore();
        }
    }
    SetDllDirectoryW(nullptr);
}

void AddOpenClReference()
{
    if (const Module* const opencl = FindModule(L"opencl.dll"); opencl->isPinned) {
        AddReferences(*opencl, 1);
    }
}

bool IsLoadedFor(const std::string& call, const wchar_t* dllName)
{
    const bool isLoaded = FindModule(dllName)->attached;
    if (!isLoaded) {
        AddViolation(call, ToUtf8(dllName) + " is not loaded any more");
    }
    return isLoaded;
}

std::optional<Standing> StandingOf(std::wstring_view dllName)
{
    const Module* const module = FindModule(dllName);
    return module ? std::optional(module->wishOf(*CurrentMachine()).standing) : std::nullopt;
}

HMODULE LoadSimulated(std::wstring_view dllName)
{
    return LoadLibraryExW((SimulationFolder() + std::wstring(dllName)).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

HMODULE SystemModule(const wchar_t* dllName)
{
    // From here on both DLLs are loaded. Ours must stay, or the name would mean the computer's own for the next machine.
    if (const Module* const module = FindModule(dllName); module->attached) {
        AddReferences(*module, 1);
    }
    return LoadLibraryExW(SystemPath(dllName).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

/// Called by a simulated DLL on loading; fails for a DLL that the machine lacks. Runs under the loader lock.
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

/// Called by a simulated DLL on unloading.
SIMULATED void SimulationDetach(HMODULE handle)
{
    Module* const module = FindModule(handle);
    if (!module || module->attached != handle) {
        return;
    }
    module->attached = nullptr;
    module->hiddenExports.Forget();
    ForgetDriverStateOf(module->name);
}

} // namespace orvel::simulation
