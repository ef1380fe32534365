#include "GraphicCardLog.h"

#include <algorithm>
#include <memory>

#include "abi/HostCallback.h"
#include "platform/Log.h"

namespace orvel::shared::enumeration {

namespace {

/// This library's default logger, which passes each record to the host. The callback may replace itself, and then returns
/// into this object: so the object is created once, and only its content changes.
class HostLog : public plog::IAppender {
public:
    HostLog() { logger.addAppender(this); }

    void SendTo(GraphicCardLogCallback newCallback, plog::Severity maxSeverity, void* newContext)
    {
        callback = newCallback;
        context = newContext;
        logger.setMaxSeverity(maxSeverity);
    }

    void write(const plog::Record& record) override
    {
        CallHost({callback, record.getSeverity(), record.getFunc(), record.getMessage(), context});
    }

private:
    GraphicCardLogCallback callback = nullptr;
    void* context = nullptr;
    plog::Logger<PLOG_DEFAULT_INSTANCE_ID> logger{plog::none};
};

std::unique_ptr<HostLog> hostLog;

/// Creates the log if there is none yet. Returns whether there is one.
bool HasHostLog() noexcept
{
    try {
        if (!hostLog) {
            hostLog = std::make_unique<HostLog>();
        }
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace

} // namespace orvel::shared::enumeration

void SetGraphicCardLog(GraphicCardLogCallback callback, int maxSeverity, void* context)
{
    using namespace orvel::shared::enumeration;
    const auto severity = callback ? std::clamp<int>(maxSeverity, plog::none, plog::verbose) : plog::none;
    if (HasHostLog()) {
        hostLog->SendTo(callback, static_cast<plog::Severity>(severity), context);
    }
}
