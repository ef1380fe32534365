#include "matching/EqualGroups.h"

#include <algorithm>

namespace orvel::shared::inventory {

namespace {

/// Indexes of those that agree with some of the others.
Indexes Like(const std::vector<Identifiers>& all, const Indexes& some, const std::vector<Identifiers>& others)
{
    return Where(all, [&](const Identifiers& each) {
        return std::any_of(some.begin(), some.end(), [&](std::size_t index) { return Agree(each, others[index]); });
    });
}

} // namespace

EqualGroup GroupOf(const Identifiers& card, const std::vector<Identifiers>& cards, const std::vector<Identifiers>& listed)
{
    EqualGroup group;
    group.listed = Where(listed, [&](const Identifiers& each) { return Agree(card, each); });
    for (std::size_t known = 0; known != group.listed.size();) {
        known = group.listed.size();
        group.cards = Like(cards, group.listed, listed);
        group.listed = Like(listed, group.cards, cards);
    }
    return group;
}

std::map<Property, Answer> CommonAnswers(const std::vector<std::map<Property, Answer>>& all)
{
    auto common = all.front();
    for (const auto& answers : all) {
        for (auto& [property, answer] : common) {
            if (answer != answers.at(property)) {
                answer = Unavailable(Reason::CannotTell);
            }
        }
    }
    return common;
}

} // namespace orvel::shared::inventory
