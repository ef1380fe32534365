// A made-up text has a digit where there was a digit, and a letter of the same case where there was a letter. It is made of
// a counter alone, so nothing of the original can be found in it.

#include "Identifiers.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <regex>
#include <set>

namespace orvel::recorder {

namespace {

/// Whose values are serial numbers, or names of monitors, which can be their owner's.
const std::set<std::string> serialKeys = {"SerialNumber", "nvmlDeviceGetSerial", "monitorFriendlyDeviceName"};

constexpr size_t distinctiveLength = 6; // of a serial number that no other text is equal to by chance

/// Uses of a UUID that are the same on every computer, such as the class of display adapters.
const std::set<std::string> publicUuids = {"4d36e968-e325-11ce-bfc1-08002be10318"};

const std::regex uuidPattern("[0-9A-Fa-f]{8}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{12}");

// The instance of a PCI or USB device. With an ampersand Windows has made it from the place in the computer; without, it is
// the device's serial number, which may hold the address of a network card.
const std::regex pciSerialPattern("((?:PCI\\\\VEN_|USB\\\\VID_)[^\\\\]*\\\\)([0-9A-Za-z-]{8,})(?=$|\\\\)",
                                  std::regex::icase);

std::string LowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char letter) { return std::tolower(letter); });
    return text;
}

bool IsPath(const std::string& text)
{
    return text.find(":\\") != std::string::npos || text.starts_with("\\\\");
}

bool IsDistinctive(const std::string& serial)
{
    return serial.size() >= distinctiveLength && serial.find_first_of("0123456789") != std::string::npos;
}

class Replacer {
public:
    Replacer(Json& whole, const std::string& userName) : recording(whole), user(LowerCase(userName)) {}

    void Run()
    {
        FindUuids(recording);
        FindSerials(recording);
        Replace(recording, "", false);
        recording["recorded"]["replaced"] = places;
    }

private:
    void FindUuids(const Json& value);
    void FindSerials(const Json& value);
    void AddSerial(const Json& answer);
    std::string MadeUp(const std::string& form, bool isHexadecimal);

    void Replace(Json& value, const std::string& path, bool isSerial);
    std::string Replaced(const std::string& text, bool isSerial);
    std::string WithoutUuids(const std::string& text);
    std::string WithoutPciSerial(const std::string& text);
    std::string WithoutUser(const std::string& text);
    const std::string& PciSerial(const std::string& text);

    Json& recording;
    std::string user;
    std::map<std::string, std::string> uuids;   ///< in order: registry keys keep theirs
    std::map<std::string, std::string> serials; ///< whole texts
    std::map<std::string, std::string> pciSerials;
    std::vector<std::string> places;
    unsigned made = 0;
};

void Collect(const std::string& text, std::map<std::string, std::string>& uuids)
{
    for (auto match = std::sregex_iterator(text.begin(), text.end(), uuidPattern); match != std::sregex_iterator();
         ++match) {
        const std::string uuid = LowerCase(match->str());
        if (!publicUuids.contains(uuid)) {
            uuids[uuid];
        }
    }
}

void CollectAll(const Json& value, std::map<std::string, std::string>& uuids)
{
    if (value.is_string()) {
        return Collect(value.get_ref<const std::string&>(), uuids);
    }
    if (value.is_object()) {
        for (const auto& member : value.items()) {
            Collect(member.key(), uuids);
        }
    }
    if (value.is_structured()) {
        for (const Json& member : value) {
            CollectAll(member, uuids);
        }
    }
}

/// Numbered in their order, as the registry sorts its keys and the library takes the first that fits.
void Replacer::FindUuids(const Json& value)
{
    CollectAll(value, uuids);
    unsigned number = 0;
    for (auto& [uuid, madeUp] : uuids) {
        char text[40];
        std::snprintf(text, sizeof text, "%08x-0000-4000-8000-000000000000", ++number);
        madeUp = text;
    }
}

/// Different for each call; not the original by chance either.
std::string Replacer::MadeUp(const std::string& form, bool isHexadecimal)
{
    std::string text;
    do {
        text = form;
        unsigned value = ++made;
        for (auto place = text.rbegin(); place != text.rend(); ++place) {
            const auto letter = static_cast<unsigned char>(*place);
            if (!std::isalnum(letter)) {
                continue;
            }
            const unsigned kinds = std::isdigit(letter) ? 10 : isHexadecimal ? 6 : 26;
            const char first = std::isdigit(letter) ? '0' : std::isupper(letter) ? 'A' : 'a';
            *place = static_cast<char>(first + value % kinds);
            value /= kinds;
        }
    } while (text == form && made < 1000); // a text of punctuation has no other form
    return text;
}

void Replacer::AddSerial(const Json& answer)
{
    const Json text = answer.is_object() && answer.contains("value") ? answer["value"] : answer;
    if (text.is_string() && !text.get_ref<const std::string&>().empty()) {
        const std::string serial = text.get<std::string>();
        if (!serials.contains(serial)) {
            serials[serial] = MadeUp(serial, false);
        }
    }
}

void Replacer::FindSerials(const Json& value)
{
    if (value.is_object()) {
        for (const auto& member : value.items()) {
            if (serialKeys.contains(member.key())) {
                AddSerial(member.value());
            }
        }
    }
    if (value.is_structured()) {
        for (const Json& member : value) {
            FindSerials(member);
        }
    }
}

std::string Replacer::WithoutUuids(const std::string& text)
{
    std::string result;
    auto rest = text.begin();
    for (auto match = std::sregex_iterator(text.begin(), text.end(), uuidPattern); match != std::sregex_iterator();
         ++match) {
        const auto known = uuids.find(LowerCase(match->str()));
        result.append(rest, (*match)[0].first);
        result += known == uuids.end() ? match->str() : known->second;
        rest = (*match)[0].second;
    }
    return result.append(rest, text.end());
}

const std::string& Replacer::PciSerial(const std::string& serial)
{
    std::string& madeUp = pciSerials[LowerCase(serial)];
    if (madeUp.empty()) {
        madeUp = MadeUp(serial, true);
    }
    return madeUp;
}

std::string Replacer::WithoutPciSerial(const std::string& text)
{
    std::smatch match;
    if (!std::regex_search(text, match, pciSerialPattern)) {
        return text;
    }
    return match.prefix().str() + match[1].str() + PciSerial(match[2].str()) + match.suffix().str();
}

/// The text without user names: each folder directly below C:\Users is replaced, and the current user's name anywhere.
std::string Replacer::WithoutUser(const std::string& text)
{
    std::string result;
    std::string former;
    for (size_t start = 0; start <= text.size();) {
        const size_t end = std::min(text.find_first_of("\\/", start), text.size());
        const std::string part = text.substr(start, end - start);
        const bool isUser = !part.empty() && (LowerCase(part) == user || former == "users" || former == "home");
        result += isUser ? "user" : part;
        result += text.substr(end, 1);
        former = LowerCase(part);
        start = end + 1;
    }
    return result;
}

std::string Replacer::Replaced(const std::string& text, bool isSerial)
{
    const auto serial = serials.find(text);
    if (serial != serials.end() && (isSerial || IsDistinctive(text))) {
        return serial->second;
    }
    const std::string result = WithoutPciSerial(WithoutUuids(text));
    return IsPath(result) ? WithoutUser(result) : result;
}

std::string Escaped(const std::string& key)
{
    std::string step;
    for (const char letter : key) {
        step += letter == '~' ? "~0" : letter == '/' ? "~1" : std::string(1, letter);
    }
    return step;
}

void Replacer::Replace(Json& value, const std::string& path, bool isSerial)
{
    if (isSerial && value.is_object() && value.contains("hex")) { // no text, so one that says nothing takes its place
        places.push_back(path);
        value = "X";
    } else if (value.is_string()) {
        const std::string text = Replaced(value.get_ref<const std::string&>(), isSerial);
        if (text != value.get_ref<const std::string&>()) {
            places.push_back(path);
            value = text;
        }
    } else if (value.is_array()) {
        for (size_t index = 0; index < value.size(); ++index) {
            Replace(value[index], path + "/" + std::to_string(index), isSerial);
        }
    } else if (value.is_object()) {
        Json members = Json::object();
        for (auto& member : value.items()) {
            const std::string key = Replaced(member.key(), false);
            const std::string memberPath = path + "/" + Escaped(key);
            if (key != member.key()) {
                places.push_back(memberPath);
            }
            Replace(member.value(), memberPath, isSerial || serialKeys.contains(member.key()));
            members[key] = std::move(member.value());
        }
        value = std::move(members);
    }
}

} // namespace

void ReplaceIdentifiers(Json& recording, const std::string& userName)
{
    Replacer(recording, userName).Run();
}

} // namespace orvel::recorder
