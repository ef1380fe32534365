// An enumeration uses some of ADL's values even from failed calls, so what a failed call has written is recorded too. All
// structures and numbers are 0 before each call.

#include "AdlRecorder.h"

#include <algorithm>
#include <cstdlib>
#include <string>

namespace orvel::recorder {

using namespace orvel::shared::enumeration;

namespace {

constexpr char create[] = "ADL2_Main_Control_Create";
constexpr char destroy[] = "ADL2_Main_Control_Destroy";
constexpr char graphicCore[] = "ADL2_Adapter_Graphic_Core_Info_Get";
constexpr char crossfire[] = "ADL2_Adapter_Crossfire_Get";
constexpr char activity[] = "ADL_Overdrive5_CurrentActivity_Get";
constexpr char eccCaps[] = "ADL2_Workstation_ECC_Caps";
constexpr char eccModes[] = "ADL2_Workstation_ECC_Get";
constexpr char eccData[] = "ADL2_Workstation_ECCData_Get";
constexpr char observedClocks[] = "ADL_Adapter_ObservedClockInfo_Get"; // looked up only

/// ADL allocates the memory that it returns with this function. No function that is called here returns any.
void* __stdcall Allocate(int bytes)
{
    return std::malloc(static_cast<size_t>(bytes));
}

bool IsAnyWritten(std::initializer_list<int> numbers)
{
    return std::any_of(numbers.begin(), numbers.end(), [](int number) { return number != 0; });
}

} // namespace

template <typename Function>
Function AdlRecorder::Find(const char* name) const
{
    return FindFunction<Function>(module.get(), name);
}

AdlRecorder::AdlRecorder() : module(::LoadLibraryW(L"atiadlxx.dll"))
{
    if (!module) {
        return;
    }
    Json missing = Json::array();
    for (const char* name :
         {create, destroy, graphicCore, crossfire, activity, eccCaps, eccModes, eccData, observedClocks}) {
        if (!Find<FARPROC>(name)) {
            missing.push_back(name);
        }
    }
    section = Json{{"missing", missing}};
    if (const auto function = Find<ADL2_Main_Control_Create_t>(create)) {
        (*section)[create] = function(&Allocate, 1, &context, 1);
    }
    (*section)["context"] = context != nullptr;
    (*section)["adapters"] = Json::object();
}

AdlRecorder::~AdlRecorder()
{
    const auto function = context ? Find<ADL2_Main_Control_Destroy_t>(destroy) : nullptr;
    if (function) {
        function(context);
    }
}

bool AdlRecorder::IsForInventory() const
{
    return context && (*section)[create] == 0 && Find<FARPROC>(destroy);
}

void AdlRecorder::RecordAdapter(int index)
{
    if (!context) {
        return;
    }
    Json& adapter = (*section)["adapters"][std::to_string(index)];
    adapter = Json::object();
    if (const auto function = Find<ADL2_Adapter_Graphic_Core_Info_Get_t>(graphicCore)) {
        ADLGraphicCoreInfo info{};
        const int status = function(context, index, &info);
        const bool isWritten = IsAnyWritten({info.iNumCUs, info.iNumPEsPerCU, info.iNumROPs});
        adapter[graphicCore] =
            Answer(status, {{"iNumCUs", info.iNumCUs}, {"iNumPEsPerCU", info.iNumPEsPerCU}, {"iNumROPs", info.iNumROPs}},
                   isWritten);
    }
    if (const auto function = Find<ADL2_Adapter_Crossfire_Get_t>(crossfire)) {
        ADLCrossfireComb combination{};
        ADLCrossfireInfo info{};
        const int status = function(context, index, &combination, &info);
        adapter[crossfire] = Answer(status, {{"iSupported", info.iSupported}}, info.iSupported != 0);
    }
    if (const auto function = Find<ADL_Overdrive5_CurrentActivity_Get_t>(activity)) {
        ADLPMActivity current{};
        current.iSize = sizeof current;
        const int status = function(index, &current);
        adapter[activity] = Answer(status, {{"iMaximumBusLanes", current.iMaximumBusLanes}}, current.iMaximumBusLanes != 0);
    }
    if (const auto function = Find<ADL2_Workstation_ECC_Caps_t>(eccCaps)) {
        int supported = 0;
        const int status = function(context, index, &supported);
        adapter[eccCaps] = Answer(status, supported, supported != 0);
    }
    if (const auto function = Find<ADL2_Workstation_ECC_Get_t>(eccModes)) {
        int defaultMode = 0;
        int currentMode = 0;
        int desiredMode = 0;
        const int status = function(context, index, &defaultMode, &currentMode, &desiredMode);
        adapter[eccModes] = Answer(status, {{"default", defaultMode}, {"current", currentMode}, {"desired", desiredMode}},
                                   IsAnyWritten({defaultMode, currentMode, desiredMode}));
    }
    if (const auto function = Find<ADL2_Workstation_ECCData_Get_t>(eccData)) {
        ADLECCData data{};
        const int status = function(context, index, &data);
        adapter[eccData] = Answer(status, {{"iSec", data.iSec}, {"iDed", data.iDed}}, IsAnyWritten({data.iSec, data.iDed}));
    }
}

} // namespace orvel::recorder
