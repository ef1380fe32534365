#include "vendors/amd/ADLXHelper.h"

namespace orvel::shared::enumeration {

namespace {

constexpr uint64_t adlxVersion = 0x0001000200000048; // 1.2.0, build 72

} // namespace

ADLXHelper::~ADLXHelper()
{
    Terminate();
}

void ADLXHelper::FindEntryPoints()
{
    queryFullVersion = FindFunction<QueryFullVersion_t>(module.get(), "ADLXQueryFullVersion");
    queryVersion = FindFunction<QueryVersion_t>(module.get(), "ADLXQueryVersion");
    initializeWithCallerAdl = FindFunction<InitializeWithCallerAdl_t>(module.get(), "ADLXInitializeWithCallerAdl");
    initializeWithIncompatibleDriver = FindFunction<Initialize_t>(module.get(), "ADLXInitializeWithIncompatibleDriver");
    initialize = FindFunction<Initialize_t>(module.get(), "ADLXInitialize");
    terminate = FindFunction<Terminate_t>(module.get(), "ADLXTerminate");
}

bool ADLXHelper::HasEntryPoints() const
{
    return queryFullVersion && queryVersion && initializeWithCallerAdl && initializeWithIncompatibleDriver && initialize &&
           terminate;
}

ADLX_RESULT ADLXHelper::Load()
{
    if (!module) {
        constexpr DWORD searchedFolders = LOAD_LIBRARY_SEARCH_USER_DIRS | LOAD_LIBRARY_SEARCH_APPLICATION_DIR |
                                          LOAD_LIBRARY_SEARCH_DEFAULT_DIRS | LOAD_LIBRARY_SEARCH_SYSTEM32;
        module.reset(::LoadLibraryExW(L"amdadlx64.dll", nullptr, searchedFolders));
        if (module) {
            FindEntryPoints();
        }
    }
    return HasEntryPoints() ? ADLX_OK : ADLX_FAIL;
}

void ADLXHelper::QueryVersions()
{
    queryFullVersion(&fullVersion);
    queryVersion(&version);
}

ADLX_RESULT ADLXHelper::InitializeWithCallerAdl(void* adlContext, ADLX_ADL_Main_Memory_Free memoryFree)
{
    if (!adlContext || !memoryFree) {
        return ADLX_INVALID_ARGS;
    }
    if (const ADLX_RESULT result = Load(); result != ADLX_OK) {
        return result;
    }
    QueryVersions();
    moduleOfCallback = ModuleOf(reinterpret_cast<const void*>(memoryFree));
    return initializeWithCallerAdl(adlxVersion, &system, &mapping, adlContext, memoryFree);
}

ADLX_RESULT ADLXHelper::Initialize()
{
    if (const ADLX_RESULT result = Load(); result != ADLX_OK) {
        return result;
    }
    QueryVersions();
    return initialize(adlxVersion, &system);
}

ADLX_RESULT ADLXHelper::Terminate()
{
    if (!module) {
        return ADLX_OK;
    }
    fullVersion = 0;
    version = nullptr;
    system = nullptr;
    mapping = nullptr;
    const ADLX_RESULT result = terminate ? terminate() : ADLX_OK;
    queryFullVersion = nullptr;
    queryVersion = nullptr;
    initializeWithCallerAdl = nullptr;
    initializeWithIncompatibleDriver = nullptr;
    initialize = nullptr;
    terminate = nullptr;
    module.reset();
    moduleOfCallback.reset();
    return result;
}

ADLXHelper& Adlx()
{
    static auto& helper = *new ADLXHelper;
    return helper;
}

} // namespace orvel::shared::enumeration
