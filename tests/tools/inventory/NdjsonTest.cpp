#include <doctest/doctest.h>

#include "inventory/Documents.h"
#include "inventory/InventoryFormats.h"

using namespace orvel::tests;
using namespace orvel::tools;

TEST_CASE("NDJSON has a line a card, with the values alone")
{
    const OrderedJson sources =
        OrderedJson::array({{{"name", "setupapi"}, {"state", "answered"}, {"code", nullptr}, {"reason", nullptr}},
                            {{"name", "dxgi"}, {"state", "failed"}, {"code", 1460}, {"reason", "no answer"}}});
    const OrderedJson card = {{"name", Known("A \"card\"\n\xE7\xBF\xBB")},
                              {"dedicated_memory_bytes", Known(25'769'803'776)},
                              {"integrated", Known(false)},
                              {"core_count", Unknown("failed", "dxgi", "no answer", 1460)},
                              {"displays", Known(OrderedJson::array({DisplayObject({{"width", 800}})}))}};
    const std::string line =
        R"({"schema_version":1,"depth":"drivers","failed_sources":[{"name":"dxgi","code":1460,"reason":"no answer"}],)"
        "\"name\":\"A \\\"card\\\"\\n\xE7\xBF\xBB\","
        R"("dedicated_memory_bytes":25769803776,"integrated":false,"core_count":null,"displays":[{"gdi_name":null,)"
        R"("monitor_name":null,"width":800,"height":null,"refresh_millihertz":null,"connector":null,"primary":null}]})"
        "\n";
    CHECK(InventoryAsNdjson(InventoryOf({card, card}, sources)) == line + line);
    CHECK(InventoryAsNdjson(InventoryOf({})).empty());
}
