// The queries are the enumeration's own, in its order: a machine may let the second query fail and not the first. Rows are
// recorded per query, as not every WMI understands a condition alike, and per class for whoever asks something else.

#include "Interfaces.h"

#include <algorithm>

#include <windows.h>

#include <oleauto.h>
#include <wbemidl.h>
#include <wrl/client.h>

#include "formulas/VideoControllerQuery.h"
#include "formulas/WmiQueries.h"
#include "platform/TextEncoding.h"
#include "platform/Wmi.h"
#include "system/WmiNamespace.h"

namespace orvel::recorder {

using namespace orvel::shared::enumeration;
using Microsoft::WRL::ComPtr;

namespace {

constexpr int mostAttempts = 4; // of a query that fails: the library asks again too

using Properties = std::vector<const wchar_t*>;

const Properties adapterProperties = {
    L"Availability",
    L"ConfigManagerErrorCode",
    L"ConfigManagerUserConfig",
    L"CurrentHorizontalResolution",
    L"CurrentVerticalResolution",
    L"CurrentRefreshRate",
    L"AdapterRAM",
    L"AdapterDACType",
    L"DriverDate",
    L"DriverVersion",
    L"Name",
    L"Status",
    L"PNPDeviceID",
};
const Properties moduleProperties = {L"SMBIOSMemoryType", L"Speed", L"TotalWidth"};

constexpr wchar_t adapterClass[] = L"Win32_VideoController";
constexpr wchar_t moduleClass[] = L"Win32_PhysicalMemory";
constexpr wchar_t biosClass[] = L"Win32_Bios";

/// Cleared with its scope.
struct Variant {
    Variant() { ::VariantInit(&Value); }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant() { ::VariantClear(&Value); }
    VARIANT Value;
};

Json Typed(const char* type, const Json& value)
{
    return {{"vt", type}, {"value", value}};
}

/// A type that machine files do not have: its text, which converts as the value does.
Json Converted(VARIANT& value)
{
    Variant text;
    const HRESULT status = ::VariantChangeType(&text.Value, &value, 0, VT_BSTR);
    if (FAILED(status)) {
        return {{"status", status}};
    }
    return Text(std::wstring_view(text.Value.bstrVal, ::SysStringLen(text.Value.bstrVal)));
}

Json ValueOf(VARIANT& value, CIMTYPE type)
{
    switch (value.vt) {
    case VT_NULL:
        return nullptr;
    case VT_EMPTY:
        return Typed("EMPTY", nullptr);
    case VT_BSTR:
        return Text(std::wstring_view(value.bstrVal, ::SysStringLen(value.bstrVal)));
    case VT_BOOL:
        return value.boolVal != VARIANT_FALSE;
    case VT_I4:
        if (type == CIM_SINT32) {
            return Typed("I4", value.lVal);
        }
        return static_cast<uint32_t>(value.lVal);
    case VT_UI4:
        return Typed("UI4", value.ulVal);
    case VT_R4:
        return Typed("R4", value.fltVal);
    case VT_R8:
        return Typed("R8", value.dblVal);
    default:
        return Converted(value);
    }
}

Json RecordRow(IWbemClassObject& object, const Properties& properties)
{
    Json row = Json::object();
    for (const wchar_t* name : properties) {
        Variant value;
        CIMTYPE type = CIM_EMPTY;
        const HRESULT status = object.Get(name, 0, &value.Value, &type, nullptr);
        if (status == static_cast<HRESULT>(WBEM_E_NOT_FOUND)) {
            continue;
        }
        row[ToUtf8(name)] = status == WBEM_S_NO_ERROR ? ValueOf(value.Value, type) : Json{{"status", status}};
    }
    return row;
}

/// What WMI gives for one query: rows and how they ended, or why there are none.
struct Result {
    HRESULT Status = WBEM_S_NO_ERROR;
    std::vector<Json> Rows;
    HRESULT End = WBEM_S_FALSE;

    bool HasFailed() const { return Status != WBEM_S_NO_ERROR || End != WBEM_S_FALSE; }
    bool operator==(const Result&) const = default;
};

/// All rows. An error that WMI finds while it works on the query comes in place of the first.
void TakeRows(IEnumWbemClassObject& source, const Properties& properties, Result& result)
{
    ComPtr<IWbemClassObject> row;
    HRESULT status = FetchRow(source, row);
    for (; status == WBEM_S_NO_ERROR; status = FetchRow(source, row)) {
        result.Rows.push_back(RecordRow(*row.Get(), properties));
    }
    (result.Rows.empty() && status != WBEM_S_FALSE ? result.Status : result.End) = status;
}

struct Query {
    std::wstring Wql;
    std::wstring Class;
    Properties Columns;
    std::vector<Result> Results; ///< of each time that it was sent

    const Result& Last() const { return Results.back(); }
};

class WmiRecorder {
public:
    explicit WmiRecorder(ComPtr<IWbemServices> connected) : services(std::move(connected)) {}

    /// Sends a query for the first time. The result is valid until the next query.
    const Result& Ask(const std::wstring& wql, const wchar_t* wmiClass, const Properties& columns);
    void AskForAdapters(const std::string& wql) { Ask(ToUtf16(wql), adapterClass, adapterProperties); }
    void AskForModules(std::initializer_list<const wchar_t*> queries);
    void AskFailedAgain();

    Json Record();

private:
    Result Send(const Query& query) const;
    Json RecordQuery(const Query& query, const Json& classes) const;
    Json RecordResult(const Query& query, const Result& result, const Json& classes) const;

    ComPtr<IWbemServices> services;
    std::vector<Query> queries;
};

Result WmiRecorder::Send(const Query& query) const
{
    ComPtr<IEnumWbemClassObject> rows;
    Result result;
    result.Status = SendQuery(*services.Get(), query.Wql.c_str(), rows);
    if (result.Status == WBEM_S_NO_ERROR) {
        TakeRows(*rows.Get(), query.Columns, result);
    }
    return result;
}

const Result& WmiRecorder::Ask(const std::wstring& wql, const wchar_t* wmiClass, const Properties& columns)
{
    const auto known = std::find_if(queries.begin(), queries.end(), [&](const Query& query) { return query.Wql == wql; });
    if (known != queries.end()) {
        return known->Last();
    }
    Query& query = queries.emplace_back(Query{wql, wmiClass, columns, {}});
    query.Results.push_back(Send(query));
    return query.Last();
}

void WmiRecorder::AskForModules(std::initializer_list<const wchar_t*> wqls)
{
    for (const wchar_t* wql : wqls) {
        const std::wstring text = wql;
        const auto isAsked = [&](const wchar_t* property) { return text.find(property) != std::wstring::npos; };
        Ask(text, moduleClass, {*std::find_if(moduleProperties.begin(), moduleProperties.end(), isAsked)});
    }
}

void WmiRecorder::AskFailedAgain()
{
    for (Query& query : queries) {
        while (query.Last().HasFailed() && query.Results.size() < mostAttempts) {
            query.Results.push_back(Send(query));
        }
        while (query.Results.size() > 1 && query.Last() == query.Results[query.Results.size() - 2]) {
            query.Results.pop_back(); // the last answer holds for every later time
        }
    }
}

/// The row as a query shows it that selects these properties.
Json Selected(const Json& row, const Properties& columns)
{
    Json selected = Json::object();
    for (const wchar_t* column : columns) {
        if (const std::string name = ToUtf8(column); row.contains(name)) {
            selected[name] = row[name];
        }
    }
    return selected;
}

/// The numbers of the class's rows that a query has given; nothing where it has given another one.
std::optional<Json> NumbersOf(const std::vector<Json>& given, const Json& rowsOfClass, const Properties& columns)
{
    Json numbers = Json::array();
    size_t number = 0;
    for (const Json& row : given) {
        while (number < rowsOfClass.size() && Selected(rowsOfClass[number], columns) != row) {
            ++number;
        }
        if (number == rowsOfClass.size()) {
            return std::nullopt;
        }
        numbers.push_back(number++);
    }
    return numbers;
}

Json WmiRecorder::RecordResult(const Query& query, const Result& result, const Json& classes) const
{
    if (result.Status != WBEM_S_NO_ERROR) {
        return {{"status", result.Status}};
    }
    Json answer = Json::object();
    const std::string name = ToUtf8(query.Class);
    const auto numbers =
        classes.contains(name) ? NumbersOf(result.Rows, classes[name], query.Columns) : std::optional<Json>();
    if (numbers) {
        answer["class"] = name;
    }
    answer["rows"] = numbers.value_or(Json(result.Rows));
    if (result.End != WBEM_S_FALSE) {
        answer["status"] = result.End;
    }
    return answer;
}

Json WmiRecorder::RecordQuery(const Query& query, const Json& classes) const
{
    if (query.Results.size() == 1) {
        return RecordResult(query, query.Last(), classes);
    }
    Json answers = Json::array();
    for (const Result& result : query.Results) {
        answers.push_back(RecordResult(query, result, classes));
    }
    return answers;
}

Json WmiRecorder::Record()
{
    Json classes = Json::object();
    for (const auto& [name, columns] :
         {std::pair(biosClass, Properties{L"SerialNumber"}), std::pair(adapterClass, adapterProperties),
          std::pair(moduleClass, moduleProperties)}) {
        const Result whole = Send({std::wstring(L"SELECT * FROM ") + name, name, columns, {}});
        if (!whole.HasFailed()) {
            classes[ToUtf8(name)] = whole.Rows;
        }
    }
    Json answers = Json::object();
    for (const Query& query : queries) {
        answers[ToUtf8(query.Wql)] = RecordQuery(query, classes);
    }
    return {{"classes", classes}, {"queries", answers}};
}

/// Whether OpenCL has a device of the first adapter's name.
bool HasOpenClDevice(const Result& adapters, const std::vector<std::string>& names)
{
    const Json name = adapters.Rows.empty() ? Json() : adapters.Rows.front().value("Name", Json());
    return name.is_string() && std::find(names.begin(), names.end(), name.get<std::string>()) != names.end();
}

} // namespace

Json RecordWmi(const KnownGpus& gpus)
{
    ComPtr<IWbemServices> services;
    if (const HRESULT status = ConnectToWmi(wmiNamespace, services); status != WBEM_S_NO_ERROR) {
        return {{"connect", status}};
    }
    WmiRecorder recorder(services);
    recorder.Ask(biosQuery, biosClass, {L"SerialNumber"});
    const Result& intel = recorder.Ask(ToUtf16(IntelAdapterQuery()), adapterClass, adapterProperties);
    if (HasOpenClDevice(intel, gpus.OpenClNames)) { // else Intel's run ends before it asks for the memory
        recorder.AskForModules({memoryWidthsQuery, memoryTypesQuery, memorySpeedsQuery});
    }
    if (gpus.NvidiaDeviceId) {
        recorder.AskForAdapters(NvidiaAdapterQuery(*gpus.NvidiaDeviceId));
        recorder.AskForModules({memoryTypesQuery});
    }
    for (const std::string& name : gpus.AmdNames) {
        recorder.AskForAdapters(AmdAdapterQuery(name));
    }
    recorder.AskForModules({memorySpeedsQuery, memoryTypesQuery, memoryWidthsQuery});
    recorder.AskFailedAgain();
    return recorder.Record();
}

} // namespace orvel::recorder
