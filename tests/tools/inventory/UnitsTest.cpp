#include "inventory/Units.h"

#include <cstdint>

#include <doctest/doctest.h>

using namespace orvel::tools;

TEST_CASE("Bytes are shown in the largest unit, with one decimal")
{
    CHECK(BytesText(0) == "0 bytes");
    CHECK(BytesText(1023) == "1023 bytes");
    CHECK(BytesText(1024) == "1 KiB");
    CHECK(BytesText(134'217'728) == "128 MiB");
    CHECK(BytesText(25'769'803'776) == "24 GiB");
    CHECK(BytesText(8'452'374'528) == "7.9 GiB"); // 7.872
    CHECK(BytesText(1'099'511'627'776) == "1 TiB");
    CHECK(BytesText(UINT64_MAX) == "16 EiB"); // 15.9999… is rounded
}

TEST_CASE("Clocks from 1000 MHz on are shown in GHz")
{
    CHECK(MegahertzText(0) == "0 MHz");
    CHECK(MegahertzText(999) == "999 MHz");
    CHECK(MegahertzText(1000) == "1 GHz");
    CHECK(MegahertzText(2520) == "2.52 GHz");
    CHECK(MegahertzText(2475) == "2.48 GHz"); // a half is rounded up
    CHECK(MegahertzText(10'501) == "10.5 GHz");
}

TEST_CASE("Refresh rates have at most two decimals")
{
    CHECK(RefreshText(60'000) == "60 Hz");
    CHECK(RefreshText(59'940) == "59.94 Hz");
    CHECK(RefreshText(143'981) == "143.98 Hz");
    CHECK(RefreshText(0) == "0 Hz");
    CHECK(ThousandthsText(59'951) == "59.951");
    CHECK(ThousandthsText(5) == "0.005");
}

TEST_CASE("Identifiers are shown with four digits, and ACPI identifiers as letters")
{
    CHECK(IdentifierText(0) == "0000");
    CHECK(IdentifierText(0x10DE) == "10DE");
    CHECK(IdentifierText(0x4D4F4351) == "QCOM");
    CHECK(IdentifierText(0x10000001) == "10000001"); // not printable
    CHECK(IdentifierText(0x123456789A) == "123456789A");
}

TEST_CASE("An HRESULT is shown in hexadecimal, any other code in decimal")
{
    CHECK(CodeText(1460) == "1460");
    CHECK(CodeText(-104) == "-104");
    CHECK(CodeText(0x887A0004) == "0x887A0004");
    CHECK(CodeText(0x100000000) == "4294967296");
}

TEST_CASE("A text cannot control a terminal")
{
    CHECK(PrintableText("Radeon\xC2\xAE RX \xE2\x9C\x93") == "Radeon\xC2\xAE RX \xE2\x9C\x93");
    CHECK(PrintableText("a\x1B[2Jb\nc\x7F") == "a\xEF\xBF\xBD[2Jb\xEF\xBF\xBD"
                                               "c\xEF\xBF\xBD");
    CHECK(PrintableText("\xC2\x9B"
                        "2J") == "\xEF\xBF\xBD"
                                 "2J"); // the single character that begins a control sequence
}
