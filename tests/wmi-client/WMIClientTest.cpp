#include "WMIClient.h"

#include <cstdlib>
#include <functional>
#include <memory>
#include <thread>

#include <objbase.h>
#include <wbemidl.h>

#include <doctest/doctest.h>

#include "support/SimulatedRun.h"

using namespace orvel::tests;
using orvel::shared::wmi::WMIClient;

namespace {

constexpr wchar_t cimv2[] = L"\\\\.\\root\\cimv2";
const std::string connectToCimv2 = "wmi connect \\\\.\\root\\cimv2";
constexpr long missingProperty = static_cast<long>(0x80041002);
constexpr long typeMismatch = static_cast<long>(0x80020005);

Json Rows(const Json& rows)
{
    return {{"wmi", {{"classes", {{"Thing", rows}}}}}};
}

/// Reads property P of a single row that holds this value.
template <typename T>
std::pair<long, T> Read(const Json& value, T otherwise)
{
    Simulate(Rows(Json::array({{{"P", value}}})));
    WMIClient client(cimv2);
    REQUIRE(client.Query(L"SELECT * FROM Thing") == 0);
    REQUIRE(client.GetNext());
    const long status = client.GetValue(L"P", otherwise);
    return {status, otherwise};
}

/// The results of a thread on the computer's own WMI.
struct SystemAnswers {
    long Query = -1;
    bool HasRow = false;
    long Text = -1;
    std::string Name;
    long Number = -1;
    uint32_t Availability = 0;
    long Float = -1;
    float AdapterRam = 0.0F;
    long Flag = -1;
    bool ConfigError = true;
    long Missing = 0;
    long Broken = 0;
    bool HasRowAfterFailure = true;
};

SystemAnswers AskSystem()
{
    SystemAnswers answers;
    WMIClient client(cimv2);
    answers.Query = client.Query(L"SELECT * FROM Win32_VideoController");
    answers.HasRow = client.GetNext();
    answers.Text = client.GetValue(L"Name", answers.Name);
    answers.Number = client.GetValue(L"Availability", answers.Availability);
    answers.Float = client.GetValue(L"AdapterRAM", answers.AdapterRam);
    answers.Flag = client.GetValue(L"ConfigManagerErrorCode", answers.ConfigError);
    std::string nothing;
    answers.Missing = client.GetValue(L"NoSuchProperty", nothing);
    answers.Broken = client.Query(L"SELECT * FROM Win32_VideoController WHERE Name = 'O'Brien'");
    answers.HasRowAfterFailure = client.GetNext();
    return answers;
}

void CheckSystem(const SystemAnswers& answers)
{
    CHECK(answers.Query == 0);
    CHECK(answers.HasRow);
    CHECK(answers.Text == 0);
    CHECK(answers.Name == "VideoController1"); // Wine's name for its adapter
    CHECK(answers.Number == 0);
    CHECK(answers.Availability == 3);
    CHECK(answers.Float == 0);
    CHECK(answers.AdapterRam == 536870912.0F);
    CHECK(answers.Flag == 0);
    CHECK_FALSE(answers.ConfigError);
    CHECK(answers.Missing == missingProperty);
    CHECK(answers.Broken == static_cast<long>(0x80041017));
    CHECK_FALSE(answers.HasRowAfterFailure);
}

/// Runs on a new thread in this apartment. The thread must not use checks, because the test framework does not support it.
void RunIn(DWORD apartment, const std::function<void()>& run)
{
    HRESULT status = E_FAIL;
    std::thread([&] {
        status = ::CoInitializeEx(nullptr, apartment);
        run();
        ::CoUninitialize();
    }).join();
    REQUIRE(SUCCEEDED(status));
}

SystemAnswers AskSystemIn(DWORD apartment)
{
    SystemAnswers answers;
    RunIn(apartment, [&] { answers = AskSystem(); });
    return answers;
}

} // namespace

TEST_CASE("The computer's own WMI is read in a multi-threaded and in a single-threaded apartment")
{
    Simulate({{"wmi", "system"}});
    CheckSystem(AskSystemIn(COINIT_MULTITHREADED));
    CheckSystem(AskSystemIn(COINIT_APARTMENTTHREADED));
}

TEST_CASE("On the computer's own WMI a query without rows succeeds and returns none")
{
    Simulate({{"wmi", "system"}});
    WMIClient client(cimv2);
    CHECK(client.Query(L"SELECT * FROM Win32_VideoController WHERE Name = 'none'") == 0);
    CHECK_FALSE(client.GetNext());
}

TEST_CASE("A failed connection throws nothing, and each query of the client fails with its status")
{
    Simulate({{"wmi", {{"connect", "0x80041003"}, {"classes", {{"Thing", Json::array({{{"P", 1}}})}}}}}});
    WMIClient client(cimv2);
    CHECK(client.Query(L"SELECT * FROM Thing") == static_cast<long>(0x80041003));
    CHECK(client.Query(L"SELECT * FROM Thing") == static_cast<long>(0x80041003));
    CHECK_FALSE(client.GetNext());
    uint32_t number = 7;
    CHECK(client.GetValue(L"P", number) != 0);
    CHECK(number == 7);
}

TEST_CASE("Text is UTF-8, and numbers are read as their decimal text")
{
    using Pair = std::pair<long, std::string>;
    CHECK(Read("Grafik \u00FC\u20AC", std::string()) == Pair{0, "Grafik \u00FC\u20AC"});
    CHECK(Read("", std::string("old")) == Pair{0, ""});
    CHECK(Read(4293918720U, std::string()) == Pair{0, "4293918720"});
    CHECK(Read({{"vt", "I4"}, {"value", -5}}, std::string()) == Pair{0, "-5"});
    CHECK(Read(1920, std::string()) == Pair{0, "1920"});
}

TEST_CASE("Reading a null, missing or failing property fails and leaves the output unchanged")
{
    using Text = std::pair<long, std::string>;
    using Number = std::pair<long, uint32_t>;
    CHECK(Read(nullptr, std::string("old")) == Text{typeMismatch, "old"});
    CHECK(Read(nullptr, uint32_t{7}) == Number{typeMismatch, 7});
    CHECK(Read({{"status", "0x80041001"}}, std::string("old")) == Text{static_cast<long>(0x80041001), "old"});
    CHECK(Read({{"status", 1}}, uint32_t{7}) == Number{1, 7});
    CHECK(Read("no number", uint32_t{7}) == Number{typeMismatch, 7});
}

TEST_CASE("An unsigned number, a float and a flag are converted from WMI's value")
{
    CHECK(Read(4294967295U, uint32_t{0}).second == 4294967295U);
    CHECK(Read("4293918720", uint32_t{0}).second == 4293918720U);
    CHECK(Read(3200, 0.0F).second == 3200.0F);
    CHECK(Read("2666.5", 0.0F).second == 2666.5F);
    CHECK(Read({{"vt", "R4"}, {"value", 1.5}}, 0.0F).second == 1.5F);
    CHECK(Read(true, false).second);
    CHECK(Read(2, false).second);
}

TEST_CASE("A new query replaces the previous rows, and no row is current until the next step")
{
    Simulate(Rows({{{"P", 1}}, {{"P", 2}}}));
    WMIClient client(cimv2);
    uint32_t number = 0;
    REQUIRE(client.Query(L"SELECT P FROM Thing") == 0);
    CHECK(client.GetValue(L"P", number) != 0);
    CHECK(client.GetNext());
    CHECK(client.GetNext());
    CHECK(client.GetValue(L"P", number) == 0);
    CHECK(number == 2);
    REQUIRE(client.Query(L"SELECT P FROM Thing") == 0);
    CHECK(client.GetValue(L"P", number) != 0);
    CHECK(client.GetNext());
    CHECK(client.GetValue(L"P", number) == 0);
    CHECK(number == 1);
    CHECK(client.GetNext());
    CHECK_FALSE(client.GetNext());
    CHECK(client.GetValue(L"P", number) != 0);
}

TEST_CASE("A failed query releases the previous rows")
{
    Simulate(Rows(Json::array({{{"P", 1}}})));
    WMIClient client(cimv2);
    REQUIRE(client.Query(L"SELECT P FROM Thing") == 0);
    REQUIRE(client.GetNext());
    CHECK(client.Query(L"SELECT P FROM NoSuchClass") == static_cast<long>(0x80041010));
    uint32_t number = 7;
    CHECK(client.GetValue(L"P", number) != 0);
    CHECK_FALSE(client.GetNext());
    CHECK(number == 7);
}

TEST_CASE("A property that was not selected cannot be read")
{
    Simulate(Rows(Json::array({{{"P", 1}, {"Q", 2}}})));
    WMIClient client(cimv2);
    REQUIRE(client.Query(L"SELECT Q FROM Thing") == 0);
    REQUIRE(client.GetNext());
    uint32_t number = 7;
    CHECK(client.GetValue(L"P", number) == missingProperty);
    CHECK(client.GetValue(L"Q", number) == 0);
}

TEST_CASE("A destroyed client releases its connection, rows and result set")
{
    Simulate(Rows({{{"P", 1}}, {{"P", 2}}}));
    {
        WMIClient client(cimv2);
        client.Query(L"SELECT P FROM Thing");
        client.GetNext();
        CHECK(Live()["wmi"] == 3);
    }
    CHECK(Live()["wmi"] == 0);
}

TEST_CASE("Concurrent clients share one connection, which the last of them closes")
{
    Simulate(Rows(Json::array({{{"P", 1}}})));
    {
        auto first = std::make_unique<WMIClient>(cimv2);
        WMIClient second(cimv2);
        REQUIRE(first->Query(L"SELECT * FROM NoSuchClass") != 0);
        REQUIRE(second.Query(L"SELECT * FROM NoSuchClass") != 0);
        CHECK(Only(Trace(), "wmi connect") == std::vector{connectToCimv2});
        first.reset();
        CHECK(Live()["wmi"] == 1);
        CHECK(second.Query(L"SELECT P FROM Thing") == 0);
        CHECK(second.GetNext());
    }
    CHECK(Only(Trace(), "wmi disconnect").size() == 1);
    CHECK(Live()["wmi"] == 0);
}

TEST_CASE("Clients that share a connection have separate rows")
{
    Simulate(Rows({{{"P", 1}}, {{"P", 2}}}));
    WMIClient first(cimv2);
    WMIClient second(cimv2);
    REQUIRE(first.Query(L"SELECT P FROM Thing") == 0);
    REQUIRE(first.GetNext());
    REQUIRE(second.Query(L"SELECT P FROM Thing WHERE P = '2'") == 0);
    REQUIRE(second.GetNext());
    CHECK_FALSE(second.GetNext());
    uint32_t number = 0;
    CHECK(first.GetValue(L"P", number) == 0);
    CHECK(number == 1);
    CHECK(first.GetNext());
}

TEST_CASE("A client created after the last one was destroyed connects again")
{
    Simulate(Rows(Json::array({{{"P", 1}}})));
    WMIClient{cimv2}.Query(L"SELECT P FROM Thing");
    WMIClient{cimv2}.Query(L"SELECT P FROM Thing");
    CHECK(Only(Trace(), "wmi connect") == std::vector{connectToCimv2, connectToCimv2});
    CHECK(Only(Trace(), "wmi disconnect").size() == 2);
    CHECK(Live()["wmi"] == 0);
}

TEST_CASE("A client that queries nothing does not connect")
{
    Simulate(Rows(Json::array({{{"P", 1}}})));
    WMIClient{cimv2};
    CHECK(Only(Trace(), "wmi").empty());
}

TEST_CASE("Another namespace gets its own connection")
{
    Simulate(Rows(Json::array({{{"P", 1}}})));
    const std::string connectToWmi = "wmi connect \\\\.\\root\\wmi";
    {
        WMIClient first(cimv2);
        WMIClient other(L"\\\\.\\root\\wmi");
        WMIClient same(cimv2);
        for (WMIClient* client : {&first, &other, &same}) {
            REQUIRE(client->Query(L"SELECT * FROM NoSuchClass") != 0);
        }
        CHECK(Only(Trace(), "wmi connect") == std::vector{connectToCimv2, connectToWmi});
        CHECK(Live()["wmi"] == 2);
    }
    CHECK(Live()["wmi"] == 0);
}

TEST_CASE("Another thread gets its own connection")
{
    Simulate(Rows(Json::array({{{"P", 1}}})));
    {
        WMIClient first(cimv2);
        REQUIRE(first.Query(L"SELECT * FROM NoSuchClass") != 0);
        int connections = 0;
        long status = -1;
        RunIn(COINIT_MULTITHREADED, [&] {
            WMIClient other(cimv2);
            status = other.Query(L"SELECT * FROM NoSuchClass");
            connections = Live()["wmi"];
        });
        CHECK(connections == 2);
        CHECK(status == static_cast<long>(0x80041010));
        CHECK(Only(Trace(), "wmi connect") == std::vector{connectToCimv2, connectToCimv2});
        CHECK(Live()["wmi"] == 1);
        CHECK(first.Query(L"SELECT P FROM Thing") == 0);
    }
    CHECK(Live()["wmi"] == 0);
}

TEST_CASE("After a failed connection the next client connects again")
{
    Simulate({{"wmi", {{"connect", "0x80041003"}}}});
    WMIClient first(cimv2);
    WMIClient second(cimv2);
    CHECK(first.Query(L"SELECT P FROM Thing") == static_cast<long>(0x80041003));
    CHECK(second.Query(L"SELECT P FROM Thing") == static_cast<long>(0x80041003));
    CHECK(Only(Trace(), "wmi connect") == std::vector{connectToCimv2, connectToCimv2});
    Simulate(Rows(Json::array({{{"P", 1}}})));
    WMIClient third(cimv2);
    CHECK(third.Query(L"SELECT P FROM Thing") == 0);
    CHECK(first.Query(L"SELECT P FROM Thing") == static_cast<long>(0x80041003));
}

TEST_CASE("The waits for a connection, a result and a row have a limit")
{
    Simulate(Rows({{{"P", 1}}, {{"P", 2}}}));
    WMIClient client(cimv2);
    REQUIRE(client.Query(L"SELECT P FROM Thing") == 0);
    while (client.GetNext()) {
    }
    CHECK(Only(Trace(), "wmi").size() == 5); // connection, query and three steps
    for (const std::string& call : Trace()) {
        CHECK(call.find("without a limit") == std::string::npos);
    }
}

TEST_CASE("A query that times out fails")
{
    Simulate({{"wmi",
               {{"classes", {{"Thing", Json::array({{{"P", 1}}})}}},
                {"failures", Json::array({{{"contains", "Thing"}, {"row", 1}, {"status", "0x00040004"}}})}}}});
    WMIClient client(cimv2);
    CHECK(client.Query(L"SELECT P FROM Thing") == WBEM_S_TIMEDOUT);
    CHECK_FALSE(client.GetNext());
}

TEST_CASE("If WMI fails to return a row, the rows end")
{
    Simulate({{"wmi",
               {{"classes", {{"Thing", {{{"P", 1}}, {{"P", 2}}, {{"P", 3}}}}}},
                {"failures", Json::array({{{"contains", "Thing"}, {"row", 2}, {"status", "0x80041001"}}})}}}});
    WMIClient client(cimv2);
    REQUIRE(client.Query(L"SELECT P FROM Thing") == 0);
    CHECK(client.GetNext());
    CHECK_FALSE(client.GetNext());
    uint32_t number = 7;
    CHECK(client.GetValue(L"P", number) != 0);
    CHECK(number == 7);
}

TEST_CASE("On a thread without COM every query fails with COM's own status")
{
    // A thread without COM joins the multi-threaded apartment of any other thread, so this test runs in its own process.
    if (!std::getenv("ORVEL_TEST_WITHOUT_COM")) {
        return;
    }
    ::CoUninitialize();
    WMIClient client(cimv2);
    CHECK(client.Query(L"SELECT * FROM Win32_Bios") == CO_E_NOTINITIALIZED);
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
}
