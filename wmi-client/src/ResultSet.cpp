#include "ResultSet.h"

namespace orvel::shared::wmi {

using Microsoft::WRL::ComPtr;

namespace {

constexpr LONG longestWaitMilliseconds = 120'000; // as long as ConnectServer waits at most

} // namespace

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
    ULONG returned = 0;
    status = source->Next(longestWaitMilliseconds, 1, row.GetAddressOf(), &returned);
    if (status != WBEM_S_NO_ERROR) {
        return;
    }
    if (returned == 0 || !row) {
        status = WBEM_S_FALSE;
        return;
    }
    rows.push_back(std::move(row));
}

} // namespace orvel::shared::wmi
