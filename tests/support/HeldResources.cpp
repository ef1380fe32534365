#include "HeldResources.h"

#include <algorithm>
#include <vector>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <psapi.h>
#include <winternl.h>

namespace orvel::tests {

namespace {

struct SystemHandle {
    void* Object;
    ULONG_PTR ProcessId;
    ULONG_PTR Value;
    ULONG Access;
    USHORT BackTraceIndex;
    USHORT TypeIndex;
    ULONG Attributes;
    ULONG Reserved;
};

struct SystemHandles {
    ULONG_PTR Count;
    ULONG_PTR Reserved;
    SystemHandle Handles[1];
};

constexpr auto systemExtendedHandleInformation = static_cast<SYSTEM_INFORMATION_CLASS>(64);

size_t CountHandles()
{
    using Query = NTSTATUS(NTAPI*)(SYSTEM_INFORMATION_CLASS, PVOID, ULONG, PULONG);
    const auto query = reinterpret_cast<Query>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
    std::vector<char> buffer(1 << 20);
    ULONG bytes = 0;
    while (query(systemExtendedHandleInformation, buffer.data(), static_cast<ULONG>(buffer.size()), &bytes) ==
           static_cast<NTSTATUS>(0xC0000004)) { // too short
        buffer.resize(2 * buffer.size());
    }
    const auto* table = reinterpret_cast<const SystemHandles*>(buffer.data());
    return static_cast<size_t>(std::count_if(table->Handles, table->Handles + table->Count, [](const SystemHandle& handle) {
        return handle.ProcessId == ::GetCurrentProcessId();
    }));
}

size_t CountModules()
{
    HMODULE modules[1024];
    DWORD bytes = 0;
    ::K32EnumProcessModules(::GetCurrentProcess(), modules, sizeof(modules), &bytes);
    return bytes / sizeof(HMODULE);
}

size_t CountTlsIndexes()
{
    constexpr size_t mostIndexes = 1088;
    std::vector<DWORD> free;
    for (DWORD index = ::TlsAlloc(); index != TLS_OUT_OF_INDEXES; index = ::TlsAlloc()) {
        free.push_back(index);
    }
    std::for_each(free.begin(), free.end(), ::TlsFree);
    return mostIndexes - free.size();
}

size_t AllocatedBytes(HANDLE heap)
{
    size_t bytes = 0;
    PROCESS_HEAP_ENTRY entry{};
    ::HeapLock(heap);
    while (::HeapWalk(heap, &entry)) {
        bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
    }
    ::HeapUnlock(heap);
    return bytes;
}

size_t CountHeapBytes()
{
    HANDLE heaps[64];
    const DWORD count = std::min<DWORD>(::GetProcessHeaps(64, heaps), 64);
    size_t bytes = 0;
    for (DWORD i = 0; i < count; ++i) {
        bytes += AllocatedBytes(heaps[i]);
    }
    return bytes;
}

size_t CountPrivateBytes()
{
    size_t bytes = 0;
    MEMORY_BASIC_INFORMATION region{};
    const char* address = nullptr;
    while (::VirtualQuery(address, &region, sizeof(region)) != 0) {
        bytes += region.State == MEM_COMMIT && region.Type == MEM_PRIVATE ? region.RegionSize : 0;
        address = static_cast<const char*>(region.BaseAddress) + region.RegionSize;
    }
    return bytes;
}

} // namespace

HeldResources HeldNow()
{
    HeldResources held;
    held.Handles = CountHandles();
    held.Modules = CountModules();
    held.TlsIndexes = CountTlsIndexes();
    held.HeapBytes = CountHeapBytes();
    held.PrivateBytes = CountPrivateBytes();
    return held;
}

long long HeapGrowth(long long limit, const std::function<void()>& work)
{
    constexpr int mostTimes = 10;
    long long growth = limit + 1;
    for (int times = 0; times < mostTimes && growth > limit; ++times) {
        const size_t before = CountHeapBytes();
        work();
        growth = static_cast<long long>(CountHeapBytes()) - static_cast<long long>(before);
    }
    return growth;
}

} // namespace orvel::tests
