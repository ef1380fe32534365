#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace orvel::simulation {

/// Reports that the caller of an interface broke a rule of the interface, e.g. AddViolation("nvapi NvAPI_Unload", "there is
/// no session"). `call` is written as in the trace.
void AddViolation(const std::string& call, const std::string& what);

/// The same for a call that fails; returns the call's status.
template <typename Code>
Code Refuse(const std::string& call, const char* what, Code status)
{
    AddViolation(call, what);
    return status;
}

/// Forgets all violations.
void ClearViolations();

/// {"count": N, "texts": ["CALL: WHAT", …]}, in order, since the last ClearViolations.
nlohmann::json ViolationsAsJson();

} // namespace orvel::simulation
