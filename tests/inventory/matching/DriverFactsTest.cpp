#include <doctest/doctest.h>

#include "matching/DriverFacts.h"

namespace orvel::shared::inventory {

namespace {

TEST_CASE("NVIDIA's version is the last five digits of the Windows version")
{
    struct Pair {
        const char *windows, *nvidia;
    };
    for (const auto& pair : {
             Pair{"32.0.15.9672", "596.72"},
             Pair{"31.0.15.3161", "531.61"},
             Pair{"9.18.13.4788", "347.88"},
             Pair{"27.21.14.5541", "455.41"},
             Pair{"27.21.14.5671", "456.71"},
             Pair{"30.0.14.7141", "471.41"},
             Pair{"30.0.14.7212", "472.12"},
             Pair{"30.0.14.9709", "497.09"},
             Pair{"31.0.15.3623", "536.23"},
             Pair{"31.0.15.3667", "536.67"},
             Pair{"31.0.15.5222", "552.22"},
             Pair{"32.0.15.6094", "560.94"},
             Pair{"32.0.15.7680", "576.80"},
             Pair{"32.0.15.7688", "576.88"},
             Pair{"32.0.15.8157", "581.57"},
             Pair{"32.0.16.1088", "610.88"},
             Pair{"31.0.15.61", "500.61"},
         }) {
        CAPTURE(pair.windows);
        CHECK(NvidiaDriverVersion(pair.windows) == pair.nvidia);
    }
}

TEST_CASE("A version in another form has no NVIDIA version")
{
    for (const char* windows : {"", "596.72", "32.0.15", "32.0.15.", "32.0.15.96720", "32.0.15.9672.1", "32.0.15.9672 ",
                                "32.0.1x.9672", "32.0..9672", "a.b.c.d", "32.0.15.9672."}) {
        CAPTURE(windows);
        CHECK_FALSE(NvidiaDriverVersion(windows));
    }
}

TEST_CASE("A FILETIME is a date in UTC")
{
    constexpr uint64_t ticksPerDay = 864'000'000'000;
    CHECK(IsoDate(1) == "1601-01-01");
    CHECK(IsoDate(ticksPerDay) == "1601-01-02");
    CHECK(IsoDate(116'444'736'000'000'000) == "1970-01-01"); // the start of Unix time
    CHECK(IsoDate(116'444'736'000'000'000 - 1) == "1969-12-31");
    CHECK(IsoDate(125'963'424'000'000'000) == "2000-03-01"); // 11017 days after 1970
    CHECK(IsoDate(3'067'671 * ticksPerDay - 1) == "9999-12-31");
}

TEST_CASE("A FILETIME of 0, or after the year 9999, is not a date")
{
    CHECK_FALSE(IsoDate(0));
    CHECK_FALSE(IsoDate(3'067'671 * uint64_t{864'000'000'000}));
    CHECK_FALSE(IsoDate(~uint64_t{0}));
}

} // namespace

} // namespace orvel::shared::inventory
