#pragma once

namespace orvel::shared::enumeration {

/// Takes a pointer out of a member of an object that is being destroyed, and leaves null there for certain. A second
/// destruction, which a host may make by mistake, then finds nothing to release. An ordinary store may be dropped by the
/// compiler, as no program may look at an object after its end, and an ordinary load may be taken from before it.
template <typename Pointee>
Pointee* TakeForGood(Pointee*& member) noexcept
{
    Pointee* volatile& certain = const_cast<Pointee* volatile&>(member);
    Pointee* const taken = certain;
    certain = nullptr;
    return taken;
}

} // namespace orvel::shared::enumeration
