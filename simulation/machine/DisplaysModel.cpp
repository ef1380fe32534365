#include "machine/DisplaysModel.h"

namespace orvel::simulation {

static void ReadInto(const Node& node, SourceModeModel& target)
{
    node.ReadFields({
        {"width", Into(target.width)},
        {"height", Into(target.height)},
        {"x", Into(target.x)},
        {"y", Into(target.y)},
    });
    if (target.width == 0 || target.height == 0) {
        node.Refuse("a mode needs \"width\" and \"height\"");
    }
}

static void ReadInto(const Node& node, DisplayPathModel& target)
{
    node.ReadFields({
        {"adapterId", Into(target.adapterId)},
        {"sourceId", Into(target.sourceId)},
        {"targetId", Into(target.targetId)},
        {"sourceMode", [&target](const Node& mode) { ReadInto(mode, target.sourceMode.emplace()); }},
        {"refreshRate",
         [&target](const Node& rate) { ReadInto(rate, target.refreshRate, "expected [numerator, denominator]"); }},
        {"outputTechnology", Into(target.outputTechnology)},
        {"viewGdiDeviceName", Into(target.viewGdiDeviceName)},
        {"monitorFriendlyDeviceName", Into(target.monitorFriendlyDeviceName)},
    });
    if (!node.HasKey("adapterId")) {
        node.Refuse("a path needs \"adapterId\"");
    }
}

/// Two paths to one target would be one.
static void RefuseRepeated(const Node& node, const std::vector<DisplayPathModel>& paths)
{
    for (size_t left = 0; left < paths.size(); ++left) {
        for (size_t right = left + 1; right < paths.size(); ++right) {
            if (paths[left].adapterId == paths[right].adapterId && paths[left].targetId == paths[right].targetId) {
                node.Elements()[right].Refuse("another path has the same adapterId and targetId");
            }
        }
    }
}

void ReadInto(const Node& node, DisplaysModel& target)
{
    node.ReadFields({
        {"GetDisplayConfigBufferSizes", Into(target.bufferSizes)},
        {"QueryDisplayConfig", Into(target.query)},
        {"paths",
         [&target](const Node& paths) {
             ReadInto(paths, target.paths);
             RefuseRepeated(paths, target.paths);
         }},
    });
}

} // namespace orvel::simulation
