#include <doctest/doctest.h>

#include "LikelyCause.h"
#include "SystemChecks.h"
#include "VendorStates.h"
#include "support/SimulatedRun.h"

using namespace orvel::tests;
using namespace orvel::tools;

namespace {

constexpr char noFactor[] = "Argument out of range";

/// The laptop with memory of another SMBIOS type.
Json LaptopWithMemory(int type)
{
    Json machine = HealthyLaptop();
    for (Json& module : machine["wmi"]["classes"]["Win32_PhysicalMemory"]) {
        module["SMBIOSMemoryType"] = type;
    }
    return machine;
}

std::string StateOf(const char* vendor, const LibraryLoad& load = {})
{
    for (const VendorState& state : Diagnose(load).Vendors) {
        if (state.Vendor == vendor) {
            return state.State.Name;
        }
    }
    return {};
}

} // namespace

TEST_CASE("The last warning of the run outranks a check as the likely cause")
{
    Simulate(LaptopWithMemory(34));
    CHECK(LikelyCause(noFactor, "Failed to get Status from WMI") ==
          "the last warning before it: \"Failed to get Status from WMI\"");
}

TEST_CASE("A memory type without a factor or name is the cause of its messages")
{
    Simulate(LaptopWithMemory(34)); // DDR5
    CHECK(LikelyCause(noFactor, "") == "the memory has SMBIOS type 34, for which the library has no transfer factor");
    CHECK(LikelyCause("invalid unordered_map<K, T> key", "") ==
          "the memory has SMBIOS type 34, for which the library has no name");
    Simulate(LaptopWithMemory(16)); // a name, but no factor
    CHECK_FALSE(LikelyCause(noFactor, "").empty());
    CHECK(LikelyCause("invalid unordered_map<K, T> key", "").empty());
}

TEST_CASE("An Intel adapter with another name in OpenCL is the cause of a missing clock")
{
    Json machine = HealthyLaptop();
    Simulate(machine);
    CHECK(LikelyCause("invalid stod argument", "").empty());
    VideoController(machine)["Name"] = "Another name";
    Simulate(machine);
    CHECK(LikelyCause("invalid stod argument", "") == "OpenCL lists no Intel device with WMI's name: \"Another name\"");
}

TEST_CASE("A DLL that cannot be loaded is the cause of its message")
{
    Json machine = HealthyLaptop();
    machine.erase("opencl");
    Simulate(machine);
    CHECK(LikelyCause("Failed to load opencl.dll", "").starts_with("opencl.dll cannot be loaded, error "));
    CHECK(LikelyCause("invalid stod argument", "").find("UHD Graphics") != std::string::npos);
}

TEST_CASE("The message of a missing NVAPI names a missing NVIDIA card as its cause")
{
    Simulate(HealthyLaptop());
    CHECK(LikelyCause("Failed to initialize NVAPI. Status code: -2", "") == "WMI lists no NVIDIA card");
}

TEST_CASE("An unknown message has no cause, even if it starts like a known one")
{
    Simulate(LaptopWithMemory(34));
    CHECK(LikelyCause("", "").empty());
    CHECK(LikelyCause("Argument out of range of something else", "").empty());
}

TEST_CASE("A vendor is ok if all dependencies of its run are present")
{
    Simulate(HealthyLaptop());
    CHECK(StateOf("Intel") == "ok");
    CHECK(StateOf("NVIDIA") == "no-card");
    CHECK(StateOf("AMD") == "no-card");
}

TEST_CASE("A vendor's state is the first reason for missing records")
{
    Simulate(LaptopWithMemory(34));
    CHECK(StateOf("Intel") == "unsupported-memory-type");
    CHECK(StateOf("Intel", {"the library cannot be loaded", ""}) == "no-library");
    Json machine = LaptopWithMemory(34);
    machine["wmi"]["classes"].erase("Win32_Bios");
    Simulate(machine);
    CHECK(StateOf("Intel") == "no-wmi");
}

TEST_CASE("A failed WMI check reports its status")
{
    Json machine = HealthyLaptop();
    machine["wmi"]["classes"].erase("Win32_Bios");
    Simulate(machine);
    const Finding finding = FindWmiClass("Win32_Bios");
    CHECK_FALSE(finding.IsFound);
    CHECK(finding.Detail == "0x80041010");
    CHECK(FindWmiClass("Win32_PhysicalMemory").Detail.ends_with(" rows"));
    CHECK(NamesOfAdapters("8086") == std::vector<std::string>{"Intel(R) UHD Graphics 620"});
}
