#include "machine/Machine.h"

namespace orvel::simulation {

namespace {

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

} // namespace

void ReadInto(const Node& node, Machine& target)
{
    node.ReadFields({
        {"name", [&target](const Node& name) { target.name = name.Text(); }},
        {"searched", Into(target.searched)},
        {"dwm", AsInterface(target.dwm)},
        {"wmi", AsInterface(target.wmi)},
        {"registry", AsInterface(target.registry)},
        {"dxgi", AsInterface(target.dxgi)},
        {"opencl", AsInterface(target.opencl)},
        {"nvapi", AsInterface(target.nvapi)},
        {"nvml", AsInterface(target.nvml)},
        {"adl", AsInterface(target.adl)},
        {"adlx", AsInterface(target.adlx)},
    });
}

} // namespace orvel::simulation
