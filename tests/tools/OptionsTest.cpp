#include "Options.h"

#include <doctest/doctest.h>

#include "ExitStatus.h"

using namespace orvel::tools;

namespace {

Options Parsed(const std::vector<std::string>& arguments)
{
    const auto parsed = ParseOptions(arguments);
    REQUIRE(std::holds_alternative<Options>(parsed));
    return std::get<Options>(parsed);
}

Ending Ended(const std::vector<std::string>& arguments)
{
    const auto parsed = ParseOptions(arguments);
    REQUIRE(std::holds_alternative<Ending>(parsed));
    return std::get<Ending>(parsed);
}

} // namespace

TEST_CASE("Without options the cards of this computer are shown as text")
{
    const Options options = Parsed({});
    CHECK(options.Show == Mode::Cards);
    CHECK_FALSE((options.Json || options.Brief || options.Log));
    CHECK_FALSE((options.Machine || options.Output));
}

TEST_CASE("Each view has its option")
{
    CHECK(Parsed({"--explain"}).Show == Mode::Explain);
    CHECK(Parsed({"--doctor"}).Show == Mode::Doctor);
    CHECK(Parsed({"--list-machines"}).Show == Mode::ListMachines);
}

TEST_CASE("Two views at once are an error")
{
    CHECK(Ended({"--explain", "--doctor"}).Status == ExitWrongInput);
    CHECK(Ended({"--explain", "--list-machines"}).Status == ExitWrongInput);
    CHECK(Ended({"--doctor", "--list-machines"}).Status == ExitWrongInput);
}

TEST_CASE("Options with a file take the next argument, in any order")
{
    const Options options = Parsed({"--output", "report ü.txt", "--json", "--machine", "laptop", "--log", "--brief"});
    CHECK(options.Machine == "laptop");
    CHECK(options.Output == "report ü.txt");
    CHECK((options.Json && options.Log && options.Brief));
}

TEST_CASE("The inventory has options of its own, which follow it")
{
    const Options plain = Parsed({"inventory"});
    CHECK(plain.Show == Mode::Inventory);
    CHECK(plain.Inventory.Format == InventoryFormat::Text);
    CHECK(plain.Inventory.Depth == 0);
    CHECK(plain.Inventory.TimeoutMilliseconds == 0);
    CHECK_FALSE(plain.Inventory.IsWakingAllowed);
    const Options options = Parsed({"inventory", "--depth", "graphics", "--timeout", "250", "--wake", "--machine", "laptop",
                                    "--output", "file", "--flat"});
    CHECK(options.Inventory.Depth == 2);
    CHECK(options.Inventory.TimeoutMilliseconds == 250);
    CHECK(options.Inventory.IsWakingAllowed);
    CHECK(options.Machine == "laptop");
    CHECK(options.Output == "file");
    CHECK(options.Inventory.Format == InventoryFormat::Flat);
    CHECK(Parsed({"inventory", "--json"}).Inventory.Format == InventoryFormat::Json);
    CHECK(Parsed({"inventory", "--format", "json"}).Inventory.Format == InventoryFormat::Json);
    CHECK(Parsed({"inventory", "--format", "openmetrics"}).Inventory.Format == InventoryFormat::OpenMetrics);
    const Options compared = Parsed({"inventory", "--compare", "--json"});
    CHECK(compared.Inventory.IsCompared);
    CHECK(compared.Inventory.Format == InventoryFormat::Json);
    CHECK(Parsed({"inventory", "--html", "page.html"}).Inventory.Page == "page.html");
}

TEST_CASE("A wrong option of the inventory is reported in one line that names it")
{
    const std::vector<std::vector<std::string>> wrong = {{"--depth", "abyss"},  {"--timeout", "0"},
                                                         {"--timeout", "soon"}, {"--format", "xml"},
                                                         {"--flat", "--json"},  {"--json", "--format", "json"},
                                                         {"--brief"},           {"stray"}};
    for (std::vector<std::string> arguments : wrong) {
        const std::string named = arguments.front();
        arguments.insert(arguments.begin(), "inventory");
        const Ending ending = Ended(arguments);
        CAPTURE(ending.Text);
        CHECK(ending.Status == ExitWrongInput);
        CHECK(ending.Text.find(named) != std::string::npos);
        CHECK(ending.Text.find('\n') == std::string::npos);
    }
    for (const char* option : {"--json", "--brief", "--explain"}) { // of the program, not of the inventory
        const Ending ending = Ended({option, "inventory"});
        CHECK(ending.Status == ExitWrongInput);
        CHECK(ending.Text.starts_with(option));
    }
    CHECK(Ended({"inventory", "--help"}).Text.find("--wake") != std::string::npos);
}

TEST_CASE("A wrong option is reported in one line that names it")
{
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--nonsense"}, {"stray"}, {"--machine"}}) {
        const Ending ending = Ended(arguments);
        CAPTURE(ending.Text);
        CHECK(ending.Status == ExitWrongInput);
        CHECK(ending.Text.find(arguments.front()) != std::string::npos);
        CHECK(ending.Text.find('\n') == std::string::npos);
    }
}

TEST_CASE("Help and version exit with success")
{
    CHECK(Ended({"--help"}).Status == ExitDone);
    CHECK(Ended({"--version"}).Text.starts_with("orvel-graphic-cards "));
}
