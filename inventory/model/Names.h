#pragma once

#include <cstdint>

#include "model/Value.h"

namespace orvel::shared::inventory {

// The names of numbers. Those of the library's own enumerations are part of its interface.

const char* StatusText(Status status);
const char* SourceText(Source source);
const char* DepthText(Depth depth);
const char* TypeText(Type type);

/// Null for Reason::None.
const char* ReasonText(Reason reason);

/// How asking a source has ended: "answered", "unavailable", "failed" or "not asked".
const char* SourceStateText(Status end);

/// Name of a vendor by its PCI number, or by the four ASCII letters of an ACPI one; null when it is not known.
const char* VendorName(uint64_t vendorId);

/// Name of a problem without "CM_PROB_"; "none" for 0; null for a number without a name.
const char* ProblemName(uint64_t problem);

/// Connector of a display, from the output technology of the display configuration; null for a number without a name.
const char* ConnectorName(uint32_t outputTechnology);

} // namespace orvel::shared::inventory
