#pragma once

#include <concepts>
#include <string>
#include <string_view>

#include <plog/Log.h>

namespace orvel::shared::enumeration {

/// A log line that is written on destruction. A failure to write it, such as exhausted memory, loses only the line:
/// destructors and handlers log too, and an exception there would end the process.
class LogLine {
public:
    LogLine(plog::Severity severity, const char* function) noexcept : severity(severity), function(function) {}
    LogLine(const LogLine&) = delete;
    LogLine& operator=(const LogLine&) = delete;
    ~LogLine();

    LogLine& operator<<(std::string_view part) noexcept;
    LogLine& operator<<(char part) noexcept { return *this << std::string_view(&part, 1); }
    LogLine& operator<<(std::integral auto number) noexcept;

private:
    plog::Severity severity;
    const char* function;
    std::string text;
    bool isLost = false;
};

LogLine& LogLine::operator<<(std::integral auto number) noexcept
{
    try {
        return *this << std::string_view(std::to_string(number));
    } catch (...) {
        isLost = true;
        return *this;
    }
}

} // namespace orvel::shared::enumeration

// plog's macros (PLOGE, PLOGW, …) expand to this one. plog's own definition throws, and truncates a line when memory is
// exhausted.
#undef PLOG_
#define PLOG_(instanceId, severity)                                                                                         \
    IF_PLOG_(instanceId, severity) orvel::shared::enumeration::LogLine(severity, PLOG_GET_FUNC())

/// As PLOG(severity), under the full name of another operation: for the steps of an operation that is split into helpers.
/// Like plog's own macros it formats nothing if no logger accepts the severity.
#define ORVEL_LOG_AS(severity, function)                                                                                    \
    IF_PLOG_(PLOG_DEFAULT_INSTANCE_ID, severity) orvel::shared::enumeration::LogLine(severity, function)
