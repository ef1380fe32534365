// GCC's runtime does not give back what it has taken of the process when the DLL that it is part of is unloaded. Its reserve
// of memory for exceptions adds up, and so does its index of thread-local storage: a process has 1088 of them, and the
// runtime aborts without one. A host that loads and frees the library again and again would end there.

#include <array>
#include <cstddef>

#include <windows.h>

namespace __gnu_cxx {

void __freeres(); // in the runtime, but in no header of it

} // namespace __gnu_cxx

namespace {

DWORD WINAPI TakeTlsIndex();

} // namespace

extern "C" {

// By --wrap the linker leads the runtime's import of TlsAlloc to the second name, and the first to TlsAlloc.
extern decltype(&::TlsAlloc) __real___imp_TlsAlloc;
extern decltype(&::TlsAlloc) __wrap___imp_TlsAlloc;
decltype(&::TlsAlloc) __wrap___imp_TlsAlloc = TakeTlsIndex;

} // extern "C"

namespace {

bool isUnloaded = false;
std::array<DWORD, 8> tlsIndexes; // the runtime takes one
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

[[gnu::init_priority(101)]] ReleaseRuntime releaseRuntime; // made before everything else, and so destroyed after it

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID isProcessEnding)
{
    isUnloaded = reason == DLL_PROCESS_DETACH && !isProcessEnding; // the end of the process takes everything by itself
    return TRUE;
}
