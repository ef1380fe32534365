#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace orvel::recorder {

/// The DLLs in Windows' own folder: an inventory loads them from there alone.
struct SystemDlls {
    std::set<std::string> Found;
    std::set<std::string> Hanging; ///< loading them does not end

    bool Has(const std::string& name) const { return Found.contains(name); }
};

/// Looks for the DLLs that an inventory loads. Loading a driver's DLL, without a call of it, wakes no card.
SystemDlls FindSystemDlls(uint32_t patienceMilliseconds);

} // namespace orvel::recorder
