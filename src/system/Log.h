#pragma once

#include <plog/Log.h>

/// As PLOG(severity), under the full name of another operation: for the steps of an operation that is split into helpers.
/// Like plog's own macros it formats nothing where no logger admits the severity.
#define ORVEL_LOG_AS(severity, function)                                                                                    \
    if (!plog::get() || !plog::get()->checkSeverity(severity)) {                                                            \
        ;                                                                                                                   \
    } else                                                                                                                  \
        (*plog::get()) += plog::Record(severity, function, __LINE__, "", nullptr, PLOG_DEFAULT_INSTANCE_ID).ref()
