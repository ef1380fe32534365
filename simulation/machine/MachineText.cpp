#include "machine/MachineText.h"

#include <algorithm>
#include <set>
#include <string_view>

#include <nlohmann/json.hpp>

#include "machine/Node.h"

namespace orvel::simulation {

namespace {

using Json = nlohmann::json;

/// Refuses a key that occurs twice in one object. It runs during parsing, because the parsed JSON only has the last of the
/// two.
class DuplicateGuard {
public:
    void See(Json::parse_event_t event, const Json& parsed)
    {
        if (event == Json::parse_event_t::key) {
            EnterKey(parsed.get<std::string>());
        } else if (event == Json::parse_event_t::object_start || event == Json::parse_event_t::array_start) {
            levels.push_back({event == Json::parse_event_t::array_start, 0, {}, {}});
        } else {
            Leave(event);
        }
    }

private:
    struct Level {
        bool isArray;
        size_t index;
        std::string key;
        std::set<std::string> keys;
    };

    void EnterKey(const std::string& key)
    {
        levels.back().key = key;
        if (!levels.back().keys.insert(key).second) {
            throw MachineError(Path() + ": the key \"" + key + "\" is repeated");
        }
    }

    void Leave(Json::parse_event_t event)
    {
        if (event != Json::parse_event_t::value) {
            levels.pop_back();
        }
        if (!levels.empty() && levels.back().isArray) {
            ++levels.back().index;
        }
    }

    std::string Path() const
    {
        std::string path;
        for (const Level& level : levels) {
            path += "/" + (level.isArray ? std::to_string(level.index) : level.key);
        }
        return path;
    }

    std::vector<Level> levels;
};

std::string PlaceOf(const std::string& text, size_t byte)
{
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(byte == 0 ? 0 : byte - 1, text.size()));
    const auto line = 1 + std::count(text.begin(), end, '\n');
    const auto lineStart = std::find(std::make_reverse_iterator(end), text.rend(), '\n').base();
    return "line " + std::to_string(line) + ", column " + std::to_string(1 + (end - lineStart));
}

/// The part of the parser's message after `mark`, which ends its classification and position.
std::string WordsBehind(const char* mark, const Json::exception& error)
{
    const std::string words = error.what();
    const size_t start = words.find(mark);
    return start == std::string::npos ? words : words.substr(start + std::string_view(mark).size());
}

std::string ReasonOf(const Json::parse_error& error)
{
    const std::string words = WordsBehind("column ", error);
    const size_t start = words.find(": ");
    return start == std::string::npos ? words : words.substr(start + 2);
}

Json Parse(const std::string& text)
{
    DuplicateGuard guard;
    try {
        return Json::parse(text, [&guard](int, Json::parse_event_t event, Json& parsed) {
            guard.See(event, parsed);
            return true;
        });
    } catch (const Json::parse_error& error) {
        throw MachineError(PlaceOf(text, error.byte) + ": " + ReasonOf(error));
    } catch (const Json::exception& error) { // a number that fits no type
        throw MachineError("/: " + WordsBehind("] ", error));
    }
}

} // namespace

Machine ReadMachine(const std::string& text)
{
    const Json json = Parse(text);
    Machine machine;
    ReadInto(Node(json, ""), machine);
    return machine;
}

} // namespace orvel::simulation
