#include "wmi/WmiRow.h"

#include <algorithm>
#include <string>

#include <comutil.h>

#include "drivers/HandleTable.h"
#include "machine/Text.h"

namespace orvel::simulation {

namespace {

void WriteWhole(VARIANT* target, VARTYPE variantType, int64_t whole)
{
    V_VT(target) = variantType;
    V_UI4(target) = static_cast<uint32_t>(whole); // the same 32 bits, whether read as signed or unsigned
}

void WriteReal(VARIANT* target, WmiType type, double real)
{
    if (type == WmiType::R4) {
        V_VT(target) = VT_R4;
        V_R4(target) = static_cast<float>(real);
    } else {
        V_VT(target) = VT_R8;
        V_R8(target) = real;
    }
}

void WriteText(VARIANT* target, const std::wstring& text)
{
    V_VT(target) = VT_BSTR;
    V_BSTR(target) = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

void WriteFlag(VARIANT* target, bool flag)
{
    V_VT(target) = VT_BOOL;
    V_BOOL(target) = flag ? VARIANT_TRUE : VARIANT_FALSE;
}

void Write(VARIANT* target, const WmiValue& value)
{
    switch (value.type) {
    case WmiType::Null:
        V_VT(target) = VT_NULL;
        break;
    case WmiType::Empty:
        V_VT(target) = VT_EMPTY;
        break;
    case WmiType::Ui4:
        WriteWhole(target, VT_UI4, value.whole);
        break;
    case WmiType::Uint32: // Intended: WMI returns unsigned numbers as signed variants.
    case WmiType::I4:
        WriteWhole(target, VT_I4, value.whole);
        break;
    case WmiType::R4:
    case WmiType::R8:
        WriteReal(target, value.type, value.real);
        break;
    case WmiType::Text:
        WriteText(target, value.text);
        break;
    case WmiType::Flag:
        WriteFlag(target, value.whole != 0);
        break;
    }
}

CIMTYPE CimTypeOf(WmiType type)
{
    switch (type) {
    case WmiType::Uint32:
    case WmiType::Ui4:
        return CIM_UINT32;
    case WmiType::I4:
        return CIM_SINT32;
    case WmiType::R4:
        return CIM_REAL32;
    case WmiType::R8:
        return CIM_REAL64;
    case WmiType::Flag:
        return CIM_BOOLEAN;
    default:
        return CIM_STRING;
    }
}

class ModelRow final : public WmiRow {
public:
    explicit ModelRow(std::shared_ptr<const WmiRowModel> rowModel) : model(std::move(rowModel)) {}

    HRESULT Get(LPCWSTR name, VARIANT* value, CIMTYPE* type, LONG* flavor) const override
    {
        const WmiProperty* const property = Find(name);
        if (!property) {
            return Result(WBEM_E_NOT_FOUND);
        }
        if (!property->value) {
            return property->status;
        }
        if (value) {
            Write(value, *property->value);
        }
        if (type) {
            *type = CimTypeOf(property->value->type);
        }
        if (flavor) {
            *flavor = 0;
        }
        return property->status;
    }

    std::optional<std::wstring> TextOf(const std::wstring& name) const override
    {
        const WmiProperty* const property = Find(name);
        return property ? property->seenByQuery : std::nullopt;
    }

private:
    const WmiProperty* Find(const std::wstring& name) const
    {
        const auto property = model->find(FoldCase(name));
        return property == model->end() ? nullptr : &property->second;
    }

    std::shared_ptr<const WmiRowModel> model;
};

class ForeignRow final : public WmiRow {
public:
    explicit ForeignRow(Microsoft::WRL::ComPtr<IWbemClassObject> itsObject) : object(std::move(itsObject)) {}

    HRESULT Get(LPCWSTR name, VARIANT* value, CIMTYPE* type, LONG* flavor) const override
    {
        return object->Get(name, 0, value, type, flavor);
    }

    std::optional<std::wstring> TextOf(const std::wstring& name) const override
    {
        _variant_t value;
        CIMTYPE type = CIM_EMPTY;
        if (FAILED(object->Get(name.c_str(), 0, &value, &type, nullptr))) {
            return std::nullopt;
        }
        if (V_VT(&value) == VT_I4 && type == CIM_UINT32) {
            V_VT(&value) = VT_UI4;
        }
        if (FAILED(VariantChangeType(&value, &value, VARIANT_ALPHABOOL, VT_BSTR))) {
            return std::nullopt;
        }
        return std::wstring(V_BSTR(&value), SysStringLen(V_BSTR(&value)));
    }

private:
    Microsoft::WRL::ComPtr<IWbemClassObject> object;
};

} // namespace

std::shared_ptr<const WmiRow> SimulatedRow(std::shared_ptr<const WmiRowModel> model)
{
    return std::make_shared<ModelRow>(std::move(model));
}

std::shared_ptr<const WmiRow> SystemRow(Microsoft::WRL::ComPtr<IWbemClassObject> object)
{
    return std::make_shared<ForeignRow>(std::move(object));
}

bool IsWanted(const WqlQuery& query, const WmiRow& row)
{
    return std::ranges::all_of(query.conditions, [&row](const WqlCondition& condition) {
        const auto text = row.TextOf(condition.property);
        return text && Fulfils(condition, *text);
    });
}

WmiRowObject::WmiRowObject(std::shared_ptr<const WqlQuery> itsQuery, std::shared_ptr<const WmiRow> itsRow)
    : query(std::move(itsQuery)), row(std::move(itsRow)), handle(NewHandle())
{
    RecordOutput(handle);
}

HRESULT WmiRowObject::Get(LPCWSTR name, LONG, VARIANT* value, CIMTYPE* type, LONG* flavor)
{
    if (!name) {
        return Result(WBEM_E_INVALID_PARAMETER);
    }
    AddToTrace("wmi get " + ToUtf8(name), {handle});
    return Shows(*query, name) ? row->Get(name, value, type, flavor) : Result(WBEM_E_NOT_FOUND);
}

} // namespace orvel::simulation
