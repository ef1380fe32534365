#pragma once

#include <cstdint>

#include "interfaces/AdlxInterfaces.h"
#include "platform/Handles.h"

namespace orvel::shared::enumeration {

using ADLX_ADL_Main_Memory_Free = void(__stdcall*)(void** buffer);

/// Loads AMD's ADLX ("amdadlx64.dll") and holds the objects that it returns. The process has one object; the library stays
/// loaded from a successful initialisation to Terminate.
class ADLXHelper {
public:
    ADLXHelper() = default;
    ADLXHelper(const ADLXHelper&) = delete;
    ADLXHelper& operator=(const ADLXHelper&) = delete;
    /// Terminates ADLX unless Terminate was called.
    virtual ~ADLXHelper();

    /// Initialises ADLX on the caller's ADL context. ADLX_INVALID_ARGS without a context or callback, ADLX_FAIL where the
    /// library or one of its six entry points is missing, else ADLX's own result. The module that contains the callback
    /// stays loaded until Terminate.
    ADLX_RESULT InitializeWithCallerAdl(void* adlContext, ADLX_ADL_Main_Memory_Free memoryFree);

    /// Initialises ADLX without ADL.
    ADLX_RESULT Initialize();

    /// Terminates ADLX and releases the library; does nothing if it is not loaded.
    ADLX_RESULT Terminate();

    /// Null before a successful initialisation.
    IADLXSystem* GetSystemServices() const { return system; }
    /// Null before a successful initialisation with ADL.
    IADLMapping* GetAdlMapping() const { return mapping; }

private:
    using QueryFullVersion_t = ADLX_RESULT (*)(uint64_t* version);
    using QueryVersion_t = ADLX_RESULT (*)(const char** version);
    using InitializeWithCallerAdl_t = ADLX_RESULT (*)(uint64_t version, IADLXSystem** system, IADLMapping** mapping,
                                                      void* adlContext, ADLX_ADL_Main_Memory_Free memoryFree);
    using Initialize_t = ADLX_RESULT (*)(uint64_t version, IADLXSystem** system);
    using Terminate_t = ADLX_RESULT (*)();

    ADLX_RESULT Load();
    void FindEntryPoints();
    bool HasEntryPoints() const;
    void QueryVersions();

    ModuleHandle moduleOfCallback; ///< ADLX may call it until it is terminated, so it must stay loaded
    ModuleHandle module;
    uint64_t fullVersion = 0;
    const char* version = nullptr;
    IADLXSystem* system = nullptr;
    IADLMapping* mapping = nullptr;
    QueryFullVersion_t queryFullVersion = nullptr;
    QueryVersion_t queryVersion = nullptr;
    InitializeWithCallerAdl_t initializeWithCallerAdl = nullptr;
    Initialize_t initializeWithIncompatibleDriver = nullptr;
    Initialize_t initialize = nullptr;
    Terminate_t terminate = nullptr;
};

/// The process's ADLX. It is never destroyed: at process exit AMD's library may be unloaded before this one.
ADLXHelper& Adlx();

} // namespace orvel::shared::enumeration
