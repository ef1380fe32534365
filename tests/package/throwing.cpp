// Throws every type that the library may throw, translated for MSVC hosts.

#include <new>
#include <stdexcept>
#include <string>

#include "abi/MsvcException.h"

using orvel::shared::enumeration::CallForMsvc;

extern "C" {

__declspec(dllexport) void ThrowStatus()
{
    CallForMsvc([] { throw static_cast<long>(0x80041010); });
}

__declspec(dllexport) void ThrowBadAlloc()
{
    CallForMsvc([] { throw std::bad_alloc(); });
}

__declspec(dllexport) void ThrowRuntimeError()
{
    CallForMsvc([] { throw std::runtime_error("driver gone"); });
}

__declspec(dllexport) void ThrowLongText()
{
    CallForMsvc([] { throw std::runtime_error(std::string(1000, 'x')); });
}

__declspec(dllexport) void ThrowUnknown()
{
    CallForMsvc([] { throw 'x'; });
}

__declspec(dllexport) void ThrowNothing()
{
    CallForMsvc([] {});
}
}
