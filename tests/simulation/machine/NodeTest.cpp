// The values of a machine file, and the errors with the positions of wrong values.

#include <doctest/doctest.h>

#include "machine/Node.h"

using namespace orvel::simulation;

namespace {

using Json = nlohmann::json;

/// The reason why the JSON is refused; "" if it is accepted.
template <typename Read>
std::string Problem(const Json& json, Read&& read)
{
    try {
        read(Node(json, ""));
        return "";
    } catch (const MachineError& error) {
        return error.what();
    }
}

template <typename Target>
std::string ProblemInto(const Json& json)
{
    Target target{};
    return Problem(json, [&](const Node& node) { ReadInto(node, target); });
}

template <typename Target>
Target ReadAs(const Json& json)
{
    Target target{};
    ReadInto(Node(json, ""), target);
    return target;
}

} // namespace

TEST_CASE("A value of the wrong type is rejected with its type")
{
    CHECK(ProblemInto<std::string>(1) == "/: expected a text, found number");
    CHECK(ProblemInto<std::string>(nullptr) == "/: expected a text, found null");
    CHECK(ProblemInto<bool>("true") == "/: expected true or false, found a text");
    CHECK(ProblemInto<std::vector<std::string>>(Json::object()) == "/: expected an array, found object");
    CHECK(Problem(true, [](const Node& node) { node.Members(); }) == "/: expected an object, found true");
    CHECK(Problem("1", [](const Node& node) { node.Real(); }) == "/: expected a number, found a text");
}

TEST_CASE("An integer may be a number, or decimal or hexadecimal text")
{
    CHECK(ReadAs<uint32_t>(4294967295) == 4294967295);
    CHECK(ReadAs<uint32_t>("16") == 16);
    CHECK(ReadAs<uint32_t>("0x1F") == 31);
    CHECK(ReadAs<uint32_t>("0X1f") == 31);
    CHECK(ReadAs<uint64_t>("18446744073709551615") == 18446744073709551615U);
}

TEST_CASE("An integer outside its range, and a text that is not a number, are rejected")
{
    CHECK(ProblemInto<uint32_t>(-1) == "/: the number must lie between 0 and 4294967295");
    CHECK(ProblemInto<uint32_t>(4294967296) == "/: the number must lie between 0 and 4294967295");
    CHECK(ProblemInto<int32_t>(-2147483649) == "/: the number must lie between -2147483648 and 4294967295");
    CHECK(ProblemInto<uint64_t>("18446744073709551616") == "/: expected a whole number, found \"18446744073709551616\"");
    CHECK(ProblemInto<uint32_t>(1.5) == "/: expected a whole number, found 1.5");
    CHECK(ProblemInto<uint32_t>(Json::array()) == "/: expected a whole number, found array");
    for (const char* text : {"", " 1", "1 ", "+1", "--1", "0x", "0xG", "-"}) {
        CAPTURE(text);
        CHECK(ProblemInto<uint32_t>(text) == "/: expected a whole number, found " + Json(text).dump());
    }
}

TEST_CASE("A status has 32 bits, signed or unsigned")
{
    CHECK(ReadAs<int32_t>(-2147483648) == INT32_MIN);
    CHECK(ReadAs<int32_t>("-1") == -1);
    CHECK(ReadAs<int32_t>(4294967295) == -1);
    CHECK(ReadAs<int32_t>("0x80041010") == static_cast<int32_t>(0x80041010));
}

TEST_CASE("A position is a JSON pointer, with its two special characters escaped")
{
    const auto readNothing = [](const Node& node) {
        node.ReadFields({{"x", [](const Node&) {}}, {"y", [](const Node&) {}}});
    };
    CHECK(Problem({{"a/b~c", 1}}, readNothing) == "/a~1b~0c: unknown key \"a/b~c\"; known here: \"x\", \"y\"");
    CHECK(Problem({{"a", 1}}, [](const Node& node) { node.ReadFields({}); }) == "/a: unknown key \"a\"; known here: none");
    CHECK(ProblemInto<std::vector<uint32_t>>({1, 2, "x"}) == "/2: expected a whole number, found \"x\"");
}

TEST_CASE("A bare status and one in an object are equivalent")
{
    for (const Json& json : {Json(5), Json{{"status", 5}}}) {
        const auto status = ReadAs<Status>(json);
        CHECK(status.given);
        CHECK(status.code == 5);
    }
    CHECK_FALSE(Status().given);
    CHECK(ProblemInto<Status>({{"writes", "nothing"}}) == "/writes: unknown key \"writes\"; known here: \"status\"");
}

TEST_CASE("The status of a call that returns objects can state what the call writes")
{
    CHECK(ReadAs<OutputStatus>(5).writes == Writes::AsUsual);
    CHECK(ReadAs<OutputStatus>({{"status", 5}, {"writes", "rubbish"}}).writes == Writes::Rubbish);
    CHECK(ReadAs<OutputStatus>({{"status", 5}, {"writes", "nothing"}}).writes == Writes::Nothing);
    CHECK(ProblemInto<OutputStatus>({{"other", 1}}) == "/other: unknown key \"other\"; known here: \"status\", \"writes\"");
}

TEST_CASE("A result is a value, a failure, or a failure with a value")
{
    const auto value = ReadAs<Answer<uint32_t>>(7);
    CHECK(value.given);
    CHECK(value.status == 0);
    CHECK(value.value == 7U);
    const auto failure = ReadAs<Answer<uint32_t>>({{"status", -1}});
    CHECK(failure.status == -1);
    CHECK_FALSE(failure.value);
    const auto both = ReadAs<Answer<uint32_t>>({{"status", -1}, {"value", 7}, {"writes", "nothing"}});
    CHECK(both.status == -1);
    CHECK(both.value == 7U);
    CHECK(both.writes == Writes::Nothing);
    CHECK(ProblemInto<Answer<uint32_t>>({{"status", 0}, {"value", "x"}}) == "/value: expected a whole number, found \"x\"");
}

TEST_CASE("If a bare number means a status, a value must be in an object or an array")
{
    Answer<uint32_t> answer;
    ReadWithBareStatus(Node(-5, ""), answer);
    CHECK(answer.status == -5);
    CHECK_FALSE(answer.value);
    const Json json = {{"status", 0}, {"value", 3}};
    ReadWithBareStatus(Node(json, ""), answer);
    CHECK(answer.status == 0);
    CHECK(answer.value == 3U);
}

TEST_CASE("An array of the wrong length is rejected")
{
    std::array<int32_t, 2> target{};
    const auto read = [&](const Node& node) { ReadInto(node, target, "expected two"); };
    CHECK(Problem({1, 2}, read) == "");
    CHECK(target == std::array<int32_t, 2>{1, 2});
    CHECK(Problem({1}, read) == "/: expected two");
    CHECK(Problem({1, 2, 3}, read) == "/: expected two");
    CHECK(Problem({1, "x"}, read) == "/1: expected a whole number, found \"x\"");
}

TEST_CASE("An unknown name is rejected")
{
    std::vector<std::string> names;
    const std::vector<std::string> known = {"a", "b"};
    CHECK(Problem({"b"}, NamesInto(names, known)) == "");
    CHECK(names == std::vector<std::string>{"b"});
    CHECK(Problem({"a", "c"}, NamesInto(names, known)) == "/1: unknown name \"c\"");
}
