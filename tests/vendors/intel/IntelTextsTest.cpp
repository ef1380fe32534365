#include "vendors/intel/IntelTexts.h"

#include <random>
#include <regex>
#include <stdexcept>

#include <doctest/doctest.h>

using namespace orvel::shared::enumeration;

TEST_CASE("A card name whose cleaned form ends in a digit becomes the chip name, with its spaces")
{
    CHECK(IntelChipName("Intel HD Graphics 4000") == " HD Gaphics 4000");
    CHECK(IntelChipName("INTEL intel-Iris_6.1 55") == " -Iis_6.1 55");
}

TEST_CASE("Cleaning a name removes every letter r and R, not only the trademark sign")
{
    CHECK(IntelChipName("Red River 12") == "ed ive 12");
}

TEST_CASE("A card name with parentheses is the chip name unchanged")
{
    CHECK(IntelChipName("Intel(R) UHD Graphics 620") == "Intel(R) UHD Graphics 620");
    CHECK(IntelChipName("Intel(R) Arc(TM) A770 Graphics") == "Intel(R) Arc(TM) A770 Graphics");
}

TEST_CASE("A card name that does not match the pattern is returned unchanged")
{
    for (const char* name :
         {"", "Intel HD Graphics", "Intel", "Intel 5", "7", "Intel HD\n4000", "Intel HD/4000", "Ünit 12"}) {
        CAPTURE(name);
        const bool fits = std::string(name) == "Intel 5";
        CHECK(IntelChipName(name) == (fits ? " 5" : name));
    }
}

TEST_CASE("Chip names are those that the equivalent regular expressions produce")
{
    std::mt19937 random(4000);
    const std::regex pattern("^([a-zA-Z0-9-_\\. ]+[0-9]+)$");
    const char* pieces[] = {"Intel", "intel", "INTEL", "(r)", "(R)", " ", "HD",      "4000",
                            "Gr",    "(",     "-",     "_",   ".",   "5", "InIntel", "tel"};
    for (int round = 0; round < 1000; ++round) {
        std::string name;
        for (size_t count = random() % 6; count > 0; --count) {
            name += pieces[random() % std::size(pieces)];
        }
        std::string cleaned = name;
        for (const char* word : {"Intel", "intel", "INTEL", "(r)", "(R)"}) {
            cleaned = std::regex_replace(cleaned, std::regex(word), "");
        }
        CAPTURE(name);
        CHECK(IntelChipName(name) == (std::regex_search(cleaned, pattern) ? cleaned : name));
    }
}

TEST_CASE("The GPU type is kept if it is a word of at least two characters")
{
    CHECK(IntelGpuType("Internal") == "Internal");
    CHECK(IntelGpuType("Integrated RAMDAC 2") == "Integrated RAMDAC 2");
    CHECK(IntelGpuType("A1") == "A1");
    for (const char* text : {"", "A", "1A", " Internal", "Internal DAC(400MHz)", "Int-ernal"}) {
        CAPTURE(text);
        CHECK(IntelGpuType(text) == "");
    }
}

TEST_CASE("The memory size counts whole mebibytes of the adapter's memory")
{
    CHECK(IntelMemorySize("1073741824") == "1024");
    CHECK(IntelMemorySize("4293918720") == "4095");
    CHECK(IntelMemorySize("1048575") == "0");
    CHECK(IntelMemorySize("0") == "");
    CHECK(IntelMemorySize("-1048576") == "");
    // 2^31 mebibytes and more wrap to a negative 32-bit number
    CHECK(IntelMemorySize("2251799813685248") == "-2147483648");
    CHECK_THROWS_WITH_AS(IntelMemorySize(""), "invalid stoll argument", std::invalid_argument);
    CHECK_THROWS_WITH_AS(IntelMemorySize("99999999999999999999"), "stoll argument out of range", std::out_of_range);
}
