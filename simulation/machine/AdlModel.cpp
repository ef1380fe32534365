#include "machine/AdlModel.h"

#include <charconv>

namespace orvel::simulation {

namespace {

const std::vector<std::string> functions = {
    "ADL2_Main_Control_Create",   "ADL2_Main_Control_Destroy",          "ADL2_Adapter_Graphic_Core_Info_Get",
    "ADL2_Adapter_Crossfire_Get", "ADL_Overdrive5_CurrentActivity_Get", "ADL2_Workstation_ECC_Caps",
    "ADL2_Workstation_ECC_Get",   "ADL2_Workstation_ECCData_Get",       "ADL_Adapter_ObservedClockInfo_Get",
};

int32_t AdapterIndex(const std::string& key, const Node& adapter)
{
    int32_t index = 0;
    const char* const end = key.data() + key.size();
    const auto [stop, error] = std::from_chars(key.data(), end, index);
    if (error != std::errc() || stop != end || std::to_string(index) != key) {
        adapter.Refuse("expected an adapter index such as \"0\", found \"" + key + "\"");
    }
    return index;
}

void ReadAdapters(const Node& node, std::map<int32_t, AdlAdapterModel>& target)
{
    for (const auto& [key, adapter] : node.Members()) {
        ReadInto(adapter, target[AdapterIndex(key, adapter)]);
    }
}

/// A flag in the shape of ADL (1 or 0) or of JSON.
struct AdlFlag {
    int32_t number = 0;
};

void ReadInto(const Node& node, AdlFlag& target)
{
    target.number = node.IsFlag() ? node.Flag() : node.StatusCode();
}

void ReadSupported(const Node& node, Answer<int32_t>& target)
{
    Answer<AdlFlag> answer;
    orvel::simulation::ReadInto(node, answer);
    target.given = true;
    target.status = answer.status;
    target.writes = answer.writes;
    if (answer.value) {
        target.value = answer.value->number;
    }
}

} // namespace

void ReadInto(const Node& node, AdlCoreInfo& target)
{
    node.ReadFields({
        {"iNumCUs", Into(target.iNumCUs)},
        {"iNumPEsPerCU", Into(target.iNumPEsPerCU)},
        {"iNumROPs", Into(target.iNumROPs)},
    });
}

void ReadInto(const Node& node, AdlCrossfire& target)
{
    node.ReadFields({{"iSupported", Into(target.iSupported)}});
}

void ReadInto(const Node& node, AdlActivity& target)
{
    node.ReadFields({{"iMaximumBusLanes", Into(target.iMaximumBusLanes)}});
}

void ReadInto(const Node& node, AdlEccModes& target)
{
    node.ReadFields({
        {"default", Into(target.defaultMode)},
        {"current", Into(target.currentMode)},
        {"desired", Into(target.desiredMode)},
    });
}

void ReadInto(const Node& node, AdlEccData& target)
{
    node.ReadFields({
        {"iSec", Into(target.iSec)},
        {"iDed", Into(target.iDed)},
    });
}

void ReadInto(const Node& node, AdlAdapterModel& target)
{
    node.ReadFields({
        {"ADL2_Adapter_Graphic_Core_Info_Get", Into(target.coreInfo)},
        {"ADL2_Adapter_Crossfire_Get", Into(target.crossfire)},
        {"ADL_Overdrive5_CurrentActivity_Get", Into(target.activity)},
        {"ADL2_Workstation_ECC_Caps", [&target](const Node& answer) { ReadSupported(answer, target.eccSupported); }},
        {"ADL2_Workstation_ECC_Get", Into(target.eccModes)},
        {"ADL2_Workstation_ECCData_Get", Into(target.eccData)},
    });
}

void ReadInto(const Node& node, AdlModel& target)
{
    node.ReadFields({
        {"missing", NamesInto(target.missing, functions)},
        {"ADL2_Main_Control_Create", Into(target.create)},
        {"context", Into(target.context)},
        {"adapters", [&target](const Node& adapters) { ReadAdapters(adapters, target.adapters); }},
    });
}

} // namespace orvel::simulation
