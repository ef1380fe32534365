#include "FieldSources.h"

#include <doctest/doctest.h>

#include "CardFields.h"
#include "vendors/Vendors.h"

using namespace orvel::tools;

TEST_CASE("Every property has a source for every vendor")
{
    for (const auto& vendor : orvel::shared::enumeration::vendors) {
        for (const CardField& field : cardFields) {
            CHECK_MESSAGE(SourceOf(field.Name, std::string(vendor.Manufacturer)).Source != std::string(),
                          vendor.Name << " " << field.Name);
        }
    }
}

TEST_CASE("An unknown manufacturer or property has no source")
{
    CHECK(SourceOf("DeviceId", "Somebody").Source == std::string());
    CHECK(SourceOf("DeviceId", "").Source == std::string());
    CHECK(SourceOf("Colour", "AMD").Source == std::string());
}

TEST_CASE("A vendor's own unit replaces the common unit")
{
    CHECK(SourceOf("MemorySize", "AMD").Unit == std::string("MiB"));
    CHECK(SourceOf("MemorySize", "Nvidia").Unit == std::string("bytes (low 32 bits)"));
    CHECK(SourceOf("MemoryBandwidth", "Intel").Unit == std::string());
    CHECK(SourceOf("CurrentResolution", "Intel").Unit == std::string());
}
