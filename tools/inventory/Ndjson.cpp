#include <nlohmann/json.hpp>

#include "inventory/InventoryFormats.h"

namespace orvel::tools {

namespace {

using Json = nlohmann::ordered_json;

template <typename Content>
Json OrNull(const std::optional<Content>& content)
{
    return content ? Json(*content) : Json();
}

Json ToJson(const InventoryDisplays& displays)
{
    Json list = Json::array();
    for (const InventoryDisplay& display : displays) {
        list.push_back({{"gdi_name", OrNull(display.GdiName)},
                        {"monitor_name", OrNull(display.MonitorName)},
                        {"width", OrNull(display.Width)},
                        {"height", OrNull(display.Height)},
                        {"refresh_millihertz", OrNull(display.RefreshMillihertz)},
                        {"connector", OrNull(display.Connector)},
                        {"primary", OrNull(display.IsPrimary)}});
    }
    return list;
}

struct DataVisitor {
    Json operator()(std::monostate) const { return {}; }
    Json operator()(const InventoryDisplays& displays) const { return ToJson(displays); }
    Json operator()(const auto& value) const { return value; }
};

Json FailedSources(const Inventory& inventory)
{
    Json failed = Json::array();
    for (const InventoryEnd& source : inventory.Sources) {
        if (source.Status == "failed") {
            failed.push_back({{"name", source.Source}, {"code", OrNull(source.Code)}, {"reason", source.Reason}});
        }
    }
    return failed;
}

} // namespace

std::string InventoryAsNdjson(const Inventory& inventory)
{
    std::string lines;
    for (const InventoryCard& card : inventory.Cards) {
        Json object = {{"schema_version", 1}, {"depth", inventory.Depth}, {"failed_sources", FailedSources(inventory)}};
        for (size_t i = 0; i < card.size(); ++i) {
            object[inventory.Table[i].Name] = std::visit(DataVisitor(), card[i].Data);
        }
        lines += object.dump() + "\n";
    }
    return lines;
}

} // namespace orvel::tools
