#include "ReplacedImport.h"

#include "platform/LoadedModule.h"

namespace orvel::tests {

namespace {

using shared::enumeration::At;
using shared::enumeration::DirectoryOf;

void Replace(HMODULE module, void* from, void* to)
{
    for (auto* import = DirectoryOf<IMAGE_IMPORT_DESCRIPTOR>(module, IMAGE_DIRECTORY_ENTRY_IMPORT); import->Name != 0;
         ++import) {
        for (auto* slot = At<void*>(module, import->FirstThunk); *slot; ++slot) {
            DWORD protection = 0;
            if (*slot == from && ::VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &protection)) {
                *slot = to;
                ::VirtualProtect(slot, sizeof(*slot), protection, &protection);
            }
        }
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
    : module(module),
      original(reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(dll), name))),
      replacement(replacement)
{
    Replace(module, original, replacement);
}

ReplacedImport::~ReplacedImport()
{
    Replace(module, replacement, original);
}

} // namespace orvel::tests
