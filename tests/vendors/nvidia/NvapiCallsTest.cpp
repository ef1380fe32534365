// The arguments that NVAPI receives, byte by byte, and the handling of unusual results. A driver made of
// functions of this file replaces nvapi_QueryInterface.

#include "vendors/nvidia/NvapiClient.h"

#include <cstring>
#include <vector>

#include <doctest/doctest.h>

#include "support/HostLog.h"
#include "support/ReplacedImport.h"

using namespace orvel::shared::enumeration;
using namespace orvel::tests;

namespace {

using Words = std::vector<uint32_t>;

std::vector<Words> handed; ///< the structures that the calls received
Words answer;              ///< the words that a call writes

NvAPI_Status Succeed()
{
    return NVAPI_OK;
}

NvAPI_Status ListOneGpu(void** gpus, uint32_t* count)
{
    gpus[0] = &handed;
    *count = 1;
    return NVAPI_OK;
}

/// A call with a structure of this number of words.
template <size_t Count>
NvAPI_Status Take(void* structure)
{
    Words words(Count);
    std::memcpy(words.data(), structure, Count * sizeof(uint32_t));
    handed.push_back(words);
    std::memcpy(structure, answer.data(), Count * sizeof(uint32_t));
    return NVAPI_OK;
}

template <size_t Count>
NvAPI_Status TakeOfGpu(void*, void* structure)
{
    return Take<Count>(structure);
}

NvAPI_Status WriteWithoutNul(void*, char* text)
{
    std::memset(text, 'N', 64);
    return NVAPI_OK;
}

void* QueryInterface(uint32_t id)
{
    switch (id) {
    case 0x0150E828: // initialise
    case 0xD22BDD7E: // unload
        return reinterpret_cast<void*>(&Succeed);
    case 0xE5AC921F:
        return reinterpret_cast<void*>(&ListOneGpu);
    case 0xDCB616C3: // clock frequencies
        return reinterpret_cast<void*>(&TakeOfGpu<66>);
    case 0xCA1DDAF3: // ECC status
        return reinterpret_cast<void*>(&TakeOfGpu<4>);
    case 0xC71F85A6: // ECC errors
        return reinterpret_cast<void*>(&TakeOfGpu<10>);
    case 0xD2D25687: // SLI
        return reinterpret_cast<void*>(&Take<7>);
    case 0xCEEE8E9F: // full name
    case 0xA561FD7D: // video BIOS
        return reinterpret_cast<void*>(&WriteWithoutNul);
    default:
        return nullptr;
    }
}

FARPROC WINAPI FindQueryInterface(HMODULE, LPCSTR)
{
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&QueryInterface));
}

/// A session with the driver of this file.
class Session {
public:
    Session() : find(TestModule(), L"kernel32.dll", "GetProcAddress", reinterpret_cast<void*>(&FindQueryInterface))
    {
        handed.clear();
    }

    const NvapiClient& operator*() const { return client; }
    const NvapiClient* operator->() const { return &client; }
    NvPhysicalGpuHandle Gpu() const { return client.GetGpuHandle(0); }

private:
    struct Load {
        Load() { Simulate({{"nvapi", Json::object()}}); }
    } load;
    ReplacedImport find;
    NvapiClient client;
};

/// This number of words: 0, except for the given positions.
Words WordsWith(size_t count, const std::vector<std::pair<size_t, uint32_t>>& values)
{
    Words words(count, 0);
    for (const auto& [place, value] : values) {
        words[place] = value;
    }
    return words;
}

} // namespace

TEST_CASE("Each query for clock frequencies has a structure that is zero except for version and type")
{
    const Session session;
    answer = Words(66, 0xFFFFFFFF);
    session->GetMemoryBoostClock(session.Gpu());
    session->GetMemoryClockMax(session.Gpu());
    session->GetGpuBoostClock(session.Gpu());
    session->GetGpuClockMax(session.Gpu());
    const Words memory = WordsWith(66, {{0, 0x00030108}, {1, 4}});
    const Words graphics = WordsWith(66, {{0, 0x00030108}});
    CHECK(handed == std::vector<Words>{memory, memory, graphics, graphics});
}

TEST_CASE("A clock that is not present is read nevertheless")
{
    const Session session;
    answer = WordsWith(66, {{3, 1'770'000}, {11, 7'001'000}}); // the presence words 2 and 10 are 0
    CHECK(session->GetMemoryClockMax(session.Gpu()) == 7001.0F);
    CHECK(session->GetGpuClockMax(session.Gpu()) == 1770.0F);
}

TEST_CASE("Only bit 0 of the ECC words is used, and the structure passed is zero except for its version")
{
    const Session session;
    answer = WordsWith(4, {{1, 0xFFFFFFFE}, {2, 0xFFFFFFFF}, {3, 0xFFFFFFFE}});
    CHECK(session->GetEccStatus(session.Gpu()) == 0);
    answer = WordsWith(4, {{1, 0xFFFFFFFF}, {3, 0xFFFFFFFE}});
    CHECK(session->GetEccStatus(session.Gpu()) == 1);
    answer = WordsWith(4, {{3, 1}});
    CHECK(session->GetEccStatus(session.Gpu()) == 2);
    CHECK(handed == std::vector<Words>(3, WordsWith(4, {{0, 0x00010010}})));
}

TEST_CASE("ECC errors are the low words of the current counts, each query with its own structure")
{
    const Session session;
    answer = WordsWith(10, {{2, 4}, {3, 1}, {4, 3}, {5, 1}, {6, 99}, {8, 99}});
    CHECK(session->GetEccDoubleBitErrors(session.Gpu()) == 3);
    CHECK(session->GetEccSingleBitErrors(session.Gpu()) == 4);
    CHECK(handed == std::vector<Words>(2, WordsWith(10, {{0, 0x00010028}})));
}

TEST_CASE("The SLI words are unsigned, and their version intentionally is the second word")
{
    const Session session;
    answer = WordsWith(7, {{2, 0xFFFFFFFF}, {3, 0xFFFFFFFF}});
    CHECK(session->GetNvidiaSli());
    CHECK(session->GetMultiGpuSupport());
    CHECK(handed == std::vector<Words>(2, WordsWith(7, {{1, 0x0002001C}})));
}

TEST_CASE("A text without terminator ends with its buffer")
{
    const Session session;
    CHECK(session->GetCardName(session.Gpu()) == std::string(64, 'N'));
    CHECK(session->GetChipName(session.Gpu()) == std::string(64, 'N'));
    CHECK(session->GetBiosVersion(session.Gpu()) == std::string(64, 'N'));
}
