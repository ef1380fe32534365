#include "Interfaces.h"

#include <algorithm>

#include "sources/Received.h"

namespace orvel::recorder {

using shared::inventory::NumberOf;

namespace {

struct Configuration {
    std::vector<DISPLAYCONFIG_PATH_INFO> Paths;
    std::vector<DISPLAYCONFIG_MODE_INFO> Modes;
};

/// The call that has refused, and its status; "" where none has.
struct Refusal {
    const char* Call;
    LONG Status;
};

/// A display may come between the two calls: then both are made again, a few times.
Refusal Query(Configuration& configuration)
{
    constexpr int mostTries = 4;
    LONG status = ERROR_INSUFFICIENT_BUFFER;
    for (int tries = 0; tries < mostTries && status == ERROR_INSUFFICIENT_BUFFER; ++tries) {
        UINT32 paths = 0, modes = 0;
        if (const LONG sizes = ::GetDisplayConfigBufferSizes(QDC_ONLY_ACTIVE_PATHS, &paths, &modes)) {
            return {"GetDisplayConfigBufferSizes", sizes};
        }
        configuration.Paths.resize(paths);
        configuration.Modes.resize(modes);
        status = ::QueryDisplayConfig(QDC_ONLY_ACTIVE_PATHS, &paths, configuration.Paths.data(), &modes,
                                      configuration.Modes.data(), nullptr);
        configuration.Paths.resize(std::min<size_t>(paths, configuration.Paths.size()));
        configuration.Modes.resize(std::min<size_t>(modes, configuration.Modes.size()));
    }
    return {status == ERROR_SUCCESS ? "" : "QueryDisplayConfig", status};
}

/// The answer to a request for a name.
template <typename Request, size_t Size>
Json RecordName(DISPLAYCONFIG_DEVICE_INFO_TYPE type, const LUID& adapter, UINT32 id, WCHAR (Request::*member)[Size])
{
    Request request{};
    request.header.type = type;
    request.header.size = sizeof request;
    request.header.adapterId = adapter;
    request.header.id = id;
    if (const LONG status = ::DisplayConfigGetDeviceInfo(&request.header)) {
        return {{"status", status}};
    }
    const WCHAR* const text = request.*member;
    return WideText(std::wstring_view(text, ::wcsnlen(text, Size)));
}

/// The path's mode, unless it has no pixels.
std::optional<Json> RecordMode(const DISPLAYCONFIG_PATH_SOURCE_INFO& source, const Configuration& configuration)
{
    const UINT32 index = source.modeInfoIdx;
    if (index >= configuration.Modes.size() || configuration.Modes[index].infoType != DISPLAYCONFIG_MODE_INFO_TYPE_SOURCE) {
        return std::nullopt;
    }
    const auto& mode = configuration.Modes[index].sourceMode;
    const bool isEmpty = mode.width == 0 || mode.height == 0;
    return isEmpty ? std::nullopt
                   : std::optional(Json{
                         {"width", mode.width}, {"height", mode.height}, {"x", mode.position.x}, {"y", mode.position.y}});
}

Json RecordPath(const DISPLAYCONFIG_PATH_INFO& info, const Configuration& configuration)
{
    const DISPLAYCONFIG_PATH_SOURCE_INFO& source = info.sourceInfo;
    const DISPLAYCONFIG_PATH_TARGET_INFO& target = info.targetInfo;
    Json path = {{"adapterId", NumberOf(source.adapterId)}, {"sourceId", source.id}, {"targetId", target.id}};
    if (const auto mode = RecordMode(source, configuration)) {
        path["sourceMode"] = *mode;
    }
    path["refreshRate"] = {target.refreshRate.Numerator, target.refreshRate.Denominator};
    path["outputTechnology"] = static_cast<int32_t>(target.outputTechnology);
    path["viewGdiDeviceName"] = RecordName(DISPLAYCONFIG_DEVICE_INFO_GET_SOURCE_NAME, source.adapterId, source.id,
                                           &DISPLAYCONFIG_SOURCE_DEVICE_NAME::viewGdiDeviceName);
    path["monitorFriendlyDeviceName"] = RecordName(DISPLAYCONFIG_DEVICE_INFO_GET_TARGET_NAME, target.adapterId, target.id,
                                                   &DISPLAYCONFIG_TARGET_DEVICE_NAME::monitorFriendlyDeviceName);
    return path;
}

std::optional<Json> RecordConfiguration()
{
    Configuration configuration;
    const Refusal refusal = Query(configuration);
    if (refusal.Status == ERROR_NOT_SUPPORTED) { // as where there is no display configuration at all
        return std::nullopt;
    }
    if (refusal.Status != ERROR_SUCCESS) {
        return Json{{refusal.Call, refusal.Status}};
    }
    Json paths = Json::array();
    for (const auto& path : configuration.Paths) {
        paths.push_back(RecordPath(path, configuration));
    }
    return Json{{"paths", paths}};
}

} // namespace

Recorded<std::optional<Json>> RecordDisplays(uint32_t patienceMilliseconds)
{
    return RecordOnThread("displays GetDisplayConfigBufferSizes", std::optional<Json>(), patienceMilliseconds,
                          [](WatchedThread<std::optional<Json>>& thread) { thread.Publish(RecordConfiguration(), ""); });
}

} // namespace orvel::recorder
