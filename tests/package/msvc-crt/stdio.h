#pragma once

// As much of the C library as the test hosts use, for clang in MSVC's ABI: its own headers come with MSVC only.

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
typedef struct {
    char Bytes[48];
} FILE;
FILE* __iob_func(void);
int printf(const char* format, ...);
int fprintf(FILE* file, const char* format, ...);
#ifdef __cplusplus
}
#endif

#define stderr (__iob_func() + 2)
