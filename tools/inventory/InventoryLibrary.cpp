#include "inventory/InventoryLibrary.h"

#include <memory>

#include <windows.h>

#include "MachineFiles.h"
#include "platform/Handles.h"

namespace orvel::tools {

namespace {

constexpr char dll[] = "orvel-graphic-cards-inventory.dll";

/// Looks functions up, and remembers the first that is missing.
class Lookup {
public:
    explicit Lookup(HMODULE itsModule) : module(itsModule) {}

    template <typename Function>
    void Find(Function& function, const char* name)
    {
        function = shared::enumeration::FindFunction<Function>(module, name);
        if (!function && missing.empty()) {
            missing = name;
        }
    }
    const std::string& Missing() const { return missing; }

private:
    HMODULE module;
    std::string missing;
};

std::string VersionText(uint32_t version)
{
    return std::to_string(version / 10000) + "." + std::to_string(version / 100 % 100) + "." + std::to_string(version % 100);
}

/// Why a library of this version cannot be used; "" where it can.
std::string VersionProblem(uint32_t version)
{
    const bool isUsable = version >= ORVEL_INVENTORY_VERSION && version / 10000 == ORVEL_INVENTORY_VERSION / 10000;
    return isUsable ? ""
                    : std::string(dll) + " has version " + VersionText(version) + ", but this program needs " +
                          VersionText(ORVEL_INVENTORY_VERSION) + " or a later one of the same major version";
}

std::string StatusText(int32_t status)
{
    switch (status) {
    case ORVEL_INVENTORY_OUT_OF_MEMORY:
        return "memory is exhausted";
    case ORVEL_INVENTORY_INVALID_ARGUMENT:
        return "the library does not accept the options";
    default:
        return "the library reports error " + std::to_string(status);
    }
}

ValueType TypeOf(uint32_t type)
{
    switch (type) {
    case ORVEL_INVENTORY_NUMBER:
        return ValueType::Number;
    case ORVEL_INVENTORY_BOOL:
        return ValueType::Flag;
    case ORVEL_INVENTORY_DISPLAYS:
        return ValueType::Displays;
    default:
        return ValueType::Text;
    }
}

std::vector<InventoryProperty> TableOf(const InventoryLibrary& library)
{
    std::vector<InventoryProperty> table;
    for (uint32_t i = 0; i < library.PropertyCount(); ++i) {
        OrvelInventoryProperty row{};
        row.size = sizeof row;
        if (library.GetProperty(i, &row) == ORVEL_INVENTORY_OK) {
            table.push_back({row.name, TypeOf(row.type), row.unit, row.description});
        }
    }
    return table;
}

/// A document of the snapshot; "" where memory is exhausted.
std::string Document(const InventoryLibrary& library, const OrvelInventory* snapshot, uint32_t form)
{
    char* text = nullptr;
    size_t length = 0;
    library.ToJson(snapshot, form, &text, &length);
    const std::unique_ptr<char, decltype(library.FreeText)> owner(text, library.FreeText);
    return text ? std::string(text, length) : std::string();
}

} // namespace

std::variant<InventoryLibrary, std::string> LoadInventoryLibrary()
{
    const HMODULE module = ::LoadLibraryExW((ProgramFolder() / dll).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (!module) {
        return std::string(dll) + " cannot be loaded (error " + std::to_string(::GetLastError()) +
               "): it must be beside this program";
    }
    InventoryLibrary library{};
    Lookup lookup(module);
    lookup.Find(library.Version, "OrvelInventoryVersion");
    lookup.Find(library.Take, "OrvelInventoryTake");
    lookup.Find(library.Free, "OrvelInventoryFree");
    lookup.Find(library.PropertyCount, "OrvelInventoryPropertyCount");
    lookup.Find(library.GetProperty, "OrvelInventoryGetProperty");
    lookup.Find(library.ToJson, "OrvelInventoryToJson");
    lookup.Find(library.FreeText, "OrvelInventoryFreeText");
    const std::string wrongVersion = library.Version ? VersionProblem(library.Version()) : "";
    if (!wrongVersion.empty()) {
        return wrongVersion;
    }
    if (!lookup.Missing().empty()) {
        return std::string(dll) + " lacks " + lookup.Missing() + ": its version does not match this program";
    }
    return library;
}

std::variant<InventorySnapshot, std::string> TakeInventory(const InventoryLibrary& library, const InventoryOptions& options)
{
    const OrvelInventoryOptions given{sizeof given, options.Depth, options.TimeoutMilliseconds,
                                      options.IsWakingAllowed ? 1U : 0U};
    OrvelInventory* taken = nullptr;
    const int32_t status = library.Take(&given, &taken);
    const std::unique_ptr<OrvelInventory, decltype(library.Free)> snapshot(taken, library.Free);
    if (status != ORVEL_INVENTORY_OK) {
        return "no snapshot can be taken: " + StatusText(status);
    }
    InventorySnapshot documents{Document(library, taken, ORVEL_INVENTORY_JSON_FULL),
                                Document(library, taken, ORVEL_INVENTORY_JSON_FLAT), TableOf(library)};
    if (documents.Full.empty() || documents.Flat.empty()) {
        return "no snapshot can be taken: " + StatusText(ORVEL_INVENTORY_OUT_OF_MEMORY);
    }
    return documents;
}

} // namespace orvel::tools
