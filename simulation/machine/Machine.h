#pragma once

#include <optional>
#include <string>

#include "machine/AdlModel.h"
#include "machine/AdlxModel.h"
#include "machine/DwmModel.h"
#include "machine/DxgiModel.h"
#include "machine/Node.h"
#include "machine/NvapiModel.h"
#include "machine/NvmlModel.h"
#include "machine/OpenClModel.h"
#include "machine/RegistryModel.h"
#include "machine/WmiModel.h"

namespace orvel::simulation {

/// The origin of an interface of a machine.
enum class Standing {
    Missing,   // the machine has no such interface
    Simulated, // the model answers
    System,    // the computer's own stays in place
};

template <typename Model>
struct Interface {
    Standing standing = Standing::Missing;
    Model model;
};

/// One simulated machine, as its file describes it.
struct Machine {
    std::optional<std::string> name;
    bool searched = false; // Windows' own search has to find the DLLs that are loaded at run time
    Interface<DwmModel> dwm;
    Interface<WmiModel> wmi;
    Interface<RegistryModel> registry;
    Interface<DxgiModel> dxgi;
    Interface<OpenClModel> opencl;
    Interface<NvapiModel> nvapi;
    Interface<NvmlModel> nvml;
    Interface<AdlModel> adl;
    Interface<AdlxModel> adlx;
};

void ReadInto(const Node& node, Machine& target);

} // namespace orvel::simulation
