#pragma once

#include <stddef.h>

extern "C" {
int strcmp(const char* first, const char* second);
void* memset(void* memory, int value, size_t bytes);
}
