#pragma once

#include <string>

namespace orvel::tools {

/// Where a vendor's record has a property from.
struct FieldSource {
    const char* Source; ///< an interface and what is asked of it, a formula or a constant
    const char* Reader; ///< the operation whose log lines tell of its failures; "" for none
    const char* Unit;   ///< "" for none
};

/// The source of a property (by its name in the record) for a manufacturer as the record names it; empty texts for an
/// unknown one.
FieldSource SourceOf(const std::string& field, const std::string& manufacturer);

/// Whether the vendor has no source for the property.
bool IsToldByNobody(const FieldSource& source);

} // namespace orvel::tools
