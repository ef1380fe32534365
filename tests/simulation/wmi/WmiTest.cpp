// The simulated WMI.

#include <doctest/doctest.h>

#include <comutil.h>
#include <wbemidl.h>
#include <wrl/client.h>

#include "simulation/Drivers.h"

using namespace orvel::tests;

using Microsoft::WRL::ComPtr;

namespace {

constexpr auto withoutLimit = static_cast<LONG>(WBEM_INFINITE);

constexpr HRESULT Status(WBEMSTATUS status)
{
    return static_cast<HRESULT>(status);
}

Json MachineWith(const Json& rows)
{
    return {{"wmi", {{"classes", {{"C", rows}}}}}};
}

HRESULT Connect(ComPtr<IWbemServices>& services)
{
    ComPtr<IWbemLocator> locator;
    REQUIRE(::CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(locator.GetAddressOf())) ==
            S_OK);
    return locator->ConnectServer(_bstr_t(L"ROOT\\CIMV2"), nullptr, nullptr, nullptr, 0, nullptr, nullptr, &services);
}

/// A session on a machine with these rows of the class C.
ComPtr<IWbemServices> ServicesWith(const Json& rows)
{
    Simulate(MachineWith(rows));
    ComPtr<IWbemServices> services;
    REQUIRE(Connect(services) == S_OK);
    return services;
}

HRESULT Query(IWbemServices& services, const wchar_t* text, ComPtr<IEnumWbemClassObject>& rows, LONG flags = 0)
{
    return services.ExecQuery(_bstr_t(L"WQL"), _bstr_t(text), flags, nullptr, &rows);
}

HRESULT Next(IEnumWbemClassObject& rows, ComPtr<IWbemClassObject>& row)
{
    ULONG returned = 0;
    return rows.Next(withoutLimit, 1, &row, &returned);
}

/// The first row of the query.
ComPtr<IWbemClassObject> FirstRow(IWbemServices& services, const wchar_t* text)
{
    ComPtr<IEnumWbemClassObject> rows;
    REQUIRE(Query(services, text, rows) == S_OK);
    ComPtr<IWbemClassObject> row;
    REQUIRE(Next(*rows.Get(), row) == S_OK);
    return row;
}

/// The number of rows of the query.
int Count(IWbemServices& services, const wchar_t* text)
{
    ComPtr<IEnumWbemClassObject> rows;
    REQUIRE(Query(services, text, rows) == S_OK);
    for (int count = 0;; ++count) {
        ComPtr<IWbemClassObject> row;
        if (Next(*rows.Get(), row) != S_OK) {
            return count;
        }
    }
}

} // namespace

TEST_CASE("A machine with WMI connects, or returns the status in the file")
{
    ComPtr<IWbemServices> services;
    Simulate(Json::object());
    CHECK(Connect(services) == Status(WBEM_E_INVALID_NAMESPACE));
    Simulate({{"wmi", {{"connect", "0x80070005"}}}});
    CHECK(Connect(services) == static_cast<HRESULT>(0x80070005));
    Simulate({{"wmi", Json::object()}});
    CHECK(Connect(services) == S_OK);
    CHECK(Live()["wmi"] == 1);
    services.Reset();
    CHECK(Live()["wmi"] == 0);
}

TEST_CASE("WMI rejects null as a name, a query or an output")
{
    const auto services = ServicesWith(Json::array({{{"P", 1}}}));
    ComPtr<IWbemLocator> locator;
    REQUIRE(::CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(locator.GetAddressOf())) ==
            S_OK);
    ComPtr<IWbemServices> other;
    CHECK(locator->ConnectServer(nullptr, nullptr, nullptr, nullptr, 0, nullptr, nullptr, &other) ==
          WBEM_E_INVALID_PARAMETER);
    CHECK(locator->ConnectServer(_bstr_t(L"N"), nullptr, nullptr, nullptr, 0, nullptr, nullptr, nullptr) ==
          WBEM_E_INVALID_PARAMETER);
    CHECK(locator->QueryInterface(IID_IUnknown, nullptr) == E_POINTER);
    ComPtr<IEnumWbemClassObject> rows;
    CHECK(services->ExecQuery(nullptr, _bstr_t(L"SELECT * FROM C"), 0, nullptr, &rows) == Status(WBEM_E_INVALID_PARAMETER));
    CHECK(services->ExecQuery(_bstr_t(L"WQL"), nullptr, 0, nullptr, &rows) == Status(WBEM_E_INVALID_PARAMETER));
    CHECK(services->ExecQuery(_bstr_t(L"WQL"), _bstr_t(L"SELECT * FROM C"), 0, nullptr, nullptr) ==
          WBEM_E_INVALID_PARAMETER);
    REQUIRE(Query(*services.Get(), L"SELECT * FROM C", rows) == S_OK);
    ULONG returned = 0;
    CHECK(rows->Next(withoutLimit, 1, nullptr, &returned) == Status(WBEM_E_INVALID_PARAMETER));
    ComPtr<IWbemClassObject> row;
    CHECK(rows->Next(withoutLimit, 1, &row, nullptr) == Status(WBEM_E_INVALID_PARAMETER));
    REQUIRE(Next(*rows.Get(), row) == S_OK);
    _variant_t value;
    CHECK(row->Get(nullptr, 0, &value, nullptr, nullptr) == Status(WBEM_E_INVALID_PARAMETER));
}

TEST_CASE("A WMI object has the requested interface, and IUnknown")
{
    const auto services = ServicesWith(Json::array());
    ComPtr<IUnknown> unknown;
    CHECK(services->QueryInterface(IID_PPV_ARGS(unknown.GetAddressOf())) == S_OK);
    ComPtr<IWbemLocator> locator;
    CHECK(services->QueryInterface(IID_PPV_ARGS(locator.GetAddressOf())) == E_NOINTERFACE);
}

TEST_CASE("WMI rejects another language, an invalid query, and an unknown class")
{
    const auto services = ServicesWith(Json::array());
    ComPtr<IEnumWbemClassObject> rows;
    CHECK(services->ExecQuery(_bstr_t(L"SQL"), _bstr_t(L"SELECT * FROM C"), 0, nullptr, &rows) ==
          Status(WBEM_E_INVALID_QUERY_TYPE));
    CHECK(Query(*services.Get(), L"SELECT * FROM C WHERE P = 'it's'", rows) == Status(WBEM_E_INVALID_QUERY));
    CHECK(Query(*services.Get(), L"SELECT * FROM D", rows) == Status(WBEM_E_INVALID_CLASS));
    CHECK_FALSE(rows.Get());
}

TEST_CASE("A query with immediate return reports its failure with the first row")
{
    const auto services = ServicesWith(Json::array());
    ComPtr<IEnumWbemClassObject> rows;
    REQUIRE(Query(*services.Get(), L"SELECT * FROM D", rows, WBEM_FLAG_RETURN_IMMEDIATELY) == S_OK);
    ComPtr<IWbemClassObject> row;
    CHECK(Next(*rows.Get(), row) == Status(WBEM_E_INVALID_CLASS));
    CHECK_FALSE(row.Get());
}

TEST_CASE("WMI returns the rows that satisfy every condition, in the order of the file")
{
    const auto services =
        ServicesWith({{{"Name", "A"}, {"Size", 1}}, {{"Name", "B"}, {"Size", 2}}, {{"Name", "Ab"}, {"Size", nullptr}}});
    CHECK(Count(*services.Get(), L"SELECT * FROM c") == 3);
    CHECK(Count(*services.Get(), L"SELECT * FROM C WHERE name LIKE 'a%'") == 2);
    CHECK(Count(*services.Get(), L"SELECT * FROM C WHERE Name LIKE 'a%' AND Size = '1'") == 1);
    CHECK(Count(*services.Get(), L"SELECT * FROM C WHERE Size LIKE '%'") == 2); // null matches no condition
    CHECK(Count(*services.Get(), L"SELECT * FROM C WHERE Unknown = ''") == 0);
    _variant_t name;
    FirstRow(*services.Get(), L"SELECT * FROM C WHERE Name = 'b'")->Get(L"Name", 0, &name, nullptr, nullptr);
    CHECK(std::wstring(V_BSTR(&name)) == L"B");
}

TEST_CASE("An enumerator can be reset and can skip rows")
{
    const auto services = ServicesWith({{{"P", 1}}, {{"P", 2}}});
    ComPtr<IEnumWbemClassObject> rows;
    REQUIRE(Query(*services.Get(), L"SELECT * FROM C", rows) == S_OK);
    CHECK(rows->Skip(withoutLimit, 1) == Status(WBEM_S_NO_ERROR));
    CHECK(rows->Skip(withoutLimit, 2) == Status(WBEM_S_FALSE));
    ComPtr<IWbemClassObject> row;
    CHECK(Next(*rows.Get(), row) == Status(WBEM_S_FALSE));
    CHECK_FALSE(row.Get());
    CHECK(rows->Reset() == Status(WBEM_S_NO_ERROR));
    CHECK(Next(*rows.Get(), row) == S_OK);
}

TEST_CASE("A row has the properties that its query names, with their types")
{
    const auto services = ServicesWith({{{"Number", 4294967295},
                                         {"Signed", {{"vt", "I4"}, {"value", -1}}},
                                         {"Text", "x"},
                                         {"Flag", true},
                                         {"Nothing", nullptr},
                                         {"Failing", {{"status", "0x80041003"}}}}});
    const auto row = FirstRow(*services.Get(), L"SELECT Number, Signed, Text, Flag, Nothing, Failing FROM C");
    _variant_t value;
    CIMTYPE type = CIM_EMPTY;
    CHECK(row->Get(L"number", 0, &value, &type, nullptr) == S_OK);
    CHECK(V_VT(&value) == VT_I4); // WMI returns unsigned numbers as signed
    CHECK(V_I4(&value) == -1);
    CHECK(type == CIM_UINT32);
    CHECK(row->Get(L"Signed", 0, &value, &type, nullptr) == S_OK);
    CHECK(type == CIM_SINT32);
    CHECK(row->Get(L"Flag", 0, &value, &type, nullptr) == S_OK);
    CHECK(V_BOOL(&value) == VARIANT_TRUE);
    CHECK(row->Get(L"Nothing", 0, &value, &type, nullptr) == S_OK);
    CHECK(V_VT(&value) == VT_NULL);
    CHECK(row->Get(L"Failing", 0, &value, &type, nullptr) == Status(WBEM_E_ACCESS_DENIED));
    CHECK(row->Get(L"Unknown", 0, &value, &type, nullptr) == Status(WBEM_E_NOT_FOUND));
    CHECK(row->Get(L"Text", 0, nullptr, nullptr, nullptr) == S_OK);
    const auto narrow = FirstRow(*services.Get(), L"SELECT Text FROM C");
    CHECK(narrow->Get(L"Number", 0, &value, &type, nullptr) == Status(WBEM_E_NOT_FOUND));
}

TEST_CASE("The file can make a query fail, or one of its rows")
{
    Json machine = MachineWith({{{"P", 1}}, {{"P", 2}}});
    machine["wmi"]["failures"] = {{{"contains", "FROM C"}, {"nth", 2}, {"status", "0x80041003"}},
                                  {{"contains", "P"}, {"row", 2}}};
    Simulate(machine);
    ComPtr<IWbemServices> services;
    REQUIRE(Connect(services) == S_OK);
    ComPtr<IEnumWbemClassObject> rows;
    CHECK(Query(*services.Get(), L"SELECT * FROM C", rows) == S_OK);
    CHECK(Query(*services.Get(), L"SELECT * FROM C", rows) == Status(WBEM_E_ACCESS_DENIED));
    REQUIRE(Query(*services.Get(), L"SELECT P FROM C", rows) == S_OK);
    ComPtr<IWbemClassObject> row;
    CHECK(Next(*rows.Get(), row) == S_OK);
    CHECK(Next(*rows.Get(), row) == Status(WBEM_E_FAILED));
}

TEST_CASE("The file can answer a query by its exact text: rows of a class, rows of its own, a failure")
{
    Json machine = MachineWith({{{"P", 1}}, {{"P", 2}}, {{"P", 3}}});
    machine["wmi"]["queries"] = {
        {"SELECT * FROM C WHERE P LIKE '%'", {{"class", "C"}, {"rows", {2, 0}}}},
        {"SELECT P FROM D", {{"rows", {{{"P", 7}, {"Q", 8}}}}}},
        {"what is no query", {{"status", "0x80041003"}}},
    };
    Simulate(machine);
    ComPtr<IWbemServices> services;
    REQUIRE(Connect(services) == S_OK);
    _variant_t value;
    const auto first = FirstRow(*services.Get(), L"SELECT * FROM C WHERE P LIKE '%'");
    REQUIRE(first->Get(L"P", 0, &value, nullptr, nullptr) == S_OK);
    CHECK(V_I4(&value) == 3);
    CHECK(Count(*services.Get(), L"SELECT * FROM C WHERE P LIKE '%'") == 2);
    CHECK(Count(*services.Get(), L"select * from C where P like '%'") == 3); // another text
    const auto own = FirstRow(*services.Get(), L"SELECT P FROM D");
    REQUIRE(own->Get(L"P", 0, &value, nullptr, nullptr) == S_OK);
    CHECK(V_I4(&value) == 7);
    CHECK(own->Get(L"Q", 0, &value, nullptr, nullptr) == Status(WBEM_E_NOT_FOUND)); // not selected
    ComPtr<IEnumWbemClassObject> rows;
    CHECK(Query(*services.Get(), L"what is no query", rows) == Status(WBEM_E_ACCESS_DENIED));
}

TEST_CASE("The file can answer a query differently each time, and fail after its last row")
{
    Json machine = MachineWith({{{"P", 1}}});
    machine["wmi"]["queries"]["SELECT P FROM C"] = {{{"status", 1}},
                                                    {{"class", "C"}, {"rows", {0}}, {"status", "0x80041001"}}};
    Simulate(machine);
    ComPtr<IWbemServices> services;
    REQUIRE(Connect(services) == S_OK);
    ComPtr<IEnumWbemClassObject> rows;
    CHECK(Query(*services.Get(), L"SELECT P FROM C", rows) == S_FALSE);
    for (int later = 0; later < 2; ++later) {
        REQUIRE(Query(*services.Get(), L"SELECT P FROM C", rows) == S_OK);
        ComPtr<IWbemClassObject> row;
        CHECK(Next(*rows.Get(), row) == S_OK);
        CHECK(Next(*rows.Get(), row) == Status(WBEM_E_FAILED));
    }
}

TEST_CASE("A query that is not ready in time times out, and can be repeated")
{
    Json machine = MachineWith(Json::array({{{"P", 1}}}));
    machine["wmi"]["latency_us"] = {{"query", 200000}};
    Simulate(machine);
    ComPtr<IWbemServices> services;
    REQUIRE(Connect(services) == S_OK);
    ComPtr<IEnumWbemClassObject> rows;
    REQUIRE(Query(*services.Get(), L"SELECT * FROM C", rows, WBEM_FLAG_RETURN_IMMEDIATELY) == S_OK);
    ComPtr<IWbemClassObject> row;
    ULONG returned = 7;
    CHECK(rows->Next(0, 1, &row, &returned) == Status(WBEM_S_TIMEDOUT));
    CHECK(returned == 0);
    CHECK(Next(*rows.Get(), row) == S_OK);
}
