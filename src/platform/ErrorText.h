#pragma once

#include <exception>
#include <new>

namespace orvel::shared::enumeration {

/// What hosts read of exhausted memory; the standard libraries of the compilers word it differently.
constexpr char badAllocationText[] = "bad allocation";

/// The text of an exception, for the log.
inline const char* TextOf(const std::exception& error) noexcept
{
    return dynamic_cast<const std::bad_alloc*>(&error) ? badAllocationText : error.what();
}

} // namespace orvel::shared::enumeration
