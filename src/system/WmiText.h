#pragma once

#include <string>

#include "WMIClient.h"

namespace orvel::shared::enumeration {

/// Reads a text property of the current row; false, and an empty text whatever the failed read has written, when that fails.
inline bool ReadText(wmi::WMIClient& client, const wchar_t* property, std::string& text)
{
    if (client.GetValue(property, text) == 0) {
        return true;
    }
    text.clear();
    return false;
}

} // namespace orvel::shared::enumeration
