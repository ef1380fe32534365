#pragma once

#include <memory>
#include <string>

#include <wbemidl.h>
#include <wrl/client.h>

namespace orvel::shared::wmi {

/// A connection to one WMI namespace, closed with its last owner.
class Connection {
public:
    /// The connection that is open to the namespace on this thread, or else a new one. A failed one is given to its caller
    /// only: the next caller tries anew.
    static std::shared_ptr<const Connection> To(const wchar_t* namespacePath);

    explicit Connection(const wchar_t* namespacePath);

    const std::wstring& Path() const { return path; }
    /// 0, or why there are no services.
    HRESULT Status() const { return status; }
    /// Null after a failure.
    IWbemServices* Services() const { return services.Get(); }

private:
    std::wstring path;
    Microsoft::WRL::ComPtr<IWbemServices> services;
    HRESULT status; // after the services, which it is made with
};

/// Lets WMI act for the caller. An in-process object has no proxy and refuses, which is harmless.
void AllowImpersonation(IUnknown* proxy);

} // namespace orvel::shared::wmi
