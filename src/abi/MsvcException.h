#pragma once

#include <exception>
#include <new>

namespace orvel::shared::enumeration {

/// An exception on its way to a host that MSVC has built: what it is, without anything that would have to be destroyed.
///
/// GCC's exceptions mean nothing to such a host; left to themselves they would end its process. So they are caught at the
/// border and thrown again in MSVC's form: `long` as long, std::bad_alloc as std::bad_alloc, any other standard exception as
/// std::exception with the same text, and what is none of these as std::exception with the text "unknown exception".
struct MsvcException {
    enum class Kind { None, Status, BadAlloc, Exception };

    Kind What = Kind::None;
    long Status = 0;
    char Text[256] = {}; ///< cut where it is longer

    /// Takes over the exception that is being handled.
    void TakeCurrent() noexcept;

    /// Throws it in MSVC's form; does nothing where there is none. No object with a destructor may live in the calling
    /// frames of this library: MSVC's exceptions pass them by.
    void Throw() const;
};

/// Runs an operation for a host that MSVC has built.
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
