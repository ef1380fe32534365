#pragma once

#include <array>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "machine/Answer.h"

namespace orvel::simulation {

/// Thrown for an invalid machine; the text is "JSON PATH: REASON".
class MachineError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Node;

/// Reads the value of one key.
using ReadField = std::function<void(const Node&)>;

/// The keys that an object may have, each with its reader.
using Fields = std::vector<std::pair<std::string, ReadField>>;

/// A position in a machine's JSON: the value and its path. Every reader throws MachineError for a value that does not fit.
class Node {
public:
    Node(const nlohmann::json& value, std::string path);

    [[noreturn]] void Refuse(const std::string& reason) const;

    /// Reads the object key by key; for a key without a reader, the error lists the keys that have one.
    void ReadFields(const Fields& fields) const;

    /// The elements of an array.
    std::vector<Node> Elements() const;

    /// The members of an object with arbitrary keys.
    std::vector<std::pair<std::string, Node>> Members() const;

    bool IsNull() const;
    bool IsText() const;
    bool IsFlag() const;
    bool IsNumber() const;
    bool IsArray() const;
    bool IsObject() const;
    bool HasKey(const char* key) const;

    std::string Text() const;
    bool Flag() const;
    double Real() const;

    /// A whole number, also one written as text ("-1", "0x80041010"), as its 64 bits. It must be in the range from lowest to
    /// highest.
    uint64_t Whole(int64_t lowest, uint64_t highest) const;

    /// A status: 32 bits, signed or unsigned.
    int32_t StatusCode() const;

private:
    const nlohmann::json* json;
    std::string path;
};

void ReadInto(const Node& node, bool& target);
void ReadInto(const Node& node, int32_t& target);
void ReadInto(const Node& node, uint32_t& target);
void ReadInto(const Node& node, uint64_t& target);
/// A text, or {"hex": digits} with its bytes, which need not be UTF-8.
void ReadInto(const Node& node, std::string& target);

/// A number, or {"status": number}.
void ReadInto(const Node& node, Status& target);

/// The same, with "writes" beside the status.
void ReadInto(const Node& node, OutputStatus& target);

/// "nothing" or "rubbish", and for a text "unterminated".
void ReadWrites(const Node& node, Writes& target, bool isText);

/// The reader for an array of function names, all of which must be in `known`.
ReadField NamesInto(std::vector<std::string>& target, const std::vector<std::string>& known);

template <typename Element>
void ReadInto(const Node& node, std::vector<Element>& target);
template <typename Value>
void ReadInto(const Node& node, Answer<Value>& target);

/// An answer whose bare number is a status rather than a value.
template <typename Value>
void ReadWithBareStatus(const Node& node, Answer<Value>& target)
{
    if (node.IsObject() || node.IsArray()) {
        return ReadInto(node, target);
    }
    target.given = true;
    target.status = node.StatusCode();
}

/// An array of exactly Length elements; the error for another length contains `expected`.
template <typename Element, size_t Length>
void ReadInto(const Node& node, std::array<Element, Length>& target, const char* expected)
{
    const auto elements = node.Elements();
    if (elements.size() != Length) {
        node.Refuse(expected);
    }
    for (size_t index = 0; index < Length; ++index) {
        ReadInto(elements[index], target[index]);
    }
}

/// The reader that fills `target`.
template <typename Target>
ReadField Into(Target& target)
{
    return [&target](const Node& node) { ReadInto(node, target); };
}

template <typename Element>
void ReadInto(const Node& node, std::vector<Element>& target)
{
    for (const Node& element : node.Elements()) {
        ReadInto(element, target.emplace_back());
    }
}

template <typename Value>
void ReadInto(const Node& node, Answer<Value>& target)
{
    target.given = true;
    const ReadField readValue = [&target](const Node& value) { ReadInto(value, target.value.emplace()); };
    if (!node.HasKey("status")) {
        return readValue(node);
    }
    node.ReadFields({
        {"status", [&target](const Node& status) { target.status = status.StatusCode(); }},
        {"value", readValue},
        {"writes", [&target](const Node& way) { ReadWrites(way, target.writes, std::is_same_v<Value, std::string>); }},
    });
    if (target.writes == Writes::Unterminated && !target.value) {
        node.Refuse("\"unterminated\" needs a value");
    }
}

} // namespace orvel::simulation
