#include "loading/ImportTable.h"

#include "loading/ModuleAccess.h"
#include "machine/Text.h"

namespace orvel::simulation {

namespace {

/// The descriptors of a module's imported DLLs, ending with an empty one; null where it imports nothing.
const IMAGE_IMPORT_DESCRIPTOR* ImportsOf(HMODULE module)
{
    return DirectoryOf<IMAGE_IMPORT_DESCRIPTOR>(module, IMAGE_DIRECTORY_ENTRY_IMPORT);
}

/// The descriptor of one imported DLL; null where the module does not import it.
const IMAGE_IMPORT_DESCRIPTOR* FindImport(HMODULE module, const wchar_t* dllName)
{
    const auto* import = ImportsOf(module);
    if (!import) {
        return nullptr;
    }
    while (import->Name != 0 && FoldCase(ToWide(At<char>(module, import->Name))) != dllName) {
        ++import;
    }
    return import->Name != 0 ? import : nullptr;
}

} // namespace

void RedirectedImports::Redirect(HMODULE importer, const wchar_t* dllName, HMODULE target)
{
    const auto* import = FindImport(importer, dllName);
    if (!import) {
        return;
    }
    const auto* name = At<IMAGE_THUNK_DATA>(importer, import->OriginalFirstThunk);
    auto* slot = At<IMAGE_THUNK_DATA>(importer, import->FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++slot) {
        const auto* byName = At<IMAGE_IMPORT_BY_NAME>(importer, static_cast<DWORD>(name->u1.AddressOfData));
        const FARPROC function = GetProcAddress(target, reinterpret_cast<const char*>(byName->Name));
        auto* address = reinterpret_cast<ULONG_PTR*>(&slot->u1.Function);
        if (!function || *address == reinterpret_cast<ULONG_PTR>(function)) {
            continue;
        }
        former.emplace_back(address, *address);
        Overwrite(address, reinterpret_cast<ULONG_PTR>(function));
    }
}

void RedirectedImports::Restore()
{
    for (const auto& [slot, value] : former) {
        Overwrite(slot, value);
    }
    former.clear();
}

void ReplaceImported(HMODULE importer, FARPROC from, FARPROC to)
{
    for (const auto* import = ImportsOf(importer); import && import->Name != 0; ++import) {
        for (auto* slot = At<IMAGE_THUNK_DATA>(importer, import->FirstThunk); slot->u1.Function != 0; ++slot) {
            if (slot->u1.Function == reinterpret_cast<ULONG_PTR>(from)) {
                Overwrite(reinterpret_cast<ULONG_PTR*>(&slot->u1.Function), reinterpret_cast<ULONG_PTR>(to));
            }
        }
    }
}

} // namespace orvel::simulation
