#pragma once

#include "Answers.h"

namespace orvel::recorder {

/// A registry value as a machine file has it: text, number or bytes, with its type (REG_…) where these do not say it.
Json RegistryValue(uint32_t type, const std::vector<unsigned char>& data);

} // namespace orvel::recorder
