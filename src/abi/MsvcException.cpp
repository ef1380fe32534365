// How MSVC throws on x64: RaiseException with the code 0xE06D7363 and four parameters, a magic number, the object, a
// ThrowInfo and the base address that the ThrowInfo's 32-bit addresses count from. The ThrowInfo lists the types that a
// handler may catch the object as, each with a TypeDescriptor, which handlers compare by its decorated name. An
// MSVC std::exception is a pointer to a table of two functions (destructor, what), a text, and a flag for whether the text
// must be freed.

#include "abi/MsvcException.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <set>
#include <string>

#include <windows.h>

#include "platform/ErrorText.h"

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

// MSVC stores the type's run-time information before the first function; these objects have none.
const void* const exceptionTable[] = {nullptr, reinterpret_cast<const void*>(&DestroyException),
                                      reinterpret_cast<const void*>(&WhatOf)};

TypeDescriptor longType = {nullptr, nullptr, ".J"};
TypeDescriptor badAllocType = {nullptr, nullptr, ".?AVbad_alloc@std@@"};
TypeDescriptor exceptionType = {nullptr, nullptr, ".?AVexception@std@@"};

CatchableType Catchable(const TypeDescriptor& type, int32_t size, uint32_t properties)
{
    return {properties, AddressOf(&type), {0, -1, 0}, size, 0};
}

/// The description of one type of exception for its handlers. It is constant data of the image: a host may keep an exception
/// as std::exception_ptr, and rethrow it after others were thrown.
class Description {
public:
    explicit Description(const CatchableType& type) : Description({type, {}}, 1) {}
    Description(const CatchableType& type, const CatchableType& base) : Description({type, base}, 2) {}
    Description(const Description&) = delete;
    Description& operator=(const Description&) = delete;

    const ThrowInfo& Info() const { return info; }

private:
    Description(const std::array<CatchableType, 2>& types, int32_t count)
        : catchables(types),
          list{count, {AddressOf(&catchables[0]), AddressOf(&catchables[1])}},
          info{0, 0, 0, AddressOf(&list)}
    {}

    std::array<CatchableType, 2> catchables;
    CatchableTypes list;
    ThrowInfo info;
};

const Description statusDescription(Catchable(longType, sizeof(long), isSimpleType));
const Description badAllocDescription(Catchable(badAllocType, sizeof(StandardException), 0),
                                      Catchable(exceptionType, sizeof(StandardException), 0));
const Description exceptionDescription(Catchable(exceptionType, sizeof(StandardException), 0));

/// The same text with a lifetime that exceeds any copy of an exception: until the library is unloaded. Copies share the text
/// without owning it, because the compilers have no common heap. There are few different texts, so all are kept.
const char* KeptText(const char* text) noexcept
{
    static std::mutex mutex;
    static std::set<std::string> texts;
    try {
        const std::lock_guard lock(mutex);
        return texts.emplace(text).first->c_str();
    } catch (...) {
        return MessageOf(RunFailure::NoMemory);
    }
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
    Raise(&status, statusDescription.Info());
}

void ThrowStandard(const Description& description, const char* text)
{
    const StandardException exception{exceptionTable + 1, text, false};
    Raise(&exception, description.Info());
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
        What = Kind::BadAlloc;
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
        ThrowStandard(badAllocDescription, MessageOf(RunFailure::NoMemory));
        return;
    case Kind::Exception:
        ThrowStandard(exceptionDescription, KeptText(Text));
        return;
    }
}

} // namespace orvel::shared::enumeration
