#include "windows/RedirectedCalls.h"

#include "loading/SystemLoader.h"
#include "trace/Hangs.h"
#include "windows/DisplayConfig.h"
#include "windows/DriverKeys.h"
#include "windows/SetupApi.h"

namespace orvel::simulation {

namespace {

std::vector<Redirection> All()
{
    std::vector<Redirection> all;
    for (const auto& some :
         {SetupApiRedirections(), DriverKeyRedirections(), DisplayConfigRedirections(), SystemLoaderRedirections()}) {
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

} // namespace

void PutCallsInPlace()
{
    LeadImports(All());
}

void TakeCallsAway()
{
    if (!HasHung()) {
        RestoreImports(All());
    }
}

} // namespace orvel::simulation
