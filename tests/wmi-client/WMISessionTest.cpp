#include "WMISession.h"

#include <thread>

#include <objbase.h>

#include <doctest/doctest.h>

#include "support/SimulatedRun.h"

using namespace orvel::tests;
using orvel::shared::wmi::WMIClient;
using orvel::shared::wmi::WMISession;

namespace {

constexpr wchar_t cimv2[] = L"\\\\.\\root\\cimv2";
constexpr wchar_t things[] = L"SELECT P FROM Thing";
constexpr wchar_t others[] = L"SELECT Q FROM Thing";
constexpr long failed = static_cast<long>(0x80041001);

const std::string thingsSent = "wmi query SELECT P FROM Thing";

Json Things(const Json& failures = Json::array())
{
    const Json rows = {{{"P", 1}, {"Q", 10}}, {{"P", 2}, {"Q", 20}}, {{"P", 3}, {"Q", 30}}};
    return {{"wmi", {{"classes", {{"Thing", rows}}}, {"failures", failures}}}};
}

/// The property of all rows, read by a new client; empty if its query fails.
std::vector<uint32_t> ReadAll(const wchar_t* wql = things, const wchar_t* property = L"P")
{
    std::vector<uint32_t> values;
    WMIClient client(cimv2);
    if (client.Query(wql) != 0) {
        return values;
    }
    while (client.GetNext()) {
        client.GetValue(property, values.emplace_back());
    }
    return values;
}

const std::vector<uint32_t> allThings = {1, 2, 3};

} // namespace

TEST_CASE("In a session the same text is sent once, and every client reads the same rows")
{
    Simulate(Things());
    const WMISession session;
    CHECK(ReadAll() == allThings);
    const size_t calls = Trace().size();
    CHECK(ReadAll() == allThings);
    CHECK(Trace().size() == calls + 3); // the three properties
    CHECK(Only(Trace(), thingsSent).size() == 1);
}

TEST_CASE("In a session another text is sent on the same connection")
{
    Simulate(Things());
    const WMISession session;
    CHECK(ReadAll() == allThings);
    CHECK(ReadAll(others, L"Q") == std::vector<uint32_t>{10, 20, 30});
    CHECK(Only(Trace(), "wmi connect").size() == 1);
    CHECK(Only(Trace(), "wmi query").size() == 2);
}

TEST_CASE("In a session a row is fetched when a client first requests it")
{
    Simulate(Things());
    const WMISession session;
    WMIClient first(cimv2);
    REQUIRE(first.Query(things) == 0);
    CHECK(Only(Trace(), "wmi next").size() == 1); // Query waits for the first row
    REQUIRE(first.GetNext());
    CHECK(Only(Trace(), "wmi next").size() == 1);
    WMIClient second(cimv2);
    REQUIRE(second.Query(things) == 0);
    REQUIRE(second.GetNext());
    REQUIRE(second.GetNext());
    CHECK(Only(Trace(), "wmi next").size() == 2);
    REQUIRE(first.GetNext());
    CHECK(Only(Trace(), "wmi next").size() == 2);
    uint32_t number = 0;
    CHECK(first.GetValue(L"P", number) == 0);
    CHECK(number == 2);
}

TEST_CASE("The end of a session releases the rows and the connection")
{
    Simulate(Things());
    {
        const WMISession session;
        ReadAll();
        CHECK(Live()["wmi"] == 5); // connection, result and three rows
    }
    CHECK(Live()["wmi"] == 0);
    CHECK(ReadAll() == allThings);
    CHECK(Only(Trace(), thingsSent).size() == 2);
}

TEST_CASE("A client that outlives its session keeps its rows")
{
    Simulate(Things());
    auto session = std::make_unique<WMISession>();
    WMIClient client(cimv2);
    REQUIRE(client.Query(things) == 0);
    session.reset();
    CHECK(client.GetNext());
    CHECK(client.GetNext());
    uint32_t number = 0;
    CHECK(client.GetValue(L"P", number) == 0);
    CHECK(number == 2);
}

TEST_CASE("In a session a failed query is sent again by the next client")
{
    Simulate(Things(Json::array({{{"contains", "Thing"}, {"nth", 1}, {"status", failed}}})));
    const WMISession session;
    WMIClient first(cimv2);
    CHECK(first.Query(things) == failed);
    CHECK(ReadAll() == allThings);
    CHECK(Only(Trace(), thingsSent).size() == 2);
}

TEST_CASE("In a session a query whose row failed is sent again by the next client")
{
    Simulate(Things(Json::array({{{"contains", "Thing"}, {"nth", 1}, {"row", 2}, {"status", failed}}})));
    const WMISession session;
    CHECK(ReadAll() == std::vector<uint32_t>{1});
    CHECK(ReadAll() == allThings);
    CHECK(Only(Trace(), thingsSent).size() == 2);
}

TEST_CASE("In a session a failed connection is tried again by the next client")
{
    Simulate({{"wmi", {{"connect", "0x80041003"}}}});
    const WMISession session;
    CHECK(ReadAll().empty());
    CHECK(ReadAll().empty());
    CHECK(Only(Trace(), "wmi connect").size() == 2);
}

TEST_CASE("A session does not apply to another thread's clients")
{
    Simulate(Things());
    const WMISession session;
    CHECK(ReadAll() == allThings);
    std::vector<uint32_t> there;
    std::thread([&there] {
        ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        there = ReadAll();
        ::CoUninitialize();
    }).join();
    CHECK(there == allThings);
    CHECK(Only(Trace(), "wmi connect").size() == 2);
    CHECK(Only(Trace(), thingsSent).size() == 2);
}

TEST_CASE("An inner session queries again, and the outer one keeps its results")
{
    Simulate(Things());
    const WMISession outer;
    CHECK(ReadAll() == allThings);
    {
        const WMISession inner;
        CHECK(ReadAll() == allThings);
        CHECK(Only(Trace(), thingsSent).size() == 2);
    }
    CHECK(ReadAll() == allThings);
    CHECK(Only(Trace(), thingsSent).size() == 2);
}

TEST_CASE("Prepared queries are all sent before the first result is awaited")
{
    Simulate(Things());
    const WMISession session;
    WMIClient client(cimv2);
    client.Prepare(things);
    client.Prepare(others);
    client.Prepare(things);
    REQUIRE(client.Query(things) == 0);
    REQUIRE(client.Query(others) == 0);
    CHECK(Only(Trace(), "wmi") == std::vector<std::string>{"wmi connect \\\\.\\root\\cimv2", thingsSent,
                                                           "wmi query SELECT Q FROM Thing", "wmi next", "wmi next"});
}

TEST_CASE("A prepared query that fails is reported by its Query, and sent again by the next")
{
    Simulate(Things(Json::array({{{"contains", "Thing"}, {"nth", 1}, {"status", failed}}})));
    const WMISession session;
    WMIClient client(cimv2);
    client.Prepare(things);
    CHECK(client.Query(things) == failed);
    CHECK(client.Query(things) == 0);
    CHECK(Only(Trace(), thingsSent).size() == 2);
}

TEST_CASE("A connection that fails while a query is prepared is tried again by the next client")
{
    Simulate({{"wmi", {{"connect", "0x80041003"}}}});
    const WMISession session;
    WMIClient first(cimv2);
    first.Prepare(things);
    CHECK(ReadAll().empty());
    CHECK(Only(Trace(), "wmi connect").size() == 2);
}

TEST_CASE("Without a session nothing is prepared")
{
    Simulate(Things());
    WMIClient client(cimv2);
    client.Prepare(things);
    CHECK(Only(Trace(), "wmi").empty());
}
