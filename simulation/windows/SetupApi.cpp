#include "windows/SetupApi.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include <windows.h>

#include <setupapi.h>

#include "drivers/HandleTable.h"
#include "loading/DriverState.h"
#include "machine/CurrentMachine.h"
#include "machine/Text.h"
#include "trace/Trace.h"
#include "trace/Violations.h"
#include "windows/DriverKeys.h"
#include "windows/SystemScope.h"

// The machine's devices are those of the display class. A set of devices is a list of indexes into them; an SP_DEVINFO_DATA
// has the index, counted from 1, as its DevInst, and the set that it came from in Reserved.

namespace orvel::simulation {

namespace {

constexpr GUID displayClass = {0x4d36e968, 0xe325, 0x11ce, {0xbf, 0xc1, 0x08, 0x00, 0x2b, 0xe1, 0x03, 0x18}};

struct DeviceSet {
    std::shared_ptr<const Machine> machine;
    std::vector<size_t> devices; // of the machine
    LiveObject live{Counted::Pnp};
};

struct DeviceSets {
    std::mutex mutex;
    std::map<HDEVINFO, std::shared_ptr<const DeviceSet>> sets;
};

DeviceSets& deviceSets = *new DeviceSets;

const DriverState state([] {
    const std::scoped_lock lock(deviceSets.mutex);
    deviceSets.sets.clear();
});

/// A number that only the simulation gives: above all that Windows has.
bool IsOurs(HDEVINFO handle)
{
    constexpr ULONG_PTR first = 0x1000000000000000;
    return handle != INVALID_HANDLE_VALUE && reinterpret_cast<ULONG_PTR>(handle) >= first;
}

/// Whether a call is for the computer's own devices: the machine leaves them to the system, and the set is not one of ours.
bool IsForSystem(HDEVINFO handle)
{
    return CurrentMachine()->pnp.standing == Standing::System && !IsOurs(handle);
}

template <typename Result>
Result Fail(Result result, DWORD error)
{
    SetLastError(error);
    return result;
}

/// TRUE for 0, else FALSE with the error.
BOOL Finish(int32_t status)
{
    return status == 0 ? TRUE : Fail(FALSE, static_cast<DWORD>(status));
}

BOOL RefuseWith(const std::string& call, const char* what, DWORD error)
{
    return Fail(Refuse(call, what, FALSE), error);
}

std::shared_ptr<const DeviceSet> SetOf(const std::string& call, HDEVINFO handle)
{
    std::shared_ptr<const DeviceSet> set;
    {
        const std::scoped_lock lock(deviceSets.mutex);
        if (const auto found = deviceSets.sets.find(handle); found != deviceSets.sets.end()) {
            set = found->second;
        }
    }
    if (!set) {
        RefuseWith(call, "the set of devices is not open", ERROR_INVALID_HANDLE);
    }
    return set;
}

/// The device that a caller means; null, with the last error, where its data is wrong.
const DeviceModel* DeviceOf(const std::string& call, HDEVINFO handle, const DeviceSet& set, const SP_DEVINFO_DATA* data)
{
    if (!data) {
        RefuseWith(call, "no device", ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    if (data->cbSize != sizeof *data) {
        RefuseWith(call, "cbSize is wrong", ERROR_INVALID_USER_BUFFER);
        return nullptr;
    }
    const auto& devices = set.machine->pnp.model.devices;
    if (data->DevInst == 0 || data->DevInst > devices.size() || data->Reserved != reinterpret_cast<ULONG_PTR>(handle)) {
        RefuseWith(call, "the device is not of this set", static_cast<DWORD>(ERROR_NO_SUCH_DEVINST));
        return nullptr;
    }
    return &devices[data->DevInst - 1];
}

/// For the trace: the device that the data means, as far as it can be found.
std::string NameOf(HDEVINFO handle, const SP_DEVINFO_DATA* data)
{
    const std::scoped_lock lock(deviceSets.mutex);
    const auto found = deviceSets.sets.find(handle);
    if (found == deviceSets.sets.end() || !data || data->DevInst == 0 ||
        data->DevInst > found->second->machine->pnp.model.devices.size()) {
        return "?";
    }
    return found->second->machine->pnp.model.devices[data->DevInst - 1].instanceId;
}

const PropertyName* FindProperty(const DEVPROPKEY& key)
{
    const auto& names = PropertyNames();
    const auto found = std::ranges::find_if(
        names, [&](const PropertyName& each) { return each.number == key.pid && IsEqualGUID(each.format, key.fmtid); });
    return found == names.end() ? nullptr : &*found;
}

// --- the functions ---

/// Whether a caller's choice includes the display devices.
bool IncludesDisplays(const GUID* setupClass, PCWSTR enumerator, DWORD flags)
{
    if (enumerator || (flags & DIGCF_DEVICEINTERFACE) != 0) {
        return false;
    }
    return (flags & DIGCF_ALLCLASSES) != 0 || (setupClass && IsEqualGUID(*setupClass, displayClass));
}

HDEVINFO WINAPI GetClassDevs(const GUID* setupClass, PCWSTR enumerator, HWND parent, DWORD flags)
{
    const auto machine = CurrentMachine();
    if (machine->pnp.standing == Standing::System) {
        const SystemScope scope;
        return SetupDiGetClassDevsW(setupClass, enumerator, parent, flags);
    }
    const std::string call = "pnp SetupDiGetClassDevsW";
    AddToTrace(call);
    if (!setupClass && (flags & DIGCF_ALLCLASSES) == 0) {
        return Fail(Refuse(call, "no class", INVALID_HANDLE_VALUE), ERROR_INVALID_PARAMETER);
    }
    if (const int32_t status = machine->pnp.model.getClassDevs.code; status != 0) {
        return Fail(INVALID_HANDLE_VALUE, static_cast<DWORD>(status));
    }
    auto set = std::make_shared<DeviceSet>();
    set->machine = machine;
    const auto& devices = machine->pnp.model.devices;
    for (size_t index = 0; IncludesDisplays(setupClass, enumerator, flags) && index < devices.size(); ++index) {
        if (devices[index].isPresent || (flags & DIGCF_PRESENT) == 0) {
            set->devices.push_back(index);
        }
    }
    const std::scoped_lock lock(deviceSets.mutex);
    const HDEVINFO handle = NewHandle();
    deviceSets.sets[handle] = std::move(set);
    return handle;
}

BOOL WINAPI EnumDeviceInfo(HDEVINFO handle, DWORD index, PSP_DEVINFO_DATA data)
{
    if (IsForSystem(handle)) {
        const SystemScope scope;
        return SetupDiEnumDeviceInfo(handle, index, data);
    }
    const std::string call = "pnp SetupDiEnumDeviceInfo " + std::to_string(index);
    AddToTrace(call);
    const auto set = SetOf(call, handle);
    if (!set) {
        return FALSE;
    }
    if (!data) {
        return RefuseWith(call, "a null pointer", ERROR_INVALID_PARAMETER);
    }
    if (data->cbSize != sizeof *data) {
        return RefuseWith(call, "cbSize is wrong", ERROR_INVALID_USER_BUFFER);
    }
    const PnpModel& model = set->machine->pnp.model;
    if (index >= set->devices.size()) {
        return Fail(FALSE, model.enumDeviceInfo.given ? static_cast<DWORD>(model.enumDeviceInfo.code) : ERROR_NO_MORE_ITEMS);
    }
    const DeviceModel& device = model.devices[set->devices[index]];
    if (device.enumDeviceInfo.code != 0) {
        return Finish(device.enumDeviceInfo.code);
    }
    data->ClassGuid = displayClass;
    data->DevInst = static_cast<DWORD>(set->devices[index]) + 1;
    data->Reserved = reinterpret_cast<ULONG_PTR>(handle);
    return TRUE;
}

BOOL WINAPI GetDeviceInstanceId(HDEVINFO handle, PSP_DEVINFO_DATA data, PWSTR text, DWORD size, PDWORD needed)
{
    if (IsForSystem(handle)) {
        const SystemScope scope;
        return SetupDiGetDeviceInstanceIdW(handle, data, text, size, needed);
    }
    const std::string call = "pnp SetupDiGetDeviceInstanceIdW " + NameOf(handle, data);
    AddToTrace(call);
    const auto set = SetOf(call, handle);
    const DeviceModel* const device = set ? DeviceOf(call, handle, *set, data) : nullptr;
    if (!device) {
        return FALSE;
    }
    if (!text && size > 0) {
        return RefuseWith(call, "a null pointer", ERROR_INVALID_PARAMETER);
    }
    if (device->getInstanceId.code != 0) {
        return Finish(device->getInstanceId.code);
    }
    const std::wstring id = ToWide(device->instanceId);
    if (needed) {
        *needed = static_cast<DWORD>(id.size()) + 1;
    }
    if (size <= id.size()) {
        return Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
    }
    std::copy_n(id.c_str(), id.size() + 1, text);
    return TRUE;
}

/// The caller's memory for a property.
struct PropertyBuffer {
    DEVPROPTYPE* type;
    PBYTE bytes;
    DWORD size;
    DWORD* needed;
};

BOOL GiveProperty(const Answer<PropertyValue>& answer, const PropertyBuffer& buffer)
{
    bool isEnough = true;
    const int32_t status = answer.Give(ERROR_NOT_FOUND, {{buffer.type, sizeof *buffer.type}, {buffer.bytes, buffer.size}},
                                       [&](const PropertyValue& value) {
                                           *buffer.type = value.type;
                                           if (buffer.needed) {
                                               *buffer.needed = static_cast<DWORD>(value.bytes.size());
                                           }
                                           isEnough = value.bytes.size() <= buffer.size;
                                           if (isEnough) {
                                               std::ranges::copy(value.bytes, buffer.bytes);
                                           }
                                       });
    return Finish(status == 0 && !isEnough ? ERROR_INSUFFICIENT_BUFFER : status);
}

BOOL WINAPI GetDeviceProperty(HDEVINFO handle, PSP_DEVINFO_DATA data, const DEVPROPKEY* key, DEVPROPTYPE* type, PBYTE bytes,
                              DWORD size, PDWORD needed, DWORD flags)
{
    if (IsForSystem(handle)) {
        const SystemScope scope;
        return SetupDiGetDevicePropertyW(handle, data, key, type, bytes, size, needed, flags);
    }
    const PropertyName* const property = key ? FindProperty(*key) : nullptr;
    const std::string call =
        "pnp SetupDiGetDevicePropertyW " + NameOf(handle, data) + " " + (property ? property->name : "?");
    AddToTrace(call);
    const auto set = SetOf(call, handle);
    const DeviceModel* const device = set ? DeviceOf(call, handle, *set, data) : nullptr;
    if (!device) {
        return FALSE;
    }
    if (!key || !type) {
        return RefuseWith(call, "a null pointer", ERROR_INVALID_PARAMETER);
    }
    if (!bytes && size > 0) {
        return RefuseWith(call, "no buffer, but its size", ERROR_INVALID_USER_BUFFER);
    }
    if (flags != 0) {
        return RefuseWith(call, "flags are reserved", ERROR_INVALID_FLAGS);
    }
    const auto found = property ? device->properties.find(property->name) : device->properties.end();
    if (found == device->properties.end()) {
        return Fail(FALSE, ERROR_NOT_FOUND);
    }
    return GiveProperty(found->second, {type, bytes, size, needed});
}

/// The path of a device's key below HKEY_LOCAL_MACHINE; empty where the device has none of this kind.
std::wstring KeyPath(const DeviceModel& device, DWORD kind)
{
    const std::wstring control = L"SYSTEM\\CurrentControlSet\\";
    if (kind == DIREG_DEV) {
        return control + L"Enum\\" + ToWide(device.instanceId) + L"\\Device Parameters";
    }
    const std::wstring driver = device.TextOf("Driver");
    return driver.empty() ? driver : control + L"Control\\Class\\" + driver;
}

HKEY WINAPI OpenDevRegKey(HDEVINFO handle, PSP_DEVINFO_DATA data, DWORD scope, DWORD profile, DWORD kind, REGSAM access)
{
    const auto none = static_cast<HKEY>(INVALID_HANDLE_VALUE);
    if (IsForSystem(handle)) {
        const SystemScope systemScope;
        return SetupDiOpenDevRegKey(handle, data, scope, profile, kind, access);
    }
    const std::string call = "pnp SetupDiOpenDevRegKey " + NameOf(handle, data);
    AddToTrace(call);
    const auto set = SetOf(call, handle);
    const DeviceModel* const device = set ? DeviceOf(call, handle, *set, data) : nullptr;
    if (!device) {
        return none;
    }
    if (scope != DICS_FLAG_GLOBAL || (kind != DIREG_DRV && kind != DIREG_DEV)) {
        return Fail(Refuse(call, "a scope or kind that no device has", none), ERROR_INVALID_FLAGS);
    }
    if (device->openDevRegKey.code != 0) {
        return Fail(none, static_cast<DWORD>(device->openDevRegKey.code));
    }
    const std::wstring path = KeyPath(*device, kind);
    HKEY key = nullptr;
    const LSTATUS status = path.empty() ? static_cast<LSTATUS>(ERROR_KEY_DOES_NOT_EXIST) : OpenDriverKey(path, access, key);
    return status == ERROR_SUCCESS ? key : Fail(none, static_cast<DWORD>(status));
}

BOOL WINAPI DestroyDeviceInfoList(HDEVINFO handle)
{
    if (IsForSystem(handle)) {
        return SetupDiDestroyDeviceInfoList(handle);
    }
    const std::string call = "pnp SetupDiDestroyDeviceInfoList";
    AddToTrace(call);
    const std::scoped_lock lock(deviceSets.mutex);
    return deviceSets.sets.erase(handle) != 0 ? TRUE
                                              : RefuseWith(call, "the set of devices is not open", ERROR_INVALID_HANDLE);
}

} // namespace

std::vector<Redirection> SetupApiRedirections()
{
    return {
        {AsProcedure(&SetupDiGetClassDevsW), AsProcedure(&GetClassDevs)},
        {AsProcedure(&SetupDiEnumDeviceInfo), AsProcedure(&EnumDeviceInfo)},
        {AsProcedure(&SetupDiGetDeviceInstanceIdW), AsProcedure(&GetDeviceInstanceId)},
        {AsProcedure(&SetupDiGetDevicePropertyW), AsProcedure(&GetDeviceProperty)},
        {AsProcedure(&SetupDiOpenDevRegKey), AsProcedure(&OpenDevRegKey)},
        {AsProcedure(&SetupDiDestroyDeviceInfoList), AsProcedure(&DestroyDeviceInfoList)},
    };
}

} // namespace orvel::simulation
