#include "GraphicCardInfo.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <tuple>

#include <windows.h>

#include <doctest/doctest.h>

#include "CardFields.h"
#include "support/HeldResources.h"

using orvel::shared::enumeration::GraphicCardInfo;
using orvel::tools::CardField;
using orvel::tools::cardFields;
using orvel::tools::FieldValue;
using orvel::tools::propertyCount;

namespace {

/// Hosts rely on the order and types of the constructor's parameters and of the members in memory. New properties are added
/// at the end, and none is ever moved.
constexpr const char* contract[] = {
    "unsigned int AvailabilityCode",
    "const char* AvailabilityStatus",
    "unsigned int ConfigError",
    "const char* ConfigErrorStatus",
    "bool UserConfig",
    "const char* CurrentResolution",
    "unsigned int CurrentRefreshRate",
    "const char* DriverVersion",
    "bool IsAeroEnabled",
    "const char* GraphicsCardSn",
    "unsigned int BusId",
    "const char* DeviceId",
    "const char* SubsystemId",
    "const char* CardName",
    "const char* ChipName",
    "const char* Manufacturer",
    "const char* BusInterface",
    "float PcieGeneration",
    "float PciTransferRate",
    "unsigned int PciLanes",
    "float PixelFillRate",
    "float TextureFillRate",
    "float CudaCapability",
    "unsigned int MaxTemperature",
    "unsigned int TemperateSlowdown",
    "unsigned int TemperatureShutdown",
    "const char* GpuType",
    "bool MultiGpuSupport",
    "float GpuClockMax",
    "float GpuBoostClock",
    "float MemoryClockMax",
    "float MemoryBoostClock",
    "unsigned int MemorySize",
    "unsigned int MemorySharedSize",
    "const char* MemoryType",
    "float MemoryBandwidth",
    "unsigned int MemoryBusWidth",
    "unsigned int Cores",
    "unsigned int Shaders",
    "const char* DriverReleaseDate",
    "const char* BiosVersion",
    "bool NvidiaSli",
    "bool AmdCrossfire",
    "unsigned int EccStatus",
    "unsigned int EccSingleBitErrors",
    "unsigned int EccDoubleBitErrors",
    "const char* AdapterName",
    "unsigned int AdapterRam",
    "const char* AdapterStatus",
};

/// A value for any of the constructor's parameters.
struct Argument {
    unsigned int Number;
    const char* Text;

    operator unsigned int() const { return Number; }
    operator float() const { return static_cast<float>(Number) / 2; }
    operator bool() const { return Number % 2 != 0; }
    operator const char*() const { return Text; }
};

using Arguments = std::array<Argument, propertyCount>;

/// Constructs a record in `storage`.
GraphicCardInfo* Make(void* storage, const Arguments& arguments)
{
    return std::apply([storage](auto... values) { return new (storage) GraphicCardInfo(values...); }, arguments);
}

std::unique_ptr<GraphicCardInfo> Make(const Arguments& arguments)
{
    return std::apply([](auto... values) { return std::make_unique<GraphicCardInfo>(values...); }, arguments);
}

Arguments Same(unsigned int number, const char* text)
{
    Arguments arguments;
    arguments.fill({number, text});
    return arguments;
}

const char* const typeNames[std::variant_size_v<FieldValue>] = {"unsigned int", "float", "bool", "const char*"};

bool IsText(const FieldValue& value)
{
    return std::holds_alternative<std::string>(value);
}

} // namespace

TEST_CASE("The properties have the order and types of the interface")
{
    const auto card = Make(Same(0, ""));
    REQUIRE_MESSAGE(std::size(contract) == propertyCount,
                    "the list of tests/record/GraphicCardInfoTest.cpp has another number of properties than the record");
    for (size_t i = 0; i < propertyCount; ++i) {
        const CardField& field = cardFields[i];
        CHECK(std::string(typeNames[field.Read(*card).index()]) + " " + field.Name == contract[i]);
    }
}

TEST_CASE("Each getter returns the constructor's argument at its position")
{
    std::array<std::string, propertyCount> texts;
    Arguments arguments;
    for (unsigned int i = 0; i < propertyCount; ++i) {
        texts[i] = "t" + std::to_string(i);
        arguments[i] = {i, texts[i].c_str()};
    }
    const auto card = Make(arguments);
    for (size_t i = 0; i < propertyCount; ++i) {
        const Argument& argument = arguments[i];
        const FieldValue values[] = {argument.Number, static_cast<float>(argument), static_cast<bool>(argument), texts[i]};
        const FieldValue value = cardFields[i].Read(*card);
        CHECK_MESSAGE((value == values[value.index()]), cardFields[i].Name);
    }
}

TEST_CASE("A record copies its texts, byte by byte up to the NUL")
{
    char text[] = "\x01\x7F\x80\xFF card\0hidden";
    const auto card = Make(Same(0, text));
    text[0] = 'x';
    for (const CardField& field : cardFields) {
        const FieldValue value = field.Read(*card);
        CHECK_MESSAGE((!IsText(value) || std::get<std::string>(value) == "\x01\x7F\x80\xFF card"), field.Name);
    }
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations" // the assignment is deprecated
TEST_CASE("An assigned record intentionally shares the source's texts")
{
    const auto source = Make(Same(0, "source"));
    auto target = Make(Same(0, "target"));
    CHECK(&(*target = *source) == target.get());
    CHECK(target->GetCardName() == source->GetCardName());
    (void)target.release(); // both records share their texts, so only one may be destroyed
}
#pragma GCC diagnostic pop

TEST_CASE("A destroyed record's texts are null, and destroying it again releases nothing")
{
    // Only the addresses of the texts are not zero. They are read as bytes, because the object no longer exists.
    alignas(GraphicCardInfo) unsigned char storage[sizeof(GraphicCardInfo)] = {};
    auto* card = Make(storage, Same(0, "text"));
    CHECK(std::count(std::begin(storage), std::end(storage), 0) < std::ssize(storage));
    card->~GraphicCardInfo();
    CHECK(std::count(std::begin(storage), std::end(storage), 0) == std::ssize(storage));
    card->~GraphicCardInfo();
}

TEST_CASE("The destructor of a record releases every text")
{
    const std::string longText(100'000, 'x');
    for (size_t i = 0; i < propertyCount; ++i) {
        Arguments arguments = Same(0, "");
        arguments[i].Text = longText.c_str();
        const size_t before = orvel::tests::HeldNow().HeapBytes;
        Make(arguments).reset();
        CHECK_MESSAGE(orvel::tests::HeldNow().HeapBytes < before + longText.size(), cardFields[i].Name);
    }
}

TEST_CASE("The zero-filling functions of both classes and both compilers are the same function")
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

TEST_CASE("Zero-filling stops at the given size")
{
    alignas(GraphicCardInfo) unsigned char storage[sizeof(GraphicCardInfo)];
    std::memset(storage, 0xAA, sizeof(storage));
    reinterpret_cast<GraphicCardInfo*>(storage)->__autoclassinit2(16);
    CHECK(storage[15] == 0);
    CHECK(storage[16] == 0xAA);
}
