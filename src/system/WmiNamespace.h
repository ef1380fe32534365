#pragma once

namespace orvel::shared::enumeration {

/// The namespace of the classes that this library reads.
inline constexpr wchar_t wmiNamespace[] = L"\\\\.\\root\\cimv2";

} // namespace orvel::shared::enumeration
