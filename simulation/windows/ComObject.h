#pragma once

#include <atomic>

#include <windows.h>

#include "trace/Graveyard.h"
#include "trace/Trace.h"

namespace orvel::simulation {

/// IUnknown for a counted COM object: `Object` is the class itself, `Contract` the interface it implements, `Bases` the
/// interfaces between that and IUnknown. Any other interface is refused. After the last release every call is a violation.
template <typename Object, Counted Kind, typename Contract, typename... Bases>
class ComObject : public Contract {
public:
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    STDMETHODIMP QueryInterface(REFIID id, void** object) override
    {
        if (!object) {
            return E_POINTER;
        }
        *object = nullptr;
        if (!IsEqualIID(id, __uuidof(IUnknown)) && !IsEqualIID(id, __uuidof(Contract)) &&
            !(IsEqualIID(id, __uuidof(Bases)) || ...)) {
            return E_NOINTERFACE;
        }
        *object = static_cast<Contract*>(this);
        AddRef();
        return S_OK;
    }

    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }

    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --references;
        if (left == 0) {
            delete static_cast<Object*>(this);
        }
        return left;
    }

    /// Not inlined: GCC would warn of a delete that gives the memory to the graveyard instead.
    [[gnu::noinline]] static void* operator new(size_t bytes) { return ::operator new(bytes); }

    static void operator delete(void* object, size_t bytes)
    {
        BuryObject(object, bytes, NameOf(Kind), static_cast<int32_t>(RPC_E_DISCONNECTED));
    }

protected:
    ComObject() = default;
    ~ComObject() = default;

private:
    std::atomic<ULONG> references = 1;
    LiveObject live{Kind};
};

} // namespace orvel::simulation
