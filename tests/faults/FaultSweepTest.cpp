// Every platform call of the healthy workstation that a machine file can make fail fails once, one at a time and in pairs.
// The expected effect is written next to each fault by hand; everything else must stay unchanged.

#include <algorithm>
#include <random>
#include <sstream>

#include <doctest/doctest.h>

#include "Faults.h"
#include "support/Enumerated.h"
#include "vendors/Vendors.h"

using namespace orvel::tests;

namespace {

std::map<std::string, Json> ByManufacturer(const Json& cards)
{
    std::map<std::string, Json> result;
    for (const Json& card : cards) {
        result[card["Manufacturer"]] = card;
    }
    return result;
}

Fields Differences(const Json& before, const Json& after)
{
    Fields fields;
    for (const auto& [name, value] : before.items()) {
        if (after.at(name) != value) {
            fields.insert(name);
        }
    }
    return fields;
}

std::string Joined(const Fields& fields)
{
    std::string text;
    for (const std::string& field : fields) {
        text += " " + field;
    }
    return text;
}

void CheckNothingLives(const Enumerated& result, const std::set<std::string>& alive)
{
    for (const auto& [api, objects] : result.Live) {
        CHECK_MESSAGE((objects == 0 || alive.contains(api)), api << " has " << objects << " live objects");
    }
}

/// The only exception that the enumeration may throw is the status of a query for the memory modules.
void CheckThrown(const Json& thrown)
{
    CHECK_MESSAGE((thrown == nullptr || thrown["type"] == "long"), "left with " << thrown.dump());
}

void CheckCards(const Enumerated& healthy, const Enumerated& result, const Consequence& expected)
{
    const auto before = ByManufacturer(healthy.Cards);
    const auto after = ByManufacturer(result.Cards);
    CHECK(after.size() == result.Cards.size());
    for (const auto& [manufacturer, card] : before) {
        if (IsGuest(manufacturer)) {
            continue;
        }
        INFO(manufacturer);
        const bool isGone = !after.contains(manufacturer);
        CHECK(isGone == expected.Gone.contains(manufacturer));
        if (!isGone) {
            const auto changed = expected.Changed.find(manufacturer);
            CHECK(Joined(Differences(card, after.at(manufacturer))) ==
                  Joined(changed == expected.Changed.end() ? Fields{} : changed->second));
        }
    }
}

void CheckFault(const Enumerated& healthy, const Fault& fault)
{
    INFO(fault.Name);
    Json machine = HealthyWorkstation();
    Apply(fault, machine);
    REQUIRE(machine != HealthyWorkstation());
    const Enumerated result = Enumerate(machine);
    CheckCards(healthy, result, fault.Expected);
    CheckNothingLives(result, fault.Expected.Alive);
    if (fault.Expected.Leaves) {
        CHECK(result.Thrown == Json{{"type", "long"}, {"value", *fault.Expected.Leaves}});
    } else {
        CHECK(result.Thrown == nullptr);
    }
    // The next enumeration is not affected.
    CHECK(Enumerate(HealthyWorkstation()).Cards == healthy.Cards);
}

void Sweep(const std::vector<Fault>& faults)
{
    const Enumerated healthy = Enumerate(HealthyWorkstation());
    REQUIRE_MESSAGE(healthy.Cards.size() == std::size(orvel::shared::enumeration::vendors), "each vendor has a card");
    for (const Fault& fault : faults) {
        CheckFault(healthy, fault);
    }
}

/// Calls whose failure has another name in a machine file; none where no machine can fail them.
const std::map<std::string, std::string> otherNames = {{"query", "/wmi/failures"},
                                                       {"DwmIsCompositionEnabled", "/dwm"},
                                                       {"CreateDXGIFactory", "/dxgi/factory"},
                                                       {"nvmlDeviceGetHandleByIndex_v2", "/handle"},
                                                       {"AdlAdapterIndexFromADLXGPU", "/AdapterIndex"},
                                                       {"next", ""},
                                                       {"disconnect", ""},
                                                       {"EnumAdapters", ""},
                                                       {"GetDesc", ""},
                                                       {"Size", ""},
                                                       {"Release", ""}};

/// The name of a call in a machine file: the function, or the property that is read.
std::string NameOfCall(const std::string& call)
{
    std::istringstream words(call);
    std::string api;
    std::string name;
    words >> api >> name;
    if (api == "wmi" && name == "get") {
        words >> name;
    }
    const auto other = otherNames.find(name);
    return other == otherNames.end() ? name : other->second;
}

std::string TextOf(const std::vector<Fault>& faults)
{
    std::string text;
    for (const Fault& fault : faults) {
        for (const Edit& edit : fault.Edits) {
            text += edit.Path.to_string() + " " + (edit.Value ? edit.Value->dump() : "") + "\n";
        }
    }
    return text;
}

/// A failed query is identified by its number, which changes when the other fault removes earlier queries.
bool MayHitAnyone(const Fault& fault)
{
    return fault.Edits.front().Path.to_string().starts_with("/wmi/failures");
}

/// Vendors that neither fault affects must keep their records.
void CheckPair(const Enumerated& healthy, const Fault& first, const Fault& second)
{
    INFO(first.Name << " and " << second.Name);
    Json machine = HealthyWorkstation();
    Apply(first, machine);
    Apply(second, machine);
    const Enumerated result = Enumerate(machine);
    const Consequence either = first.Expected + second.Expected;
    CheckThrown(result.Thrown);
    CheckNothingLives(result, either.Alive);
    const auto after = ByManufacturer(result.Cards);
    const bool isAnyoneTouched = MayHitAnyone(first) || MayHitAnyone(second);
    for (const auto& [manufacturer, card] : ByManufacturer(healthy.Cards)) {
        const bool isTouched = isAnyoneTouched || IsGuest(manufacturer) || either.Gone.contains(manufacturer) ||
                               either.Changed.contains(manufacturer);
        CHECK_MESSAGE((isTouched || (after.contains(manufacturer) && after.at(manufacturer) == card)), manufacturer);
    }
    Enumerate(HealthyWorkstation()); // closes what the faults left open
}

} // namespace

TEST_CASE("A failed WMI query has only the listed effects")
{
    Sweep(WmiQueryFaults(Enumerate(HealthyWorkstation()).Trace));
}

TEST_CASE("WMI without a connection, a class, a row or a property has only the listed effects")
{
    Sweep(WmiRowFaults());
}

TEST_CASE("A fault of the desktop window manager, DXGI or the registry has only the listed effects")
{
    Sweep(SystemFaults());
}

TEST_CASE("A fault of OpenCL has only the listed effects")
{
    Sweep(OpenClFaults());
}

TEST_CASE("A fault of NVAPI has only the listed effects")
{
    Sweep(NvapiFaults());
}

TEST_CASE("A fault of NVML has only the listed effects")
{
    Sweep(NvmlFaults());
}

TEST_CASE("A fault of ADL has only the listed effects")
{
    Sweep(AdlFaults());
}

TEST_CASE("A fault of ADLX has only the listed effects")
{
    Sweep(AdlxFaults());
}

TEST_CASE("The sweeps cover every call of a healthy enumeration")
{
    const std::string faults = TextOf(AllFaults());
    std::set<std::string> missing;
    for (const std::string& call : Enumerate(HealthyWorkstation()).Trace) {
        if (faults.find(NameOfCall(call)) == std::string::npos) {
            missing.insert(call);
        }
    }
    CHECK_MESSAGE(missing.empty(),
                  "no fault for:" << Joined({missing.begin(), missing.end()})
                                  << "; give machines/workstation.json what is asked for, and tests/faults/ its fault");
}

TEST_CASE("Two faults at once affect only the vendors that they affect alone, in a sample of 200 pairs")
{
    const std::vector<Fault> faults = AllFaults();
    const Enumerated healthy = Enumerate(HealthyWorkstation());
    std::mt19937 random(20221121);
    for (int pair = 0; pair < 200; ++pair) {
        const Fault& first = faults[random() % faults.size()];
        const Fault& second = faults[random() % faults.size()];
        CheckPair(healthy, first, second);
    }
}
