#pragma once

#include <cstdint>

#include <windows.h>

#include <wrl/client.h>

namespace orvel::shared::inventory {

/// What a call has returned, and its result. Null when it has failed, whatever it has written.
template <typename Interface>
struct Received {
    HRESULT result = S_OK;
    Microsoft::WRL::ComPtr<Interface> object;
};

/// Calls with the address of a pointer.
template <typename Interface, typename Call>
Received<Interface> Receive(Call call)
{
    Interface* object = nullptr;
    Received<Interface> received;
    received.result = call(&object);
    if (SUCCEEDED(received.result)) {
        *received.object.GetAddressOf() = object; // not Attach, to which MinGW's headers add a reference
    }
    return received;
}

/// A result as the code of a failure: the unsigned number that Windows' documents have.
inline int64_t CodeOf(HRESULT result)
{
    return static_cast<uint32_t>(result);
}

inline uint64_t NumberOf(const LUID& luid)
{
    return uint64_t{static_cast<uint32_t>(luid.HighPart)} << 32 | luid.LowPart;
}

} // namespace orvel::shared::inventory
