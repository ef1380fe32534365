#pragma once

#include <string>

#include <wbemidl.h>
#include <wrl/client.h>

namespace orvel::shared::enumeration {

// The calls of WMI's COM interfaces. Each waits two minutes at most and returns WMI's status; the object is null unless that
// is WBEM_S_NO_ERROR. COM must be initialised on the calling thread.

/// Connects to a namespace, such as L"\\\\.\\root\\cimv2".
HRESULT ConnectToWmi(const wchar_t* namespacePath, Microsoft::WRL::ComPtr<IWbemServices>& services);

/// Sends a WQL text without waiting for the answer: a wrong text or class is the first row's failure.
HRESULT SendQuery(IWbemServices& services, const wchar_t* wql, Microsoft::WRL::ComPtr<IEnumWbemClassObject>& rows);

/// Fetches the next row; WBEM_S_FALSE at the end.
HRESULT FetchRow(IEnumWbemClassObject& rows, Microsoft::WRL::ComPtr<IWbemClassObject>& row);

/// Reads a property of a row as UTF-8 text; an unsigned number as unsigned decimal text. `text` is written on success only.
/// A null value is a failure.
HRESULT ReadAsText(IWbemClassObject& row, const wchar_t* property, std::string& text);

} // namespace orvel::shared::enumeration
