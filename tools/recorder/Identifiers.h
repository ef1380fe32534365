#pragma once

#include <string>

#include "Answers.h"

namespace orvel::recorder {

/// Replaces what identifies a computer or its user by made-up texts of the same form: serial numbers, UUIDs, and the user's
/// name in paths. The same text becomes the same one everywhere in the recording. Adds "replaced", the JSON paths of the
/// changed places, to "recorded".
void ReplaceIdentifiers(Json& recording, const std::string& userName);

} // namespace orvel::recorder
