/* Prints every graphics adapter of this computer with its memory and driver, and why a value is missing. A program in C. */

#include <stdio.h>

#include "OrvelInventory.h"

static void PrintReason(const OrvelInventoryValue* value)
{
    printf(" (%s", value->reason);
    if (value->status == ORVEL_INVENTORY_FAILED) {
        printf(", %s: %lld", value->source, (long long)value->code);
    }
    printf(")\n");
}

static void PrintValue(const OrvelInventory* inventory, uint32_t card, const char* name)
{
    uint32_t property;
    OrvelInventoryValue value;
    value.size = sizeof(value);
    if (OrvelInventoryFindProperty(name, &property) != ORVEL_INVENTORY_OK ||
        OrvelInventoryGetValue(inventory, card, property, &value) != ORVEL_INVENTORY_OK) {
        return; /* a library that is older than this program */
    }
    printf("  %-24s ", name);
    if (value.status != ORVEL_INVENTORY_KNOWN) {
        printf("-");
        PrintReason(&value);
    } else if (value.type == ORVEL_INVENTORY_TEXT) {
        printf("%s\n", value.text);
    } else {
        printf("%llu\n", (unsigned long long)value.number);
    }
}

int main(void)
{
    static const char* const names[] = {"name", "kind", "dedicated_memory_bytes", "driver_version", "integrated"};
    OrvelInventory* inventory;
    uint32_t card;
    size_t i;
    const int32_t result = OrvelInventoryTake(NULL, &inventory); /* all sources, at most 5 seconds */
    if (result != ORVEL_INVENTORY_OK) {
        fprintf(stderr, "no snapshot: %d\n", (int)result);
        return 1;
    }
    for (card = 0; card < OrvelInventoryCardCount(inventory); ++card) {
        printf("card %u\n", (unsigned)card);
        for (i = 0; i < sizeof(names) / sizeof(names[0]); ++i) {
            PrintValue(inventory, card, names[i]);
        }
    }
    printf("%u adapters\n", (unsigned)OrvelInventoryCardCount(inventory));
    OrvelInventoryFree(inventory);
    return 0;
}
