// The machines of tests/inventory/machines: for each NAME.json there is a NAME.txt with what the inventory says there. A
// line of it is
//
//   cards | DEPTH | COUNT
//   source | NAME | STATE | CODE OR REASON
//   CARD | PROPERTY | STATUS | VALUE, CODE OR REASON | SOURCE
//
// where VALUE is JSON, `-` is for nothing, and the lines that follow a line of cards are about that depth.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <doctest/doctest.h>

#include "Snapshots.h"

using namespace orvel::tests;

namespace {

using Fields = std::vector<std::string>;

Fields FieldsOf(const std::string& line)
{
    Fields fields;
    std::istringstream stream(line);
    for (std::string field; std::getline(stream, field, '|');) {
        const size_t first = field.find_first_not_of(' '), last = field.find_last_not_of(' ');
        fields.push_back(first == std::string::npos ? "" : field.substr(first, last - first + 1));
    }
    return fields;
}

/// The lines of an expectation, without empty ones and comments.
std::vector<std::string> ExpectationOf(const std::string& name)
{
    std::ifstream file(std::filesystem::path(u8"" ORVEL_TRAPS) / (name + ".txt"));
    REQUIRE_MESSAGE(file, "no expectation " << name);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (!line.empty() && line[0] != '#') {
            lines.push_back(line);
        }
    }
    return lines;
}

/// A value as the fourth field of a line has it.
std::string DetailOf(const Json& value)
{
    if (!value["code"].is_null()) {
        return value["code"].dump();
    }
    return value["reason"].is_null() ? value["value"].dump() : value["reason"].get<std::string>();
}

std::string TextOrDash(const Json& text)
{
    return text.is_null() ? "-" : text.get<std::string>();
}

void CheckSource(const Json& inventory, const Fields& fields)
{
    const Json source = SourceIn(inventory, fields.at(1));
    CHECK(source["state"] == fields.at(2));
    const std::string detail = source["code"].is_null() ? TextOrDash(source["reason"]) : source["code"].dump();
    CHECK(detail == fields.at(3));
}

void CheckValue(const Json& inventory, const Fields& fields)
{
    const Json& value = inventory["cards"].at(std::stoul(fields.at(0))).at(fields.at(1));
    CHECK(value["status"] == fields.at(2));
    CHECK(DetailOf(value) == fields.at(3));
    CHECK(TextOrDash(value["source"]) == fields.at(4));
}

std::vector<std::string> TrapNames()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(u8"" ORVEL_TRAPS))) {
        if (entry.path().extension() == ".json") {
            names.push_back(entry.path().stem().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

void CheckTrap(const std::string& name)
{
    const Json machine = TrapMachine(name);
    Json inventory;
    int checks = 0;
    for (const auto& line : ExpectationOf(name)) {
        CAPTURE(line);
        const Fields fields = FieldsOf(line);
        if (fields.at(0) == "cards") {
            inventory = InventoryOf(machine, fields.at(1), 5000);
            CHECK(inventory["depth"] == fields.at(1));
            CHECK(inventory["cards"].size() == std::stoul(fields.at(2)));
        } else if (fields.at(0) == "source") {
            CheckSource(inventory, fields);
        } else {
            CheckValue(inventory, fields);
        }
        ++checks;
    }
    CHECK(checks >= 2);
}

} // namespace

TEST_CASE("Each trap's machine has the cards and values that its expectation has")
{
    const auto names = TrapNames();
    CHECK_FALSE(names.empty());
    for (const auto& name : names) {
        SUBCASE(name.c_str())
        {
            CheckTrap(name);
        }
    }
}

TEST_CASE("Two equal cards are the same in every order of devices, adapters and displays")
{
    const Json machine = TwinCards();
    const Json expected = InventoryOf(machine, "graphics")["cards"];
    REQUIRE(expected.size() == 3);
    CheckEveryOrder(machine, "graphics", {"/pnp/devices", "/dxgi/adapters", "/displays/paths"}, expected);
}
