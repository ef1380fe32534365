#include "formulas/RunFailure.h"

#include <charconv>
#include <system_error>

namespace orvel::shared::enumeration {

namespace {

constexpr std::string_view beforeStatus = ". Status code: ";

struct Message {
    RunFailure Failure;
    const char* Text;
};

constexpr Message messages[] = {
    {RunFailure::UnnamedCode, "invalid unordered_map<K, T> key"},
    {RunFailure::NoTransferFactor, "Argument out of range"},
    {RunFailure::InvalidStoi, "invalid stoi argument"},
    {RunFailure::InvalidStoul, "invalid stoul argument"},
    {RunFailure::InvalidStoll, "invalid stoll argument"},
    {RunFailure::InvalidStof, "invalid stof argument"},
    {RunFailure::InvalidStod, "invalid stod argument"},
    {RunFailure::StoiOutOfRange, "stoi argument out of range"},
    {RunFailure::StoulOutOfRange, "stoul argument out of range"},
    {RunFailure::StollOutOfRange, "stoll argument out of range"},
    {RunFailure::StofOutOfRange, "stof argument out of range"},
    {RunFailure::StodOutOfRange, "stod argument out of range"},
    {RunFailure::TextTooShort, "invalid string position"},
    {RunFailure::NoOpenCl, "Failed to load opencl.dll"},
    {RunFailure::NoNvapi, "Failed to initialize NVAPI"},
    {RunFailure::NoPhysicalGpus, "Failed to enumerate physical GPUs"},
    {RunFailure::NoNvml, "Failed to initialize NVML"},
    {RunFailure::NvmlStaysOpen, "Failed to shutdown NVML"},
    {RunFailure::NoMemory, "bad allocation"},
};

/// Removes the status from the end of a message, and returns it.
std::optional<int> TakeStatus(std::string_view& message)
{
    const size_t end = message.find(beforeStatus);
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    const char* const last = message.data() + message.size();
    int status = 0;
    const auto read = std::from_chars(message.data() + end + beforeStatus.size(), last, status);
    if (read.ec != std::errc() || read.ptr != last) {
        return std::nullopt;
    }
    message = message.substr(0, end);
    return status;
}

} // namespace

const char* MessageOf(RunFailure failure) noexcept
{
    for (const Message& message : messages) {
        if (message.Failure == failure) {
            return message.Text;
        }
    }
    return "";
}

std::string MessageOf(RunFailure failure, int status)
{
    return std::string(MessageOf(failure)).append(beforeStatus) + std::to_string(status);
}

std::optional<ReportedFailure> FindRunFailure(std::string_view message)
{
    const auto status = TakeStatus(message);
    for (const Message& known : messages) {
        if (message == known.Text) {
            return ReportedFailure{known.Failure, status};
        }
    }
    return std::nullopt;
}

} // namespace orvel::shared::enumeration
