#include <doctest/doctest.h>

#include "inventory/Documents.h"
#include "inventory/InventoryFormats.h"

using namespace orvel::tests;
using namespace orvel::tools;

namespace {

bool Has(const std::string& text, const std::string& line)
{
    return text.find("\n" + line + "\n") != std::string::npos;
}

} // namespace

TEST_CASE("A card's texts are labels of one metric, and its numbers gauges in base units")
{
    const std::string text = InventoryAsOpenMetrics(InventoryOf({WholeCard()}));
    const std::string card = "{card=\"PCI\\\\VEN_10DE&DEV_2684&SUBSYS_889B1043&REV_A1\\\\4&2283F625&0&0019\"} ";
    CHECK(text.starts_with("# TYPE orvel_graphics_cards gauge\n"));
    CHECK(Has(text, "orvel_graphics_cards 1"));
    CHECK(Has(text, "orvel_graphics_card_info{card=\"PCI\\\\VEN_10DE&DEV_2684&SUBSYS_889B1043&REV_A1\\\\4&2283F625&0&0019\","
                    "kind=\"pci\",name=\"NVIDIA GeForce RTX 4090\",vendor=\"NVIDIA\",driver_version=\"32.0.15.9672\","
                    "driver_version_marketing=\"596.72\",driver_date=\"2026-01-05\",driver_provider=\"NVIDIA\","
                    "driver_inf=\"oem12.inf\",service=\"nvlddmkm\",memory_type=\"GDDR6X\",compute_capability=\"8.9\","
                    "bios_version=\"95.02.3C.80.9A\",serial_number=\"0324518003361\","
                    "uuid=\"GPU-1f8a7f0e-0d5b-6a43-9b4c-0b6a7c1d2e3f\",vendor_id=\"10DE\",device_id=\"2684\","
                    "subsystem_id=\"889B1043\",revision=\"A1\"} 1"));
    CHECK(Has(text, "# TYPE orvel_graphics_card_dedicated_memory_bytes gauge\n"
                    "# UNIT orvel_graphics_card_dedicated_memory_bytes bytes\n"
                    "# HELP orvel_graphics_card_dedicated_memory_bytes video memory of the card\n"
                    "orvel_graphics_card_dedicated_memory_bytes" +
                        card + "25769803776"));
    CHECK(Has(text, "orvel_graphics_card_dedicated_system_memory_bytes" + card + "0")); // a known 0 is a value
    CHECK(Has(text, "orvel_graphics_card_core_clock_max_hertz" + card + "2520000000"));
    CHECK(Has(text, "orvel_graphics_card_memory_bus_width_bytes" + card + "48")); // of 384 bits
    CHECK(Has(text, "orvel_graphics_card_cores" + card + "16384"));
    CHECK(Has(text, "orvel_graphics_card_temperature_slowdown_celsius" + card + "88"));
    CHECK(Has(text, "orvel_graphics_card_integrated" + card + "0"));
    CHECK(Has(text, "orvel_graphics_card_ecc_enabled" + card + "1"));
    CHECK(Has(text, "orvel_graphics_card_power_state" + card + "0"));
    CHECK(Has(text, "orvel_graphics_card_problem_code" + card + "0"));
    CHECK(text.ends_with("\n# EOF\n"));
}

TEST_CASE("Identifiers and states are no metrics of their own")
{
    const std::string text = InventoryAsOpenMetrics(InventoryOf({WholeCard()}));
    for (const char* name : {"luid", "pci_bus", "vendor_id", "problem", "displays"}) {
        CAPTURE(name);
        CHECK(text.find("orvel_graphics_card_" + std::string(name) + "{") == std::string::npos);
    }
}

TEST_CASE("A value that is not known has no line")
{
    const Inventory inventory =
        InventoryOf({{{"instance_id", Known("A")}, {"core_count", Known(8)}},
                     {{"instance_id", Known("B")}, {"core_count", Unknown("not asked", nullptr, "depth")}}});
    const std::string text = InventoryAsOpenMetrics(inventory);
    CHECK(Has(text, "orvel_graphics_card_cores{card=\"A\"} 8"));
    CHECK(text.find("orvel_graphics_card_cores{card=\"B\"") == std::string::npos);
    CHECK(text.find("memory") == std::string::npos);
    const Inventory none = InventoryOf({{{"core_count", Unknown("not asked", nullptr, "depth")}}});
    CHECK(InventoryAsOpenMetrics(none).find("cores{") == std::string::npos);
}

TEST_CASE("A family names its type once, before the samples of all cards")
{
    const Inventory inventory = InventoryOf(
        {{{"instance_id", Known("A")}, {"core_count", Known(8)}}, {{"instance_id", Known("B")}, {"core_count", Known(9)}}});
    CHECK(Has(InventoryAsOpenMetrics(inventory), "# TYPE orvel_graphics_card_cores gauge\n"
                                                 "# HELP orvel_graphics_card_cores number of cores\n"
                                                 "orvel_graphics_card_cores{card=\"A\"} 8\n"
                                                 "orvel_graphics_card_cores{card=\"B\"} 9"));
}

TEST_CASE("Labels are escaped")
{
    const Inventory inventory = InventoryOf({{{"instance_id", Known("a\\b")}, {"name", Known("\"x\"\ny")}}});
    CHECK(Has(InventoryAsOpenMetrics(inventory), R"(orvel_graphics_card_info{card="a\\b",name="\"x\"\ny"} 1)"));
}

TEST_CASE("Adapters without an instance id have keys of their own")
{
    const OrderedJson card = {{"instance_id", Unknown("unavailable", "setupapi", "no device")}, {"core_count", Known(1)}};
    const std::string text = InventoryAsOpenMetrics(InventoryOf({card, card}));
    CHECK(Has(text, "orvel_graphics_card_cores{card=\"no device\"} 1\norvel_graphics_card_cores{card=\"no device (2)\"} 1"));
}

TEST_CASE("A source has answered or failed, and nothing is said of one that was not asked")
{
    const auto source = [](const char* name, const char* state) {
        return OrderedJson{{"name", name}, {"state", state}, {"code", nullptr}, {"reason", nullptr}};
    };
    const std::string text = InventoryAsOpenMetrics(
        InventoryOf({}, OrderedJson::array({source("setupapi", "answered"), source("dxgi", "failed"),
                                            source("nvml", "not asked"), source("adlx", "unavailable")})));
    CHECK(Has(text, "orvel_graphics_inventory_source_answered{source=\"setupapi\"} 1\n"
                    "orvel_graphics_inventory_source_answered{source=\"dxgi\"} 0"));
    CHECK(text.find("nvml") == std::string::npos);
    CHECK(text.find("adlx") == std::string::npos);
    CHECK(Has(text, "orvel_graphics_cards 0"));
}

TEST_CASE("Displays have their refresh rate in hertz")
{
    const std::string text = InventoryAsOpenMetrics(
        InventoryOf({{{"instance_id", Known("A")},
                      {"displays", Known(OrderedJson::array({DisplayObject({{"gdi_name", "\\\\.\\DISPLAY1"},
                                                                            {"monitor_name", "TV"},
                                                                            {"width", 3840},
                                                                            {"height", 2160},
                                                                            {"refresh_millihertz", 59'940},
                                                                            {"connector", "HDMI"},
                                                                            {"primary", true}}),
                                                             DisplayObject({{"primary", false}})}))}}}));
    CHECK(Has(text, R"(orvel_graphics_display_info{card="A",display="\\\\.\\DISPLAY1",monitor="TV",connector="HDMI",)"
                    R"(width="3840",height="2160",primary="yes"} 1)"));
    CHECK(Has(text, R"(orvel_graphics_display_info{card="A",display="2",primary="no"} 1)"));
    CHECK(Has(text, R"(orvel_graphics_display_refresh_hertz{card="A",display="\\\\.\\DISPLAY1"} 59.94)"));
    CHECK(text.find("refresh_hertz{card=\"A\",display=\"2\"") == std::string::npos);
}

TEST_CASE("Numbers of any size are converted exactly")
{
    const Inventory inventory = InventoryOf({{{"instance_id", Known("A")},
                                              {"dedicated_memory_bytes", Known(UINT64_MAX)},
                                              {"core_clock_max_mhz", Known(UINT64_MAX)},
                                              {"memory_clock_max_mhz", Known(0)},
                                              {"memory_bus_width_bits", Known(4)}}});
    const std::string text = InventoryAsOpenMetrics(inventory);
    CHECK(Has(text, "orvel_graphics_card_dedicated_memory_bytes{card=\"A\"} 18446744073709551615"));
    CHECK(Has(text, "orvel_graphics_card_core_clock_max_hertz{card=\"A\"} 18446744073709551615000000"));
    CHECK(Has(text, "orvel_graphics_card_memory_clock_max_hertz{card=\"A\"} 0"));
    CHECK(Has(text, "orvel_graphics_card_memory_bus_width_bytes{card=\"A\"} 0.5"));
}
