#pragma once

// As much of the C library as the test hosts use, for clang in MSVC's ABI: its own headers come with MSVC only.

#include <stddef.h>

extern "C" {
struct FILE {
    char Bytes[48];
};
FILE* __iob_func(void);
int printf(const char* format, ...);
int fprintf(FILE* file, const char* format, ...);
}

#define stderr (__iob_func() + 2)
