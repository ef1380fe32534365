#include "Interfaces.h"

#include <cstdlib>
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

/// A session of ADLX, and what its GPUs answer.
class AdlxSession {
public:
    AdlxSession(ADLXHelper& adlxHelper, Json& target) : helper(adlxHelper), section(target) {}

    void Record();

    std::vector<std::string> Names;
    std::set<int> Adapters; ///< indexes of ADL

private:
    void RecordGpus(IADLXGPUList& list);
    Json RecordGpu(IADLXGPU& gpu);
    void RecordAdapterIndex(IADLXGPU& gpu, Json& answers);
    void RecordMetrics(IADLXGPU& gpu, Json& answers);

    /// Makes a call that hands an object out, and records its status for all GPUs.
    template <typename Interface, typename Call>
    Interface* Receive(const char* name, Call call)
    {
        Interface* object = nullptr;
        const ADLX_RESULT status = call(&object);
        section[name] = ObjectAnswer(status, Succeeded(status), object);
        return Succeeded(status) ? object : nullptr;
    }

    ADLXHelper& helper;
    Json& section;
};

template <typename Interface>
class Released {
public:
    explicit Released(Interface* received) : object(received) {}
    Released(const Released&) = delete;
    Released& operator=(const Released&) = delete;
    ~Released()
    {
        if (object) {
            object->Release();
        }
    }
    explicit operator bool() const { return object != nullptr; }
    Interface* operator->() const { return object; }
    Interface& operator*() const { return *object; }

private:
    Interface* object;
};

void AdlxSession::Record()
{
    IADLXSystem* const system = helper.GetSystemServices();
    if (!system) {
        return;
    }
    const Released list(
        Receive<IADLXGPUList>("GetGPUs", [&](IADLXGPUList** received) { return system->GetGPUs(received); }));
    if (list) {
        RecordGpus(*list);
    }
}

/// The list may shrink on the way, by one GPU.
void AdlxSession::RecordGpus(IADLXGPUList& list)
{
    const uint32_t size = list.Size();
    Json gpus = Json::array();
    for (uint32_t index = 0; index < list.Size(); ++index) {
        IADLXGPU* received = nullptr;
        const ADLX_RESULT status = list.At_GPUList(index, &received);
        const Released gpu(Succeeded(status) ? received : nullptr);
        Json answers = gpu ? RecordGpu(*gpu) : Json::object();
        answers["At_GPUList"] = ObjectAnswer(status, Succeeded(status), received);
        gpus.push_back(answers);
        if (list.Size() < size && !section.contains("shrink_after")) {
            section["shrink_after"] = index + 1;
        }
    }
    while (gpus.size() < size) {
        gpus.push_back(Json::object()); // nobody has seen it
    }
    section["gpus"] = gpus;
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
    IADLMapping* const mapping = helper.GetAdlMapping();
    int32_t index = 0;
    const ADLX_RESULT status = mapping ? mapping->AdlAdapterIndexFromADLXGPU(&gpu, &index) : ADLX_FAIL;
    answers["AdapterIndex"] = ValueAnswer(status, index);
    Adapters.insert(Succeeded(status) ? index : 0);
}

void AdlxSession::RecordMetrics(IADLXGPU& gpu, Json& answers)
{
    using Services = IADLXPerformanceMonitoringServices;
    const Released services(Receive<Services>("GetPerformanceMonitoringServices", [&](Services** received) {
        return helper.GetSystemServices()->GetPerformanceMonitoringServices(received);
    }));
    if (!services) {
        return;
    }
    using Support = IADLXGPUMetricsSupport;
    using Metrics = IADLXGPUMetrics;
    const Released support(Receive<Support>(
        "GetSupportedGPUMetrics", [&](Support** received) { return services->GetSupportedGPUMetrics(&gpu, received); }));
    const Released metrics(Receive<Metrics>(
        "GetCurrentGPUMetrics", [&](Metrics** received) { return services->GetCurrentGPUMetrics(&gpu, received); }));
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

/// Without a context of ADL, ADLX is not initialised, as in an enumeration.
void RecordSession(AdlRecorder& adl, AmdRecording& recording)
{
    Json& section = *recording.Adlx;
    if (!adl.Context() || !section["missing"].empty()) {
        return;
    }
    ADLXHelper helper;
    const ADLX_RESULT status = helper.InitializeWithCallerAdl(adl.Context(), &FreeAdlMemory);
    section["ADLXInitializeWithCallerAdl"] = ObjectAnswer(status, Succeeded(status), helper.GetSystemServices());
    if (!Succeeded(status)) {
        return;
    }
    AdlxSession session(helper, section);
    session.Record();
    recording.Names = session.Names;
    for (const int index : session.Adapters) {
        adl.RecordAdapter(index);
    }
}

} // namespace

AmdRecording RecordAmd()
{
    AmdRecording recording;
    AdlRecorder adl;
    if (const ModuleHandle module(::LoadLibraryExW(L"amdadlx64.dll", nullptr, searchedFolders)); module) {
        recording.Adlx = Json{{"missing", Missing(module.get())}};
        RecordSession(adl, recording);
    }
    recording.Adl = adl.Section();
    return recording;
}

} // namespace orvel::recorder
