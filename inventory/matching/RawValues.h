#pragma once

#include <string>
#include <vector>

#include "model/Value.h"
#include "sources/SetupApi.h"

namespace orvel::shared::inventory {

// What the bytes that Windows returns mean. A value that is not there is `unavailable`, one that Windows refuses `failed`
// with the error, and one of another type or length than the interface has `unavailable` ("unusable").

/// Published numbers of the types that are read (DEVPROP_TYPE_…, REG_…).
namespace types {
inline constexpr uint32_t propertyInt32 = 0x6;
inline constexpr uint32_t propertyUint32 = 0x7;
inline constexpr uint32_t propertyInt64 = 0x8;
inline constexpr uint32_t propertyUint64 = 0x9;
inline constexpr uint32_t propertyFileTime = 0x10;
inline constexpr uint32_t propertyBoolean = 0x11;
inline constexpr uint32_t propertyString = 0x12;
inline constexpr uint32_t propertyBinary = 0x1003;
inline constexpr uint32_t propertyStringList = 0x2012;
inline constexpr uint32_t registryText = 1;
inline constexpr uint32_t registryExpandableText = 2;
inline constexpr uint32_t registryBinary = 3;
inline constexpr uint32_t registryTexts = 7;
} // namespace types

/// Windows' errors for a value that is not there: ERROR_NOT_FOUND, ERROR_FILE_NOT_FOUND.
inline constexpr uint32_t errorNotFound = 1168;
inline constexpr uint32_t errorFileNotFound = 2;

/// The answer for a call that has ended with an error of Windows.
Answer ErrorAnswer(uint32_t error);

/// UTF-16 text up to its first NUL.
Answer PropertyText(const RawValue& value);

/// A list of texts, without empty ones.
Answer PropertyTexts(const RawValue& value, std::vector<std::string>& texts);

/// A number of 32 bits, signed or not: the interface's description and its headers differ in that.
Answer PropertyNumber(const RawValue& value);

/// A number of 64 bits.
Answer PropertyLongNumber(const RawValue& value);

/// A text; `isBinaryToo`: also one that is stored as plain bytes.
Answer RegistryTextValue(const RawValue& value, bool isBinaryToo = false);

/// A number of bytes, which is stored with 8 or 4 bytes under several types; 0 means nothing.
Answer RegistryMemorySize(const RawValue& value);

/// The date, as YYYY-MM-DD, of 8 bytes that are a FILETIME; 0 means no date.
Answer DateOf(const RawValue& value, uint32_t type);

} // namespace orvel::shared::inventory
