#include "trace/Violations.h"

#include <mutex>
#include <vector>

#include <nlohmann/json.hpp>

#include "trace/Hangs.h"

namespace orvel::simulation {

namespace {

struct Violations {
    std::mutex mutex;
    std::vector<std::string> texts;
};

/// Never destroyed: a static object of the product may still make calls while the process ends.
Violations& violations = *new Violations;

} // namespace

void AddViolation(const std::string& call, const std::string& what)
{
    if (IsAbandoned()) {
        return; // it calls a machine that is gone
    }
    const std::scoped_lock lock(violations.mutex);
    violations.texts.push_back(call + ": " + what);
}

void ClearViolations()
{
    const std::scoped_lock lock(violations.mutex);
    violations.texts.clear();
}

nlohmann::json ViolationsAsJson()
{
    const std::scoped_lock lock(violations.mutex);
    return {{"count", violations.texts.size()}, {"texts", violations.texts}};
}

} // namespace orvel::simulation
