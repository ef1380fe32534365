// Most ADL results are used whatever the status, and some only on failure. A failing call that writes its value is therefore
// a different fault from one that writes nothing.

#include "Faults.h"

namespace orvel::tests {

namespace {

const std::string amd = "AMD";

struct AdlFunction {
    const char* Name;
    Fields WhenMissing; ///< the function is missing, or the call fails without a value
    Fields WhenRefusedWithValue;
    Fields WhenRefusedWithRubbish; ///< each number is 0x5A5A5A5A, which is not an ECC mode
};

const std::vector<AdlFunction> adlFunctions = {
    {"ADL2_Adapter_Graphic_Core_Info_Get", {"Cores", "Shaders"}, {}, {"Cores", "Shaders"}},
    {"ADL2_Adapter_Crossfire_Get", {"AmdCrossfire"}, {}, {"AmdCrossfire"}},
    {"ADL_Overdrive5_CurrentActivity_Get", {}, {"PciLanes"}, {"PciLanes"}},
    {"ADL2_Workstation_ECC_Caps", {"EccStatus"}, {}, {}},
    {"ADL2_Workstation_ECC_Get", {}, {"EccStatus"}, {}}, // both a success and an unknown mode mean "supported"
    {"ADL2_Workstation_ECCData_Get",
     {},
     {"EccSingleBitErrors", "EccDoubleBitErrors"},
     {"EccSingleBitErrors", "EccDoubleBitErrors"}},
};

Consequence Others(const Fields& fields)
{
    return fields.empty() ? Nothing() : Other(amd, fields);
}

const std::vector<std::pair<const char*, Consequence>> gpuFaults = {
    {"VendorId", Lost({amd})}, // an identifier that is not a number
    {"DeviceId", Lost({amd})},
    {"PNPString", Lost({amd})}, // shorter than the positions of the subsystem
    {"Name", Lost({amd})},      // no WMI row has this name
    {"TotalVRAM", Other(amd, {"MemorySize"})},
    {"AdapterIndex", Nothing()}, // the default 0 is also the healthy value
    {"IsSupportedGPUClockSpeed", Nothing()},
    {"GPUClockSpeed", Nothing()},
};

} // namespace

std::vector<Fault> AdlFaults()
{
    std::vector<Fault> faults;
    faults.push_back(Removing(Pointer("/adl"), Lost({amd})));
    faults.push_back(Setting(Pointer("/adl/context"), false, Lost({amd})));
    faults.push_back(Setting(Pointer("/adl/ADL2_Main_Control_Create"), -1, Nothing())); // only the context matters
    faults.push_back(Hiding("adl", "ADL2_Main_Control_Create", Lost({amd})));
    faults.push_back(Hiding("adl", "ADL2_Main_Control_Destroy", StaysAlive("adl")));
    faults.push_back(Hiding("adl", "ADL_Adapter_ObservedClockInfo_Get", Nothing()));
    faults.push_back(
        Setting(Pointer("/adl/adapters"), Json::object(), Other(amd, {"Cores", "Shaders", "AmdCrossfire", "EccStatus"})));
    for (const AdlFunction& function : adlFunctions) {
        const Pointer path = Pointer("/adl/adapters/0") / function.Name;
        const Json value = HealthyWorkstation()[path];
        faults.push_back(Hiding("adl", function.Name, Others(function.WhenMissing)));
        faults.push_back(Setting(path, Status(-1), Others(function.WhenMissing)));
        faults.push_back(Removing(path, Others(function.WhenMissing)));
        faults.push_back(Setting(path, StatusAndValue(-1, value), Others(function.WhenRefusedWithValue)));
        faults.push_back(Setting(path, StatusAndRubbish(-1), Others(function.WhenRefusedWithRubbish)));
    }
    return faults;
}

std::vector<Fault> AdlxFaults()
{
    std::vector<Fault> faults;
    faults.push_back(Removing(Pointer("/adlx"), Lost({amd})));
    for (const char* function : {"ADLXQueryFullVersion", "ADLXQueryVersion", "ADLXInitializeWithCallerAdl",
                                 "ADLXInitializeWithIncompatibleDriver", "ADLXInitialize", "ADLXTerminate"}) {
        faults.push_back(Hiding("adlx", function, Lost({amd})));
    }
    for (const int success : {1, 2}) {
        faults.push_back(Setting(Pointer("/adlx/ADLXInitializeWithCallerAdl"), success, Nothing()));
        faults.push_back(Setting(Pointer("/adlx/GetGPUs"), success, Nothing()));
    }
    faults.push_back(Setting(Pointer("/adlx/ADLXInitializeWithCallerAdl"), 3, Lost({amd})));
    faults.push_back(Setting(Pointer("/adlx/ADLXInitializeWithCallerAdl"), StatusAndRubbish(3), Lost({amd})));
    faults.push_back(Setting(Pointer("/adlx/GetGPUs"), StatusAndRubbish(3), Lost({amd})));
    faults.push_back(Setting(Pointer("/adlx/gpus/0/At_GPUList"), StatusAndRubbish(3), Lost({amd})));
    faults.push_back(Setting(Pointer("/adlx/ADLXInitialize"), 3, Nothing())); // never called
    faults.push_back(Setting(Pointer("/adlx/GetGPUs"), 3, Lost({amd})));
    faults.push_back(Setting(Pointer("/adlx/gpus"), Json::array(), Lost({amd})));
    faults.push_back(Setting(Pointer("/adlx/shrink_after"), 1, Nothing()));
    faults.push_back(Setting(Pointer("/adlx/gpus/0/At_GPUList"), 3, Lost({amd})));
    for (const char* probe : {"GetPerformanceMonitoringServices", "GetSupportedGPUMetrics", "GetCurrentGPUMetrics"}) {
        faults.push_back(Setting(Pointer("/adlx") / probe, 3, Nothing()));
        faults.push_back(Setting(Pointer("/adlx") / probe, StatusAndRubbish(3), Nothing()));
    }
    for (const char* text : {"VendorId", "DeviceId", "PNPString", "Name"}) {
        faults.push_back(Setting(Pointer("/adlx/gpus/0") / text, nullptr, Lost({amd})));
    }
    for (const auto& [key, expected] : gpuFaults) {
        faults.push_back(Setting(Pointer("/adlx/gpus/0") / key, Status(3), expected));
        faults.push_back(Setting(Pointer("/adlx/gpus/0") / key, StatusAndRubbish(3), expected));
        faults.push_back(Removing(Pointer("/adlx/gpus/0") / key, expected));
    }
    return faults;
}

} // namespace orvel::tests
