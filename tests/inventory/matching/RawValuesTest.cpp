#include "Print.h"

#include "Readings.h"
#include "matching/RawValues.h"

namespace orvel::shared::inventory {

namespace {

const auto unusable = Unavailable(Reason::Unusable);
const auto missing = Unavailable(Reason::Missing);

TEST_CASE("A missing value is unavailable, a value that cannot be read has failed")
{
    CHECK(ErrorAnswer(1168) == missing);
    CHECK(ErrorAnswer(2) == missing);
    CHECK(ErrorAnswer(5) == Failed(5));
    for (const auto read : {&PropertyText, &PropertyNumber, &PropertyLongNumber, &RegistryMemorySize}) {
        CHECK(read(Refused(1168)) == missing);
        CHECK(read(Refused(5)) == Failed(5));
    }
    CHECK(RegistryTextValue(Refused(5)) == Failed(5));
    CHECK(DateOf(Refused(5), types::propertyFileTime) == Failed(5));
}

TEST_CASE("A text ends at its first NUL, and an empty text is unavailable")
{
    CHECK(PropertyText(PropertyOf(u"WUDFRd")) == Known("WUDFRd"));
    CHECK(PropertyText(PropertyOf(std::u16string_view(u"WUDFRd\0x", 8))) == Known("WUDFRd"));
    CHECK(PropertyText(PropertyOf(u"")) == missing);
    CHECK(PropertyText({0, types::propertyString, {}}) == missing);
    CHECK(PropertyText({0, types::propertyString, {'a', 0, 'b'}}) == Known("a")); // half a character at the end
    CHECK(PropertyText({0, types::propertyBinary, {'a', 0}}) == unusable);
}

TEST_CASE("A list of texts contains the texts that are not empty")
{
    std::vector<std::string> texts;
    CHECK(PropertyTexts(PropertyOf(std::vector<std::u16string>{u"one", u"two"}), texts) == Known(true));
    CHECK(texts == std::vector<std::string>{"one", "two"});
    texts.clear();
    CHECK(PropertyTexts(PropertyOf(std::vector<std::u16string>{}), texts) == missing);
    CHECK(PropertyTexts({0, types::propertyStringList, {'a', 0}}, texts) == Known(true)); // without the final NUL
    CHECK(texts == std::vector<std::string>{"a"});
    CHECK(PropertyTexts(PropertyOf(u"one"), texts) == unusable);
}

TEST_CASE("A 32-bit number may be signed or unsigned, and has four bytes")
{
    CHECK(PropertyNumber(NumberProperty(0xFFFFFFFE)) == Known(uint64_t{0xFFFFFFFE}));
    CHECK(PropertyNumber({0, types::propertyInt32, {1, 0, 0, 0}}) == Known(uint64_t{1}));
    CHECK(PropertyNumber({0, types::propertyUint32, {1, 0}}) == unusable);
    CHECK(PropertyNumber(LongProperty(1)) == unusable);
    CHECK(PropertyNumber(PropertyOf(u"1")) == unusable);
}

TEST_CASE("A 64-bit number keeps all of its bits")
{
    CHECK(PropertyLongNumber(LongProperty(0x123456789ABCDEF0)) == Known(uint64_t{0x123456789ABCDEF0}));
    CHECK(PropertyLongNumber({0, types::propertyInt64, BytesOf(7, 8)}) == Known(uint64_t{7}));
    CHECK(PropertyLongNumber(NumberProperty(1)) == unusable);
    CHECK(PropertyLongNumber({0, types::propertyUint64, BytesOf(7, 4)}) == unusable);
}

TEST_CASE("A registry text may be of type text, and of type binary only for values that use both")
{
    const auto text = RegistryOf(u"94.06.25.00.68");
    CHECK(RegistryTextValue(text) == Known("94.06.25.00.68"));
    CHECK(RegistryTextValue(RegistryBytes(types::registryBinary, text.bytes), true) == Known("94.06.25.00.68"));
    CHECK(RegistryTextValue(RegistryBytes(types::registryBinary, text.bytes)) == unusable);
    CHECK(RegistryTextValue(RegistryBytes(4, {1, 0, 0, 0}), true) == unusable);
    CHECK(RegistryTextValue(RegistryOf(u"")) == missing);
}

TEST_CASE("A memory size is read according to its length, and 0 is unavailable")
{
    constexpr uint64_t bytes = 24 * gibibyte;
    constexpr uint32_t binary = 3, dword = 4, qword = 11;
    CHECK(RegistryMemorySize(RegistryBytes(qword, BytesOf(bytes, 8))) == Known(bytes));
    CHECK(RegistryMemorySize(RegistryBytes(binary, BytesOf(bytes, 8))) == Known(bytes));
    CHECK(RegistryMemorySize(RegistryBytes(binary, BytesOf(gibibyte, 4))) == Known(gibibyte));
    CHECK(RegistryMemorySize(RegistryBytes(dword, BytesOf(gibibyte, 4))) == Known(gibibyte));
    CHECK(RegistryMemorySize(RegistryBytes(qword, BytesOf(0, 8))) == unusable);
    CHECK(RegistryMemorySize(RegistryBytes(binary, BytesOf(bytes, 6))) == unusable);
    CHECK(RegistryMemorySize(RegistryBytes(binary, {})) == unusable);
    CHECK(RegistryMemorySize(RegistryBytes(1, BytesOf(bytes, 8))) == unusable);
}

TEST_CASE("A date is read from eight bytes that are a FILETIME")
{
    constexpr uint64_t day = 133'912'224'000'000'000;
    CHECK(DateOf(FileTimeProperty(day), types::propertyFileTime) == Known("2025-05-09"));
    CHECK(DateOf(RegistryBytes(types::registryBinary, BytesOf(day, 8)), types::registryBinary) == Known("2025-05-09"));
    CHECK(DateOf(FileTimeProperty(0), types::propertyFileTime) == unusable);
    CHECK(DateOf(RegistryOf(u"5-9-2025"), types::registryBinary) == unusable);
    CHECK(DateOf(RegistryBytes(types::registryBinary, BytesOf(day, 7)), types::registryBinary) == unusable);
}

} // namespace

} // namespace orvel::shared::inventory
