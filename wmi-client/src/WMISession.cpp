#include "WMISession.h"

#include "SessionMemory.h"

namespace orvel::shared::wmi {

WMISession::WMISession() : memory(std::make_unique<SessionMemory>()) {}

WMISession::~WMISession() = default;

} // namespace orvel::shared::wmi
