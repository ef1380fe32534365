#include <doctest/doctest.h>

#include <algorithm>
#include <set>
#include <string>

#include "model/Properties.h"

namespace orvel::shared::inventory {

namespace {

using P = Property;

TEST_CASE("Every property has a unique name, a description and a source")
{
    std::set<std::string> names;
    for (std::size_t index = 0; index < propertyCount; ++index) {
        const auto& row = RowOf(static_cast<Property>(index));
        CAPTURE(row.name);
        CHECK(names.insert(row.name).second);
        CHECK(FindProperty(row.name) == row.property);
        CHECK(std::string(row.description) != "");
        CHECK(row.sources.begin() != row.sources.end());
    }
    CHECK(names.size() == 46);
    CHECK_FALSE(FindProperty("nothing"));
    CHECK_FALSE(FindProperty("Name"));
}

TEST_CASE("The unit in a property's name is the unit in its row")
{
    for (std::size_t index = 0; index < propertyCount; ++index) {
        const auto& row = RowOf(static_cast<Property>(index));
        const std::string name = row.name;
        CAPTURE(name);
        CHECK(name.ends_with("_bytes") == (std::string(row.unit) == "bytes"));
        CHECK(name.ends_with("_mhz") == (std::string(row.unit) == "MHz"));
        CHECK(name.ends_with("_bits") == (std::string(row.unit) == "bits"));
        CHECK(name.ends_with("_celsius") == (std::string(row.unit) == "Celsius"));
    }
}

TEST_CASE("A vendor's own sources are used for the vendor's cards only")
{
    constexpr unsigned nvidia = 0x10DE, amd = 0x1002, intel = 0x8086;
    CHECK(IsForVendor(P::BoardMemoryBytes, Source::Nvml, nvidia));
    CHECK_FALSE(IsForVendor(P::BoardMemoryBytes, Source::Adlx, nvidia));
    CHECK(IsForVendor(P::BoardMemoryBytes, Source::Adlx, amd));
    CHECK(IsForVendor(P::BoardMemoryBytes, Source::Adlx, 0x1022));
    CHECK_FALSE(IsForVendor(P::BoardMemoryBytes, Source::Nvml, amd));
    CHECK_FALSE(IsForVendor(P::BoardMemoryBytes, Source::Nvml, intel));
    CHECK_FALSE(IsForVendor(P::BoardMemoryBytes, Source::Adlx, intel));
    CHECK(IsForVendor(P::Integrated, Source::DxCore, intel));
    CHECK(IsForVendor(P::BiosVersion, Source::DriverKey, intel));
}

TEST_CASE("Only NVIDIA's and AMD's versions have a marketing form")
{
    constexpr unsigned nvidia = 0x10DE, amd = 0x1002, intel = 0x8086;
    CHECK(IsForVendor(P::DriverVersionMarketing, Source::SetupApi, nvidia));
    CHECK(IsForVendor(P::DriverVersionMarketing, Source::DriverKey, nvidia));
    CHECK(IsForVendor(P::DriverVersionMarketing, Source::DriverKey, amd));
    CHECK_FALSE(IsForVendor(P::DriverVersionMarketing, Source::SetupApi, amd));
    CHECK_FALSE(IsForVendor(P::DriverVersionMarketing, Source::DriverKey, intel));
    CHECK_FALSE(IsForAnyVendor(P::DriverVersionMarketing, Source::DriverKey));
}

} // namespace

} // namespace orvel::shared::inventory
