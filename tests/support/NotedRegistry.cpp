#include "NotedRegistry.h"

#include <string>

#include "SimulatedRun.h"

namespace orvel::tests {

namespace {

decltype(&::RegOpenKeyExA) openNarrow = nullptr;
decltype(&::RegOpenKeyExW) openWide = nullptr;

LSTATUS WINAPI NoteNarrow(HKEY parent, LPCSTR path, DWORD options, REGSAM access, PHKEY key)
{
    Note(std::string("registry ") + path);
    return openNarrow(parent, path, options, access, key);
}

LSTATUS WINAPI NoteWide(HKEY parent, LPCWSTR path, DWORD options, REGSAM access, PHKEY key)
{
    const std::wstring text = path;
    Note("registry " + std::string(text.begin(), text.end()));
    return openWide(parent, path, options, access, key);
}

} // namespace

NotedRegistry::NotedRegistry(HMODULE module)
    : narrow(module, L"advapi32.dll", "RegOpenKeyExA", reinterpret_cast<void*>(&NoteNarrow)),
      wide(module, L"advapi32.dll", "RegOpenKeyExW", reinterpret_cast<void*>(&NoteWide))
{
    openNarrow = narrow.Original<decltype(openNarrow)>();
    openWide = wide.Original<decltype(openWide)>();
}

} // namespace orvel::tests
