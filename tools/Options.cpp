#include "Options.h"

#include <algorithm>

#include <CLI/CLI.hpp>

#include "ExitStatus.h"

namespace orvel::tools {

std::variant<Options, Ending> ParseOptions(const std::vector<std::string>& arguments)
{
    Options options;
    bool isExplain = false;
    bool isDoctor = false;
    bool isList = false;
    CLI::App app("Lists the Intel, NVIDIA and AMD graphics cards of this computer, or of a\nsimulated machine.",
                 "orvel-graphic-cards");
    app.set_version_flag("--version", "orvel-graphic-cards " ORVEL_VERSION);
    app.add_flag("--json", options.Json, "Print one JSON object instead of text");
    app.add_flag("--brief", options.Brief, "Omit values that are not available");
    app.add_option("--machine", options.Machine, "Simulate a machine: a file, or the name of a shipped one")
        ->type_name("FILE");
    app.add_option("--output", options.Output, "Write to this file (atomic)")->type_name("FILE");
    app.add_flag("--log", options.Log, "Print the library's log lines on standard error");
    auto* explain = app.add_flag("--explain", isExplain, "Show the source of each value, or why it is missing");
    auto* doctor = app.add_flag("--doctor", isDoctor, "Check what the library depends on");
    auto* list = app.add_flag("--list-machines", isList, "List the shipped machines");
    explain->excludes(doctor)->excludes(list);
    doctor->excludes(list);
    app.get_formatter()->column_width(24);
    app.get_formatter()->label("Excludes", "not with");
    app.footer("Exit status: 0 success, 2 wrong option or machine file, 3 a library cannot be\n"
               "loaded, 4 an exception ended the enumeration. With --doctor: 0 nothing missing,\n"
               "1 something limits the records, 2 nothing can be enumerated.");
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
        return Ending{ExitWrongInput, reason + " (see --help)"};
    }
    options.Show = isExplain ? Mode::Explain : isDoctor ? Mode::Doctor : isList ? Mode::ListMachines : Mode::Cards;
    return options;
}

} // namespace orvel::tools
