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

TEST_CASE("The default is the cards of this computer as text")
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
