#include "Replay.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

#include "ReplayCall.h"
#include "platform/Handles.h"
#include "platform/TextEncoding.h"

namespace orvel::bench {

namespace {

using nlohmann::json;

/// The DLLs that the product imports, by their interfaces' names in a recording: it looks up no function of theirs.
const std::map<std::string, const wchar_t*> importedDlls = {
    {"nvml", L"nvml.dll"}, {"dxgi", L"dxgi.dll"}, {"dwm", L"dwmapi.dll"}};

std::vector<Word> NumbersIn(const std::string& text)
{
    std::vector<Word> numbers;
    std::istringstream stream(text);
    for (std::string word; stream >> word;) {
        char* end = nullptr;
        const Word number = std::strtoull(word.c_str(), &end, 0);
        if (*end == '\0') {
            numbers.push_back(number);
        }
    }
    return numbers;
}

} // namespace

Replay::Replay(const json& recording)
{
    for (const json& recorded : recording) {
        calls.push_back(Prepare(recorded));
    }
}

Replay::~Replay() = default;

Call Replay::Prepare(const json& recorded)
{
    const std::string text = recorded.at("call");
    std::string source, function;
    Call call;
    std::getline(std::istringstream(text) >> source >> function >> std::ws, call.Text);
    call.WideText = shared::enumeration::ToUtf16(call.Text);
    call.Numbers = NumbersIn(call.Text);
    call.On = recorded.contains("on") ? std::optional(recorded["on"].get<size_t>()) : std::nullopt;
    call.Returns = recorded.value("returns", std::vector<size_t>());
    call.Number = recorded.value("number", Word{0});
    call.Input = recorded.value("input", std::vector<unsigned char>());
    for (const size_t number : call.Returns) {
        outputs = std::max(outputs, number + 1);
    }
    FindPlaces(source, function, call);
    const bool isFunction = *call.Function || lookedUp.contains(call.Function);
    call.Repeat = FindAction(source + " " + function, text, isFunction);
    if (!call.Repeat) {
        throw std::runtime_error("bench/ReplayCalls.cpp does not know how to repeat \"" + text + "\"");
    }
    return call;
}

void Replay::FindPlaces(const std::string& source, const std::string& function, Call& call)
{
    if (source == "loader") {
        const std::string dll = call.Text.substr(0, call.Text.find(' '));
        call.Module = &modules.try_emplace(dll, ::GetModuleHandleA(dll.c_str())).first->second;
    }
    if (function == "GetProcAddress" || function == "nvapi_QueryInterface") {
        call.LookedUp = &functions[call.Text.substr(call.Text.find(' ') + 1)];
        lookedUp.insert(call.LookedUp);
    }
    call.Function = &functions[function];
    if (const auto dll = importedDlls.find(source); dll != importedDlls.end() && !*call.Function) {
        *call.Function = ::GetProcAddress(::LoadLibraryW(dll->second), function.c_str());
    }
}

void Replay::Run()
{
    Session session;
    session.Outputs.resize(outputs);
    for (const Call& call : calls) {
        call.Repeat(call, session);
    }
}

} // namespace orvel::bench
