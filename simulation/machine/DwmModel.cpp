#include "machine/DwmModel.h"

namespace orvel::simulation {

void ReadInto(const Node& node, DwmModel& target)
{
    node.ReadFields({
        {"status", Into(target.status)},
        {"enabled", [&target](const Node& enabled) { target.enabled = enabled.Flag(); }},
    });
}

} // namespace orvel::simulation
