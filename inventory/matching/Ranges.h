#pragma once

#include "model/Value.h"

namespace orvel::shared::inventory {

/// The answer, or `unavailable` ("unusable") for a number that no card can have.
Answer InRange(Property property, const Answer& answer);

} // namespace orvel::shared::inventory
