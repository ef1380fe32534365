#pragma once

extern "C" __declspec(dllimport) wchar_t** CommandLineToArgvW(const wchar_t* line, int* count);
