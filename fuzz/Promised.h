#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <initializer_list>
#include <string>
#include <string_view>
#include <typeinfo>

namespace orvel::fuzz {

/// Aborts the process unless `holds`; the fuzzer then reports the input.
inline void Require(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

struct Promise {
    const std::type_info& Type;
    std::string_view Message;
};

/// Runs the operation; false if it throws one of the promised exceptions. Any other exception aborts the process.
template <typename Operation>
bool Succeeds(Operation operation, std::initializer_list<Promise> promises)
{
    try {
        operation();
        return true;
    } catch (const std::exception& error) {
        for (const Promise& promise : promises) {
            if (typeid(error) == promise.Type && promise.Message == error.what()) {
                return false;
            }
        }
        Require(false, error.what());
        return false;
    }
}

inline std::string Text(const uint8_t* data, std::size_t size)
{
    return std::string(reinterpret_cast<const char*>(data), size);
}

} // namespace orvel::fuzz
