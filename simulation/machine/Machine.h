#pragma once

#include <optional>
#include <string>
#include <vector>

#include "machine/AdlModel.h"
#include "machine/AdlxModel.h"
#include "machine/DisplaysModel.h"
#include "machine/DwmModel.h"
#include "machine/DxCoreModel.h"
#include "machine/DxgiModel.h"
#include "machine/Node.h"
#include "machine/NvapiModel.h"
#include "machine/NvmlModel.h"
#include "machine/OpenClModel.h"
#include "machine/PnpModel.h"
#include "machine/RegistryModel.h"
#include "machine/WmiModel.h"
#include "trace/Hangs.h"

namespace orvel::simulation {

/// Where a machine's interface comes from.
enum class Standing {
    Missing,   // the machine has no such interface
    Simulated, // the model defines the answers
    System,    // the computer's own interface
};

template <typename Model>
struct Interface {
    Standing standing = Standing::Missing;
    Model model;
};

/// One simulated machine, as its file describes it.
struct Machine {
    std::optional<std::string> name;
    bool searched = false; // Windows finds the DLLs that are loaded at run time by its own search
    Interface<DwmModel> dwm;
    Interface<WmiModel> wmi;
    Interface<RegistryModel> registry;
    Interface<PnpModel> pnp;
    Interface<DisplaysModel> displays;
    Interface<DxCoreModel> dxcore;
    Interface<DxgiModel> dxgi;
    Interface<OpenClModel> opencl;
    Interface<NvapiModel> nvapi;
    Interface<NvmlModel> nvml;
    Interface<AdlModel> adl;
    Interface<AdlxModel> adlx;
    std::vector<std::string> outsideSystemFolder; // DLLs, by their names
    std::vector<Hang> hangs;
};

void ReadInto(const Node& node, Machine& target);

} // namespace orvel::simulation
