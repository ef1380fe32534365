// docs/inventory-properties.md has the table of the properties: which vendor's cards have them, and from which sources.

#include <doctest/doctest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "model/Names.h"
#include "model/Properties.h"

namespace orvel::shared::inventory {

namespace {

struct Vendor {
    const char* name;
    unsigned long long id;
};

/// The last one has no sources of its own, as all vendors that are not in the table.
constexpr Vendor columns[] = {{"Intel", 0x8086}, {"NVIDIA", nvidiaVendorId}, {"AMD", amdVendorId}, {"others", 0x5143}};

std::string SourcesOf(const PropertyRow& row, unsigned long long vendorId)
{
    std::string sources;
    for (const auto source : row.sources) {
        if (IsForVendor(row.property, source, vendorId)) {
            sources += (sources.empty() ? "" : ", ") + std::string(SourceText(source));
        }
    }
    return sources.empty() ? "–" : sources;
}

std::string Table()
{
    std::string text =
        "# Properties of the inventory\n\n"
        "Each cell has the sources that can have the property for a card of this vendor, in the order in which they "
        "are tried.\nA dash means that there is none: the value is `unsupported`. `nvml`, `nvapi` and `adlx` are "
        "asked at depth `drivers`, `dxgi` and\n`dxcore` from depth `graphics` on.\n\n"
        "| Property | Type | Description |";
    std::string line = "\n|---|---|---|";
    for (const auto& vendor : columns) {
        text += std::string(" ") + vendor.name + " |";
        line += "---|";
    }
    text += line + "\n";
    for (std::size_t index = 0; index < propertyCount; ++index) {
        const auto& row = RowOf(static_cast<Property>(index));
        const std::string unit = row.unit;
        text += "| `" + std::string(row.name) + "` | " + TypeText(row.type) + (unit.empty() ? "" : ", " + unit) + " | " +
                row.description + " |";
        for (const auto& vendor : columns) {
            text += " " + SourcesOf(row, vendor.id) + " |";
        }
        text += "\n";
    }
    return text;
}

TEST_CASE("The document of the properties has the table's sources for each vendor")
{
    const auto path = std::filesystem::path(u8"" ORVEL_DOCUMENTS) / "inventory-properties.md";
    if (std::getenv("ORVEL_WRITE_DOCUMENTS")) { // after a reviewed change of the table
        std::ofstream(path, std::ios::binary) << Table();
    }
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    CHECK(text.str() == Table());
}

} // namespace

} // namespace orvel::shared::inventory
