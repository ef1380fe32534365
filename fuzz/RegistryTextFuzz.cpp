// Any bytes are read as a registry text up to the first NUL; any text is compared as a driver's matching device id.

#include <cstring>

#include "Promised.h"
#include "formulas/PnpDeviceId.h"
#include "formulas/RegistryText.h"

using namespace orvel::fuzz;
using namespace orvel::shared::enumeration;

namespace {

void CheckText(const uint8_t* data, std::size_t size)
{
    const std::u16string text = RegistryText(data, size);
    Require(text.size() <= size / 2, "no more units than data");
    Require(text.find(u'\0') == std::u16string::npos, "no NUL");
    Require(text.empty() || std::memcmp(text.data(), data, text.size() * 2) == 0, "the data's own units");
    const bool isWhole = text.size() == size / 2;
    Require(isWhole || (data[text.size() * 2] == 0 && data[text.size() * 2 + 1] == 0), "up to the first NUL");
}

} // namespace

/// The first eight bytes are the vendor and device identifiers, the rest is the matching device id.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    CheckText(data, size);
    if (size < 8) {
        return 0;
    }
    const std::string vendor = Text(data, 4);
    const std::string device = Text(data + 4, 4);
    const std::string id = Text(data + 8, size - 8);
    const bool expected = id.size() >= 21 && id.substr(8, 4) == vendor && id.substr(17, 4) == device;
    Require(IsMatchingDevice(id, {vendor, device, ""}) == expected, "both identifiers at their places");
    Require(!IsMatchingDevice(id, {"", device, ""}), "an empty identifier names nothing");
    return 0;
}
