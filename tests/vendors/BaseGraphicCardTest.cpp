#include "vendors/BaseGraphicCard.h"

#include <functional>

#include <doctest/doctest.h>

#include "support/HostLog.h"
#include "system/WmiNamespace.h"

using namespace orvel::shared::enumeration;
using namespace orvel::tests;
using orvel::shared::wmi::WMIClient;

namespace {

/// Makes the protected readers accessible to the tests.
struct Readers : BaseGraphicCard {
    void QueryInfo(GraphicCardList&) override {}
    using BaseGraphicCard::GetAdapterName;
    using BaseGraphicCard::GetAdapterRam;
    using BaseGraphicCard::GetAdapterStatus;
    using BaseGraphicCard::GetAvailabilityCode;
    using BaseGraphicCard::GetConfigError;
    using BaseGraphicCard::GetCurrentRefreshRate;
    using BaseGraphicCard::GetCurrentResolution;
    using BaseGraphicCard::GetDriverReleaseDate;
    using BaseGraphicCard::GetDriverVersion;
    using BaseGraphicCard::GetUserConfig;
    using BaseGraphicCard::IsAeroEnabled;
};

/// The result of a reader on the machine's first video controller.
template <typename Read>
auto OfFirstRow(const Json& machine, Read read)
{
    Simulate(machine);
    WMIClient client(wmiNamespace);
    REQUIRE(client.Query(L"SELECT * FROM Win32_VideoController") == 0);
    REQUIRE(client.GetNext());
    return read(Readers(), client);
}

std::string Text(const std::string& text)
{
    return text;
}

std::string Text(uint32_t number)
{
    return std::to_string(number);
}

std::string Text(bool flag)
{
    return flag ? "true" : "false";
}

struct Reader {
    std::string Property;
    std::string Name;
    std::function<std::string(const Readers&, WMIClient&)> Read;
    std::string Healthy;
    std::string Default;
    std::string Message;
};

#define READER(property, name, healthy, neutral, message)                                                                   \
    Reader                                                                                                                  \
    {                                                                                                                       \
        property, #name, [](const Readers& readers, WMIClient& row) { return Text(readers.name(row)); }, healthy, neutral,  \
            message                                                                                                         \
    }

const std::vector<Reader> readers = {
    READER("Availability", GetAvailabilityCode, "3", "0", "Failed to get Availability from WMI"),
    READER("ConfigManagerErrorCode", GetConfigError, "0", "0", "Failed to get ConfigManagerErrorCode from WMI"),
    READER("ConfigManagerUserConfig", GetUserConfig, "false", "false", "Failed to get ConfigManagerUserConfig from WMI"),
    READER("CurrentHorizontalResolution", GetCurrentResolution, "1920x1080", "",
           "Failed to get current resolution from WMI."),
    READER("CurrentVerticalResolution", GetCurrentResolution, "1920x1080", "", "Failed to get current resolution from WMI."),
    READER("CurrentRefreshRate", GetCurrentRefreshRate, "60", "0", "Failed to get current refresh rate from WMI"),
    READER("DriverVersion", GetDriverVersion, "27.20.100.9168", "", "Failed to get driver version from WMI"),
    READER("DriverDate", GetDriverReleaseDate, "20210108000000.000000-000", "", "Failed to get Driver Date from WMI"),
    READER("Name", GetAdapterName, "Intel(R) UHD Graphics 620", "", "Failed to get Adapter Name from WMI"),
    READER("AdapterRAM", GetAdapterRam, "1024", "0", "Failed to get AdapterRAM from WMI"),
    READER("Status", GetAdapterStatus, "OK", "", "Failed to get Status from WMI"),
};

} // namespace

TEST_CASE("Each reader returns its property of the current row and logs nothing")
{
    for (const Reader& reader : readers) {
        CAPTURE(reader.Property);
        HostLog log;
        CHECK(OfFirstRow(HealthyLaptop(), reader.Read) == reader.Healthy);
        CHECK(log.Lines.empty());
    }
}

TEST_CASE("For a missing, failing or null property the reader returns its default and logs one warning")
{
    for (const Reader& reader : readers) {
        for (const Json& failure : {Json(), Json{{"status", "0x80041001"}}, Json("missing")}) {
            CAPTURE(reader.Property);
            CAPTURE(failure);
            Json machine = HealthyLaptop();
            VideoController(machine)[reader.Property] = failure;
            if (failure == "missing") {
                VideoController(machine).erase(reader.Property);
            }
            HostLog log;
            CHECK(OfFirstRow(machine, reader.Read) == reader.Default);
            CHECK(log.Lines == LogLines{"warning BaseGraphicCard::" + reader.Name + ": " + reader.Message});
        }
    }
}

TEST_CASE("Without a current row every reader returns its default")
{
    for (const Reader& reader : readers) {
        CAPTURE(reader.Property);
        Simulate(HealthyLaptop());
        WMIClient client(wmiNamespace);
        HostLog log;
        CHECK(reader.Read(Readers(), client) == reader.Default);
        CHECK(log.Lines.size() == 1);
    }
}

TEST_CASE("A positive status is a failure, like a negative one")
{
    Json machine = HealthyLaptop();
    VideoController(machine)["Status"] = {{"status", 262148}}; // timed out
    CHECK(OfFirstRow(machine, [](const Readers& r, WMIClient& row) { return r.GetAdapterStatus(row); }) == "");
}

TEST_CASE("Without a width the height is not read")
{
    Json machine = HealthyLaptop();
    VideoController(machine)["CurrentHorizontalResolution"] = nullptr;
    OfFirstRow(machine, [](const Readers& r, WMIClient& row) { return r.GetCurrentResolution(row); });
    CHECK(Only(Trace(), "wmi get") == std::vector<std::string>{"wmi get CurrentHorizontalResolution"});
}

TEST_CASE("AdapterRam counts whole mebibytes")
{
    struct Case {
        uint32_t Bytes, Mebibytes;
    };
    for (const auto [bytes, mebibytes] :
         {Case{1'048'575, 0}, Case{1'048'576, 1}, Case{4'293'918'720, 4095}, Case{4'294'967'295, 4095}}) {
        CAPTURE(bytes);
        Json machine = HealthyLaptop();
        VideoController(machine)["AdapterRAM"] = bytes;
        CHECK(OfFirstRow(machine, [](const Readers& r, WMIClient& row) { return r.GetAdapterRam(row); }) == mebibytes);
    }
}

TEST_CASE("A signed number, a fraction and a text of digits are read as a number")
{
    const auto refreshRate = [](const Json& value) {
        Json machine = HealthyLaptop();
        VideoController(machine)["CurrentRefreshRate"] = value;
        return OfFirstRow(machine, [](const Readers& r, WMIClient& row) { return r.GetCurrentRefreshRate(row); });
    };
    CHECK(refreshRate({{"vt", "I4"}, {"value", 144}}) == 144);
    CHECK(refreshRate({{"vt", "UI4"}, {"value", 4294967295U}}) == 4294967295U);
    CHECK(refreshRate("75") == 75);
    CHECK(refreshRate({{"vt", "R8"}, {"value", 60.0}}) == 60);
    CHECK(refreshRate("sixty") == 0);
}

TEST_CASE("A flag of another type is true if it converts to true")
{
    const auto userConfig = [](const Json& value) {
        Json machine = HealthyLaptop();
        VideoController(machine)["ConfigManagerUserConfig"] = value;
        return OfFirstRow(machine, [](const Readers& r, WMIClient& row) { return r.GetUserConfig(row); });
    };
    CHECK(userConfig(true));
    CHECK(userConfig(1));
    CHECK_FALSE(userConfig(0));
    CHECK(userConfig("True"));
    CHECK_FALSE(userConfig("perhaps"));
}

TEST_CASE("Desktop composition is as the window manager reports it, and off if its call fails")
{
    const auto isAeroEnabled = [](const Json& dwm) {
        Json machine = HealthyLaptop();
        machine["dwm"] = dwm;
        Simulate(machine);
        return Readers().IsAeroEnabled();
    };
    CHECK(isAeroEnabled({{"status", 0}, {"enabled", true}}));
    CHECK_FALSE(isAeroEnabled({{"status", 0}, {"enabled", false}}));
    CHECK_FALSE(isAeroEnabled({{"status", "0x80263001"}, {"enabled", true}}));
}
