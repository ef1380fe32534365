#pragma once

#include <optional>
#include <string>

namespace orvel::tools {

/// What was seen of one thing: found or not, and what it tells of itself.
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

/// Whether WMI lists a video controller of a PCI vendor ("8086").
bool HasAdapterOf(const std::string& vendorId);

/// A DXGI factory.
Finding FindDxgi();

/// A key below HKEY_LOCAL_MACHINE.
Finding FindRegistryKey(const std::string& path);

/// COM on this thread.
Finding FindCom();

} // namespace orvel::tools
