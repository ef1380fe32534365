// For any text as a card's name, converter type or memory size, the code returns the result of the equivalent regular
// expressions.

#include <regex>
#include <stdexcept>

#include "Promised.h"
#include "vendors/intel/IntelTexts.h"

using namespace orvel::fuzz;
using namespace orvel::shared::enumeration;

namespace {

std::string ChipName(const std::string& cardName)
{
    static const std::regex chipName("[-a-zA-Z0-9_. ]+[0-9]+");
    std::string name = cardName;
    for (const char* word : {"Intel", "intel", "INTEL", "(r)", "(R)"}) {
        name = std::regex_replace(name, std::regex(word), "");
    }
    return std::regex_match(name, chipName) ? name : cardName;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    static const std::regex gpuType("[a-zA-Z][a-zA-Z0-9 ]{1,}");
    const std::string text = Text(data, size);
    Require(IntelChipName(text) == ChipName(text), "the regular expressions' chip name");
    Require(IntelGpuType(text) == (std::regex_match(text, gpuType) ? text : std::string()), "the kind");
    std::string mebibytes;
    const bool isSize =
        Succeeds([&] { mebibytes = IntelMemorySize(text); }, {{typeid(std::invalid_argument), "invalid stoll argument"},
                                                              {typeid(std::out_of_range), "stoll argument out of range"}});
    Require(!isSize || mebibytes.find_first_not_of("-0123456789") == std::string::npos, "a number, or nothing");
    return 0;
}
