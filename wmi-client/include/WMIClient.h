#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include <windows.h>

#include <oleauto.h>

#ifdef ORVEL_WMI_CLIENT_BUILD
#define ORVEL_WMI_CLIENT_API __declspec(dllexport)
#else
#define ORVEL_WMI_CLIENT_API __declspec(dllimport)
#endif

namespace orvel::shared::wmi {

/// Runs WQL queries on one WMI namespace and reads the rows of the last one.
///
/// Every operation returns a status: 0 is success, anything else (usually an HRESULT) is failure; the only exception thrown
/// is std::bad_alloc. The timeout is two minutes each for a connection, for a query's result and for each further row. A
/// client belongs to the thread that created it, and that thread must have initialised COM. Concurrent clients of one thread
/// and namespace share a connection, which the last of them closes. WMISession lets clients share results too.
class ORVEL_WMI_CLIENT_API WMIClient {
public:
    /// A client of a namespace such as L"\\\\.\\root\\cimv2". The first query connects. If the connection fails, each query
    /// of this client fails with its status; the next client tries again.
    explicit WMIClient(const wchar_t* namespacePath);
    WMIClient(const WMIClient&) = delete;
    WMIClient& operator=(const WMIClient&) = delete;
    /// Releases the result set, and the connection if no other client uses it.
    virtual ~WMIClient();

    /// Sends a query for a later Query of the same text, so that WMI can process several concurrently. Does nothing if no
    /// WMISession is open on this thread, or if the session has cached the result. The later Query returns any failure.
    void Prepare(const wchar_t* wql);

    /// Runs a WQL query and waits for its result, so that an invalid query or class fails here. Releases the previous result
    /// set; no row is current afterwards. After a failed query there is no result set.
    virtual long Query(const wchar_t* wql);

    /// Makes the next row current; false at the end, or if WMI fails.
    virtual bool GetNext();

    /// Copies a property of the current row into `value`, which the caller initialises and clears. Fails without a row.
    virtual long GetVariantValue(const wchar_t* name, VARIANT* value);

    /// Reads a property of the current row as T: std::string (UTF-8; an unsigned number as unsigned decimal text), uint32_t,
    /// float or bool. A value of another type is converted; a null value fails. `out` is written on
    /// success only.
    template <typename T>
    long GetValue(const wchar_t* name, T& out);

private:
    struct State;
    std::unique_ptr<State> state;
};

template <>
ORVEL_WMI_CLIENT_API long WMIClient::GetValue<std::string>(const wchar_t* name, std::string& out);

namespace detail {

/// Clears a VARIANT on destruction.
struct ScopedVariant {
    ScopedVariant() noexcept { ::VariantInit(&value); }
    ScopedVariant(const ScopedVariant&) = delete;
    ScopedVariant& operator=(const ScopedVariant&) = delete;
    ~ScopedVariant() { ::VariantClear(&value); }

    VARIANT value;
};

/// A C++ type in a VARIANT: the automation type, and the access to its value, unconverted and converted.
template <typename T>
struct VariantOf;

template <>
struct VariantOf<uint32_t> {
    static constexpr VARTYPE Type = VT_UI4;
    static uint32_t Given(const VARIANT& variant) { return variant.ulVal; }
    static uint32_t Converted(const VARIANT& variant) { return variant.ulVal; }
};

template <>
struct VariantOf<float> {
    static constexpr VARTYPE Type = VT_R4;
    static float Given(const VARIANT& variant) { return variant.fltVal; }
    static float Converted(const VARIANT& variant) { return variant.fltVal; }
};

template <>
struct VariantOf<bool> {
    static constexpr VARTYPE Type = VT_BOOL;
    static bool Given(const VARIANT& variant) { return variant.boolVal != 0; }
    static bool Converted(const VARIANT& variant) { return variant.boolVal == VARIANT_TRUE; }
};

} // namespace detail

template <typename T>
long WMIClient::GetValue(const wchar_t* name, T& out)
{
    using As = detail::VariantOf<T>;
    detail::ScopedVariant given;
    if (const long status = GetVariantValue(name, &given.value); status != 0) {
        return status;
    }
    if (given.value.vt == As::Type) {
        out = As::Given(given.value);
        return 0;
    }
    detail::ScopedVariant converted;
    if (const long status = ::VariantChangeType(&converted.value, &given.value, 0, As::Type); status < 0) {
        return status;
    }
    out = As::Converted(converted.value);
    return 0;
}

} // namespace orvel::shared::wmi
