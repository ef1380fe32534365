#pragma once

#include <string>

namespace orvel::tools {

/// What a message that ends a vendor's run means, and its likely cause; "" for an unknown message.
std::string ExplainMessage(const std::string& message);

/// The same for a log line that ends a vendor's run without an exception; "" for any other line.
std::string ExplainLine(const std::string& message);

/// The same for the status of a failed query for the memory modules, which ends the whole enumeration.
std::string ExplainStatus(long status);

} // namespace orvel::tools
