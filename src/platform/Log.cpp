#include "platform/Log.h"

namespace orvel::shared::enumeration {

namespace {

/// A record with its unchanged text: plog's own uses a stream, which truncates it when memory is exhausted.
class TextRecord : public plog::Record {
public:
    TextRecord(plog::Severity severity, const char* function, const std::string& text)
        : Record(severity, function, 0, "", nullptr, PLOG_DEFAULT_INSTANCE_ID), text(text)
    {}

    const char* getMessage() const override { return text.c_str(); }

private:
    const std::string& text;
};

} // namespace

LogLine& LogLine::operator<<(std::string_view part) noexcept
{
    try {
        text.append(part);
    } catch (...) {
        isLost = true;
    }
    return *this;
}

LogLine::~LogLine()
{
    if (isLost) {
        return;
    }
    try {
        *plog::get() += TextRecord(severity, function, text);
    } catch (...) {
        // There is nowhere left to report it.
    }
}

} // namespace orvel::shared::enumeration
