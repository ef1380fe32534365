// A host in MSVC's ABI that catches every exception that the library may throw.

#include <stdio.h>
#include <string.h>

// Declared as in MSVC's standard library.
namespace std {
class exception {
public:
    virtual ~exception() {}
    virtual const char* what() const { return text; }

protected:
    const char* text;
    bool isTextOwned;
};
class bad_alloc : public exception {};
} // namespace std

extern "C" {
__declspec(dllimport) void ThrowStatus();
__declspec(dllimport) void ThrowBadAlloc();
__declspec(dllimport) void ThrowRuntimeError();
__declspec(dllimport) void ThrowLongText();
__declspec(dllimport) void ThrowUnknown();
__declspec(dllimport) void ThrowNothing();
}

static void Catch(const char* name, void (*operation)())
{
    try {
        operation();
        printf("%s: nothing\n", name);
    } catch (long status) {
        printf("%s: long 0x%08lX\n", name, static_cast<unsigned long>(status));
    } catch (const std::bad_alloc& error) {
        printf("%s: bad_alloc %s\n", name, error.what());
    } catch (const std::exception& error) {
        printf("%s: exception %.20s\n", name, error.what());
    } catch (...) {
        printf("%s: something else\n", name);
    }
}

/// Keeps an exception while another one is thrown, and then rethrows it, as a host does with std::exception_ptr.
static void ThrowKept(void (*first)(), void (*second)())
{
    try {
        first();
    } catch (...) {
        Catch("meanwhile", second);
        throw;
    }
}
static void ThrowKeptBadAlloc()
{
    ThrowKept(ThrowBadAlloc, ThrowRuntimeError);
}
static void ThrowKeptRuntimeError()
{
    ThrowKept(ThrowRuntimeError, ThrowLongText);
}

static const char* TextOf(void (*operation)())
{
    try {
        operation();
    } catch (const std::exception& error) {
        return error.what(); // a copy of the exception would share this text
    }
    return "";
}

int main(int, char**)
{
    for (int round = 0; round < 2; ++round) {
        Catch("status", ThrowStatus);
        Catch("bad_alloc", ThrowBadAlloc);
        Catch("runtime_error", ThrowRuntimeError);
        Catch("long text", ThrowLongText);
        Catch("unknown", ThrowUnknown);
        Catch("nothing", ThrowNothing);
    }
    Catch("kept bad_alloc", ThrowKeptBadAlloc);
    Catch("kept runtime_error", ThrowKeptRuntimeError);
    const char* text = TextOf(ThrowRuntimeError);
    TextOf(ThrowLongText);
    printf("kept text: %s\n", text);
    try {
        ThrowBadAlloc();
    } catch (std::exception error) { // by value: a copy
        printf("by value: caught\n");
    }
    return 0;
}
