#include "windows/RecordedCalls.h"

#include <map>
#include <mutex>

#include "drivers/HandleTable.h"
#include "loading/LoadedModules.h"
#include "loading/ModuleAccess.h"
#include "machine/Text.h"
#include "trace/Recording.h"

namespace orvel::simulation {

namespace {

/// Windows reuses the values of closed keys, so each opened key has a value of its own in the recording.
struct OpenKeys {
    std::mutex mutex;
    std::map<HKEY, const void*> values;
};

OpenKeys& openKeys = *new OpenKeys;

std::string TextOf(const char* text)
{
    return text ? text : "";
}

std::string TextOf(const wchar_t* text)
{
    return text ? ToUtf8(text) : "";
}

const void* ValueOf(HKEY key)
{
    const std::scoped_lock lock(openKeys.mutex);
    const auto found = openKeys.values.find(key);
    return found == openKeys.values.end() ? nullptr : found->second;
}

LSTATUS RecordOpened(LSTATUS status, const HKEY* key)
{
    if (status == ERROR_SUCCESS) {
        const std::scoped_lock lock(openKeys.mutex);
        RecordOutput(openKeys.values[*key] = NewHandle());
    }
    return status;
}

LSTATUS WINAPI OpenKeyA(HKEY parent, LPCSTR path, DWORD options, REGSAM access, PHKEY key)
{
    RecordKeyCall(parent, "RegOpenKeyExA " + TextOf(path), access);
    return RecordOpened(RegOpenKeyExA(parent, path, options, access, key), key);
}

LSTATUS WINAPI OpenKeyW(HKEY parent, LPCWSTR path, DWORD options, REGSAM access, PHKEY key)
{
    RecordKeyCall(parent, "RegOpenKeyExW " + TextOf(path), access);
    return RecordOpened(RegOpenKeyExW(parent, path, options, access, key), key);
}

LSTATUS WINAPI EnumKeyA(HKEY key, DWORD index, LPSTR name, LPDWORD length, LPDWORD reserved, LPSTR className,
                        LPDWORD classLength, PFILETIME written)
{
    RecordKeyCall(key, "RegEnumKeyExA " + std::to_string(index));
    return RegEnumKeyExA(key, index, name, length, reserved, className, classLength, written);
}

LSTATUS WINAPI EnumKeyW(HKEY key, DWORD index, LPWSTR name, LPDWORD length, LPDWORD reserved, LPWSTR className,
                        LPDWORD classLength, PFILETIME written)
{
    RecordKeyCall(key, "RegEnumKeyExW " + std::to_string(index));
    return RegEnumKeyExW(key, index, name, length, reserved, className, classLength, written);
}

LSTATUS WINAPI QueryValueA(HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size)
{
    RecordKeyCall(key, "RegQueryValueExA " + TextOf(name), data && size ? *size : 0);
    return RegQueryValueExA(key, name, reserved, type, data, size);
}

std::string NameOf(HMODULE module)
{
    const std::wstring path = PathOf(module);
    return ToUtf8(FoldCase(path.substr(path.find_last_of(L'\\') + 1)));
}

HMODULE WINAPI Load(LPCWSTR name)
{
    RecordCall("loader LoadLibraryW " + TextOf(name));
    return LoadLibraryW(name);
}

BOOL WINAPI Free(HMODULE module)
{
    RecordCall("loader FreeLibrary " + NameOf(module));
    return FreeLibrary(module);
}

BOOL WINAPI FindModule(DWORD flags, LPCWSTR nameOrAddress, HMODULE* module)
{
    const BOOL isFound = GetModuleHandleExW(flags, nameOrAddress, module);
    RecordCall("loader GetModuleHandleExW " + NameOf(*module));
    return isFound;
}

FARPROC WINAPI FindFunction(HMODULE module, LPCSTR name)
{
    if (!IS_INTRESOURCE(name) && module != OwnModule()) { // the simulation's own functions are no part of the machine
        RecordCall("loader GetProcAddress " + NameOf(module) + " " + name);
    }
    return GetProcAddress(module, name);
}

std::vector<Redirection> Redirections()
{
    return {{AsProcedure(&RegOpenKeyExA), AsProcedure(&OpenKeyA)},
            {AsProcedure(&RegOpenKeyExW), AsProcedure(&OpenKeyW)},
            {AsProcedure(&RegEnumKeyExA), AsProcedure(&EnumKeyA)},
            {AsProcedure(&RegEnumKeyExW), AsProcedure(&EnumKeyW)},
            {AsProcedure(&RegQueryValueExA), AsProcedure(&QueryValueA)},
            {AsProcedure(&LoadLibraryW), AsProcedure(&Load)},
            {AsProcedure(&FreeLibrary), AsProcedure(&Free)},
            {AsProcedure(&GetModuleHandleExW), AsProcedure(&FindModule)},
            {AsProcedure(&GetProcAddress), AsProcedure(&FindFunction)}};
}

} // namespace

void PutRecordedCallsInPlace()
{
    LeadImports(Redirections());
}

void TakeRecordedCallsAway()
{
    RestoreImports(Redirections());
}

void RecordKeyCall(HKEY key, const std::string& call, uint64_t number)
{
    if (IsRecording()) {
        RecordCall("registry " + call, {ValueOf(key), number});
    }
}

} // namespace orvel::simulation
