// The arguments that ADL and ADLX receive, and the handling of their results. Functions of this file replace both.

#include <cstring>
#include <vector>

#include <doctest/doctest.h>

#include "record/GraphicCardList.h"
#include "support/ReplacedImport.h"
#include "support/SimulatedRun.h"
#include "vendors/amd/ADLWrapper.h"
#include "vendors/amd/ADLXHelper.h"
#include "vendors/amd/AMD.h"

using namespace orvel::shared::enumeration;
using namespace orvel::tests;

namespace {

int context = 0;
bool isDirty = false; ///< whether a call received a structure that was not zeroed

struct Creation {
    int Connected = 0;
    int Fourth = 0;
    void* Memory = nullptr;
} creation;

int Create(ADL_MAIN_MALLOC_CALLBACK allocate, int connected, ADL_CONTEXT_HANDLE* received, int fourth)
{
    creation = {connected, fourth, allocate(16)};
    *received = &context;
    return 0;
}

int Destroy(ADL_CONTEXT_HANDLE)
{
    return 0;
}

template <typename Structure>
void Look(const Structure& structure)
{
    const Structure zero{};
    isDirty = isDirty || std::memcmp(&structure, &zero, sizeof(structure)) != 0;
}

int CoreInfo(ADL_CONTEXT_HANDLE, int, ADLGraphicCoreInfo* info)
{
    Look(*info);
    return -1;
}

int Crossfire(ADL_CONTEXT_HANDLE, int, ADLCrossfireComb* combination, ADLCrossfireInfo* info)
{
    Look(*combination);
    Look(*info);
    return -1;
}

int Caps(ADL_CONTEXT_HANDLE, int, int* supported)
{
    Look(*supported);
    *supported = 7;
    return 0;
}

int Modes(ADL_CONTEXT_HANDLE, int, int* defaultMode, int* current, int* desired)
{
    Look(*defaultMode);
    Look(*current);
    Look(*desired);
    return -1;
}

int EccData(ADL_CONTEXT_HANDLE, int, ADLECCData* data)
{
    Look(*data);
    return -1;
}

int Activity(int, ADLPMActivity* activity)
{
    isDirty = isDirty || activity->iSize != 40;
    activity->iSize = 0;
    Look(*activity);
    return -1;
}

FARPROC WINAPI FindAdl(HMODULE, LPCSTR name)
{
    struct Function {
        const char* Name;
        void* Address;
    };
    const Function functions[] = {
        {"ADL2_Main_Control_Create", reinterpret_cast<void*>(&Create)},
        {"ADL2_Main_Control_Destroy", reinterpret_cast<void*>(&Destroy)},
        {"ADL2_Adapter_Graphic_Core_Info_Get", reinterpret_cast<void*>(&CoreInfo)},
        {"ADL2_Adapter_Crossfire_Get", reinterpret_cast<void*>(&Crossfire)},
        {"ADL2_Workstation_ECC_Caps", reinterpret_cast<void*>(&Caps)},
        {"ADL2_Workstation_ECC_Get", reinterpret_cast<void*>(&Modes)},
        {"ADL2_Workstation_ECCData_Get", reinterpret_cast<void*>(&EccData)},
        {"ADL_Overdrive5_CurrentActivity_Get", reinterpret_cast<void*>(&Activity)},
    };
    for (const Function& function : functions) {
        if (std::strcmp(function.Name, name) == 0) {
            return reinterpret_cast<FARPROC>(function.Address);
        }
    }
    return nullptr;
}

DWORD searchedFolders = 0;

HMODULE WINAPI NoteFolders(LPCWSTR, HANDLE, DWORD flags)
{
    searchedFolders = flags;
    return nullptr;
}

void __stdcall KeepMemory(void**) {}

/// A counted object with no other functions than AddRef and Release.
struct Counted {
    int Releases = 0;
    long Release() { return ++Releases; }
};

} // namespace

TEST_CASE("ADL's context is created for connected adapters, with a callback that allocates")
{
    Simulate({{"adl", Json::object()}});
    const ReplacedImport find(TestModule(), L"kernel32.dll", "GetProcAddress", reinterpret_cast<void*>(&FindAdl));
    const ADLWrapper adl;
    CHECK(adl.GetContext() == &context);
    CHECK(creation.Connected == 1);
    CHECK(creation.Fourth == 1);
    REQUIRE(creation.Memory != nullptr);
    std::memset(creation.Memory, 0, 16);
    std::free(creation.Memory);
}

TEST_CASE("Every structure passed to ADL is zeroed, except for a required size")
{
    Simulate({{"adl", Json::object()}});
    const ReplacedImport find(TestModule(), L"kernel32.dll", "GetProcAddress", reinterpret_cast<void*>(&FindAdl));
    const ADLWrapper adl;
    isDirty = false;
    for (int round = 0; round < 2; ++round) { // in the second round the stack contains the data of the first
        CHECK(adl.GetCores(0) == 0);
        CHECK(adl.GetRops(0) == 0);
        CHECK_FALSE(adl.GetCrossfire(0));
        CHECK(adl.GetEccStatus(0) == 1); // supported, and a mode of 0
        CHECK(adl.GetEccSingleBitErrors(0) == 0);
        CHECK(adl.GetEccDoubleBitErrors(0) == 0);
        CHECK(adl.GetPciLanes(0) == 0);
    }
    CHECK_FALSE(isDirty);
}

TEST_CASE("ADLX is searched in the application, user, system and default folders")
{
    const ReplacedImport load(TestModule(), L"kernel32.dll", "LoadLibraryExW", reinterpret_cast<void*>(&NoteFolders));
    ADLXHelper helper;
    CHECK(helper.InitializeWithCallerAdl(&context, &KeepMemory) == ADLX_FAIL);
    CHECK(searchedFolders == 0x1E00);
}

TEST_CASE("The output of a failed ADLX call is not released, that of a successful one is")
{
    Counted object;
    {
        AdlxPtr<Counted> failed;
        CHECK_FALSE(failed.Receive([&](Counted** received) {
            *received = &object;
            return ADLX_FAIL;
        }));
        CHECK_FALSE(failed);
    }
    CHECK(object.Releases == 0);
    {
        AdlxPtr<Counted> empty;
        CHECK_FALSE(empty.Receive([](Counted**) { return ADLX_OK; }));
        AdlxPtr<Counted> received;
        CHECK(received.Receive([&](Counted** target) {
            *target = &object;
            return ADLX_ALREADY_INITIALIZED;
        }));
    }
    CHECK(object.Releases == 1);
}

namespace {

decltype(&::GetProcAddress) findFunction = nullptr;
decltype(&std::free) freeMemory = nullptr;

/// The memory callbacks: ADL allocates with the first, ADLX frees with the second.
ADL_MAIN_MALLOC_CALLBACK adlAllocate = nullptr;
ADLX_ADL_Main_Memory_Free adlxFree = nullptr;

int KeepAllocate(ADL_MAIN_MALLOC_CALLBACK allocate, int, ADL_CONTEXT_HANDLE* received, int)
{
    adlAllocate = allocate;
    *received = &context;
    return 0;
}

ADLX_RESULT KeepFree(uint64_t, IADLXSystem**, IADLMapping**, void*, ADLX_ADL_Main_Memory_Free memoryFree)
{
    adlxFree = memoryFree;
    return ADLX_FAIL;
}

int DoNothing()
{
    return 0;
}

FARPROC WINAPI FindKeeping(HMODULE module, LPCSTR name)
{
    void* function = reinterpret_cast<void*>(&DoNothing);
    if (std::strcmp(name, "ADL2_Main_Control_Create") == 0) {
        function = reinterpret_cast<void*>(&KeepAllocate);
    } else if (std::strcmp(name, "ADLXInitializeWithCallerAdl") == 0) {
        function = reinterpret_cast<void*>(&KeepFree);
    }
    return std::strncmp(name, "ADL", 3) == 0 ? reinterpret_cast<FARPROC>(function) : findFunction(module, name);
}

const void* watchedBlock = nullptr;
int timesFreed = 0;

void CountFree(void* block)
{
    timesFreed += block && block == watchedBlock ? 1 : 0;
    freeMemory(block);
}

} // namespace

TEST_CASE("ADLX's callback frees memory of ADL's callback once, and clears the pointer to it")
{
    Simulate(Machine("amd-desktop"));
    {
        const ReplacedImport find(TestModule(), L"kernel32.dll", "GetProcAddress", reinterpret_cast<void*>(&FindKeeping));
        findFunction = find.Original<decltype(findFunction)>();
        GraphicCardList list;
        AMD().QueryInfo(list);
    }
    REQUIRE((adlAllocate && adlxFree));
    const ReplacedImport free(TestModule(), L"msvcrt.dll", "free", reinterpret_cast<void*>(&CountFree));
    freeMemory = free.Original<decltype(freeMemory)>();
    void* buffer = adlAllocate(16);
    REQUIRE(buffer != nullptr);
    watchedBlock = buffer;
    adlxFree(&buffer);
    adlxFree(&buffer); // the second call has nothing to free
    adlxFree(nullptr);
    CHECK(timesFreed == 1);
    CHECK(buffer == nullptr);
    watchedBlock = nullptr;
}

TEST_CASE("A destroyed wrapper has no context and no library, and can be destroyed again")
{
    Simulate({{"adl", Json::object()}});
    alignas(ADLWrapper) unsigned char storage[sizeof(ADLWrapper)] = {};
    auto* const adl = new (storage) ADLWrapper;
    REQUIRE(adl->GetContext() != nullptr);
    adl->~ADLWrapper();
    void* first = &context;
    void* last = &context;
    std::memcpy(&first, storage, sizeof(first));
    std::memcpy(&last, storage + sizeof(storage) - sizeof(last), sizeof(last));
    CHECK(first == nullptr); // the context
    CHECK(last == nullptr);  // the module
    adl->~ADLWrapper();
    CHECK(Only(Trace(), "adl ADL2_Main_Control_Destroy").size() == 1);
}
