/* FirstHost DEPTH FORM: a C program of the first release, compiled with a copy of its header that never changes. It reads
 * every value through the interface, and prints the snapshot as JSON. */
#include <stdio.h>
#include <stdlib.h>

#include "OrvelInventory.h"

static int readValues(const OrvelInventory* inventory)
{
    uint32_t card, property;
    for (card = 0; card < OrvelInventoryCardCount(inventory); ++card) {
        for (property = 0; property < OrvelInventoryPropertyCount(); ++property) {
            OrvelInventoryValue value = {sizeof value, 0, 0, 0, NULL, 0, 0, NULL, NULL};
            if (OrvelInventoryGetValue(inventory, card, property, &value) != ORVEL_INVENTORY_OK || !value.text) {
                return 0;
            }
            if ((value.status == ORVEL_INVENTORY_KNOWN) == (value.reason != NULL)) {
                return 0;
            }
        }
    }
    return 1;
}

int main(int argc, char** argv)
{
    OrvelInventoryOptions options = {sizeof options, 0, 0, 0};
    OrvelInventory* inventory = NULL;
    char* text = NULL;
    size_t length = 0;
    if (argc != 3) {
        return 2;
    }
    options.depth = (uint32_t)atoi(argv[1]);
    if (OrvelInventoryVersion() / 10000 != ORVEL_INVENTORY_VERSION / 10000 ||
        OrvelInventoryTake(&options, &inventory) != ORVEL_INVENTORY_OK || !readValues(inventory) ||
        OrvelInventoryToJson(inventory, (uint32_t)atoi(argv[2]), &text, &length) != ORVEL_INVENTORY_OK) {
        fputs("the first release's program does not work any more\n", stderr);
        return 1;
    }
    fwrite(text, 1, length, stdout);
    OrvelInventoryFreeText(text);
    OrvelInventoryFree(inventory);
    return 0;
}
