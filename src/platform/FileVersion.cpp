#include "platform/FileVersion.h"

#include <vector>

#include <windows.h>

#include <winver.h>

namespace orvel::shared::enumeration {

std::string FileVersion(const std::wstring& path)
{
    DWORD unused = 0;
    const DWORD bytes = ::GetFileVersionInfoSizeW(path.c_str(), &unused);
    std::vector<BYTE> data(bytes);
    VS_FIXEDFILEINFO* info = nullptr;
    UINT length = 0;
    if (bytes == 0 || !::GetFileVersionInfoW(path.c_str(), 0, bytes, data.data()) ||
        !::VerQueryValueW(data.data(), L"\\", reinterpret_cast<void**>(&info), &length)) {
        return {};
    }
    return std::to_string(HIWORD(info->dwFileVersionMS)) + "." + std::to_string(LOWORD(info->dwFileVersionMS)) + "." +
           std::to_string(HIWORD(info->dwFileVersionLS)) + "." + std::to_string(LOWORD(info->dwFileVersionLS));
}

} // namespace orvel::shared::enumeration
