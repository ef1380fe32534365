#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <windows.h>

#include <dxgi.h>
#include <wbemidl.h>
#include <wrl/client.h>

#include "interfaces/AdlxInterfaces.h"

namespace orvel::bench {

using Word = uint64_t; ///< an argument, in a register or on the stack

struct Call;
struct Session;
using Action = void (*)(const Call&, Session&);

/// A recorded call, prepared for its repetition.
struct Call {
    Action Repeat = nullptr;
    std::string Text; ///< what follows the function's name
    std::wstring WideText;
    std::vector<Word> Numbers; ///< in the text

    // See OrvelEndRecording.
    std::optional<size_t> On;
    std::vector<size_t> Returns;
    Word Number = 0;
    std::vector<unsigned char> Input;

    // Where the replay keeps them.
    HMODULE* Module = nullptr;   ///< for the loader
    FARPROC* Function = nullptr; ///< of a driver
    FARPROC* LookedUp = nullptr; ///< the function that this call looks up
};

/// The handles and objects of one repetition, and the memory that calls write to.
struct Session {
    static constexpr size_t areaBytes = 4096;
    alignas(16) std::byte Areas[5][areaBytes];
    std::vector<Word> Outputs; ///< by their numbers in the recording
    Microsoft::WRL::ComPtr<IWbemServices> Services;
    std::vector<Microsoft::WRL::ComPtr<IUnknown>> Held;

    // The calls on these objects have no "on" in a recording: they are on the latest object.
    Microsoft::WRL::ComPtr<IDXGIFactory> Factory;
    Microsoft::WRL::ComPtr<IDXGIAdapter> Adapter;
    std::tuple<shared::enumeration::IADLXSystem*, shared::enumeration::IADLMapping*, shared::enumeration::IADLXGPUList*,
               shared::enumeration::IADLXGPU*, shared::enumeration::IADLXPerformanceMonitoringServices*,
               shared::enumeration::IADLXGPUMetricsSupport*, shared::enumeration::IADLXGPUMetrics*>
        Adlx;
};

/// How a call with this name, such as "wmi query", and this whole text is repeated; null if there is no way. isFunction: the
/// replay has the function's address.
Action FindAction(const std::string& name, const std::string& text, bool isFunction);

} // namespace orvel::bench
