#pragma once

#include <wbemidl.h>
#include <wrl/client.h>

namespace orvel::bench {

/// A VARIANT that is cleared at its end.
class Value {
public:
    Value() { ::VariantInit(&variant); }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
    ~Value() { ::VariantClear(&variant); }

    VARIANT* Receive() { return &variant; }
    /// The text of a value that is one.
    const wchar_t* Text() const { return variant.bstrVal; }

private:
    VARIANT variant;
};

/// The rows of one query.
class FloorRows {
public:
    FloorRows(IWbemServices& services, const wchar_t* wql);
    bool Next();
    void Read(const wchar_t* property) const;
    void Read(const wchar_t* property, Value& value) const;

private:
    Microsoft::WRL::ComPtr<IEnumWbemClassObject> rows;
    Microsoft::WRL::ComPtr<IWbemClassObject> row;
};

/// A connection to the namespace of the product's queries.
Microsoft::WRL::ComPtr<IWbemServices> ConnectFloor();

// The queries on the memory modules.
void ReadMemoryType(IWbemServices& services);
void ReadMemorySpeed(IWbemServices& services);
void ReadTotalWidth(IWbemServices& services);

} // namespace orvel::bench
