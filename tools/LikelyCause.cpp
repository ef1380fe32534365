#include "LikelyCause.h"

#include <optional>
#include <stdexcept>

#include "SystemChecks.h"
#include "formulas/MemoryBandwidth.h"
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
    return isKnown(type)
               ? ""
               : "the memory is of SMBIOS type " + std::to_string(type) + ", for which the library knows no " + what;
}

std::string OpenClCause()
{
    const std::string missing = IntelAdaptersWithoutOpenCl();
    return missing.empty() ? "" : "OpenCL lists no device of Intel's with WMI's name: " + missing;
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
        return "WMI lists no card of NVIDIA's";
    }
    return missing.empty() ? "" : "WMI lists a card of NVIDIA's, but " + missing;
}

std::string NvmlCause()
{
    const Finding finding = FindDll("nvml.dll");
    return finding.IsFound ? "nvml.dll is " + finding.Path : "nvml.dll cannot be loaded, " + finding.Detail;
}

/// The cause that can be looked for here; "" where there is none.
std::string SeenCause(const std::string& message)
{
    const auto begins = [&message](const char* text) { return message.starts_with(text); };
    if (begins("Argument out of range")) {
        return MemoryCause(HasTransferFactor, "transfer factor");
    }
    if (begins("invalid unordered_map")) {
        return MemoryCause(HasMemoryName, "name");
    }
    if (begins("invalid stod") || begins("invalid stof")) {
        return OpenClCause();
    }
    if (begins("Failed to load opencl.dll")) {
        return DllCause("opencl.dll");
    }
    if (begins("Failed to initialize NVAPI")) {
        return NvapiCause();
    }
    return begins("Failed to initialize NVML") ? NvmlCause() : "";
}

} // namespace

bool HasTransferFactor(uint32_t memoryType)
{
    try {
        TransferFactor(memoryType);
        return true;
    } catch (const std::runtime_error&) {
        return false;
    }
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
    // A warning tells what this run could not read; what is seen now may have been so all along.
    return lastWarning.empty() ? SeenCause(message) : "the last warning before it is " + Quoted(lastWarning);
}

} // namespace orvel::tools
