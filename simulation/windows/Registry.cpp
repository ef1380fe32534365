#include "windows/Registry.h"

#include <memory>

#include <windows.h>

#include "machine/Text.h"

namespace orvel::simulation {

namespace {

struct CloseKey {
    void operator()(HKEY key) const noexcept { RegCloseKey(key); }
};
using RegistryKey = std::unique_ptr<std::remove_pointer_t<HKEY>, CloseKey>;

/// The open scratch key while the override is in place.
RegistryKey& scratch = *new RegistryKey;

/// One key for each process, so that simulations can run side by side.
std::wstring ScratchPath()
{
    return L"Software\\orvel-simulation\\" + std::to_wstring(GetCurrentProcessId());
}

/// Volatile: if a process ends without deleting the key, a restart removes it.
RegistryKey CreateKey(HKEY parent, const std::wstring& path)
{
    HKEY key = nullptr;
    const DWORD options = REG_OPTION_VOLATILE;
    if (RegCreateKeyExW(parent, path.c_str(), 0, nullptr, options, KEY_ALL_ACCESS, nullptr, &key, nullptr) !=
        ERROR_SUCCESS) {
        return nullptr;
    }
    return RegistryKey(key);
}

bool SetBytes(HKEY key, const std::wstring& name, DWORD type, const void* data, size_t size)
{
    const auto* const bytes = static_cast<const BYTE*>(data);
    return RegSetValueExW(key, name.c_str(), 0, type, bytes, static_cast<DWORD>(size)) == ERROR_SUCCESS;
}

bool SetValue(HKEY key, const std::wstring& name, const RegistryValue& value)
{
    if (const auto* const number = std::get_if<uint32_t>(&value)) {
        return SetBytes(key, name, REG_DWORD, number, sizeof *number);
    }
    if (const auto* const bytes = std::get_if<std::vector<uint8_t>>(&value)) {
        return SetBytes(key, name, REG_BINARY, bytes->data(), bytes->size());
    }
    if (const auto* const number = std::get_if<uint64_t>(&value)) {
        return SetBytes(key, name, REG_QWORD, number, sizeof *number);
    }
    if (const auto* const typed = std::get_if<RegistryBytes>(&value)) {
        return SetBytes(key, name, typed->type, typed->bytes.data(), typed->bytes.size());
    }
    if (std::holds_alternative<RegistryRefusal>(value)) {
        return true; // nobody can read it: see DriverKeys
    }
    const std::wstring text = ToWide(std::get<std::string>(value));
    return SetBytes(key, name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

std::optional<std::string> FillKey(HKEY root, const RegistryKeyModel& model)
{
    const RegistryKey key = CreateKey(root, ToWide(model.path));
    if (!key) {
        return "the registry key " + model.path + " cannot be made";
    }
    for (const auto& [name, value] : model.values) {
        if (!SetValue(key.get(), ToWide(name), value)) {
            return "the registry value " + model.path + "\\" + name + " cannot be set";
        }
    }
    return std::nullopt;
}

std::optional<std::string> FillScratch(const RegistryModel& model)
{
    RegDeleteTreeW(HKEY_CURRENT_USER, ScratchPath().c_str()); // left by an earlier process with the same id
    scratch = CreateKey(HKEY_CURRENT_USER, ScratchPath());
    if (!scratch) {
        return "the scratch key below HKEY_CURRENT_USER cannot be made";
    }
    for (const RegistryKeyModel& key : model.keys) {
        if (auto problem = FillKey(scratch.get(), key)) {
            return problem;
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> PutRegistryInPlace(const Machine& machine)
{
    if (machine.registry.standing == Standing::System) {
        return std::nullopt;
    }
    if (auto problem = FillScratch(machine.registry.model)) {
        return problem;
    }
    if (RegOverridePredefKey(HKEY_LOCAL_MACHINE, scratch.get()) != ERROR_SUCCESS) {
        return "HKEY_LOCAL_MACHINE cannot be redirected";
    }
    return std::nullopt;
}

void TakeRegistryAway()
{
    if (!scratch) {
        return;
    }
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    scratch.reset();
    RegDeleteTreeW(HKEY_CURRENT_USER, ScratchPath().c_str());
}

void PauseRegistry()
{
    if (scratch) {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    }
}

void ResumeRegistry()
{
    if (scratch) {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, scratch.get());
    }
}

} // namespace orvel::simulation
