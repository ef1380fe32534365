#pragma once

#include <cstddef>
#include <vector>

#include <wbemidl.h>
#include <wrl/client.h>

namespace orvel::shared::wmi {

/// The answer to one query: its rows, or why there are none. Each row is fetched from WMI once, when it is first asked for.
class ResultSet {
public:
    /// The answer that WMI gives through `source`; or, without one, a failure.
    ResultSet(HRESULT sent, Microsoft::WRL::ComPtr<IEnumWbemClassObject> source);

    /// Waits until WMI has a first row, or knows that there is none; 0, or why it has failed. A wrong text or class is
    /// reported here, as sending a query does not wait for its answer.
    HRESULT Await();

    /// The row at `index`, counted from 0; null at the end, or when WMI cannot give it.
    Microsoft::WRL::ComPtr<IWbemClassObject> At(std::size_t index);

    /// Whether WMI has failed to answer, or to give the last row that was asked for.
    bool HasFailed() const;

private:
    void Fetch();

    HRESULT status; ///< of the last call
    Microsoft::WRL::ComPtr<IEnumWbemClassObject> source;
    std::vector<Microsoft::WRL::ComPtr<IWbemClassObject>> rows;
};

} // namespace orvel::shared::wmi
