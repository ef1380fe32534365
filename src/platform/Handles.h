#pragma once

#include <memory>
#include <type_traits>

#include <windows.h>

namespace orvel::shared::enumeration {

/// Passes a handle to the Windows function that gives it back.
template <auto Close>
struct CloseWith {
    template <typename Handle>
    void operator()(Handle handle) const noexcept
    {
        Close(handle);
    }
};

using ModuleHandle = std::unique_ptr<std::remove_pointer_t<HMODULE>, CloseWith<&::FreeLibrary>>;
using RegistryKey = std::unique_ptr<std::remove_pointer_t<HKEY>, CloseWith<&::RegCloseKey>>;

/// The module that holds the code or object at an address, which stays loaded as long as the handle.
inline ModuleHandle ModuleOf(const void* address)
{
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, static_cast<LPCWSTR>(address), &module);
    return ModuleHandle(module);
}

/// The function `name` of a loaded module as the given pointer type; null when the module does not export it.
template <typename Function>
Function FindFunction(HMODULE module, const char* name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

} // namespace orvel::shared::enumeration
