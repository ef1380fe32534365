#include "Interfaces.h"

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <set>

#include "AdlRecorder.h"
#include "vendors/amd/ADLXHelper.h"

namespace orvel::recorder {

using namespace orvel::shared::enumeration;

namespace {

constexpr DWORD searchedFolders = LOAD_LIBRARY_SEARCH_USER_DIRS | LOAD_LIBRARY_SEARCH_APPLICATION_DIR |
                                  LOAD_LIBRARY_SEARCH_DEFAULT_DIRS | LOAD_LIBRARY_SEARCH_SYSTEM32;

/// Frees what ADL has taken from its allocation callback.
void __stdcall FreeAdlMemory(void** buffer)
{
    if (buffer && *buffer) {
        std::free(*buffer);
        *buffer = nullptr;
    }
}

Json Missing(HMODULE module)
{
    Json missing = Json::array();
    for (const char* name : {"ADLXQueryFullVersion", "ADLXQueryVersion", "ADLXInitializeWithCallerAdl",
                             "ADLXInitializeWithIncompatibleDriver", "ADLXInitialize", "ADLXTerminate"}) {
        if (!FindFunction<FARPROC>(module, name)) {
            missing.push_back(name);
        }
    }
    return missing;
}

/// ADLX counts some statuses above 0 as successes too.
Json ValueAnswer(ADLX_RESULT status, const Json& value)
{
    return Answer(status, value, Succeeded(status));
}

Json RecordText(IADLXGPU& gpu, ADLX_RESULT (__stdcall IADLXGPU::*read)(const char**))
{
    const char* text = nullptr;
    const ADLX_RESULT status = (gpu.*read)(&text);
    const bool isGiven = Succeeded(status) && text;
    return ValueAnswer(status, isGiven ? Text(std::string_view(text)) : Json(nullptr));
}

/// What an initialisation of ADLX gives.
struct Roots {
    IADLXSystem* System = nullptr;
    IADLMapping* Mapping = nullptr;
};

/// A session of ADLX, and what its GPUs answer.
class AdlxSession {
public:
    AdlxSession(const Roots& given, Json& target) : roots(given), section(target) {}

    void RecordForEnumeration();

    /// Adds what only an inventory asks.
    void RecordForInventory();

    std::vector<std::string> Names;
    std::set<int> Adapters; ///< indexes of ADL

private:
    void RecordGpus(IADLXGPUList& list);
    Json RecordGpu(IADLXGPU& gpu);
    void RecordAdapterIndex(IADLXGPU& gpu, Json& answers);
    void RecordMetrics(IADLXGPU& gpu, Json& answers);
    void RecordPlace(IADLXGPU& gpu, Json& answers) const;

    /// Makes a call that hands an object out, and records its status for all GPUs.
    template <typename Interface, typename Call>
    void Receive(AdlxPtr<Interface>& pointer, const char* name, Call call)
    {
        pointer.Receive([&](Interface** object) {
            const ADLX_RESULT status = call(object);
            section[name] = ObjectAnswer(status, Succeeded(status), *object);
            return status;
        });
    }

    Roots roots;
    Json& section;
    std::deque<AdlxPtr<IADLXGPU>> gpus; ///< those of the list, empty where it does not give one
};

void AdlxSession::RecordForEnumeration()
{
    if (!roots.System) {
        return;
    }
    AdlxPtr<IADLXGPUList> list;
    Receive(list, "GetGPUs", [&](IADLXGPUList** received) { return roots.System->GetGPUs(received); });
    if (list) {
        RecordGpus(*list);
    }
}

/// The list may shrink on the way, by one GPU.
void AdlxSession::RecordGpus(IADLXGPUList& list)
{
    const uint32_t size = list.Size();
    section["gpus"] = Json::array();
    for (uint32_t index = 0; index < list.Size(); ++index) {
        ADLX_RESULT status = ADLX_OK;
        const bool isThere =
            gpus.emplace_back().Receive([&](IADLXGPU** received) { return status = list.At_GPUList(index, received); });
        Json answers = isThere ? RecordGpu(*gpus.back()) : Json::object();
        answers["At_GPUList"] = ObjectAnswer(status, Succeeded(status), isThere ? &*gpus.back() : nullptr);
        section["gpus"].push_back(answers);
        if (list.Size() < size && !section.contains("shrink_after")) {
            section["shrink_after"] = index + 1;
        }
    }
    while (section["gpus"].size() < size) {
        section["gpus"].push_back(Json::object()); // nobody has seen it
    }
}

Json AdlxSession::RecordGpu(IADLXGPU& gpu)
{
    Json answers = {
        {"VendorId", RecordText(gpu, &IADLXGPU::VendorId)},
        {"Name", RecordText(gpu, &IADLXGPU::Name)},
        {"PNPString", RecordText(gpu, &IADLXGPU::PNPString)},
        {"DeviceId", RecordText(gpu, &IADLXGPU::DeviceId)},
    };
    const char* name = nullptr;
    Names.emplace_back(Succeeded(gpu.Name(&name)) && name ? name : "");
    uint32_t mebibytes = 0;
    const ADLX_RESULT status = gpu.TotalVRAM(&mebibytes);
    answers["TotalVRAM"] = ValueAnswer(status, mebibytes);
    RecordAdapterIndex(gpu, answers);
    RecordMetrics(gpu, answers);
    return answers;
}

/// Index 0 is looked at where ADLX does not give one.
void AdlxSession::RecordAdapterIndex(IADLXGPU& gpu, Json& answers)
{
    int32_t index = 0;
    const ADLX_RESULT status = roots.Mapping ? roots.Mapping->AdlAdapterIndexFromADLXGPU(&gpu, &index) : ADLX_FAIL;
    if (roots.Mapping) {
        answers["AdapterIndex"] = ValueAnswer(status, index);
    }
    Adapters.insert(Succeeded(status) ? index : 0);
}

void AdlxSession::RecordMetrics(IADLXGPU& gpu, Json& answers)
{
    using Services = IADLXPerformanceMonitoringServices;
    AdlxPtr<Services> services;
    Receive(services, "GetPerformanceMonitoringServices",
            [&](Services** received) { return roots.System->GetPerformanceMonitoringServices(received); });
    if (!services) {
        return;
    }
    AdlxPtr<IADLXGPUMetricsSupport> support;
    Receive(support, "GetSupportedGPUMetrics",
            [&](IADLXGPUMetricsSupport** received) { return services->GetSupportedGPUMetrics(&gpu, received); });
    AdlxPtr<IADLXGPUMetrics> metrics;
    Receive(metrics, "GetCurrentGPUMetrics",
            [&](IADLXGPUMetrics** received) { return services->GetCurrentGPUMetrics(&gpu, received); });
    if (support) {
        bool isSupported = false;
        const ADLX_RESULT status = support->IsSupportedGPUClockSpeed(&isSupported);
        answers["IsSupportedGPUClockSpeed"] = ValueAnswer(status, isSupported);
    }
    if (metrics) {
        int32_t megahertz = 0;
        const ADLX_RESULT status = metrics->GPUClockSpeed(&megahertz);
        answers["GPUClockSpeed"] = ValueAnswer(status, megahertz);
    }
}

void AdlxSession::RecordForInventory()
{
    for (size_t index = 0; index < gpus.size(); ++index) {
        if (!gpus[index]) {
            continue;
        }
        IADLXGPU& gpu = *gpus[index];
        Json& answers = section["gpus"][index];
        RecordPlace(gpu, answers);
        int32_t type = 0;
        const ADLX_RESULT status = gpu.Type(&type);
        answers["Type"] = ValueAnswer(status, type);
        answers["VRAMType"] = RecordText(gpu, &IADLXGPU::VRAMType);
        answers["RevisionId"] = RecordText(gpu, &IADLXGPU::RevisionId);
        answers["SubSystemId"] = RecordText(gpu, &IADLXGPU::SubSystemId);
        answers["SubSystemVendorId"] = RecordText(gpu, &IADLXGPU::SubSystemVendorId);
    }
}

/// The LUID, from ADLX 1.4 on, and the address, where ADLX knows ADL.
void AdlxSession::RecordPlace(IADLXGPU& gpu, Json& answers) const
{
    AdlxPtr<IADLXGPU2> second;
    const bool hasLuid = second.Receive(
        [&](IADLXGPU2** received) { return gpu.QueryInterface(L"IADLXGPU2", reinterpret_cast<void**>(received)); });
    if (hasLuid) {
        ADLX_LUID luid{};
        const ADLX_RESULT status = second->LUID(&luid);
        answers["LUID"] = ValueAnswer(status, uint64_t{static_cast<uint32_t>(luid.highPart)} << 32 | uint64_t{luid.lowPart});
    }
    if (roots.Mapping) {
        int32_t place[] = {-1, -1, -1}; // which nobody writes who knows it
        const ADLX_RESULT status = roots.Mapping->BdfFromADLXGPU(&gpu, &place[0], &place[1], &place[2]);
        answers["BdfFromADLXGPU"] = ValueAnswer(status, Json::array({place[0], place[1], place[2]}));
    }
}

/// ADLX as an enumeration and as an inventory initialise it.
class AdlxRecorder {
public:
    AdlxRecorder(HMODULE adlxModule, AdlRecorder& adlRecorder, WatchedThread<AmdRecording>& watchedThread)
        : module(adlxModule), adl(adlRecorder), thread(watchedThread)
    {
        recording.Adlx = Json{{"missing", Missing(module)}};
    }

    AmdRecording Record(bool isAdlInSystemFolder)
    {
        RecordVersion();
        RecordForEnumeration();
        if (FindFunction<FARPROC>(module, "ADLXTerminate")) {
            RecordForInventory(isAdlInSystemFolder);
        }
        return recording;
    }

private:
    void RecordVersion();
    void RecordForEnumeration();
    void RecordForInventory(bool isAdlInSystemFolder);
    bool InitializeWithAdl();
    void InitializeAlone();
    void RecordSession(const Roots& roots);
    void Terminate() { FindFunction<ADLX_RESULT (*)()>(module, "ADLXTerminate")(); }

    Json& Section() { return *recording.Adlx; }

    HMODULE module;
    AdlRecorder& adl;
    WatchedThread<AmdRecording>& thread;
    AmdRecording recording;
    uint64_t version = ADLX_DECLARED_VERSION; ///< of an inventory, for a driver that may be older
    std::optional<ADLX_RESULT> withAdl;       ///< how an initialisation with ADL has ended last
    bool isRecorded = false;                  ///< the GPUs are
};

void AdlxRecorder::RecordVersion()
{
    const auto query = FindFunction<ADLX_RESULT (*)(uint64_t*)>(module, "ADLXQueryFullVersion");
    if (!query) {
        return;
    }
    uint64_t drivers = 0;
    const ADLX_RESULT status = query(&drivers);
    Section()["ADLXQueryFullVersion"] = ValueAnswer(status, drivers);
    if (Succeeded(status) && drivers != 0) {
        version = std::min(drivers, ADLX_DECLARED_VERSION);
    }
}

/// Without a context of ADL, an enumeration does not initialise ADLX.
void AdlxRecorder::RecordForEnumeration()
{
    if (!adl.Context() || !Section()["missing"].empty()) {
        return;
    }
    ADLXHelper helper;
    withAdl = helper.InitializeWithCallerAdl(adl.Context(), &FreeAdlMemory);
    const Roots roots{helper.GetSystemServices(), helper.GetAdlMapping()};
    Section()["ADLXInitializeWithCallerAdl"] = ObjectAnswer(*withAdl, Succeeded(*withAdl), roots.System);
    if (Succeeded(*withAdl)) {
        Section()["mapping"] = roots.Mapping != nullptr || !roots.System;
        RecordSession(roots);
    }
}

/// An inventory initialises ADLX without ADL where it cannot do so with it.
void AdlxRecorder::RecordForInventory(bool isAdlInSystemFolder)
{
    const bool isWithAdl = isAdlInSystemFolder && adl.IsForInventory() &&
                           FindFunction<FARPROC>(module, "ADLXInitializeWithCallerAdl") && InitializeWithAdl();
    if (!isWithAdl && FindFunction<FARPROC>(module, "ADLXInitialize")) {
        InitializeAlone();
    }
}

/// Where an enumeration has done so, only the other version of the caller can make a difference.
bool AdlxRecorder::InitializeWithAdl()
{
    if (withAdl && *withAdl != ADLX_BAD_VER) {
        return Succeeded(*withAdl);
    }
    thread.Publish(recording, "adlx ADLXInitializeWithCallerAdl");
    using Initialize = ADLX_RESULT (*)(uint64_t, IADLXSystem**, IADLMapping**, void*, ADLX_ADL_Main_Memory_Free);
    Roots roots;
    withAdl = FindFunction<Initialize>(module, "ADLXInitializeWithCallerAdl")(version, &roots.System, &roots.Mapping,
                                                                              adl.Context(), &FreeAdlMemory);
    Section()["ADLXInitializeWithCallerAdl"] = ObjectAnswer(*withAdl, Succeeded(*withAdl), roots.System);
    if (Succeeded(*withAdl)) {
        Section()["mapping"] = roots.Mapping != nullptr || !roots.System;
        RecordSession(roots);
        Terminate();
    }
    return Succeeded(*withAdl);
}

void AdlxRecorder::InitializeAlone()
{
    thread.Publish(recording, "adlx ADLXInitialize");
    using Initialize = ADLX_RESULT (*)(uint64_t, IADLXSystem**);
    Roots roots;
    const ADLX_RESULT status = FindFunction<Initialize>(module, "ADLXInitialize")(version, &roots.System);
    Section()["ADLXInitialize"] = ObjectAnswer(status, Succeeded(status), roots.System);
    if (Succeeded(status)) {
        RecordSession(roots);
        Terminate();
    }
}

/// What an enumeration asks comes first. The first call that only an inventory makes is blamed for what hangs after that. A
/// driver without a function for its version has one that is new enough for the caller.
void AdlxRecorder::RecordSession(const Roots& roots)
{
    if (!Section().contains("ADLXQueryFullVersion")) {
        Section()["ADLXQueryFullVersion"] = version;
    }
    if (isRecorded) {
        return;
    }
    isRecorded = true;
    AdlxSession session(roots, Section());
    session.RecordForEnumeration();
    recording.Names = session.Names;
    for (const int index : session.Adapters) {
        adl.RecordAdapter(index);
    }
    recording.Adl = adl.Section();
    thread.Publish(recording, "adlx QueryInterface");
    session.RecordForInventory();
}

void Read(WatchedThread<AmdRecording>& thread, bool isAdlInSystemFolder)
{
    AmdRecording recording;
    AdlRecorder adl;
    if (const ModuleHandle module(::LoadLibraryExW(L"amdadlx64.dll", nullptr, searchedFolders)); module) {
        recording = AdlxRecorder(module.get(), adl, thread).Record(isAdlInSystemFolder);
    }
    recording.Adl = adl.Section();
    thread.Publish(recording, "");
}

} // namespace

Recorded<AmdRecording> RecordAmd(uint32_t patienceMilliseconds, bool isAdlInSystemFolder)
{
    return RecordOnThread("adl ADL2_Main_Control_Create", AmdRecording{Json::object(), Json::object(), {}},
                          patienceMilliseconds,
                          [isAdlInSystemFolder](WatchedThread<AmdRecording>& thread) { Read(thread, isAdlInSystemFolder); });
}

} // namespace orvel::recorder
