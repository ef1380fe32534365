#pragma once

namespace orvel::shared::enumeration {

/// Takes a pointer out of a member of an object that is being destroyed, and stores null there. A second destruction,
/// which is a host's mistake, then has nothing to release. The compiler may remove an ordinary store to an object whose
/// lifetime ends, and may reuse an earlier load.
template <typename Pointee>
Pointee* TakeForGood(Pointee*& member) noexcept
{
    Pointee* volatile& certain = const_cast<Pointee* volatile&>(member);
    Pointee* const taken = certain;
    certain = nullptr;
    return taken;
}

} // namespace orvel::shared::enumeration
