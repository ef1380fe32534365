#include "matching/RawValues.h"

#include <algorithm>

#include "formulas/RegistryText.h"
#include "matching/DriverFacts.h"
#include "model/Text.h"

namespace orvel::shared::inventory {

namespace {

uint64_t LittleEndian(const std::vector<unsigned char>& bytes)
{
    uint64_t number = 0;
    for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte) {
        number = number << 8 | *byte;
    }
    return number;
}

std::string TextIn(const std::vector<unsigned char>& bytes)
{
    return Utf8Of(enumeration::RegistryText(bytes.data(), bytes.size()));
}

Answer TextAnswer(const RawValue& value)
{
    auto text = TextIn(value.bytes);
    return text.empty() ? Unavailable(Reason::Missing) : Known(std::move(text));
}

/// A number of that many bytes.
Answer NumberAnswer(const RawValue& value, bool isType, std::size_t bytes)
{
    if (value.error != 0) {
        return ErrorAnswer(value.error);
    }
    return isType && value.bytes.size() == bytes ? Known(LittleEndian(value.bytes)) : Unavailable(Reason::Unusable);
}

bool IsRegistryText(uint32_t type)
{
    return type == types::registryText || type == types::registryExpandableText;
}

} // namespace

Answer ErrorAnswer(uint32_t error)
{
    return error == errorNotFound || error == errorFileNotFound ? Unavailable(Reason::Missing) : Failed(error);
}

Answer PropertyText(const RawValue& value)
{
    if (value.error != 0) {
        return ErrorAnswer(value.error);
    }
    return value.type == types::propertyString ? TextAnswer(value) : Unavailable(Reason::Unusable);
}

Answer PropertyTexts(const RawValue& value, std::vector<std::string>& texts)
{
    if (value.error != 0) {
        return ErrorAnswer(value.error);
    }
    if (value.type != types::propertyStringList) {
        return Unavailable(Reason::Unusable);
    }
    for (std::size_t position = 0; position + 1 < value.bytes.size();) {
        const auto text = enumeration::RegistryText(value.bytes.data() + position, value.bytes.size() - position);
        position += (text.size() + 1) * sizeof(char16_t);
        if (!text.empty()) {
            texts.push_back(Utf8Of(text));
        }
    }
    return texts.empty() ? Unavailable(Reason::Missing) : Known(true);
}

Answer PropertyNumber(const RawValue& value)
{
    return NumberAnswer(value, value.type == types::propertyUint32 || value.type == types::propertyInt32, 4);
}

Answer PropertyLongNumber(const RawValue& value)
{
    return NumberAnswer(value, value.type == types::propertyUint64 || value.type == types::propertyInt64, 8);
}

Answer RegistryTextValue(const RawValue& value, bool isBinaryToo)
{
    if (value.error != 0) {
        return ErrorAnswer(value.error);
    }
    const bool isText = IsRegistryText(value.type) || (isBinaryToo && value.type == types::registryBinary);
    return isText ? TextAnswer(value) : Unavailable(Reason::Unusable);
}

Answer RegistryMemorySize(const RawValue& value)
{
    const bool isNumber = !IsRegistryText(value.type) && value.type != types::registryTexts;
    auto size = NumberAnswer(value, isNumber, value.bytes.size() == 4 ? 4 : 8);
    return NumberOf(size) == 0 ? Unavailable(Reason::Unusable) : size;
}

Answer DateOf(const RawValue& value, uint32_t type)
{
    auto ticks = NumberAnswer(value, value.type == type, 8);
    if (!IsKnown(ticks)) {
        return ticks;
    }
    const auto date = IsoDate(*NumberOf(ticks));
    return date ? Known(*date) : Unavailable(Reason::Unusable);
}

} // namespace orvel::shared::inventory
