#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "model/Properties.h"

namespace orvel::shared::inventory {

/// Whether a value holds, and if not, what kept it.
enum class Status { Known, Unsupported, Unavailable, Failed, NotAsked };

/// Why a value does not hold. Its text is ReasonText.
enum class Reason {
    None,
    NotPresent,     ///< the source's DLL or function is not on this computer
    Missing,        ///< the source has no such value, or an empty text
    Unusable,       ///< type, length or range
    NotInTable,     ///< a number without a known name
    NoDevice,       ///< only DXGI has the card
    NotListed,      ///< the source does not list the card
    CannotTell,     ///< several cards it could belong to
    BelongsToOther, ///< an indirect or remote display shows the card that renders for it
    Linked,         ///< the first of the linked cards has it
    NoLuid,         ///< what it would be matched by
    NotOnPci,
    NotSupported, ///< the source reported that the card does not have it
    NoSource,     ///< no source for this vendor
    VendorUnknown,
    OtherProvider, ///< the driver comes from somebody else
    Refused,
    NoAnswer,     ///< within the limit
    Depth,        ///< the depth leaves the source out
    Asleep,       ///< asking would wake a card
    PowerUnknown, ///< asking might wake a card
    ExtraDevice,  ///< of a source that has answered: it lists a device that is not one of the cards
};

/// One active display. What the system does not give is empty.
struct Display {
    std::optional<std::string> gdiName;
    std::optional<std::string> monitorName;
    std::optional<uint32_t> width;  ///< pixels
    std::optional<uint32_t> height; ///< pixels
    std::optional<uint64_t> refreshMillihertz;
    std::optional<std::string> connector;
    std::optional<bool> primary;

    bool operator==(const Display&) const = default;
};

using Displays = std::vector<Display>;
using Data = std::variant<std::monostate, bool, uint64_t, std::string, Displays>;

/// What one source says about one value.
struct Answer {
    Status status = Status::Unavailable;
    Reason reason = Reason::Missing;
    int64_t code = 0; ///< the source's own number where it has failed
    Data data;        ///< holds something only where the status is Known

    bool operator==(const Answer&) const = default;
};

/// A value that holds: a text of any type, a number, a bool or displays.
template <typename Content>
Answer Known(Content content)
{
    if constexpr (std::is_convertible_v<Content, std::string_view>) {
        return {Status::Known, Reason::None, 0, std::string(std::move(content))};
    } else {
        return {Status::Known, Reason::None, 0, std::move(content)};
    }
}

inline Answer Unavailable(Reason reason)
{
    return {Status::Unavailable, reason, 0, {}};
}

inline Answer Unsupported(Reason reason)
{
    return {Status::Unsupported, reason, 0, {}};
}

inline Answer Failed(int64_t code)
{
    return {Status::Failed, Reason::Refused, code, {}};
}

inline Answer NotAsked(Reason reason)
{
    return {Status::NotAsked, reason, 0, {}};
}

/// The code of a source that has not answered in time: ERROR_TIMEOUT.
inline constexpr int64_t noAnswerCode = 1460;

inline Answer NoAnswer()
{
    return {Status::Failed, Reason::NoAnswer, noAnswerCode, {}};
}

inline bool IsKnown(const Answer& answer)
{
    return answer.status == Status::Known;
}

/// The number of an answer that is one; empty otherwise.
inline std::optional<uint64_t> NumberOf(const Answer& answer)
{
    const auto* number = std::get_if<uint64_t>(&answer.data);
    return number ? std::optional(*number) : std::nullopt;
}

/// The text of an answer that is one; "" otherwise.
inline std::string TextOf(const Answer& answer)
{
    const auto* text = std::get_if<std::string>(&answer.data);
    return text ? *text : std::string();
}

/// What one source says about a card: an answer for each value that it has provided, and one for all others.
struct SourceAnswers {
    Answer otherwise;
    std::map<Property, Answer> answers;

    const Answer& Of(Property property) const
    {
        const auto entry = answers.find(property);
        return entry == answers.end() ? otherwise : entry->second;
    }
};

using AnswersBySource = std::array<SourceAnswers, sourceCount>;

/// A value of a card: the answer that decides, and whose it is.
struct Value : Answer {
    std::optional<Source> source;

    bool operator==(const Value&) const = default;
};

/// A card: one value for each property, in the order of the table.
struct Card {
    std::vector<Value> values;

    const Value& Of(Property property) const { return values[static_cast<std::size_t>(property)]; }
    bool operator==(const Card&) const = default;
};

/// How asking a source has ended. `end` is Known where it has answered, whatever it had to say about single values.
struct SourceReport {
    Source source = Source::SetupApi;
    Answer end;

    bool operator==(const SourceReport&) const = default;
};

} // namespace orvel::shared::inventory
