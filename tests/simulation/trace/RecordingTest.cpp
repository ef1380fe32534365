// What a recording has besides the trace.

#include <doctest/doctest.h>

#include "drivers/HandleTable.h"
#include "trace/Recording.h"
#include "trace/Trace.h"

using namespace orvel::simulation;

using Json = nlohmann::json;

TEST_CASE("A recording has the calls since its start, and no trace is needed for one")
{
    AddToTrace("nvml before");
    StartRecording();
    AddToTrace("nvml nvmlInit_v2");
    RecordCall("loader LoadLibraryW opencl.dll");
    CHECK(EndRecording() == Json::array({{{"call", "nvml nvmlInit_v2"}}, {{"call", "loader LoadLibraryW opencl.dll"}}}));
    CHECK(EndRecording() == Json::array());
    AddToTrace("nvml after");
    CHECK(EndRecording() == Json::array());
    CHECK(CountCalls("loader") == 0);
    ClearTrace();
}

TEST_CASE("A recording numbers handles in the order in which they are first returned")
{
    HandleTable<int> table;
    const int first = 1, second = 2;
    void* const known = table.HandleOf(second);
    StartRecording();
    AddToTrace("f list");
    table.HandleOf(first);
    table.HandleOf(second);
    AddToTrace("f again");
    table.HandleOf(second);
    AddToTrace("f use", {known});
    AddToTrace("f foreign", {&first});
    const Json recording = EndRecording();
    CHECK(recording[0]["returns"] == Json::array({0, 1}));
    CHECK(recording[1]["returns"] == Json::array({1}));
    CHECK(recording[2] == Json{{"call", "f use"}, {"on", 1}});
    CHECK(recording[3] == Json{{"call", "f foreign"}});
    ClearTrace();
}

TEST_CASE("A recording has the number that a call's text lacks, and the bytes that its caller filled")
{
    StartRecording();
    AddToTrace("f read", {nullptr, 30});
    RecordInput("\x01\xFF", 2);
    const Json recording = EndRecording();
    CHECK(recording == Json::array({{{"call", "f read"}, {"number", 30}, {"input", {1, 255}}}}));
    RecordInput("\x02", 1); // of a call that is in no recording any more
    RecordOutput(&recording);
    CHECK(EndRecording() == Json::array());
    ClearTrace();
}
