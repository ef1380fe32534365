#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvel::shared::enumeration {

/// What can end a vendor's run. Each has one text, which hosts read in the log: it is part of the interface, and no standard
/// library's wording.
enum class RunFailure {
    UnnamedCode,
    NoTransferFactor,
    InvalidStoi,
    InvalidStoul,
    InvalidStoll,
    InvalidStof,
    InvalidStod,
    StoiOutOfRange,
    StoulOutOfRange,
    StollOutOfRange,
    StofOutOfRange,
    StodOutOfRange,
    TextTooShort,
    NoOpenCl,
    NoNvapi,
    NoPhysicalGpus,
    NoNvml,
    NvmlStaysOpen,
    NoMemory,
};

/// The text of a failure.
const char* MessageOf(RunFailure failure) noexcept;

/// The same with the foreign status that it comes with: "TEXT. Status code: N".
std::string MessageOf(RunFailure failure, int status);

/// What a message reports.
struct ReportedFailure {
    RunFailure Failure;
    std::optional<int> Status; ///< none where the message has none
};

/// The failure of a message that MessageOf has made; none for another text.
std::optional<ReportedFailure> FindRunFailure(std::string_view message);

} // namespace orvel::shared::enumeration
