#pragma once

#include <map>
#include <string>
#include <vector>

#include <wbemidl.h>
#include <wrl/client.h>

#include "platform/Handles.h"

namespace orvel::bench {

/// A VARIANT that is cleared at its end.
struct Value {
    VARIANT Variant{};
    shared::enumeration::ClearedVariant Cleared{&Variant};

    /// The text of a value that is one.
    const wchar_t* Text() const { return Variant.bstrVal; }
};

/// WMI's answer to one query, as far as it has been fetched.
struct FloorAnswer {
    Microsoft::WRL::ComPtr<IEnumWbemClassObject> Source;
    std::vector<Microsoft::WRL::ComPtr<IWbemClassObject>> Rows;
    bool IsWhole = false;

    /// Fetches up to the row at `index`; null when there are fewer.
    IWbemClassObject* At(size_t index);
};

/// The one connection of an enumeration, and each distinct query that was sent on it.
class FloorWmi {
public:
    /// Sends a query unless it was sent before. Connects at the first one.
    FloorAnswer& Ask(const wchar_t* wql);

private:
    Microsoft::WRL::ComPtr<IWbemServices> services;
    std::map<std::wstring, FloorAnswer> answers;
};

/// A walk through the rows of one query.
class FloorRows {
public:
    FloorRows(FloorWmi& wmi, const wchar_t* wql);
    bool Next();
    void Read(const wchar_t* property) const;
    void Read(const wchar_t* property, Value& value) const;

private:
    FloorAnswer* answer;
    size_t next = 0;
    IWbemClassObject* row = nullptr;
};

// The queries on the memory modules. Those for speed and width send all three.
void ReadMemoryType(FloorWmi& wmi);
void ReadMemorySpeed(FloorWmi& wmi);
void ReadTotalWidth(FloorWmi& wmi);

} // namespace orvel::bench
