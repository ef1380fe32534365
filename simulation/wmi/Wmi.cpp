#include "wmi/Wmi.h"

#include <cstdio>

#include "loading/LoadedModules.h"
#include "machine/Text.h"
#include "windows/SystemScope.h"
#include "wmi/WmiServices.h"

// How WMI is simulated: CoCreateInstance(CLSID_WbemLocator) in the product returns the simulated locator. The locator
// returns simulated services, these return enumerators, and these return rows.
//
// COM prefers a registered class object to the registry, but only in the apartment that registered it. A host may put the
// machine in place on one thread and enumerate on another. So the imports of CoCreateInstance are redirected to this file as
// well, in every module except Windows' own; the class object covers other ways to a locator, such as CoGetClassObject.

namespace orvel::simulation {

namespace {

using Microsoft::WRL::ComPtr;

class WmiLocator final : public ComObject<WmiLocator, Counted::Wmi, IWbemLocator> {
public:
    explicit WmiLocator(std::shared_ptr<WmiSession> itsSession) : session(std::move(itsSession)) {}

    STDMETHODIMP ConnectServer(BSTR name, BSTR, BSTR, BSTR, LONG flags, BSTR, IWbemContext*,
                               IWbemServices** services) override
    {
        if (services) {
            *services = nullptr;
        }
        if (!services || !name) {
            return Result(WBEM_E_INVALID_PARAMETER);
        }
        const bool isLimited = (flags & WBEM_FLAG_CONNECT_USE_MAX_WAIT) != 0;
        AddToTrace("wmi connect " + ToUtf8(name) + (isLimited ? "" : " without a limit"));
        Wait(session->Model().connectMicroseconds);
        return Connect(name, services);
    }

private:
    HRESULT Connect(BSTR name, IWbemServices** services)
    {
        if (!session->IsPresent()) {
            return Result(WBEM_E_INVALID_NAMESPACE);
        }
        if (const int32_t status = session->Model().connect.code; status != 0) {
            return status;
        }
        ComPtr<IWbemServices> system;
        const HRESULT result = session->ConnectSystem(name, system);
        if (SUCCEEDED(result)) {
            *services = new WmiServices(session, std::move(system));
        }
        return result;
    }

    std::shared_ptr<WmiSession> session;
};

/// Lives as long as the process: COM holds it while it is registered, and may release it late.
class LocatorFactory final : public IClassFactory {
public:
    void Serve(std::shared_ptr<WmiSession> next) { session = std::move(next); }

    STDMETHODIMP QueryInterface(REFIID id, void** object) override
    {
        const bool isKnown = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IClassFactory);
        *object = isKnown ? static_cast<IClassFactory*>(this) : nullptr;
        return isKnown ? S_OK : E_NOINTERFACE;
    }

    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID id, void** object) override
    {
        *object = nullptr;
        if (outer) {
            return CLASS_E_NOAGGREGATION;
        }
        if (!session) { // the simulation has ended on a thread that could not revoke the class object
            return CLASS_E_CLASSNOTAVAILABLE;
        }
        auto* const locator = new WmiLocator(session);
        const HRESULT result = locator->QueryInterface(id, object);
        locator->Release();
        return result;
    }

private:
    std::shared_ptr<WmiSession> session;
};

struct Registration {
    LocatorFactory factory;
    DWORD cookie = 0;
    bool isDone = false;
};

Registration& registration = *new Registration;

bool HasCom()
{
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    return SUCCEEDED(CoGetApartmentType(&type, &qualifier));
}

/// Replaces the product's import of CoCreateInstance.
HRESULT STDAPICALLTYPE CreateInstance(REFCLSID id, IUnknown* outer, DWORD context, REFIID interfaceId, void** object)
{
    const bool isOurs = IsEqualCLSID(id, CLSID_WbemLocator) && (context & CLSCTX_INPROC_SERVER) != 0 && object != nullptr;
    if (!isOurs || !registration.isDone || !HasCom()) {
        return CoCreateInstance(id, outer, context, interfaceId, object);
    }
    return registration.factory.CreateInstance(outer, interfaceId, object);
}

std::vector<Redirection> Redirections()
{
    return {{GetProcAddress(GetModuleHandleW(L"ole32.dll"), "CoCreateInstance"), AsProcedure(&CreateInstance)}};
}

std::string Hexadecimal(HRESULT result)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08lX", static_cast<unsigned long>(result));
    return text;
}

std::optional<std::string> Register(const Machine& machine, const ComPtr<IWbemLocator>& systemLocator)
{
    registration.factory.Serve(std::make_shared<WmiSession>(std::make_shared<const Machine>(machine), systemLocator));
    const HRESULT result = CoRegisterClassObject(CLSID_WbemLocator, &registration.factory, CLSCTX_INPROC_SERVER,
                                                 REGCLS_MULTIPLEUSE, &registration.cookie);
    registration.isDone = SUCCEEDED(result);
    if (registration.isDone) {
        LeadImports(Redirections());
    }
    if (result == CO_E_NOTINITIALIZED) {
        return "COM is not initialised on this thread";
    }
    return registration.isDone ? std::nullopt : std::optional("WMI cannot be replaced, error " + Hexadecimal(result));
}

} // namespace

std::optional<std::string> PutWmiInPlace(const Machine& machine)
{
    if (machine.wmi.standing == Standing::System) {
        return std::nullopt;
    }
    ComPtr<IWbemLocator> locator;
    if (machine.wmi.model.rowsFromSystem) {
        const SystemScope scope;
        const HRESULT result =
            CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(locator.GetAddressOf()));
        if (FAILED(result)) {
            return "the computer's own WMI cannot be reached, error " + Hexadecimal(result);
        }
    }
    return Register(machine, locator);
}

void TakeWmiAway()
{
    RestoreImports(Redirections());
    if (registration.isDone) {
        CoRevokeClassObject(registration.cookie);
    }
    registration.isDone = false;
    registration.factory.Serve(nullptr);
}

} // namespace orvel::simulation
