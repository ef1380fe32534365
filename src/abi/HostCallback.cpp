// GCC's handlers and destructors do not see an exception that MSVC throws: it would unwind the frames of this library
// without releasing anything. So the callback is called below a frame with a structured exception handler. GCC has no syntax
// for one, hence the assembler.

#include "abi/HostCallback.h"

#include "platform/FloatingPoint.h"

#ifndef _MSC_VER

#include <windows.h>

extern "C" {

/// Calls `operation` with `argument`; also returns if it throws an MSVC exception.
void OrvelCallBelowMsvcHandler(void (*operation)(const void*), const void* argument);

[[gnu::used]] LONG OrvelIsMsvcException(EXCEPTION_POINTERS* exception, void*)
{
    constexpr DWORD msvcException = 0xE06D7363;
    return exception->ExceptionRecord->ExceptionCode == msvcException ? EXCEPTION_EXECUTE_HANDLER
                                                                      : EXCEPTION_CONTINUE_SEARCH;
}

} // extern "C"

asm(R"(
    .text
    .globl OrvelCallBelowMsvcHandler
    .def OrvelCallBelowMsvcHandler; .scl 2; .type 32; .endef
    .seh_proc OrvelCallBelowMsvcHandler
OrvelCallBelowMsvcHandler:
    subq $40, %rsp
    .seh_stackalloc 40
    .seh_endprologue
    movq %rcx, %rax
    movq %rdx, %rcx
.LorvelGuarded:
    call *%rax
    nop
.LorvelGuardedEnd:
    addq $40, %rsp
    ret
    .seh_handler __C_specific_handler, @except
    .seh_handlerdata
    .long 1
    .rva .LorvelGuarded, .LorvelGuardedEnd, OrvelIsMsvcException, .LorvelGuardedEnd
    .text
    .seh_endproc
)");

#endif

namespace orvel::shared::enumeration {

namespace {

void Call(const void* argument)
{
    const HostLine& line = *static_cast<const HostLine*>(argument);
    try {
        line.Callback(line.Severity, line.Function, line.Message, line.Context);
    } catch (...) {
        // Only this log line is lost.
    }
}

} // namespace

void CallHost(const HostLine& line) noexcept
{
    const MaskedFloatingPoint masked;
#ifdef _MSC_VER
    Call(&line);
#else
    OrvelCallBelowMsvcHandler(&Call, &line);
#endif
}

} // namespace orvel::shared::enumeration
