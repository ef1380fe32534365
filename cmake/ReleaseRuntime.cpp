// GCC's runtime inside a DLL does not release its resources when the DLL is unloaded. Each load leaks its memory reserve for
// exceptions and an index of thread-local storage. A process has 1088 of these indexes, and the runtime aborts without one,
// so a host that loads and frees the library repeatedly would abort.

#include <array>
#include <cstddef>

#include <windows.h>

namespace __gnu_cxx {

void __freeres(); // the runtime defines it, but no header declares it

} // namespace __gnu_cxx

namespace {

DWORD WINAPI TakeTlsIndex();

} // namespace

extern "C" {

// With --wrap, the linker resolves the runtime's import of TlsAlloc to __wrap___imp_TlsAlloc, and __real___imp_TlsAlloc to
// TlsAlloc.
extern decltype(&::TlsAlloc) __real___imp_TlsAlloc;
extern decltype(&::TlsAlloc) __wrap___imp_TlsAlloc;
decltype(&::TlsAlloc) __wrap___imp_TlsAlloc = TakeTlsIndex;

} // extern "C"

namespace {

bool isUnloaded = false;
std::array<DWORD, 8> tlsIndexes; // the runtime allocates one
std::size_t tlsIndexCount = 0;

DWORD WINAPI TakeTlsIndex()
{
    const DWORD index = __real___imp_TlsAlloc();
    if (index != TLS_OUT_OF_INDEXES && tlsIndexCount < tlsIndexes.size()) {
        tlsIndexes[tlsIndexCount++] = index;
    }
    return index;
}

struct ReleaseRuntime {
    ~ReleaseRuntime()
    {
        if (!isUnloaded) {
            return;
        }
        for (std::size_t i = 0; i < tlsIndexCount; ++i) {
            ::TlsFree(tlsIndexes[i]);
        }
        __gnu_cxx::__freeres();
    }
};

[[gnu::init_priority(101)]] ReleaseRuntime releaseRuntime; // constructed first, and so destroyed last

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID isProcessEnding)
{
    isUnloaded = reason == DLL_PROCESS_DETACH && !isProcessEnding; // the end of the process releases everything
    return TRUE;
}
