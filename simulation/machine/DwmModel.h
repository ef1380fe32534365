#pragma once

#include <optional>

#include "machine/Node.h"

namespace orvel::simulation {

/// What the desktop window manager returns. Default: success, and composition is on.
struct DwmModel {
    Status status;
    std::optional<bool> enabled;
};

void ReadInto(const Node& node, DwmModel& target);

} // namespace orvel::simulation
