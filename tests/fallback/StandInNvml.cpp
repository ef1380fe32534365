// Replaces the nvml.dll that NVIDIA's driver installs in the system folder: an old version, without nvmlDeviceGetSerial.
// Every result shows that the call and its arguments were forwarded. Sessions always begin and end successfully, and are
// counted.

#define STAND_IN extern "C" __declspec(dllexport)

static int sessions = 0;

STAND_IN int nvmlInit_v2()
{
    ++sessions;
    return 0;
}

STAND_IN int nvmlShutdown()
{
    return sessions-- > 0 ? 0 : 102;
}

STAND_IN const char* nvmlErrorString(int status)
{
    return status == 101 ? "the driver's text" : "another text of the driver";
}

STAND_IN int nvmlDeviceGetCount_v2(unsigned int* count)
{
    *count = 3;
    return 103;
}

STAND_IN int nvmlDeviceGetHandleByIndex_v2(unsigned int index, void** device)
{
    *device = reinterpret_cast<void*>(0x1000ULL + index);
    return 104;
}

STAND_IN int nvmlDeviceGetCudaComputeCapability(void* device, int* major, int* minor)
{
    *major = device == reinterpret_cast<void*>(0x1001) ? 8 : 0;
    *minor = 6;
    return 105;
}

STAND_IN int nvmlDeviceGetTemperatureThreshold(void*, int threshold, unsigned int* celsius)
{
    *celsius = 90U + static_cast<unsigned int>(threshold);
    return 106;
}

STAND_IN int nvmlDeviceGetCurrPcieLinkGeneration(void*, unsigned int* generation)
{
    *generation = 1;
    return 107;
}

STAND_IN int nvmlDeviceGetMaxPcieLinkGeneration(void*, unsigned int* generation)
{
    *generation = 4;
    return 108;
}

STAND_IN int nvmlDeviceGetMaxPcieLinkWidth(void*, unsigned int* lanes)
{
    *lanes = 16;
    return 109;
}

STAND_IN int nvmlDeviceGetClockInfo(void*, int clockType, unsigned int* megahertz)
{
    *megahertz = 7500U + static_cast<unsigned int>(clockType);
    return 110;
}

STAND_IN int nvmlDeviceGetMemoryBusWidth(void*, unsigned int* bits)
{
    *bits = 192;
    return 111;
}
