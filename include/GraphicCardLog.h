#pragma once

#include "GraphicCardApi.h"

/// Receives one log line of the library, on the thread that enumerates. It must not throw.
/// `severity`: 1 fatal, 2 error, 3 warning, 4 info, 5 debug, 6 verbose (plog's numbers). `function`: the full name of the
/// operation that wrote the line. `message`: UTF-8. Both texts are valid during the call only. `context`: the host's own.
typedef void (*GraphicCardLogCallback)(int severity, const char* function, const char* message, void* context);

/// Sends the library's log lines of `maxSeverity` and graver ones to `callback`; null takes the former callback away again.
/// Until the first call nothing is logged. Not to be called while another thread enumerates.
extern "C" ORVEL_GRAPHIC_CARDS_API void SetGraphicCardLog(GraphicCardLogCallback callback, int maxSeverity, void* context);

#if defined(__has_include)
#if __has_include(<plog/Log.h>)
#include <plog/Log.h>

namespace orvel::shared::enumeration {

/// Sends the library's log lines to the host's own default plog logger, with the severity that it has now.
/// Call it after plog::init; without a logger it takes the forwarding away.
inline void ForwardGraphicCardLogToPlog()
{
    plog::Logger<PLOG_DEFAULT_INSTANCE_ID>* logger = plog::get<PLOG_DEFAULT_INSTANCE_ID>();
    if (!logger) {
        SetGraphicCardLog(nullptr, plog::none, nullptr);
        return;
    }
    const auto forward = [](int severity, const char* function, const char* message, void* context) {
        auto& host = *static_cast<plog::Logger<PLOG_DEFAULT_INSTANCE_ID>*>(context);
        plog::Record record(static_cast<plog::Severity>(severity), function, 0, "", nullptr, PLOG_DEFAULT_INSTANCE_ID);
#if defined(_WIN32) && !PLOG_CHAR_IS_UTF8
        record << plog::util::toWide(message, plog::codePage::kUTF8);
#else
        record << message;
#endif
        host += record;
    };
    SetGraphicCardLog(forward, logger->getMaxSeverity(), logger);
}

} // namespace orvel::shared::enumeration

#endif
#endif
