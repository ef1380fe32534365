#include "Messages.h"

#include <cstdio>
#include <optional>
#include <string_view>

#include "formulas/RunFailure.h"

namespace orvel::tools {

namespace {

using shared::enumeration::RunFailure;

struct Explanation {
    RunFailure Failure;
    const char* Meaning;
    std::optional<int> Status = {}; ///< the only status that it explains; none for any
};

// The entry for a single status precedes the entry for any status.
constexpr Explanation explanations[] = {
    {RunFailure::UnnamedCode, "Windows or the driver reported an unknown code: an adapter without availability in WMI (a "
                              "disabled or incompletely installed device, or an NVIDIA card that WMI does not list), or a "
                              "memory type newer than the table, such as DDR5."},
    {RunFailure::NoTransferFactor, "The machine's memory has a type without a known transfer rate, usually DDR5 or LPDDR5."},
    {RunFailure::InvalidStod, "OpenCL did not report the card's clock: no OpenCL driver is installed, or OpenCL and Windows "
                              "use different names for the card."},
    {RunFailure::InvalidStof, "OpenCL did not report the card's clock in a later query; the OpenCL driver is broken."},
    {RunFailure::InvalidStoi, "A number is missing: WMI does not report the adapter's memory (AdapterRAM) or identifiers "
                              "(PNPDeviceID), DXGI is not available (no display, or a remote session without one), the "
                              "registry's location text has no bus number, or OpenCL does not report a count."},
    {RunFailure::InvalidStoul, "The adapter's subsystem identifier is not a hexadecimal number."},
    {RunFailure::InvalidStoll, "WMI returns the adapter's memory (AdapterRAM) as a text that is not a number."},
    {RunFailure::StoiOutOfRange, "A number in the registry, in WMI or from OpenCL is implausibly large."},
    {RunFailure::StoulOutOfRange, "The adapter's subsystem identifier has too many digits."},
    {RunFailure::StollOutOfRange, "WMI reports an impossible amount of memory for the adapter."},
    {RunFailure::StofOutOfRange, "OpenCL reports a clock that is implausibly large."},
    {RunFailure::StodOutOfRange, "OpenCL reports a clock that is implausibly large."},
    {RunFailure::TextTooShort, "The adapter's Plug and Play identifier is too short for a PCI device."},
    {RunFailure::NoOpenCl, "The OpenCL loader (opencl.dll) is missing; every vendor's display driver provides it, and no "
                           "vendor's cards are enumerated without it."},
    {RunFailure::NoNvapi, "No NVIDIA driver is installed (nvapi64.dll is missing); this is normal without an NVIDIA card.",
     -2},
    {RunFailure::NoNvapi, "NVIDIA's driver is installed but does not start; it may be broken or being updated."},
    {RunFailure::NoPhysicalGpus, "NVIDIA's driver finds no usable card; a card may be switched off."},
    {RunFailure::NoNvml, "NVIDIA's management library reports that no driver is loaded; it may be the substitute nvml.dll.",
     9},
    {RunFailure::NoNvml, "NVIDIA's management library is installed but does not start."},
    {RunFailure::NvmlStaysOpen, "NVIDIA's management library failed to count its devices and then failed to shut down."},
    {RunFailure::NoMemory, "Memory is exhausted."},
};

struct LineExplanation {
    std::string_view Message;
    const char* Meaning;
};

// The lines after which a run returns without an exception.
constexpr LineExplanation lineExplanations[] = {
    {"Failed to get SerialNumber from Win32_Bios",
     "WMI is not available: its service does not run, access is denied, or COM is not initialised."},
    {"Failed to get Win32_VideoController fields from WMI", "The WMI query for the graphics adapters failed."},
    {"Failed to get 3DSettings services",
     "AMD's driver interfaces (ADL, ADLX) are missing or do not start; this is normal without an AMD card."},
};

} // namespace

std::string ExplainMessage(const std::string& message)
{
    const auto reported = shared::enumeration::FindRunFailure(message);
    for (const Explanation& explanation : explanations) {
        if (reported && explanation.Failure == reported->Failure &&
            (!explanation.Status || explanation.Status == reported->Status)) {
            return explanation.Meaning;
        }
    }
    return {};
}

std::string ExplainLine(const std::string& message)
{
    for (const LineExplanation& explanation : lineExplanations) {
        if (explanation.Message == message) {
            return explanation.Meaning;
        }
    }
    return {};
}

std::string ExplainStatus(long status)
{
    char code[16];
    std::snprintf(code, sizeof(code), "0x%08lX", static_cast<unsigned long>(status));
    return std::string("The WMI query for the memory modules failed (status ") + code +
           "); the WMI service or its repository is damaged, or access is denied, and the remaining vendors were skipped.";
}

} // namespace orvel::tools
