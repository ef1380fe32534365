// Every platform call of a snapshot fails once and hangs once, on the DLL itself. Then exactly the values of that source
// change, and say so. What is expected is derived from the healthy snapshot.

#include <algorithm>
#include <map>
#include <optional>
#include <set>

#include <doctest/doctest.h>

#include "Snapshots.h"

using namespace orvel::tests;

namespace {

constexpr int refusal = 5;           // for calls that return an error of Windows
constexpr int noAnswer = 1460;       // ERROR_TIMEOUT
constexpr int hresult = -2147467259; // 0x80004005, for DXGI and DXCore
constexpr int64_t hresultCode = 0x80004005;
constexpr uint32_t limit = 700; // milliseconds; of a snapshot one of whose calls hangs

const std::string classKeys = "SYSTEM\\CurrentControlSet\\Control\\Class\\{4d36e968-e325-11ce-bfc1-08002be10318}\\";

/// The source that a call of the trace belongs to.
std::string SourceOf(const std::string& call)
{
    if (call.starts_with("registry ") || call.starts_with("pnp SetupDiOpenDevRegKey")) {
        return "driver_key";
    }
    if (call.starts_with("pnp ")) {
        return "setupapi";
    }
    if (call.starts_with("displays ")) {
        return "display_config";
    }
    return call.starts_with("dxgi ") || call == "load dxgi.dll" ? "dxgi" : "dxcore";
}

/// Where a value may come from when its own source has failed: as the table of properties has it.
const std::map<std::string, std::set<std::string>> laterSources = {
    {"kind", {"dxgi"}},
    {"name", {"driver_key", "dxgi"}},
    {"vendor", {"dxgi"}},
    {"vendor_id", {"dxgi"}},
    {"device_id", {"dxgi"}},
    {"subsystem_id", {"dxgi"}},
    {"revision", {"dxgi"}},
    {"luid", {"dxgi"}},
    {"driver_version", {"driver_key"}},
    {"driver_version_marketing", {"nvml", "driver_key"}},
    {"driver_date", {"driver_key"}},
    {"driver_provider", {"driver_key"}},
    {"driver_inf", {"driver_key"}},
    {"integrated", {"nvapi", "adlx"}},
    {"dedicated_memory_bytes", {"driver_key"}},
    {"pcie_generation", {"nvml"}},
    {"pcie_generation_max", {"nvml"}},
    {"pcie_lanes", {"nvml"}},
    {"pcie_lanes_max", {"nvml"}},
    {"bios_version", {"nvml"}},
};

bool HasLaterSource(const std::string& property, const Json& value)
{
    const auto later = laterSources.find(property);
    return later != laterSources.end() && value["source"].is_string() && later->second.contains(value["source"]) &&
           (value["status"] == "known" || value["status"] == "not asked");
}

bool SaysFailed(const Json& value, const std::string& source, int64_t code)
{
    return value["status"] == "failed" && value["source"] == source && value["code"] == code;
}

/// The card that a card of the healthy snapshot has become; null where it cannot be recognised.
const Json* Find(const Json& inventory, const Json& card)
{
    for (const char* property : {"instance_id", "pci_bus", "luid"}) {
        for (const auto& each : inventory["cards"]) {
            const auto& value = each[property];
            if (value["status"] == "known" && value["value"] == card[property]["value"]) {
                return &each;
            }
        }
    }
    return nullptr;
}

Json& DeviceOf(Json& machine, const std::string& instanceId)
{
    auto& devices = machine["pnp"]["devices"];
    return *std::find_if(devices.begin(), devices.end(),
                         [&](const Json& each) { return each["instance_id"] == instanceId; });
}

/// The words of a call.
std::vector<std::string> WordsOf(const std::string& call)
{
    std::vector<std::string> words(1);
    for (const char letter : call) {
        if (letter == ' ') {
            words.emplace_back();
        } else {
            words.back() += letter;
        }
    }
    return words;
}

/// Sets the status of a call of a list: of an entry, or behind the last.
void SetInList(Json& whole, const char* list, const std::vector<std::string>& words, int status)
{
    const size_t index = std::stoul(words.at(2));
    (index < whole[list].size() ? whole[list][index] : whole)[words[1]] = status;
}

/// The machine on which a call of the trace is refused; null for one that cannot be.
Json Refusing(Json machine, const std::string& call)
{
    const auto words = WordsOf(call);
    if (words[0] == "load") {
        machine.erase(words[1].substr(0, words[1].find('.')));
    } else if (words[0] == "registry") {
        machine["registry"][classKeys + words.at(2)][words.at(3)] = {{"status", refusal}};
    } else if (words[1] == "SetupDiEnumDeviceInfo") {
        SetInList(machine["pnp"], "devices", words, refusal);
    } else if (words[1] == "SetupDiGetDevicePropertyW") {
        DeviceOf(machine, words.at(2))[words.at(3)] = {{"status", refusal}};
    } else if (words[1] == "SetupDiGetDeviceInstanceIdW" || words[1] == "SetupDiOpenDevRegKey") {
        DeviceOf(machine, words.at(2))[words[1]] = refusal;
    } else if (words[1] == "DisplayConfigGetDeviceInfo") {
        for (auto& path : machine["displays"]["paths"]) {
            const bool isSource = words.at(2) == "1";
            if (std::to_string(std::stoul(path["adapterId"].get<std::string>(), nullptr, 16)) == words.at(3)) {
                path[isSource ? "viewGdiDeviceName" : "monitorFriendlyDeviceName"] = {{"status", refusal}};
            }
        }
    } else if (words[0] == "dxgi" && words.size() == 3) {
        SetInList(machine["dxgi"], "adapters", words, hresult);
    } else if (words[1] == "GetAdapter") {
        SetInList(machine["dxcore"], "adapters", words, hresult);
    } else if (words[1] == "GetProperty") {
        const char* const property = words.at(2) == "0" ? "InstanceLuid" : "IsIntegrated";
        machine["dxcore"]["adapters"][0][property] = {{"status", hresult}};
    } else if (words[1] == "IsPropertySupported" || words[1] == "GetAdapterCount" ||
               words[1] == "SetupDiDestroyDeviceInfoList") {
        return nullptr; // these have no way to fail
    } else {
        const bool isWindows = words[0] == "pnp" || words[0] == "displays";
        machine[words[0]][words[1]] = isWindows ? refusal : hresult;
    }
    return machine;
}

/// The different calls of the last snapshot, and how often each was made.
std::map<std::string, int> Calls()
{
    std::map<std::string, int> calls;
    for (const auto& call : Trace()) {
        ++calls[call];
    }
    return calls;
}

/// Without its LUID, one of two equal cards cannot be distinguished by DXGI or DXCore, and has no displays.
bool IsUnmatched(const Json& value)
{
    return value["reason"] == "cannot be told apart" || value["reason"] == "no LUID";
}

/// Displays that differ in a name alone, which is not there now.
bool LacksDisplayName(const std::string& property, const Json& value, const Json& before)
{
    if (property != "displays" || value["status"] != "known") {
        return false;
    }
    Json without = before["value"];
    for (const char* name : {"gdi_name", "monitor_name"}) {
        without = before["value"];
        without[0][name] = nullptr;
        if (value["value"] == without) {
            return true;
        }
    }
    return false;
}

struct Fault {
    std::string call;
    std::string source;
    int64_t code;
    bool isUnmatching = false; // it takes the LUID, by which other sources' values are matched
};

/// Checks each value that has changed; returns how many have. A card that only DXGI has is gone without it.
int CheckChanges(const Json& healthy, const Json& inventory, const Fault& fault)
{
    int changes = 0;
    for (const auto& before : healthy["cards"]) {
        const Json* const after = Find(inventory, before);
        if (!after) {
            const bool isDxgisOwn = fault.source == "dxgi" && before["instance_id"]["status"] != "known";
            CHECK_MESSAGE(isDxgisOwn, "a card is gone: " << before["luid"].dump());
            ++changes;
            continue;
        }
        for (const auto& [property, value] : after->items()) {
            const Json& former = before[property];
            if (value == former) {
                continue;
            }
            ++changes;
            const bool isOfSource = former["source"] == fault.source || (property == "vendor" && fault.source == "setupapi");
            const bool isExpected =
                (isOfSource && (SaysFailed(value, fault.source, fault.code) || HasLaterSource(property, value) ||
                                LacksDisplayName(property, value, former))) ||
                (fault.isUnmatching && (IsUnmatched(value) || HasLaterSource(property, value)));
            CHECK_MESSAGE(isExpected, property << ": " << former.dump() << " -> " << value.dump());
        }
    }
    return changes;
}

/// The state of every source but this one.
Json OtherSources(const Json& inventory, const std::set<std::string>& names)
{
    Json others = Json::array();
    for (const auto& source : inventory["sources"]) {
        if (!names.contains(source["name"])) {
            others.push_back(source);
        }
    }
    return others;
}

/// Refuses one call and looks at the snapshot; returns how many values have changed.
int CheckRefused(const Json& machine, const Json& healthy, const std::string& call)
{
    const Json refusing = Refusing(machine, call);
    if (refusing.is_null()) {
        return 0;
    }
    const auto inventory = InventoryOf(refusing, "graphics");
    const std::string source = SourceOf(call);
    const bool isResult = source == "dxgi" || source == "dxcore";
    const Fault fault{call, source, isResult ? hresultCode : refusal, call.ends_with(" Luid")};
    CHECK(OtherSources(inventory, {source, "driver_key"}) == OtherSources(healthy, {source, "driver_key"}));
    CHECK((source == "dxgi" || inventory["cards"].size() == healthy["cards"].size()));
    if (call.starts_with("load ")) {
        CHECK(SourceIn(inventory, source)["reason"] == "source not present");
        return 1;
    }
    if (SourceIn(inventory, "setupapi")["state"] == "failed") { // the list itself: DXGI's adapters are the cards
        CHECK(SourceIn(inventory, "setupapi")["code"] == refusal);
        return 1;
    }
    return CheckChanges(healthy, inventory, fault);
}

/// Lets one call hang and looks at the snapshot.
void CheckHanging(const Json& machine, const Json& healthy, const std::string& call, int nth)
{
    Json hanging = machine;
    hanging["hang"] = {{{"call", call}, {"nth", nth}, {"milliseconds", 600'000}}};
    const auto inventory = InventoryOf(hanging, "graphics", limit);
    const std::string source = SourceOf(call);
    if (call.ends_with("SetupDiDestroyDeviceInfoList")) {
        CHECK(inventory == healthy); // everything was there before
        return;
    }
    CHECK(SourceIn(inventory, source)["code"] == noAnswer);
    const std::set<std::string> affected =
        source == "setupapi" ? std::set<std::string>{source, "driver_key"} : std::set{source};
    CHECK(OtherSources(inventory, affected) == OtherSources(healthy, affected));
    CHECK((source == "dxgi" || inventory["cards"].size() == healthy["cards"].size()));
    if (source == "setupapi") {
        for (const auto& card : inventory["cards"]) {
            CHECK(SaysFailed(card["instance_id"], "setupapi", noAnswer));
            CHECK(card["shared_memory_bytes"]["source"] == "dxgi");
        }
        return;
    }
    CHECK(CheckChanges(healthy, inventory, {call, source, noAnswer}) > 0);
    for (const auto& card : inventory["cards"]) {
        for (const auto& [property, value] : card.items()) {
            CHECK_MESSAGE(
                (value["source"] != source || SaysFailed(value, source, noAnswer) || value["status"] == "unavailable"),
                property << ": " << value.dump());
        }
    }
}

} // namespace

TEST_CASE("Each call of a snapshot that is refused changes the values of its source, and they say so")
{
    const Json machine = TwinCards();
    const Json healthy = InventoryOf(machine, "graphics");
    std::map<std::string, int> changing; // calls by their source
    for (const auto& [call, count] : Calls()) {
        CAPTURE(call);
        changing[SourceOf(call)] += CheckRefused(machine, healthy, call) > 0 ? 1 : 0;
    }
    CHECK(changing["setupapi"] > 30);
    CHECK(changing["driver_key"] >= 4);
    CHECK(changing["display_config"] == 6);
    CHECK(changing["dxgi"] == 8); // all but the end of the list
    CHECK(changing["dxcore"] >= 5);
}

TEST_CASE("Each call of a snapshot that hangs takes the values of its source, and of no other")
{
    const Json machine = TwinCards();
    const Json healthy = InventoryOf(machine, "graphics");
    const auto calls = Calls();
    CHECK(calls.size() > 60);
    for (const auto& [call, count] : calls) {
        for (int nth = 1; nth <= count; ++nth) {
            CAPTURE(call);
            CAPTURE(nth);
            CheckHanging(machine, healthy, call, nth);
        }
    }
}
