#include "Messages.h"

#include <cstdio>
#include <optional>

#include "formulas/RunFailure.h"

namespace orvel::tools {

namespace {

using shared::enumeration::RunFailure;

struct Explanation {
    RunFailure Failure;
    const char* Meaning;
    std::optional<int> Status = {}; ///< the only one that it explains, if any
};

// Before the explanation of any status there may be one of a single status.
constexpr Explanation explanations[] = {
    {RunFailure::UnnamedCode, "Windows or the driver reported a code that has no name: an adapter whose availability WMI "
                              "does not tell (a disabled or half-installed device, or one of NVIDIA's that WMI does not "
                              "list), or a memory type newer than the table, such as DDR5."},
    {RunFailure::NoTransferFactor,
     "The machine's memory has a type for which no transfer rate is known. The usual cause is DDR5 or LPDDR5 memory."},
    {RunFailure::InvalidStod, "OpenCL did not tell the clock of the card: no OpenCL driver is installed, or it calls the "
                              "card by another name than Windows does."},
    {RunFailure::InvalidStof, "OpenCL stopped telling the clock of the card on the way; the OpenCL driver is broken."},
    {RunFailure::InvalidStoi, "A number is missing: WMI does not tell the adapter's memory (AdapterRAM) or identifiers "
                              "(PNPDeviceID), DXGI cannot be asked (no display, or a remote session without one), the "
                              "registry's location text has no bus number, or OpenCL does not tell a count."},
    {RunFailure::InvalidStoul, "The adapter's subsystem identifier is no hexadecimal number."},
    {RunFailure::InvalidStoll, "WMI tells the adapter's memory (AdapterRAM) as a text that is no number."},
    {RunFailure::StoiOutOfRange, "A number in the registry, in WMI or from OpenCL is too large to be true."},
    {RunFailure::StoulOutOfRange, "The adapter's subsystem identifier has too many digits."},
    {RunFailure::StollOutOfRange, "WMI tells more memory for the adapter than there can be."},
    {RunFailure::StofOutOfRange, "OpenCL tells a clock that is too large to be true."},
    {RunFailure::StodOutOfRange, "OpenCL tells a clock that is too large to be true."},
    {RunFailure::TextTooShort, "The adapter's Plug and Play identifier is shorter than a PCI device's always is."},
    {RunFailure::NoOpenCl,
     "The OpenCL loader is missing. Every vendor's display driver brings it; without it no vendor's cards are enumerated."},
    {RunFailure::NoNvapi,
     "There is no NVIDIA driver on this machine (nvapi64.dll is missing). That is as it should be without an NVIDIA card.",
     -2},
    {RunFailure::NoNvapi, "NVIDIA's driver is installed but does not start; it may be broken or being updated."},
    {RunFailure::NoPhysicalGpus, "NVIDIA's driver finds no card that it can drive, such as one that is switched off."},
    {RunFailure::NoNvml, "NVIDIA's management library says that no driver is loaded. It may be the substitute nvml.dll.", 9},
    {RunFailure::NoNvml, "NVIDIA's management library is there but does not start."},
    {RunFailure::NvmlStaysOpen, "NVIDIA's management library could not count its devices and then did not end."},
    {RunFailure::NoMemory, "Memory is exhausted."},
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

std::string ExplainStatus(long status)
{
    char code[16];
    std::snprintf(code, sizeof(code), "0x%08lX", static_cast<unsigned long>(status));
    return std::string("WMI could not be asked for the machine's memory modules (status ") + code +
           "); the WMI service or its repository is damaged, or access is denied. The vendors that had not run yet were "
           "left out.";
}

} // namespace orvel::tools
