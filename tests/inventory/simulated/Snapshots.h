#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/SimulatedRun.h"

namespace orvel::tests {

/// What the inventory's DLL finds, as its JSON document in the full form.
Json TakeInventory(const std::string& depth, uint32_t timeoutMilliseconds = 20'000);

/// The same on a machine, which is put in place before.
Json InventoryOf(const Json& machine, const std::string& depth, uint32_t timeoutMilliseconds = 20'000);

/// A machine of tests/inventory/machines, by its name.
Json TrapMachine(const std::string& name);

/// Checks that a machine has these cards whichever of the lists, JSON pointers, are in reverse order.
void CheckEveryOrder(const Json& machine, const std::string& depth, const std::vector<std::string>& lists,
                     const Json& cards);

/// How a source has ended, as the document has it.
Json SourceIn(const Json& inventory, const std::string& name);

/// Two equal GeForce cards on buses 1 and 2, of 12 and 24 GB, each with a display: everything about them differs that can.
Json TwinCards();

} // namespace orvel::tests
