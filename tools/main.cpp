#include <cstdio>
#include <exception>
#include <string>
#include <variant>
#include <vector>

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <objbase.h>
#include <shellapi.h>

#include "Doctor.h"
#include "Enumeration.h"
#include "ExitStatus.h"
#include "Explain.h"
#include "Libraries.h"
#include "LoadedSimulation.h"
#include "MachineFiles.h"
#include "Options.h"
#include "OutputFile.h"
#include "inventory/Comparison.h"
#include "inventory/InventoryFormats.h"
#include "inventory/InventoryLibrary.h"
#include "inventory/InventoryText.h"
#include "inventory/Page.h"
#include "inventory/RecordSide.h"
#include "platform/TextEncoding.h"
#include "recorder/Recorder.h"

namespace orvel::tools {

namespace {

std::vector<std::string> Arguments()
{
    int count = 0;
    wchar_t** texts = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        arguments.push_back(shared::enumeration::ToUtf8(texts[i]));
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

bool IsTerminal()
{
    HANDLE output = ::GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return ::GetConsoleMode(output, &mode) && ::SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

/// Writes the result to standard output or to the file of --output, and returns the exit status.
int Finish(const Options& options, const std::string& text, int status)
{
    if (!options.Output) {
        std::fputs(text.c_str(), stdout);
        return status;
    }
    const auto problem = WriteFileWhole(*options.Output, text);
    return problem ? Fail(ExitWrongInput, *problem) : status;
}

int ListMachines(const Options& options)
{
    std::string text;
    for (const std::string& name : MachineNames()) {
        text += name + "\n    " + TitleOf(name) + "\n";
    }
    return Finish(options, text, ExitDone);
}

int RunDoctor(const Options& options, const TextStyle& style)
{
    const auto diagnosis = Diagnose(LoadEnumerationLibrary());
    return Finish(options, options.Json ? DoctorAsJson(diagnosis) : DoctorAsText(diagnosis, style),
                  DoctorStatus(diagnosis.Checks));
}

/// What the person who records has to know before sending the file.
std::string Recorded(const Options& options, const recorder::Json& recording)
{
    const size_t replaced = recording["recorded"].value("replaced", recorder::Json::array()).size();
    const std::string identifiers =
        options.RecordIdentifiers
            ? "It has the serial numbers and other identifiers of this computer.\n"
            : "Replaced identifiers: " + std::to_string(replaced) + ". \"recorded\" lists their places.\n";
    return "Recorded this computer in " + *options.Recording + "\n" + identifiers +
           "Read the file before you send it: docs/bug-reports.md says what to look at.\n";
}

int RunRecord(const Options& options)
{
    const Existing existing = options.Force ? Existing::Replaced : Existing::Kept;
    if (auto problem = CheckTarget(*options.Recording, existing)) {
        return Fail(ExitWrongInput, *problem + " (--force replaces it)");
    }
    recorder::RecordOptions how;
    how.KeepIdentifiers = options.RecordIdentifiers;
    how.BeforeEnumeration = [] { LoadNvml(); };
    const recorder::Json recording = recorder::RecordComputer(how);
    if (const auto problem = WriteFileWhole(*options.Recording, recording.dump(2) + "\n", existing)) {
        return Fail(ExitWrongInput, *problem);
    }
    return Finish(options, Recorded(options, recording), ExitDone);
}

std::string Render(const Options& options, const Report& report, const TextStyle& style)
{
    if (options.Show == Mode::Explain) {
        return options.Json ? ExplainAsJson(report) : ExplainAsText(report, style);
    }
    return options.Json ? ToJson(report) : ToText(report, style);
}

int RunEnumeration(const Options& options, const TextStyle& style)
{
    if (const auto missing = LoadEnumerationLibrary().Problem) {
        return Fail(ExitNoLibrary, *missing);
    }
    const auto onLine = options.Log ? PrintLine : [](const LogLine&) {};
    Report report = Enumerate(onLine);
    if (options.Machine) {
        report.Simulation = SimulationReport();
    }
    const int status = Finish(options, Render(options, report, style), ExitDone);
    return report.Error ? Fail(ExitException, Describe(*report.Error)) : status;
}

std::string Render(const Options& options, const InventorySnapshot& snapshot, const TextStyle& style)
{
    const InventoryFormat format = options.Inventory.Format;
    if (format == InventoryFormat::Json || format == InventoryFormat::Flat) {
        return format == InventoryFormat::Json ? snapshot.Full : snapshot.Flat;
    }
    const Inventory inventory = ReadInventory(snapshot.Full, snapshot.Table);
    switch (format) {
    case InventoryFormat::OpenMetrics:
        return InventoryAsOpenMetrics(inventory);
    case InventoryFormat::Ndjson:
        return InventoryAsNdjson(inventory);
    case InventoryFormat::Csv:
        return InventoryAsCsv(inventory);
    default:
        return InventoryAsText(inventory, style.IsColoured);
    }
}

/// The records of this computer; where the library cannot be loaded, why not.
Records QueryRecords()
{
    if (const auto missing = LoadEnumerationLibrary().Problem) {
        return {{}, {}, *missing};
    }
    return RecordsOf(Enumerate([](const LogLine&) {}));
}

std::string LocalTime()
{
    SYSTEMTIME now;
    ::GetLocalTime(&now);
    char text[32];
    std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u", now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute);
    return text;
}

int WritePage(const Options& options, const Inventory& inventory, const Records& records)
{
    const PageOrigin origin{"orvel-graphic-cards " ORVEL_VERSION, LocalTime(), options.Machine.value_or("")};
    const auto problem =
        WriteFileWhole(*options.Inventory.Page, InventoryAsPage(inventory, Compare(inventory, records), origin));
    return problem ? Fail(ExitWrongInput, *problem) : ExitDone;
}

/// Writes what needs the record too.
int FinishCompared(const Options& options, const InventorySnapshot& snapshot, const TextStyle& style)
{
    const Inventory inventory = ReadInventory(snapshot.Full, snapshot.Table);
    const Records records = QueryRecords();
    if (options.Inventory.Page) {
        return WritePage(options, inventory, records);
    }
    const Comparison comparison = Compare(inventory, records);
    return Finish(options,
                  options.Inventory.Format == InventoryFormat::Json
                      ? ComparisonAsJson(inventory, comparison, snapshot.Full)
                      : ComparisonAsText(inventory, comparison, style.IsColoured),
                  records.Problem.empty() ? ExitDone : ExitNoLibrary);
}

int RunInventory(const Options& options, const TextStyle& style)
{
    const auto library = LoadInventoryLibrary();
    if (const auto* problem = std::get_if<std::string>(&library)) {
        return Fail(ExitNoLibrary, *problem);
    }
    const auto taken = TakeInventory(std::get<InventoryLibrary>(library), options.Inventory);
    if (const auto* problem = std::get_if<std::string>(&taken)) {
        return Fail(ExitException, *problem);
    }
    const auto& snapshot = std::get<InventorySnapshot>(taken);
    try {
        const bool needsRecord = options.Inventory.IsCompared || options.Inventory.Page;
        return needsRecord ? FinishCompared(options, snapshot, style)
                           : Finish(options, Render(options, snapshot, style), ExitDone);
    } catch (const std::exception& error) {
        return Fail(ExitNoLibrary,
                    std::string("the document of orvel-graphic-cards-inventory.dll cannot be read: ") + error.what());
    }
}

/// Simulates the machine. Returns ExitDone, or the exit status of the failure.
int TakeMachine(const std::string& nameOrFile)
{
    const auto file = MachineFile(nameOrFile);
    if (!file) {
        return Fail(ExitWrongInput, nameOrFile + ": not a file or a shipped machine (see --list-machines)");
    }
    // Loaded at run time: the simulation is not part of the product, so the program must start without it.
    if (const unsigned long error = LoadSimulation()) {
        return Fail(ExitNoLibrary, "orvel-simulation.dll cannot be loaded (error " + std::to_string(error) +
                                       "): it must be in the folder \"simulation\" beside this program");
    }
    std::string problem;
    return SimulateMachine(*file, problem) == ORVEL_SIMULATION_IN_PLACE ? ExitDone : Fail(ExitWrongInput, problem);
}

int Run(const Options& options)
{
    if (options.Show == Mode::ListMachines) {
        return ListMachines(options);
    }
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED); // by the host: the library never initialises COM
    if (const int status = options.Machine ? TakeMachine(*options.Machine) : ExitDone; status != ExitDone) {
        return status;
    }
    if (options.Show == Mode::Record) {
        return RunRecord(options);
    }
    const TextStyle style{options.Brief, !options.Output && IsTerminal()};
    if (options.Show == Mode::Inventory) {
        return RunInventory(options, style);
    }
    return options.Show == Mode::Doctor ? RunDoctor(options, style) : RunEnumeration(options, style);
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
