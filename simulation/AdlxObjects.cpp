#include "AdlxObjects.h"

#include <algorithm>
#include <array>
#include <initializer_list>

// The tables at the end of the unnamed namespace give each interface its functions by the published slot numbers. Slots that
// nobody here needs answer "not supported".

namespace orvel::simulation {

namespace {

bool Succeeded(int32_t status)
{
    return status <= ADLX_ALREADY_INITIALIZED; // 0, 1 and 2 are successes in ADLX
}

AdlxObjects& Objects()
{
    return *TheAdlx().objects;
}

long __stdcall Acquire(AdlxObject* self)
{
    const std::scoped_lock lock(TheAdlx().mutex);
    if (self->references == 0)
        self->live.emplace(Counted::Adlx);
    return ++self->references;
}

long __stdcall Release(AdlxObject* self)
{
    const std::scoped_lock lock(TheAdlx().mutex);
    if (self->references == 0) {
        AddToTrace(std::string("adlx release too many ") + self->name);
        return 0;
    }
    if (--self->references == 0)
        self->live.reset();
    return self->references;
}

int32_t __stdcall Unused()
{
    return ADLX_NOT_SUPPORTED;
}

/// Hands an object out with a reference added, or null if the status is a failure.
int32_t HandOut(int32_t status, AdlxObject* object, AdlxObject** target)
{
    if (target == nullptr)
        return ADLX_INVALID_ARGS;
    *target = Succeeded(status) ? object : nullptr;
    if (*target != nullptr)
        Acquire(*target);
    return status;
}

// Texts belong to the model, which outlives the GPU.
int32_t GiveText(const char* name, const AdlxObject* self, const char** target, Answer<std::string> AdlxGpuModel::*member)
{
    AddToTrace(std::string("adlx ") + name);
    if (target == nullptr)
        return ADLX_INVALID_ARGS;
    return (self->gpu->*member).Give(ADLX_NOT_SUPPORTED, [target](const std::string& text) { *target = text.c_str(); });
}

template <typename Value>
int32_t GiveValue(const char* name, const AdlxObject* object, Value* target, Answer<Value> AdlxGpuModel::*member)
{
    AddToTrace(std::string("adlx ") + name);
    if (target == nullptr)
        return ADLX_INVALID_ARGS;
    return (object->gpu->*member).Give(ADLX_NOT_SUPPORTED, [target](Value value) { *target = value; });
}

int32_t __stdcall GetGpus(AdlxObject*, AdlxObject** list)
{
    AddToTrace("adlx GetGPUs");
    return HandOut(Objects().Model().getGpus.code, Objects().List(), list);
}

int32_t __stdcall GetPerformanceMonitoringServices(AdlxObject*, AdlxObject** services)
{
    AddToTrace("adlx GetPerformanceMonitoringServices");
    return HandOut(Objects().Model().getPerformanceMonitoringServices.code, Objects().Performance(), services);
}

int32_t __stdcall AdlAdapterIndexFromAdlxGpu(AdlxObject*, AdlxObject* gpu, int32_t* index)
{
    if (Objects().IsGpu(gpu))
        return GiveValue("AdlAdapterIndexFromADLXGPU", gpu, index, &AdlxGpuModel::adapterIndex);
    AddToTrace("adlx AdlAdapterIndexFromADLXGPU");
    return ADLX_INVALID_ARGS;
}

uint32_t __stdcall ListSize(AdlxObject*)
{
    AddToTrace("adlx Size");
    return Objects().Size();
}

bool __stdcall ListEmpty(AdlxObject*)
{
    AddToTrace("adlx Empty");
    return Objects().Size() == 0;
}

uint32_t __stdcall ListBegin(AdlxObject*)
{
    AddToTrace("adlx Begin");
    return 0;
}

uint32_t __stdcall ListEnd(AdlxObject*)
{
    AddToTrace("adlx End");
    return Objects().Size();
}

int32_t __stdcall ListAtGpuList(AdlxObject*, uint32_t index, AdlxObject** gpu)
{
    AddToTrace("adlx At_GPUList " + std::to_string(index));
    const bool isInside = index < Objects().Size();
    Objects().CountItemCall();
    if (!isInside)
        return HandOut(ADLX_INVALID_ARGS, nullptr, gpu);
    AdlxObject* const object = Objects().Gpu(index);
    return HandOut(object->gpu->atGpuList.code, object, gpu);
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

int32_t __stdcall GetSupportedGpuMetrics(AdlxObject*, AdlxObject* gpu, AdlxObject** support)
{
    AddToTrace("adlx GetSupportedGPUMetrics");
    if (!Objects().IsGpu(gpu))
        return HandOut(ADLX_INVALID_ARGS, nullptr, support);
    return HandOut(Objects().Model().getSupportedGpuMetrics.code, Objects().Support(gpu), support);
}

int32_t __stdcall GetCurrentGpuMetrics(AdlxObject*, AdlxObject* gpu, AdlxObject** metrics)
{
    AddToTrace("adlx GetCurrentGPUMetrics");
    if (!Objects().IsGpu(gpu))
        return HandOut(ADLX_INVALID_ARGS, nullptr, metrics);
    return HandOut(Objects().Model().getCurrentGpuMetrics.code, Objects().Metrics(gpu), metrics);
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
    for (const Slot& slot : slots)
        table[slot.number] = slot.function;
    return table;
}

const auto systemTable = Table<12>({At(1, &GetGpus), At(9, &GetPerformanceMonitoringServices)});
const auto mappingTable = Table<8>({At(3, &AdlAdapterIndexFromAdlxGpu)});
const auto listTable = Table<13>({
    At(0, &Acquire),
    At(1, &Release),
    At(3, &ListSize),
    At(4, &ListEmpty),
    At(5, &ListBegin),
    At(6, &ListEnd),
    At(11, &ListAtGpuList),
});
const auto gpuTable = Table<19>({
    At(0, &Acquire),
    At(1, &Release),
    At(3, &GpuVendorId),
    At(7, &GpuName),
    At(9, &GpuPnpString),
    At(11, &GpuTotalVram),
    At(14, &GpuDeviceId),
});
const auto performanceTable = Table<23>({
    At(0, &Acquire),
    At(1, &Release),
    At(18, &GetCurrentGpuMetrics),
    At(21, &GetSupportedGpuMetrics),
});
const auto supportTable = Table<25>({At(0, &Acquire), At(1, &Release), At(4, &IsSupportedGpuClockSpeed)});
const auto metricsTable = Table<15>({At(0, &Acquire), At(1, &Release), At(5, &GpuClockSpeed)});

/// The object of `objects` that speaks about the same GPU.
AdlxObject* Of(const AdlxObject* gpu, std::deque<AdlxObject>& objects)
{
    return &*std::ranges::find(objects, gpu->gpu, &AdlxObject::gpu);
}

bool IsAlive(const AdlxObject& object)
{
    return object.references > 0;
}

} // namespace

AdlxObjects::AdlxObjects(std::shared_ptr<const Machine> itsMachine)
    : machine(std::move(itsMachine)),
      system{systemTable.data(), "IADLXSystem"},
      mapping{mappingTable.data(), "IADLMapping"},
      list{listTable.data(), "IADLXGPUList"},
      performance{performanceTable.data(), "IADLXPerformanceMonitoringServices"}
{
    for (const AdlxGpuModel& gpu : Model().gpus) {
        gpus.emplace_back(gpuTable.data(), "IADLXGPU", &gpu);
        supports.emplace_back(supportTable.data(), "IADLXGPUMetricsSupport", &gpu);
        metrics.emplace_back(metricsTable.data(), "IADLXGPUMetrics", &gpu);
    }
}

const AdlxModel& AdlxObjects::Model() const
{
    return machine->adlx.model;
}

AdlxObject* AdlxObjects::System()
{
    return &system;
}

AdlxObject* AdlxObjects::Mapping()
{
    return &mapping;
}

AdlxObject* AdlxObjects::List()
{
    return &list;
}

AdlxObject* AdlxObjects::Performance()
{
    return &performance;
}

AdlxObject* AdlxObjects::Gpu(size_t index)
{
    return &gpus[index];
}

AdlxObject* AdlxObjects::Support(const AdlxObject* gpu)
{
    return Of(gpu, supports);
}

AdlxObject* AdlxObjects::Metrics(const AdlxObject* gpu)
{
    return Of(gpu, metrics);
}

bool AdlxObjects::IsGpu(const AdlxObject* object) const
{
    return std::ranges::any_of(gpus, [object](const AdlxObject& gpu) { return &gpu == object; });
}

uint32_t AdlxObjects::Size() const
{
    const auto& shrinkAfter = Model().shrinkAfter;
    const bool hasShrunk = shrinkAfter && itemCalls >= *shrinkAfter && !gpus.empty();
    return static_cast<uint32_t>(gpus.size()) - (hasShrunk ? 1 : 0);
}

void AdlxObjects::CountItemCall()
{
    ++itemCalls;
}

bool AdlxObjects::AnyAlive() const
{
    return IsAlive(list) || IsAlive(performance) || std::ranges::any_of(gpus, IsAlive) ||
           std::ranges::any_of(supports, IsAlive) || std::ranges::any_of(metrics, IsAlive);
}

AdlxState& TheAdlx()
{
    static auto* const state = new AdlxState{{}, std::make_unique<AdlxObjects>(CurrentMachine()), {}};
    return *state;
}

} // namespace orvel::simulation
