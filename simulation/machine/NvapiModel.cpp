#include "machine/NvapiModel.h"

namespace orvel::simulation {

namespace {

constexpr uint32_t clockTypes = 16; // four bits
constexpr uint32_t undefinedBits = 0x5A5A5A5A & ~1U;

/// The functions that nvapi_QueryInterface resolves, and itself.
const std::vector<std::string> functions = {
    "nvapi_QueryInterface",
    "NvAPI_Initialize",
    "NvAPI_Unload",
    "NvAPI_EnumPhysicalGPUs",
    "NvAPI_GPU_GetFullName",
    "NvAPI_GPU_GetBusId",
    "NvAPI_GPU_GetBusType",
    "NvAPI_GPU_GetPCIIdentifiers",
    "NvAPI_GPU_GetGPUType",
    "NvAPI_GPU_GetVbiosVersionString",
    "NvAPI_GPU_GetGpuCoreCount",
    "NvAPI_GPU_GetRamBusWidth",
    "NvAPI_GPU_GetCurrentPCIEDownstreamWidth",
    "NvAPI_GPU_GetMemoryInfoEx",
    "NvAPI_GPU_GetAllClockFrequencies",
    "NvAPI_GPU_GetECCStatusInfo",
    "NvAPI_GPU_GetECCErrorInfo",
    "NvAPI_EnumTCCPhysicalGPUs",
    "NvAPI_GPU_GetBusSlotId",
    "NvAPI_GetLogicalGPUFromPhysicalGPU",
    "NvAPI_GPU_GetLogicalGpuInfo",
    "0xD2D25687",
};

/// One answer for every clock type, or an object with the types as keys.
void ReadClocks(const Node& node, NvapiClockAnswers& target)
{
    const bool isOfAll = !node.IsObject() || node.Members().empty() || node.HasKey("status") || node.HasKey("domain0") ||
                         node.HasKey("domain4");
    if (isOfAll) {
        return ReadInto(node, target.ofAll);
    }
    Fields fields;
    for (uint32_t type = 0; type < clockTypes; ++type) {
        fields.emplace_back(std::to_string(type),
                            [&target, type](const Node& answer) { ReadInto(answer, target.byType[type]); });
    }
    node.ReadFields(fields);
}

/// A flag, in a word whose undefined bits are rubbish, or the whole word.
ReadField AsEccWord(uint32_t& target)
{
    return [&target](const Node& node) {
        if (node.IsFlag()) {
            target = undefinedBits | uint32_t{node.Flag()};
        } else {
            ReadInto(node, target);
        }
    };
}

void ReadGpus(const Node& node, std::vector<NvapiGpuModel>& target)
{
    ReadInto(node, target);
    if (target.size() > maximumGpus) {
        node.Refuse("NVAPI lists " + std::to_string(maximumGpus) + " GPUs at most");
    }
}

} // namespace

/// Answer<NvapiMultiGpuWords> needs a reader of its own, because its type is a std::array.
static void ReadInto(const Node& node, NvapiMultiGpuWords& target)
{
    ReadInto(node, target, "expected two words, those at the offsets 8 and 12");
}

void ReadInto(const Node& node, NvapiPciIdentifiers& target)
{
    node.ReadFields({
        {"device", Into(target.device)},
        {"subsystem", Into(target.subsystem)},
        {"revision", Into(target.revision)},
        {"extended", Into(target.extended)},
    });
}

void ReadInto(const Node& node, NvapiMemoryInfo& target)
{
    node.ReadFields({
        {"offset32", Into(target.offset32)},
        {"offset40", Into(target.offset40)},
    });
}

/// A frequency, or {"present", "kHz"}.
void ReadInto(const Node& node, NvapiClock& target)
{
    target.present = true;
    if (!node.IsObject()) {
        return ReadInto(node, target.kilohertz);
    }
    node.ReadFields({
        {"present", Into(target.present)},
        {"kHz", Into(target.kilohertz)},
    });
}

void ReadInto(const Node& node, NvapiClocks& target)
{
    node.ReadFields({
        {"domain0", Into(target.domain0)},
        {"domain4", Into(target.domain4)},
    });
}

void ReadInto(const Node& node, NvapiEccStatus& target)
{
    node.ReadFields({
        {"supported", AsEccWord(target.supported)},
        {"enabled", AsEccWord(target.enabled)},
    });
}

void ReadInto(const Node& node, NvapiEccErrors& target)
{
    node.ReadFields({
        {"single", Into(target.singleBit)},
        {"double", Into(target.doubleBit)},
    });
}

void ReadInto(const Node& node, NvapiLogicalGpu& target)
{
    node.ReadFields({
        {"luid", Into(target.luid)},
        {"physicalGpuCount", Into(target.physicalGpuCount)},
    });
}

void ReadInto(const Node& node, NvapiGpuModel& target)
{
    node.ReadFields({
        {"tcc", Into(target.tcc)},
        {"NvAPI_GPU_GetFullName", Into(target.fullName)},
        {"NvAPI_GPU_GetVbiosVersionString", Into(target.vbiosVersion)},
        {"NvAPI_GPU_GetBusId", Into(target.busId)},
        {"NvAPI_GPU_GetBusType", Into(target.busType)},
        {"NvAPI_GPU_GetGPUType", Into(target.gpuType)},
        {"NvAPI_GPU_GetGpuCoreCount", Into(target.coreCount)},
        {"NvAPI_GPU_GetRamBusWidth", Into(target.ramBusWidth)},
        {"NvAPI_GPU_GetCurrentPCIEDownstreamWidth", Into(target.pcieWidth)},
        {"NvAPI_GPU_GetPCIIdentifiers", Into(target.pciIdentifiers)},
        {"NvAPI_GPU_GetMemoryInfoEx", Into(target.memoryInfo)},
        {"NvAPI_GPU_GetAllClockFrequencies", [&target](const Node& clocks) { ReadClocks(clocks, target.clocks); }},
        {"NvAPI_GPU_GetECCStatusInfo", Into(target.eccStatus)},
        {"NvAPI_GPU_GetECCErrorInfo", Into(target.eccErrors)},
        {"NvAPI_GPU_GetBusSlotId", Into(target.busSlotId)},
        {"NvAPI_GetLogicalGPUFromPhysicalGPU", Into(target.logicalGpuFromPhysicalGpu)},
        {"NvAPI_GPU_GetLogicalGpuInfo", Into(target.logicalGpuInfo)},
    });
}

void ReadInto(const Node& node, NvapiModel& target)
{
    node.ReadFields({
        {"unresolved", NamesInto(target.unresolved, functions)},
        {"NvAPI_Initialize", Into(target.initialize)},
        {"NvAPI_Unload", Into(target.unload)},
        {"NvAPI_EnumPhysicalGPUs", Into(target.enumPhysicalGpus)},
        {"NvAPI_EnumTCCPhysicalGPUs", Into(target.enumTccPhysicalGpus)},
        {"0xD2D25687", [&](const Node& query) { ReadWithBareStatus(query, target.multiGpu); }},
        {"gpus", [&](const Node& gpus) { ReadGpus(gpus, target.gpus); }},
    });
}

} // namespace orvel::simulation
