#include "Recorder.h"

#include <windows.h>

#include "Identifiers.h"
#include "Interfaces.h"
#include "Origin.h"
#include "SystemDlls.h"

namespace orvel::recorder {

namespace {

void Add(Json& recording, const char* name, const std::optional<Json>& section)
{
    if (section) {
        recording[name] = *section;
    }
}

/// The adapters' names, as far as WMI gives them.
std::string Title(const Json& wmi)
{
    const Json::json_pointer rows("/classes/Win32_VideoController");
    std::string names;
    for (const Json& row : wmi.contains(rows) ? wmi[rows] : Json::array()) {
        if (row.contains("Name") && row["Name"].is_string()) {
            names += (names.empty() ? " with " : ", ") + row["Name"].get<std::string>();
        }
    }
    return "A recorded computer" + names;
}

/// The devices that answer what Intel's run asks them before it asks WMI for the memory.
std::vector<std::string> OpenClNames(const std::optional<Json>& opencl)
{
    std::vector<std::string> names;
    for (const Json& platform : opencl ? (*opencl)["platforms"] : Json::array()) {
        for (const Json& device : platform["devices"]) {
            const Json name = device.value("CL_DEVICE_NAME", Json());
            const bool isAnswering = device.value("CL_DEVICE_MAX_CLOCK_FREQUENCY", Json()).is_number() &&
                                     device.value("CL_DEVICE_MAX_CONSTANT_ARGS", Json()).is_number();
            if (name.is_string() && isAnswering) {
                names.push_back(name.get<std::string>());
            }
        }
    }
    return names;
}

std::string UserName()
{
    wchar_t name[257] = L"";
    DWORD characters = static_cast<DWORD>(std::size(name));
    ::GetUserNameW(name, &characters);
    return Text(std::wstring_view(name)).get<std::string>();
}

/// Puts the sections of the interfaces together.
class Recorder {
public:
    explicit Recorder(const RecordOptions& recordOptions) : options(recordOptions) {}

    Json Record();

private:
    /// What a thread has recorded; a call that hangs is noted.
    template <typename Content>
    Content Take(const Recorded<Content>& recorded)
    {
        if (!recorded.hangingCall.empty()) {
            AddHang(recorded.hangingCall);
        }
        return recorded.content;
    }

    /// Records what needs a DLL, unless that cannot be loaded without an end.
    template <typename Content>
    Content TakeWith(const char* dll, Recorded<Content> (*record)(uint32_t))
    {
        return systemDlls.Hanging.contains(dll) ? Content{} : Take(record(options.PatienceMilliseconds));
    }

    AmdRecording TakeAmd()
    {
        const bool isLoadable =
            !systemDlls.Hanging.contains("atiadlxx.dll") && !systemDlls.Hanging.contains("amdadlx64.dll");
        return isLoadable ? Take(RecordAmd(options.PatienceMilliseconds, systemDlls.Has("atiadlxx.dll"))) : AmdRecording();
    }

    void AddHang(const std::string& call)
    {
        constexpr uint32_t day = 24 * 60 * 60 * 1000; // the longest that a machine file can say
        hangs.push_back({{"call", call}, {"milliseconds", day}});
    }

    void AddOutsideDlls(Json& recording) const;

    const RecordOptions& options;
    SystemDlls systemDlls;
    Json hangs = Json::array();
};

/// The DLLs that an enumeration finds and an inventory does not.
void Recorder::AddOutsideDlls(Json& recording) const
{
    Json names = Json::array();
    for (const auto& [dll, section] :
         {std::pair("dxgi.dll", "dxgi"), std::pair("nvml.dll", "nvml"), std::pair("nvapi64.dll", "nvapi"),
          std::pair("atiadlxx.dll", "adl"), std::pair("amdadlx64.dll", "adlx")}) {
        if (recording.contains(section) && !systemDlls.Has(dll)) {
            names.push_back(dll);
        }
    }
    if (!names.empty()) {
        recording["outside_system_folder"] = names;
    }
}

/// The devices come first: they say which cards sleep, and the vendors' drivers may wake them.
Json Recorder::Record()
{
    systemDlls = FindSystemDlls(options.PatienceMilliseconds);
    for (const std::string& name : systemDlls.Hanging) {
        AddHang("load " + name);
    }
    const PnpRecording pnp = Take(RecordPnp(options.PatienceMilliseconds));
    const auto displays = Take(RecordDisplays(options.PatienceMilliseconds));
    const auto dxcore = TakeWith("dxcore.dll", &RecordDxCore);
    const auto dxgi = TakeWith("dxgi.dll", &RecordDxgi);

    options.BeforeEnumeration();
    const NvapiRecording nvapi = TakeWith("nvapi64.dll", &RecordNvapi);
    const AmdRecording amd = TakeAmd();
    const auto nvml = TakeWith("nvml.dll", &RecordNvml);
    const std::optional<Json> opencl = RecordOpenCl();
    const Json wmi = RecordWmi({OpenClNames(opencl), nvapi.DeviceId, amd.Names});
    Json recording = {{"name", Title(wmi)}, {"recorded", RecordOrigin(systemDlls.Hanging)}};
    Add(recording, "dwm", RecordDwm());
    recording["wmi"] = wmi;
    Json registry = RecordRegistry();
    registry.update(pnp.DriverKeys);
    Add(recording, "registry", registry.empty() ? std::nullopt : std::optional(registry));
    recording["pnp"] = pnp.Section;
    Add(recording, "displays", displays);
    Add(recording, "dxgi", dxgi);
    Add(recording, "dxcore", dxcore);
    Add(recording, "opencl", opencl);
    Add(recording, "nvapi", nvapi.Section);
    Add(recording, "nvml", nvml);
    Add(recording, "adl", amd.Adl);
    Add(recording, "adlx", amd.Adlx);
    AddOutsideDlls(recording);
    Add(recording, "hang", hangs.empty() ? std::nullopt : std::optional(hangs));
    return recording;
}

} // namespace

Json RecordComputer(const RecordOptions& options)
{
    Recorder recorder(options);
    Json recording = recorder.Record();
    if (!options.KeepIdentifiers) {
        ReplaceIdentifiers(recording, UserName());
    }
    return recording;
}

} // namespace orvel::recorder
