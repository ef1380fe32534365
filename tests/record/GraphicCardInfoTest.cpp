#include "GraphicCardInfo.h"

#include <cstring>
#include <memory>
#include <new>
#include <set>

#include <windows.h>

#include <doctest/doctest.h>

using orvel::shared::enumeration::GraphicCardInfo;

namespace {

/// Builds a record in which every property has a value of its own.
template <typename Build>
auto WithDistinctValues(Build build)
{
    return build(1U, "t2", 3U, "t4", true, "t6", 7U, "t8", true, "t10", 11U, "t12", "t13", "t14", "t15", "t16", "t17", 18.5F,
                 19.5F, 20U, 21.5F, 22.5F, 23.5F, 24U, 25U, 26U, "t27", true, 29.5F, 30.5F, 31.5F, 32.5F, 33U, 34U, "t35",
                 36.5F, 37U, 38U, 39U, "t40", "t41", true, false, 44U, 45U, 46U, "t47", 48U, "t49");
}

std::unique_ptr<GraphicCardInfo> MakeDistinct()
{
    return WithDistinctValues([](auto... values) { return std::make_unique<GraphicCardInfo>(values...); });
}

std::unique_ptr<GraphicCardInfo> MakeNamed(const char* name)
{
    return std::make_unique<GraphicCardInfo>(0U, "", 0U, "", false, "", 0U, "", false, "", 0U, "", "", name, "", "", "",
                                             0.0F, 0.0F, 0U, 0.0F, 0.0F, 0.0F, 0U, 0U, 0U, "", false, 0.0F, 0.0F, 0.0F, 0.0F,
                                             0U, 0U, "", 0.0F, 0U, 0U, 0U, "", "", false, false, 0U, 0U, 0U, "", 0U, "");
}

} // namespace

TEST_CASE("Each getter gives the constructor's argument of its place")
{
    const auto card = MakeDistinct();
    CHECK(card->GetAvailabilityCode() == 1);
    CHECK(std::string(card->GetAvailabilityStatus()) == "t2");
    CHECK(card->GetConfigError() == 3);
    CHECK(std::string(card->GetConfigErrorStatus()) == "t4");
    CHECK(card->GetUserConfig());
    CHECK(std::string(card->GetCurrentResolution()) == "t6");
    CHECK(card->GetCurrentRefreshRate() == 7);
    CHECK(std::string(card->GetDriverVersion()) == "t8");
    CHECK(card->GetIsAeroEnabled());
    CHECK(std::string(card->GetGraphicsCardSn()) == "t10");
    CHECK(card->GetBusId() == 11);
    CHECK(std::string(card->GetDeviceId()) == "t12");
    CHECK(std::string(card->GetSubsystemId()) == "t13");
    CHECK(std::string(card->GetCardName()) == "t14");
    CHECK(std::string(card->GetChipName()) == "t15");
    CHECK(std::string(card->GetManufacturer()) == "t16");
    CHECK(std::string(card->GetBusInterface()) == "t17");
    CHECK(card->GetPcieGeneration() == 18.5F);
    CHECK(card->GetPciTransferRate() == 19.5F);
    CHECK(card->GetPciLanes() == 20);
    CHECK(card->GetPixelFillRate() == 21.5F);
    CHECK(card->GetTextureFillRate() == 22.5F);
    CHECK(card->GetCudaCapability() == 23.5F);
    CHECK(card->GetMaxTemperature() == 24);
    CHECK(card->GetTemperateSlowdown() == 25);
    CHECK(card->GetTemperatureShutdown() == 26);
    CHECK(std::string(card->GetGpuType()) == "t27");
    CHECK(card->GetMultiGpuSupport());
    CHECK(card->GetGpuClockMax() == 29.5F);
    CHECK(card->GetGpuBoostClock() == 30.5F);
    CHECK(card->GetMemoryClockMax() == 31.5F);
    CHECK(card->GetMemoryBoostClock() == 32.5F);
    CHECK(card->GetMemorySize() == 33);
    CHECK(card->GetMemorySharedSize() == 34);
    CHECK(std::string(card->GetMemoryType()) == "t35");
    CHECK(card->GetMemoryBandwidth() == 36.5F);
    CHECK(card->GetMemoryBusWidth() == 37);
    CHECK(card->GetCores() == 38);
    CHECK(card->GetShaders() == 39);
    CHECK(std::string(card->GetDriverReleaseDate()) == "t40");
    CHECK(std::string(card->GetBiosVersion()) == "t41");
    CHECK(card->GetNvidiaSli());
    CHECK_FALSE(card->GetAmdCrossfire());
    CHECK(card->GetEccStatus() == 44);
    CHECK(card->GetEccSingleBitErrors() == 45);
    CHECK(card->GetEccDoubleBitErrors() == 46);
    CHECK(std::string(card->GetAdapterName()) == "t47");
    CHECK(card->GetAdapterRam() == 48);
    CHECK(std::string(card->GetAdapterStatus()) == "t49");
}

TEST_CASE("A record copies its texts, byte by byte up to the NUL")
{
    char name[] = "\x01\x7F\x80\xFF card\0hidden";
    const auto card = MakeNamed(name);
    name[0] = 'x';
    CHECK(std::strcmp(card->GetCardName(), "\x01\x7F\x80\xFF card") == 0);
    CHECK(std::strcmp(card->GetChipName(), "") == 0);
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations" // hosts are warned of it
TEST_CASE("An assigned record intentionally shares the source's texts")
{
    const auto source = MakeNamed("source");
    auto target = MakeNamed("target");
    CHECK(&(*target = *source) == target.get());
    CHECK(target->GetCardName() == source->GetCardName());
    (void)target.release(); // only one of the two may be destroyed
}
#pragma GCC diagnostic pop

TEST_CASE("A destroyed record's texts are null, and destroying it again releases nothing")
{
    alignas(GraphicCardInfo) unsigned char storage[sizeof(GraphicCardInfo)];
    auto* card = WithDistinctValues([&](auto... values) { return new (storage) GraphicCardInfo(values...); });
    const char* const name = card->GetCardName();
    card->~GraphicCardInfo();
    // The bytes themselves: a getter of an object that has ended may be anything to the compiler.
    for (size_t place = 0; place + sizeof(name) <= sizeof(storage); place += sizeof(name)) {
        const char* word = nullptr;
        std::memcpy(&word, storage + place, sizeof(word));
        CAPTURE(place);
        CHECK(word != name);
    }
    card->~GraphicCardInfo();
}

TEST_CASE("One body zero-fills under the names of both classes and both compilers")
{
    const HMODULE library = ::GetModuleHandleW(L"orvel-graphic-cards-enumeration.dll");
    std::set<FARPROC> bodies;
    for (const char* name : {"_ZN5orvel6shared11enumeration15GraphicCardInfo16__autoclassinit2Ey",
                             "_ZN5orvel6shared11enumeration22GraphicCardEnumeration16__autoclassinit2Ey",
                             "?__autoclassinit2@GraphicCardInfo@enumeration@shared@orvel@@QEAAX_K@Z",
                             "?__autoclassinit2@GraphicCardEnumeration@enumeration@shared@orvel@@QEAAX_K@Z"}) {
        CAPTURE(name);
        const FARPROC body = ::GetProcAddress(library, name);
        const bool isExported = body != nullptr;
        CHECK(isExported);
        bodies.insert(body);
    }
    CHECK(bodies.size() == 1);
}

TEST_CASE("Zero-filling reaches the given size and no further")
{
    alignas(GraphicCardInfo) unsigned char storage[sizeof(GraphicCardInfo)];
    std::memset(storage, 0xAA, sizeof(storage));
    reinterpret_cast<GraphicCardInfo*>(storage)->__autoclassinit2(16);
    CHECK(storage[15] == 0);
    CHECK(storage[16] == 0xAA);
}
