#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvel::shared::enumeration {

/// A failure that ends a vendor's run. Each has one text, which hosts read in the log: it is part of the interface, and
/// independent of the standard library.
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

/// The same with the vendor's status code: "TEXT. Status code: N".
std::string MessageOf(RunFailure failure, int status);

/// What a message reports.
struct ReportedFailure {
    RunFailure Failure;
    std::optional<int> Status; ///< none if the message has none
};

/// The failure of a message of MessageOf; none for another text.
std::optional<ReportedFailure> FindRunFailure(std::string_view message);

} // namespace orvel::shared::enumeration
