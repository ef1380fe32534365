#include "windows/DriverKeys.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

#include "loading/DriverState.h"
#include "machine/CurrentMachine.h"
#include "machine/Text.h"
#include "trace/Trace.h"
#include "windows/RecordedCalls.h"

namespace orvel::simulation {

namespace {

struct WatchedKey {
    std::wstring path;
    LiveObject live{Counted::Registry};
};

struct WatchedKeys {
    std::mutex mutex;
    std::map<HKEY, std::unique_ptr<WatchedKey>> keys;
};

WatchedKeys& watched = *new WatchedKeys;

const DriverState state([] {
    const std::scoped_lock lock(watched.mutex);
    watched.keys.clear();
});

std::optional<std::wstring> PathOf(HKEY key)
{
    const std::scoped_lock lock(watched.mutex);
    const auto found = watched.keys.find(key);
    return found == watched.keys.end() ? std::nullopt : std::optional(found->second->path);
}

/// The status that the machine file refuses a value with; 0 for none.
LSTATUS RefusalOf(const std::wstring& path, const wchar_t* name)
{
    const auto machine = CurrentMachine();
    const RegistryKeyModel* const key = machine->registry.model.Find(path);
    if (!key) {
        return ERROR_SUCCESS;
    }
    for (const auto& [valueName, value] : key->values) {
        const auto* const refusal = std::get_if<RegistryRefusal>(&value);
        if (refusal && FoldCase(ToWide(valueName)) == FoldCase(name)) {
            return refusal->status;
        }
    }
    return ERROR_SUCCESS;
}

/// The end of a path, which says whose key it is.
std::string EndOf(const std::wstring& path)
{
    return ToUtf8(path.substr(path.find_last_of(L'\\') + 1));
}

LSTATUS WINAPI QueryValue(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size)
{
    if (const auto path = PathOf(key)) {
        const wchar_t* const known = name ? name : L"";
        AddToTrace("registry RegQueryValueExW " + EndOf(*path) + " " + ToUtf8(known));
        if (const LSTATUS refusal = RefusalOf(*path, known)) {
            return refusal;
        }
    } else {
        RecordKeyCall(key, "RegQueryValueExW " + ToUtf8(name ? name : L""), data && size ? *size : 0);
    }
    return RegQueryValueExW(key, name, reserved, type, data, size);
}

LSTATUS WINAPI CloseKey(HKEY key)
{
    {
        const std::scoped_lock lock(watched.mutex);
        watched.keys.erase(key);
    }
    RecordKeyCall(key, "RegCloseKey");
    return RegCloseKey(key);
}

} // namespace

LSTATUS OpenDriverKey(const std::wstring& path, REGSAM access, HKEY& key)
{
    const LSTATUS status = RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, access, &key);
    if (status == ERROR_SUCCESS) {
        auto entry = std::make_unique<WatchedKey>();
        entry->path = path;
        const std::scoped_lock lock(watched.mutex);
        watched.keys[key] = std::move(entry);
    }
    return status;
}

std::vector<Redirection> DriverKeyRedirections()
{
    return {{AsProcedure(&RegQueryValueExW), AsProcedure(&QueryValue)}, {AsProcedure(&RegCloseKey), AsProcedure(&CloseKey)}};
}

} // namespace orvel::simulation
