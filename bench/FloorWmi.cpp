#include "FloorWmi.h"

#include "platform/Wmi.h"
#include "system/WmiNamespace.h"

namespace orvel::bench {

using namespace shared::enumeration;

namespace {

constexpr wchar_t memoryTypes[] = L"SELECT SMBIOSMemoryType FROM Win32_PhysicalMemory";
constexpr wchar_t speeds[] = L"SELECT Speed FROM Win32_PhysicalMemory";
constexpr wchar_t totalWidths[] = L"SELECT TotalWidth FROM Win32_PhysicalMemory";

FloorRows AskModules(FloorWmi& wmi, const wchar_t* wql)
{
    wmi.Ask(wql);
    for (const wchar_t* other : {memoryTypes, speeds, totalWidths}) {
        wmi.Ask(other);
    }
    return FloorRows(wmi, wql);
}

void ReadFirst(FloorRows modules, const wchar_t* property)
{
    if (modules.Next()) {
        modules.Read(property);
    }
}

} // namespace

IWbemClassObject* FloorAnswer::At(size_t index)
{
    while (index >= Rows.size() && !IsWhole) {
        Microsoft::WRL::ComPtr<IWbemClassObject> row;
        IsWhole = FetchRow(*Source.Get(), row) != WBEM_S_NO_ERROR;
        if (!IsWhole) {
            Rows.push_back(std::move(row));
        }
    }
    return index < Rows.size() ? Rows[index].Get() : nullptr;
}

FloorAnswer& FloorWmi::Ask(const wchar_t* wql)
{
    if (!services) {
        ConnectToWmi(wmiNamespace, services);
    }
    const auto [answer, isNew] = answers.try_emplace(wql);
    if (isNew) {
        SendQuery(*services.Get(), wql, answer->second.Source);
    }
    return answer->second;
}

FloorRows::FloorRows(FloorWmi& wmi, const wchar_t* wql) : answer(&wmi.Ask(wql))
{
    answer->At(0); // the result is available when its first row is
}

bool FloorRows::Next()
{
    row = answer->At(next++);
    return row != nullptr;
}

void FloorRows::Read(const wchar_t* property) const
{
    Value value;
    Read(property, value);
}

void FloorRows::Read(const wchar_t* property, Value& value) const
{
    row->Get(property, 0, &value.Variant, nullptr, nullptr);
}

void ReadMemoryType(FloorWmi& wmi)
{
    ReadFirst(FloorRows(wmi, memoryTypes), L"SMBIOSMemoryType");
}

void ReadTotalWidth(FloorWmi& wmi)
{
    ReadFirst(AskModules(wmi, totalWidths), L"TotalWidth");
}

void ReadMemorySpeed(FloorWmi& wmi)
{
    FloorRows modules = AskModules(wmi, speeds);
    while (modules.Next()) {
        modules.Read(L"Speed");
    }
}

} // namespace orvel::bench
