#include "windows/SystemScope.h"

#include "windows/Registry.h"

namespace orvel::simulation {

namespace {

thread_local int depth = 0;

} // namespace

SystemScope::SystemScope()
{
    if (depth++ == 0) {
        PauseRegistry();
    }
}

SystemScope::~SystemScope()
{
    if (--depth == 0) {
        ResumeRegistry();
    }
}

bool SystemScope::IsActive()
{
    return depth > 0;
}

} // namespace orvel::simulation
