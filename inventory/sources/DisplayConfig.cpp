#include "sources/DisplayConfig.h"

#include <algorithm>

#include <windows.h>

#include "sources/Received.h"

namespace orvel::shared::inventory {

namespace {

struct Configuration {
    std::vector<DISPLAYCONFIG_PATH_INFO> paths;
    std::vector<DISPLAYCONFIG_MODE_INFO> modes;
};

/// A display may come between the two calls: then both are made again, a few times.
LONG Query(Configuration& configuration)
{
    constexpr int mostTries = 4;
    LONG status = ERROR_INSUFFICIENT_BUFFER;
    for (int tries = 0; tries < mostTries && status == ERROR_INSUFFICIENT_BUFFER; ++tries) {
        UINT32 paths = 0, modes = 0;
        status = ::GetDisplayConfigBufferSizes(QDC_ONLY_ACTIVE_PATHS, &paths, &modes);
        if (status != ERROR_SUCCESS) {
            return status;
        }
        configuration.paths.resize(paths);
        configuration.modes.resize(modes);
        status = ::QueryDisplayConfig(QDC_ONLY_ACTIVE_PATHS, &paths, configuration.paths.data(), &modes,
                                      configuration.modes.data(), nullptr);
        configuration.paths.resize(std::min<size_t>(paths, configuration.paths.size()));
        configuration.modes.resize(std::min<size_t>(modes, configuration.modes.size()));
    }
    return status;
}

template <size_t Size>
std::u16string TextOf(const WCHAR (&text)[Size])
{
    return {std::begin(text), std::find(std::begin(text), std::end(text), L'\0')};
}

/// Asks for a name; false when there is none.
template <typename Request>
bool Ask(Request& request, DISPLAYCONFIG_DEVICE_INFO_TYPE type, const LUID& adapter, UINT32 id)
{
    request.header.type = type;
    request.header.size = sizeof request;
    request.header.adapterId = adapter;
    request.header.id = id;
    return ::DisplayConfigGetDeviceInfo(&request.header) == ERROR_SUCCESS;
}

std::u16string GdiName(const DISPLAYCONFIG_PATH_SOURCE_INFO& source)
{
    DISPLAYCONFIG_SOURCE_DEVICE_NAME name{};
    const bool isThere = Ask(name, DISPLAYCONFIG_DEVICE_INFO_GET_SOURCE_NAME, source.adapterId, source.id);
    return isThere ? TextOf(name.viewGdiDeviceName) : std::u16string();
}

std::u16string MonitorName(const DISPLAYCONFIG_PATH_TARGET_INFO& target)
{
    DISPLAYCONFIG_TARGET_DEVICE_NAME name{};
    const bool isThere = Ask(name, DISPLAYCONFIG_DEVICE_INFO_GET_TARGET_NAME, target.adapterId, target.id);
    return isThere ? TextOf(name.monitorFriendlyDeviceName) : std::u16string();
}

std::optional<SourceMode> ModeOf(const DISPLAYCONFIG_PATH_SOURCE_INFO& source, const Configuration& configuration)
{
    const UINT32 index = source.modeInfoIdx; // DISPLAYCONFIG_PATH_MODE_IDX_INVALID where there is none
    if (index >= configuration.modes.size() || configuration.modes[index].infoType != DISPLAYCONFIG_MODE_INFO_TYPE_SOURCE) {
        return {};
    }
    const auto& mode = configuration.modes[index].sourceMode;
    return SourceMode{mode.width, mode.height, static_cast<int32_t>(mode.position.x), static_cast<int32_t>(mode.position.y)};
}

DisplayPath PathOf(const DISPLAYCONFIG_PATH_INFO& info, const Configuration& configuration)
{
    DisplayPath path;
    path.luid = NumberOf(info.sourceInfo.adapterId);
    path.gdiName = GdiName(info.sourceInfo);
    path.targetId = info.targetInfo.id;
    path.monitor = MonitorName(info.targetInfo);
    path.mode = ModeOf(info.sourceInfo, configuration);
    path.refreshNumerator = info.targetInfo.refreshRate.Numerator;
    path.refreshDenominator = info.targetInfo.refreshRate.Denominator;
    path.outputTechnology = static_cast<uint32_t>(info.targetInfo.outputTechnology);
    return path;
}

} // namespace

DisplayConfigReading ReadDisplayConfig()
{
    Configuration configuration;
    if (const LONG status = Query(configuration); status != ERROR_SUCCESS) {
        return {Failed(status), {}};
    }
    DisplayConfigReading reading;
    for (const auto& path : configuration.paths) {
        reading.paths.push_back(PathOf(path, configuration));
    }
    return reading;
}

} // namespace orvel::shared::inventory
