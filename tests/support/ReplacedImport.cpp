#include "ReplacedImport.h"

#include <cstring>

#include "platform/LoadedModule.h"

namespace orvel::tests {

namespace {

using shared::enumeration::At;
using shared::enumeration::DirectoryOf;

/// The slot of a function that the module imports by its name; null if it does not. The slot may lead to a simulation.
void** SlotOf(HMODULE module, HMODULE dll, const char* name)
{
    for (auto* import = DirectoryOf<IMAGE_IMPORT_DESCRIPTOR>(module, IMAGE_DIRECTORY_ENTRY_IMPORT); import->Name != 0;
         ++import) {
        if (::GetModuleHandleA(At<const char>(module, import->Name)) != dll) {
            continue;
        }
        auto* slot = At<void*>(module, import->FirstThunk);
        for (auto* entry = At<IMAGE_THUNK_DATA>(module, import->OriginalFirstThunk); entry->u1.AddressOfData != 0;
             ++entry, ++slot) {
            const bool isByName = !IMAGE_SNAP_BY_ORDINAL(entry->u1.Ordinal);
            const auto place = static_cast<DWORD>(entry->u1.AddressOfData);
            if (isByName && std::strcmp(At<IMAGE_IMPORT_BY_NAME>(module, place)->Name, name) == 0) {
                return slot;
            }
        }
    }
    return nullptr;
}

void Write(void** slot, void* function)
{
    DWORD protection = 0;
    if (slot && ::VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &protection)) {
        *slot = function;
        ::VirtualProtect(slot, sizeof(*slot), protection, &protection);
    }
}

} // namespace

HMODULE TestModule()
{
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<LPCWSTR>(&TestModule), &module);
    return module;
}

ReplacedImport::ReplacedImport(HMODULE module, const wchar_t* dll, const char* name, void* replacement)
    : slot(SlotOf(module, ::GetModuleHandleW(dll), name)),
      original(slot ? *slot : reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(dll), name)))
{
    Write(slot, replacement);
}

ReplacedImport::~ReplacedImport()
{
    Write(slot, original);
}

} // namespace orvel::tests
