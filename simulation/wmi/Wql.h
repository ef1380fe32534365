#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvel::simulation {

struct WqlCondition {
    std::wstring property;
    bool isPattern = false; // LIKE rather than =
    std::wstring text;
};

/// SELECT properties FROM class WHERE conditions. Names and texts are kept as written.
struct WqlQuery {
    std::vector<std::wstring> properties; // empty: all
    std::wstring className;
    std::vector<WqlCondition> conditions; // all must hold
};

/// The query, or empty if the text is not a valid query.
std::optional<WqlQuery> ParseWql(std::wstring_view text);

/// Whether a property's text fulfils the condition. Case-insensitive; in a pattern, % matches any text and _ any one
/// character.
bool Fulfils(const WqlCondition& condition, std::wstring_view text);

/// Whether the query selects the property.
bool Shows(const WqlQuery& query, std::wstring_view property);

} // namespace orvel::simulation
