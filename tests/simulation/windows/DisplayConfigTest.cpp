// The simulated display configuration: what it lists, and what it refuses. The calls are this DLL's own imports.

#include <vector>

#include <doctest/doctest.h>

#include <windows.h>

#include "simulation/Drivers.h"

using namespace orvel::tests;

namespace {

/// Two clones of one source, and a path without a mode.
Json ThreePaths()
{
    const Json mode = {{"width", 1920}, {"height", 1080}, {"x", -1920}};
    return {{"displays",
             {{"paths",
               {{{"adapterId", "0x100000007"},
                 {"sourceMode", mode},
                 {"refreshRate", {60, 1}},
                 {"outputTechnology", 5},
                 {"viewGdiDeviceName", "\\\\.\\DISPLAY1"},
                 {"monitorFriendlyDeviceName", "First"}},
                {{"adapterId", "0x100000007"}, {"targetId", 1}, {"sourceMode", mode}},
                {{"adapterId", 8}, {"sourceId", 1}, {"targetId", 2}, {"viewGdiDeviceName", {{"status", 31}}}}}}}}};
}

struct Configuration {
    LONG Status = 0;
    std::vector<DISPLAYCONFIG_PATH_INFO> Paths;
    std::vector<DISPLAYCONFIG_MODE_INFO> Modes;
};

Configuration Query(UINT32 pathCount, UINT32 modeCount)
{
    Configuration all{0, std::vector<DISPLAYCONFIG_PATH_INFO>(pathCount), std::vector<DISPLAYCONFIG_MODE_INFO>(modeCount)};
    all.Status =
        ::QueryDisplayConfig(QDC_ONLY_ACTIVE_PATHS, &pathCount, all.Paths.data(), &modeCount, all.Modes.data(), nullptr);
    return all;
}

template <typename Name>
LONG Ask(Name& name, DISPLAYCONFIG_DEVICE_INFO_TYPE type, LUID adapter, UINT32 id)
{
    name.header = {type, sizeof name, adapter, id};
    return ::DisplayConfigGetDeviceInfo(&name.header);
}

} // namespace

TEST_CASE("The display configuration has the paths of the file, and one mode for clones")
{
    Simulate(ThreePaths());
    UINT32 paths = 0, modes = 0;
    CHECK(::GetDisplayConfigBufferSizes(QDC_ONLY_ACTIVE_PATHS, &paths, &modes) == ERROR_SUCCESS);
    CHECK(paths == 3);
    CHECK(modes == 4); // one of the clones' source, and one of each target
    const auto all = Query(paths, modes);
    REQUIRE(all.Status == ERROR_SUCCESS);
    CHECK(all.Paths[0].sourceInfo.adapterId.HighPart == 1);
    CHECK(all.Paths[0].sourceInfo.adapterId.LowPart == 7);
    CHECK(all.Paths[0].targetInfo.outputTechnology == DISPLAYCONFIG_OUTPUT_TECHNOLOGY_HDMI);
    CHECK(all.Paths[0].targetInfo.refreshRate.Numerator == 60);
    CHECK(all.Paths[1].sourceInfo.modeInfoIdx == all.Paths[0].sourceInfo.modeInfoIdx);
    CHECK(all.Paths[2].sourceInfo.modeInfoIdx == DISPLAYCONFIG_PATH_MODE_IDX_INVALID);
    const auto& mode = all.Modes[all.Paths[0].sourceInfo.modeInfoIdx];
    CHECK(mode.infoType == DISPLAYCONFIG_MODE_INFO_TYPE_SOURCE);
    CHECK(mode.sourceMode.width == 1920);
    CHECK(mode.sourceMode.position.x == -1920);
    CHECK(Query(2, 4).Status == ERROR_INSUFFICIENT_BUFFER);
    CHECK(Query(3, 3).Status == ERROR_INSUFFICIENT_BUFFER);
}

TEST_CASE("The display configuration has names of sources and targets")
{
    Simulate(ThreePaths());
    const LUID first{7, 1}, second{8, 0};
    DISPLAYCONFIG_SOURCE_DEVICE_NAME source{};
    CHECK(Ask(source, DISPLAYCONFIG_DEVICE_INFO_GET_SOURCE_NAME, first, 0) == ERROR_SUCCESS);
    CHECK(std::wstring(source.viewGdiDeviceName) == L"\\\\.\\DISPLAY1");
    CHECK(Ask(source, DISPLAYCONFIG_DEVICE_INFO_GET_SOURCE_NAME, second, 1) == ERROR_GEN_FAILURE);
    DISPLAYCONFIG_TARGET_DEVICE_NAME target{};
    CHECK(Ask(target, DISPLAYCONFIG_DEVICE_INFO_GET_TARGET_NAME, first, 0) == ERROR_SUCCESS);
    CHECK(std::wstring(target.monitorFriendlyDeviceName) == L"First");
    CHECK(Ask(target, DISPLAYCONFIG_DEVICE_INFO_GET_TARGET_NAME, first, 1) == ERROR_SUCCESS);
    CHECK(std::wstring(target.monitorFriendlyDeviceName).empty());
}

TEST_CASE("Without a display configuration, and where the file says so, it fails")
{
    Simulate(Json::object());
    UINT32 paths = 0, modes = 0;
    CHECK(::GetDisplayConfigBufferSizes(QDC_ONLY_ACTIVE_PATHS, &paths, &modes) == ERROR_NOT_SUPPORTED);
    CHECK(Query(1, 1).Status == ERROR_NOT_SUPPORTED);
    Simulate({{"displays", {{"GetDisplayConfigBufferSizes", 5}, {"QueryDisplayConfig", 31}}}});
    CHECK(::GetDisplayConfigBufferSizes(QDC_ONLY_ACTIVE_PATHS, &paths, &modes) == ERROR_ACCESS_DENIED);
    CHECK(Query(1, 1).Status == ERROR_GEN_FAILURE);
}

TEST_CASE("The display configuration reports callers that break its rules")
{
    Simulate(ThreePaths());
    UINT32 paths = 0, modes = 0;
    CHECK(::GetDisplayConfigBufferSizes(0, &paths, &modes) == ERROR_INVALID_PARAMETER);
    CHECK(::QueryDisplayConfig(QDC_ONLY_ACTIVE_PATHS, nullptr, nullptr, &modes, nullptr, nullptr) ==
          ERROR_INVALID_PARAMETER);
    DISPLAYCONFIG_SOURCE_DEVICE_NAME source{};
    CHECK(Ask(source, DISPLAYCONFIG_DEVICE_INFO_GET_SOURCE_NAME, LUID{9, 0}, 0) == ERROR_INVALID_PARAMETER);
    source.header.size = 20;
    CHECK(::DisplayConfigGetDeviceInfo(&source.header) == ERROR_INVALID_PARAMETER);
    CHECK(TakeViolations() == Violations{"displays GetDisplayConfigBufferSizes: flags that are no query",
                                         "displays QueryDisplayConfig: a null pointer",
                                         "displays DisplayConfigGetDeviceInfo 1 9 0: no active path has this adapter and id",
                                         "displays DisplayConfigGetDeviceInfo 1 9 0: the size is wrong"});
}
