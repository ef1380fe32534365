#include <doctest/doctest.h>

#include "matching/Identifiers.h"

namespace orvel::shared::inventory {

namespace {

TEST_CASE("A PCI id has vendor, device, subsystem and revision")
{
    const auto full = IdentifiersIn("PCI\\VEN_10DE&DEV_2504&SUBSYS_40741458&REV_A1\\4&0&1");
    CHECK(full == Identifiers{0x10DE, 0x2504, 0x40741458, 0xA1});
    CHECK(IdentifiersIn("pci\\ven_10de&dev_2504") == Identifiers{0x10DE, 0x2504, {}, {}});
    CHECK(IdentifiersIn("PCI\\VEN_0000&DEV_0000&SUBSYS_00000000&REV_00\\00000000") == Identifiers{0, 0, 0, 0});
}

TEST_CASE("An ACPI id has the numbers whose bytes are the id's letters")
{
    CHECK(IdentifiersIn("ACPI\\VEN_QCOM&DEV_0C36") == Identifiers{0x4D4F4351, 0x36334330, {}, {}});
    CHECK(IdentifiersIn("ACPI\\QCOM0C36\\2&DABA3FF&0") == Identifiers{0x4D4F4351, 0x36334330, {}, {}});
    CHECK(IdentifiersIn("ACPI\\QCOM0C36") == Identifiers{0x4D4F4351, 0x36334330, {}, {}});
}

TEST_CASE("An id in another form has no identifiers")
{
    for (const char* id : {"", "PCI", "PCI\\", "PCI\\VEN_10DE", "PCI\\VEN_10D&DEV_2504", "PCI\\VEN_10DE&DEV_25",
                           "PCI\\VEN_XXXX&DEV_2504", "PCI\\VEN_-10D&DEV_2504", "ACPI\\PNP0C02", "ACPI\\VEN_Q-OM&DEV_0C36",
                           "ROOT\\VEN_10DE&DEV_2504", "USB\\VID_17E9&PID_6000", "ROOT\\DISPLAY\\0000"}) {
        CAPTURE(id);
        CHECK_FALSE(IdentifiersIn(id));
    }
}

TEST_CASE("Of several ids, the first with identifiers is used")
{
    CHECK(IdentifiersIn(std::vector<std::string>{"ROOT\\X", "PCI\\VEN_1002&DEV_744C&REV_C8", "PCI\\VEN_8086&DEV_56A0"}) ==
          Identifiers{0x1002, 0x744C, {}, 0xC8});
    CHECK_FALSE(IdentifiersIn(std::vector<std::string>{}));
}

TEST_CASE("The bus is the text before the first backslash")
{
    CHECK(EnumeratorOf("PCI\\VEN_10DE&DEV_2504") == "PCI");
    CHECK(EnumeratorOf("Root\\DISPLAY\\0000") == "ROOT");
    CHECK(EnumeratorOf("MS_DTVMON") == "MS_DTVMON");
    CHECK(EnumeratorOf("") == "");
}

TEST_CASE("Identifiers match if vendor, device, and every optional part that both have are equal")
{
    const Identifiers card{0x10DE, 0x2504, 0x40741458, 0xA1};
    CHECK(Agree(card, card));
    CHECK(Agree(card, {0x10DE, 0x2504, {}, {}}));
    CHECK(Agree({0x10DE, 0x2504, {}, 0xA1}, card));
    CHECK_FALSE(Agree(card, {0x1002, 0x2504, 0x40741458, 0xA1}));
    CHECK_FALSE(Agree(card, {0x10DE, 0x2505, 0x40741458, 0xA1}));
    CHECK_FALSE(Agree(card, {0x10DE, 0x2504, 0x40741459, 0xA1}));
    CHECK_FALSE(Agree(card, {0x10DE, 0x2504, 0x40741458, 0xA2}));
    CHECK_FALSE(Agree(card, {0x10DE, {}, {}, {}}));
    CHECK_FALSE(Agree({}, {}));
}

} // namespace

} // namespace orvel::shared::inventory
