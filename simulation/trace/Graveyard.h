#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace orvel::simulation {

/// The byte that fills invalid texts and undefined bytes of results; implausible as a number.
constexpr unsigned char rubbishByte = 0x5A;

/// Takes ownership of the memory of a released object, which operator new allocated. Fills it with rubbish, and replaces the
/// table of functions by one whose functions report a violation by `name` and return `answer`. The memory is freed only
/// after many later burials, so that a call on the released object is reported instead of crashing.
void BuryObject(void* block, size_t bytes, const std::string& name, int32_t answer);

/// The same for a text of `length` characters, allocated by new char[length + 1]: filled with rubbish, except for its
/// terminator.
void BuryText(char* text, size_t length);

/// An object that never existed, which a misbehaving call writes to a pointer. Calls on it are reported by `name`.
void* DeadObject(const std::string& name, int32_t answer);

/// A text that never existed.
const char* DeadText();

} // namespace orvel::simulation
