// For any text as a location, the search finds the same bus as the equivalent regular expression.

#include <regex>

#include "Promised.h"
#include "formulas/LocationText.h"

using namespace orvel::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    static const std::regex location("([0-9]+),[0-9]+,[0-9]+");
    const std::string text = Text(data, size);
    std::smatch match;
    const std::string expected = std::regex_search(text, match, location) ? match[1].str() : std::string();
    Require(orvel::shared::enumeration::BusDigits(text) == expected, "the regular expression's bus");
    return 0;
}
