#include "SystemChecks.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <windows.h>

#include <objbase.h>

#include "formulas/VideoControllerQuery.h"
#include "formulas/WmiQueries.h"
#include "platform/Dxgi.h"
#include "platform/FileVersion.h"
#include "platform/Registry.h"
#include "platform/TextEncoding.h"
#include "platform/Wmi.h"
#include "system/WmiNamespace.h"

namespace orvel::tools {

namespace {

using Microsoft::WRL::ComPtr;
using namespace shared::enumeration;

constexpr uint32_t unknownMemoryType = 2; // SMBIOS's own code

std::string Hex(long status)
{
    char text[16];
    std::snprintf(text, sizeof(text), "0x%08lX", static_cast<unsigned long>(status));
    return text;
}

/// Runs a query and reads a property of each row; "" where a row has none.
HRESULT ReadColumn(const std::wstring& wql, const wchar_t* property, std::vector<std::string>& column)
{
    ComPtr<IWbemServices> services;
    ComPtr<IEnumWbemClassObject> rows;
    HRESULT status = ConnectToWmi(wmiNamespace, services);
    if (status == WBEM_S_NO_ERROR) {
        status = SendQuery(*services.Get(), wql.c_str(), rows);
    }
    while (status == WBEM_S_NO_ERROR) {
        ComPtr<IWbemClassObject> row;
        if (status = FetchRow(*rows.Get(), row); row) {
            ReadAsText(*row.Get(), property, column.emplace_back());
        }
    }
    return status;
}

} // namespace

Finding FindDll(const std::string& name)
{
    const ModuleHandle module(::LoadLibraryA(name.c_str()));
    if (!module) {
        return {false, "error " + std::to_string(::GetLastError())};
    }
    const std::wstring path = PathOf(module.get());
    return {true, {}, ToUtf8(path), FileVersion(path)};
}

Finding FindWmiNamespace()
{
    ComPtr<IWbemServices> services;
    const HRESULT status = ConnectToWmi(wmiNamespace, services);
    return {SUCCEEDED(status), SUCCEEDED(status) ? "" : Hex(status)};
}

Finding FindWmiClass(const std::string& name)
{
    std::vector<std::string> rows;
    const HRESULT status = ReadColumn(L"SELECT * FROM " + ToUtf16(name), L"Name", rows);
    const std::string count = std::to_string(rows.size()) + (rows.size() == 1 ? " row" : " rows");
    return {SUCCEEDED(status), SUCCEEDED(status) ? count : Hex(status)};
}

std::vector<std::string> NamesOfAdapters(const std::string& vendorId)
{
    std::vector<std::string> names;
    ReadColumn(ToUtf16(AdapterQuery(vendorId)), L"Name", names);
    return names;
}

uint32_t MemoryType()
{
    std::vector<std::string> types;
    ReadColumn(memoryTypesQuery, L"SMBIOSMemoryType", types);
    const auto reported = std::find_if(types.begin(), types.end(), [](const std::string& type) { return type != "0"; });
    const unsigned long type = reported == types.end() ? 0 : std::strtoul(reported->c_str(), nullptr, 10);
    return type == 0 ? unknownMemoryType : static_cast<uint32_t>(type);
}

Finding FindDxgi()
{
    Finding finding = FindDll("dxgi.dll");
    if (!finding.IsFound) {
        return finding;
    }
    const ModuleHandle module(::LoadLibraryW(L"dxgi.dll"));
    const auto create = FindFunction<decltype(&::CreateDXGIFactory)>(module.get(), "CreateDXGIFactory");
    ComPtr<IUnknown> factory;
    const HRESULT status = create ? create(idxgiFactoryId, reinterpret_cast<void**>(factory.GetAddressOf())) : E_NOTIMPL;
    finding.IsFound = SUCCEEDED(status);
    finding.Detail = SUCCEEDED(status) ? "" : Hex(status);
    return finding;
}

Finding FindRegistryKey(const std::string& path)
{
    RegistryKey key;
    const LSTATUS status = OpenKey(HKEY_LOCAL_MACHINE, path.c_str(), key);
    return {status == ERROR_SUCCESS, status == ERROR_SUCCESS ? "" : "error " + std::to_string(status)};
}

Finding FindCom()
{
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    const HRESULT status = ::CoGetApartmentType(&type, &qualifier);
    return {SUCCEEDED(status), SUCCEEDED(status) ? "" : Hex(status)};
}

} // namespace orvel::tools
