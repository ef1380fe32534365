#pragma once

#include <string>

#include "model/Value.h"

namespace orvel::shared::inventory {

/// What a snapshot has found.
struct Findings {
    Depth depth = Depth::Drivers;
    std::vector<SourceReport> sources;
    std::vector<Card> cards;
};

/// Counts incompatible changes of the document; schema/inventory.schema.json describes it.
inline constexpr int schemaVersion = 1;

enum class JsonForm {
    Full, ///< each value with its status, source, code and reason
    Flat, ///< each value alone
};

/// The document, indented by two spaces, with a line end behind it.
std::string ToJson(const Findings& findings, JsonForm form);

} // namespace orvel::shared::inventory
