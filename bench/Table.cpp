#include "Table.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <string_view>

#include "CardFields.h"

namespace orvel::bench {

namespace {

[[gnu::format(__MINGW_PRINTF_FORMAT, 1, 2)]] std::string Text(const char* format, ...)
{
    char text[512];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    return text;
}

std::string Row(const Figures& f)
{
    return Text("| %s | %zu | %zu | %.0f | %.0f | %.2f | %zu | %zu | %.1f | %.1f | %.3f | %.1f |\n", f.Machine.c_str(),
                f.Cards, f.Calls, f.Product, f.Floor, f.Product / f.Floor, f.Connections, f.Queries, f.Modelled / 1000,
                f.Ideal / 1000, f.Modelled / f.Ideal, f.Inventory / 1000);
}

std::string Row(const Target& target)
{
    return Text("| %s | %.3g | %.3g | %s |\n", target.Name.c_str(), target.Limit, target.Measured,
                target.Measured <= target.Limit ? "met" : "missed");
}

const Figures& Find(const Results& results, std::string_view machine)
{
    return *std::find_if(results.Machines.begin(), results.Machines.end(),
                         [&](const Figures& figures) { return figures.Machine == machine; });
}

template <typename Figure>
double Largest(const Results& results, Figure figure)
{
    double largest = 0;
    for (const Figures& figures : results.Machines) {
        largest = std::max(largest, figure(figures));
    }
    return largest;
}

double Mebibytes(std::uintmax_t bytes)
{
    return static_cast<double>(bytes) / (1024 * 1024);
}

double EnumerationMebibytes(const Results& results)
{
    return Mebibytes(results.DllBytes.at("orvel-graphic-cards-enumeration.dll") +
                     results.DllBytes.at("orvel-shared-wmi-client.dll"));
}

} // namespace

std::vector<Target> Targets(const Results& results)
{
    const Figures& laptop = Find(results, "Intel laptop");
    const Figures& workstation = Find(results, "workstation");
    const Figures& one = Find(results, "1 Intel adapter");
    const Figures& many = Find(results, "64 Intel adapters");
    return {
        {"WMI connections per enumeration", 1,
         Largest(results, [](const Figures& f) { return static_cast<double>(f.Connections); })},
        {"WMI queries, Intel laptop", 5, static_cast<double>(laptop.Queries)},
        {"WMI queries, workstation", 7, static_cast<double>(workstation.Queries)},
        {"WMI queries, 64 Intel adapters", 5, static_cast<double>(many.Queries)},
        {"modelled / ideal, largest", 1.05, Largest(results, [](const Figures& f) { return f.Modelled / f.Ideal; })},
        {"modelled time, 64 adapters / 1 adapter", 3, many.Modelled / one.Modelled},
        {"modelled time per property, laptop / one query for 6 properties", 0.5,
         laptop.Modelled / static_cast<double>(tools::propertyCount) / ((connectionMicroseconds + queryMicroseconds) / 6)},
        {"time / floor, largest", 1.1, Largest(results, [](const Figures& f) { return f.Product / f.Floor; })},
        {"size of the two DLLs, MiB", 1.5, EnumerationMebibytes(results)},
        {"modelled time, inventory / enumeration, laptop", 0.1, laptop.Inventory / laptop.Modelled},
        {"size of the inventory's DLL, MiB", 1.5, Mebibytes(results.DllBytes.at("orvel-graphic-cards-inventory.dll"))}};
}

std::string ToTable(const Results& results)
{
    std::string text = "| machine | cards | calls | time, µs | floor, µs | time / floor | connections | queries "
                       "| modelled, ms | ideal, ms | modelled / ideal | inventory, ms |\n"
                       "|---|--:|--:|--:|--:|--:|--:|--:|--:|--:|--:|--:|\n";
    for (const Figures& figures : results.Machines) {
        text += Row(figures);
    }
    text += Text("\nLoad time %.1f ms; peak working set %.1f MiB, of which %.1f MiB without the library\n",
                 results.LoadMicroseconds / 1000, static_cast<double>(results.PeakWorkingSetKib) / 1024,
                 static_cast<double>(results.PeakWorkingSetBeforeKib) / 1024);
    for (const auto& [dll, bytes] : results.DllBytes) {
        text += Text("%s %.0f KiB\n", dll.c_str(), static_cast<double>(bytes) / 1024);
    }
    text += "\n| target | at most | measured | |\n|---|--:|--:|---|\n";
    for (const Target& target : Targets(results)) {
        text += Row(target);
    }
    return text;
}

nlohmann::json ToJson(const Results& results)
{
    auto machines = nlohmann::json::array();
    for (const Figures& f : results.Machines) {
        machines.push_back({{"machine", f.Machine},
                            {"cards", f.Cards},
                            {"calls", f.Calls},
                            {"sameTrace", f.HasSameTrace},
                            {"microseconds", f.Product},
                            {"floorMicroseconds", f.Floor},
                            {"ratio", f.Product / f.Floor},
                            {"wmiConnections", f.Connections},
                            {"wmiQueries", f.Queries},
                            {"modelledMicroseconds", f.Modelled},
                            {"idealMicroseconds", f.Ideal},
                            {"modelledRatio", f.Modelled / f.Ideal},
                            {"inventoryMicroseconds", f.Inventory}});
    }
    auto targets = nlohmann::json::array();
    for (const Target& target : Targets(results)) {
        targets.push_back({{"target", target.Name},
                           {"atMost", target.Limit},
                           {"measured", target.Measured},
                           {"isMet", target.Measured <= target.Limit}});
    }
    return {{"machines", machines},
            {"targets", targets},
            {"loadMicroseconds", results.LoadMicroseconds},
            {"peakWorkingSetKib", results.PeakWorkingSetKib},
            {"peakWorkingSetBeforeKib", results.PeakWorkingSetBeforeKib},
            {"dllBytes", results.DllBytes}};
}

} // namespace orvel::bench
