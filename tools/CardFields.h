#pragma once

#include <array>
#include <string>
#include <variant>

#include "GraphicCardInfo.h"

namespace orvel::tools {

/// The headings under which a card's properties are shown, in their order.
enum class FieldGroup {
    Identity,
    DriverAndStatus,
    Display,
    Bus,
    ClocksAndRates,
    Memory,
    Processing,
    ThermalLimits,
    EccAndMultiGpu
};

using FieldValue = std::variant<unsigned int, float, bool, std::string>;

/// A property of a record.
struct CardField {
    const char* Name; ///< as in the record
    FieldGroup Group;
    const char* Label;   ///< in the text output
    bool IsZeroAnAnswer; ///< 0 or false does not mean that the value is missing
    FieldValue (*Read)(const shared::enumeration::GraphicCardInfo& card);
};

/// Whether a value is the neutral value of its property: an empty text, "Unknown" or "UNKNOWN", and 0 or false unless that
/// is a regular value of the property.
bool IsNeutral(const CardField& field, const FieldValue& value);

/// A value as text: flags as yes and no, numbers with the fewest digits that identify them.
std::string ToDisplayText(const FieldValue& value);

/// The properties of a record.
// Made from properties/properties.toml by ./dev generate.
// clang-format off
inline constexpr std::size_t propertyCount = 49;
// clang-format on

/// Every property, in record order.
extern const std::array<CardField, propertyCount> cardFields;

} // namespace orvel::tools
