// Enumerates every machine file of the project, and compares all results with the file of the same name in
// machines/expected, which is derived by hand from the values of the machine file.

#include <doctest/doctest.h>

#include "support/Enumerated.h"

using namespace orvel::tests;

namespace {

LogLines Lines(const Json& log)
{
    LogLines lines;
    for (const Json& line : log) {
        lines.push_back(line["severity"].get<std::string>() + " " + line["function"].get<std::string>() + ": " +
                        line["message"].get<std::string>());
    }
    return lines;
}

} // namespace

TEST_CASE("Every machine file has its expected records and log")
{
    for (const std::string& name : MachineNames()) {
        SUBCASE(name.c_str())
        {
            const Json expected = Expected(name);
            INFO("machine " << name << "; for an intended change, review it and run ./dev accept");
            const Enumerated result = Enumerate(Machine(name));
            INFO("machines/expected/" << name << ".json; after a reviewed change run ./dev accept");
            REQUIRE(result.Cards.size() == expected["cards"].size());
            for (size_t i = 0; i < result.Cards.size(); ++i) {
                CHECK(Json::diff(AsFloats(expected["cards"][i]), AsFloats(result.Card(i))).dump() == "[]");
            }
            CHECK(result.Log == Lines(expected["log"]));
            CHECK(result.Thrown == expected["thrown"]);
            for (const auto& [interface, objects] : result.Live) {
                CHECK_MESSAGE(objects == 0, interface << " has live objects");
            }
        }
    }
}
