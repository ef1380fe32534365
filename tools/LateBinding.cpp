#include "LateBinding.h"

#ifdef _MSC_VER

const char* orvel::tools::BindLate(HMODULE)
{
    return nullptr; // the delay-load table that MSVC's linker makes finds each function at its first call
}

#else

#include <cstring>

extern "C" {

// Made by cmake/make-late-binding.sh: the names, one behind the other and an empty one at the end, and a pointer for each.
extern const char lateNames[];
extern FARPROC lateFunctions[];

} // extern "C"

const char* orvel::tools::BindLate(HMODULE library)
{
    const char* missing = nullptr;
    FARPROC* function = lateFunctions;
    for (const char* name = lateNames; *name != '\0'; name += std::strlen(name) + 1) {
        *function = ::GetProcAddress(library, name);
        if (!*function++ && !missing) {
            missing = name;
        }
    }
    return missing;
}

#endif
