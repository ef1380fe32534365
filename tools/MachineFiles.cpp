#include "MachineFiles.h"

#include <algorithm>
#include <fstream>

#include <nlohmann/json.hpp>

#include "Utf8Path.h"
#include "platform/Handles.h"

namespace orvel::tools {

namespace {

std::filesystem::path MachinesFolder()
{
    return SimulationFolder() / "machines";
}

} // namespace

std::filesystem::path ProgramFolder()
{
    return std::filesystem::path(shared::enumeration::PathOf(nullptr)).parent_path();
}

std::filesystem::path SimulationFolder()
{
    const auto beside = ProgramFolder() / "simulation";
    return std::filesystem::exists(beside) ? beside : ProgramFolder().parent_path() / "simulation";
}

std::vector<std::string> MachineNames()
{
    std::vector<std::string> names;
    std::error_code noFolder;
    for (const auto& entry : std::filesystem::directory_iterator(MachinesFolder(), noFolder)) {
        if (entry.path().extension() == ".json") {
            names.push_back(PathText(entry.path().stem()));
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::optional<std::string> MachineFile(const std::string& nameOrFile)
{
    if (std::filesystem::exists(ToPath(nameOrFile))) {
        return nameOrFile;
    }
    const auto names = MachineNames();
    const bool isShipped = std::find(names.begin(), names.end(), nameOrFile) != names.end();
    return isShipped ? std::optional(PathText(MachinesFolder() / (nameOrFile + ".json"))) : std::nullopt;
}

std::string TitleOf(const std::string& machineName)
{
    std::ifstream file(MachinesFolder() / (machineName + ".json"));
    const auto machine = nlohmann::json::parse(file, nullptr, false);
    return machine.is_object() ? machine.value("name", "") : std::string();
}

} // namespace orvel::tools
