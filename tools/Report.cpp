#include "Report.h"

#include <cstdio>

namespace orvel::tools {

const char* SeverityName(int severity)
{
    constexpr const char* names[] = {"none", "fatal", "error", "warning", "info", "debug", "verbose"};
    const bool isKnown = severity >= 0 && severity < static_cast<int>(std::size(names));
    return isKnown ? names[severity] : "unknown";
}

std::string ValueOf(const Card& card, const std::string& name)
{
    for (size_t i = 0; i < cardFields.size(); ++i) {
        if (name == cardFields[i].Name) {
            return ToDisplayText(card[i]);
        }
    }
    return {};
}

std::string ManufacturerOf(const Card& card)
{
    return ValueOf(card, "Manufacturer");
}

std::string Describe(const Thrown& error)
{
    if (const auto* text = std::get_if<std::string>(&error)) {
        return "the enumeration ended with an exception: " + *text;
    }
    const long status = std::get<long>(error);
    char text[80];
    std::snprintf(text, sizeof(text), "the enumeration ended with status %ld (0x%08lX)", status,
                  static_cast<unsigned long>(status));
    return text;
}

} // namespace orvel::tools
