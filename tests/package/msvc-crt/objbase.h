#pragma once

enum { COINIT_MULTITHREADED = 0, COINIT_APARTMENTTHREADED = 2 };

#define FAILED(status) ((status) < 0)

extern "C" {
__declspec(dllimport) long CoInitializeEx(void* reserved, unsigned long apartment);
__declspec(dllimport) void CoUninitialize();
}
