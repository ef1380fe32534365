// Any text as a device id or a name appears in the query unchanged, between the fixed words.

#include "Promised.h"
#include "formulas/VideoControllerQuery.h"

using namespace orvel::fuzz;
using namespace orvel::shared::enumeration;

namespace {

bool Encloses(const std::string& query, const std::string& before, const std::string& text, const std::string& after)
{
    return query.size() == before.size() + text.size() + after.size() && query.starts_with(before) &&
           query.ends_with(after) && query.compare(before.size(), text.size(), text) == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    const std::string text = Text(data, size);
    const std::string rows = "SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_";
    Require(Encloses(NvidiaAdapterQuery(text), rows + "10DE&DEV_", text, "%'"), "NVIDIA's query");
    Require(Encloses(AmdAdapterQuery(text), rows + "1002%' AND Name = '", text, "'"), "AMD's query");
    return 0;
}
