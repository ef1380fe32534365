#pragma once

#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace orvel::recorder {

/// Keeps the order in which keys are added: the recording reads like the machine files of the project.
using Json = nlohmann::ordered_json;

/// A driver's text: as it is, or {"hex": bytes} where it is not UTF-8.
Json Text(std::string_view bytes);

/// UTF-16 text. Halves of surrogate pairs become replacement characters.
Json Text(std::wstring_view text);

/// UTF-16 text: as it is, or {"hex": bytes} where it has halves of surrogate pairs.
Json WideText(std::wstring_view text);

/// The text of data that is UTF-16 with one NUL, at its end; nothing where that would not say all about the data.
std::optional<std::string> PlainText(const std::vector<unsigned char>& data);

/// Pairs of hexadecimal digits.
std::string Hex(const unsigned char* data, size_t bytes);

/// What a call answered: the value where it succeeded (status 0); otherwise the status, with the value if the failed call
/// has written one.
Json Answer(int32_t status, const Json& value, bool isWritten = false);

/// The same for a text in a buffer that the driver fills: up to its NUL. A text without one is marked. What a failed call
/// has written is no text.
Json TextAnswer(int32_t status, const char* buffer, size_t capacity);

/// Calls for a text of this capacity, with a buffer of zeros as the library has it. A call that succeeds and seems to write
/// no letter is made again with another content, to see whether it writes anything at all.
template <size_t Capacity, typename Call>
Json RecordTextOf(Call call)
{
    char buffer[Capacity] = {};
    const int32_t status = call(&buffer[0]);
    if (status != 0 || buffer[0] != '\0') {
        return TextAnswer(status, buffer, Capacity);
    }
    char marked[Capacity];
    std::memset(marked, '?', Capacity);
    const bool isWritten = call(&marked[0]) != 0 || marked[0] != '?';
    return isWritten ? Json("") : Json{{"status", 0}, {"writes", "nothing"}};
}

/// Calls for a number. A call that succeeds and seems to write nothing is made again, to see whether it does.
template <typename Number, typename Call>
Json RecordNumberOf(Call call)
{
    constexpr Number mark = std::numeric_limits<Number>::max();
    Number number = mark;
    const int32_t status = call(&number);
    if (status == 0 && number == mark) {
        number = 0;
        call(&number);
        return number == 0 ? Json{{"status", 0}, {"writes", "nothing"}} : Json(number);
    }
    return Answer(status, number);
}

/// What a call answered that returns an object.
Json ObjectAnswer(int32_t status, bool isSuccess, const void* object);

} // namespace orvel::recorder
