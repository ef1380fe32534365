#pragma once

#include <string>

namespace orvel::tools {

/// Plain words for a message that ends a vendor's run: what it means, and its likely cause. "" for an unknown message.
std::string ExplainMessage(const std::string& message);

/// The same for the status of a query for the memory modules, which ends the whole enumeration.
std::string ExplainStatus(long status);

} // namespace orvel::tools
