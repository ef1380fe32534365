#include "LikelyCause.h"

#include <optional>

#include "SystemChecks.h"
#include "formulas/MemoryBandwidth.h"
#include "formulas/RunFailure.h"
#include "formulas/StatusNames.h"
#include "platform/OpenCLWrapper.h"

namespace orvel::tools {

namespace {

using namespace shared::enumeration;

constexpr char intelVendor[] = "8086"; // WMI's and OpenCL's text for it

std::string Quoted(const std::string& text)
{
    return "\"" + text + "\"";
}

std::string MemoryCause(bool (*isKnown)(uint32_t), const char* what)
{
    const uint32_t type = MemoryType();
    return isKnown(type) ? ""
                         : "the memory has SMBIOS type " + std::to_string(type) + ", for which the library has no " + what;
}

std::string OpenClCause()
{
    const std::string missing = IntelAdaptersWithoutOpenCl();
    return missing.empty() ? "" : "OpenCL lists no Intel device with WMI's name: " + missing;
}

std::string DllCause(const char* dll)
{
    const Finding finding = FindDll(dll);
    return finding.IsFound ? "" : std::string(dll) + " cannot be loaded, " + finding.Detail;
}

std::string NvapiCause()
{
    const std::string missing = DllCause("nvapi64.dll");
    if (NamesOfAdapters("10DE").empty()) {
        return "WMI lists no NVIDIA card";
    }
    return missing.empty() ? "" : "WMI lists an NVIDIA card, but " + missing;
}

std::string NvmlCause()
{
    const Finding finding = FindDll("nvml.dll");
    return finding.IsFound ? "nvml.dll is " + finding.Path : "nvml.dll cannot be loaded, " + finding.Detail;
}

/// The cause that a check on this computer finds; "" for none.
std::string SeenCause(RunFailure failure)
{
    switch (failure) {
    case RunFailure::NoTransferFactor:
        return MemoryCause(HasTransferFactor, "transfer factor");
    case RunFailure::UnnamedCode:
        return MemoryCause(HasMemoryName, "name");
    case RunFailure::InvalidStod:
    case RunFailure::InvalidStof:
        return OpenClCause();
    case RunFailure::NoOpenCl:
        return DllCause("opencl.dll");
    case RunFailure::NoNvapi:
        return NvapiCause();
    case RunFailure::NoNvml:
        return NvmlCause();
    default:
        return {};
    }
}

} // namespace

bool HasTransferFactor(uint32_t memoryType)
{
    return TransferFactorOrZero(memoryType) != 0;
}

bool HasMemoryName(uint32_t memoryType)
{
    return !MemoryTypeNameOrEmpty(memoryType).empty();
}

std::string IntelAdaptersWithoutOpenCl()
{
    std::optional<OpenCLWrapper> opencl;
    if (FindDll("opencl.dll").IsFound) {
        opencl.emplace();
    }
    std::string missing;
    for (const std::string& name : NamesOfAdapters(intelVendor)) {
        if (!opencl || opencl->GetDeviceInfoByName(name, CL_DEVICE_NAME, intelVendor).empty()) {
            missing += (missing.empty() ? "" : ", ") + Quoted(name);
        }
    }
    return missing;
}

std::string LikelyCause(const std::string& message, const std::string& lastWarning)
{
    if (!lastWarning.empty()) { // the run itself reported it; a check made now is less certain
        return "the last warning before it: " + Quoted(lastWarning);
    }
    const auto reported = FindRunFailure(message);
    return reported ? SeenCause(reported->Failure) : "";
}

} // namespace orvel::tools
