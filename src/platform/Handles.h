#pragma once

#include <memory>
#include <string>
#include <type_traits>

#include <windows.h>

#include <oleauto.h>

namespace orvel::shared::enumeration {

/// Passes a handle to the Windows function that releases it.
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
using BasicString = std::unique_ptr<OLECHAR, CloseWith<&::SysFreeString>>;
using ClearedVariant = std::unique_ptr<VARIANT, CloseWith<&::VariantClear>>; ///< clears a VARIANT that it does not own

/// The module that contains the code or object at an address; it stays loaded while the handle exists.
inline ModuleHandle ModuleOf(const void* address)
{
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, static_cast<LPCWSTR>(address), &module);
    return ModuleHandle(module);
}

/// The full path of a loaded module's file; this program's for null.
inline std::wstring PathOf(HMODULE module)
{
    std::wstring path(32768, L'\0');
    path.resize(::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

/// The function `name` of a loaded module as the given pointer type; null when the module does not export it.
template <typename Function>
Function FindFunction(HMODULE module, const char* name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

} // namespace orvel::shared::enumeration
