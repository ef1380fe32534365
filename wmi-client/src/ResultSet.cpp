#include "ResultSet.h"

#include "platform/Wmi.h"

namespace orvel::shared::wmi {

using Microsoft::WRL::ComPtr;

ResultSet::ResultSet(HRESULT sent, ComPtr<IEnumWbemClassObject> source) : status(sent), source(std::move(source)) {}

HRESULT ResultSet::Await()
{
    if (source && rows.empty() && status == WBEM_S_NO_ERROR) {
        Fetch();
    }
    return HasFailed() ? status : S_OK;
}

ComPtr<IWbemClassObject> ResultSet::At(std::size_t index)
{
    while (source && index >= rows.size() && status != WBEM_S_FALSE) {
        Fetch();
        if (HasFailed()) {
            return nullptr;
        }
    }
    return index < rows.size() ? rows[index] : nullptr;
}

bool ResultSet::HasFailed() const
{
    return status != WBEM_S_NO_ERROR && status != WBEM_S_FALSE;
}

void ResultSet::Fetch()
{
    ComPtr<IWbemClassObject> row;
    status = enumeration::FetchRow(*source.Get(), row);
    if (row) {
        rows.push_back(std::move(row));
    }
}

} // namespace orvel::shared::wmi
