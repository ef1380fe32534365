#pragma once

// Also compiles as C.

#include "GraphicCardApi.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Receives one log line of the library, on the thread that enumerates. An exception of C++ that it throws ends here and
/// costs its line only. `severity`: 1 fatal, 2 error, 3 warning, 4 info, 5 debug, 6 verbose (plog's numbers). `function`:
/// the full name of the operation that wrote the line. `message`: UTF-8. Both texts are valid during the call only.
/// `context`: the host's own.
typedef void (*GraphicCardLogCallback)(int severity, const char* function, const char* message, void* context);

/// Sends the library's log lines of `maxSeverity` and more severe ones to `callback`, in place of the former one; null, or
/// a `maxSeverity` below 1, ends it. A `maxSeverity` above 6 means 6.
/// Until the first call nothing is logged. The callback may call it: the change takes effect after the line that is being
/// written. Not to be called while another thread enumerates. Throws nothing; where memory is exhausted at the first call,
/// nothing is logged.
ORVEL_GRAPHIC_CARDS_API void SetGraphicCardLog(GraphicCardLogCallback callback, int maxSeverity, void* context);

#ifdef __cplusplus
}
#endif

// A host that has included plog before gets the connection to it as well.
#if defined(__cplusplus) && defined(PLOG)
#include "GraphicCardPlog.h"
#endif
