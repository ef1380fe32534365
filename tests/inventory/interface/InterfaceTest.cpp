// The C interface on the computer's own platform. The rules hold for any cards.

#include <array>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <doctest/doctest.h>
#include <nlohmann/json.hpp>

#include <windows.h>

#include "OrvelInventory.h"

namespace {

template <typename Structure>
Structure Sized()
{
    Structure structure{};
    structure.size = sizeof structure;
    return structure;
}

/// Takes a snapshot at a depth, and frees it on destruction.
class Taken {
public:
    explicit Taken(uint32_t depth = ORVEL_INVENTORY_DEPTH_SYSTEM)
    {
        auto options = Sized<OrvelInventoryOptions>();
        options.depth = depth;
        REQUIRE(OrvelInventoryTake(&options, &inventory) == ORVEL_INVENTORY_OK);
    }
    Taken(const Taken&) = delete;
    Taken& operator=(const Taken&) = delete;
    ~Taken() { OrvelInventoryFree(inventory); }

    operator const OrvelInventory*() const { return inventory; }

private:
    OrvelInventory* inventory = nullptr;
};

nlohmann::json JsonOf(const OrvelInventory* inventory, uint32_t form)
{
    char* text = nullptr;
    size_t length = 0;
    REQUIRE(OrvelInventoryToJson(inventory, form, &text, &length) == ORVEL_INVENTORY_OK);
    CHECK(std::strlen(text) == length);
    auto document = nlohmann::json::parse(text);
    OrvelInventoryFreeText(text);
    return document;
}

TEST_CASE("The library has the version of the header")
{
    CHECK(OrvelInventoryVersion() == ORVEL_INVENTORY_VERSION);
}

TEST_CASE("Null options are the defaults")
{
    OrvelInventory* inventory = nullptr;
    REQUIRE(OrvelInventoryTake(nullptr, &inventory) == ORVEL_INVENTORY_OK);
    CHECK(JsonOf(inventory, ORVEL_INVENTORY_JSON_FULL)["depth"] == "drivers");
    OrvelInventoryFree(inventory);
}

TEST_CASE("Wrong options give no snapshot")
{
    auto* inventory = reinterpret_cast<OrvelInventory*>(1);
    auto options = Sized<OrvelInventoryOptions>();
    options.depth = 4;
    CHECK(OrvelInventoryTake(&options, &inventory) == ORVEL_INVENTORY_INVALID_ARGUMENT);
    CHECK(inventory == nullptr);
    options = {};
    CHECK(OrvelInventoryTake(&options, &inventory) == ORVEL_INVENTORY_INVALID_ARGUMENT);
    options.size = 15;
    CHECK(OrvelInventoryTake(&options, &inventory) == ORVEL_INVENTORY_INVALID_ARGUMENT);
    CHECK(OrvelInventoryTake(nullptr, nullptr) == ORVEL_INVENTORY_INVALID_ARGUMENT);
}

TEST_CASE("A null snapshot has no cards and no sources")
{
    OrvelInventoryFree(nullptr);
    OrvelInventoryFreeText(nullptr);
    CHECK(OrvelInventoryCardCount(nullptr) == 0);
    CHECK(OrvelInventorySourceCount(nullptr) == 0);
    auto value = Sized<OrvelInventoryValue>();
    CHECK(OrvelInventoryGetValue(nullptr, 0, 0, &value) == ORVEL_INVENTORY_INVALID_ARGUMENT);
    auto source = Sized<OrvelInventorySource>();
    CHECK(OrvelInventoryGetSource(nullptr, 0, &source) == ORVEL_INVENTORY_INVALID_ARGUMENT);
    char* text = nullptr;
    CHECK(OrvelInventoryToJson(nullptr, 0, &text, nullptr) == ORVEL_INVENTORY_INVALID_ARGUMENT);
}

TEST_CASE("Indexes out of range and null pointers are refused")
{
    const Taken inventory;
    auto value = Sized<OrvelInventoryValue>();
    CHECK(OrvelInventoryGetValue(inventory, OrvelInventoryCardCount(inventory), 0, &value) ==
          ORVEL_INVENTORY_INVALID_ARGUMENT);
    CHECK(OrvelInventoryGetValue(inventory, 0, OrvelInventoryPropertyCount(), &value) == ORVEL_INVENTORY_INVALID_ARGUMENT);
    CHECK(OrvelInventoryGetValue(inventory, 0, 0, nullptr) == ORVEL_INVENTORY_INVALID_ARGUMENT);
    auto row = Sized<OrvelInventoryProperty>();
    CHECK(OrvelInventoryGetProperty(OrvelInventoryPropertyCount(), &row) == ORVEL_INVENTORY_INVALID_ARGUMENT);
    CHECK(OrvelInventoryGetProperty(0, nullptr) == ORVEL_INVENTORY_INVALID_ARGUMENT);
    uint32_t property = 0;
    CHECK(OrvelInventoryFindProperty("nothing", &property) == ORVEL_INVENTORY_INVALID_ARGUMENT);
    CHECK(OrvelInventoryFindProperty(nullptr, &property) == ORVEL_INVENTORY_INVALID_ARGUMENT);
    CHECK(OrvelInventoryFindProperty("name", nullptr) == ORVEL_INVENTORY_INVALID_ARGUMENT);
    auto display = Sized<OrvelInventoryDisplay>();
    CHECK(OrvelInventoryGetDisplay(inventory, 0, 1000, &display) == ORVEL_INVENTORY_INVALID_ARGUMENT);
    auto source = Sized<OrvelInventorySource>();
    CHECK(OrvelInventoryGetSource(inventory, OrvelInventorySourceCount(inventory), &source) ==
          ORVEL_INVENTORY_INVALID_ARGUMENT);
    char* text = nullptr;
    CHECK(OrvelInventoryToJson(inventory, 2, &text, nullptr) == ORVEL_INVENTORY_INVALID_ARGUMENT);
    CHECK(OrvelInventoryToJson(inventory, 0, nullptr, nullptr) == ORVEL_INVENTORY_INVALID_ARGUMENT);
}

TEST_CASE("A structure is filled up to the size that its caller sets")
{
    struct Later {
        OrvelInventoryProperty known;
        uint64_t more, beyond;
    } later{};
    later.known.size = sizeof(OrvelInventoryProperty) + 8;
    later.more = later.beyond = 7;
    REQUIRE(OrvelInventoryGetProperty(0, &later.known) == ORVEL_INVENTORY_OK);
    CHECK(std::string(later.known.name) == "instance_id");
    CHECK(later.known.size == sizeof(OrvelInventoryProperty) + 8);
    CHECK(later.more == 0);   // a member of a later release
    CHECK(later.beyond == 7); // beyond the caller's size
    later.known.size = sizeof(OrvelInventoryProperty) - 1;
    CHECK(OrvelInventoryGetProperty(0, &later.known) == ORVEL_INVENTORY_INVALID_ARGUMENT);
}

TEST_CASE("Every property of the table is found by its name")
{
    CHECK(OrvelInventoryPropertyCount() == 46);
    for (uint32_t property = 0; property < OrvelInventoryPropertyCount(); ++property) {
        auto row = Sized<OrvelInventoryProperty>();
        REQUIRE(OrvelInventoryGetProperty(property, &row) == ORVEL_INVENTORY_OK);
        uint32_t found = 1000;
        CHECK(OrvelInventoryFindProperty(row.name, &found) == ORVEL_INVENTORY_OK);
        CHECK(found == property);
    }
}

/// A value of the C interface in the form of the JSON document.
nlohmann::json AsJson(const OrvelInventoryValue& value)
{
    if (value.status != ORVEL_INVENTORY_KNOWN || value.type == ORVEL_INVENTORY_DISPLAYS) {
        return {};
    }
    if (value.type == ORVEL_INVENTORY_TEXT) {
        return value.text;
    }
    return value.type == ORVEL_INVENTORY_BOOL ? nlohmann::json(value.number != 0) : nlohmann::json(value.number);
}

TEST_CASE("The C interface, the full and the flat form contain the same values")
{
    const char* statuses[] = {"known", "unsupported", "unavailable", "failed", "not asked"};
    for (const uint32_t depth : {1U, 2U, 3U}) {
        const Taken inventory(depth);
        const auto full = JsonOf(inventory, ORVEL_INVENTORY_JSON_FULL);
        const auto flat = JsonOf(inventory, ORVEL_INVENTORY_JSON_FLAT);
        REQUIRE(full["cards"].size() == OrvelInventoryCardCount(inventory));
        REQUIRE(flat["cards"].size() == OrvelInventoryCardCount(inventory));
        for (uint32_t card = 0; card < OrvelInventoryCardCount(inventory); ++card) {
            for (uint32_t property = 0; property < OrvelInventoryPropertyCount(); ++property) {
                auto row = Sized<OrvelInventoryProperty>();
                REQUIRE(OrvelInventoryGetProperty(property, &row) == ORVEL_INVENTORY_OK);
                CAPTURE(row.name);
                auto value = Sized<OrvelInventoryValue>();
                REQUIRE(OrvelInventoryGetValue(inventory, card, property, &value) == ORVEL_INVENTORY_OK);
                const auto& json = full["cards"][card][row.name];
                CHECK(json["status"] == statuses[value.status]);
                CHECK(json["reason"] == (value.reason ? nlohmann::json(value.reason) : nlohmann::json()));
                CHECK(json["source"] == (value.source ? nlohmann::json(value.source) : nlohmann::json()));
                CHECK(value.type == row.type);
                CHECK(flat["cards"][card][row.name] == json["value"]);
                if (row.type != ORVEL_INVENTORY_DISPLAYS) {
                    CHECK(json["value"] == AsJson(value));
                } else if (value.status == ORVEL_INVENTORY_KNOWN) {
                    CHECK(json["value"].size() == value.displays);
                }
            }
        }
    }
}

TEST_CASE("A depth excludes the sources of greater depths")
{
    const auto state = [](const nlohmann::json& document, const std::string& name) {
        for (const auto& source : document["sources"]) {
            if (source["name"] == name) {
                return source["reason"];
            }
        }
        return nlohmann::json("missing");
    };
    const auto system = JsonOf(Taken(ORVEL_INVENTORY_DEPTH_SYSTEM), ORVEL_INVENTORY_JSON_FULL);
    CHECK(state(system, "dxgi") == "depth");
    CHECK(state(system, "dxcore") == "depth");
    CHECK(state(system, "nvml") == "depth");
    CHECK(state(system, "setupapi").is_null());
    const auto graphics = JsonOf(Taken(ORVEL_INVENTORY_DEPTH_GRAPHICS), ORVEL_INVENTORY_JSON_FULL);
    CHECK(state(graphics, "dxgi") != "depth");
    CHECK(state(graphics, "nvml") == "depth");
}

TEST_CASE("At depth system neither DXGI nor COM nor a vendor's library is loaded")
{
    const Taken inventory(ORVEL_INVENTORY_DEPTH_SYSTEM);
    for (const auto* name : {L"dxgi.dll", L"dxcore.dll", L"nvml.dll", L"nvapi64.dll", L"amdadlx64.dll", L"wbemprox.dll"}) {
        CHECK(::GetModuleHandleW(name) == nullptr);
    }
}

/// Runs on a thread with a stack of this size.
void RunOnThread(SIZE_T stackBytes, std::function<void()> run)
{
    const auto thread = ::CreateThread(
        nullptr, stackBytes,
        [](void* parameter) -> DWORD {
            (*static_cast<std::function<void()>*>(parameter))();
            return 0;
        },
        &run, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    REQUIRE(thread);
    ::WaitForSingleObject(thread, INFINITE);
    ::CloseHandle(thread);
}

TEST_CASE("A snapshot needs a stack of at most 64 KiB")
{
    int32_t result = -1;
    char* text = nullptr;
    RunOnThread(64 << 10, [&] {
        OrvelInventory* inventory = nullptr;
        result = OrvelInventoryTake(nullptr, &inventory);
        OrvelInventoryToJson(inventory, ORVEL_INVENTORY_JSON_FULL, &text, nullptr);
        OrvelInventoryFree(inventory);
    });
    CHECK(result == ORVEL_INVENTORY_OK);
    CHECK(text != nullptr);
    OrvelInventoryFreeText(text);
}

TEST_CASE("Eight threads that take snapshots at once get the same result")
{
    const auto expected = JsonOf(Taken(ORVEL_INVENTORY_DEPTH_GRAPHICS), ORVEL_INVENTORY_JSON_FULL);
    std::array<nlohmann::json, 8> found;
    std::vector<std::thread> threads;
    for (auto& document : found) {
        threads.emplace_back([&] {
            for (int round = 0; round < 5; ++round) {
                document = JsonOf(Taken(ORVEL_INVENTORY_DEPTH_GRAPHICS), ORVEL_INVENTORY_JSON_FULL);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (const auto& document : found) {
        CHECK(document == expected);
    }
}

DWORD Handles()
{
    DWORD count = 0;
    ::GetProcessHandleCount(::GetCurrentProcess(), &count);
    return count;
}

TEST_CASE("Repeated snapshots do not leak handles")
{
    const auto take = [](int rounds) {
        for (int round = 0; round < rounds; ++round) {
            const Taken inventory(ORVEL_INVENTORY_DEPTH_SYSTEM);
        }
    };
    take(20);
    const DWORD before = Handles();
    take(200);
    CHECK(Handles() <= before + 2);
}

} // namespace
