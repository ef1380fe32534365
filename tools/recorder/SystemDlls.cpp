#include "SystemDlls.h"

#include "WatchedThread.h"
#include "platform/TextEncoding.h"
#include "sources/SystemLibrary.h"

namespace orvel::recorder {

using namespace orvel::shared;

SystemDlls FindSystemDlls(uint32_t patienceMilliseconds)
{
    SystemDlls dlls;
    for (const std::string name : {"dxgi.dll", "dxcore.dll", "nvml.dll", "nvapi64.dll", "atiadlxx.dll", "amdadlx64.dll"}) {
        const auto loaded = RecordOnThread("load " + name, false, patienceMilliseconds, [name](WatchedThread<bool>& thread) {
            const bool isFound = inventory::LoadSystemLibrary(enumeration::ToUtf16(name).c_str()) != nullptr;
            thread.Publish(isFound, "");
        });
        if (!loaded.hangingCall.empty()) {
            dlls.Hanging.insert(name);
        } else if (loaded.content) {
            dlls.Found.insert(name);
        }
    }
    return dlls;
}

} // namespace orvel::recorder
