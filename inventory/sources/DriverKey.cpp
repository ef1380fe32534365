#include "sources/DriverKey.h"

#include <iterator>

namespace orvel::shared::inventory {

namespace {

/// In the order of DriverKeyValue.
constexpr const wchar_t* names[] = {
    L"DriverDesc",
    L"ProviderName",
    L"DriverVersion",
    L"InfPath",
    L"DriverDateData",
    L"RadeonSoftwareVersion",
    L"HardwareInformation.qwMemorySize",
    L"HardwareInformation.BiosString",
};
static_assert(std::size(names) == driverKeyValueCount);

constexpr DWORD mostBytes = 65536;

RawValue ReadValue(HKEY key, const wchar_t* name)
{
    RawValue value;
    value.bytes.resize(256);
    for (;;) {
        DWORD type = 0;
        auto size = static_cast<DWORD>(value.bytes.size());
        const LSTATUS status = ::RegQueryValueExW(key, name, nullptr, &type, value.bytes.data(), &size);
        if (status == ERROR_MORE_DATA && size > value.bytes.size() && size <= mostBytes) {
            value.bytes.resize(size);
            continue;
        }
        value.error = static_cast<uint32_t>(status);
        value.type = type;
        value.bytes.resize(status == ERROR_SUCCESS ? size : 0);
        return value;
    }
}

} // namespace

DriverKeyReading ReadDriverKey(HKEY key)
{
    DriverKeyReading reading;
    for (std::size_t value = 0; value < driverKeyValueCount; ++value) {
        reading.values[value] = ReadValue(key, names[value]);
    }
    return reading;
}

} // namespace orvel::shared::inventory
