#include <windows.h>

#include <dwmapi.h>

#include "loading/Export.h"
#include "loading/ModuleSetup.h"
#include "machine/CurrentMachine.h"
#include "trace/Trace.h"

using namespace orvel::simulation;

namespace {

HRESULT AskSystem(BOOL* enabled)
{
    const auto function = SystemFunction<decltype(DwmIsCompositionEnabled)>(L"dwmapi.dll", "DwmIsCompositionEnabled");
    return function ? function(enabled) : E_NOTIMPL;
}

} // namespace

SIMULATED HRESULT WINAPI Sim_DwmIsCompositionEnabled(BOOL* enabled)
{
    const auto machine = CurrentMachine();
    if (machine->dwm.standing == Standing::System) {
        return AskSystem(enabled);
    }
    AddToTrace("dwm DwmIsCompositionEnabled");
    if (!enabled) {
        return E_INVALIDARG;
    }
    const DwmModel& model = machine->dwm.model;
    if (model.enabled || model.status.code == 0) {
        *enabled = model.enabled.value_or(true);
    }
    return model.status.code;
}
