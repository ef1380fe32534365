#include "Messages.h"

#include <cstdio>

namespace orvel::tools {

namespace {

struct Explanation {
    const char* Begins; ///< how the message begins
    const char* Meaning;
};

constexpr Explanation explanations[] = {
    {"invalid unordered_map<K, T> key", "Windows or the driver reported a code that has no name: an adapter whose "
                                        "availability WMI does not tell (a disabled or half-installed device, or one of "
                                        "NVIDIA's that WMI does not list), or a memory type newer than the table, such as "
                                        "DDR5."},
    {"Argument out of range",
     "The machine's memory has a type for which no transfer rate is known. The usual cause is DDR5 or LPDDR5 memory."},
    {"invalid stod argument",
     "OpenCL did not tell the clock of the card: no OpenCL driver is installed, or it calls the card by another name than "
     "Windows does."},
    {"invalid stof argument", "OpenCL stopped telling the clock of the card on the way; the OpenCL driver is broken."},
    {"invalid stoi argument",
     "A number is missing: WMI does not tell the adapter's memory (AdapterRAM) or identifiers (PNPDeviceID), DXGI cannot be "
     "asked (no display, or a remote session without one), the registry's location text has no bus number, or OpenCL does "
     "not "
     "tell a count."},
    {"invalid stoul argument", "The adapter's subsystem identifier is no hexadecimal number."},
    {"invalid stoll argument", "WMI tells the adapter's memory (AdapterRAM) as a text that is no number."},
    {"stoi argument out of range", "A number in the registry, in WMI or from OpenCL is too large to be true."},
    {"stoul argument out of range", "The adapter's subsystem identifier has too many digits."},
    {"stoll argument out of range", "WMI tells more memory for the adapter than there can be."},
    {"stof argument out of range", "OpenCL tells a clock that is too large to be true."},
    {"stod argument out of range", "OpenCL tells a clock that is too large to be true."},
    {"invalid string position", "The adapter's Plug and Play identifier is shorter than a PCI device's always is."},
    {"Failed to load opencl.dll",
     "The OpenCL loader is missing. Every vendor's display driver brings it; without it no vendor's cards are enumerated."},
    {"Failed to initialize NVAPI. Status code: -2",
     "There is no NVIDIA driver on this machine (nvapi64.dll is missing). That is as it should be without an NVIDIA card."},
    {"Failed to initialize NVAPI", "NVIDIA's driver is installed but does not start; it may be broken or being updated."},
    {"Failed to enumerate physical GPUs",
     "NVIDIA's driver finds no card that it can drive, such as one that is switched off."},
    {"Failed to initialize NVML. Status code: 9",
     "NVIDIA's management library says that no driver is loaded. It may be the substitute nvml.dll."},
    {"Failed to initialize NVML", "NVIDIA's management library is there but does not start."},
    {"Failed to shutdown NVML", "NVIDIA's management library could not count its devices and then did not end."},
    {"bad allocation", "Memory is exhausted."},
};

} // namespace

std::string ExplainMessage(const std::string& message)
{
    for (const Explanation& explanation : explanations) {
        if (message.starts_with(explanation.Begins)) {
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
