#pragma once

#include <string>

#include <windows.h>

namespace orvel::shared::enumeration {

/// Video BIOS version of an adapter, from its display driver's registry key; "" when there is none. The identifiers are
/// texts of 4 hexadecimal digits and are compared with the driver's "MatchingDeviceId" as they stand, upper and lower case
/// apart.
std::string GetBiosString(const std::string& vendorId, const std::string& deviceId);

/// The same, searched depth first below an open key in the registry's order; the first matching driver key decides, even
/// when it has no BIOS string (a text that is then sought on, level by level upwards). It ends 32 levels deep, and after
/// 16,384 keys.
std::string FindBiosString(HKEY key, const std::string& vendorId, const std::string& deviceId);

/// A text value of an open key as UTF-8; "" when it is missing or longer than 255 bytes. Its registry type does not matter.
std::string ReadTextValue(HKEY key, const wchar_t* name);

} // namespace orvel::shared::enumeration
