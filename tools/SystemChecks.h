#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvel::tools {

/// The result of a check.
struct Finding {
    bool IsFound;
    std::string Detail;
    std::string Path = {};
    std::string Version = {};
};

/// A DLL by its bare name, as the library would load it.
Finding FindDll(const std::string& name);

/// WMI's namespace root\cimv2.
Finding FindWmiNamespace();

/// A WMI class: found when it can be queried.
Finding FindWmiClass(const std::string& name);

/// The names of a PCI vendor's ("8086") video controllers, as WMI lists them.
std::vector<std::string> NamesOfAdapters(const std::string& vendorId);

/// SMBIOS type code of the machine's memory, as the library reads it: 2 (unknown) where WMI does not report it.
uint32_t MemoryType();

/// A DXGI factory.
Finding FindDxgi();

/// A key below HKEY_LOCAL_MACHINE.
Finding FindRegistryKey(const std::string& path);

/// COM on this thread.
Finding FindCom();

} // namespace orvel::tools
