#pragma once

#include <memory>

#include <wrl/client.h>

#include "machine/WmiModel.h"
#include "wmi/WmiUnused.h"
#include "wmi/Wql.h"

namespace orvel::simulation {

/// One row of a class, from the machine's file or the computer's own WMI.
class WmiRow {
public:
    virtual ~WmiRow() = default;

    /// As IWbemClassObject::Get, for a query that selects every property.
    virtual HRESULT Get(LPCWSTR name, VARIANT* value, CIMTYPE* type, LONG* flavor) const = 0;

    /// What a query's condition compares; empty if the condition treats the property as missing.
    virtual std::optional<std::wstring> TextOf(const std::wstring& name) const = 0;
};

using WmiRows = std::vector<std::shared_ptr<const WmiRow>>;

/// A row of the machine's file.
std::shared_ptr<const WmiRow> SimulatedRow(std::shared_ptr<const WmiRowModel> model);

/// A row of the computer's own WMI.
std::shared_ptr<const WmiRow> SystemRow(Microsoft::WRL::ComPtr<IWbemClassObject> object);

/// Whether all conditions of the query hold for the row.
bool IsWanted(const WqlQuery& query, const WmiRow& row);

/// The row as a query returns it.
class WmiRowObject final : public UnusedClassObject<WmiRowObject> {
public:
    WmiRowObject(std::shared_ptr<const WqlQuery> query, std::shared_ptr<const WmiRow> row);

    STDMETHODIMP Get(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE* type, LONG* flavor) override;

private:
    std::shared_ptr<const WqlQuery> query;
    std::shared_ptr<const WmiRow> row;
    const void* handle; // in a recording
};

} // namespace orvel::simulation
