#include <cstdio>
#include <string>
#include <vector>

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <objbase.h>
#include <shellapi.h>

#include "Enumeration.h"
#include "ExitStatus.h"
#include "Libraries.h"
#include "Options.h"
#include "SimulatedMachine.h"

namespace orvel::tools {

namespace {

std::string ToUtf8(const wchar_t* text)
{
    const int bytes = ::WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<size_t>(bytes), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), bytes, nullptr, nullptr);
    utf8.pop_back(); // the terminator
    return utf8;
}

std::vector<std::string> Arguments()
{
    int count = 0;
    wchar_t** texts = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        arguments.push_back(ToUtf8(texts[i]));
    }
    ::LocalFree(texts);
    return arguments;
}

int Fail(int status, const std::string& reason)
{
    std::fprintf(stderr, "orvel-graphic-cards: %s\n", reason.c_str());
    return status;
}

void PrintLine(const LogLine& line)
{
    std::fprintf(stderr, "%s %s: %s\n", SeverityName(line.Severity), line.Function.c_str(), line.Message.c_str());
    std::fflush(stderr);
}

int Run(const Options& options)
{
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED); // the host's duty: the library leaves COM alone
    if (options.Machine) {
        if (const auto problem = SimulateMachine(*options.Machine)) {
            return Fail(problem->Status, problem->Text);
        }
    }
    if (const auto missing = LoadEnumerationLibrary()) {
        return Fail(ExitNoLibrary, *missing);
    }
    const auto onLine = options.Log ? PrintLine : [](const LogLine&) {};
    Report report = Enumerate(onLine);
    if (options.Machine) {
        report.Simulation = SimulationReport();
    }
    std::fputs((options.Json ? ToJson(report) : ToText(report)).c_str(), stdout);
    return report.Error ? Fail(ExitException, Describe(*report.Error)) : ExitDone;
}

} // namespace

int Main()
{
    ::_setmode(::_fileno(stdout), _O_BINARY); // the same bytes on every system
    ::SetConsoleOutputCP(CP_UTF8);
    const auto parsed = ParseOptions(Arguments());
    if (const auto* options = std::get_if<Options>(&parsed)) {
        return Run(*options);
    }
    const auto& ending = std::get<Ending>(parsed);
    if (ending.Status != ExitDone) {
        return Fail(ending.Status, ending.Text);
    }
    std::fputs(ending.Text.c_str(), stdout);
    return ExitDone;
}

} // namespace orvel::tools

int main()
{
    return orvel::tools::Main();
}
