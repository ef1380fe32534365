#include "matching/Identifiers.h"

#include <algorithm>
#include <charconv>

namespace orvel::shared::inventory {

namespace {

std::string UpperCase(std::string_view text)
{
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    return upper;
}

/// The characters behind a name; empty when there are not that many.
std::string_view Behind(std::string_view id, std::string_view name, std::size_t count)
{
    const auto position = id.find(name);
    if (position == std::string_view::npos) {
        return {};
    }
    const auto text = id.substr(position + name.size(), count);
    return text.size() == count ? text : std::string_view();
}

std::optional<uint32_t> Hexadecimal(std::string_view digits)
{
    uint32_t number = 0;
    const auto* end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, number, 16);
    return !digits.empty() && result.ec == std::errc() && result.ptr == end ? std::optional(number) : std::nullopt;
}

/// The number whose bytes in memory are these four letters or digits.
std::optional<uint32_t> FourCharacters(std::string_view text)
{
    const auto isPart = [](char each) { return (each >= 'A' && each <= 'Z') || (each >= '0' && each <= '9'); };
    if (text.size() != 4 || !std::all_of(text.begin(), text.end(), isPart)) {
        return {};
    }
    uint32_t number = 0;
    for (auto each = text.rbegin(); each != text.rend(); ++each) {
        number = number << 8 | static_cast<unsigned char>(*each);
    }
    return number;
}

Identifiers PciIdentifiers(std::string_view id)
{
    return {Hexadecimal(Behind(id, "VEN_", 4)), Hexadecimal(Behind(id, "DEV_", 4)), Hexadecimal(Behind(id, "SUBSYS_", 8)),
            Hexadecimal(Behind(id, "REV_", 2))};
}

Identifiers AcpiIdentifiers(std::string_view id)
{
    if (id.find("VEN_") != std::string_view::npos) {
        return {FourCharacters(Behind(id, "VEN_", 4)), FourCharacters(Behind(id, "DEV_", 4)), {}, {}};
    }
    const auto name = id.substr(0, id.find('\\'));
    if (name.size() != 8) {
        return {};
    }
    return {FourCharacters(name.substr(0, 4)), FourCharacters(name.substr(4)), {}, {}};
}

} // namespace

std::string EnumeratorOf(std::string_view id)
{
    return UpperCase(id.substr(0, id.find('\\')));
}

std::optional<Identifiers> IdentifiersIn(std::string_view id)
{
    const auto enumerator = EnumeratorOf(id);
    const auto rest = UpperCase(id.substr(std::min(enumerator.size() + 1, id.size())));
    Identifiers identifiers;
    if (enumerator == "PCI") {
        identifiers = PciIdentifiers(rest);
    } else if (enumerator == "ACPI") {
        identifiers = AcpiIdentifiers(rest);
    }
    return identifiers.vendor && identifiers.device ? std::optional(identifiers) : std::nullopt;
}

std::optional<Identifiers> IdentifiersIn(const std::vector<std::string>& ids)
{
    for (const auto& id : ids) {
        if (auto identifiers = IdentifiersIn(id)) {
            return identifiers;
        }
    }
    return {};
}

bool Agree(const Identifiers& left, const Identifiers& right)
{
    const auto agree = [](const auto& one, const auto& other) { return !one || !other || *one == *other; };
    return left.vendor && left.device && left.vendor == right.vendor && left.device == right.device &&
           agree(left.subsystem, right.subsystem) && agree(left.revision, right.revision);
}

} // namespace orvel::shared::inventory
