#pragma once

#include <string>

#include "inventory/Inventory.h"

namespace orvel::tools {

/// Metrics that are valid both as OpenMetrics and in Prometheus' older text format, which the Windows exporter's textfile
/// collector reads: the card's texts as labels of one metric, a gauge for each number in base units, a line end behind each
/// line, and "# EOF". A value that is not known has no line.
std::string InventoryAsOpenMetrics(const Inventory& inventory);

/// One JSON object a line for each card: the values alone, with null where one is not known, after `schema_version`, `depth`
/// and `failed_sources`.
std::string InventoryAsNdjson(const Inventory& inventory);

/// RFC 4180: a header with the names of the properties, and a row for each card. An empty field is not known. A text that a
/// spreadsheet would take for a formula begins with an apostrophe.
std::string InventoryAsCsv(const Inventory& inventory);

} // namespace orvel::tools
