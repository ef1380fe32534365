#include "NvidiaRun.h"

#include <algorithm>

#include <doctest/doctest.h>

namespace orvel::tests {

Json FullDesktop()
{
    Json machine = Machine("nvidia-desktop");
    machine["nvapi"]["0xD2D25687"] = {2, 2};
    Gpu(machine)["NvAPI_GPU_GetMemoryInfoEx"] = {{"offset32", 17133731840}, {"offset40", 12079595520}};
    Gpu(machine)["NvAPI_GPU_GetECCStatusInfo"] = {{"supported", true}, {"enabled", true}};
    Gpu(machine)["NvAPI_GPU_GetECCErrorInfo"] = {{"single", 3}, {"double", 5}};
    Device(machine)["nvmlDeviceGetSerial"] = "1324521012345";
    return machine;
}

Json FullDesktopCard(const Json& otherFields)
{
    Json card = Expected("nvidia-desktop")["cards"][0];
    card.update({{"GraphicsCardSn", "1324521012345"},
                 {"MultiGpuSupport", true},
                 {"NvidiaSli", true},
                 {"MemorySize", 3489660928},
                 {"MemorySharedSize", 4248829952},
                 {"EccStatus", 2},
                 {"EccSingleBitErrors", 3},
                 {"EccDoubleBitErrors", 5}});
    card.update(otherFields);
    return AsFloats(card);
}

Json& Gpu(Json& machine, size_t index)
{
    return machine["nvapi"]["gpus"][index];
}

Json& Device(Json& machine, size_t index)
{
    return machine["nvml"]["devices"][index];
}

Enumerated EnumerateNvidia(const Json& machine)
{
    Enumerated result = Enumerate(machine);
    const std::string amd = Line("error", "ADLWrapper::ADLWrapper", "ADL initialization failed");
    result.Log.erase(std::find(result.Log.begin(), result.Log.end(), amd), result.Log.end());
    for (const auto& [interface, objects] : result.Live) {
        CHECK_MESSAGE(objects == 0, interface << " has live objects");
    }
    return result;
}

std::string EndLine(const std::string& reason)
{
    return Line("error", "GraphicCardEnumeration::QueryGraphicCards", "Unexpected error occurred: " + reason);
}

void CheckNvidiaEnds(const Json& machine, const std::string& reason)
{
    const Enumerated result = EnumerateNvidia(machine);
    CHECK(result.Cards.empty());
    REQUIRE_FALSE(result.Log.empty());
    CHECK(result.Log.back() == EndLine(reason));
    CHECK(result.Thrown == nullptr);
}

LogLines WithSession(const LogLines& lines)
{
    LogLines all = {Line("info", "NvapiClient::NvapiClient", "NVAPI initialized successfully"),
                    Line("info", "NvmlClient::NvmlClient", "NVML initialized successfully")};
    all.insert(all.end(), lines.begin(), lines.end());
    all.push_back(Line("info", "NvmlClient::~NvmlClient", "NVML shutdown successfully"));
    all.push_back(Line("info", "NvapiClient::~NvapiClient", "NVAPI unloaded successfully"));
    return all;
}

} // namespace orvel::tests
