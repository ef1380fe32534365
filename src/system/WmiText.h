#pragma once

#include <string>

#include "WMIClient.h"

namespace orvel::shared::enumeration {

/// Reads a text property of the current row; on failure returns false and clears the text.
inline bool ReadText(wmi::WMIClient& client, const wchar_t* property, std::string& text)
{
    if (client.GetValue(property, text) == 0) {
        return true;
    }
    text.clear();
    return false;
}

} // namespace orvel::shared::enumeration
