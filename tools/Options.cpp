#include "Options.h"

#include <algorithm>

#include <CLI/CLI.hpp>

#include "ExitStatus.h"

namespace orvel::tools {

std::variant<Options, Ending> ParseOptions(const std::vector<std::string>& arguments)
{
    Options options;
    std::string machine;
    CLI::App app("Shows every Intel, NVIDIA and AMD graphics card of this computer, or of a simulated machine.",
                 "orvel-graphic-cards");
    app.set_version_flag("--version", "orvel-graphic-cards " ORVEL_VERSION);
    app.add_flag("--json", options.Json, "Print one JSON object instead of text");
    app.add_option("--machine", machine, "Enumerate the simulated machine of this file instead of this computer")
        ->type_name("FILE");
    app.add_flag("--log", options.Log, "Print the library's log lines on standard error as they happen");
    app.footer("Exit status: 0 done, 2 wrong option or machine file, 3 a library cannot be loaded,\n"
               "4 the enumeration ended with an exception.");
    try {
        std::vector<std::string> reversed(arguments.rbegin(), arguments.rend()); // as CLI11 wants them
        app.parse(reversed);
    } catch (const CLI::CallForHelp&) {
        return Ending{ExitDone, app.help()};
    } catch (const CLI::CallForVersion&) {
        return Ending{ExitDone, app.version() + "\n"};
    } catch (const CLI::ParseError& error) {
        std::string reason = error.what();
        std::replace(reason.begin(), reason.end(), '\n', ' ');
        return Ending{ExitWrongInput, reason + " (--help tells the options)"};
    }
    if (app.count("--machine") > 0) {
        options.Machine = machine;
    }
    return options;
}

} // namespace orvel::tools
