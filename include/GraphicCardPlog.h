#pragma once

#include <plog/Log.h>

#include "GraphicCardLog.h"

namespace orvel::shared::enumeration {

/// Forwards the library's log lines to the host's default plog logger, at the logger's current severity. If an appender
/// throws, the line is lost. Call it after plog::init; without a logger it stops the forwarding.
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
            // The host's exception must not unwind the library's frames.
        }
    };
    SetGraphicCardLog(forward, logger->getMaxSeverity(), logger);
}

} // namespace orvel::shared::enumeration
