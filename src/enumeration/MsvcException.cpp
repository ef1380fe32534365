// How MSVC throws on x64: RaiseException with the code 0xE06D7363 and four parameters, a magic number, the object, a
// ThrowInfo and the base address that the ThrowInfo's 32-bit addresses count from. The ThrowInfo lists the types that a
// handler may catch the object as, each with a TypeDescriptor, which handlers compare by its decorated name. A
// std::exception of MSVC is a pointer to a table of two functions (destructor, what), a text and a flag that tells whether
// the text is to be freed.

#include "enumeration/MsvcException.h"

#include <cstdint>
#include <cstring>

#include <windows.h>

extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace orvel::shared::enumeration {

namespace {

using Address = int32_t; // relative to the image

struct TypeDescriptor {
    const void* VirtualTable;
    void* Spare;
    char Name[32];
};

struct CatchableType {
    uint32_t Properties;
    Address Type;
    int32_t Displacement[3];
    int32_t Size;
    Address CopyFunction; // none: the bytes are copied
};

struct CatchableTypes {
    int32_t Count;
    Address Types[2];
};

struct ThrowInfo {
    uint32_t Attributes;
    Address Destructor;
    Address ForwardCompatibility;
    Address Types;
};

struct StandardException {
    const void* const* VirtualTable;
    const char* Text;
    bool IsTextOwned;
};
static_assert(sizeof(StandardException) == 24);

constexpr DWORD msvcException = 0xE06D7363;
constexpr ULONG_PTR magicNumber = 0x19930520;
constexpr uint32_t isSimpleType = 1;

Address AddressOf(const void* object)
{
    return static_cast<Address>(reinterpret_cast<const char*>(object) - reinterpret_cast<const char*>(&__ImageBase));
}

void* DestroyException(void* exception, unsigned)
{
    return exception; // it owns nothing, and its memory is not from a heap
}

const char* WhatOf(const StandardException* exception)
{
    return exception->Text;
}

// Before the first function MSVC keeps the type's run-time information, which none of these objects has.
const void* const exceptionTable[] = {nullptr, reinterpret_cast<const void*>(&DestroyException),
                                      reinterpret_cast<const void*>(&WhatOf)};

TypeDescriptor longType = {nullptr, nullptr, ".J"};
TypeDescriptor badAllocType = {nullptr, nullptr, ".?AVbad_alloc@std@@"};
TypeDescriptor exceptionType = {nullptr, nullptr, ".?AVexception@std@@"};

CatchableType Catchable(const TypeDescriptor& type, int32_t size, uint32_t properties)
{
    return {properties, AddressOf(&type), {0, -1, 0}, size, 0};
}

/// All that describes one type to its handlers. It has to lie in the image, so it is static.
struct Description {
    CatchableType Catchables[2];
    CatchableTypes Types;
    ThrowInfo Info;
};

void Fill(Description& description, int32_t count)
{
    description.Types.Count = count;
    for (int32_t i = 0; i < count; ++i) {
        description.Types.Types[i] = AddressOf(&description.Catchables[i]);
    }
    description.Info = {0, 0, 0, AddressOf(&description.Types)};
}

[[noreturn]] void Raise(const void* object, const ThrowInfo& info)
{
    const ULONG_PTR parameters[] = {magicNumber, reinterpret_cast<ULONG_PTR>(object), reinterpret_cast<ULONG_PTR>(&info),
                                    reinterpret_cast<ULONG_PTR>(&__ImageBase)};
    ::RaiseException(msvcException, EXCEPTION_NONCONTINUABLE, 4, parameters);
    __builtin_unreachable();
}

void ThrowStatus(long status)
{
    static Description description;
    description.Catchables[0] = Catchable(longType, sizeof(status), isSimpleType);
    Fill(description, 1);
    Raise(&status, description.Info);
}

void ThrowStandard(const TypeDescriptor& type, const char* text)
{
    static Description description;
    // The text has to outlive this frame: a host may keep a copy of the exception.
    static char lastText[sizeof(MsvcException::Text)];
    std::memcpy(lastText, text, sizeof(lastText));
    const StandardException exception{exceptionTable + 1, lastText, false};
    description.Catchables[0] = Catchable(type, sizeof(exception), 0);
    description.Catchables[1] = Catchable(exceptionType, sizeof(exception), 0);
    Fill(description, &type == &exceptionType ? 1 : 2);
    Raise(&exception, description.Info);
}

} // namespace

void MsvcException::TakeCurrent() noexcept
{
    const auto take = [this](Kind kind, const char* text) {
        What = kind;
        std::strncpy(Text, text, sizeof(Text) - 1);
    };
    try {
        throw;
    } catch (long status) {
        What = Kind::Status;
        Status = status;
    } catch (const std::bad_alloc&) {
        take(Kind::BadAlloc, "bad allocation");
    } catch (const std::exception& error) {
        take(Kind::Exception, error.what());
    } catch (...) {
        take(Kind::Exception, "unknown exception");
    }
}

void MsvcException::Throw() const
{
    switch (What) {
    case Kind::None:
        return;
    case Kind::Status:
        ThrowStatus(Status);
        return;
    case Kind::BadAlloc:
        ThrowStandard(badAllocType, Text);
        return;
    case Kind::Exception:
        ThrowStandard(exceptionType, Text);
        return;
    }
}

} // namespace orvel::shared::enumeration
