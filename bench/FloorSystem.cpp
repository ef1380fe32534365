#include "FloorSystem.h"

#include <dwmapi.h>
#include <dxgi.h>
#include <wrl/client.h>

#include "platform/Handles.h"

namespace orvel::bench {

namespace {

using Microsoft::WRL::ComPtr;

constexpr GUID idxgiFactoryId = {0x7B7166EC, 0x21C7, 0x44AE, {0xB2, 0x1A, 0xC9, 0xAE, 0x32, 0x1A, 0xE3, 0x69}};

decltype(&::CreateDXGIFactory) createFactory = nullptr;
decltype(&::DwmIsCompositionEnabled) isCompositionEnabled = nullptr;

} // namespace

void PrepareSystemFloor()
{
    using shared::enumeration::FindFunction;
    createFactory = FindFunction<decltype(createFactory)>(::LoadLibraryW(L"dxgi.dll"), "CreateDXGIFactory");
    isCompositionEnabled =
        FindFunction<decltype(isCompositionEnabled)>(::LoadLibraryW(L"dwmapi.dll"), "DwmIsCompositionEnabled");
}

void ReadSharedMemory()
{
    ComPtr<IDXGIFactory> factory;
    createFactory(idxgiFactoryId, reinterpret_cast<void**>(factory.GetAddressOf()));
    for (UINT index = 0;; ++index) {
        ComPtr<IDXGIAdapter> adapter;
        if (factory->EnumAdapters(index, adapter.GetAddressOf()) == DXGI_ERROR_NOT_FOUND) {
            return;
        }
        DXGI_ADAPTER_DESC description;
        adapter->GetDesc(&description);
    }
}

void ReadComposition()
{
    OSVERSIONINFOEXW version{};
    version.dwOSVersionInfoSize = sizeof(version);
    version.dwMajorVersion = 6;
    ::VerifyVersionInfoW(&version, VER_MAJORVERSION, ::VerSetConditionMask(0, VER_MAJORVERSION, VER_GREATER_EQUAL));
    BOOL enabled = FALSE;
    isCompositionEnabled(&enabled);
}

} // namespace orvel::bench
