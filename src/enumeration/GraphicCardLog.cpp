#include "GraphicCardLog.h"

#include <memory>

#include "system/Log.h"

namespace {

/// Hands each record of this library to the host.
class CallbackAppender : public plog::IAppender {
public:
    CallbackAppender(GraphicCardLogCallback callback, void* context) : callback(callback), context(context) {}

    void write(const plog::Record& record) override
    {
        callback(record.getSeverity(), record.getFunc(), record.getMessage(), context);
    }

private:
    GraphicCardLogCallback callback;
    void* context;
};

/// This library's default logger, as long as the host wants lines.
struct HostLog {
    HostLog(GraphicCardLogCallback callback, int maxSeverity, void* context)
        : Appender(callback, context), Logger(static_cast<plog::Severity>(maxSeverity))
    {
        Logger.addAppender(&Appender);
    }

    CallbackAppender Appender;
    plog::Logger<PLOG_DEFAULT_INSTANCE_ID> Logger;
};

std::unique_ptr<HostLog> hostLog;

} // namespace

void SetGraphicCardLog(GraphicCardLogCallback callback, int maxSeverity, void* context)
{
    hostLog.reset(); // first: plog knows one default logger only
    if (callback) {
        hostLog = std::make_unique<HostLog>(callback, maxSeverity, context);
    }
}
