/* A library with the inventory's C interface for the tests of the bindings. A snapshot's JSON contains the options of its
 * caller and the number of snapshots and texts that the caller has not freed. The option `timeout_milliseconds` selects a
 * failure, or the time that taking a snapshot lasts. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#ifdef _WIN32
#include <windows.h>
#else
#define _WIN64 1
#define __declspec(attribute)
#include <time.h>
#endif

#define ORVEL_INVENTORY_BUILD
#include "OrvelInventory.h"

#ifndef FAKE_VERSION
#define FAKE_VERSION ORVEL_INVENTORY_VERSION
#endif

enum { FAIL_TAKE = 1000, FAIL_JSON = 1010, LAST_FAILURE = 1020, SLEEP = 2000, LAST_SLEEP = 4000 };

struct OrvelInventory {
    OrvelInventoryOptions options;
};

static volatile long liveSnapshots, liveTexts;

static void sleepMilliseconds(uint32_t milliseconds)
{
#ifdef _WIN32
    Sleep(milliseconds);
#else
    const struct timespec time = {milliseconds / 1000, milliseconds % 1000 * 1000000L};
    nanosleep(&time, NULL);
#endif
}

uint32_t OrvelInventoryVersion(void)
{
    return FAKE_VERSION;
}

int32_t OrvelInventoryTake(const OrvelInventoryOptions* options, OrvelInventory** inventory)
{
    const uint32_t timeout = options->timeout_milliseconds;
    *inventory = NULL;
    if (options->size != sizeof *options || (timeout > FAIL_TAKE && timeout < FAIL_JSON)) {
        return options->size != sizeof *options ? ORVEL_INVENTORY_INVALID_ARGUMENT : (int32_t)(timeout - FAIL_TAKE);
    }
    if (timeout >= SLEEP && timeout <= LAST_SLEEP) {
        sleepMilliseconds(timeout - SLEEP);
    }
    *inventory = malloc(sizeof **inventory);
    (*inventory)->options = *options;
    __atomic_fetch_add(&liveSnapshots, 1, __ATOMIC_SEQ_CST);
    return ORVEL_INVENTORY_OK;
}

void OrvelInventoryFree(OrvelInventory* inventory)
{
    if (inventory) {
        __atomic_fetch_sub(&liveSnapshots, 1, __ATOMIC_SEQ_CST);
    }
    free(inventory);
}

int32_t OrvelInventoryToJson(const OrvelInventory* inventory, uint32_t form, char** text, size_t* length)
{
    const OrvelInventoryOptions* options = &inventory->options;
    const uint32_t timeout = options->timeout_milliseconds;
    *text = NULL;
    if (timeout > FAIL_JSON && timeout < LAST_FAILURE) {
        return (int32_t)(timeout - FAIL_JSON);
    }
    *text = malloc(200);
    *length = (size_t)snprintf(*text, 200,
                               "{\"depth\": %u, \"timeout\": %u, \"wake\": %u, \"form\": %u, \"text\": \"\xC3\xBC\", "
                               "\"liveSnapshots\": %ld, \"liveTexts\": %ld}",
                               options->depth, timeout, options->wake, form, liveSnapshots - 1, liveTexts);
    __atomic_fetch_add(&liveTexts, 1, __ATOMIC_SEQ_CST);
    return ORVEL_INVENTORY_OK;
}

void OrvelInventoryFreeText(char* text)
{
    if (text) {
        __atomic_fetch_sub(&liveTexts, 1, __ATOMIC_SEQ_CST);
    }
    free(text);
}

uint32_t OrvelInventoryPropertyCount(void)
{
    return 1;
}

int32_t OrvelInventoryGetProperty(uint32_t property, OrvelInventoryProperty* row)
{
    if (property != 0 || row->size != sizeof *row) {
        return ORVEL_INVENTORY_INVALID_ARGUMENT;
    }
    row->type = ORVEL_INVENTORY_NUMBER;
    row->name = "fan_speed";
    row->unit = "rpm";
    row->description = "speed of the \xC3\x9C fan";
    return ORVEL_INVENTORY_OK;
}
