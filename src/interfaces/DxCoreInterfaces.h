#pragma once

// The parts of DXCore that are used here, with their published names and in their published places; mingw-w64 does not
// declare them. They are not in an unnamed namespace: the compiler would see that nothing here implements them, and take
// every call for one of a pure function.

#include <cstddef>
#include <cstdint>

#include <objbase.h>

namespace orvel::shared::enumeration {

enum class DXCoreAdapterProperty : uint32_t { InstanceLuid = 0, IsIntegrated = 12 };

struct IDXCoreAdapter : IUnknown {
    virtual bool STDMETHODCALLTYPE IsValid() = 0;
    virtual bool STDMETHODCALLTYPE IsAttributeSupported(const GUID& attribute) = 0;
    virtual bool STDMETHODCALLTYPE IsPropertySupported(DXCoreAdapterProperty property) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetProperty(DXCoreAdapterProperty property, size_t bytes, void* data) = 0;
};

struct IDXCoreAdapterList : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetAdapter(uint32_t index, const GUID& interfaceId, void** adapter) = 0;
    virtual uint32_t STDMETHODCALLTYPE GetAdapterCount() = 0;
};

struct IDXCoreAdapterFactory : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE CreateAdapterList(uint32_t count, const GUID* attributes, const GUID& interfaceId,
                                                        void** list) = 0;
};

constexpr GUID dxCoreFactoryId = {0x78ee5945, 0xc36e, 0x4b13, {0xa6, 0x69, 0x00, 0x5d, 0xd1, 0x1c, 0x0f, 0x06}};
constexpr GUID dxCoreListId = {0x526c7776, 0x40e9, 0x459b, {0xb7, 0x11, 0xf3, 0x2a, 0xd7, 0x6d, 0xfc, 0x28}};
constexpr GUID dxCoreAdapterId = {0xf0db4c7f, 0xfe5a, 0x42a2, {0xbd, 0x62, 0xf2, 0xa6, 0xcf, 0x6f, 0xc8, 0x3e}};

// What an adapter can do: DXCORE_ADAPTER_ATTRIBUTE_D3D11_GRAPHICS, …_D3D12_CORE_COMPUTE.
constexpr GUID dxCoreD3D11Graphics = {0x8c47866b, 0x7583, 0x450d, {0xf0, 0xf0, 0x6b, 0xad, 0xa8, 0x95, 0xaf, 0x4b}};
constexpr GUID dxCoreD3D12CoreCompute = {0x248e2800, 0xa793, 0x4724, {0xab, 0xaa, 0x23, 0xa6, 0xde, 0x1b, 0xe0, 0x90}};

} // namespace orvel::shared::enumeration
