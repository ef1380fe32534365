#include "Recorder.h"

#include <set>

#include <windows.h>

#include "Identifiers.h"
#include "Interfaces.h"
#include "Origin.h"

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

} // namespace

Json RecordComputer(bool keepIdentifiers)
{
    const NvapiRecording nvapi = RecordNvapi();
    const AmdRecording amd = RecordAmd();
    const std::optional<Json> opencl = RecordOpenCl();
    const Json wmi = RecordWmi({OpenClNames(opencl), nvapi.DeviceId, amd.Names});
    Json recording = {{"name", Title(wmi)}, {"recorded", RecordOrigin()}};
    Add(recording, "dwm", RecordDwm());
    recording["wmi"] = wmi;
    Add(recording, "registry", RecordRegistry());
    Add(recording, "dxgi", RecordDxgi());
    Add(recording, "opencl", opencl);
    Add(recording, "nvapi", nvapi.Section);
    Add(recording, "nvml", RecordNvml());
    Add(recording, "adl", amd.Adl);
    Add(recording, "adlx", amd.Adlx);
    if (!keepIdentifiers) {
        ReplaceIdentifiers(recording, UserName());
    }
    return recording;
}

} // namespace orvel::recorder
