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
    /// The open connection to the namespace on this thread, or a new one. A failed connection is not shared: the next caller
    /// tries again.
    static std::shared_ptr<const Connection> To(const std::wstring& namespacePath);

    explicit Connection(const std::wstring& namespacePath);

    /// Sends a query without waiting for the result. On a failed connection the result is its failure.
    std::shared_ptr<ResultSet> Send(const wchar_t* wql) const;

    const std::wstring& Path() const { return path; }
    /// Null after a failure.
    IWbemServices* Services() const { return services.Get(); }

private:
    std::wstring path;
    Microsoft::WRL::ComPtr<IWbemServices> services;
    HRESULT status; // declared after the services, whose initialisation sets it
};

} // namespace orvel::shared::wmi
