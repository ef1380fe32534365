#include "windows/DisplayConfig.h"

#include <algorithm>
#include <string>

#include "machine/CurrentMachine.h"
#include "trace/Trace.h"
#include "trace/Violations.h"
#include "windows/SystemScope.h"

namespace orvel::simulation {

namespace {

constexpr UINT32 noMode = DISPLAYCONFIG_PATH_MODE_IDX_INVALID;

bool IsForSystem(const Machine& machine)
{
    return machine.displays.standing == Standing::System;
}

LONG RefuseArgument(const std::string& call, const char* what)
{
    return Refuse(call, what, static_cast<LONG>(ERROR_INVALID_PARAMETER));
}

/// One of the three kinds of query, and nothing else.
bool IsQuery(UINT32 flags)
{
    return flags == QDC_ALL_PATHS || flags == QDC_ONLY_ACTIVE_PATHS || flags == QDC_DATABASE_CURRENT;
}

LUID LuidOf(uint64_t number)
{
    return {static_cast<DWORD>(number), static_cast<LONG>(number >> 32)};
}

bool IsSame(const LUID& luid, uint64_t number)
{
    return luid.LowPart == static_cast<DWORD>(number) && luid.HighPart == static_cast<LONG>(number >> 32);
}

struct Configuration {
    std::vector<DISPLAYCONFIG_PATH_INFO> paths;
    std::vector<DISPLAYCONFIG_MODE_INFO> modes;
};

/// Clones of one source share its mode.
UINT32 SourceModeIndex(const DisplayPathModel& path, Configuration& configuration)
{
    if (!path.sourceMode) {
        return noMode;
    }
    auto& modes = configuration.modes;
    const auto found = std::ranges::find_if(modes, [&](const DISPLAYCONFIG_MODE_INFO& mode) {
        return mode.infoType == DISPLAYCONFIG_MODE_INFO_TYPE_SOURCE && mode.id == path.sourceId &&
               IsSame(mode.adapterId, path.adapterId);
    });
    if (found == modes.end()) {
        DISPLAYCONFIG_MODE_INFO mode{};
        mode.infoType = DISPLAYCONFIG_MODE_INFO_TYPE_SOURCE;
        mode.id = path.sourceId;
        mode.adapterId = LuidOf(path.adapterId);
        mode.sourceMode.width = path.sourceMode->width;
        mode.sourceMode.height = path.sourceMode->height;
        mode.sourceMode.pixelFormat = DISPLAYCONFIG_PIXELFORMAT_32BPP;
        mode.sourceMode.position = {path.sourceMode->x, path.sourceMode->y};
        modes.push_back(mode);
        return static_cast<UINT32>(modes.size()) - 1;
    }
    return static_cast<UINT32>(found - modes.begin());
}

UINT32 TargetModeIndex(const DisplayPathModel& path, Configuration& configuration)
{
    DISPLAYCONFIG_MODE_INFO mode{};
    mode.infoType = DISPLAYCONFIG_MODE_INFO_TYPE_TARGET;
    mode.id = path.targetId;
    mode.adapterId = LuidOf(path.adapterId);
    mode.targetMode.targetVideoSignalInfo.vSyncFreq = {path.refreshRate[0], path.refreshRate[1]};
    configuration.modes.push_back(mode);
    return static_cast<UINT32>(configuration.modes.size()) - 1;
}

Configuration ConfigurationOf(const DisplaysModel& model)
{
    Configuration configuration;
    for (const DisplayPathModel& path : model.paths) {
        DISPLAYCONFIG_PATH_INFO info{};
        info.sourceInfo.adapterId = LuidOf(path.adapterId);
        info.sourceInfo.id = path.sourceId;
        info.sourceInfo.modeInfoIdx = SourceModeIndex(path, configuration);
        info.sourceInfo.statusFlags = DISPLAYCONFIG_SOURCE_IN_USE;
        info.targetInfo.adapterId = LuidOf(path.adapterId);
        info.targetInfo.id = path.targetId;
        info.targetInfo.modeInfoIdx = TargetModeIndex(path, configuration);
        info.targetInfo.outputTechnology = static_cast<DISPLAYCONFIG_VIDEO_OUTPUT_TECHNOLOGY>(path.outputTechnology);
        info.targetInfo.rotation = DISPLAYCONFIG_ROTATION_IDENTITY;
        info.targetInfo.scaling = DISPLAYCONFIG_SCALING_IDENTITY;
        info.targetInfo.refreshRate = {path.refreshRate[0], path.refreshRate[1]};
        info.targetInfo.targetAvailable = TRUE;
        info.targetInfo.statusFlags = DISPLAYCONFIG_TARGET_IN_USE;
        info.flags = DISPLAYCONFIG_PATH_ACTIVE;
        configuration.paths.push_back(info);
    }
    return configuration;
}

// --- the functions ---

LONG WINAPI BufferSizes(UINT32 flags, UINT32* paths, UINT32* modes)
{
    const auto machine = CurrentMachine();
    if (IsForSystem(*machine)) {
        const SystemScope scope;
        return GetDisplayConfigBufferSizes(flags, paths, modes);
    }
    const std::string call = "displays GetDisplayConfigBufferSizes";
    AddToTrace(call);
    if (!paths || !modes) {
        return RefuseArgument(call, "a null pointer");
    }
    if (!IsQuery(flags)) {
        return RefuseArgument(call, "flags that are no query");
    }
    if (machine->displays.standing == Standing::Missing) {
        return ERROR_NOT_SUPPORTED; // as without a WDDM driver
    }
    const DisplaysModel& model = machine->displays.model;
    if (model.bufferSizes.code == 0) {
        const auto configuration = ConfigurationOf(model);
        *paths = static_cast<UINT32>(configuration.paths.size());
        *modes = static_cast<UINT32>(configuration.modes.size());
    }
    return model.bufferSizes.code;
}

LONG WINAPI Query(UINT32 flags, UINT32* pathCount, DISPLAYCONFIG_PATH_INFO* paths, UINT32* modeCount,
                  DISPLAYCONFIG_MODE_INFO* modes, DISPLAYCONFIG_TOPOLOGY_ID* topology)
{
    const auto machine = CurrentMachine();
    if (IsForSystem(*machine)) {
        const SystemScope scope;
        return QueryDisplayConfig(flags, pathCount, paths, modeCount, modes, topology);
    }
    const std::string call = "displays QueryDisplayConfig";
    AddToTrace(call);
    if (!pathCount || !modeCount || (!paths && *pathCount > 0) || (!modes && *modeCount > 0)) {
        return RefuseArgument(call, "a null pointer");
    }
    if (!IsQuery(flags) || (topology != nullptr) != (flags == QDC_DATABASE_CURRENT)) {
        return RefuseArgument(call, "flags that are no query, or a topology for another one");
    }
    if (machine->displays.standing == Standing::Missing) {
        return ERROR_NOT_SUPPORTED;
    }
    const DisplaysModel& model = machine->displays.model;
    if (model.query.code != 0) {
        return model.query.code;
    }
    const auto configuration = ConfigurationOf(model);
    if (*pathCount < configuration.paths.size() || *modeCount < configuration.modes.size()) {
        return ERROR_INSUFFICIENT_BUFFER;
    }
    std::ranges::copy(configuration.paths, paths);
    std::ranges::copy(configuration.modes, modes);
    *pathCount = static_cast<UINT32>(configuration.paths.size());
    *modeCount = static_cast<UINT32>(configuration.modes.size());
    if (topology) {
        *topology = DISPLAYCONFIG_TOPOLOGY_EXTEND;
    }
    return ERROR_SUCCESS;
}

template <size_t Size>
void CopyText(const std::wstring& text, WCHAR (&target)[Size])
{
    *std::copy_n(text.begin(), std::min(text.size(), Size - 1), target) = L'\0';
}

LONG GiveSourceName(const DisplayPathModel& path, DISPLAYCONFIG_SOURCE_DEVICE_NAME& name)
{
    const auto write = [&name](const WideText& text) { CopyText(text.text, name.viewGdiDeviceName); };
    return path.viewGdiDeviceName.Give(ERROR_SUCCESS, {{name.viewGdiDeviceName, sizeof name.viewGdiDeviceName}}, write);
}

LONG GiveTargetName(const DisplayPathModel& path, DISPLAYCONFIG_TARGET_DEVICE_NAME& name)
{
    name.outputTechnology = static_cast<DISPLAYCONFIG_VIDEO_OUTPUT_TECHNOLOGY>(path.outputTechnology);
    const auto write = [&name](const WideText& text) {
        CopyText(text.text, name.monitorFriendlyDeviceName);
        name.flags.value = 1; // the name is the monitor's
    };
    return path.monitorFriendlyDeviceName.Give(
        ERROR_SUCCESS, {{name.monitorFriendlyDeviceName, sizeof name.monitorFriendlyDeviceName}}, write);
}

/// The path that a request means; null where there is none.
const DisplayPathModel* PathOf(const DisplaysModel& model, const DISPLAYCONFIG_DEVICE_INFO_HEADER& header)
{
    const auto found = std::ranges::find_if(model.paths, [&](const DisplayPathModel& path) {
        const bool isSource = header.type == DISPLAYCONFIG_DEVICE_INFO_GET_SOURCE_NAME;
        return IsSame(header.adapterId, path.adapterId) && header.id == (isSource ? path.sourceId : path.targetId);
    });
    return found == model.paths.end() ? nullptr : &*found;
}

/// Clears what follows the header, as Windows does, and fills it.
template <typename Name, typename Give>
LONG GiveName(DISPLAYCONFIG_DEVICE_INFO_HEADER& header, const DisplayPathModel& path, Give give)
{
    const auto kept = header;
    auto& name = reinterpret_cast<Name&>(header);
    name = {};
    name.header = kept;
    return give(path, name);
}

LONG WINAPI DeviceInfo(DISPLAYCONFIG_DEVICE_INFO_HEADER* header)
{
    const auto machine = CurrentMachine();
    if (IsForSystem(*machine)) {
        const SystemScope scope;
        return DisplayConfigGetDeviceInfo(header);
    }
    const std::string call = "displays DisplayConfigGetDeviceInfo " +
                             (header ? std::to_string(header->type) + " " + std::to_string(header->adapterId.LowPart) + " " +
                                           std::to_string(header->id)
                                     : std::string("?"));
    AddToTrace(call);
    if (!header) {
        return RefuseArgument(call, "a null pointer");
    }
    const bool isSource = header->type == DISPLAYCONFIG_DEVICE_INFO_GET_SOURCE_NAME;
    if (!isSource && header->type != DISPLAYCONFIG_DEVICE_INFO_GET_TARGET_NAME) {
        return ERROR_NOT_SUPPORTED; // of the kinds of information, these two are simulated
    }
    if (header->size != (isSource ? sizeof(DISPLAYCONFIG_SOURCE_DEVICE_NAME) : sizeof(DISPLAYCONFIG_TARGET_DEVICE_NAME))) {
        return RefuseArgument(call, "the size is wrong");
    }
    if (machine->displays.standing == Standing::Missing) {
        return ERROR_NOT_SUPPORTED;
    }
    const DisplayPathModel* const path = PathOf(machine->displays.model, *header);
    if (!path) {
        return RefuseArgument(call, "no active path has this adapter and id");
    }
    return isSource ? GiveName<DISPLAYCONFIG_SOURCE_DEVICE_NAME>(*header, *path, &GiveSourceName)
                    : GiveName<DISPLAYCONFIG_TARGET_DEVICE_NAME>(*header, *path, &GiveTargetName);
}

} // namespace

std::vector<Redirection> DisplayConfigRedirections()
{
    return {
        {AsProcedure(&GetDisplayConfigBufferSizes), AsProcedure(&BufferSizes)},
        {AsProcedure(&QueryDisplayConfig), AsProcedure(&Query)},
        {AsProcedure(&DisplayConfigGetDeviceInfo), AsProcedure(&DeviceInfo)},
    };
}

} // namespace orvel::simulation
