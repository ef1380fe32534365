#include "system/SystemMemory.h"

#include <algorithm>
#include <exception>

#include "WMIClient.h"
#include "formulas/MemoryBandwidth.h"
#include "formulas/WmiQueries.h"
#include "platform/ErrorText.h"
#include "platform/Log.h"
#include "system/WmiNamespace.h"

namespace orvel::shared::enumeration {

namespace {

constexpr uint32_t unknownMemoryType = 2;

/// Runs a query on the memory modules; a failure is thrown as its status.
void QueryModules(wmi::WMIClient& client, const wchar_t* wql)
{
    if (const long status = client.Query(wql); status != 0) {
        throw status;
    }
}

/// The same for a value whose readers need the other values too (NVIDIA's run needs only the type): sends all three queries
/// at once.
void QueryModulesForAll(wmi::WMIClient& client, const wchar_t* wql)
{
    for (const wchar_t* query : {wql, memoryTypesQuery, memorySpeedsQuery, memoryWidthsQuery}) {
        client.Prepare(query);
    }
    QueryModules(client, wql);
}

/// First value above 0 of an unsigned property of the modules; `otherwise` when there is none before a failed read.
uint32_t FirstNonZero(wmi::WMIClient& modules, const wchar_t* property, uint32_t otherwise)
{
    while (modules.GetNext()) {
        uint32_t value = 0;
        if (modules.GetValue(property, value) != 0) {
            break;
        }
        if (value > 0) {
            return value;
        }
    }
    return otherwise;
}

} // namespace

uint32_t GetMemoryType()
{
    wmi::WMIClient client(wmiNamespace);
    QueryModules(client, memoryTypesQuery);
    return FirstNonZero(client, L"SMBIOSMemoryType", unknownMemoryType);
}

float GetMemorySpeed()
{
    wmi::WMIClient client(wmiNamespace);
    QueryModulesForAll(client, memorySpeedsQuery);
    float fastest = 0.0F;
    float speed = 0.0F;
    while (client.GetNext() && client.GetValue(L"Speed", speed) == 0) {
        fastest = std::max(fastest, speed);
    }
    return fastest * 0.5F; // two transfers per clock
}

uint32_t GetTotalWidth()
{
    wmi::WMIClient client(wmiNamespace);
    QueryModulesForAll(client, memoryWidthsQuery);
    return FirstNonZero(client, L"TotalWidth", 0);
}

float GetMemoryBandwidth()
{
    const float speed = GetMemorySpeed();
    int32_t factor = 0;
    try {
        factor = TransferFactor(GetMemoryType());
    } catch (const std::exception& error) {
        PLOGE << "Error: " << TextOf(error);
    }
    return MemoryBandwidth(speed, GetTotalWidth(), factor);
}

} // namespace orvel::shared::enumeration
