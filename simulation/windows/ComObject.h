#pragma once

#include <atomic>

#include <windows.h>

#include "trace/Graveyard.h"
#include "trace/Trace.h"

namespace orvel::simulation {

/// IUnknown for a counted COM object: `Object` is the class itself, `Contract` the interface it implements, `Bases` the
/// interfaces between that and IUnknown. QueryInterface fails for any other. After the last release every call is a
/// violation.
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
            Bury(static_cast<Object*>(this));
        }
        return left;
    }

protected:
    ComObject() = default;
    ~ComObject() = default;

private:
    static void Bury(Object* object)
    {
        object->~Object();
        BuryObject(object, sizeof(Object), NameOf(Kind), static_cast<int32_t>(RPC_E_DISCONNECTED));
    }

    std::atomic<ULONG> references = 1;
    LiveObject live{Kind};
};

} // namespace orvel::simulation
