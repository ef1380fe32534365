const { inventorySync } = require("orvel-graphic-cards-inventory");

for (const card of inventorySync({ form: "flat" }).cards) {
    console.log(card.name, card.dedicated_memory_bytes);
}
