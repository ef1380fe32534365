// Any text as a Plug and Play identifier is cut at the fixed positions, or refused as too short.

#include <stdexcept>

#include "Promised.h"
#include "formulas/PnpDeviceId.h"

using namespace orvel::fuzz;
using namespace orvel::shared::enumeration;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    const std::string text = Text(data, size);
    const Promise tooShort{typeid(std::out_of_range), "invalid string position"};
    PnpDeviceId id;
    const bool isCut = Succeeds([&] { id = ParsePnpDeviceId(text); }, {tooShort});
    std::string subsystem;
    const bool hasSubsystem = Succeeds([&] { subsystem = SubsystemOf(text); }, {tooShort});
    Require(isCut == (text.size() >= 33) && hasSubsystem == isCut, "33 characters are enough, and needed");
    if (isCut) {
        Require(id.Vendor == text.substr(8, 4) && id.Device == text.substr(17, 4), "vendor and device");
        Require(id.Subsystem == text.substr(29, 4) + "-" + text.substr(33, 4), "subsystem");
        Require(subsystem == id.Subsystem, "the subsystem alone is the same");
    }
    return 0;
}
