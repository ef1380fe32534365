#include "Interfaces.h"

#include "platform/Handles.h"

namespace orvel::recorder {

using namespace orvel::shared::enumeration;

std::optional<Json> RecordDwm()
{
    const ModuleHandle module(::LoadLibraryW(L"dwmapi.dll"));
    using IsEnabled = HRESULT(WINAPI*)(BOOL*);
    const auto isEnabled = module ? FindFunction<IsEnabled>(module.get(), "DwmIsCompositionEnabled") : nullptr;
    if (!isEnabled) {
        return Json{{"status", E_NOTIMPL}};
    }
    BOOL enabled = FALSE;
    const HRESULT status = isEnabled(&enabled);
    Json section = {{"status", status}};
    if (SUCCEEDED(status) || enabled) {
        section["enabled"] = enabled != FALSE;
    }
    return section;
}

} // namespace orvel::recorder
