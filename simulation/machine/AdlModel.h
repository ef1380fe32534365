#pragma once

#include <map>
#include <string>
#include <vector>

#include "machine/Node.h"

namespace orvel::simulation {

struct AdlCoreInfo {
    int32_t iNumCUs = 0;
    int32_t iNumPEsPerCU = 0;
    int32_t iNumROPs = 0;
};

struct AdlCrossfire {
    int32_t iSupported = 0;
};

struct AdlActivity {
    int32_t iMaximumBusLanes = 0;
};

struct AdlEccModes {
    int32_t defaultMode = 0;
    int32_t currentMode = 0;
    int32_t desiredMode = 0;
};

struct AdlEccData {
    int32_t iSec = 0;
    int32_t iDed = 0;
};

struct AdlAdapterModel {
    Answer<AdlCoreInfo> coreInfo;
    Answer<AdlCrossfire> crossfire;
    Answer<AdlActivity> activity;
    Answer<int32_t> eccSupported;
    Answer<AdlEccModes> eccModes;
    Answer<AdlEccData> eccData;
};

struct AdlModel {
    std::vector<std::string> missing;
    Status create;
    bool context = true; // whether the create call returns a context, whatever its status
    std::map<int32_t, AdlAdapterModel> adapters;
};

void ReadInto(const Node& node, AdlCoreInfo& target);
void ReadInto(const Node& node, AdlCrossfire& target);
void ReadInto(const Node& node, AdlActivity& target);
void ReadInto(const Node& node, AdlEccModes& target);
void ReadInto(const Node& node, AdlEccData& target);
void ReadInto(const Node& node, AdlAdapterModel& target);
void ReadInto(const Node& node, AdlModel& target);

} // namespace orvel::simulation
