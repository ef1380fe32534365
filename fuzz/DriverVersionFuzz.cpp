// Any text as a Windows version of a driver: NVIDIA's version has the digits that the equivalent regular expression finds.

#include <regex>

#include "Promised.h"
#include "matching/DriverFacts.h"

using namespace orvel::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    static const std::regex version("[0-9]+\\.[0-9]+\\.[0-9]*([0-9])\\.([0-9]{1,4})");
    const std::string text = Text(data, size);
    std::smatch match;
    std::optional<std::string> expected;
    if (std::regex_match(text, match, version)) {
        const std::string digits = match[1].str() + std::string(4 - match[2].str().size(), '0') + match[2].str();
        expected = digits.substr(0, 3) + "." + digits.substr(3);
    }
    Require(orvel::shared::inventory::NvidiaDriverVersion(text) == expected, "the regular expression's digits");
    return 0;
}
