#pragma once

#include <memory>
#include <vector>

#include "GraphicCardInfo.h"

namespace orvel::shared::enumeration {

/// The records of one enumeration, in the order of appending. Owns them.
class GraphicCardList {
public:
    void Append(std::unique_ptr<GraphicCardInfo> card) { cards.push_back(std::move(card)); }
    size_t size() const { return cards.size(); }

    /// Null if there is no such record.
    GraphicCardInfo* get(size_t index) const { return index < cards.size() ? cards[index].get() : nullptr; }

private:
    std::vector<std::unique_ptr<GraphicCardInfo>> cards;
};

} // namespace orvel::shared::enumeration
