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

TEST_CASE("The last warning of the run is the likely cause, whatever is seen now")
{
    Simulate(LaptopWithMemory(34));
    CHECK(LikelyCause(noFactor, "Failed to get Status from WMI") ==
          "the last warning before it is \"Failed to get Status from WMI\"");
}

TEST_CASE("A memory type without a factor or name is the cause of its messages")
{
    Simulate(LaptopWithMemory(34)); // DDR5
    CHECK(LikelyCause(noFactor, "") == "the memory is of SMBIOS type 34, for which the library knows no transfer factor");
    CHECK(LikelyCause("invalid unordered_map<K, T> key", "") ==
          "the memory is of SMBIOS type 34, for which the library knows no name");
    Simulate(LaptopWithMemory(16)); // a name, but no factor
    CHECK_FALSE(LikelyCause(noFactor, "").empty());
    CHECK(LikelyCause("invalid unordered_map<K, T> key", "").empty());
}

TEST_CASE("An Intel adapter that OpenCL calls by another name is the cause of a missing clock")
{
    Json machine = HealthyLaptop();
    Simulate(machine);
    CHECK(LikelyCause("invalid stod argument", "").empty());
    VideoController(machine)["Name"] = "Another name";
    Simulate(machine);
    CHECK(LikelyCause("invalid stod argument", "") == "OpenCL lists no device of Intel's with WMI's name: \"Another name\"");
}

TEST_CASE("A DLL that cannot be loaded is the cause of its message")
{
    Json machine = HealthyLaptop();
    machine.erase("opencl");
    Simulate(machine);
    CHECK(LikelyCause("Failed to load opencl.dll", "").starts_with("opencl.dll cannot be loaded, error "));
    CHECK(LikelyCause("invalid stod argument", "").find("UHD Graphics") != std::string::npos);
}

TEST_CASE("NVAPI without a card of NVIDIA's is as it should be")
{
    Simulate(HealthyLaptop());
    CHECK(LikelyCause("Failed to initialize NVAPI. Status code: -2", "") == "WMI lists no card of NVIDIA's");
}

TEST_CASE("A message that is not known, or comes with another one's beginning, has no cause")
{
    Simulate(LaptopWithMemory(34));
    CHECK(LikelyCause("", "").empty());
    CHECK(LikelyCause("Argument out of range of something else", "").empty());
}

TEST_CASE("A vendor is well where all that its run needs is there")
{
    Simulate(HealthyLaptop());
    CHECK(StateOf("Intel") == "ok");
    CHECK(StateOf("NVIDIA") == "no-card");
    CHECK(StateOf("AMD") == "no-card");
}

TEST_CASE("The first thing that keeps a vendor's records away is its state")
{
    Simulate(LaptopWithMemory(34));
    CHECK(StateOf("Intel") == "unsupported-memory-type");
    CHECK(StateOf("Intel", {"the library cannot be loaded", ""}) == "no-library");
    Json machine = LaptopWithMemory(34);
    machine["wmi"]["classes"].erase("Win32_Bios");
    Simulate(machine);
    CHECK(StateOf("Intel") == "no-wmi");
}

TEST_CASE("WMI's failures are found with their status")
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
