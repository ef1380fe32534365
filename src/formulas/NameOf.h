#pragma once

#include <stdexcept>
#include <string>

#include "formulas/RunFailure.h"

namespace orvel::shared::enumeration {

/// The name of a code; throws std::out_of_range ("invalid unordered_map<K, T> key") for a code that has none.
template <typename Names>
const std::string& NameOf(const Names& names, typename Names::key_type code)
{
    if (const auto entry = names.find(code); entry != names.end()) {
        return entry->second;
    }
    throw std::out_of_range(MessageOf(RunFailure::UnnamedCode));
}

} // namespace orvel::shared::enumeration
