#pragma once

#include <exception>
#include <new>

#include "formulas/RunFailure.h"

namespace orvel::shared::enumeration {

/// The text of an exception, for the log; the standard libraries of the compilers word exhausted memory differently.
inline const char* TextOf(const std::exception& error) noexcept
{
    return dynamic_cast<const std::bad_alloc*>(&error) ? MessageOf(RunFailure::NoMemory) : error.what();
}

} // namespace orvel::shared::enumeration
