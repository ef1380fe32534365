#pragma once

#include <map>
#include <string>
#include <vector>

#include <wbemidl.h>
#include <wrl/client.h>

#include "platform/Handles.h"

namespace orvel::bench {

/// Clears a VARIANT on destruction.
struct Value {
    VARIANT Variant{};
    shared::enumeration::ClearedVariant Cleared{&Variant};

    /// The value must be a text.
    const wchar_t* Text() const { return Variant.bstrVal; }
};

/// The rows of one query that have been fetched so far.
struct FloorAnswer {
    Microsoft::WRL::ComPtr<IEnumWbemClassObject> Source;
    std::vector<Microsoft::WRL::ComPtr<IWbemClassObject>> Rows;
    bool IsWhole = false;

    /// Fetches rows up to `index`. Null if there are fewer rows.
    IWbemClassObject* At(size_t index);
};

/// The only connection of an enumeration, and the results of its distinct queries.
class FloorWmi {
public:
    /// Sends a query unless it was sent before. The first query connects.
    FloorAnswer& Ask(const wchar_t* wql);

private:
    Microsoft::WRL::ComPtr<IWbemServices> services;
    std::map<std::wstring, FloorAnswer> answers;
};

/// Iterates over the rows of one query.
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

// The queries for the memory modules. The functions for speed and width send all three queries.
void ReadMemoryType(FloorWmi& wmi);
void ReadMemorySpeed(FloorWmi& wmi);
void ReadTotalWidth(FloorWmi& wmi);

} // namespace orvel::bench
