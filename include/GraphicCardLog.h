#pragma once

// Also compiles as C.

#include "GraphicCardApi.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Receives one log line of the library, on the thread that enumerates. If it throws a C++ exception, the library discards
/// the exception, and only this line is lost. `severity`: 1 fatal, 2 error, 3 warning, 4 info, 5 debug, 6 verbose (plog's
/// numbers). `function`: the full name of the operation that wrote the line. `message`: UTF-8. Both texts are valid during
/// the call only. `context`: the pointer that the host passed.
typedef void (*GraphicCardLogCallback)(int severity, const char* function, const char* message, void* context);

/// Sends the library's log lines at `maxSeverity` or more severe to `callback`, which replaces the previous one; null, or
/// a `maxSeverity` below 1, removes the callback. A `maxSeverity` above 6 means 6.
/// The library logs nothing before the first call. The callback may call this function: the change takes effect after the
/// line that is being written. Do not call it while another thread enumerates. It never throws; if memory is exhausted
/// during the first call, nothing is logged.
ORVEL_GRAPHIC_CARDS_API void SetGraphicCardLog(GraphicCardLogCallback callback, int maxSeverity, void* context);

#ifdef __cplusplus
}
#endif

// Also declares the plog adapter if the host has included plog before.
#if defined(__cplusplus) && defined(PLOG)
#include "GraphicCardPlog.h"
#endif
