#include "HostLog.h"

#include "GraphicCardLog.h"

namespace orvel::tests {

namespace {

const char* NameOfSeverity(int severity)
{
    return severity == 2 ? "error" : severity == 3 ? "warning" : severity == 4 ? "info" : "other";
}

void TakeLine(int severity, const char* function, const char* message, void* context)
{
    std::string name = function;
    if (name.starts_with(ns)) {
        name.erase(0, ns.size());
    }
    static_cast<HostLog*>(context)->Lines.push_back(std::string(NameOfSeverity(severity)) + " " + name + ": " + message);
}

} // namespace

HostLog::HostLog()
{
    SetGraphicCardLog(TakeLine, 6, this);
}

HostLog::~HostLog()
{
    SetGraphicCardLog(nullptr, 0, nullptr);
}

} // namespace orvel::tests
