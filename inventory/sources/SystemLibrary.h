#pragma once

#include "platform/Handles.h"

namespace orvel::shared::inventory {

/// Loads a DLL from Windows' own folder, and from nowhere else; null where it is not there.
enumeration::ModuleHandle LoadSystemLibrary(const wchar_t* fileName);

} // namespace orvel::shared::inventory
