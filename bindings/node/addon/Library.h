#pragma once

#include <cstdint>
#include <memory>

#include "OrvelInventory.h"
#include "platform/Handles.h"

namespace orvel::bindings {

/// The inventory's DLL, which lies beside the addon.
class Library {
public:
    /// Loads the DLL. What it lacks shows in Problem().
    Library();

    /// Why the DLL cannot be used; null when it can.
    const char* Problem() const { return problem; }

    /// Windows' error of the failed loading; 0 for another problem.
    uint32_t LoadError() const { return loadError; }

    decltype(&OrvelInventoryVersion) Version = nullptr;
    decltype(&OrvelInventoryGetProperty) GetProperty = nullptr;
    decltype(&OrvelInventoryTake) Take = nullptr;
    decltype(&OrvelInventoryFree) Free = nullptr;
    decltype(&OrvelInventoryToJson) ToJson = nullptr;
    decltype(&OrvelInventoryFreeText) FreeText = nullptr;

private:
    bool FindFunctions();

    shared::enumeration::ModuleHandle module;
    const char* problem = nullptr;
    uint32_t loadError = 0;
};

/// What the environment and its unfinished snapshots share.
using SharedLibrary = std::shared_ptr<const Library>;

/// A snapshot as JSON. The library must outlive it.
struct Taken {
    int32_t status = ORVEL_INVENTORY_ERROR;
    std::unique_ptr<char, void (*)(char*)> json{nullptr, nullptr}; ///< null when the status is not OK
    size_t bytes = 0;
};

/// Takes a snapshot. `form` is one of ORVEL_INVENTORY_JSON_….
Taken TakeJson(const Library& library, const OrvelInventoryOptions& options, uint32_t form) noexcept;

} // namespace orvel::bindings
