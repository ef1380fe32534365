#pragma once

#include <exception>
#include <new>

namespace orvel::shared::enumeration {

/// An exception for an MSVC host, as data that needs no destruction.
///
/// MSVC cannot catch GCC exceptions; uncaught, they would end the process. So the library catches them at the boundary and
/// throws them in MSVC's form: `long` as long, std::bad_alloc as std::bad_alloc, any other standard exception as
/// std::exception with the same text, and everything else as std::exception with the text "unknown exception".
struct MsvcException {
    enum class Kind { None, Status, BadAlloc, Exception };

    Kind What = Kind::None;
    long Status = 0;
    char Text[256] = {}; ///< truncated to fit

    /// Copies the exception that is being handled.
    void TakeCurrent() noexcept;

    /// Throws it in MSVC's form; does nothing if there is none. No calling frame of this library may contain an object with
    /// a destructor: MSVC exceptions do not run them.
    void Throw() const;
};

/// Runs an operation for an MSVC host.
template <typename Operation>
void CallForMsvc(Operation operation)
{
    MsvcException exception;
    try {
        operation();
    } catch (...) {
        exception.TakeCurrent();
    }
    exception.Throw();
}

} // namespace orvel::shared::enumeration
