#pragma once

#include <map>
#include <string>
#include <vector>

#include "inventory/Inventory.h"

namespace orvel::tools {

/// A value of a record, as people read it.
struct RecordValue {
    std::string Text; ///< "" where the record has its neutral value
    std::string Unit; ///< "" for none
    std::string Source;
    bool HasSource = true; ///< whether the record has a source for it with this vendor
};

/// A card of the record.
struct RecordCard {
    std::string Vendor; ///< "Intel", "NVIDIA" or "AMD"
    std::map<std::string, RecordValue> Values;
};

/// A vendor's run of the enumeration.
struct RecordRun {
    std::string Vendor;
    uint64_t VendorId = 0;
    bool HasOneRecord = false; ///< for any number of cards
    std::string End;           ///< what ended it early, as sentences; "" where nothing did
};

/// What the enumeration has listed.
struct Records {
    std::vector<RecordCard> Cards;
    std::vector<RecordRun> Runs; ///< of each vendor that it knows
    std::string Problem;         ///< why there was no enumeration; "" where there was
};

/// A value that the record lacks, or has differently.
struct Difference {
    std::string Property;      ///< of the inventory
    std::string Field;         ///< of the record
    std::string RecordText;    ///< "" where the record has none
    std::string InventoryText; ///< with its unit
    std::string Why;           ///< a sentence
};

/// A card of the inventory beside the record.
struct ComparedCard {
    std::vector<size_t> Records; ///< those of this card, by their number
    std::string Note;            ///< why there is none, or which cannot be assigned; "" for one record
    size_t Agreeing = 0;         ///< values that are the same
    std::vector<Difference> Differences;
    std::vector<std::string> OnlyInRecord; ///< properties that are not known to the inventory
};

struct Comparison {
    std::vector<ComparedCard> Cards;  ///< in the order of the inventory
    std::vector<std::string> Unknown; ///< a sentence for each record that belongs to no card of the inventory
    std::string Problem;              ///< as in Records
};

/// Assigns records to cards by vendor, device and subsystem, and equal cards by their PCI bus; never by name or order.
Comparison Compare(const Inventory& inventory, const Records& records);

/// A section a card in 80 columns.
std::string ComparisonAsText(const Inventory& inventory, const Comparison& comparison, bool isColoured);

/// One JSON object: `cards` (objects with `instance_id`, `name`, `records`, `note`, `agreeing`, `differences` and
/// `only_in_record`), `unknown_records`, `problem` (null for none) and `inventory`, the full form of the document.
std::string ComparisonAsJson(const Inventory& inventory, const Comparison& comparison, const std::string& fullDocument);

} // namespace orvel::tools
