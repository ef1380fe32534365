#include "FloorSystem.h"

#include <dwmapi.h>
#include <wrl/client.h>

#include "platform/Dxgi.h"
#include "platform/Handles.h"

namespace orvel::bench {

namespace {

using Microsoft::WRL::ComPtr;
using shared::enumeration::idxgiFactoryId;

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
