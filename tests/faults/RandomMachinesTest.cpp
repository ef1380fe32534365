// On random machines the library does not crash, its records are complete, and it throws only statuses. ORVEL_SOAK_MACHINES
// is the number of machines, which ./dev soak sets; ORVEL_SOAK_SEED is the first seed.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <set>

#include <windows.h>

#include <doctest/doctest.h>

#include "RandomMachines.h"
#include "support/Enumerated.h"

using namespace orvel::tests;

namespace {

uint32_t Setting(const char* name, uint32_t otherwise)
{
    const char* text = std::getenv(name);
    return text ? static_cast<uint32_t>(std::stoul(text)) : otherwise;
}

uint32_t currentSeed = 0;

LONG WINAPI TellMachine(EXCEPTION_POINTERS* exception)
{
    std::fprintf(stderr, "Exception %#lx on the machine of ORVEL_SOAK_SEED=%u:\n%s\n",
                 exception->ExceptionRecord->ExceptionCode, currentSeed, RandomMachine(currentSeed).dump(1).c_str());
    std::fflush(stderr);
    return EXCEPTION_CONTINUE_SEARCH;
}

bool Hides(const Json& machine, const char* api, const char* list, const char* function)
{
    const Json names = machine.value(api, Json::object()).value(list, Json::array());
    return std::find(names.begin(), names.end(), function) != names.end();
}

bool Refuses(const Json& machine, const char* api, const char* function)
{
    const Json answer = machine.value(api, Json::object()).value(function, Json(0));
    return answer != 0;
}

/// Interfaces whose sessions may stay open: those whose shutdown fails, and ADLX if AMD's query fails.
std::set<std::string> Unended(const Json& machine, const Enumerated& result)
{
    std::set<std::string> interfaces;
    if (Refuses(machine, "nvapi", "NvAPI_Unload") || Hides(machine, "nvapi", "unresolved", "NvAPI_Unload")) {
        interfaces.insert("nvapi");
    }
    if (Refuses(machine, "nvml", "nvmlShutdown")) {
        interfaces.insert("nvml");
    }
    if (Hides(machine, "adl", "missing", "ADL2_Main_Control_Destroy")) {
        interfaces.insert("adl");
    }
    const std::string line = Line("error", "AMD::QueryInfo", "Failed to get Win32_VideoController fields from WMI");
    if (std::find(result.Log.begin(), result.Log.end(), line) != result.Log.end()) {
        interfaces.insert("adlx");
    }
    return interfaces;
}

bool IsNumber(const Json& value)
{
    return value.is_number() || value == "Infinity" || value == "-Infinity" || value == "NaN";
}

void CheckCard(const Json& card, const Json& healthy)
{
    CHECK(card.size() == healthy.size());
    const bool isCut = card["Manufacturer"] == "Nvidia"; // NVAPI truncates long texts
    for (const auto& [name, value] : card.items()) {
        INFO(name);
        const Json& usual = healthy.at(name);
        CHECK((usual.is_number() ? IsNumber(value) : value.type() == usual.type()));
        const bool isAnyBytes = name == "BiosVersion"; // the registry may contain lone surrogates
        if (value.is_string() && !isCut && !isAnyBytes) {
            CHECK(value.get<std::string>().find("\xEF\xBF\xBD") == std::string::npos); // the replacement of invalid UTF-8
        }
    }
}

void CheckMachine(uint32_t seed, const Json& healthyCard)
{
    currentSeed = seed;
    const Json machine = RandomMachine(seed);
    INFO("ORVEL_SOAK_SEED=" << seed << " ORVEL_SOAK_MACHINES=1: " << machine.dump());
    const auto start = std::chrono::steady_clock::now();
    const Enumerated result = Enumerate(machine);
    CHECK(std::chrono::steady_clock::now() - start < std::chrono::seconds(20));
    CHECK((result.Thrown == nullptr || result.Thrown["type"] == "long"));
    for (const Json& card : result.Cards) {
        CheckCard(card, healthyCard);
    }
    const auto unended = Unended(machine, result);
    for (const auto& [api, objects] : result.Live) {
        CHECK_MESSAGE((objects == 0 || unended.contains(api)), api << " has " << objects << " live objects");
    }
    if (unended.contains("adlx")) {
        Enumerate(Machine("workstation")); // closes what was left open
    }
}

} // namespace

TEST_SUITE_BEGIN("soak");

TEST_CASE("On random machines each vendor's records are complete, or its run ends")
{
    const uint32_t first = Setting("ORVEL_SOAK_SEED", 1);
    const uint32_t machines = Setting("ORVEL_SOAK_MACHINES", 500);
    const auto former = ::SetUnhandledExceptionFilter(TellMachine);
    const Json healthyCard = Enumerate(Machine("workstation")).Card(0);
    for (uint32_t i = 0; i < machines; ++i) {
        CheckMachine(first + i, healthyCard);
    }
    ::SetUnhandledExceptionFilter(former);
}

TEST_SUITE_END();
