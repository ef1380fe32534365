#pragma once

#include <stdexcept>
#include <string>

namespace orvel::shared::enumeration {

/// The name of a code; throws std::out_of_range ("invalid unordered_map<K, T> key") for a code that has none. The text is
/// what hosts see in the log, so it is written here and not left to the standard library.
template <typename Names>
const std::string& NameOf(const Names& names, typename Names::key_type code)
{
    if (const auto entry = names.find(code); entry != names.end()) {
        return entry->second;
    }
    throw std::out_of_range("invalid unordered_map<K, T> key");
}

} // namespace orvel::shared::enumeration
