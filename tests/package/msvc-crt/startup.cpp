// Replaces MSVC's start-up code.

#include <stddef.h>

extern "C" {
int __getmainargs(int* argc, char*** argv, char*** environment, int expandWildcards, int* startInfo);
void exit(int status);
int main(int argc, char** argv);

int _fltused = 0;

// The virtual table of std::type_info, which the descriptions of caught types point to. It is never called.
const void* typeInfoTable[1] __asm__("??_7type_info@@6B@") = {nullptr};

void __std_terminate()
{
    exit(99);
}

void mainCRTStartup()
{
    int argc = 0;
    char** argv = nullptr;
    char** environment = nullptr;
    int startInfo = 0;
    __getmainargs(&argc, &argv, &environment, 0, &startInfo);
    exit(main(argc, argv));
}
}

extern "C" {
void* malloc(size_t bytes);
void free(void* memory);
}

void* operator new(size_t bytes)
{
    return malloc(bytes);
}

void operator delete(void* memory) noexcept
{
    free(memory);
}

void operator delete(void* memory, size_t) noexcept
{
    free(memory);
}
