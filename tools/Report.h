#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "CardFields.h"

namespace orvel::tools {

/// One log line of the library.
struct LogLine {
    int Severity; ///< plog's number
    std::string Function;
    std::string Message;
    size_t CardsBefore = 0; ///< how many cards were finished when it was written
};

/// "error", "warning", "info" and plog's other names.
const char* SeverityName(int severity);

/// What left QueryGraphicCards: a status of Windows or the text of a standard exception.
using Thrown = std::variant<long, std::string>;

/// The values of one record, in the order of `cardFields`.
using Card = std::vector<FieldValue>;

/// A property of a card by its name, as people read it.
std::string ValueOf(const Card& card, const std::string& name);
std::string ManufacturerOf(const Card& card);

/// The results of one enumeration.
struct Report {
    std::vector<Card> Cards;
    std::vector<LogLine> Log;
    std::optional<Thrown> Error;
    std::optional<std::string> Simulation; ///< the simulation's own report (JSON), on a simulated machine
};

/// One JSON object, with a final line break.
std::string ToJson(const Report& report);

/// The style of the text output.
struct TextStyle {
    bool IsBrief = false;    ///< omit values that are not available
    bool IsColoured = false; ///< for a terminal
};

/// One section per card, in 80 columns, and a summary. Without cards, the reason for each run that ended early.
std::string ToText(const Report& report, const TextStyle& style);

/// "3 cards, 0 warnings, 9 errors". Messages of success that AMD's run logs as errors do not count.
std::string SummaryOf(const Report& report);

/// The exception that ended the enumeration, as a sentence.
std::string Describe(const Thrown& error);

} // namespace orvel::tools
