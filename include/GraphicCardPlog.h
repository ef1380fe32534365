#pragma once

#include <plog/Log.h>

#include "GraphicCardLog.h"

namespace orvel::shared::enumeration {

/// Sends the library's log lines to the host's own default plog logger, with the severity that it has now. A line that the
/// logger's appenders throw at is lost.
/// Call it after plog::init; without a logger it takes the forwarding away.
inline void ForwardGraphicCardLogToPlog()
{
    plog::Logger<PLOG_DEFAULT_INSTANCE_ID>* logger = plog::get<PLOG_DEFAULT_INSTANCE_ID>();
    if (!logger) {
        SetGraphicCardLog(nullptr, plog::none, nullptr);
        return;
    }
    const auto forward = [](int severity, const char* function, const char* message, void* context) {
        try {
            auto& host = *static_cast<plog::Logger<PLOG_DEFAULT_INSTANCE_ID>*>(context);
            plog::Record record(static_cast<plog::Severity>(severity), function, 0, "", nullptr, PLOG_DEFAULT_INSTANCE_ID);
#if defined(_WIN32) && !PLOG_CHAR_IS_UTF8
            record << plog::util::toWide(message, plog::codePage::kUTF8);
#else
            record << message;
#endif
            host += record;
        } catch (...) {
            // The host's exception must not pass the frames of the library.
        }
    };
    SetGraphicCardLog(forward, logger->getMaxSeverity(), logger);
}

} // namespace orvel::shared::enumeration
