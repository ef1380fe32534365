#pragma once

enum { COINIT_MULTITHREADED = 0 };

extern "C" __declspec(dllimport) long CoInitializeEx(void* reserved, unsigned long apartment);
