#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "machine/Node.h"

namespace orvel::simulation {

/// The types of the values that a row can hold.
enum class WmiType { Null, Empty, Uint32, Ui4, I4, R4, R8, Text, Flag };

struct WmiValue {
    WmiType type = WmiType::Null;
    int64_t whole = 0; // for whole numbers and the flag
    double real = 0;
    std::wstring text;
};

struct WmiProperty {
    int32_t status = 0;
    std::optional<WmiValue> value;           // empty: Get writes nothing
    std::optional<std::wstring> seenByQuery; // for conditions; empty: treated as missing
};

/// The properties by their names in folded case.
using WmiRowModel = std::map<std::wstring, WmiProperty>;

struct WmiFailure {
    std::wstring contains;
    std::optional<uint32_t> nth; // 1-based; empty: every query
    std::optional<uint32_t> row; // 1-based: the row that fails; empty: the query itself fails
    int32_t status = 0;
};

/// What a query gives: rows, a failure, or rows and a failure in place of their end.
struct WmiQueryAnswer {
    bool hasRows = false;
    std::vector<WmiRowModel> rows;
    std::optional<int32_t> status;
};

struct WmiModel {
    Status connect;
    std::map<std::wstring, std::vector<WmiRowModel>> classes;    // by their names in folded case
    std::map<std::wstring, std::vector<WmiQueryAnswer>> queries; // by the exact text: the first answer, the next, …
    bool rowsFromSystem = false;
    uint32_t connectMicroseconds = 0;
    uint32_t queryMicroseconds = 0;
    std::vector<WmiFailure> failures;
};

void ReadInto(const Node& node, WmiProperty& target);
void ReadInto(const Node& node, WmiFailure& target);
void ReadInto(const Node& node, WmiModel& target);

} // namespace orvel::simulation
