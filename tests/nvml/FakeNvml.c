/* A libnvidia-ml.so.1 with two devices. The second one is lost in the middle. FAKE_NVML_INIT: the status of the start;
 * FAKE_NVML_UNSTEADY: the number of cores is another one at each call. */

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

typedef struct {
    char legacy[16];
    uint32_t domain, bus, device, id, subsystem;
    char text[32];
} Place;

int nvmlInit_v2(void)
{
    const char* status = getenv("FAKE_NVML_INIT");
    return status ? atoi(status) : 0;
}

int nvmlShutdown(void)
{
    return 0;
}

int nvmlDeviceGetCount_v2(unsigned int* count)
{
    *count = 2;
    return 0;
}

int nvmlDeviceGetHandleByIndex_v2(unsigned int index, uintptr_t* device)
{
    *device = index + 1;
    return 0;
}

int nvmlDeviceGetPciInfo_v3(uintptr_t device, Place* place)
{
    memset(place, 0, sizeof *place);
    place->bus = (uint32_t)device;
    place->id = 0x223110DE;
    place->subsystem = 0x147E10DE;
    return 0;
}

int nvmlSystemGetDriverVersion(char* text, unsigned int size)
{
    (void)size;
    strcpy(text, "596.72");
    return 0;
}

int nvmlDeviceGetMemoryInfo(uintptr_t device, uint64_t* memory)
{
    if (device == 2) {
        return 15;
    }
    memory[0] = 25757220864u;
    memory[1] = 25000000000u;
    memory[2] = 757220864u;
    return 0;
}

int nvmlDeviceGetNumGpuCores(uintptr_t device, unsigned int* count)
{
    static unsigned int calls = 0;
    (void)device;
    *count = 8192 + (getenv("FAKE_NVML_UNSTEADY") ? calls++ : 0);
    return 0;
}

int nvmlDeviceGetTemperatureThreshold(uintptr_t device, int threshold, unsigned int* celsius)
{
    *celsius = device == 1 ? 98 - 3 * (unsigned int)threshold : 0;
    return device == 1 ? 0 : 3;
}

int nvmlDeviceGetUUID(uintptr_t device, char* text, unsigned int size)
{
    (void)size;
    strcpy(text, device == 1 ? "GPU-1" : "GPU-2");
    return 0;
}
