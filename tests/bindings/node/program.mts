import { inventory } from "orvel-graphic-cards-inventory";
const { cards } = await inventory({ timeout: 2000 });
for (const card of cards) {
    console.log(card.name.value, card.dedicated_memory_bytes.value ?? card.dedicated_memory_bytes.reason);
}
