#include "inventory/Page.h"

#include <doctest/doctest.h>

#include "inventory/Documents.h"

using namespace orvel::tests;
using namespace orvel::tools;

namespace {

std::string PageOf(const std::vector<OrderedJson>& cards, const Records& records = {},
                   const OrderedJson& sources = OrderedJson::array())
{
    const Inventory inventory = InventoryOf(cards, sources);
    return InventoryAsPage(inventory, Compare(inventory, records), {"program 1.0", "2026-01-31 10:00", "my machine"});
}

bool Has(const std::string& page, const std::string& part)
{
    return page.find(part) != std::string::npos;
}

} // namespace

TEST_CASE("The page shows each card with its memory, displays and details")
{
    const std::string page = PageOf({WholeCard()});
    CHECK(page.starts_with("<!DOCTYPE html>\n<html lang=\"en\">"));
    CHECK(Has(page, "<h1>1 graphics adapter</h1>"));
    CHECK(Has(page, "<h2 id=\"card-1\">NVIDIA GeForce RTX 4090</h2>"));
    CHECK(Has(page, "<p class=\"kind\">NVIDIA, PCI device, discrete</p>"));
    CHECK(Has(page, "<span class=\"pill good\">Works</span>"));
    CHECK(Has(page, "<dt>Dedicated</dt><dd>24 GiB</dd>"));
    CHECK(Has(page, "<dt>Driver</dt><dd>596.72 (32.0.15.9672), 2026-01-05, NVIDIA</dd>"));
    CHECK(Has(page, "DELL U2720Q (\\\\.\\DISPLAY1), 3840 x 2160, 59.94 Hz, DisplayPort, primary"));
    CHECK(Has(page, "program 1.0"));
    CHECK(Has(page, "2026-01-31 10:00"));
    CHECK(Has(page, "Simulated: my machine"));
}

TEST_CASE("The largest memory fills its bar, and others are drawn to its scale")
{
    const std::string page = PageOf({{{"dedicated_memory_bytes", Known(1024)}}, {{"dedicated_memory_bytes", Known(256)}}});
    CHECK(Has(page, "style=\"width:100.00%\""));
    CHECK(Has(page, "style=\"width:25.00%\""));
    CHECK_FALSE(Has(PageOf({{{"dedicated_memory_bytes", Known(0)}}}), "style=\"width"));
}

TEST_CASE("Every value is escaped")
{
    const std::string evil = "<script>alert(1)</script>&\"'";
    const std::string escaped = "&lt;script&gt;alert(1)&lt;/script&gt;&amp;&quot;&#39;";
    OrderedJson card;
    for (const char* text : {"instance_id", "kind", "name", "vendor", "driver_version", "driver_version_marketing",
                             "driver_date", "driver_provider", "driver_inf", "service", "power_state", "memory_type",
                             "compute_capability", "bios_version", "serial_number", "uuid", "colour"}) {
        card[text] = Known(evil);
    }
    card["problem_code"] = Known(99);
    card["problem"] = Known(evil);
    card["displays"] =
        Known(OrderedJson::array({DisplayObject({{"gdi_name", evil}, {"monitor_name", evil}, {"connector", evil}})}));
    card["fans"] = Unknown("failed", evil, evil.c_str(), 7);
    card["vendor_id"] = Known(0x10DE);
    card["device_id"] = Known(1);
    card["subsystem_id"] = Known(1);
    const Records records = {{{"NVIDIA",
                               {{"DeviceId", {"1", "", ""}},
                                {"SubsystemId", {"0-1", "", ""}},
                                {"CardName", {evil + "2", evil, evil}},
                                {"DriverVersion", {"", "", evil}}}},
                              {"NVIDIA", {{"CardName", {evil, "", ""}}}}},
                             {{"NVIDIA", 0x10DE, false, evil}},
                             ""};
    const OrderedJson source = {{"name", evil}, {"state", "failed"}, {"code", 7}, {"reason", evil}};
    const Inventory inventory = InventoryOf({card}, OrderedJson::array({source}));
    const std::string page = InventoryAsPage(inventory, Compare(inventory, records), {evil, evil, evil});
    CHECK_FALSE(Has(page, "<script"));
    CHECK_FALSE(Has(page, "alert(1)</"));
    CHECK(Has(page, "<h2 id=\"card-1\">" + escaped + "</h2>"));
    CHECK(Has(InventoryAsPage(inventory, Compare(inventory, {{}, {}, evil}), {}), "compare with: " + escaped));
}

TEST_CASE("Problems, sleep and failed sources are shown first")
{
    CHECK(Has(PageOf({{{"problem_code", Known(22)}, {"problem", Known("DISABLED")}}}),
              "<span class=\"pill bad\">Problem 22 \xC2\xB7 DISABLED</span>"));
    CHECK(Has(PageOf({{{"problem_code", Known(0)}, {"power_state", Known("D3")}}}),
              "<span class=\"pill calm\">Asleep</span>"));
    CHECK_FALSE(Has(PageOf({{{"name", Known("A")}}}), "class=\"pill"));
    const OrderedJson source = {{"name", "dxgi"}, {"state", "failed"}, {"code", 1460}, {"reason", "no answer"}};
    const std::string page = PageOf({}, {}, OrderedJson::array({source}));
    CHECK(page.find("DXGI did not answer in time; its values are missing below.") < page.find("<h2>Sources</h2>"));
    CHECK(Has(page, "<h1>No graphics adapter</h1>"));
}

TEST_CASE("What is missing has its reason, also where memory is not known")
{
    const std::string page = PageOf({{{"dedicated_memory_bytes", Unknown("failed", "dxgi", "no answer", 1460)},
                                      {"core_count", Unknown("not asked", nullptr, "depth")}}});
    CHECK(Has(page, "<p class=\"quiet\">Not known. DXGI did not answer in time.</p>"));
    CHECK(Has(page, "<h3>2 values are not known</h3>"));
    CHECK(Has(page, "<p>Not asked at this depth</p><p class=\"names\"><code>core_count</code></p>"));
}

TEST_CASE("The record is beside the inventory")
{
    const OrderedJson card = {{"vendor_id", Known(0x10DE)},
                              {"device_id", Known(0x2684)},
                              {"subsystem_id", Known(0x889B1043)},
                              {"dedicated_memory_bytes", Known(25'769'803'776)}};
    const Records records = {{{"NVIDIA",
                               {{"DeviceId", {"2684", "", ""}},
                                {"SubsystemId", {"889b-1043", "", ""}},
                                {"AdapterRam", {"4095", "MiB", "WMI"}},
                                {"MemorySize", {"24576", "MiB", "WMI"}}}}},
                             {{"NVIDIA", 0x10DE, true, ""}},
                             ""};
    const std::string page = PageOf({card}, records);
    CHECK(Has(page, "<td data-label=\"Record\">4095 MiB</td><td data-label=\"Inventory\"><strong>24 GiB</strong></td>"));
    CHECK(Has(page, "<p class=\"quiet\">1 value is the same.</p>"));
    CHECK(Has(PageOf({card}, {{}, {{"NVIDIA", 0x10DE, true, "The reason."}}, ""}),
              "<p class=\"note\">The record&#39;s run for NVIDIA ended: The reason.</p>"));
}

TEST_CASE("The page loads nothing and runs nothing")
{
    const std::string page = PageOf({WholeCard()});
    for (const char* part : {"http:", "https:", "<script", "<img", "@import", "url(", "src="}) {
        CAPTURE(part);
        CHECK_FALSE(Has(page, part));
    }
    CHECK(Has(page, "default-src 'none'"));
}
