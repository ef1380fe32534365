#pragma once

#include <string>

namespace orvel::tools {

/// The source of a property of one vendor.
struct FieldSource {
    const char* Source; ///< an interface and its function or field, a formula or a constant
    const char* Reader; ///< the operation that logs its failures; "" for none
    const char* Unit;   ///< "" for none
};

/// The source of a property (by its name in the record) for a manufacturer as the record names it; empty texts for an
/// unknown one.
FieldSource SourceOf(const std::string& field, const std::string& manufacturer);

/// Whether the vendor has no source for the property.
bool HasNoSource(const FieldSource& source);

} // namespace orvel::tools
