#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include <windows.h>

#include <nlohmann/json.hpp>

namespace orvel::bench {

struct Call;

/// Repeats the platform calls of a recording, directly on the interfaces.
///
/// Texts and numbers come from the recording, handles and objects from the repeated calls that return them.
class Replay {
public:
    /// Prepares the calls that OrvelEndRecording returned. The recorded machine must be in place. Throws std::runtime_error
    /// if it does not know how to repeat a call.
    explicit Replay(const nlohmann::json& recording);
    Replay(const Replay&) = delete;
    Replay& operator=(const Replay&) = delete;
    ~Replay();

    void Run();

private:
    Call Prepare(const nlohmann::json& recorded);
    void FindPlaces(const std::string& source, const std::string& function, Call& call);

    std::vector<Call> calls;
    std::map<std::string, FARPROC> functions; ///< those of the drivers, by name
    std::set<FARPROC*> lookedUp;              ///< those that the recorded calls look up
    std::map<std::string, HMODULE> modules;   ///< by file name
    size_t outputs = 0;                       ///< number of handles and objects in the recording
};

} // namespace orvel::bench
