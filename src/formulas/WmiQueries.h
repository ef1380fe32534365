#pragma once

namespace orvel::shared::enumeration {

// The WQL texts of the queries that name no adapter. For those of adapters, see VideoControllerQuery.h.

inline constexpr wchar_t biosQuery[] = L"SELECT SerialNumber FROM Win32_Bios";
inline constexpr wchar_t memoryTypesQuery[] = L"SELECT SMBIOSMemoryType FROM Win32_PhysicalMemory";
inline constexpr wchar_t memorySpeedsQuery[] = L"SELECT Speed FROM Win32_PhysicalMemory";
inline constexpr wchar_t memoryWidthsQuery[] = L"SELECT TotalWidth FROM Win32_PhysicalMemory";

} // namespace orvel::shared::enumeration
