#include "Snapshots.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>

#include <doctest/doctest.h>

#include "OrvelInventory.h"

namespace orvel::tests {

namespace {

uint32_t DepthOf(const std::string& name)
{
    return name == "system"     ? ORVEL_INVENTORY_DEPTH_SYSTEM
           : name == "graphics" ? ORVEL_INVENTORY_DEPTH_GRAPHICS
                                : ORVEL_INVENTORY_DEPTH_DRIVERS;
}

} // namespace

Json TakeInventory(const std::string& depth, uint32_t timeoutMilliseconds)
{
    OrvelInventoryOptions options{};
    options.size = sizeof options;
    options.depth = DepthOf(depth);
    options.timeout_milliseconds = timeoutMilliseconds;
    OrvelInventory* taken = nullptr;
    if (OrvelInventoryTake(&options, &taken) != ORVEL_INVENTORY_OK) {
        throw std::runtime_error("no snapshot");
    }
    const std::unique_ptr<OrvelInventory, decltype(&OrvelInventoryFree)> inventory(taken, &OrvelInventoryFree);
    char* text = nullptr;
    if (OrvelInventoryToJson(inventory.get(), ORVEL_INVENTORY_JSON_FULL, &text, nullptr) != ORVEL_INVENTORY_OK) {
        throw std::runtime_error("no document");
    }
    const std::unique_ptr<char, decltype(&OrvelInventoryFreeText)> document(text, &OrvelInventoryFreeText);
    return Json::parse(document.get());
}

Json InventoryOf(const Json& machine, const std::string& depth, uint32_t timeoutMilliseconds)
{
    Simulate(machine);
    return TakeInventory(depth, timeoutMilliseconds);
}

Json TrapMachine(const std::string& name)
{
    std::ifstream file(std::filesystem::path(u8"" ORVEL_TRAPS) / (name + ".json"));
    return Json::parse(file);
}

Json SourceIn(const Json& inventory, const std::string& name)
{
    for (const auto& source : inventory["sources"]) {
        if (source["name"] == name) {
            return source;
        }
    }
    throw std::runtime_error("no source " + name);
}

void CheckEveryOrder(const Json& machine, const std::string& depth, const std::vector<std::string>& lists, const Json& cards)
{
    for (unsigned int order = 1; order < 1U << lists.size(); ++order) {
        CAPTURE(order);
        Json permuted = machine;
        for (size_t i = 0; i < lists.size(); ++i) {
            if (order >> i & 1U) {
                Json& list = permuted.at(Json::json_pointer(lists[i]));
                std::reverse(list.begin(), list.end());
            }
        }
        CHECK(InventoryOf(permuted, depth)["cards"] == cards);
    }
}

Json TwinCards()
{
    return TrapMachine("two-equal-cards");
}

} // namespace orvel::tests
