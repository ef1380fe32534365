#pragma once

#include "interfaces/NvmlTypes.h"

// The functions of NVIDIA's Management Library, "nvml.dll", that are used here. They are imported when this library is
// loaded.

extern "C" {
__declspec(dllimport) nvmlReturn_t nvmlInit_v2();
__declspec(dllimport) nvmlReturn_t nvmlShutdown();
__declspec(dllimport) const char* nvmlErrorString(nvmlReturn_t result);
__declspec(dllimport) nvmlReturn_t nvmlDeviceGetCount_v2(unsigned int* count);
__declspec(dllimport) nvmlReturn_t nvmlDeviceGetHandleByIndex_v2(unsigned int index, nvmlDevice_t* device);
__declspec(dllimport) nvmlReturn_t nvmlDeviceGetSerial(nvmlDevice_t device, char* serial, unsigned int length);
__declspec(dllimport) nvmlReturn_t nvmlDeviceGetCudaComputeCapability(nvmlDevice_t device, int* major, int* minor);
__declspec(dllimport) nvmlReturn_t
    nvmlDeviceGetTemperatureThreshold(nvmlDevice_t device, int threshold, unsigned int* celsius);
__declspec(dllimport) nvmlReturn_t nvmlDeviceGetCurrPcieLinkGeneration(nvmlDevice_t device, unsigned int* generation);
__declspec(dllimport) nvmlReturn_t nvmlDeviceGetMaxPcieLinkGeneration(nvmlDevice_t device, unsigned int* generation);
__declspec(dllimport) nvmlReturn_t nvmlDeviceGetMaxPcieLinkWidth(nvmlDevice_t device, unsigned int* lanes);
__declspec(dllimport) nvmlReturn_t nvmlDeviceGetClockInfo(nvmlDevice_t device, int clockType, unsigned int* megahertz);
__declspec(dllimport) nvmlReturn_t nvmlDeviceGetMemoryBusWidth(nvmlDevice_t device, unsigned int* bits);
}
