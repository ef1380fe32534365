#include "model/Names.h"

#include <algorithm>
#include <iterator>

namespace orvel::shared::inventory {

namespace {

struct Name {
    uint32_t number;
    const char* text;
};

template <std::size_t Count>
const char* Find(const Name (&names)[Count], uint64_t number)
{
    const auto name =
        std::find_if(std::begin(names), std::end(names), [&](const Name& each) { return each.number == number; });
    return name == std::end(names) ? nullptr : name->text;
}

constexpr Name vendors[] = {
    {0x1002, "AMD"},           {0x1010, "Imagination Technologies"},
    {0x1022, "AMD"},           {0x102B, "Matrox"},
    {0x1039, "SiS"},           {0x106B, "Apple"},
    {0x10DE, "NVIDIA"},        {0x1106, "VIA"},
    {0x1234, "QEMU"},          {0x13B5, "Arm"},
    {0x1414, "Microsoft"},     {0x15AD, "VMware"},
    {0x17CB, "Qualcomm"},      {0x1A03, "ASPEED"},
    {0x1AB8, "Parallels"},     {0x1AF4, "Red Hat"},
    {0x1B36, "Red Hat"},       {0x1D17, "Zhaoxin"},
    {0x1ED5, "Moore Threads"}, {0x4D4F4351, "Qualcomm"}, // "QCOM"
    {0x5143, "Qualcomm"},      {0x5333, "S3 Graphics"},
    {0x8086, "Intel"},         {0x80EE, "VirtualBox"},
};

constexpr Name problems[] = {
    {0, "none"},
    {1, "NOT_CONFIGURED"},
    {2, "DEVLOADER_FAILED"},
    {3, "OUT_OF_MEMORY"},
    {4, "ENTRY_IS_WRONG_TYPE"},
    {5, "LACKED_ARBITRATOR"},
    {6, "BOOT_CONFIG_CONFLICT"},
    {7, "FAILED_FILTER"},
    {8, "DEVLOADER_NOT_FOUND"},
    {9, "INVALID_DATA"},
    {10, "FAILED_START"},
    {11, "LIAR"},
    {12, "NORMAL_CONFLICT"},
    {13, "NOT_VERIFIED"},
    {14, "NEED_RESTART"},
    {15, "REENUMERATION"},
    {16, "PARTIAL_LOG_CONF"},
    {17, "UNKNOWN_RESOURCE"},
    {18, "REINSTALL"},
    {19, "REGISTRY"},
    {20, "VXDLDR"},
    {21, "WILL_BE_REMOVED"},
    {22, "DISABLED"},
    {23, "DEVLOADER_NOT_READY"},
    {24, "DEVICE_NOT_THERE"},
    {25, "MOVED"},
    {26, "TOO_EARLY"},
    {27, "NO_VALID_LOG_CONF"},
    {28, "FAILED_INSTALL"},
    {29, "HARDWARE_DISABLED"},
    {30, "CANT_SHARE_IRQ"},
    {31, "FAILED_ADD"},
    {32, "DISABLED_SERVICE"},
    {33, "TRANSLATION_FAILED"},
    {34, "NO_SOFTCONFIG"},
    {35, "BIOS_TABLE"},
    {36, "IRQ_TRANSLATION_FAILED"},
    {37, "FAILED_DRIVER_ENTRY"},
    {38, "DRIVER_FAILED_PRIOR_UNLOAD"},
    {39, "DRIVER_FAILED_LOAD"},
    {40, "DRIVER_SERVICE_KEY_INVALID"},
    {41, "LEGACY_SERVICE_NO_DEVICES"},
    {42, "DUPLICATE_DEVICE"},
    {43, "FAILED_POST_START"},
    {44, "HALTED"},
    {45, "PHANTOM"},
    {46, "SYSTEM_SHUTDOWN"},
    {47, "HELD_FOR_EJECT"},
    {48, "DRIVER_BLOCKED"},
    {49, "REGISTRY_TOO_LARGE"},
    {50, "SETPROPERTIES_FAILED"},
    {51, "WAITING_ON_DEPENDENCY"},
    {52, "UNSIGNED_DRIVER"},
    {53, "USED_BY_DEBUGGER"},
    {54, "DEVICE_RESET"},
    {55, "CONSOLE_LOCKED"},
    {56, "NEED_CLASS_CONFIG"},
    {57, "GUEST_ASSIGNMENT_FAILED"},
};

constexpr Name connectors[] = {
    {0xFFFFFFFF, "other"},
    {0, "VGA"},
    {1, "S-Video"},
    {2, "composite"},
    {3, "component"},
    {4, "DVI"},
    {5, "HDMI"},
    {6, "LVDS"},
    {8, "D-JPN"},
    {9, "SDI"},
    {10, "DisplayPort"},
    {11, "embedded DisplayPort"},
    {12, "UDI"},
    {13, "embedded UDI"},
    {14, "SDTV dongle"},
    {15, "Miracast"},
    {16, "indirect wired"},
    {17, "indirect virtual"},
    {18, "DisplayPort over USB4"},
    {0x80000000, "internal"},
};

} // namespace

const char* StatusText(Status status)
{
    switch (status) {
    case Status::Known:
        return "known";
    case Status::Unsupported:
        return "unsupported";
    case Status::Unavailable:
        return "unavailable";
    case Status::Failed:
        return "failed";
    case Status::NotAsked:
        break;
    }
    return "not asked";
}

const char* SourceStateText(Status end)
{
    return end == Status::Known ? "answered" : StatusText(end);
}

const char* SourceText(Source source)
{
    constexpr const char* names[] = {"setupapi", "driver_key", "display_config", "dxgi", "dxcore", "nvml", "nvapi", "adlx"};
    static_assert(std::size(names) == sourceCount);
    return names[static_cast<std::size_t>(source)];
}

const char* DepthText(Depth depth)
{
    constexpr const char* names[] = {"system", "graphics", "drivers"};
    return names[static_cast<std::size_t>(depth)];
}

const char* TypeText(Type type)
{
    constexpr const char* names[] = {"text", "number", "bool", "displays"};
    return names[static_cast<std::size_t>(type)];
}

const char* ReasonText(Reason reason)
{
    switch (reason) {
    case Reason::None:
        break;
    case Reason::NotPresent:
        return "source not present";
    case Reason::Missing:
        return "no such value";
    case Reason::Unusable:
        return "unusable";
    case Reason::NotInTable:
        return "number without a name";
    case Reason::NoDevice:
        return "no device";
    case Reason::NotListed:
        return "not listed";
    case Reason::CannotTell:
        return "cannot be told apart";
    case Reason::BelongsToOther:
        return "belongs to the card that renders";
    case Reason::Linked:
        return "belongs to the first linked card";
    case Reason::NoLuid:
        return "no LUID";
    case Reason::NotOnPci:
        return "not on PCI";
    case Reason::NotSupported:
        return "not supported";
    case Reason::NoSource:
        return "no source for this vendor";
    case Reason::VendorUnknown:
        return "vendor not known";
    case Reason::OtherProvider:
        return "driver of another provider";
    case Reason::Refused:
        return "refused";
    case Reason::NoAnswer:
        return "no answer";
    case Reason::Depth:
        return "depth";
    case Reason::Asleep:
        return "asleep";
    case Reason::PowerUnknown:
        return "power state not known";
    case Reason::ExtraDevice:
        return "lists a device that Windows does not";
    }
    return nullptr;
}

const char* VendorName(uint64_t vendorId)
{
    return Find(vendors, vendorId);
}

const char* ProblemName(uint64_t problem)
{
    return Find(problems, problem);
}

const char* ConnectorName(uint32_t outputTechnology)
{
    return Find(connectors, outputTechnology);
}

} // namespace orvel::shared::inventory
