#include "inventory/RecordSide.h"

#include <cstdlib>

#include "FieldSources.h"
#include "LikelyCause.h"
#include "RunEnds.h"
#include "vendors/Vendors.h"

namespace orvel::tools {

using shared::enumeration::Vendor;
using shared::enumeration::VendorOf;
using shared::enumeration::vendors;

namespace {

RecordCard RecordOf(const Card& card)
{
    const std::string manufacturer = ManufacturerOf(card);
    const Vendor* vendor = VendorOf(manufacturer);
    RecordCard record{vendor ? std::string(vendor->Name) : manufacturer, {}};
    for (size_t i = 0; i < cardFields.size(); ++i) {
        const CardField& field = cardFields[i];
        const FieldSource source = SourceOf(field.Name, manufacturer);
        record.Values[field.Name] = {IsNeutral(field, card[i]) ? "" : ToDisplayText(card[i]), source.Unit, source.Source,
                                     !HasNoSource(source)};
    }
    return record;
}

/// What ended a vendor's run, and why on this computer; "" where nothing did.
std::string EndOf(const std::vector<RunEnd>& ends, std::string_view vendor)
{
    for (const RunEnd& end : ends) {
        if (end.Vendor == vendor) {
            const std::string cause = LikelyCause(end.Message, end.Warning);
            return (end.Meaning.empty() ? end.Message : end.Meaning) +
                   (cause.empty() ? "" : " On this computer: " + cause + ".");
        }
    }
    return {};
}

} // namespace

Records RecordsOf(const Report& report)
{
    Records records;
    for (const Card& card : report.Cards) {
        records.Cards.push_back(RecordOf(card));
    }
    const auto ends = EndedRuns(report);
    for (const Vendor& vendor : vendors) {
        records.Runs.push_back({std::string(vendor.Name), std::strtoull(std::string(vendor.PciId).c_str(), nullptr, 16),
                                vendor.HasOneRecord, EndOf(ends, vendor.Name)});
    }
    return records;
}

} // namespace orvel::tools
