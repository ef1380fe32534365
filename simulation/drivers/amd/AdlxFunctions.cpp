#include "drivers/amd/AdlxFunctions.h"

#include <array>
#include <cwchar>
#include <initializer_list>

#include "drivers/amd/AdlContexts.h"
#include "trace/Graveyard.h"
#include "trace/Hangs.h"
#include "trace/Violations.h"

// The tables at the end give each interface its functions by the published slot numbers. Slots that the product never calls
// return "not supported". A function is only reached through a valid object, so a session exists.

namespace orvel::simulation {

namespace {

extern const AdlxInterface listInterface;
extern const AdlxInterface gpuInterface;
extern const AdlxInterface secondGpuInterface;
extern const AdlxInterface performanceInterface;
extern const AdlxInterface supportInterface;
extern const AdlxInterface metricsInterface;

const AdlxModel& Model()
{
    return TheAdlx().machine->adlx.model;
}

AdlxSession& Session()
{
    return *TheAdlx().session;
}

/// On an abandoned thread, the object may be gone since the call began.
long __stdcall Acquire(AdlxObject* self)
{
    const std::scoped_lock lock(TheAdlx().mutex);
    return IsAbandoned() ? 0 : ++self->references;
}

long __stdcall Release(AdlxObject* self)
{
    const std::scoped_lock lock(TheAdlx().mutex);
    return IsAbandoned() ? 0 : Session().Release(self);
}

int32_t __stdcall Unused()
{
    return ADLX_NOT_SUPPORTED;
}

/// Traces a call. False on a thread that hung in it until the machine was gone: then its objects are gone too.
bool Begin(const std::string& call)
{
    AddToTrace(call);
    return !IsAbandoned();
}

int32_t RefuseArgument(const std::string& call, const char* what)
{
    return Refuse(call, what, ADLX_INVALID_ARGS);
}

/// For calls that use ADL: the caller must not have destroyed the ADL context that it passed to the initialisation.
void CheckContext(const std::string& call)
{
    void* const context = Session().adlContext;
    if (context && !IsAdlContextAlive(context)) {
        AddViolation(call, "the ADL context of the session is not alive");
    }
}

/// Returns an object with a reference added, or null if the status is a failure.
int32_t HandOut(const std::string& call, const OutputStatus& answer, const AdlxInterface& contract, const AdlxGpuModel* gpu,
                AdlxObject** target)
{
    const std::scoped_lock lock(TheAdlx().mutex);
    if (!target) {
        return RefuseArgument(call, "a null pointer");
    }
    if (answer.writes == Writes::Rubbish) {
        *target = static_cast<AdlxObject*>(DeadObject(call + " wrote rubbish", ADLX_TERMINATED));
    } else if (answer.writes == Writes::AsUsual) {
        *target = AdlxSucceeded(answer.code) ? Session().HandOut(contract, gpu) : nullptr;
    }
    return answer.code;
}

/// The same for an object that belongs to a GPU.
int32_t HandOutOfGpu(const std::string& call, const OutputStatus& answer, const AdlxInterface& contract, AdlxObject* gpu,
                     AdlxObject** target)
{
    const std::scoped_lock lock(TheAdlx().mutex);
    if (!Begin(call)) {
        return ADLX_TERMINATED;
    }
    CheckContext(call);
    if (Session().Has(gpu, gpuInterface)) {
        return HandOut(call, answer, contract, gpu->gpu, target);
    }
    if (target) {
        *target = nullptr;
    }
    return RefuseArgument(call, "the GPU is not alive");
}

/// The GPU owns the returned text.
int32_t GiveText(const char* name, AdlxObject* self, const char** target, Answer<AdlxText> AdlxGpuModel::*member)
{
    const std::scoped_lock lock(TheAdlx().mutex);
    const std::string call = std::string("adlx ") + name;
    if (!Begin(call)) {
        return ADLX_TERMINATED;
    }
    if (!target) {
        return RefuseArgument(call, "a null pointer");
    }
    const Answer<AdlxText>& answer = self->gpu->*member;
    const int32_t status =
        answer.Give(ADLX_NOT_SUPPORTED, {}, [&](const AdlxText& text) { *target = text ? self->Lend(*text) : nullptr; });
    if (answer.writes == Writes::Rubbish) {
        *target = DeadText();
    }
    return status;
}

template <typename Value>
int32_t GiveValue(const char* name, const AdlxObject* object, Value* target, Answer<Value> AdlxGpuModel::*member)
{
    std::string call = "adlx ";
    call += name; // in one expression, GCC 12 warns of an overflow that cannot happen
    if (!Begin(call)) {
        return ADLX_TERMINATED;
    }
    if (!target) {
        return RefuseArgument(call, "a null pointer");
    }
    return (object->gpu->*member).GiveTo(target, ADLX_NOT_SUPPORTED);
}

int32_t __stdcall GetGpus(AdlxObject*, AdlxObject** list)
{
    const std::string call = "adlx GetGPUs";
    if (!Begin(call)) {
        return ADLX_TERMINATED;
    }
    CheckContext(call);
    return HandOut(call, Model().getGpus, listInterface, nullptr, list);
}

int32_t __stdcall GetPerformanceMonitoringServices(AdlxObject*, AdlxObject** services)
{
    const std::string call = "adlx GetPerformanceMonitoringServices";
    if (!Begin(call)) {
        return ADLX_TERMINATED;
    }
    CheckContext(call);
    return HandOut(call, Model().getPerformanceMonitoringServices, performanceInterface, nullptr, services);
}

int32_t __stdcall AdlAdapterIndexFromAdlxGpu(AdlxObject*, AdlxObject* gpu, int32_t* index)
{
    const std::string call = "adlx AdlAdapterIndexFromADLXGPU";
    CheckContext(call);
    if (Session().Has(gpu, gpuInterface)) {
        return GiveValue("AdlAdapterIndexFromADLXGPU", gpu, index, &AdlxGpuModel::adapterIndex);
    }
    if (!Begin(call)) {
        return ADLX_TERMINATED;
    }
    return RefuseArgument(call, "the GPU is not alive");
}

/// The number of GPUs that the list reports now.
uint32_t NumberOfGpus()
{
    const AdlxModel& model = Model();
    const bool hasShrunk = model.shrinkAfter && TheAdlx().itemCalls >= *model.shrinkAfter && !model.gpus.empty();
    return static_cast<uint32_t>(model.gpus.size()) - (hasShrunk ? 1 : 0);
}

uint32_t __stdcall ListSize(AdlxObject*)
{
    if (!Begin("adlx Size")) {
        return 0;
    }
    return NumberOfGpus();
}

bool __stdcall ListEmpty(AdlxObject*)
{
    if (!Begin("adlx Empty")) {
        return true;
    }
    return NumberOfGpus() == 0;
}

uint32_t __stdcall ListBegin(AdlxObject*)
{
    if (!Begin("adlx Begin")) {
        return 0;
    }
    return 0;
}

uint32_t __stdcall ListEnd(AdlxObject*)
{
    if (!Begin("adlx End")) {
        return 0;
    }
    return NumberOfGpus();
}

int32_t __stdcall ListAtGpuList(AdlxObject*, uint32_t index, AdlxObject** gpu)
{
    const std::scoped_lock lock(TheAdlx().mutex);
    const std::string call = "adlx At_GPUList " + std::to_string(index);
    if (!Begin(call)) {
        return ADLX_TERMINATED;
    }
    const bool isInside = index < NumberOfGpus();
    ++TheAdlx().itemCalls;
    if (!isInside) {
        return HandOut(call, {{true, ADLX_INVALID_ARGS}, Writes::AsUsual}, gpuInterface, nullptr, gpu);
    }
    const AdlxGpuModel& model = Model().gpus[index];
    return HandOut(call, model.atGpuList, gpuInterface, &model, gpu);
}

int32_t __stdcall GpuVendorId(AdlxObject* self, const char** text)
{
    return GiveText("VendorId", self, text, &AdlxGpuModel::vendorId);
}

int32_t __stdcall GpuName(AdlxObject* self, const char** text)
{
    return GiveText("Name", self, text, &AdlxGpuModel::name);
}

int32_t __stdcall GpuPnpString(AdlxObject* self, const char** text)
{
    return GiveText("PNPString", self, text, &AdlxGpuModel::pnpString);
}

int32_t __stdcall GpuDeviceId(AdlxObject* self, const char** text)
{
    return GiveText("DeviceId", self, text, &AdlxGpuModel::deviceId);
}

int32_t __stdcall GpuTotalVram(AdlxObject* self, uint32_t* megabytes)
{
    return GiveValue("TotalVRAM", self, megabytes, &AdlxGpuModel::totalVramMegabytes);
}

int32_t __stdcall GpuType(AdlxObject* self, int32_t* type)
{
    return GiveValue("Type", self, type, &AdlxGpuModel::type);
}

int32_t __stdcall GpuVramType(AdlxObject* self, const char** text)
{
    return GiveText("VRAMType", self, text, &AdlxGpuModel::vramType);
}

int32_t __stdcall GpuRevisionId(AdlxObject* self, const char** text)
{
    return GiveText("RevisionId", self, text, &AdlxGpuModel::revisionId);
}

int32_t __stdcall GpuSubSystemId(AdlxObject* self, const char** text)
{
    return GiveText("SubSystemId", self, text, &AdlxGpuModel::subSystemId);
}

int32_t __stdcall GpuSubSystemVendorId(AdlxObject* self, const char** text)
{
    return GiveText("SubSystemVendorId", self, text, &AdlxGpuModel::subSystemVendorId);
}

/// A GPU with a LUID has the newer interface too, which is an object of its own here.
int32_t __stdcall GpuQueryInterface(AdlxObject* self, const wchar_t* id, AdlxObject** target)
{
    const std::string call = "adlx QueryInterface";
    if (!Begin(call)) {
        return ADLX_TERMINATED;
    }
    if (!id || !target) {
        return RefuseArgument(call, "a null pointer");
    }
    const bool isSecond = std::wcscmp(id, L"IADLXGPU2") == 0 && self->gpu->luid.given;
    if (!isSecond && std::wcscmp(id, L"IADLXGPU") != 0) {
        *target = nullptr;
        return ADLX_UNKNOWN_INTERFACE;
    }
    return HandOut(call, {}, isSecond ? secondGpuInterface : gpuInterface, self->gpu, target);
}

int32_t __stdcall GpuLuid(AdlxObject* self, uint64_t* luid)
{
    return GiveValue("LUID", self, luid, &AdlxGpuModel::luid);
}

int32_t __stdcall BdfFromAdlxGpu(AdlxObject*, AdlxObject* gpu, int32_t* bus, int32_t* device, int32_t* function)
{
    const std::string call = "adlx BdfFromADLXGPU";
    if (!Begin(call)) {
        return ADLX_TERMINATED;
    }
    CheckContext(call);
    if (!Session().Has(gpu, gpuInterface)) {
        return RefuseArgument(call, "the GPU is not alive");
    }
    if (!bus || !device || !function) {
        return RefuseArgument(call, "a null pointer");
    }
    const auto write = [&](const std::array<int32_t, 3>& place) {
        *bus = place[0];
        *device = place[1];
        *function = place[2];
    };
    return gpu->gpu->bdf.Give(ADLX_NOT_SUPPORTED,
                              {{bus, sizeof *bus}, {device, sizeof *device}, {function, sizeof *function}}, write);
}

int32_t __stdcall GetSupportedGpuMetrics(AdlxObject*, AdlxObject* gpu, AdlxObject** support)
{
    return HandOutOfGpu("adlx GetSupportedGPUMetrics", Model().getSupportedGpuMetrics, supportInterface, gpu, support);
}

int32_t __stdcall GetCurrentGpuMetrics(AdlxObject*, AdlxObject* gpu, AdlxObject** metrics)
{
    return HandOutOfGpu("adlx GetCurrentGPUMetrics", Model().getCurrentGpuMetrics, metricsInterface, gpu, metrics);
}

int32_t __stdcall IsSupportedGpuClockSpeed(AdlxObject* self, bool* supported)
{
    return GiveValue("IsSupportedGPUClockSpeed", self, supported, &AdlxGpuModel::isSupportedGpuClockSpeed);
}

int32_t __stdcall GpuClockSpeed(AdlxObject* self, int32_t* megahertz)
{
    return GiveValue("GPUClockSpeed", self, megahertz, &AdlxGpuModel::gpuClockSpeedMegahertz);
}

struct Slot {
    size_t number;
    void* function;
};

template <typename Function>
Slot At(size_t number, Function* function)
{
    return {number, reinterpret_cast<void*>(function)};
}

template <size_t Length>
std::array<void*, Length> Table(std::initializer_list<Slot> slots)
{
    std::array<void*, Length> table;
    table.fill(reinterpret_cast<void*>(&Unused));
    for (const Slot& slot : slots) {
        table[slot.number] = slot.function;
    }
    return table;
}

const auto systemTable = Table<12>({At(1, &GetGpus), At(9, &GetPerformanceMonitoringServices)});
const auto mappingTable = Table<8>({At(2, &BdfFromAdlxGpu), At(3, &AdlAdapterIndexFromAdlxGpu)});
const auto listTable = Table<13>({
    At(0, &Acquire),
    At(1, &Release),
    At(3, &ListSize),
    At(4, &ListEmpty),
    At(5, &ListBegin),
    At(6, &ListEnd),
    At(11, &ListAtGpuList),
});
/// The functions of a GPU, in a table of any length.
template <size_t Length>
std::array<void*, Length> GpuTable()
{
    return Table<Length>({
        At(0, &Acquire),
        At(1, &Release),
        At(2, &GpuQueryInterface),
        At(3, &GpuVendorId),
        At(5, &GpuType),
        At(7, &GpuName),
        At(9, &GpuPnpString),
        At(11, &GpuTotalVram),
        At(12, &GpuVramType),
        At(14, &GpuDeviceId),
        At(15, &GpuRevisionId),
        At(16, &GpuSubSystemId),
        At(17, &GpuSubSystemVendorId),
    });
}

std::array<void*, 35> SecondGpuTable()
{
    auto table = GpuTable<35>();
    table[34] = reinterpret_cast<void*>(&GpuLuid);
    return table;
}

const auto gpuTable = GpuTable<19>();
const auto secondGpuTable = SecondGpuTable();
const auto performanceTable = Table<23>({
    At(0, &Acquire),
    At(1, &Release),
    At(18, &GetCurrentGpuMetrics),
    At(21, &GetSupportedGpuMetrics),
});
const auto supportTable = Table<25>({At(0, &Acquire), At(1, &Release), At(4, &IsSupportedGpuClockSpeed)});
const auto metricsTable = Table<15>({At(0, &Acquire), At(1, &Release), At(5, &GpuClockSpeed)});

const AdlxInterface listInterface{"IADLXGPUList", listTable.data()};
const AdlxInterface gpuInterface{"IADLXGPU", gpuTable.data()};
const AdlxInterface secondGpuInterface{"IADLXGPU2", secondGpuTable.data()};
const AdlxInterface performanceInterface{"IADLXPerformanceMonitoringServices", performanceTable.data()};
const AdlxInterface supportInterface{"IADLXGPUMetricsSupport", supportTable.data()};
const AdlxInterface metricsInterface{"IADLXGPUMetrics", metricsTable.data()};

} // namespace

const AdlxInterface adlxSystemInterface{"IADLXSystem", systemTable.data()};
const AdlxInterface adlxMappingInterface{"IADLMapping", mappingTable.data()};

} // namespace orvel::simulation
