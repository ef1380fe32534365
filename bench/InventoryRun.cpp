#include "InventoryRun.h"

#include <stdexcept>
#include <string>

#include <windows.h>

#include "OrvelInventory.h"

namespace orvel::bench {

namespace {

template <typename Function>
Function* Find(HMODULE library, const char* name)
{
    const auto function = ::GetProcAddress(library, name);
    if (function == nullptr) {
        throw std::runtime_error(std::string("orvel-graphic-cards-inventory.dll lacks ") + name);
    }
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(function));
}

/// The DLL, loaded after the machine is in place.
struct Inventory {
    HMODULE library = ::LoadLibraryW(L"orvel-graphic-cards-inventory.dll");
    decltype(&OrvelInventoryTake) take = Find<decltype(OrvelInventoryTake)>(library, "OrvelInventoryTake");
    decltype(&OrvelInventoryFree) free = Find<decltype(OrvelInventoryFree)>(library, "OrvelInventoryFree");
};

} // namespace

void RunInventory()
{
    static const Inventory inventory;
    OrvelInventory* taken = nullptr;
    if (inventory.take(nullptr, &taken) != ORVEL_INVENTORY_OK) {
        throw std::runtime_error("no inventory can be taken");
    }
    inventory.free(taken);
}

} // namespace orvel::bench
