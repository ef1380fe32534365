#pragma once

#include <map>
#include <string>
#include <variant>
#include <vector>

#include "machine/Node.h"

namespace orvel::simulation {

/// A device parameter: a number of 32 bits or a text.
using OpenClValue = std::variant<uint32_t, std::string>;

struct OpenClDevice {
    uint64_t type = 0; // CL_DEVICE_TYPE bits
    std::map<uint32_t, Answer<OpenClValue>> parameters;
};

struct OpenClPlatform {
    Answer<uint32_t> devicesCount;
    OutputStatus devicesFetch;
    std::vector<OpenClDevice> devices;
};

struct OpenClModel {
    std::vector<std::string> missing;
    bool pinned = true; // stays loaded, however often the caller releases it
    Answer<uint32_t> platformsCount;
    OutputStatus platformsFetch;
    std::vector<OpenClPlatform> platforms;
};

void ReadInto(const Node& node, OpenClDevice& target);
void ReadInto(const Node& node, OpenClPlatform& target);
void ReadInto(const Node& node, OpenClModel& target);

} // namespace orvel::simulation
