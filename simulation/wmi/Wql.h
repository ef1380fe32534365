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
    std::vector<std::wstring> properties; // none: all of them
    std::wstring className;
    std::vector<WqlCondition> conditions; // all must hold
};

/// The query in the text, or nothing if the text is not a query.
std::optional<WqlQuery> ParseWql(std::wstring_view text);

/// Whether a property's text fulfils the condition. Upper and lower case are the same; in a pattern % matches any run of
/// characters and _ for any one.
bool Fulfils(const WqlCondition& condition, std::wstring_view text);

/// Whether the query shows the property.
bool Shows(const WqlQuery& query, std::wstring_view property);

} // namespace orvel::simulation
