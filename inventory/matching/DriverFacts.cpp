#include "matching/DriverFacts.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

namespace orvel::shared::inventory {

namespace {

/// The fields of a version; empty unless it is four decimal numbers.
std::optional<std::array<std::string_view, 4>> FieldsOf(std::string_view version)
{
    std::array<std::string_view, 4> fields;
    for (auto& field : fields) {
        const bool isLast = &field == &fields.back();
        field = version.substr(0, isLast ? version.size() : version.find('.'));
        const bool isNumber =
            std::all_of(field.begin(), field.end(), [](char digit) { return digit >= '0' && digit <= '9'; });
        if (field.empty() || !isNumber) {
            return {};
        }
        version.remove_prefix(std::min(field.size() + 1, version.size()));
    }
    return fields;
}

} // namespace

std::optional<std::string> NvidiaDriverVersion(std::string_view windowsVersion)
{
    const auto fields = FieldsOf(windowsVersion);
    if (!fields || (*fields)[3].size() > 4) {
        return {};
    }
    const auto& [first, second, third, last] = *fields;
    std::string digits(1, third.back());
    digits.append(4 - last.size(), '0').append(last);
    digits.insert(3, 1, '.');
    return digits;
}

std::optional<std::string> IsoDate(uint64_t fileTime)
{
    constexpr uint64_t ticksPerDay = 864'000'000'000;
    constexpr uint64_t dayAfterYear9999 = 3'067'671; // counted from 1601-01-01
    const uint64_t day = fileTime / ticksPerDay;
    if (fileTime == 0 || day >= dayAfterYear9999) {
        return {};
    }
    using namespace std::chrono;
    const year_month_day date = sys_days(year(1601) / January / 1) + days(static_cast<int>(day));
    char text[16];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()));
    return std::string(text);
}

} // namespace orvel::shared::inventory
