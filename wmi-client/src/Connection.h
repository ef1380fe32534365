#pragma once

#include <memory>
#include <string>

#include <wbemidl.h>
#include <wrl/client.h>

#include "ResultSet.h"

namespace orvel::shared::wmi {

/// A connection to one WMI namespace, closed with its last owner.
class Connection {
public:
    /// The connection that is open to the namespace on this thread, or else a new one. A failed one is given to its caller
    /// only: the next caller tries anew.
    static std::shared_ptr<const Connection> To(const std::wstring& namespacePath);

    explicit Connection(const std::wstring& namespacePath);

    /// Sends a query. It does not wait for the answer; a failed connection is one.
    std::shared_ptr<ResultSet> Send(const wchar_t* wql) const;

    const std::wstring& Path() const { return path; }
    /// Null after a failure.
    IWbemServices* Services() const { return services.Get(); }

private:
    std::wstring path;
    Microsoft::WRL::ComPtr<IWbemServices> services;
    HRESULT status; // after the services, which it is made with
};

} // namespace orvel::shared::wmi
