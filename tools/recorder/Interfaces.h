#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Answers.h"
#include "WatchedThread.h"

// One function for each interface: it makes the calls of an enumeration and of an inventory, and returns what they answered
// as the interface's section of a machine file; nothing where the computer does not have the interface. Those that an
// inventory calls run on a thread that is given up when it makes no progress for so many milliseconds.

namespace orvel::recorder {

std::optional<Json> RecordDwm();
std::optional<Json> RecordOpenCl();

/// The keys and values of HKEY_LOCAL_MACHINE that an enumeration reads.
Json RecordRegistry();

struct PnpRecording {
    Json Section = Json::object();
    Json DriverKeys = Json::object(); ///< for the section of the registry
};

/// The display devices of SetupAPI and their drivers' registry keys.
Recorded<PnpRecording> RecordPnp(uint32_t patienceMilliseconds);

Recorded<std::optional<Json>> RecordDisplays(uint32_t patienceMilliseconds);
Recorded<std::optional<Json>> RecordDxgi(uint32_t patienceMilliseconds);
Recorded<std::optional<Json>> RecordDxCore(uint32_t patienceMilliseconds);

struct NvapiRecording {
    std::optional<Json> Section;
    /// The PCI device of the first GPU, which WMI is asked for; "" where NVAPI refuses it, nothing without a GPU.
    std::optional<std::string> DeviceId;
};

Recorded<NvapiRecording> RecordNvapi(uint32_t patienceMilliseconds);

Recorded<std::optional<Json>> RecordNvml(uint32_t patienceMilliseconds);

struct AmdRecording {
    std::optional<Json> Adl;
    std::optional<Json> Adlx;
    std::vector<std::string> Names; ///< of ADLX's GPUs, which WMI is asked for
};

/// ADLX works in ADL's context, and gives the numbers of ADL's adapters. An inventory uses ADL only from Windows' own
/// folder.
Recorded<AmdRecording> RecordAmd(uint32_t patienceMilliseconds, bool isAdlInSystemFolder);

/// What the other interfaces have said of the GPUs: an enumeration's queries depend on it.
struct KnownGpus {
    std::vector<std::string> OpenClNames;      ///< of devices that answer what Intel's run asks first
    std::optional<std::string> NvidiaDeviceId; ///< none without a GPU of NVIDIA
    std::vector<std::string> AmdNames;
};

Json RecordWmi(const KnownGpus& gpus);

} // namespace orvel::recorder
