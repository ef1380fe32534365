#pragma once

#include <cstddef>
#include <vector>

#include <wbemidl.h>
#include <wrl/client.h>

namespace orvel::shared::wmi {

/// The result of one query: its rows, or a failure. Each row is fetched from WMI once, on first use.
class ResultSet {
public:
    /// The rows of `source`; a failure if it is null.
    ResultSet(HRESULT sent, Microsoft::WRL::ComPtr<IEnumWbemClassObject> source);

    /// Waits until WMI has a first row or reports that there is none. Returns 0, or the status of the failure: WMI reports
    /// an invalid query or class here.
    HRESULT Await();

    /// The row at `index`, counted from 0; null at the end, or if WMI fails.
    Microsoft::WRL::ComPtr<IWbemClassObject> At(std::size_t index);

    /// Whether the query, or the last row requested, failed.
    bool HasFailed() const;

private:
    void Fetch();

    HRESULT status; ///< of the last call
    Microsoft::WRL::ComPtr<IEnumWbemClassObject> source;
    std::vector<Microsoft::WRL::ComPtr<IWbemClassObject>> rows;
};

} // namespace orvel::shared::wmi
