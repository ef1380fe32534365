#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace orvel::simulation {

/// Fills invalid texts and the unused bytes of a result; implausible as a number.
constexpr unsigned char rubbishByte = 0x5A;

/// Takes over the memory of an object that has been released, which came from operator new. Its bytes become rubbish and its
/// table of functions one whose every function reports a violation by `name` and returns `answer`. The memory is kept until
/// many more have followed, so that a call that comes too late finds it.
void BuryObject(void* block, size_t bytes, const std::string& name, int32_t answer);

/// The same for a text of `length` characters, allocated by new char[length + 1]: it becomes rubbish, with its terminator.
void BuryText(char* text, size_t length);

/// An object that was never alive: what a call that breaks its promise puts into a pointer. Calls are reported by `name`.
void* DeadObject(const std::string& name, int32_t answer);

/// A text that was never valid.
const char* DeadText();

} // namespace orvel::simulation
