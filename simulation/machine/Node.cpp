#include "machine/Node.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>

#include <nlohmann/json.hpp>

#include "machine/Bytes.h"

namespace orvel::simulation {

namespace {

struct WholeNumber {
    bool negative = false;
    uint64_t bits = 0;
};

/// The key as part of a path: the two characters that have a meaning there are escaped as JSON pointers do it.
std::string AsStep(const std::string& key)
{
    std::string step = "/";
    for (const char letter : key) {
        if (letter == '~') {
            step += "~0";
        } else if (letter == '/') {
            step += "~1";
        } else {
            step += letter;
        }
    }
    return step;
}

std::optional<WholeNumber> ParseWhole(std::string_view text)
{
    WholeNumber number;
    number.negative = text.starts_with('-');
    text.remove_prefix(number.negative ? 1 : 0);
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    text.remove_prefix(hexadecimal ? 2 : 0);
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number.bits, hexadecimal ? 16 : 10);
    if (error != std::errc() || stop != end || number.bits > (number.negative ? uint64_t{1} << 63 : UINT64_MAX)) {
        return std::nullopt;
    }
    if (number.negative) {
        number.bits = 0 - number.bits;
    }
    return number;
}

std::optional<WholeNumber> WholeOf(const nlohmann::json& json)
{
    if (json.is_string()) {
        return ParseWhole(json.get_ref<const std::string&>());
    }
    if (json.is_number_unsigned()) {
        return WholeNumber{false, json.get<uint64_t>()};
    }
    if (json.is_number_integer()) {
        return WholeNumber{json.get<int64_t>() < 0, static_cast<uint64_t>(json.get<int64_t>())};
    }
    return std::nullopt;
}

std::string Listed(const Fields& fields)
{
    std::string list;
    for (const auto& [key, read] : fields) {
        list += (list.empty() ? "\"" : ", \"") + key + "\"";
    }
    return list.empty() ? "none" : list;
}

std::string TypeOf(const nlohmann::json& json)
{
    return json.is_boolean() ? (json.get<bool>() ? "true" : "false") : json.is_string() ? "a text" : json.type_name();
}

/// A number, or an object with the number as "status" and the fields of `more`.
void ReadStatus(const Node& node, Status& target, Fields more)
{
    target.given = true;
    const ReadField readCode = [&target](const Node& code) { target.code = code.StatusCode(); };
    if (!node.IsObject()) {
        return readCode(node);
    }
    more.emplace(more.begin(), "status", readCode);
    node.ReadFields(more);
}

} // namespace

Node::Node(const nlohmann::json& value, std::string pathToValue) : json(&value), path(std::move(pathToValue)) {}

void Node::Refuse(const std::string& reason) const
{
    throw MachineError((path.empty() ? "/" : path) + ": " + reason);
}

void Node::ReadFields(const Fields& fields) const
{
    for (const auto& [key, member] : Members()) {
        const auto field = std::ranges::find(fields, key, &Fields::value_type::first);
        if (field == fields.end()) {
            member.Refuse("unknown key \"" + key + "\"; known here: " + Listed(fields));
        }
        field->second(member);
    }
}

std::vector<Node> Node::Elements() const
{
    if (!json->is_array()) {
        Refuse("expected an array, found " + TypeOf(*json));
    }
    std::vector<Node> elements;
    for (size_t index = 0; index < json->size(); ++index) {
        elements.emplace_back((*json)[index], path + "/" + std::to_string(index));
    }
    return elements;
}

std::vector<std::pair<std::string, Node>> Node::Members() const
{
    if (!json->is_object()) {
        Refuse("expected an object, found " + TypeOf(*json));
    }
    std::vector<std::pair<std::string, Node>> members;
    for (const auto& [key, value] : json->items()) {
        members.emplace_back(key, Node(value, path + AsStep(key)));
    }
    return members;
}

bool Node::IsNull() const
{
    return json->is_null();
}

bool Node::IsText() const
{
    return json->is_string();
}

bool Node::IsFlag() const
{
    return json->is_boolean();
}

bool Node::IsNumber() const
{
    return json->is_number();
}

bool Node::IsArray() const
{
    return json->is_array();
}

bool Node::IsObject() const
{
    return json->is_object();
}

bool Node::HasKey(const char* key) const
{
    return json->is_object() && json->contains(key);
}

std::string Node::Text() const
{
    if (!json->is_string()) {
        Refuse("expected a text, found " + TypeOf(*json));
    }
    return json->get<std::string>();
}

bool Node::Flag() const
{
    if (!json->is_boolean()) {
        Refuse("expected true or false, found " + TypeOf(*json));
    }
    return json->get<bool>();
}

double Node::Real() const
{
    if (!json->is_number()) {
        Refuse("expected a number, found " + TypeOf(*json));
    }
    return json->get<double>();
}

uint64_t Node::Whole(int64_t lowest, uint64_t highest) const
{
    const auto number = WholeOf(*json);
    if (!number) {
        Refuse("expected a whole number, found " + (json->is_primitive() ? json->dump() : TypeOf(*json)));
    }
    const bool isHighEnough =
        static_cast<int64_t>(number->bits) >= lowest || (!number->negative && number->bits > INT64_MAX);
    if (!isHighEnough || (!number->negative && number->bits > highest)) {
        Refuse("the number must lie between " + std::to_string(lowest) + " and " + std::to_string(highest));
    }
    return number->bits;
}

int32_t Node::StatusCode() const
{
    return static_cast<int32_t>(Whole(std::numeric_limits<int32_t>::min(), std::numeric_limits<uint32_t>::max()));
}

void ReadInto(const Node& node, bool& target)
{
    target = node.Flag();
}

void ReadInto(const Node& node, int32_t& target)
{
    target = node.StatusCode();
}

void ReadInto(const Node& node, uint32_t& target)
{
    target = static_cast<uint32_t>(node.Whole(0, std::numeric_limits<uint32_t>::max()));
}

void ReadInto(const Node& node, uint64_t& target)
{
    target = node.Whole(0, std::numeric_limits<uint64_t>::max());
}

void ReadInto(const Node& node, std::string& target)
{
    if (!node.IsObject()) {
        target = node.Text();
        return;
    }
    const auto readBytes = [&target](const Node& digits) {
        const auto bytes = BytesOf(digits);
        target.assign(bytes.begin(), bytes.end());
    };
    node.ReadFields({{"hex", readBytes}});
}

void ReadInto(const Node& node, Status& target)
{
    ReadStatus(node, target, {});
}

void ReadInto(const Node& node, OutputStatus& target)
{
    ReadStatus(node, target, {{"writes", [&target](const Node& way) { ReadWrites(way, target.writes, false); }}});
}

void ReadWrites(const Node& node, Writes& target, bool isText)
{
    const std::string way = node.Text();
    if (way == "nothing") {
        target = Writes::Nothing;
    } else if (way == "rubbish") {
        target = Writes::Rubbish;
    } else if (way == "unterminated" && isText) {
        target = Writes::Unterminated;
    } else {
        node.Refuse(std::string("expected \"nothing\"") +
                    (isText ? ", \"rubbish\" or \"unterminated\"" : " or \"rubbish\"") + ", found \"" + way + "\"");
    }
}

ReadField NamesInto(std::vector<std::string>& target, const std::vector<std::string>& known)
{
    return [&](const Node& node) {
        for (const Node& element : node.Elements()) {
            target.push_back(element.Text());
            if (std::ranges::find(known, target.back()) == known.end()) {
                element.Refuse("unknown name \"" + target.back() + "\"");
            }
        }
    };
}

} // namespace orvel::simulation
