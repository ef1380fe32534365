#pragma once

#include "platform/Handles.h"

namespace orvel::tests {

/// A thread or an event.
using Handle = std::unique_ptr<void, shared::enumeration::CloseWith<&::CloseHandle>>;

} // namespace orvel::tests
