#include "trace/Violations.h"

#include <mutex>
#include <vector>

namespace orvel::simulation {

namespace {

struct Violations {
    std::mutex mutex;
    std::vector<std::string> texts;
};

/// Never destroyed: a static object of the product may still make calls while the process ends.
Violations& TheViolations()
{
    static auto* const violations = new Violations;
    return *violations;
}

} // namespace

void AddViolation(const std::string& call, const std::string& what)
{
    Violations& violations = TheViolations();
    const std::scoped_lock lock(violations.mutex);
    violations.texts.push_back(call + ": " + what);
}

void ClearViolations()
{
    Violations& violations = TheViolations();
    const std::scoped_lock lock(violations.mutex);
    violations.texts.clear();
}

nlohmann::json ViolationsAsJson()
{
    Violations& violations = TheViolations();
    const std::scoped_lock lock(violations.mutex);
    return {{"count", violations.texts.size()}, {"texts", violations.texts}};
}

} // namespace orvel::simulation
