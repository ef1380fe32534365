// Writes a short document from standard input in a format: format-document FORMAT. A card has its known values alone; the
// rest becomes "unavailable". "records" is what Records has.

#include <cstdio>
#include <iostream>
#include <stdexcept>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

#include "inventory/Comparison.h"
#include "inventory/Documents.h"
#include "inventory/InventoryFormats.h"
#include "inventory/InventoryText.h"
#include "inventory/Page.h"
#include "model/Properties.h"

namespace {

using namespace orvel::tests;
using namespace orvel::tools;
namespace library = orvel::shared::inventory;

std::vector<InventoryProperty> LibraryTable()
{
    std::vector<InventoryProperty> table;
    for (std::size_t i = 0; i < library::propertyCount; ++i) {
        const auto& row = library::RowOf(static_cast<library::Property>(i));
        table.push_back({row.name, static_cast<ValueType>(row.type), row.unit, row.description});
    }
    return table;
}

/// An object is a whole value, anything else a known one.
OrderedJson WholeCardOf(const OrderedJson& card, const std::vector<InventoryProperty>& table)
{
    OrderedJson whole;
    for (const InventoryProperty& property : table) {
        const OrderedJson value = card.value(property.Name, OrderedJson());
        whole[property.Name] = value.is_null()     ? Unknown("unavailable", "setupapi", "no such value")
                               : value.is_object() ? value
                                                   : Known(value);
    }
    return whole;
}

Inventory ReadCards(OrderedJson document)
{
    document["schema_version"] = 1;
    document["form"] = "full";
    const auto table = LibraryTable();
    for (OrderedJson& card : document["cards"]) {
        card = WholeCardOf(card, table);
    }
    return ReadInventory(document.dump(), table);
}

RecordCard ReadRecord(const OrderedJson& record)
{
    RecordCard card{record.at("vendor"), {}};
    for (const auto& item : record.at("values").items()) {
        const OrderedJson& value = item.value();
        card.Values[item.key()] = {value.at("text"), value.at("unit"), value.at("source"), value.at("has_source")};
    }
    return card;
}

Records ReadRecords(const OrderedJson& object)
{
    Records records;
    records.Problem = object.value("problem", "");
    for (const OrderedJson& record : object.value("cards", OrderedJson::array())) {
        records.Cards.push_back(ReadRecord(record));
    }
    for (const OrderedJson& run : object.value("runs", OrderedJson::array())) {
        records.Runs.push_back({run.at("vendor"), run.at("vendor_id"), run.at("has_one_record"), run.at("end")});
    }
    return records;
}

std::string Formatted(const OrderedJson& document, const std::string& format)
{
    const Inventory inventory = ReadCards(document);
    const Comparison comparison = Compare(inventory, ReadRecords(document.value("records", OrderedJson::object())));
    if (format == "page") {
        return InventoryAsPage(inventory, comparison, {"orvel-graphic-cards 1.0.0", "2026-01-31 10:00", ""});
    }
    if (format == "compare") {
        return ComparisonAsText(inventory, comparison, false);
    }
    if (format == "openmetrics") {
        return InventoryAsOpenMetrics(inventory);
    }
    if (format == "ndjson") {
        return InventoryAsNdjson(inventory);
    }
    if (format == "csv") {
        return InventoryAsCsv(inventory);
    }
    return format == "text" ? InventoryAsText(inventory, false) : throw std::runtime_error("unknown format " + format);
}

} // namespace

int main(int count, char** arguments)
{
#ifdef _WIN32
    ::_setmode(::_fileno(stdout), _O_BINARY);
#endif
    const std::string text = Formatted(OrderedJson::parse(std::cin), count > 1 ? arguments[1] : "text");
    std::fwrite(text.data(), 1, text.size(), stdout);
}
