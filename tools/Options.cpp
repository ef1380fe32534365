#include "Options.h"

#include <algorithm>
#include <cstdint>
#include <map>

#include <CLI/CLI.hpp>

#include "ExitStatus.h"
#include "OrvelInventory.h"

namespace orvel::tools {

namespace {

const std::map<std::string, uint32_t> depths = {
    {"system", ORVEL_INVENTORY_DEPTH_SYSTEM},
    {"graphics", ORVEL_INVENTORY_DEPTH_GRAPHICS},
    {"drivers", ORVEL_INVENTORY_DEPTH_DRIVERS},
};

const std::map<std::string, InventoryFormat> formats = {
    {"text", InventoryFormat::Text},     {"json", InventoryFormat::Json},
    {"flat", InventoryFormat::Flat},     {"openmetrics", InventoryFormat::OpenMetrics},
    {"ndjson", InventoryFormat::Ndjson}, {"csv", InventoryFormat::Csv},
};

/// An option that takes one of a table's names.
template <typename Choice>
CLI::Option* AddChoice(CLI::App& app, const std::string& option, Choice& chosen,
                       const std::map<std::string, Choice>& choices, const std::string& description)
{
    const auto choose = [option, &chosen, &choices](const std::string& name) {
        const auto choice = choices.find(name);
        if (choice == choices.end()) {
            throw CLI::ValidationError(option, "unknown value \"" + name + "\"");
        }
        chosen = choice->second;
    };
    return app.add_option_function<std::string>(option, choose, description);
}

void AddSharedOptions(CLI::App& app, Options& options)
{
    app.add_option("--machine", options.Machine, "Simulate a machine: a file, or the name of a shipped one")
        ->type_name("FILE");
    app.add_option("--output", options.Output, "Write to this file (atomic)")->type_name("FILE");
}

CLI::App* AddInventory(CLI::App& app, Options& options)
{
    InventoryOptions& wanted = options.Inventory;
    CLI::App* inventory = app.add_subcommand("inventory", "List every graphics adapter of any vendor");
    auto* format = AddChoice(*inventory, "--format", wanted.Format, formats,
                             "text (default), json, flat, ndjson and csv for rows, or openmetrics for Prometheus")
                       ->type_name("FORM");
    auto* json = inventory->add_flag_callback(
        "--json", [&wanted] { wanted.Format = InventoryFormat::Json; },
        "Each value with its status, source, code and reason");
    auto* flat = inventory->add_flag_callback(
        "--flat", [&wanted] { wanted.Format = InventoryFormat::Flat; },
        "JSON of the values alone; null where one is not known");
    format->excludes(json)->excludes(flat);
    json->excludes(flat);
    AddChoice(*inventory, "--depth", wanted.Depth, depths, "system, graphics or drivers (default)")->type_name("DEPTH");
    inventory->add_option("--timeout", wanted.TimeoutMilliseconds, "Milliseconds to wait for the sources (default 5000)")
        ->check(CLI::Range(uint32_t{1}, UINT32_MAX).description(""))
        ->type_name("MS");
    inventory->add_flag("--wake", wanted.IsWakingAllowed, "Also ask the drivers of sleeping cards, which wakes them");
    auto* compare =
        inventory->add_flag("--compare", wanted.IsCompared,
                            "Show what the 49-property record lacks or has differently, and why; also as --json");
    auto* page =
        inventory->add_option("--html", wanted.Page, "Write one HTML page to this file (atomic), for a support ticket")
            ->type_name("FILE");
    AddSharedOptions(*inventory, options);
    page->excludes(format)->excludes(json)->excludes(flat)->excludes(compare);
    page->excludes(inventory->get_option("--output"));
    compare->excludes(format)->excludes(flat);
    inventory->get_formatter()->column_width(24);
    inventory->get_formatter()->label("Excludes", "not with");
    inventory->footer("Exit status: 0 success, also when a source does not answer; 2 wrong option or\n"
                      "machine file, 3 a library cannot be loaded, 4 no snapshot can be taken.");
    return inventory;
}

/// The first of the program's own options that was given; the subcommand takes none of them.
std::string FirstGiven(const CLI::App& app)
{
    const auto given = app.get_options([](const CLI::Option* option) { return option->count() > 0; });
    return given.empty() ? std::string() : given.front()->get_name();
}

} // namespace

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
    AddSharedOptions(app, options);
    app.add_flag("--log", options.Log, "Print the library's log lines on standard error");
    auto* explain = app.add_flag("--explain", isExplain, "Show the source of each value, or why it is missing");
    auto* doctor = app.add_flag("--doctor", isDoctor, "Check what the library depends on");
    auto* list = app.add_flag("--list-machines", isList, "List the shipped machines");
    auto* record = app.add_option("--record", options.Recording, "Write this computer as a machine file, for a bug report")
                       ->type_name("FILE");
    app.add_flag("--force", options.Force, "Replace the recorded file if it exists")->needs(record);
    app.add_flag("--record-identifiers", options.RecordIdentifiers, "Keep serial numbers, UUIDs and user names")
        ->needs(record);
    explain->excludes(doctor)->excludes(list)->excludes(record);
    doctor->excludes(list)->excludes(record);
    list->excludes(record);
    const CLI::App* inventory = AddInventory(app, options);
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
    if (inventory->parsed()) {
        const std::string misplaced = FirstGiven(app);
        options.Show = Mode::Inventory;
        return misplaced.empty()
                   ? std::variant<Options, Ending>(options)
                   : Ending{ExitWrongInput, misplaced + ": the options of \"inventory\" follow it (see inventory --help)"};
    }
    options.Show = isExplain           ? Mode::Explain
                   : isDoctor          ? Mode::Doctor
                   : isList            ? Mode::ListMachines
                   : options.Recording ? Mode::Record
                                       : Mode::Cards;
    return options;
}

} // namespace orvel::tools
