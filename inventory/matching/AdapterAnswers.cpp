#include "matching/AdapterAnswers.h"

#include <algorithm>
#include <iterator>
#include <tuple>

#include "matching/EqualGroups.h"
#include "model/Names.h"
#include "model/Text.h"

namespace orvel::shared::inventory {

namespace {

using P = Property;

std::map<Property, Answer> AnswersOf(const DxgiAdapter& adapter)
{
    const auto name = Utf8Of(adapter.description);
    return {
        {P::Name, name.empty() ? Unavailable(Reason::Missing) : Known(name)},
        {P::VendorId, Known(uint64_t{adapter.vendorId})},
        {P::DeviceId, Known(uint64_t{adapter.deviceId})},
        {P::SubsystemId, Known(uint64_t{adapter.subsystemId})},
        {P::Revision, Known(uint64_t{adapter.revision})},
        {P::Luid, Known(adapter.luid)},
        {P::DedicatedMemoryBytes, Known(adapter.dedicatedVideoMemoryBytes)},
        {P::DedicatedSystemMemoryBytes, Known(adapter.dedicatedSystemMemoryBytes)},
        {P::SharedMemoryBytes, Known(adapter.sharedSystemMemoryBytes)},
    };
}

constexpr uint32_t remoteFlag = 1, softwareFlag = 2; // DXGI_ADAPTER_FLAG

const char* KindOf(const DxgiAdapter& adapter)
{
    if (adapter.flags & softwareFlag) {
        return "software";
    }
    return IsRemote(adapter) ? "remote" : "other";
}

/// An adapter that shows another card has nothing of its own but its LUID.
void HideOtherCard(std::map<Property, Answer>& answers)
{
    for (auto& [property, answer] : answers) {
        if (property != P::Luid) {
            answer = Unavailable(Reason::BelongsToOther);
        }
    }
}

/// What is the same for all adapters. Several have no LUID in common, whatever they say.
std::map<Property, Answer> AnswersOfAny(const std::vector<std::size_t>& indexes, const std::vector<DxgiAdapter>& adapters)
{
    std::vector<std::map<Property, Answer>> all;
    std::transform(indexes.begin(), indexes.end(), std::back_inserter(all),
                   [&](std::size_t index) { return AnswersOf(adapters[index]); });
    auto common = CommonAnswers(all);
    if (indexes.size() > 1) {
        common[P::Luid] = Unavailable(Reason::CannotTell);
    }
    return common;
}

std::optional<std::string> TextOrNothing(const std::u16string& text)
{
    return text.empty() ? std::nullopt : std::optional(Utf8Of(text));
}

std::optional<uint64_t> MillihertzOf(const DisplayPath& path)
{
    if (path.refreshNumerator == 0 || path.refreshDenominator == 0) {
        return {};
    }
    return uint64_t{path.refreshNumerator} * 1000 / path.refreshDenominator;
}

Display DisplayOf(const DisplayPath& path)
{
    Display display;
    display.gdiName = TextOrNothing(path.gdiName);
    display.monitorName = TextOrNothing(path.monitor);
    if (path.mode) {
        display.width = path.mode->width;
        display.height = path.mode->height;
        display.primary = path.mode->x == 0 && path.mode->y == 0;
    }
    display.refreshMillihertz = MillihertzOf(path);
    if (const auto* connector = ConnectorName(path.outputTechnology)) {
        display.connector = connector;
    }
    return display;
}

} // namespace

SourceAnswers DxgiAnswers(const DeviceFacts& device, const AdapterMatch& match, const std::vector<DxgiAdapter>& adapters,
                          const Answer& end)
{
    SourceAnswers source{Unavailable(match.reason), {}};
    if (!match.adapters.empty()) {
        source = {Unavailable(Reason::Missing), AnswersOfAny(match.adapters, adapters)};
    } else if (!IsKnown(end) && match.reason != Reason::Linked) {
        source.otherwise = end;
    }
    if (device.showsOtherCard) {
        HideOtherCard(source.answers);
    }
    source.answers[P::Kind] = Unavailable(Reason::Missing); // the device itself says what it is, or nobody does
    return source;
}

SourceAnswers DxgiAnswers(const DxgiAdapter& adapter)
{
    SourceAnswers source{Unavailable(Reason::Missing), AnswersOf(adapter)};
    if (IsRemote(adapter)) {
        HideOtherCard(source.answers);
    }
    source.answers[P::Kind] = Known(KindOf(adapter));
    return source;
}

bool IsRemote(const DxgiAdapter& adapter)
{
    return (adapter.flags & (remoteFlag | softwareFlag)) == remoteFlag;
}

Displays DisplaysOf(uint64_t luid, const std::vector<DisplayPath>& paths)
{
    std::vector<DisplayPath> own;
    std::copy_if(paths.begin(), paths.end(), std::back_inserter(own),
                 [&](const DisplayPath& path) { return path.luid == luid; });
    std::sort(own.begin(), own.end(), [](const DisplayPath& left, const DisplayPath& right) {
        const auto key = [](const DisplayPath& path) { // DISPLAY10 comes after DISPLAY2
            return std::make_tuple(path.gdiName.size(), std::u16string_view(path.gdiName), path.targetId);
        };
        return key(left) < key(right);
    });
    Displays displays;
    std::transform(own.begin(), own.end(), std::back_inserter(displays), DisplayOf);
    return displays;
}

} // namespace orvel::shared::inventory
