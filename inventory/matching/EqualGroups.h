#pragma once

#include <cstddef>
#include <map>
#include <vector>

#include "matching/Identifiers.h"
#include "model/Value.h"

namespace orvel::shared::inventory {

using Indexes = std::vector<std::size_t>;

/// Indexes of the items that a condition holds for.
template <typename Item, typename Condition>
Indexes Where(const std::vector<Item>& items, Condition condition)
{
    Indexes indexes;
    for (std::size_t index = 0; index < items.size(); ++index) {
        if (condition(items[index])) {
            indexes.push_back(index);
        }
    }
    return indexes;
}

/// Cards that their identifiers do not distinguish, and what a source lists under the same identifiers.
struct EqualGroup {
    Indexes cards;
    Indexes listed;
};

/// The group of a card. Not all have the same identifiers: one that lacks some agrees with more than the others, and so
/// enlarges the group.
EqualGroup GroupOf(const Identifiers& card, const std::vector<Identifiers>& cards, const std::vector<Identifiers>& listed);

/// The answers that all cards share; `unavailable` ("cannot be told apart") where they differ. Each element of `all` has the
/// same properties.
std::map<Property, Answer> CommonAnswers(const std::vector<std::map<Property, Answer>>& all);

} // namespace orvel::shared::inventory
