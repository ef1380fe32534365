// The calls of the loader and the registry in a recording.

#include <doctest/doctest.h>

#include <windows.h>

#include "LoadedSimulation.h"
#include "platform/Registry.h"
#include "simulation/Drivers.h"

using namespace orvel::tests;

namespace {

using orvel::shared::enumeration::OpenKey;
using orvel::shared::enumeration::RegistryKey;

template <typename Run>
Json Record(Run&& run)
{
    orvel::tools::StartRecording();
    run();
    return Json::parse(orvel::tools::EndRecording());
}

} // namespace

TEST_CASE("A recording has the loader's calls in the order of the drivers' calls; the trace has only these")
{
    Simulate({{"nvml", {{"devices", Json::array()}}}});
    const Json recording = Record([] {
        const Driver nvml(L"nvml.dll");
        nvml.Call("nvmlInit_v2");
        nvml.Call("nvmlShutdown");
    });
    const char* const calls[] = {"loader LoadLibraryW nvml.dll",
                                 "loader GetProcAddress nvml.dll nvmlInit_v2",
                                 "nvml nvmlInit_v2",
                                 "loader GetProcAddress nvml.dll nvmlShutdown",
                                 "nvml nvmlShutdown",
                                 "loader FreeLibrary nvml.dll"};
    REQUIRE(recording.size() == std::size(calls));
    for (size_t index = 0; index < recording.size(); ++index) {
        CHECK(recording[index]["call"] == calls[index]);
    }
    CHECK(Trace() == std::vector<std::string>{"nvml nvmlInit_v2", "nvml nvmlShutdown"});
}

TEST_CASE("A recording numbers registry keys, even if Windows reuses their values")
{
    Simulate({{"registry", {{"A\\B", {{"text", "x"}}}}}});
    const auto read = [] {
        for (int round = 0; round < 2; ++round) {
            RegistryKey parent;
            RegistryKey key;
            OpenKey(HKEY_LOCAL_MACHINE, "A", parent);
            OpenKey(parent.get(), L"B", key);
            BYTE data[8];
            DWORD bytes = sizeof(data);
            ::RegQueryValueExW(key.get(), L"text", nullptr, nullptr, data, &bytes);
            ::RegQueryValueExA(key.get(), "text", nullptr, nullptr, nullptr, &bytes);
        }
    };
    const Json recording = Record(read);
    REQUIRE(recording.size() == 12);
    CHECK(recording[0] == Json{{"call", "registry RegOpenKeyExA A"}, {"number", KEY_READ}, {"returns", {0}}});
    CHECK(recording[1] == Json{{"call", "registry RegOpenKeyExW B"}, {"on", 0}, {"number", KEY_READ}, {"returns", {1}}});
    CHECK(recording[2] == Json{{"call", "registry RegQueryValueExW text"}, {"on", 1}, {"number", 8}});
    CHECK(recording[3] == Json{{"call", "registry RegQueryValueExA text"}, {"on", 1}});
    CHECK(recording[4] == Json{{"call", "registry RegCloseKey"}, {"on", 1}});
    CHECK(recording[5] == Json{{"call", "registry RegCloseKey"}, {"on", 0}});
    CHECK(recording[7]["returns"] == Json::array({3}));
    CHECK(Trace().empty());
}

TEST_CASE("Nothing is recorded before or after a recording")
{
    Simulate({{"registry", {{"A", {{"v", 1}}}}}});
    const auto open = [] {
        RegistryKey key;
        OpenKey(HKEY_LOCAL_MACHINE, "A", key);
    };
    open();
    CHECK(Record([] {}) == Json::array());
    open();
    CHECK(Json::parse(orvel::tools::EndRecording()) == Json::array());
}
