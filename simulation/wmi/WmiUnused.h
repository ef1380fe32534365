#pragma once

#include <wbemidl.h>

#include "windows/ComObject.h"

// The functions of WMI's interfaces that the product never calls.

namespace orvel::simulation {

/// A published WMI status as the HRESULT that functions return.
constexpr HRESULT Result(WBEMSTATUS status)
{
    return static_cast<HRESULT>(status);
}

template <typename Object>
class UnusedServices : public ComObject<Object, Counted::Wmi, IWbemServices> {
public:
    STDMETHODIMP OpenNamespace(BSTR, LONG, IWbemContext*, IWbemServices**, IWbemCallResult**) override { return E_NOTIMPL; }
    STDMETHODIMP CancelAsyncCall(IWbemObjectSink*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryObjectSink(LONG, IWbemObjectSink**) override { return E_NOTIMPL; }
    STDMETHODIMP GetObject(BSTR, LONG, IWbemContext*, IWbemClassObject**, IWbemCallResult**) override { return E_NOTIMPL; }
    STDMETHODIMP GetObjectAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override { return E_NOTIMPL; }
    STDMETHODIMP PutClass(IWbemClassObject*, LONG, IWbemContext*, IWbemCallResult**) override { return E_NOTIMPL; }
    STDMETHODIMP PutClassAsync(IWbemClassObject*, LONG, IWbemContext*, IWbemObjectSink*) override { return E_NOTIMPL; }
    STDMETHODIMP DeleteClass(BSTR, LONG, IWbemContext*, IWbemCallResult**) override { return E_NOTIMPL; }
    STDMETHODIMP DeleteClassAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override { return E_NOTIMPL; }
    STDMETHODIMP CreateClassEnum(BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override { return E_NOTIMPL; }
    STDMETHODIMP CreateClassEnumAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override { return E_NOTIMPL; }
    STDMETHODIMP PutInstance(IWbemClassObject*, LONG, IWbemContext*, IWbemCallResult**) override { return E_NOTIMPL; }
    STDMETHODIMP PutInstanceAsync(IWbemClassObject*, LONG, IWbemContext*, IWbemObjectSink*) override { return E_NOTIMPL; }
    STDMETHODIMP DeleteInstance(BSTR, LONG, IWbemContext*, IWbemCallResult**) override { return E_NOTIMPL; }
    STDMETHODIMP DeleteInstanceAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override { return E_NOTIMPL; }
    STDMETHODIMP CreateInstanceEnum(BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override { return E_NOTIMPL; }
    STDMETHODIMP CreateInstanceEnumAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override { return E_NOTIMPL; }
    STDMETHODIMP ExecQueryAsync(BSTR, BSTR, LONG, IWbemContext*, IWbemObjectSink*) override { return E_NOTIMPL; }
    STDMETHODIMP ExecNotificationQuery(BSTR, BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP ExecNotificationQueryAsync(BSTR, BSTR, LONG, IWbemContext*, IWbemObjectSink*) override { return E_NOTIMPL; }
    STDMETHODIMP ExecMethod(BSTR, BSTR, LONG, IWbemContext*, IWbemClassObject*, IWbemClassObject**,
                            IWbemCallResult**) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP ExecMethodAsync(BSTR, BSTR, LONG, IWbemContext*, IWbemClassObject*, IWbemObjectSink*) override
    {
        return E_NOTIMPL;
    }
};

template <typename Object>
class UnusedEnumerator : public ComObject<Object, Counted::Wmi, IEnumWbemClassObject> {
public:
    STDMETHODIMP NextAsync(ULONG, IWbemObjectSink*) override { return E_NOTIMPL; }
    STDMETHODIMP Clone(IEnumWbemClassObject**) override { return E_NOTIMPL; }
};

template <typename Object>
class UnusedClassObject : public ComObject<Object, Counted::Wmi, IWbemClassObject> {
public:
    STDMETHODIMP GetQualifierSet(IWbemQualifierSet**) override { return E_NOTIMPL; }
    STDMETHODIMP Put(LPCWSTR, LONG, VARIANT*, CIMTYPE) override { return E_NOTIMPL; }
    STDMETHODIMP Delete(LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP GetNames(LPCWSTR, LONG, VARIANT*, SAFEARRAY**) override { return E_NOTIMPL; }
    STDMETHODIMP BeginEnumeration(LONG) override { return E_NOTIMPL; }
    STDMETHODIMP Next(LONG, BSTR*, VARIANT*, CIMTYPE*, LONG*) override { return E_NOTIMPL; }
    STDMETHODIMP EndEnumeration() override { return E_NOTIMPL; }
    STDMETHODIMP GetPropertyQualifierSet(LPCWSTR, IWbemQualifierSet**) override { return E_NOTIMPL; }
    STDMETHODIMP Clone(IWbemClassObject**) override { return E_NOTIMPL; }
    STDMETHODIMP GetObjectText(LONG, BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP SpawnDerivedClass(LONG, IWbemClassObject**) override { return E_NOTIMPL; }
    STDMETHODIMP SpawnInstance(LONG, IWbemClassObject**) override { return E_NOTIMPL; }
    STDMETHODIMP CompareTo(LONG, IWbemClassObject*) override { return E_NOTIMPL; }
    STDMETHODIMP GetPropertyOrigin(LPCWSTR, BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP InheritsFrom(LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP GetMethod(LPCWSTR, LONG, IWbemClassObject**, IWbemClassObject**) override { return E_NOTIMPL; }
    STDMETHODIMP PutMethod(LPCWSTR, LONG, IWbemClassObject*, IWbemClassObject*) override { return E_NOTIMPL; }
    STDMETHODIMP DeleteMethod(LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP BeginMethodEnumeration(LONG) override { return E_NOTIMPL; }
    STDMETHODIMP NextMethod(LONG, BSTR*, IWbemClassObject**, IWbemClassObject**) override { return E_NOTIMPL; }
    STDMETHODIMP EndMethodEnumeration() override { return E_NOTIMPL; }
    STDMETHODIMP GetMethodQualifierSet(LPCWSTR, IWbemQualifierSet**) override { return E_NOTIMPL; }
    STDMETHODIMP GetMethodOrigin(LPCWSTR, BSTR*) override { return E_NOTIMPL; }
};

} // namespace orvel::simulation
