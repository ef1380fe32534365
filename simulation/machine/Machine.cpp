#include "machine/Machine.h"

namespace orvel::simulation {

namespace {

/// The DLLs that a program can load from Windows' own folder alone.
const std::vector<std::string> systemDlls = {"dxgi.dll", "nvml.dll", "nvapi64.dll", "atiadlxx.dll", "amdadlx64.dll"};

template <typename Model>
ReadField AsInterface(Interface<Model>& target)
{
    return [&target](const Node& node) {
        target.standing = Standing::Simulated;
        if (!node.IsText()) {
            return ReadInto(node, target.model);
        }
        if (node.Text() != "system") {
            node.Refuse("expected an object or \"system\", found \"" + node.Text() + "\"");
        }
        target.standing = Standing::System;
    };
}

void CheckDll(const Node& node)
{
    std::string text;
    node.ReadFields({{"dll", Into(text)}, {"path", Into(text)}, {"version", Into(text)}});
}

/// Where and how the file was recorded. The simulation makes nothing of it.
void CheckRecorded(const Node& node)
{
    std::string text;
    std::vector<std::string> texts;
    node.ReadFields({
        {"windows", Into(text)},
        {"wine", Into(text)},
        {"program", Into(text)},
        {"dlls",
         [](const Node& dlls) {
             for (const Node& dll : dlls.Elements()) {
                 CheckDll(dll);
             }
         }},
        {"replaced", Into(texts)},
    });
}

} // namespace

static void ReadInto(const Node& node, Hang& target)
{
    constexpr uint32_t longest = 24 * 60 * 60 * 1000;
    node.ReadFields({
        {"call", Into(target.call)},
        {"nth", [&target](const Node& nth) { target.nth = static_cast<uint32_t>(nth.Whole(1, UINT32_MAX)); }},
        {"milliseconds",
         [&target](const Node& time) { target.milliseconds = static_cast<uint32_t>(time.Whole(1, longest)); }},
    });
    if (target.call.empty() || target.milliseconds == 0) {
        node.Refuse("a call that hangs needs \"call\" and \"milliseconds\"");
    }
}

void ReadInto(const Node& node, Machine& target)
{
    node.ReadFields({
        {"name", [&target](const Node& name) { target.name = name.Text(); }},
        {"recorded", CheckRecorded},
        {"searched", Into(target.searched)},
        {"dwm", AsInterface(target.dwm)},
        {"wmi", AsInterface(target.wmi)},
        {"registry", AsInterface(target.registry)},
        {"pnp", AsInterface(target.pnp)},
        {"displays", AsInterface(target.displays)},
        {"dxcore", AsInterface(target.dxcore)},
        {"dxgi", AsInterface(target.dxgi)},
        {"opencl", AsInterface(target.opencl)},
        {"nvapi", AsInterface(target.nvapi)},
        {"nvml", AsInterface(target.nvml)},
        {"adl", AsInterface(target.adl)},
        {"adlx", AsInterface(target.adlx)},
        {"outside_system_folder", NamesInto(target.outsideSystemFolder, systemDlls)},
        {"hang", Into(target.hangs)},
    });
}

} // namespace orvel::simulation
