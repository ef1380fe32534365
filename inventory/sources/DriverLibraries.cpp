#include "sources/DriverLibraries.h"

#include <windows.h>

#include "sources/Adlx.h"
#include "sources/Nvapi.h"
#include "sources/Nvml.h"
#include "sources/SystemLibrary.h"

namespace orvel::shared::inventory {

namespace {

/// A vendor's library, which is released unless it may still run.
class DriverLibrary {
public:
    bool isStopped = true;

    explicit DriverLibrary(const wchar_t* fileName) : module(LoadSystemLibrary(fileName)) {}
    DriverLibrary(const DriverLibrary&) = delete;
    DriverLibrary& operator=(const DriverLibrary&) = delete;
    ~DriverLibrary()
    {
        if (!isStopped) {
            static_cast<void>(module.release());
        }
    }

    explicit operator bool() const { return module != nullptr; }

    template <typename Function>
    Function Find(const char* name) const
    {
        return module ? enumeration::FindFunction<Function>(module.get(), name) : nullptr;
    }

    FunctionLookup Lookup() const
    {
        return [this](const char* name) { return Find<void*>(name); };
    }

private:
    enumeration::ModuleHandle module;
};

/// One thread's turn at a library that does not count its sessions: the end of one would end the others.
class Turn {
public:
    explicit Turn(SRWLOCK& lock) : lock(lock) { ::AcquireSRWLockExclusive(&lock); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn() { ::ReleaseSRWLockExclusive(&lock); }

private:
    SRWLOCK& lock;
};

SRWLOCK nvapiTurn = SRWLOCK_INIT;
SRWLOCK adlxTurn = SRWLOCK_INIT;

DriverReading NotPresent()
{
    return {Unavailable(Reason::NotPresent), {}};
}

/// A context of AMD's Display Library; null where there is none.
class AdlContext {
public:
    AdlContext() : library(L"atiadlxx.dll"), destroy(library.Find<Destroy>("ADL2_Main_Control_Destroy"))
    {
        constexpr int presentAndEnabled = 1;
        const auto create = library.Find<Create>("ADL2_Main_Control_Create");
        if (create && destroy && create(&AllocateForAdl, presentAndEnabled, &context) != 0) {
            context = nullptr;
        }
    }
    AdlContext(const AdlContext&) = delete;
    AdlContext& operator=(const AdlContext&) = delete;
    ~AdlContext()
    {
        if (context) {
            library.isStopped = destroy(context) == 0;
        }
    }

    void* Get() const { return context; }

private:
    using Allocate = void*(__stdcall*)(int bytes);
    using Create = int (*)(Allocate, int connectedAdapters, void** context);
    using Destroy = int (*)(void* context);

    DriverLibrary library;
    Destroy destroy;
    void* context = nullptr;
};

} // namespace

DriverReading ReadNvml()
{
    DriverLibrary library(L"nvml.dll");
    return library ? ReadNvml(library.Lookup(), library.isStopped) : NotPresent();
}

DriverReading ReadNvapi()
{
    const Turn turn(nvapiTurn);
    DriverLibrary library(L"nvapi64.dll");
    using QueryInterface = void* (*)(uint32_t id);
    const auto query = library.Find<QueryInterface>("nvapi_QueryInterface");
    return query ? ReadNvapi(query, library.isStopped) : NotPresent();
}

DriverReading ReadAdlx()
{
    const Turn turn(adlxTurn);
    DriverLibrary library(L"amdadlx64.dll");
    if (!library) {
        return NotPresent();
    }
    const AdlContext context; // outlives ADLX's session
    return ReadAdlx(library.Lookup(), context.Get(), library.isStopped);
}

} // namespace orvel::shared::inventory
