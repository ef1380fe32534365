#include "Library.h"

#include <string>

namespace orvel::bindings {

namespace {

using namespace shared::enumeration;

std::wstring PathBesideAddon()
{
    const auto addon = ModuleOf(reinterpret_cast<const void*>(&TakeJson));
    const auto path = PathOf(addon.get());
    return path.substr(0, path.find_last_of(L'\\') + 1) + L"orvel-graphic-cards-inventory.dll";
}

template <typename Function>
bool Find(HMODULE module, const char* name, Function& function)
{
    function = FindFunction<Function>(module, name);
    return function != nullptr;
}

} // namespace

// It imports nothing but Windows' own DLLs, so only Windows' folder is searched for them.
Library::Library() : module(::LoadLibraryExW(PathBesideAddon().c_str(), nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32))
{
    if (!module) {
        loadError = ::GetLastError();
        problem = "cannot be loaded";
    } else if (!FindFunctions()) {
        problem = "is not of this package's version";
    }
}

bool Library::FindFunctions()
{
    return Find(module.get(), "OrvelInventoryVersion", Version) && Version() / 10000 == ORVEL_INVENTORY_VERSION / 10000 &&
           Version() >= ORVEL_INVENTORY_VERSION && Find(module.get(), "OrvelInventoryGetProperty", GetProperty) &&
           Find(module.get(), "OrvelInventoryTake", Take) && Find(module.get(), "OrvelInventoryFree", Free) &&
           Find(module.get(), "OrvelInventoryToJson", ToJson) && Find(module.get(), "OrvelInventoryFreeText", FreeText);
}

Taken TakeJson(const Library& library, const OrvelInventoryOptions& options, uint32_t form) noexcept
{
    Taken taken;
    OrvelInventory* inventory = nullptr;
    taken.status = library.Take(&options, &inventory);
    const std::unique_ptr<OrvelInventory, decltype(library.Free)> freed(inventory, library.Free);
    if (taken.status != ORVEL_INVENTORY_OK) {
        return taken;
    }
    char* text = nullptr;
    taken.status = library.ToJson(inventory, form, &text, &taken.bytes);
    taken.json = {text, library.FreeText};
    return taken;
}

} // namespace orvel::bindings
