#pragma once

// The part of the C library that the test hosts use, for clang in MSVC's ABI. The real headers are part of MSVC.

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
